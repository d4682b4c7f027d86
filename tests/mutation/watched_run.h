/// @file
/// Runs a test with many numbers and names the one that faults or hangs.
#pragma once

#include "tests/support/import_patch.h"

#include <gtest/gtest.h>
#include <psapi.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

/// Runs a test body with one number after the other, each with random numbers of its own. Watches processor
/// time and memory, and names the number when the body faults or hangs. With the environment variable
/// MARVO_MUTATION only the number that it holds is run.
///
/// The system does not fault where it is told to read into memory that is not there, but refuses; so the
/// library's reads touch the end of their buffers first.
class WatchedRun {
public:
    static constexpr unsigned seed = 20031;

    /// `salt` makes the random numbers differ from those of other runs.
    WatchedRun(const char* what, unsigned salt) : what_(what), salt_(salt) {
        EXPECT_NE(nullptr, reads_.original());
        current = this;
        handler_ = AddVectoredExceptionHandler(1, &onFault);
        CreateTimerQueueTimer(&watchdog_, nullptr, &onHang, this, hang_ms, 0, WT_EXECUTEDEFAULT);
    }
    ~WatchedRun() {
        // Waits for it when it is under way.
        static_cast<void>(DeleteTimerQueueTimer(nullptr, watchdog_, INVALID_HANDLE_VALUE));
        RemoveVectoredExceptionHandler(handler_);
        current = nullptr;
    }
    WatchedRun(const WatchedRun&) = delete;
    WatchedRun& operator=(const WatchedRun&) = delete;

    /// Calls `body(random, number)` for the numbers below `count`, until one has failed.
    template <class Body>
    void run(unsigned count, Body body) {
        std::printf("%s: seed %u, %u files\n", what_, seed, count);
        const size_t before = peakBytes();
        const char* only = std::getenv("MARVO_MUTATION");
        const auto first = only ? static_cast<unsigned>(std::strtoul(only, nullptr, 10)) : 0u;
        for (number_ = first; number_ < (only ? first + 1 : count); ++number_) {
            std::seed_seq mixed{seed, salt_, number_.load()};
            std::mt19937 random(mixed);
            const double from_s = cpu_s();
            ASSERT_TRUE(ChangeTimerQueueTimer(nullptr, watchdog_, hang_ms, 0));
            body(random, number_.load());
            slowest_s_ = std::max(slowest_s_, cpu_s() - from_s);
            ASSERT_LT(slowest_s_, mostSeconds) << name() << " takes too long";
            ASSERT_LT(peakBytes(), before + mostBytes) << name() << " takes too much memory";
            ASSERT_FALSE(testing::Test::HasFailure()) << name();
        }
        std::printf("%s: slowest %.0f ms, %zu MB more at the peak\n", what_, slowest_s_ * 1000,
                    (peakBytes() - before) >> 20);
    }

private:
    static constexpr double mostSeconds = 2;
    static constexpr size_t mostBytes = 96 << 20;
    static constexpr DWORD hang_ms = 100000;

    std::string name() const { return std::string(what_) + ", MARVO_MUTATION=" + std::to_string(number_); }

    static double cpu_s() {
        FILETIME created, ended, kernel, user;
        GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
        return (kernel.dwLowDateTime + user.dwLowDateTime) * 1e-7;
    }

    static size_t peakBytes() {
        PROCESS_MEMORY_COUNTERS counters{};
        GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
        return counters.PeakWorkingSetSize;
    }

    static LONG WINAPI onFault(EXCEPTION_POINTERS* fault) {
        if (fault->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION && current) {
            std::fprintf(stderr, "fault at %p in %s\n", fault->ExceptionRecord->ExceptionAddress,
                         current->name().c_str());
        }
        return EXCEPTION_CONTINUE_SEARCH;
    }

    static BOOL WINAPI touchAndRead(HANDLE file, void* buffer, DWORD bytes, DWORD* done, OVERLAPPED* place) {
        if (bytes != 0) {
            volatile char& last = static_cast<char*>(buffer)[bytes - 1];
            last = last;
        }
        return ReadFile(file, buffer, bytes, done, place);
    }

    static void CALLBACK onHang(void* run, BOOLEAN) {
        std::fprintf(stderr, "%s hangs\n", static_cast<WatchedRun*>(run)->name().c_str());
        TerminateProcess(GetCurrentProcess(), 3);
    }

    static inline WatchedRun* current = nullptr;

    const char* what_;
    unsigned salt_;
    std::atomic<unsigned> number_ = 0;
    double slowest_s_ = 0;
    void* handler_ = nullptr;
    ImportPatch reads_{engineModule(), "ReadFile", reinterpret_cast<void*>(&touchAndRead)};
    HANDLE watchdog_ = nullptr;
};
