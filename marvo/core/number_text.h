/// @file
/// Numbers as narrow text, with a point whatever the host's locale.
#pragma once

#include <string>

namespace vcore {

/// With so many digits (up to 100) behind the point; "inf" and "nan", with their sign, for what is no number.
std::string fixedText(double value, int decimals);

/// The fewest digits from which the same number is read again. The number must be finite.
std::string shortestText(double value);
std::string shortestText(float value);

} // namespace vcore
