#include "tests/support/faulty_disk.h"
#include "tests/support/rounds.h"
#include "tests/system/engine.h"

#include <array>
#include <atomic>
#include <cmath>
#include <deque>
#include <functional>
#include <optional>
#include <random>
#include <thread>

namespace {

/// What the engine must answer, worked out from the commands alone.
struct Model {
    bool capturing = false;
    bool playable = false; ///< there is a play graph
    bool paused = false;
    bool replaying = false;
    double speed = 1;
    unsigned long long in = 0, out = 0; ///< range of the replay
    std::array<std::optional<long>, 128> ins, outs;
    std::string recording; ///< being made; empty: none
    /// Places at which its frames need not follow each other: the disk failed, or the camera was away.
    unsigned long breaks = 0;

    void goLive() {
        paused = replaying = false;
        speed = 1;
    }
    void startRange(unsigned long long first, unsigned long long last) {
        replaying = true;
        speed = 1;
        in = std::min(first, last);
        out = std::max(first, last);
    }
};

/// A walk through all commands at random, each held against the model, while other threads ask, the disk and
/// the camera fail at times, and a file is cut while it is replayed.
class Walk : public Engine {
protected:
    void SetUp() override {
        Engine::SetUp();
        useCamera("pal.dv", "speed = 4\n");
        for (const char* name : {"walk0.dv", "walk1.avi", "finished.dv", "finished.avi", "cut.dv"}) {
            DeleteFileA(name);
        }
        dvFE.setMaxFilesize(0xFFFFFFFF);
        // Two seconds of this camera's frames: the machine may be busy.
        dvFE.setMaxRecFrames(200);
    }

    void TearDown() override {
        asking_ = false;
        for (std::thread& thread : askers_) {
            thread.join();
        }
        Engine::TearDown();
        dvFE.setPlayDelay(100);
        dvFE.setMaxPlayFrames(50);
        dvFE.setMaxRecFrames(50);
    }

    void walk(unsigned seed, int commands) {
        random_.seed(seed);
        SCOPED_TRACE("seed " + std::to_string(seed));
        for (int i = 0; i < 3; ++i) {
            askers_.emplace_back([this] { ask(); });
        }
        makeFinishedRecordings();
        for (int i = 0; i < commands && !HasFailure(); ++i) {
            const Command& command = anyCommand();
            history_.push_back(command.name);
            if (history_.size() > 25) {
                history_.pop_front();
            }
            command.give();
            pump(pick(0, 8));
            compare();
        }
        if (HasFailure()) {
            ADD_FAILURE() << "the last commands were " << testing::PrintToString(history_);
        }
        finishRecording([] { dvFE.done(); });
        EXPECT_TRUE(devicesFree());
    }

private:
    struct Command {
        const char* name;
        int weight;
        std::function<void()> give;
    };

    static constexpr unsigned long long finishedFrames = 60;

    unsigned long pick(unsigned long least, unsigned long most) {
        return std::uniform_int_distribution<unsigned long>(least, most)(random_);
    }

    const Command& anyCommand() {
        std::vector<int> weights;
        for (const Command& command : commands_) {
            weights.push_back(command.weight);
        }
        return commands_[std::discrete_distribution<size_t>(weights.begin(), weights.end())(random_)];
    }

    /// Recordings of a known length that are no longer written.
    void makeFinishedRecordings() {
        ASSERT_TRUE(dvFE.init(window, false)) << log();
        model_.capturing = model_.playable = true;
        for (const wchar_t* name : {L"finished.dv", L"finished.avi"}) {
            dvFE.setMaxFilesize(finishedFrames);
            ASSERT_TRUE(dvFE.startRecord(name));
            ASSERT_TRUE(captured(finishedFrames + 2));
            dvFE.stopRecord();
        }
        dvFE.setMaxFilesize(0xFFFFFFFF);
    }

    void build() {
        const std::string loss = pick(0, 1) != 0 ? "lose = " + std::to_string(pick(50, 500)) + ":200\n" : "";
        useCamera("pal.dv", "speed = 4\n" + loss);
        EXPECT_TRUE(dvFE.init(window, false));
        if (!model_.capturing) {
            model_.goLive();
        }
        model_.capturing = model_.playable = true;
    }

    void takeApart() {
        finishRecording([] { dvFE.done(); });
        model_.capturing = model_.playable = false;
    }

    void playAlone() {
        const bool avi = pick(0, 1) != 0;
        const int from = static_cast<int>(pick(0, 20)), to = static_cast<int>(pick(25, 50));
        finishRecording(
            [&] { EXPECT_TRUE(dvFE.playinit(window, from, to, avi ? "finished.avi" : "finished.dv")); });
        model_.capturing = false;
        model_.playable = true;
        model_.paused = false;
        model_.startRange(static_cast<unsigned long long>(from), static_cast<unsigned long long>(to));
    }

