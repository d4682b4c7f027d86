/// @file
/// Running a script against the engine.
#pragma once

#include "host/app_window.h"
#include "host/play_watch.h"
#include "host/report.h"
#include "host/script.h"
#include "host/transport.h"

#include <functional>
#include <map>
#include <set>
#include <string>

namespace host {

/// Runs a script's commands one after the other on the window's thread, dispatching its messages while it
/// waits. A failed expectation is noted and the script goes on.
class ScriptRunner {
public:
    /// Screenshots go to `directory` (empty: the current one), which exists.
    ScriptRunner(AppWindow& window, Transport& transport, std::wstring directory);

    /// Runs all commands, or up to `quit` or to the window's being closed (which is a failure). Each step is
    /// printed as it ends. True when everything held.
    bool run(const Script& script);
    /// Takes note of a progress message.
    void notePost(unsigned long frame);
    /// The report of the run, as JSON.
    std::string report(const std::string& scriptName) const { return report_.json(scriptName, watches_); }

private:
    /// What a step came to.
    struct Outcome {
        bool held;
        std::string message;
    };
    using Words = std::vector<std::string>;
    using Handler = Outcome (ScriptRunner::*)(const Words&);

    static const std::map<std::string, Handler>& handlers();
    StepResult step(const ScriptLine& line);
    double elapsed_ms() const;
    Outcome command(bool worked) const;
    double number(const std::string& expression) const;
    long long frame(const std::string& expression) const;
    Outcome waitUntil(const char* name, const Words& words);

    Outcome doInit(const Words& words);
    Outcome doPlayInit(const Words& words);
    Outcome doLive(const Words& words);
    Outcome doRecord(const Words& words);
    Outcome doStop(const Words& words);
    Outcome doPause(const Words& words);
    Outcome doResume(const Words& words);
    Outcome doReplay(const Words& words);
    Outcome doLast(const Words& words);
    Outcome doSpeed(const Words& words);
    Outcome doSeek(const Words& words);
    Outcome doMark(const Words& words);
    Outcome doElement(const Words& words);
    Outcome doShow(const Words& words);
    Outcome doHide(const Words& words);
    Outcome doSize(const Words& words);
    Outcome doPos(const Words& words);
    Outcome doDone(const Words& words);
    Outcome doQuit(const Words& words);
    Outcome doWait(const Words& words);
    Outcome doWaitFrame(const Words& words);
    Outcome doWaitWritten(const Words& words);
    Outcome doWaitShown(const Words& words);
    Outcome doExpect(const Words& words);
    Outcome doWatch(const Words& words);
    Outcome doExpectSequence(const Words& words);
    Outcome doLet(const Words& words);
    Outcome doScreenshot(const Words& words);
    Outcome doLog(const Words& words);
    Outcome doCall(const Words& words);
    Outcome doSet(const Words& words);

    AppWindow& window_;
    Transport& transport_;
    std::wstring directory_;
    Report report_;
    std::map<std::string, double> values_;
    std::map<std::string, PlayWatch> watches_;
    std::set<std::string> watching_;
    bool wasReplaying_ = false;
    bool quit_ = false;
    long long start_ = 0;
};

} // namespace host
