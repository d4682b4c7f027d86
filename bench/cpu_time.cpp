#include "bench/cpu_time.h"

#include "marvo.h"

#include <algorithm>

namespace {

unsigned long long count_100ns(const FILETIME& time) {
    return static_cast<unsigned long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

unsigned long long processCpu_100ns() {
    FILETIME created, ended, kernel, user;
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    return count_100ns(kernel) + count_100ns(user);
}

} // namespace

double processCpu_s() {
    return static_cast<double>(processCpu_100ns()) * 1e-7;
}

double processCpuStep_s() {
    constexpr int steps = 20;
    unsigned long long smallest = ~0ull;
    unsigned long long last = processCpu_100ns();
    for (int seen = 0; seen < steps;) {
        const unsigned long long next = processCpu_100ns();
        if (next > last) {
            smallest = std::min(smallest, next - last);
            last = next;
            ++seen;
        }
    }
    return static_cast<double>(smallest) * 1e-7;
}
