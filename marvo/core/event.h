/// @file
/// Kernel events, and waiting for handles.
#pragma once

#include "marvo/core/platform.h"

namespace vcore {

/// A kernel event, owned or only wrapped. When it could not be made its handle is null, and every call on it
/// fails.
class MARVO_API event {
public:
    /// Bits of a constructor's `flags`.
    enum flagBits : int {
        manualReset = 1, ///< stays signalled until it is reset; else one wait consumes it
        signalled = 2    ///< is signalled from the start
    };

    /// A new event; `name` may be null.
    explicit event(int flags = 0, const wchar_t* name = nullptr);
    /// Opens the event of that name with full access; makes one only when there is none and `create` is true.
    event(const wchar_t* name, bool create, int flags);
    /// Wraps a handle without owning it.
    explicit event(void* handle);
    /// Takes the handle over. `source` goes on using it but no longer owns it, so it must not be used beyond
    /// the life of this object.
    event(event& source);
    ~event();
    event& operator=(const event&) = delete;

    /// Signals the event.
    bool set() const;
    /// Takes the signal back.
    bool reset() const;
    /// Whether the event is signalled, without waiting. An event found signalled is signalled again, so the
    /// test does not consume it.
    bool isSet() const;
    /// Waits at most `timeoutMs` (`INFINITE`: without end); true when the event was signalled within the
    /// time.
    bool wait(unsigned long timeoutMs) const { return wait(handle_, timeoutMs); }
    /// The same for a thread with windows: messages are dispatched meanwhile. Each batch of messages starts
    /// the time-out anew, so the whole wait may be longer.
    bool msgwait(unsigned long timeoutMs) const { return msgwait(handle_, timeoutMs); }
    /// The system handle.
    HANDLE handle() const { return handle_; }

    /// Waits for any handle; true when it was signalled within the time (an abandoned mutex counts as
    /// signalled).
    static bool wait(void* handle, unsigned long timeoutMs);
    /// Waits for one or for all of several handles: the result of `WaitForMultipleObjects`, but -1 on a
    /// time-out.
    static long wait(void** handles, unsigned long count, bool waitAll, unsigned long timeoutMs);
    /// Waits for any handle and dispatches messages meanwhile. A quit message found is posted again at the
    /// end, for the loop that it is meant for.
    static bool msgwait(void* handle, unsigned long timeoutMs);

private:
    HANDLE handle_;
    bool owned_;
};

} // namespace vcore
