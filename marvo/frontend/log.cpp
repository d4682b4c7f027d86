#include "marvo/frontend/log.h"

#include "marvo/core/guarded.h"
#include "marvo/core/timed_guard.h"

#include <cstdio>
#include <string>

namespace frontend {

namespace {

constexpr unsigned long lockWait_ms = 500;

SYSTEMTIME localTime() {
    SYSTEMTIME utc{};
    SYSTEMTIME local{};
    GetSystemTime(&utc);
    return SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) ? local : utc;
}

std::string prefix(int depth) {
    const SYSTEMTIME now = localTime();
    char text[64];
    std::snprintf(text, sizeof(text), "%02d:%02d:%02d.%03d[%05d]:", now.wHour, now.wMinute, now.wSecond,
                  now.wMilliseconds, static_cast<int>(GetCurrentThreadId()));
    return text + (depth < 1 ? "  " : std::to_string(depth) + " ");
}

} // namespace

Log::Log() : file_(L"marvo.log", CREATE_ALWAYS), lock_(1, 1) {}

bool Log::open() {
    return file_.open(nullptr);
}

void Log::write(const char* text, bool suppressible) {
    if ((!file_.opened() && !drain_) || (suppressible && !suppressible_) || !text) {
        return;
    }
    vcore::guarded([&] {
        std::string line(text);
        std::erase_if(line, [](char c) { return c == '\r' || c == '\n' || c == '\t'; });
        line = prefix(depth_) + line;
        const std::string ended = line + "\r\n";
        const vcore::timed_guard guard(lock_, lockWait_ms);
        file_.write(ended.data(), static_cast<unsigned long>(ended.size()), nullptr);
        if (const Drain drain = drain_) {
            drain(line.c_str());
        }
    });
}

} // namespace frontend
