/// @file
/// Child processes.
#pragma once

#include "marvo/core/file.h"
#include "marvo/core/handle.h"
#include "marvo/core/platform.h"
#include "marvo/core/str.h"

namespace vwin {

/// One child process per object. The child inherits every inheritable handle of this process. It outlives the
/// object unless it is stopped before. Not thread-safe: guarded by its owner.
///
/// A command line begins with the program, in double quotes when there are blanks in its name; ".exe" may be
/// left out, and a bare name is searched for as the system does, also in the current directory; so give the
/// whole path, unless everyone who can write there may run programs here. The line is handed to the child as
/// it is, without blanks in front. It has at most 32766 characters.
///
/// `start` and `startConsole` throw `std::bad_alloc` when there is no memory, as the strings they take do.
class MARVO_API winprocess {
public:
    /// No process yet.
    winprocess() = default;
    ~winprocess() = default;
    winprocess(const winprocess&) = delete;
    winprocess& operator=(const winprocess&) = delete;

    /// Starts a process. False when the system refuses, for no command line, and while the child started
    /// before still runs.
    bool start(const wchar_t* commandLine);
    /// Starts a console program without a window. What it writes to its standard output and its standard
    /// error goes to a new file "log%08x.txt" in the current directory, numbered from the system's tick count
    /// on; its standard input is empty. The child writes into the file itself and so never waits for a
    /// reader. False as for `start`, and when the file cannot be made; a file made for nothing is removed.
    bool startConsole(const wchar_t* commandLine);

    /// Waits at most `timeoutMs` (`INFINITE`: without end) for the child's end. True when it has ended or
    /// there is none.
    bool wait(unsigned long timeoutMs) const;
    /// Asks the child's windows to close, waits for its end as `wait` does, and kills it on a time-out (its
    /// own children go on). True when it has ended or there is none.
    bool stop(unsigned long timeoutMs);
    /// Whether there is a child that has not ended.
    bool running() const { return !wait(0); }
    /// Sets `code` to the exit code of a child that has ended; -1 stands for one that was killed by `stop`.
    /// False while it runs and when there is none.
    bool exitCode(unsigned long& code) const;

    /// Replaces `text` by what the child has written to its console since the last call (at most 32768 bytes
    /// of it), converted from the ANSI code page. False when there is nothing new; everything has been read
    /// when that happens after the child's end.
    bool readConsole(vcore::str& text);
    /// Name of the file that holds the console's output, which stays when the child has ended; empty when
    /// there is none.
    const vcore::str& logName() const { return log_.filename(); }

    /// System-wide id of the child, 0 when there is none.
    unsigned long id() const { return id_; }
    /// System handle of the child, null when there is none.
    HANDLE handle() const { return process_.get(); }

private:
    bool startProcess(const wchar_t* commandLine, HANDLE console);

    vcore::handle process_;
    unsigned long id_ = 0;
    vcore::file log_;
};

} // namespace vwin
