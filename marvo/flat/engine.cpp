#include "marvo/flat/engine.h"

#include "marvo/core/guarded.h"
#include "marvo/core/process_state.h"
#include "marvo/core/text.h"
#include "marvo/flat/failure.h"

#include <memory>

namespace flat {

namespace {

/// Left alone in a process that ends: its threads are gone in the middle of what they did.
struct Holder {
    std::unique_ptr<Engine> engine = std::make_unique<Engine>();

    Holder() = default;
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() {
        if (vcore::processEnding()) {
            static_cast<void>(engine.release());
        }
    }
};

} // namespace

Engine& Engine::only() {
    static Holder holder;
    return *holder.engine;
}

Engine::~Engine() {
    dvFE.setSource(nullptr);
}

Engine::Command::Command() : engine_(only()) {
    const DWORD self = GetCurrentThreadId();
    if (engine_.owner_ == self) {
        fail(MARVO_E_BUSY,
             "This thread is inside of another command of the engine; try again when that has ended.");
    }
    engine_.lock_.lock();
    engine_.owner_ = self;
    ++engine_.version_;
}

Engine::Command::~Command() {
    switch (dvFE.built()) {
    case dvFrontEnd::Built::nothing:
        engine_.built_ = MARVO_BUILT_NOTHING;
        break;
    case dvFrontEnd::Built::all:
        engine_.built_ = MARVO_BUILT_ALL;
        break;
    case dvFrontEnd::Built::playAlone:
        engine_.built_ = MARVO_BUILT_PLAY;
        break;
    }
    vcore::guarded([this] { engine_.noteReplay(replayBegun_); });
    ++engine_.version_;
    engine_.owner_ = 0;
    engine_.lock_.unlock();
}

void Engine::Command::needBuilt() const {
    if (engine_.built_ == MARVO_BUILT_NOTHING) {
        fail(MARVO_E_STATE, "The engine is not built; call marvo_init or marvo_play_init first.");
    }
}

Engine::WindowCommand::WindowCommand(void* window) {
    const DWORD self = GetCurrentThreadId();
    const auto handle = static_cast<HWND>(window);
    if (window && !IsWindow(handle)) {
        fail(MARVO_E_ARGUMENT, "This is no window.");
    }
    if (window && GetWindowThreadProcessId(handle, nullptr) != self) {
        fail(MARVO_E_THREAD, "The window belongs to another thread; call this on the thread that made it.");
    }
    if (engine_.built_ != MARVO_BUILT_NOTHING && engine_.windowThreadId_ != self && engine_.threadLives()) {
        fail(MARVO_E_THREAD,
             vcore::format("The engine was built on thread %lu; call this there.", engine_.windowThreadId_));
    }
}

Engine::WindowCommand::~WindowCommand() {
    if (dvFE.built() == dvFrontEnd::Built::nothing) {
        engine_.windowThread_.reset();
        engine_.windowThreadId_ = 0;
        return;
    }
    const DWORD self = GetCurrentThreadId();
    if (engine_.windowThreadId_ != self) {
        engine_.windowThread_.reset(OpenThread(SYNCHRONIZE, FALSE, self));
        engine_.windowThreadId_ = self;
    }
}

bool Engine::threadLives() const {
    return windowThread_ && WaitForSingleObject(windowThread_.get(), 0) == WAIT_TIMEOUT;
}

void Engine::noteReplay(bool begun) {
    const marvo_play_info play = EngineEvents::play();
    const bool replaying = play.replaying != 0 && built_ != MARVO_BUILT_NOTHING;
    if (replaying && (begun || !replaying_)) {
        events_.tell(MARVO_EVENT_REPLAY_STARTED, play.from, play.to - play.from + 1, 0,
                     vcore::format("The replay of frames %llu to %llu has begun.", play.from, play.to));
    } else if (replaying_ && !replaying) {
        events_.tell(MARVO_EVENT_REPLAY_ENDED, 0, 0, 0, "The replay has ended.");
    }
    replaying_ = replaying;
}

} // namespace flat
