#include "marvo/core/event.h"

namespace vcore {

namespace {

HANDLE createEvent(int flags, const wchar_t* name) {
    return CreateEventW(nullptr, (flags & event::manualReset) != 0, (flags & event::signalled) != 0, name);
}

bool obtained(DWORD result) {
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED_0;
}

/// Dispatches every message that waits for this thread; a quit message goes to `quit` and makes the result
/// true.
bool dispatchMessages(MSG& quit) {
    bool quitting = false;
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            quit = message;
            quitting = true;
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return quitting;
}

/// All kinds of input, including posted messages and hot keys.
constexpr DWORD allInput = 0x4FF;

} // namespace

event::event(int flags, const wchar_t* name) : handle_(createEvent(flags, name)), owned_(true) {}

event::event(const wchar_t* name, bool create, int flags)
    : handle_(OpenEventW(EVENT_ALL_ACCESS, FALSE, name)), owned_(true) {
    if (!handle_ && create) {
        handle_ = createEvent(flags, name);
    }
}

event::event(void* handle) : handle_(handle), owned_(false) {}

event::event(event& source) : handle_(source.handle_), owned_(source.owned_) {
    source.owned_ = false;
}

event::~event() {
    if (owned_ && handle_) {
        CloseHandle(handle_);
    }
}

bool event::set() const {
    return SetEvent(handle_) != FALSE;
}

bool event::reset() const {
    return ResetEvent(handle_) != FALSE;
}

bool event::isSet() const {
    return wait(0) && (set(), true);
}

bool event::wait(void* handle, unsigned long timeoutMs) {
    return obtained(WaitForSingleObject(handle, timeoutMs));
}

long event::wait(void** handles, unsigned long count, bool waitAll, unsigned long timeoutMs) {
    const DWORD result = WaitForMultipleObjects(count, handles, waitAll, timeoutMs);
    return result == WAIT_TIMEOUT ? -1 : static_cast<long>(result);
}

bool event::msgwait(void* handle, unsigned long timeoutMs) {
    MSG quit;
    bool quitting = false;
    DWORD result;
    while ((result = MsgWaitForMultipleObjects(1, &handle, FALSE, timeoutMs, allInput)) ==
           WAIT_OBJECT_0 + 1) {
        quitting = dispatchMessages(quit) || quitting;
    }
    if (quitting) {
        PostQuitMessage(static_cast<int>(quit.wParam));
    }
    return obtained(result);
}

} // namespace vcore
