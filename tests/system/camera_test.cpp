#include "tests/support/footprint.h"
#include "tests/system/engine.h"

#include <algorithm>
#include <cstdio>
#include <mutex>

namespace {

class Camera : public Engine {
protected:
    std::mutex lock;
    std::vector<std::string> told;
    unsigned long gap_ms = 0;

    void SetUp() override {
        Engine::SetUp();
        dvFE.connect(L"cameraLost", this, nullptr, &Camera::note<'L', unsigned long long>);
        dvFE.connect(L"cameraStalled", this, nullptr, &Camera::note<'S', unsigned long long>);
        dvFE.connect(L"cameraBack", this, nullptr, &Camera::note<'B', unsigned long long>);
        dvFE.connect(L"cameraChanged", this, nullptr, &Camera::note<'C', unsigned long>);
    }
    void TearDown() override {
        Engine::TearDown();
        dvFE.disconnect(static_cast<void*>(this));
        dvFE.setReconnect(true);
        DeleteFileA("camera.log");
    }

    template <char kind, class Number>
    void note(Number number, unsigned long gap) {
        const std::lock_guard guard(lock);
        told.push_back(kind + std::to_string(number));
        gap_ms = gap;
    }
    std::vector<std::string> all() {
        const std::lock_guard guard(lock);
        return told;
    }
    bool heard(size_t count) {
        return pumpUntil([&] { return all().size() >= count; });
    }

    void start(const std::string& faults, const wchar_t* recording) {
        useCamera("pal.dv", "log = camera.log\n" + faults);
        ASSERT_TRUE(dvFE.init(window, false)) << log();
        ASSERT_TRUE(dvFE.startRecord(recording));
    }

    /// Which frames of its stream the camera has delivered.
    static std::vector<size_t> deliveries() {
        std::vector<size_t> frames;
        std::ifstream file("camera.log");
        for (std::string line; std::getline(file, line);) {
            unsigned long number = 0, frame = 0;
            if (std::sscanf(line.c_str(), "%lu %lu", &number, &frame) == 2) {
                frames.push_back(frame);
            }
        }
        return frames;
    }

