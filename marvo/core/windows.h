/// @file
/// The Windows headers in the order they need, and the two words that every room has for its own faults.
#pragma once

#include <winsock2.h>
#include <windows.h>
#include <objbase.h>
#include <oleauto.h>

#include <cstddef>
#include <cstdint>

namespace vcore {

/// Whether a member was called on a null object. Some members of the toolkit answer on a null object (with a
/// length of 0, an empty text); the test goes through a parameter because compilers take `this` for non-null.
/// For sources of the library only: a host's compiler may drop the test all the same.
inline bool isNullObject(const void* object) {
    return object == nullptr;
}

/// Stops the process with a breakpoint trap: a programming error that cannot be reported otherwise.
[[noreturn]] inline void trap() {
    DebugBreak();
    TerminateProcess(GetCurrentProcess(), 3);
    for (;;) {
    }
}

} // namespace vcore
