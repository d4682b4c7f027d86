/// @file
/// Allocations that fail.
#pragma once

#include "tests/support/import_patch.h"

#include <atomic>
#include <cstdlib>

/// Lets one allocation of the library's fail: of those that the thread which makes the object causes from
/// then on the k-th, counted from 1.
class FailingMemory {
public:
    explicit FailingMemory(unsigned k) {
        left = static_cast<long>(k);
        thread = GetCurrentThreadId();
    }
    ~FailingMemory() { thread = 0; }
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /// Whether there were that many.
    bool failed() const { return left <= 0; }

private:
    static inline std::atomic<long> left;
    static inline std::atomic<DWORD> thread;

    static void* __cdecl allocate(size_t bytes) {
        return GetCurrentThreadId() == thread && --left == 0 ? nullptr : std::malloc(bytes);
    }

    ImportPatch patch_{engineModule(), "malloc", reinterpret_cast<void*>(&allocate)};
};
