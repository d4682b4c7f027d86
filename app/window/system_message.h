/// @file
/// Errors of the system in words.
#pragma once

#include <string>

namespace app {

/// What the system says of one of its error numbers, without a line end or full stop; the number alone when
/// it says nothing.
std::wstring systemMessage(unsigned long error);

} // namespace app
