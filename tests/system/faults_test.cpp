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

TEST_F(Faults, TheCameraDisappearsWhileRecording) {
    useCamera("pal.dv", "lose = 120\nreturn = 500\n");
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    ASSERT_TRUE(captured(20));
    unsigned long long newest = 0;
    do {
        newest = dvFE.lastFrame();
        pump(2000);
    } while (dvFE.lastFrame() != newest);
    EXPECT_LT(newest, 120u) << "the camera is gone";
    EXPECT_TRUE(pumpUntil([&] { return dvFE.writtenFrame() == newest; })) << "what was captured is written";
    EXPECT_TRUE(dvFE.replay(0, 9, nullptr)) << "replay goes on without a camera";
    dvFE.stopRecord();
    dvFE.done();
    EXPECT_EQ(expectRecordingFollows("system_test.dv", "pal.dv", 144000, 20), newest);
    ASSERT_TRUE(dvFE.init(window, false)) << "the camera is back";
    EXPECT_TRUE(captured(10));
}

TEST_F(Faults, StallsBurstsAndDropsLoseNothing) {
    useCamera("pal.dv", "burst = 10\nstall = 40:600\n");
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    ASSERT_TRUE(captured(80));
    dvFE.stopRecord();
    EXPECT_EQ(expectRecordingFollows("system_test.dv", "pal.dv", 144000, 80), dvFE.writtenFrame());
}

} // namespace
