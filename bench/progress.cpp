#include "bench/progress.h"

#include <algorithm>
#include <cstdio>
#include <utility>

Progress::~Progress() {
    show("");
    std::fputc('\r', stderr);
}

void Progress::step(const std::string& text) {
    step_ = group_ + ": " + text;
    show(step_);
}

void Progress::part(double done, double all) {
    if (now_s() - shown_s_ < 1) {
        return;
    }
    char percent[16];
    std::snprintf(percent, sizeof(percent), " %3.0f %%", std::clamp(done / all, 0.0, 1.0) * 100);
    show(step_ + percent);
}

void Progress::show(const std::string& text) {
    shown_s_ = now_s();
    const size_t former = std::exchange(width_, text.size());
    std::fprintf(stderr, "\r%-*s", static_cast<int>(std::max(former, width_)), text.c_str());
    std::fflush(stderr);
}
