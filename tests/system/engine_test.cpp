#include "tests/support/recording.h"
#include "tests/system/picture.h"

#include <algorithm>
#include <functional>

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

        ASSERT_TRUE(captured(20));
        ASSERT_TRUE(dvFE.startRecord(nullptr));
        EXPECT_LT(dvFE.lastFrame(), 20u) << "numbers begin again";
        ASSERT_TRUE(captured(40));
        EXPECT_TRUE(info.recording);
        EXPECT_FALSE(dvFE.playing());
        EXPECT_TRUE(pumpUntil([] { return dvFE.lastFrame() - dvFE.playedFrame() <= 5; })) << "live follows";

        dvFE.pause();
        const auto held = nextTicks(8);
        EXPECT_EQ(held[2], held[7]);
        dvFE.resume();

        ASSERT_TRUE(dvFE.replay(10, 29, nullptr));
        expectLoop(ticksUntilShown(20), 10, 29);
        dvFE.setSpeed(-0.5);
        ticksUntilShown(10);

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
        EXPECT_EQ(expectRecordingFollows("system_test.dv", stream, frameSize, 40), written);
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

class Commands : public PictureEngine {};

TEST_F(Commands, ASecondInitOnlyShowsTheVideoAndDoneEndsTheSession) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    ASSERT_TRUE(captured(20) && pumpUntil([&] { return info.recording; }));
    ASSERT_TRUE(dvFE.init(window, false));
    EXPECT_GE(dvFE.lastFrame(), 20u) << "the graphs went on";
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

TEST_F(Commands, PlayOnlyAnswersEveryCommand) {
    useCamera("pal.dv", "speed = 2\n");
    ASSERT_TRUE(dvFE.init(window, false));
    for (const wchar_t* file : {L"system_test.dv", L"system_test.avi"}) {
        ASSERT_TRUE(dvFE.startRecord(file));
        ASSERT_TRUE(captured(45));
        dvFE.stopRecord();
    }
    std::ofstream("short.dv") << std::string(1000, 'x');
    std::ofstream("short.avi") << std::string(1000, 'x');
    for (const std::string name : {"system_test.dv", "system_test.avi"}) {
        SCOPED_TRACE(name);
        const vcore::str wide(name.c_str());
        const wchar_t* const file = wide.oleStr();
        dvFE.setPlayFile(file);
        const struct {
            const char* what;
            std::function<bool()> command;
            unsigned long long from, to;
        } table[] = {
            {"a range", [&] { return dvFE.playinit(window, 18, 10, name.c_str()); }, 10, 18},
            {"backward", [] { return dvFE.setSpeed(-1); }, 10, 18},
            {"slowly", [] { return dvFE.setSpeed(0.5); }, 10, 18},
            {"held", [] { return dvFE.pause() && dvFE.seekPosition(15); }, 15, 15},
            {"stopped", [] { return dvFE.resume() && dvFE.seekPosition(17) && dvFE.setSpeed(0); }, 17, 17},
            {"outside", [] { return dvFE.seekPosition(17 + 2 * 9); }, 17, 17},
            {"another range", [] { return dvFE.replay(3, 9, nullptr); }, 3, 9},
            {"of another file", [&] { return dvFE.replay(5, 8, L"system_test.dv"); }, 5, 8},
            {"an element", [] { return dvFE.call("XI07011") && dvFE.call("XO07014") && dvFE.playElement(7); },
             11, 14},
            {"a refused file", [] { return !dvFE.replay(0, 9, L"short.dv"); }, 11, 14},
            {"a second one", [&] { return dvFE.playinit(window, 0, 4, name.c_str()); }, 0, 4},
            {"live without a camera", [] { return dvFE.live() && !dvFE.playing(); }, 0, 0},
            {"and back", [&] { return dvFE.replay(2, 6, file); }, 2, 6},
            {"shown again", [&] { return dvFE.hideWindow() && dvFE.showWindow(window); }, 2, 6},
            {"no recording", [] { return !dvFE.startRecord(nullptr) && !dvFE.playing(); }, 0, 0},
            {"and back again", [&] { return dvFE.replay(1, 4, file); }, 1, 4},
        };
        for (const auto& row : table) {
            SCOPED_TRACE(row.what);
            EXPECT_TRUE(row.command());
            EXPECT_TRUE(pumpUntil([&] {
                const unsigned long long shown = dvFE.playedFrame();
                return !dvFE.playing() || (shown >= row.from && shown <= row.to);
            }));
            pump(200); // what is on its way
            const auto frames = ticksUntilShown(row.to - row.from + 1);
            EXPECT_EQ(*std::min_element(frames.begin(), frames.end()), row.from);
            EXPECT_EQ(*std::max_element(frames.begin(), frames.end()), row.to);
            EXPECT_TRUE(dvFE.lastFrame() + 1 == 0 && dvFE.playFaults() == 0);
        }
        EXPECT_FALSE(dvFE.paused() || dvFE.speed() != 1.0 || dvFE.playError().frames != 0);
        EXPECT_EQ(dvFE.getRawTime(), static_cast<int>(dvFE.playedFrame() * 1000 / dvFE.framesPerSecond()));
        for (const char* bad : {"no such file.dv", "no such folder\\x.avi", "short.dv", "short.avi", ""}) {
            EXPECT_FALSE(dvFE.playinit(window, 0, 10, bad)) << bad;
        }
        EXPECT_FALSE(dvFE.playinit(window, 0, 10, nullptr) || dvFE.playinit(window, -3, 10, name.c_str()));
        EXPECT_TRUE(devicesFree());
        ASSERT_TRUE(dvFE.init(window, false)) << "live again after a play-only run";
        EXPECT_TRUE(captured(10) && moves(window));
    }
}

