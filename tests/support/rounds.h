/// @file
/// What a test leaves out on the guarded heap.
#pragma once

#include <cstdlib>

/// Whether this program runs on the guarded heap, whose memory does not come from `malloc`.
inline bool onGuardedHeap() {
    return std::getenv("MARVO_GUARDED") != nullptr;
}

/// How many rounds a test of random input makes: on the guarded heap, where each block costs calls of the
/// system, the twelfth part of the usual.
inline int rounds(int usual) {
    return onGuardedHeap() ? usual / 12 : usual;
}
