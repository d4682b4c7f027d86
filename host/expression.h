/// @file
/// Sums of numbers and named values, as scripts write them: newest-100, start+25, -0.5.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace host {

/// Gives the value of a name, or nothing for an unknown one.
using Lookup = std::function<std::optional<double>(const std::string& name)>;

/// Whether a text can be a name: a letter, then letters, digits, dots and underscores.
bool isName(const std::string& text);

/// The value of an expression without blanks: numbers and names joined by + and -. "true" and "false" are 1
/// and 0. Nothing, with the reason in `error`, when it is malformed or a name is unknown.
std::optional<double> evaluate(const std::string& expression, const Lookup& lookup, std::string& error);

} // namespace host
