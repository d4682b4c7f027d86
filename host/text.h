/// @file
/// Conversions between the UTF-8 of scripts and reports and the system's wide text.
#pragma once

#include <string>

namespace host {

/// The wide form of UTF-8 text; wrong bytes become replacement characters.
std::wstring wide(const std::string& text);
/// The UTF-8 form of wide text.
std::string utf8(const std::wstring& text);
/// A number as short as it can be written without loss, whole numbers without a fraction.
std::string numberText(double value);
/// Replaces a file's content. False when it cannot be written.
bool writeFile(const std::wstring& name, const std::string& content);
/// Reads a whole file. False when it cannot be read.
bool readFile(const std::wstring& name, std::string& content);

} // namespace host