    /// Checks that a recording holds what the camera delivered, one behind the other over every loss.
    void expectAllDelivered(const std::string& recording, size_t least) {
        const auto recorded = recordedFrames(recording, "pal.dv", 144000);
        const auto sent = deliveries();
        EXPECT_GE(recorded.size(), least);
        EXPECT_EQ(recorded.size(), dvFE.writtenFrame());
        EXPECT_NE(std::search(sent.begin(), sent.end(), recorded.begin(), recorded.end()), sent.end());
    }
};

TEST_F(Camera, IsTakenUpAgainIntoTheSameRecording) {
    ASSERT_NO_FATAL_FAILURE(start("speed = 2\nlose = 40:600\n", nullptr));
    ASSERT_TRUE(heard(1));
    const unsigned long long first = dvFE.lastFrame();
    EXPECT_TRUE(pumpUntil([&] { return dvFE.playedFrame() + 1 == first; })) << "the last picture is shown";
    ASSERT_TRUE(heard(2));
    quick([&] { return pumpUntil([&] { return dvFE.playedFrame() >= first; }); }, 1000);
    EXPECT_EQ(all(), (std::vector{'L' + std::to_string(first - 1), 'B' + std::to_string(first)}));
    EXPECT_TRUE(gap_ms > 590 && gap_ms < 2000) << gap_ms;
    EXPECT_TRUE(dvFE.cameraState().state == dvCameraState::live && dvFE.cameraState().lost == 1);
    ASSERT_TRUE(captured(first + 10));
    for (const bool fromFile : {false, true}) {
        ASSERT_TRUE(!fromFile || captured(first + 60)) << "the ring holds 50 frames";
        ASSERT_TRUE(dvFE.replay(first - 5, first + 4, nullptr));
        expectLoop(ticksUntilShown(10), first - 5, first + 4);
    }
    dvFE.stopRecord();
    expectAllDelivered("system_test.dv", first + 60);
}

TEST_F(Camera, LeavesNothingBehindWhenItIsLostOftenDuringASlowMotion) {
    std::string faults = "speed = 4\n";
    for (int i = 0; i < 13; ++i) {
        faults += "lose = 12:0\n";
    }
    ASSERT_NO_FATAL_FAILURE(start(faults, nullptr));
    const auto lost = [&](unsigned long times) {
        return pumpUntil([=] { return dvFE.cameraState().lost >= times; });
    };
    ASSERT_TRUE(lost(2));
    const int systems = systemsHandlesPerCycle(1) * 8;
    const Footprint settled = footprint();
    ASSERT_TRUE(lost(6)) << "the ring has lost the first frames";
    ASSERT_TRUE(dvFE.replay(5, 14, nullptr));
    dvFE.setSpeed(0.5);
    pump(400);
    ticks.clear();
    ASSERT_TRUE(lost(10));
    const Footprint end = footprint();
    EXPECT_LE(end.handles, settled.handles + systems + 5) << "a file, a thread";
    EXPECT_LE(end.threads, settled.threads + 1) << "the loader's";
    for (size_t i = 2; i < ticks.size(); ++i) {
        EXPECT_EQ(ticks[i].frame, ticks[i - 2].frame == 14 ? 5 : ticks[i - 2].frame + 1) << i;
    }
    dvFE.live();
    dvFE.stopRecord();
    expectAllDelivered("system_test.dv", 100);
    while (dvFE.cameraState().lost < 13) {
        ASSERT_TRUE(dvFE.startRecord(nullptr));
        pump(20);
        dvFE.stopRecord();
    }
    dvFE.done();
    EXPECT_TRUE(devicesFree() && dvFE.cameraState().state == dvCameraState::none);
}

TEST_F(Camera, DoesNotHoldUpCommandsWhileItIsOpened) {
    ASSERT_NO_FATAL_FAILURE(start("lose = 15:0\nopen = 5500\n", nullptr));
    ASSERT_TRUE(heard(1));
    pump(300);
    quick([] { return dvFE.live() && dvFE.replay(0, 5, nullptr); }, 1500);
    quick([] { return dvFE.stopRecord(), dvFE.startRecord(nullptr); }, 1500);
    quick([&] { return dvFE.init(window, false) && dvFE.showWindow(window); }, 1500);
    nextTicks(10);
    EXPECT_EQ(dvFE.cameraState().state, dvCameraState::gone) << "no tick waits for the camera";
    quick([] { return dvFE.done(), true; });
    EXPECT_NE(log().find("the device does not answer"), std::string::npos);
    useCamera("pal.dv", "");
    ASSERT_TRUE(dvFE.init(window, false)) << log();
    EXPECT_TRUE(captured(5));
}

TEST_F(Camera, IsToldOnceToBeSilentAndLeftToTheHostWhereThatIsSet) {
    dvFE.setReconnect(false);
    ASSERT_NO_FATAL_FAILURE(start("stall = 20:1500\nlose = 35:100\n", nullptr));
    ASSERT_TRUE(heard(1));
    EXPECT_EQ(dvFE.cameraState().state, dvCameraState::silent);
    const unsigned long long first = dvFE.lastFrame();
    ASSERT_TRUE(heard(2));
    EXPECT_TRUE(gap_ms > 1450 && gap_ms < 2500) << gap_ms;
    EXPECT_TRUE(dvFE.cameraState().lost == 0 && dvFE.cameraState().state == dvCameraState::live);
    ASSERT_TRUE(heard(3));
    const unsigned long long frames = dvFE.lastFrame();
    pump(700);
    EXPECT_EQ(all(), (std::vector{'S' + std::to_string(first - 1), 'B' + std::to_string(first),
                                  'L' + std::to_string(frames - 1)}));
    EXPECT_EQ(dvFE.cameraState().state, dvCameraState::gone);
    EXPECT_EQ(log().find("opened again"), std::string::npos);
    EXPECT_TRUE(dvFE.replay(0, 9, nullptr)) << "replay goes on without a camera";
    dvFE.stopRecord();
    expectAllDelivered("system_test.dv", frames);
    dvFE.done();
    ASSERT_TRUE(dvFE.init(window, false)) << "the camera is back";
    EXPECT_TRUE(captured(5));
}

TEST_F(Camera, EndsTheRecordingWhenItComesBackWithAnotherFormat) {
    ASSERT_NO_FATAL_FAILURE(
        start("speed = 2\nlose = 50:100:" + streamPath("ntsc.dv") + "\n", L"system_test.avi"));
    ASSERT_TRUE(heard(2));
    EXPECT_TRUE(all()[1] == "C120000" && dvFE.cameraState().state == dvCameraState::changed);
    EXPECT_TRUE(pumpUntil([&] { return !info.recording && dvFE.recFilter().store().finished(); }));
    AviInspector inspector;
    ASSERT_TRUE(inspector.run(L"system_test.avi", {}));
    EXPECT_TRUE(inspector.faults().empty()) << "complete without stopRecord";
    expectAllDelivered("system_test.avi", 30);
    EXPECT_TRUE(dvFE.replay(5, 9, L"system_test.avi"));
    ticksUntilShown(5);
    dvFE.stopRecord();
    ASSERT_TRUE(dvFE.init(window, false)) << log();
    EXPECT_TRUE(dvFE.frameSize() == 120000 && dvFE.cameraState().state == dvCameraState::live);
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    EXPECT_TRUE(pumpUntil([] { return dvFE.writtenFrame() != ~0ull && dvFE.writtenFrame() >= 10; }));
}

} // namespace
