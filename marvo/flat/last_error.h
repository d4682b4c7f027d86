/// @file
/// The last error of each thread.
#pragma once

namespace flat {

/// Keeps `text` as the calling thread's last error, cut behind 1023 bytes; where there is no memory to keep
/// it, that is what is told instead.
void setLastError(const char* text) noexcept;

/// The calling thread's last error; empty before the first.
const char* lastError() noexcept;

} // namespace flat
