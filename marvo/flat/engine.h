/// @file
/// The engine as the flat interface drives it: one command at a time.
#pragma once

#include "marvo/core/handle.h"
#include "marvo/flat/engine_events.h"
#include "marvo/flat/lock.h"
#include "marvo/frontend/front_end.h"
#include "marvo/replay/feed_filter.h"
#include "marvo_c.h"

#include <atomic>

namespace flat {

/// `dvFE` for hosts of many threads. Commands are serialised by one lock, the outermost of all, which no
/// thread of the engine's ever takes; window commands belong to the thread that built the engine.
class Engine {
public:
    Engine() = default;
    /// Takes the feed away from the engine.
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// The one there is, made at its first use. It lives until the library goes.
    static Engine& only();

    /// A command that is carried out while this lives.
    class Command {
    public:
        /// Waits for the command of another thread. Throws MARVO_E_BUSY within one of this thread.
        Command();
        /// Tells what has changed.
        ~Command();
        Command(const Command&) = delete;
        Command& operator=(const Command&) = delete;

        /// Throws MARVO_E_STATE when the engine is not built.
        void needBuilt() const;
        /// A replay has been begun, maybe the same one again.
        void replayBegun() { replayBegun_ = true; }

    protected:
        Engine& engine_;

    private:
        bool replayBegun_ = false;
    };

    /// A command that has to do with windows.
    class WindowCommand : public Command {
    public:
        /// As `Command`. Throws MARVO_E_ARGUMENT for what is no window, and MARVO_E_THREAD for one of
        /// another thread, and when another living thread has built the engine.
        explicit WindowCommand(void* window = nullptr);
        ~WindowCommand();
    };

    /// What is built, as of the last command.
    marvo_built built() const { return built_; }
    /// Changes at the start and at the end of each command; odd during one.
    unsigned version() const { return version_; }
    /// What the engine tells.
    EngineEvents& events() { return events_; }
    /// What stands in the place of a camera. Used within commands, but for `add`.
    dvFeedFilter& feed() { return feed_; }

    /// Whether the feed is open, within commands.
    bool feedOpen = false;

private:
    void noteReplay(bool begun);
    bool threadLives() const;

    Lock lock_;
    std::atomic<DWORD> owner_{0};
    std::atomic<unsigned> version_{0};
    std::atomic<marvo_built> built_{MARVO_BUILT_NOTHING};
    DWORD windowThreadId_ = 0; // within commands
    vcore::handle windowThread_;
    bool replaying_ = false;
    EngineEvents events_;
    dvFeedFilter feed_;
};

} // namespace flat