    void record() {
        const char* name = ++recordings_ % 2 == 0 ? "walk0.dv" : "walk1.avi";
        finishRecording([&] { EXPECT_EQ(dvFE.startRecord(vcore::str(name).oleStr()), model_.capturing); });
        model_.goLive();
        model_.ins.fill({});
        model_.outs.fill({});
        model_.recording = model_.capturing ? name : "";
        model_.breaks = 0;
    }

    /// Gives a command that ends the recording that runs, if any, and looks at its file.
    template <class Give>
    void finishRecording(Give give) {
        const unsigned long long before = dvFE.lastFrame();
        const unsigned long long failed = dvFE.recordStatus().failed;
        const unsigned long breaks = model_.breaks + dvFE.cameraState().lost;
        give();
        if (model_.recording.empty()) {
            return;
        }
        const auto frames = recordedFrames(model_.recording, "pal.dv", 144000);
        EXPECT_GE(frames.size() + failed, before)
            << model_.recording << " lacks what was captured before it was ended";
        unsigned long found = 0;
        for (size_t k = 1; k < frames.size(); ++k) {
            found += frames[k] != (frames[k - 1] + 1) % 200;
        }
        EXPECT_LE(found, breaks) << model_.recording;
        EXPECT_EQ(std::count(frames.begin(), frames.end(), ~size_t{0}), 0) << "none of the camera's";
        model_.recording.clear();
    }

    /// For a moment the disk takes nothing, or less than it says.
    void failDisk() {
        FaultyDisk::fault = pick(0, 1) != 0 ? FaultyDisk::full : FaultyDisk::takesHalf;
        pump(pick(5, 80));
        FaultyDisk::fault = FaultyDisk::none;
        ++model_.breaks;
    }

    /// The end of a file goes while it is replayed.
    void cutReplay() {
        if (!model_.playable) {
            return;
        }
        dvFE.live(); // lets the file go
        EXPECT_TRUE(CopyFileW(L"finished.dv", L"cut.dv", FALSE));
        EXPECT_TRUE(dvFE.replay(0, finishedFrames - 2, L"cut.dv"));
        dvFE.setSpeed(pick(0, 1) != 0 ? 4 : -1);
        pump(pick(0, 300));
        std::error_code refused;
        std::filesystem::resize_file("cut.dv", 5 * 144384, refused);
        EXPECT_FALSE(refused);
        pump(pick(0, 300));
        goLive();
    }

    /// A range of a finished recording: from the file, all frames are there.
    void replayFinished() {
        const unsigned long long from = pick(0, finishedFrames - 2), to = pick(0, finishedFrames - 2);
        const wchar_t* name = pick(0, 1) != 0 ? L"finished.avi" : L"finished.dv";
        EXPECT_EQ(dvFE.replay(from, to, name), model_.playable);
        if (model_.playable) {
            model_.startRange(from, to);
        }
    }

    /// A range of the recording that is being made.
    void replayRunning() {
        // Frames that failed leave no gap in the file.
        const unsigned long long written = dvFE.recordStatus().written;
        if (model_.recording.empty() || written < 3) {
            return;
        }
        const unsigned long long newest = written - 2;
        const auto from = pick(0, static_cast<unsigned long>(newest));
        EXPECT_TRUE(dvFE.replay(from, newest, vcore::str(model_.recording.c_str()).oleStr()));
        model_.startRange(from, newest);
    }

    void changeSpeed() {
        const double speeds[] = {-4, -1, -0.5, 0, 0.1, 0.5, 1, 2, 4};
        const double speed = speeds[pick(0, 8)];
        EXPECT_TRUE(dvFE.setSpeed(speed));
        EXPECT_FALSE(dvFE.setSpeed(std::nan("")));
        model_.speed = speed;
    }

    /// A frame of the range is shown, whatever was before.
    void seek() {
        if (!model_.replaying || !model_.playable) {
            dvFE.seekPosition(pick(0, 50));
            return;
        }
        dvFE.pause();
        model_.paused = true;
        const unsigned long long frame =
            model_.in + pick(0, static_cast<unsigned long>(model_.out - model_.in));
        EXPECT_TRUE(dvFE.seekPosition(frame));
        EXPECT_TRUE(pumpUntil([&] { return dvFE.playedFrame() == frame; }, 10000))
            << "frame " << frame << " of " << model_.in << " to " << model_.out << " is not shown but "
            << dvFE.playedFrame();
    }

    void goLive() {
        EXPECT_TRUE(dvFE.live());
        model_.goLive();
        if (model_.capturing) {
            EXPECT_TRUE(pumpUntil([] { return dvFE.lastFrame() - dvFE.playedFrame() <= 30; }, 10000))
                << "live does not follow";
        }
    }

    void mark() {
        const auto element = static_cast<size_t>(pick(0, 5));
        const long frame = static_cast<long>(pick(0, 20));
        const bool in = pick(0, 1) != 0;
        const std::string digits = (element < 10 ? "0" : "") + std::to_string(element);
        EXPECT_TRUE(dvFE.call(((in ? "XI" : "XO") + digits + std::to_string(frame)).c_str()));
        (in ? model_.ins : model_.outs)[element] = frame;
    }

