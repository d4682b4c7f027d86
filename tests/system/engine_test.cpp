#include "tests/system/engine.h"

#include <algorithm>
#include <set>
#include <thread>

namespace {

class WholeRun : public Engine {
protected:
    /// One typical run on a stream, command by command.
    void playOneRun(const std::string& stream, unsigned long frameSize, unsigned long rate) {
        useCamera(stream, "");
        ASSERT_TRUE(dvFE.init(window, false)) << log();
        EXPECT_EQ(dvFE.frameSize(), frameSize);
        EXPECT_EQ(dvFE.framesPerSecond(), rate);
        EXPECT_GT(dvFE.lastFrame(), 0u);
        EXPECT_FALSE(devicesFree());

        ASSERT_TRUE(captured(40));
        ASSERT_TRUE(dvFE.startRecord(nullptr));
        EXPECT_LT(dvFE.lastFrame(), 40u) << "numbers begin again";
        ASSERT_TRUE(captured(60));
        EXPECT_TRUE(info.recording);
        EXPECT_FALSE(dvFE.playing());
        EXPECT_TRUE(pumpUntil([] { return dvFE.lastFrame() - dvFE.playedFrame() <= 5; })) << "live follows";

        dvFE.pause();
        const auto held = nextTicks(8);
        EXPECT_EQ(held[2], held[7]);
        dvFE.resume();

        ASSERT_TRUE(dvFE.replay(10, 29, nullptr));
        auto frames = ticksUntilShown(20);
        for (size_t i = 1; i < frames.size(); ++i) {
            EXPECT_TRUE(frames[i] == frames[i - 1] ||
                        frames[i] == (frames[i - 1] == 29 ? 10u : frames[i - 1] + 1))
                << frames[i - 1] << " to " << frames[i];
        }
        dvFE.setSpeed(-0.5);
        ticksUntilShown(20);

        dvFE.pause();
        dvFE.seekPosition(25);
        EXPECT_TRUE(pumpUntil([] { return dvFE.playedFrame() == 25; }));
        dvFE.resume();

        dvFE.live();
        EXPECT_TRUE(pumpUntil([] { return dvFE.lastFrame() - dvFE.playedFrame() <= 5; }));
        EXPECT_FALSE(dvFE.playing());

        dvFE.stopRecord();
        const unsigned long long written = dvFE.writtenFrame();
        EXPECT_TRUE(pumpUntil([this] { return !info.recording; }));
        EXPECT_EQ(expectRecordingFollows("system_test.dv", stream, frameSize, 60), written);
        dvFE.done();
        EXPECT_TRUE(devicesFree()) << "a reference is left on a foreign filter";
        EXPECT_NE(log().find("frames captured at"), std::string::npos);
    }
};

TEST_F(WholeRun, Pal) {
    playOneRun("pal.dv", 144000, 25);
}

TEST_F(WholeRun, Ntsc) {
    playOneRun("ntsc.dv", 120000, 30);
}

class Commands : public Engine {};

TEST_F(Commands, ASecondInitOnlyShowsTheVideo) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(captured(20));
    ASSERT_TRUE(dvFE.init(window, false));
    EXPECT_GE(dvFE.lastFrame(), 20u) << "the graphs went on";
    EXPECT_TRUE(dvFE.reinit(window));
    EXPECT_TRUE(dvFE.setSize(360, 288));
    EXPECT_TRUE(dvFE.setPos(10, 10));
}

TEST_F(Commands, ThePictureIsInTheHostsWindow) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(captured(10));
    EXPECT_TRUE(pictureComes());
    const HWND none = reinterpret_cast<HWND>(0x7ffe);
    EXPECT_FALSE(dvFE.showWindow(none) || dvFE.init(none, false));
    EXPECT_TRUE(dvFE.visible()) << "the picture stays where it was";
    for (HWND host : {HWND{}, window}) {
        EXPECT_TRUE(dvFE.hideWindow());
        EXPECT_FALSE(dvFE.visible()) << "without a host it would stand on the desktop";
        EXPECT_TRUE(dvFE.showWindow(host));
        EXPECT_EQ(dvFE.visible(), host != nullptr);
    }
    dvFE.done();
    EXPECT_TRUE(dvFE.init(none, false)) << "capture does not need a window";
    EXPECT_FALSE(dvFE.visible());
}

TEST_F(Commands, DoneEndsTheSession) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    ASSERT_TRUE(pumpUntil([&] { return info.recording; }));
    dvFE.done();
    EXPECT_EQ(dvFE.lastFrame(), ~0ull);
    EXPECT_EQ(dvFE.writtenFrame(), ~0ull);
    dvFE.setMaxRecFrames(0);
    EXPECT_FALSE(dvFE.init(window, false)) << "a ring needs a slot";
    EXPECT_NE(log().find("no video - init - 7"), std::string::npos);
    dvFE.setMaxRecFrames(50);
    ASSERT_TRUE(dvFE.init(window, false));
    nextTicks(2);
    EXPECT_FALSE(info.recording);
}

