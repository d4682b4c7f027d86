/// @file
/// Counts the process's open handles.
#pragma once

#include "marvo.h"

/// Open handles of this process, counted one by one, since not every system keeps the count.
inline int openHandles() {
    int count = 0;
    for (ULONG_PTR value = 4; value < 0x4000; value += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    }
    return count;
}
