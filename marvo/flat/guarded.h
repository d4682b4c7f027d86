/// @file
/// The border of the flat interface.
#pragma once

#include "marvo/flat/failure.h"
#include "marvo/flat/last_error.h"
#include "marvo_c.h"

namespace flat {

/// Carries out the body of a function of the flat interface: its result, with the thread's last error when
/// that is not good. No exception passes.
template <class Body>
int guarded(Body body) noexcept {
    try {
        body();
        return MARVO_OK;
    } catch (const Failure& failure) {
        setLastError(failure.text.c_str());
        return failure.code;
    } catch (...) {
        // The library throws nothing else but for want of memory.
        setLastError("There is not enough memory.");
        return MARVO_E_MEMORY;
    }
}

} // namespace flat
