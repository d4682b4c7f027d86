/// @file
/// One line on the terminal that tells how far the measurements are.
#pragma once

#include "bench/stopwatch.h"

#include <string>

/// The one line on standard error that tells what is being measured.
class Progress {
public:
    /// Removes the line.
    ~Progress();

    /// Shows a new step at once: "group: text".
    void step(const std::string& text);
    /// Shows how far the step has come, at most once a second.
    void part(double done, double all);
    void beginGroup(const char* name) { group_ = name; }

private:
    void show(const std::string& text);

    std::string group_;
    std::string step_;
    size_t width_ = 0;
    double shown_s_ = 0;
};
