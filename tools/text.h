/// @file
/// Text as the program takes and gives it: wide from the system, UTF-8 on its outputs.
#pragma once

#include "marvo/core/text.h"

#include <string>
#include <string_view>

namespace dvrec {

/// The UTF-8 form of wide text.
std::string utf8(std::wstring_view text);

/// The UTF-8 form in quotation marks, as file names stand in messages.
std::string quoted(std::wstring_view text);

using vcore::counted;
using vcore::format;

/// A duration in seconds as "h:mm:ss.hh".
std::string durationText(double seconds);

/// Whether a file name ends with `extension` (with its dot, lower case), in any letter case.
bool hasExtension(const std::wstring& name, std::wstring_view extension);

} // namespace dvrec
