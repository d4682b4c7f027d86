/// @file
/// A disk that fails when it is told to.
#pragma once

#include "tests/support/import_patch.h"

#include <atomic>

/// While it lives, what a module writes in frames (no line of the log is as large) meets the fault that is
/// set. One at a time.
class FaultyDisk {
public:
    enum Fault {
        none,
        full,      ///< half of it is written, and there is an error
        takesHalf, ///< half of it is written, and there is none
        hangs      ///< until `hangs` is no longer the fault
    };

    explicit FaultyDisk(HMODULE module = engineModule())
        : patch_(module, "WriteFile", reinterpret_cast<void*>(&write)) {
        real = reinterpret_cast<decltype(&WriteFile)>(patch_.original());
        fault = none;
        hanging = false;
    }
    ~FaultyDisk() { fault = none; }

    static inline std::atomic<Fault> fault;
    static inline std::atomic<bool> hanging; ///< a write hangs or hung

private:
    static BOOL WINAPI write(HANDLE file, const void* data, DWORD bytes, DWORD* done, OVERLAPPED* place) {
        const Fault meets = bytes > 10000 ? fault.load() : none;
        while (bytes > 10000 && fault == hangs) {
            hanging = true;
            Sleep(1);
        }
        const bool whole = meets == none || meets == hangs;
        const BOOL written = real(file, data, whole ? bytes : bytes / 1024 * 512, done, place);
        if (meets == full) {
            SetLastError(ERROR_DISK_FULL);
            return FALSE;
        }
        return written;
    }

    /// The patched module may be this one.
    static inline decltype(&WriteFile) real = &WriteFile;

    ImportPatch patch_;
};
