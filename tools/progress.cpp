#include "tools/progress.h"

#include "tools/interruption.h"
#include "tools/text.h"

#include <algorithm>
#include <cstdio>

namespace dvrec {

namespace {

/// How often the line changes: in place on a terminal, elsewhere as one more line.
constexpr ULONGLONG terminalInterval_ms = 250;
constexpr ULONGLONG otherInterval_ms = 1000;

bool errorsGoToTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

} // namespace

Progress::Progress(std::string work, bool always)
    : work_(std::move(work)), terminal_(errorsGoToTerminal()), shown_(terminal_ || always),
      begin_ms_(GetTickCount64()), next_ms_(terminal_ ? begin_ms_ + terminalInterval_ms : begin_ms_) {}

Progress::~Progress() {
    if (terminal_ && width_ > 0) {
        std::fprintf(stderr, "\r%*s\r", static_cast<int>(width_), "");
    }
}

std::string Progress::line(unsigned long long done, unsigned long long all, double seconds) const {
    const double megabytes = static_cast<double>(done) / 1e6;
    const double share = all > 0 ? static_cast<double>(done) / static_cast<double>(all) : 1.0;
    std::string text = format("%s: %.1f of %.1f MB, %.0f %%", work_.c_str(), megabytes,
                              static_cast<double>(all) / 1e6, share * 100);
    if (seconds > 0 && share > 0) {
        text += format(", %.1f MB/s, %.0f s left", megabytes / seconds, seconds / share - seconds);
    }
    return text;
}

void Progress::update(unsigned long long done, unsigned long long all) {
    checkInterruption();
    show(done, all);
}

void Progress::show(unsigned long long done, unsigned long long all) {
    const ULONGLONG now = GetTickCount64();
    if (!shown_ || now < next_ms_) {
        return;
    }
    next_ms_ = now + (terminal_ ? terminalInterval_ms : otherInterval_ms);
    const std::string text = line(done, all, static_cast<double>(now - begin_ms_) / 1000);
    if (terminal_) {
        std::fprintf(stderr, "\r%-*s", static_cast<int>(width_), text.c_str());
    } else {
        std::fprintf(stderr, "%s\n", text.c_str());
    }
    std::fflush(stderr);
    width_ = std::max(width_, text.size());
}

} // namespace dvrec
