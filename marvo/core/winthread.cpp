#include "marvo/core/winthread.h"

#include "marvo/core/guarded.h"

#include <algorithm>

namespace vwin {

namespace {

constexpr unsigned long restartGrace_ms = 100;
constexpr unsigned long destructionGrace_ms = 120;

/// A thread is killed asynchronously; its end is waited for so long.
constexpr unsigned long kill_ms = 1000;

/// A thread that does not get to its body within this time waits for what its killer holds, such as the
/// loader's lock.
constexpr unsigned long startPatience_ms = 500;

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
    if (SuspendThread(thread) == static_cast<DWORD>(-1)) {
        return false;
    }
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
struct winthread::Current {
    winthread* object;
    bool finished; ///< the end was told already; the object may be gone

    static Current* get() { return static_cast<Current*>(TlsGetValue(currentSlot())); }
};

winthread::winthread() = default;

winthread::winthread(const winthread&) : winthread() {}

winthread::~winthread() {
    stop(destructionGrace_ms);
}

bool winthread::start() {
    stop(restartGrace_ms);
    stop_.reset();
    done_.reset();
    interruption_ = interruption::starting;
    currentSlot();
    // Suspended, so that the handle is stored before anything of the thread runs.
    thread_.reset(CreateThread(nullptr, 0, &threadProc, this, CREATE_SUSPENDED, nullptr));
    return thread_ && ResumeThread(thread_.get()) != static_cast<DWORD>(-1);
}

DWORD WINAPI winthread::threadProc(void* argument) {
    if (!argument) {
        return 0;
    }
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    Current self{static_cast<winthread*>(argument), false};
    TlsSetValue(currentSlot(), &self);
    const HANDLE done = self.object->done_.handle();
    ResetEvent(done);
    setInterruption(interruption::allowed);
    vcore::guarded([&self] { self.object->run(); });
    setInterruption(interruption::shielded);
    TlsSetValue(currentSlot(), nullptr);
    if (!self.finished) {
        SetEvent(done);
    }
    return 0;
}

void winthread::finish() {
    if (Current* const self = Current::get(); self && self->object == this) {
        self->finished = true;
    }
    done_.set();
}

void winthread::stop(unsigned long timeoutMs) {
    if (!thread_) {
        return;
    }
    stop_.set();
    if (timeoutMs && !hasJoined(timeoutMs)) {
        terminate();
    }
}

void winthread::terminate() {
    if (!thread_) {
        return;
    }
    stop_.set();
    if (Current* const self = Current::get(); self && self->object == this) {
        self->finished = true;
    } else {
        for (unsigned long waited_ms = 0; !hasEnded() && !kill(waited_ms >= startPatience_ms); ++waited_ms) {
            Sleep(1);
        }
    }
    done_.set();
    thread_.reset();
}

// Between suspending and resuming nothing may be called that takes a lock: the thread may hold it.
bool winthread::kill(bool evenStarting) {
    if (!suspendFully(thread_.get())) {
        return true;
    }
    const interruption state = interruption_;
    const bool allowed = state == interruption::allowed || (state == interruption::starting && evenStarting);
    if (allowed) {
        TerminateThread(thread_.get(), static_cast<DWORD>(-1));
    } else {
        // Also if `suspend` stopped it: it would never leave its region.
        resumeFully(thread_.get());
    }
    if (allowed) {
        WaitForSingleObject(thread_.get(), kill_ms);
    }
    return allowed;
}

bool winthread::suspend() {
    return thread_ && static_cast<int>(SuspendThread(thread_.get())) <= 0;
}

bool winthread::resume() {
    return thread_ && static_cast<int>(ResumeThread(thread_.get())) < 2;
}

// The thread's own end counts, too: a process that ends kills its threads without a word.
bool winthread::hasJoined(unsigned long timeoutMs) const {
    HANDLE ends[] = {done_.handle(), thread_.get()};
    return vcore::event::wait(ends, 2, false, timeoutMs) >= 0;
}

bool winthread::wait(unsigned long timeoutMs) const {
    return !thread_ || !hasJoined(timeoutMs);
}

bool winthread::finished() const {
    return !thread_ || hasEnded();
}

bool winthread::running() const {
    return !finished();
}

bool winthread::finishing(int timeoutMs, void* extraHandle) const {
    const auto timeout = static_cast<unsigned long>(timeoutMs);
    if (!extraHandle) {
        return stop_.wait(timeout);
    }
    HANDLE handles[] = {stop_.handle(), extraHandle};
    return vcore::event::wait(handles, 2, false, timeout) == WAIT_OBJECT_0;
}

bool winthread::setPriority(int priority, void* thread) {
    return SetThreadPriority(threadOrSelf(thread), std::clamp(priority, -15, 15)) != FALSE;
}

void winthread::setProcessor(int processor, void* thread) {
    using Setter = DWORD(WINAPI*)(HANDLE, DWORD);
    const FARPROC entry = GetProcAddress(GetModuleHandleA("KERNEL32.DLL"), "SetThreadIdealProcessor");
    if (const auto set = reinterpret_cast<Setter>(reinterpret_cast<void*>(entry))) {
        set(threadOrSelf(thread), static_cast<DWORD>(processor));
    }
}

int winthread::processorCount() {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return static_cast<int>(info.dwNumberOfProcessors);
}

// The exchange keeps the region's work between its start and its end.
winthread::interruption winthread::setInterruption(interruption state) {
    // Looking the thread up clears its last error, which the code around a region may still want to read.
    const DWORD error = GetLastError();
    const Current* const self = Current::get();
    SetLastError(error);
    return self && !self->finished ? self->object->interruption_.exchange(state) : state;
}

winthread::uninterruptible::uninterruptible() : before_(setInterruption(interruption::shielded)) {}

winthread::uninterruptible::~uninterruptible() {
    setInterruption(before_);
}

winthread::killable::killable() : before_(setInterruption(interruption::allowed)) {}

winthread::killable::~killable() {
    setInterruption(before_);
}

} // namespace vwin
