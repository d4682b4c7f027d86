#include "tests/support/failing_memory.h"
#include "tests/system/engine.h"

namespace {

class Faults : public Engine {};

TEST_F(Faults, NoSuchDevice) {
    for (int input : {7, 1000000}) {
        dvFE.setInput(input);
        EXPECT_FALSE(dvFE.init(window, false));
        EXPECT_NE(log().find("init result: no video source!"), std::string::npos);
    }
    EXPECT_EQ(log().find("error"), std::string::npos) << "a missing device is no error of the engine";
    EXPECT_TRUE(devicesFree());
    dvFE.setInput(0);
    EXPECT_TRUE(dvFE.init(window, false));
}

TEST_F(Faults, ACameraWithoutPictureIsNoFailure) {
    useCamera("pal.dv", "stall = 0:60000\n");
    EXPECT_TRUE(dvFE.init(window, false));
    EXPECT_NE(log().find("init result: 0 frames captured at 5000 msec"), std::string::npos);
}

TEST_F(Faults, WithoutMemoryACommandIsRefusedAndTheEngineGoesOn) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(L"memory_test.avi"));
    ASSERT_TRUE(captured(20));
    dvFE.stopRecord();
    dvFE.setPlayDelay(0);
    const auto walk = [&](unsigned k) {
        dvFE.replay(0, k % 9 + 5, L"memory_test.avi");
        dvFE.showWindow(window);
        dvFE.startRecord(k % 2 ? L"memory_test.dv" : L"memory_test2.avi");
        dvFE.replay(0, k % 9 + 4, L"memory_test.avi");
        dvFE.stopRecord();
        dvFE.live();
    };
    bool all = false;
    unsigned k = 1;
    for (; !all; k += 3) {
        const FailingMemory memory(k);
        walk(k);
        all = !memory.failed();
    }
    EXPECT_GT(k, 60u);
    // The same where the engine is built: it is whole then, or nothing of it is left.
    for (k = 1, all = false; !all; k = k * 3 / 2 + 1) {
        dvFE.done();
        const FailingMemory memory(k);
        const bool built = dvFE.init(window, false);
        all = !memory.failed();
        EXPECT_EQ(dvFE.frameSize() != 0, built) << k;
    }
    EXPECT_NE(log().find("refused: there is not enough memory"), std::string::npos);
    const unsigned long long before = dvFE.lastFrame();
    EXPECT_TRUE(captured(before + 5)) << "the picture goes on";
    EXPECT_TRUE(dvFE.replay(0, 9, L"memory_test.avi") && pumpUntil([&] { return dvFE.playing(); }));
    dvFE.setPlayDelay(100);
}

} // namespace
