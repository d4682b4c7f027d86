/// @file
/// The line of progress.
#pragma once

#include "marvo/core/platform.h"

#include <string>

namespace dvrec {

/// Shows on the standard error output how far long work has come, how fast it is and how long it will take.
class Progress {
public:
    /// `work` names what is done. On a terminal the line is kept in place, and is as long as that is wide;
    /// elsewhere nothing is shown unless `always`, and then a new line each time.
    Progress(std::string work, bool always);
    /// Removes the line from a terminal.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Shows that `done` of `all` bytes are done, at most a few times per second.
    void show(unsigned long long done, unsigned long long all);
    /// The same; throws the `Failure` when the user has interrupted the program.
    void update(unsigned long long done, unsigned long long all);

private:
    const std::string work_;
    const bool terminal_;
    const bool shown_;
    const ULONGLONG begin_ms_;
    ULONGLONG next_ms_;
    size_t width_ = 0;
};

} // namespace dvrec
