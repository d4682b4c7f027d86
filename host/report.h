/// @file
/// The record of a script's run as JSON.
#pragma once

#include "host/play_watch.h"
#include "host/script.h"
#include "host/status.h"

#include <map>
#include <string>
#include <vector>

namespace host {

/// What became of one line of a script.
struct StepResult {
    ScriptLine line;
    double time_ms = 0.0; ///< when it ended, since the run began
    bool held = true;     ///< false: an expectation failed, or the command could not be tried
    std::string message;  ///< what happened, for people
    Status status;        ///< afterwards
};

/// Collects the steps of a run. The text is UTF-8.
class Report {
public:
    /// Adds a finished step.
    void add(StepResult step) { steps_.push_back(std::move(step)); }
    /// Notes a screenshot's file.
    void addScreenshot(const std::string& file) { screenshots_.push_back(file); }
    /// The number of steps that did not hold.
    size_t failures() const;
    /// The whole report: result, steps with status, screenshots, and for each watch its frames with the time
    /// of the first tick and the number of ticks.
    std::string json(const std::string& script, const std::map<std::string, PlayWatch>& watches) const;

private:
    std::vector<StepResult> steps_;
    std::vector<std::string> screenshots_;
};

} // namespace host
