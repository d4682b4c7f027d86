/// @file
/// Narrow text for messages.
#pragma once

#include <string>

namespace vcore {

/// How `printf` would write it; cut behind 1023 characters.
std::string format(const char* pattern, ...);

/// "1 frame", "2 frames".
std::string counted(unsigned long long count, const char* noun);

/// The system's words for an error code, without the full stop; the number when it has none.
std::wstring systemMessage(unsigned long error);

} // namespace vcore
