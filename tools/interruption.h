/// @file
/// Ctrl+C.
#pragma once

namespace dvrec {

/// From now on Ctrl+C, Ctrl+Break and the closing of the console are noted instead of ending the process, so
/// that no half-written file stays behind. When the console closes, the process gets a few seconds for that.
void catchInterruptions();

/// Whether there was one.
bool wasInterrupted();

/// Throws the `Failure` for an interruption, if there was one.
void checkInterruption();

} // namespace dvrec
