/// @file
/// The one place for what differs between compilers, and for the Windows headers in the order they need.
#pragma once

#include <winsock2.h>
#include <windows.h>
#include <objbase.h>
#include <oleauto.h>

#include <cstddef>
#include <cstdint>

/// Marks a class or function as part of the library's exported interface. Programs that link rooms of the
/// library into themselves instead of using the DLL define MARVO_STATIC.
#if defined(MARVO_BUILD)
#define MARVO_API __declspec(dllexport)
#elif defined(MARVO_STATIC)
#define MARVO_API
#else
#define MARVO_API __declspec(dllimport)
#endif

namespace vcore {

/// Whether a member was called on a null object. Some members of the toolkit answer on a null object (with a
/// length of 0, an empty text); the test goes through a parameter because compilers take `this` for non-null.
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
