#include "tests/support/handles.h"
#include "tests/system/engine.h"

#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>

namespace {

struct Footprint {
    int handles = 0;
    unsigned long threads = 0;
    size_t bytes = 0;
};

Footprint footprint() {
    Footprint now;
    now.handles = openHandles();
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        now.threads += entry.th32OwnerProcessID == GetCurrentProcessId();
    }
    CloseHandle(snapshot);
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
    now.bytes = memory.PagefileUsage;
    return now;
}

/// Handles that the system itself leaves open each time two filter graphs are made and the camera is looked
/// up: Wine keeps an event per graph and registry keys per look-up.
int systemsHandlesPerCycle() {
    constexpr int rounds = 10;
    const auto round = [] {
        vwin::com_<IGraphBuilder>().create(CLSID_FilterGraph);
        vwin::com_<IGraphBuilder>().create(CLSID_FilterGraph);
        vwin::com_<ICreateDevEnum> devices;
        vwin::com_<IEnumMoniker> list;
        vwin::com_<IMoniker> camera;
        devices.create(CLSID_SystemDeviceEnum);
        devices->CreateClassEnumerator(CLSID_VideoInputDeviceCategory, list.put(), 0);
        list->Next(1, camera.put(), nullptr);
    };
    round();
    const int before = openHandles();
    for (int i = 0; i < rounds; ++i) {
        round();
    }
    return (openHandles() - before + rounds - 1) / rounds;
}

/// Keeps every core busy while it lives.
class Load {
public:
    Load() {
        for (unsigned i = 0; i < std::max(2u, std::thread::hardware_concurrency()); ++i) {
            threads_.emplace_back([this] {
                while (!stop_) {
                    ++spun_;
                }
            });
        }
    }
    ~Load() {
        stop_ = true;
        for (auto& thread : threads_) {
            thread.join();
        }
    }

private:
    std::atomic<bool> stop_ = false;
    std::atomic<unsigned long> spun_ = 0;
    std::vector<std::thread> threads_;
};

class Cycles : public Engine {
protected:
    void cycle() {
        ASSERT_TRUE(dvFE.init(window, false)) << log();
        ASSERT_TRUE(dvFE.startRecord(nullptr));
        ASSERT_TRUE(captured(12));
        ASSERT_TRUE(pumpUntil([] { return dvFE.writtenFrame() >= 8; }));
        ASSERT_TRUE(dvFE.replay(1, 5, nullptr));
        ASSERT_TRUE(pictureComes()) << "does each session lose a sample?";
        pump(40);
        EXPECT_LT(samples::elapsed_ms([] { dvFE.done(); }), 20000u);
        ASSERT_TRUE(devicesFree());
    }
};

TEST_F(Cycles, ManyOnABusyMachineLeaveNothingBehind) {
    constexpr int warmUp = 8;
    constexpr int cycles = 50;
    const samples::Com com;
    const int systems = systemsHandlesPerCycle() * (cycles - warmUp);
    dvFE.setPlayDelay(10);
    Footprint settled;
    {
        const Load load;
        for (int i = 0; i < cycles; ++i) {
            ASSERT_NO_FATAL_FAILURE(cycle()) << "cycle " << i;
            if (i + 1 == warmUp) {
                settled = footprint();
            }
        }
    }
    dvFE.setPlayDelay(100);
    // The system's own worker threads end in their own time.
    Footprint end;
    pumpUntil([&] {
        end = footprint();
        return end.threads <= settled.threads && end.handles <= settled.handles + systems + 4;
    });
    std::printf("after %d and %d cycles: %d and %d handles (%d of them the system's), %lu and %lu threads, "
                "%zu and %zu KiB\n",
                warmUp, cycles, settled.handles, end.handles, systems, settled.threads, end.threads,
                settled.bytes / 1024, end.bytes / 1024);
    EXPECT_LE(end.handles, settled.handles + systems + 4);
    EXPECT_LE(end.threads, settled.threads);
    // 42 cycles that lost a single frame each would be 6 MB; the ring alone is 7 MB.
    EXPECT_LT(end.bytes, settled.bytes + 4'000'000);
}

} // namespace