TEST_F(Commands, AnElementIsReplayedFromItsMarkers) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    dvFE.call("XI05005");
    dvFE.call("XO05012");
    ASSERT_TRUE(captured(30));
    ASSERT_TRUE(dvFE.playElement(5));
    EXPECT_TRUE(dvFE.playing());
    EXPECT_TRUE(pumpUntil([&] { return info.from == 5 && info.to == 12; })) << info.from << " " << info.to;
    ASSERT_TRUE(dvFE.startRecord(L"system_test_2.dv"));
    EXPECT_FALSE(dvFE.playing());
    EXPECT_FALSE(dvFE.playElement(5)) << "a new recording forgets the elements";
}

TEST_F(Commands, ARecordingIsReplayedWithoutACamera) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    ASSERT_TRUE(captured(50));
    dvFE.stopRecord();
    ASSERT_TRUE(dvFE.playinit(window, 30, 10, "system_test.dv"));
    EXPECT_TRUE(dvFE.playing());
    const auto frames = ticksUntilShown(21);
    EXPECT_EQ(*std::min_element(frames.begin(), frames.end()), 10u);
    EXPECT_EQ(*std::max_element(frames.begin(), frames.end()), 30u);
    EXPECT_FALSE(dvFE.playinit(window, 0, 10, "no such file.dv"));
    EXPECT_TRUE(devicesFree());
    ASSERT_TRUE(dvFE.init(window, false)) << "live again after a play-only run";
}

TEST_F(Commands, ReplaysWhatIsStillBeingWritten) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    ASSERT_TRUE(captured(30));
    ASSERT_TRUE(dvFE.replay(0, 9, nullptr));
    // By now frame 80 is on disk, but was not when the file was opened, and the ring of 50 frames has lost it
    // later.
    ASSERT_TRUE(captured(140));
    ASSERT_TRUE(dvFE.replay(70, 79, nullptr));
    const auto frames = ticksUntilShown(10);
    EXPECT_EQ(*std::min_element(frames.begin(), frames.end()), 70u);
}

TEST_F(Commands, AnAviRecordingIsReplayedWhileItIsMadeAndAfterwards) {
    ASSERT_TRUE(dvFE.init(window, false));
    DeleteFileW(L"system_test.dv"); // the play file: no replay may come from there
    ASSERT_TRUE(dvFE.startRecord(L"system_test.avi"));
    ASSERT_TRUE(captured(30));
    ASSERT_TRUE(dvFE.replay(0, 9, L"system_test.avi"));
    ASSERT_TRUE(captured(140));
    // The ring of 50 frames has lost these, so they come from the file, which is still being written.
    ASSERT_TRUE(dvFE.replay(70, 79, L"system_test.avi"));
    auto frames = ticksUntilShown(10);
    EXPECT_EQ(*std::min_element(frames.begin(), frames.end()), 70u);
    EXPECT_EQ(*std::max_element(frames.begin(), frames.end()), 79u);
    EXPECT_FALSE(dvFE.replay(0, 9, L"no such file.avi"));
    dvFE.stopRecord();
    EXPECT_EQ(expectRecordingFollows("system_test.avi", "pal.dv", 144000, 140), dvFE.writtenFrame());
    AviInspector inspector;
    ASSERT_TRUE(inspector.run(L"system_test.avi", {}));
    for (const auto& fault : inspector.faults()) {
        ADD_FAILURE() << fault.offset << ": " << vcore::str(fault.text).getStr();
    }
    ASSERT_TRUE(dvFE.playinit(window, 30, 10, "system_test.avi"));
    frames = ticksUntilShown(21);
    EXPECT_EQ(*std::min_element(frames.begin(), frames.end()), 10u);
    EXPECT_EQ(*std::max_element(frames.begin(), frames.end()), 30u);
}

TEST_F(Commands, TheDeinterlacingRendererIsBuiltOrRefused) {
    dvFE.setDeinterlace(true);
    const bool built = dvFE.init(window, false);
    const std::string text = log();
    EXPECT_NE(text.find("marvo set deinterlacing on"), std::string::npos);
    EXPECT_NE(text.find("marvo created Mixing renderer 9"), std::string::npos);
    EXPECT_EQ(built, text.find("error") == std::string::npos);
    EXPECT_TRUE(!built || captured(dvFE.lastFrame() + 20));
    dvFE.done();
    dvFE.setDeinterlace(false);
    EXPECT_TRUE(devicesFree());
}

TEST_F(Commands, EveryConcurrentQueryAnswers) {
    ASSERT_TRUE(dvFE.init(window, false));
    std::atomic<bool> stop = false;
    std::vector<std::thread> askers;
    for (int i = 0; i < 3; ++i) {
        askers.emplace_back([&stop] {
            while (!stop) {
                dvFE.getTime();
                dvFE.getRawTime();
                dvFE.playing();
                dvFE.frameCount();
                dvFE.writtenFrame();
            }
        });
    }
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    for (int i = 0; i < 10; ++i) {
        dvFE.replay(static_cast<unsigned long long>(i), static_cast<unsigned long long>(i + 5), nullptr);
        dvFE.setSpeed(i - 5);
        pump(60);
        dvFE.live();
    }
    stop = true;
    for (auto& asker : askers) {
        asker.join();
    }
    dvFE.stopRecord();
    expectRecordingFollows("system_test.dv", "pal.dv", 144000, 15);
}

} // namespace
