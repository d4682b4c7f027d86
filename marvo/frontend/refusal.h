/// @file
/// Commands that are refused for want of memory.
#pragma once

#include "marvo/core/guarded.h"
#include "marvo/frontend/log.h"

namespace frontend {

/// Calls `body` and returns what it returns. When an exception leaves it, which mostly means that there is no
/// memory, `undo` is called, the log says that the command was refused, and the result is `refused`.
template <class Result, class Body, class Undo>
Result refusable(Log& log, Result refused, Body body, Undo undo) noexcept {
    Result result = refused;
    if (!vcore::guarded([&] { result = body(); })) {
        result = refused;
        vcore::guarded(undo);
        log.write("refused: there is not enough memory", false);
    }
    return result;
}

/// The same where there is nothing to undo.
template <class Result, class Body>
Result refusable(Log& log, Result refused, Body body) noexcept {
    return refusable(log, refused, body, [] {});
}

/// The same for a command without a result.
template <class Body>
void refusable(Log& log, Body body) noexcept {
    refusable(log, false, [&body] {
        body();
        return true;
    });
}

} // namespace frontend