    void playElement() {
        const auto element = static_cast<size_t>(pick(0, 6));
        dvFE.setPlayFile(L"finished.dv");
        const bool set = element > 0 && model_.ins[element] && model_.outs[element] && model_.playable;
        EXPECT_EQ(dvFE.playElement(static_cast<int>(element)), set) << element;
        if (set) {
            model_.startRange(static_cast<unsigned long long>(*model_.ins[element]),
                              static_cast<unsigned long long>(*model_.outs[element]));
        }
    }

    void window_() {
        switch (pick(0, 4)) {
        case 0:
            EXPECT_TRUE(dvFE.hideWindow());
            break;
        case 1:
            EXPECT_EQ(dvFE.setSize(static_cast<int>(pick(1, 900)), static_cast<int>(pick(1, 700))),
                      model_.playable);
            break;
        case 2:
            EXPECT_EQ(dvFE.setPos(static_cast<int>(pick(0, 50)), 5), model_.playable);
            break;
        case 3:
            SetWindowPos(window, nullptr, 0, 0, static_cast<int>(pick(50, 900)),
                         static_cast<int>(pick(50, 700)), SWP_NOMOVE | SWP_NOZORDER);
            break;
        default:
            if (model_.playable) {
                EXPECT_TRUE(pick(0, 1) != 0 ? dvFE.showWindow(window) : dvFE.reinit(window));
            }
        }
    }

    void set() {
        dvFE.setPlayDelay(static_cast<int>(pick(0, 15)));
        dvFE.setMaxPlayFrames(pick(4, 60));
        dvFE.setInfoDrain(pick(0, 3) != 0 ? window : nullptr, drainMessage, &info);
        dvFE.log("walk", pick(0, 1) != 0);
    }

    /// What can be asked must be what the model says, and the positions must make sense.
    void compare() {
        EXPECT_EQ(dvFE.paused(), model_.paused);
        EXPECT_EQ(dvFE.playing(), model_.replaying);
        EXPECT_EQ(dvFE.speed(), model_.speed);
        EXPECT_EQ(dvFE.frameSize(), model_.capturing ? 144000u : 0u);
        EXPECT_EQ(dvFE.lastFrame() == ~0ull, !model_.capturing);
        const unsigned long long written = dvFE.writtenFrame();
        EXPECT_LE(written, dvFE.lastFrame());
        const record_status status = dvFE.recordStatus();
        EXPECT_LE(status.written + status.lost + status.failed + status.beyondLimit, status.taken);
    }

    /// A thread that asks what any thread may ask.
    void ask() {
        while (asking_) {
            const bool sane = std::isfinite(dvFE.speed()) && dvFE.frameSize() <= 144000 &&
                              (dvFE.framesPerSecond() == 25 || dvFE.framesPerSecond() == 30);
            sane_ = sane_ && sane;
            dvFE.paused();
            dvFE.playing();
            dvFE.lastFrame();
            dvFE.writtenFrame();
            dvFE.playedFrame();
            dvFE.frameCount();
            dvFE.cameraState();
            dvFE.recordStatus();
            dvFE.playError();
            dvFE.playFaults();
            dvFE.getTime();
            dvFE.getRawTime();
            Sleep(1);
        }
        EXPECT_TRUE(sane_);
    }

    Model model_;
    FaultyDisk disk_;
    std::mt19937 random_;
    std::deque<const char*> history_;
    std::vector<std::thread> askers_;
    std::atomic<bool> asking_ = true, sane_ = true;
    int recordings_ = 0;

    const std::vector<Command> commands_ = {
        {"init", 2, [this] { build(); }},
        {"done", 1, [this] { takeApart(); }},
        {"playinit", 1, [this] { playAlone(); }},
        {"startRecord", 3, [this] { record(); }},
        {"stopRecord", 2, [this] { finishRecording([] { dvFE.stopRecord(); }); }},
        {"live", 6, [this] { goLive(); }},
        {"pause", 6, [this] { model_.paused = dvFE.pause(); }},
        {"resume", 8, [this] { model_.paused = !dvFE.resume(); }},
        {"replay-finished", 8, [this] { replayFinished(); }},
        {"replay-running", 8, [this] { replayRunning(); }},
        {"replay-nothing", 2, [] { EXPECT_FALSE(dvFE.replay(0, 9, L"no such file.dv")); }},
        {"speed", 8, [this] { changeSpeed(); }},
        {"seek", 8, [this] { seek(); }},
        {"mark", 8, [this] { mark(); }},
        {"element", 6, [this] { playElement(); }},
        {"window", 6, [this] { window_(); }},
        {"set", 4, [this] { set(); }},
        {"disk-fails", 2, [this] { failDisk(); }},
        {"file-cut", 1, [this] { cutReplay(); }},
    };
};

TEST_F(Walk, EveryCommandInEveryState) {
    const char* given = std::getenv("MARVO_SEED");
    const unsigned seed =
        given ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device{}();
    walk(seed, rounds(std::getenv("MARVO_LONG") ? 20000 : 600));
}

} // namespace