TEST_F(Commands, AFileThatIsCutWhileItPlaysIsTold) {
    struct : vcore::vObject {
        std::atomic<int> calls = 0;
        play_error last;
        void onError(unsigned long long first, unsigned long long frames, unsigned long error) {
            last = {first, frames, static_cast<std::uint32_t>(error)};
            ++calls;
        }
    } host;
    useCamera("pal.dv", "speed = 2\n");
    dvFE.connect(L"playError", &host, &host, &std::remove_reference_t<decltype(host)>::onError);
    ASSERT_TRUE(dvFE.init(window, false));
    constexpr wchar_t file[] = L"system_test.avi";
    ASSERT_TRUE(dvFE.startRecord(file));
    ASSERT_TRUE(captured(100)); // so that the ring has lost the first ones
    dvFE.stopRecord();
    ASSERT_TRUE(dvFE.replay(10, 39, file));
    ticksUntilShown(5);
    recording::resize(file, 25ull * 148000);
    ASSERT_TRUE(pumpUntil([&] { return host.calls == 1; }));
    EXPECT_TRUE(host.last == dvFE.playError() && host.last.error == ERROR_HANDLE_EOF);
    EXPECT_EQ(host.last.first + host.last.frames, 40u);
    EXPECT_TRUE(pumpUntil([&] { return dvFE.playedFrame() + 1 == host.last.first; })) << "the last good one";
    quick([] { return dvFE.live(); }, 2000);
    EXPECT_TRUE(moves(window) && host.calls == 2 && host.last.frames == 0 && dvFE.playError().frames == 0);
    EXPECT_NE(log().find("replay: frames"), std::string::npos);
    dvFE.disconnect(&host);
}

TEST_F(Commands, ARecordingOfAnUnsteadyCameraIsReplayedWhileItIsMade) {
    useCamera("pal.dv", "speed = 2\nburst = 10\nstall = 40:600\n");
    ASSERT_TRUE(dvFE.init(window, false));
    for (const std::string name : {"system_test.dv", "system_test.avi"}) {
        const vcore::str wide(name.c_str());
        const wchar_t* const file = wide.oleStr();
        ASSERT_TRUE(dvFE.startRecord(file));
        ASSERT_TRUE(captured(30));
        ASSERT_TRUE(dvFE.replay(0, 9, file));
        ASSERT_TRUE(captured(140));
        // The ring of 50 frames has lost these, so they come from the file, which was shorter when it was
        // opened.
        ASSERT_TRUE(dvFE.replay(70, 79, file));
        const auto frames = ticksUntilShown(10);
        EXPECT_EQ(*std::min_element(frames.begin(), frames.end()), 70u);
        EXPECT_EQ(*std::max_element(frames.begin(), frames.end()), 79u);
        EXPECT_FALSE(dvFE.replay(0, 9, L"no such file.avi"));
        dvFE.stopRecord();
        EXPECT_EQ(expectRecordingFollows(name, "pal.dv", 144000, 140), dvFE.writtenFrame());
    }
    AviInspector inspector;
    ASSERT_TRUE(inspector.run(L"system_test.avi", {}));
    for (const auto& fault : inspector.faults()) {
        ADD_FAILURE() << fault.offset << ": " << vcore::str(fault.text).getStr();
    }
}

} // namespace
