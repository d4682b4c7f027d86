/// @file
/// The system's errors in words.
#pragma once

#include <string>

namespace app {

/// The system's words for one of its errors, without a full stop, and its number: "Disk full (112)".
std::wstring systemText(unsigned long error);

} // namespace app
