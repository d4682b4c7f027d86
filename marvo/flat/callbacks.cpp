#include "marvo/flat/callbacks.h"

#include "marvo/core/guarded.h"
#include "marvo/core/handle.h"
#include "marvo/core/text.h"
#include "marvo/flat/failure.h"
#include "marvo/flat/text.h"

namespace flat {

namespace {

constexpr std::size_t mostEvents = 512;
constexpr std::size_t mostLines = 2048;

} // namespace

Callbacks::Callbacks() : events_(mostEvents) {}

template <class Function>
void Callbacks::set(Target<Function>& target, Kind kind, Function function, void* user) {
    const LockGuard guard(lock_);
    target = {function, user};
    drop(kind);
    wantsTicks_ = tick_.function != nullptr;
    if (function && !running_) {
        start();
    }
    if (function && !running_) {
        target = {};
        fail(MARVO_E_MEMORY, "There is no thread to be had for callbacks.");
    }
    changed_.wakeAll();
    while (calling_ == kind && GetCurrentThreadId() != thread_) {
        changed_.wait(lock_, INFINITE);
    }
}

void Callbacks::setEvent(marvo_event_fn callback, void* user) {
    set(event_, eventKind, callback, user);
}

void Callbacks::setLine(marvo_log_fn callback, void* user) {
    set(line_, lineKind, callback, user);
}

void Callbacks::setTick(marvo_play_fn callback, void* user) {
    set(tick_, tickKind, callback, user);
}

/// What waits was meant for the one before.
void Callbacks::drop(Kind kind) {
    if (kind == eventKind) {
        events_.clear();
    } else if (kind == lineKind) {
        lines_.clear();
        linesLost_ = 0;
    } else {
        newestTick_.reset();
    }
}

void Callbacks::start() {
    static const int anchor = 0;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&anchor),
                            &library_)) {
        return;
    }
    const vcore::handle thread(CreateThread(nullptr, 0, threadProc, this, 0, &thread_));
    running_ = static_cast<bool>(thread);
    if (!running_) {
        FreeLibrary(library_);
    }
}

/// The thread lets the library go itself, behind its last step in it: whoever removed the last callback may
/// free the library at once.
DWORD WINAPI Callbacks::threadProc(void* self) {
    auto* const callbacks = static_cast<Callbacks*>(self);
    HMODULE library = nullptr;
    {
        const LockGuard guard(callbacks->lock_);
        library = callbacks->library_;
    }
    callbacks->run();
    FreeLibraryAndExitThread(library, 0);
}

void Callbacks::run() {
    while (callNext()) {
    }
}

/// Waits for something to tell, and tells it. False, and the thread is none any more, when nothing is set.
bool Callbacks::callNext() {
    marvo_event event{};
    std::string line;
    marvo_play_info tick{};
    Target<marvo_event_fn> eventTarget;
    Target<marvo_log_fn> lineTarget;
    Target<marvo_play_fn> tickTarget;
    {
        const LockGuard guard(lock_);
        calling_ = noKind;
        changed_.wakeAll();
        while (calling_ == noKind) {
            if (!anySet()) {
                running_ = false;
                return false;
            }
            if (events_.take(event, 0)) {
                calling_ = eventKind;
                eventTarget = event_;
            } else if (!lines_.empty()) {
                calling_ = lineKind;
                lineTarget = line_;
                line = std::move(lines_.front());
                lines_.pop_front();
            } else if (newestTick_) {
                calling_ = tickKind;
                tickTarget = tick_;
                tick = *newestTick_;
                newestTick_.reset();
            } else {
                changed_.wait(lock_, INFINITE);
            }
        }
    }
    if (eventTarget.function) {
        eventTarget.function(eventTarget.user, &event);
    } else if (lineTarget.function) {
        vcore::guarded([&] { line = asUtf8(line); });
        lineTarget.function(lineTarget.user, line.c_str());
    } else if (tickTarget.function) {
        tickTarget.function(tickTarget.user, &tick);
    }
    return true;
}

void Callbacks::post(const marvo_event& event) {
    const LockGuard guard(lock_);
    if (event_.function) {
        events_.put(event);
        changed_.wakeAll();
    }
}

void Callbacks::post(const char* line) {
    const LockGuard guard(lock_);
    if (!line_.function) {
        return;
    }
    bool kept = lines_.size() < mostLines;
    try {
        if (kept && linesLost_ != 0) {
            lines_.push_back(vcore::counted(linesLost_, "line") + " left out here");
            linesLost_ = 0;
        }
        if (kept) {
            lines_.emplace_back(line);
        }
    } catch (...) {
        kept = false;
    }
    linesLost_ += kept ? 0 : 1;
    changed_.wakeAll();
}

void Callbacks::post(const marvo_play_info& tick) {
    const LockGuard guard(lock_);
    if (tick_.function) {
        newestTick_ = tick;
        changed_.wakeAll();
    }
}

} // namespace flat
