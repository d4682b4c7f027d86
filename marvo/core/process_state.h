/// @file
/// What destructors of global objects need to know about the process.
#pragma once

#include "marvo/core/platform.h"

namespace vcore {

/// Whether the process is ending without clean-up: all other threads are already gone, and what they held
/// stays held. Destructors then abandon what would wait for them. May be called from any thread, also under
/// the loader lock.
inline bool processEnding() {
    using ShutdownQuery = BOOLEAN(WINAPI*)();
    HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    if (ntdll == nullptr) {
        return false;
    }
    FARPROC query = GetProcAddress(ntdll, "RtlDllShutdownInProgress");
    return query != nullptr && reinterpret_cast<ShutdownQuery>(reinterpret_cast<void*>(query))() != FALSE;
}

} // namespace vcore
