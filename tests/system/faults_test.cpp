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

TEST_F(Faults, StallsBurstsAndDropsLoseNothing) {
    useCamera("pal.dv", "burst = 10\nstall = 40:600\n");
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    ASSERT_TRUE(captured(80));
    dvFE.stopRecord();
    EXPECT_EQ(expectRecordingFollows("system_test.dv", "pal.dv", 144000, 80), dvFE.writtenFrame());
}

TEST_F(Faults, RefusedFilesLeaveTheEngineAsItWas) {
    ASSERT_TRUE(dvFE.init(window, false));
    for (const wchar_t* name : {L"no such folder\\x.dv", L"no such folder\\x.avi"}) {
        EXPECT_FALSE(dvFE.startRecord(name));
        EXPECT_FALSE(dvFE.replay(0, 9, name));
        EXPECT_FALSE(dvFE.playing());
    }
    std::ofstream("empty.dv");
    std::ofstream("short.dv") << std::string(1000, 'x');
    EXPECT_TRUE(dvFE.replay(0, 9, L"empty.dv")) << "nothing yet is not an error";
    EXPECT_FALSE(dvFE.replay(0, 9, L"short.dv")) << "its first record names an impossible frame size";
    EXPECT_TRUE(dvFE.live());
    const unsigned long long before = dvFE.lastFrame();
    EXPECT_TRUE(captured(before + 10)) << "and the picture goes on";
}

TEST_F(Faults, ARangeOutsideTheFileIsClamped) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    ASSERT_TRUE(captured(30));
    dvFE.stopRecord();
    const unsigned long long frames = dvFE.writtenFrame();
    ASSERT_TRUE(dvFE.replay(5, 1000000, nullptr));
    EXPECT_TRUE(pumpUntil([&] { return info.from == 5 && info.to == frames - 2; }))
        << "the final frame is never part of a range, which is " << info.from << " to " << info.to;
}

} // namespace
