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

/// Places of the terminal's line that may be written without going on in the next one.
size_t terminalColumns() {
    constexpr size_t usual = 79;
    CONSOLE_SCREEN_BUFFER_INFO terminal{};
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &terminal)) {
        return usual;
    }
    const int width = terminal.srWindow.Right - terminal.srWindow.Left;
    return width > 0 ? static_cast<size_t>(width) : usual;
}

std::string statusText(unsigned long long done, unsigned long long all, double seconds) {
    const double megabytes = static_cast<double>(done) / 1e6;
    const double share = all > 0 ? static_cast<double>(done) / static_cast<double>(all) : 1.0;
    std::string text =
        format(": %.1f of %.1f MB, %.0f %%", megabytes, static_cast<double>(all) / 1e6, share * 100);
    if (seconds > 0 && share > 0) {
        text += format(", %.1f MB/s, %.0f s left", megabytes / seconds, seconds / share - seconds);
    }
    return text;
}

} // namespace

Progress::Progress(std::string work, bool always)
    : work_(std::move(work)), terminal_(errorsGoToTerminal()), shown_(terminal_ || always),
      begin_ms_(GetTickCount64()), next_ms_(terminal_ ? begin_ms_ + terminalInterval_ms : begin_ms_) {}

Progress::~Progress() {
    if (terminal_ && width_ > 0) {
        std::fprintf(stderr, "\r%*s\r", static_cast<int>(std::min(width_, terminalColumns())), "");
    }
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
    const std::string status = statusText(done, all, static_cast<double>(now - begin_ms_) / 1000);
    if (terminal_) {
        const size_t columns = terminalColumns();
        const std::string text = fitted(work_, status, columns);
        const size_t taken = columnsOf(text);
        // What the former line had more is blanked; a window that was made smaller has moved it already.
        const size_t blank = std::min(std::max(width_, taken), std::max(columns, taken)) - taken;
        std::fprintf(stderr, "\r%s%*s", text.c_str(), static_cast<int>(blank), "");
        width_ = taken;
    } else {
        std::fprintf(stderr, "%s%s\n", work_.c_str(), status.c_str());
    }
    std::fflush(stderr);
}

} // namespace dvrec
