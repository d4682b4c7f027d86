/// @file
/// Text as the program takes and gives it: wide from the system, UTF-8 on its outputs.
#pragma once

#include "marvo/core/text.h"

#include <string>
#include <string_view>

namespace dvrec {

/// The UTF-8 form of wide text.
std::string utf8(std::wstring_view text);

/// A file's name as the system opens it: one whose full path is too long for most of its functions gets the
/// prefix that lifts the limit. To be applied once, to names as they come from the command line.
std::wstring openable(const std::wstring& name);

/// A file's name as people know it: without the prefix that `openable` has put in front of a long one.
std::wstring shown(std::wstring_view name);

/// The UTF-8 form of a file's name.
std::string utf8Name(std::wstring_view name);

/// The UTF-8 form in quotation marks, as file names and words stand in messages.
std::string quoted(std::wstring_view text);

/// A line of `name` and `rest` that takes at most `columns` places of a terminal: what is too much goes out
/// of the middle of the name, and then off the end of the line. UTF-8, whose wide characters take two places.
std::string fitted(const std::string& name, const std::string& rest, size_t columns);

/// Places of a terminal that UTF-8 text takes.
size_t columnsOf(std::string_view text);

using vcore::counted;
using vcore::format;

/// A duration in seconds as "h:mm:ss.hh".
std::string durationText(double seconds);

/// Whether a file name ends with `extension` (with its dot, lower case), in any letter case.
bool hasExtension(const std::wstring& name, std::wstring_view extension);

} // namespace dvrec
