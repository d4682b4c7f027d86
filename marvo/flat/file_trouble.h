/// @file
/// Why a recording cannot be used, in words.
#pragma once

#include <string>

namespace flat {

/// A name in quotes, UTF-8.
std::string quoted(const std::wstring& name);

/// Throws the failure for a recording that cannot be opened: MARVO_E_FILE when the system refuses the file,
/// else MARVO_E_FORMAT. `predicate` says why, without a full stop.
[[noreturn]] void failOpening(const std::wstring& name, const std::wstring& predicate);

/// Throws the failure for a recording from which frames `from` to `to` cannot be played, as far as that can
/// be found out: the file, or the range. Returns otherwise.
void explainFile(const std::wstring& name, unsigned long long from, unsigned long long to);

} // namespace flat
