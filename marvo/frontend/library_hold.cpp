#include "marvo/frontend/library_hold.h"

#include "marvo/core/event.h"
#include "marvo/core/handle.h"

#include <atomic>
#include <utility>

namespace frontend {

namespace {

/// A thread that calls `FreeLibrary` on the module it runs in finds no code to return to when that was the
/// last reference. So another thread, the releaser, does it. Whether the module goes then shows only when its
/// destructors run, on the releaser and before the code is unmapped: this one waits until the thread that let
/// go is out of the module's code.
class Departure {
public:
    ~Departure() {
        if (releaser_ != GetCurrentThreadId()) {
            return;
        }
        unloading_.set();
        while (!onlyReturns_ || isInside()) {
            Sleep(1);
        }
    }

    void run(HMODULE library) {
        library_ = library;
        onlyReturns_ = false;
        HANDLE self = nullptr;
        DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &self, 0, FALSE,
                        DUPLICATE_SAME_ACCESS);
        leaver_.reset(self);
        const vcore::handle releaser(CreateThread(nullptr, 0, release, this, 0, nullptr));
        if (releaser) {
            HANDLE either[] = {releaser.get(), unloading_.handle()};
            // The limit is for a caller that holds the loader lock, without which no thread begins or ends.
            vcore::event::wait(either, 2, false, limit_ms);
        }
    }

    /// The calling thread goes back to its caller now, and calls nothing more of the system before.
    void returning() { onlyReturns_ = true; }

private:
    static constexpr unsigned long limit_ms = 5000;

    static DWORD WINAPI release(void* departure) {
        auto* self = static_cast<Departure*>(departure);
        self->releaser_ = GetCurrentThreadId();
        FreeLibraryAndExitThread(self->library_, 0);
    }

    /// Whether the leaver executes the module's code. A thread that has ended does not.
    bool isInside() const {
        if (SuspendThread(leaver_.get()) == static_cast<DWORD>(-1)) {
            return false;
        }
        CONTEXT context{};
        context.ContextFlags = CONTEXT_CONTROL;
        const bool known = GetThreadContext(leaver_.get(), &context) != FALSE;
        ResumeThread(leaver_.get());
#if defined(_WIN64)
        const auto place = static_cast<ULONG_PTR>(context.Rip);
#else
        const auto place = static_cast<ULONG_PTR>(context.Eip);
#endif
        MEMORY_BASIC_INFORMATION memory{};
        return known && VirtualQuery(reinterpret_cast<void*>(place), &memory, sizeof(memory)) != 0 &&
               memory.AllocationBase == library_;
    }

    HMODULE library_ = nullptr;
    vcore::handle leaver_;
    vcore::event unloading_;
    std::atomic<DWORD> releaser_{0};
    std::atomic<bool> onlyReturns_{false};
};

Departure& departure() {
    static Departure only;
    return only;
}

} // namespace

/// Made here, the departure is destroyed after the front end: while the leaver waits, it dispatches no
/// messages, so it cannot be in the procedure of a window that the front end destroys.
LibraryHold::LibraryHold() {
    departure();
}

void LibraryHold::take() {
    if (!library_) {
        static const int anchor = 0;
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&anchor),
                           &library_);
    }
}

void LibraryHold::letGo() {
    if (library_) {
        departure().run(std::exchange(library_, nullptr));
        departure().returning();
    }
}

} // namespace frontend
