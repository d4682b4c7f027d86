#include "tests/support/footprint.h"
#include "tests/system/picture.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>

namespace {

/// Keeps every core busy while it lives.
class Load {
public:
    Load() {
        for (unsigned i = 0; i < std::max(2u, std::thread::hardware_concurrency()); ++i) {
            threads_.emplace_back([this] {
                while (!stop_) {
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
    std::vector<std::thread> threads_;
};

class Cycles : public PictureEngine {
protected:
    void cycle() {
        ASSERT_TRUE(dvFE.init(window, false)) << log();
        ASSERT_TRUE(dvFE.startRecord(nullptr));
        ASSERT_TRUE(captured(12));
        ASSERT_TRUE(pumpUntil([] { return dvFE.writtenFrame() >= 8; }));
        ASSERT_TRUE(dvFE.replay(1, 5, nullptr));
        ASSERT_TRUE(moves(window)) << "such as when each session keeps one of the samples";
        EXPECT_LT(samples::elapsed_ms([] { dvFE.done(); }), 20000u);
        ASSERT_TRUE(devicesFree());
    }
};

TEST_F(Cycles, ManyOnABusyMachineLeaveNothingBehind) {
    constexpr int warmUp = 8;
    constexpr int cycles = 34;
    const samples::Com com;
    const int systems = systemsHandlesPerCycle(2) * (cycles - warmUp);
    // One of ours in every cycle would be so many. On a busy machine the system itself keeps a few more.
    constexpr int leak = cycles - warmUp;
    useCamera("pal.dv", "speed = 4\n");
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
        return end.threads <= settled.threads && end.handles < settled.handles + systems + leak;
    });
    std::printf("after %d and %d cycles: %d and %d handles (%d of them the system's), %lu and %lu threads, "
                "%zu and %zu KiB\n",
                warmUp, cycles, settled.handles, end.handles, systems, settled.threads, end.threads,
                settled.bytes / 1024, end.bytes / 1024);
    EXPECT_LT(end.handles, settled.handles + systems + leak);
    EXPECT_LE(end.threads, settled.threads);
    // 26 cycles that lost a single frame each would be 3.7 MB; the ring alone is 7 MB.
    EXPECT_LT(end.bytes, settled.bytes + 2'500'000);
}

} // namespace
