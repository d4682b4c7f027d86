/// @file
/// Keeping the library loaded while its engine runs.
#pragma once

#include "marvo/core/platform.h"

namespace frontend {

/// A reference to the library itself. While it is held, a host's `FreeLibrary` only gives up the host's own
/// reference. Without it the unloading would wait for the engine's threads, and those, to end, for the loader
/// lock that the unloading holds.
///
/// Taken and let go on the host's thread, by one thread at a time.
class LibraryHold {
public:
    LibraryHold();
    LibraryHold(const LibraryHold&) = delete;
    LibraryHold& operator=(const LibraryHold&) = delete;

    /// Holds the library, unless it is held already.
    void take();
    /// Lets go. When this was the last reference the library is unloaded, but only after the calling thread
    /// has returned into the code that called the library. So nothing but returning may follow.
    void letGo();

private:
    HMODULE library_ = nullptr;
};

} // namespace frontend
