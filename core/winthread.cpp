#include "core/winthread.h"

#include <algorithm>

namespace vwin {

namespace {

constexpr unsigned long restartGraceMs = 100;
constexpr unsigned long destructionGraceMs = 120;

/// A thread is killed asynchronously; its end is waited for so long.
constexpr unsigned long killMs = 1000;

/// A thread that does not get to its body within this time waits for what its killer holds, such as the
/// loader's lock.
constexpr unsigned long startPatienceMs = 500;

/// The slot that leads a worker thread to its own state. A system slot and not a thread_local variable:
/// nothing has to be destroyed when the thread is killed.
DWORD currentSlot() {
    static const DWORD slot = TlsAlloc();
    return slot;
}

HANDLE threadOrSelf(void* thread) {
    return thread ? thread : GetCurrentThread();
}

/// Suspends a thread and returns only when it stands still; false when it cannot be, because it has ended.
bool suspendFully(HANDLE thread) {
    if (SuspendThread(thread) == static_cast<DWORD>(-1))
        return false;
    // The request alone is asynchronous; the registers can be had only of a thread that stands.
    CONTEXT context;
    context.ContextFlags = CONTEXT_CONTROL;
    GetThreadContext(thread, &context);
    return true;
}

/// Resumes a thread however often it was suspended.
void resumeFully(HANDLE thread) {
    while (static_cast<int>(ResumeThread(thread)) > 1) {
    }
}

} // namespace

/// What a worker thread knows about itself; lives on its stack.
struct winthread::current {
    winthread* object;
    bool finished; ///< the end was told already; the object may be gone

    static current* get() { return static_cast<current*>(TlsGetValue(currentSlot())); }
};

winthread::winthread() = default;

winthread::winthread(const winthread&) : winthread() {}

winthread::~winthread() {
    stop(destructionGraceMs);
}

bool winthread::start() {
    stop(restartGraceMs);
    _stop.reset();
    _done.reset();
    _interruption = interruption::starting;
    currentSlot();
    // Suspended, so that the handle is stored before anything of the thread runs.
    _thread.reset(CreateThread(nullptr, 0, &_threadProc, this, CREATE_SUSPENDED, nullptr));
    return _thread && ResumeThread(_thread.get()) != static_cast<DWORD>(-1);
}

DWORD WINAPI winthread::_threadProc(void* argument) {
    if (!argument)
        return 0;
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    current self{static_cast<winthread*>(argument), false};
    TlsSetValue(currentSlot(), &self);
    const HANDLE done = self.object->_done.handle();
    ResetEvent(done);
    _setInterruption(interruption::allowed);
    self.object->run();
    _setInterruption(interruption::shielded);
    TlsSetValue(currentSlot(), nullptr);
    if (!self.finished)
        SetEvent(done);
    return 0;
}

void winthread::finish() {
    if (current* const self = current::get(); self && self->object == this)
        self->finished = true;
    _done.set();
}

void winthread::stop(unsigned long timeoutMs) {
    if (!_thread)
        return;
    _stop.set();
    if (timeoutMs && !_joined(timeoutMs))
        terminate();
}

void winthread::terminate() {
    if (!_thread)
        return;
    _stop.set();
    if (current* const self = current::get(); self && self->object == this)
        self->finished = true;
    else
        for (unsigned long waitedMs = 0; !_ended() && !_kill(waitedMs >= startPatienceMs); ++waitedMs)
            Sleep(1);
    _done.set();
    _thread.reset();
}

// Between suspending and resuming nothing may be called that takes a lock: the thread may hold it.
bool winthread::_kill(bool evenStarting) {
    if (!suspendFully(_thread.get()))
        return true;
    const interruption state = _interruption;
    const bool allowed = state == interruption::allowed || (state == interruption::starting && evenStarting);
    if (allowed)
        TerminateThread(_thread.get(), static_cast<DWORD>(-1));
    else
        // Also if `suspend` stopped it: it would never leave its region.
        resumeFully(_thread.get());
    if (allowed)
        WaitForSingleObject(_thread.get(), killMs);
    return allowed;
}

bool winthread::suspend() {
    return _thread && static_cast<int>(SuspendThread(_thread.get())) <= 0;
}

bool winthread::resume() {
    return _thread && static_cast<int>(ResumeThread(_thread.get())) < 2;
}

// The thread's own end counts, too: a process that ends kills its threads without a word.
bool winthread::_joined(unsigned long timeoutMs) const {
    HANDLE ends[] = {_done.handle(), _thread.get()};
    return vcore::event::wait(ends, 2, false, timeoutMs) >= 0;
}

bool winthread::wait(unsigned long timeoutMs) const {
    return !_thread || !_joined(timeoutMs);
}

bool winthread::finished() const {
    return !_thread || _ended();
}

bool winthread::running() const {
    return !finished();
}

bool winthread::finishing(int timeoutMs, void* extraHandle) const {
    const auto timeout = static_cast<unsigned long>(timeoutMs);
    if (!extraHandle)
        return _stop.wait(timeout);
    HANDLE handles[] = {_stop.handle(), extraHandle};
    return vcore::event::wait(handles, 2, false, timeout) == WAIT_OBJECT_0;
}

bool winthread::setPriority(int priority, void* thread) {
    return SetThreadPriority(threadOrSelf(thread), std::clamp(priority, -15, 15)) != FALSE;
}

void winthread::setProcessor(int processor, void* thread) {
    using setter = DWORD(WINAPI*)(HANDLE, DWORD);
    const FARPROC entry = GetProcAddress(GetModuleHandleA("KERNEL32.DLL"), "SetThreadIdealProcessor");
    if (const auto set = reinterpret_cast<setter>(reinterpret_cast<void*>(entry)))
        set(threadOrSelf(thread), static_cast<DWORD>(processor));
}

int winthread::processorCount() {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return static_cast<int>(info.dwNumberOfProcessors);
}

// The exchange orders the region's work behind its begin and before its end.
winthread::interruption winthread::_setInterruption(interruption state) {
    const current* const self = current::get();
    return self && !self->finished ? self->object->_interruption.exchange(state) : state;
}

winthread::uninterruptible::uninterruptible() : _before(_setInterruption(interruption::shielded)) {}

winthread::uninterruptible::~uninterruptible() {
    _setInterruption(_before);
}

winthread::killable::killable() : _before(_setInterruption(interruption::allowed)) {}

winthread::killable::~killable() {
    _setInterruption(_before);
}

} // namespace vwin
