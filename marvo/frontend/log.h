/// @file
/// The front end's log file.
#pragma once

#include "marvo/core/file.h"
#include "marvo/core/semaphore.h"

#include <atomic>

namespace frontend {

/// "marvo.log" in the current directory, begun anew for each front end. A line is local time, thread, depth
/// and text.
///
/// Threads: any. A lock keeps the lines of several threads apart and complete; it is waited for at most 500
/// ms, so that a disk that stands still does not hold up a command: a line may then be lost.
class Log {
public:
    /// A closed log, in which nothing is written.
    Log();
    /// Empties the file. False when it cannot be written.
    bool open();

    /// Writes `text`, without line ends and tabs, as one line. Null, and a suppressible text while these are
    /// off, is left out; so is a line for which there is no memory.
    void write(const char* text, bool suppressible);
    /// Whether suppressible lines are written; on at first.
    void writeSuppressible(bool on) { suppressible_ = on; }

    /// Takes a line; see `setDrain`.
    using Drain = void (*)(const char* line);
    /// Has `drain` called with each line as the file gets it, without its line end; null for none. It is
    /// called on the thread that logs, with the lock held, so it only keeps the line, and throws nothing.
    /// Also called for a log that has no file.
    void setDrain(Drain drain) { drain_ = drain; }
    /// Raises the depth that lines show.
    void deeper() { ++depth_; }
    /// Lowers it again.
    void shallower() { --depth_; }

    /// Lines written while it lives carry one more level of depth.
    class Scope {
    public:
        /// Raises the depth of `log`, which outlives it.
        explicit Scope(Log& log) : log_(log) { log_.deeper(); }
        ~Scope() { log_.shallower(); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        Log& log_;
    };

private:
    vcore::file file_;
    vcore::semaphore lock_;
    std::atomic<bool> suppressible_{true};
    std::atomic<int> depth_{0};
    std::atomic<Drain> drain_{nullptr};
};

} // namespace frontend
