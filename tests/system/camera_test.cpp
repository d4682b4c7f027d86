#include "tests/support/handles.h"
#include "tests/system/engine.h"

#include <algorithm>
#include <cstdio>
#include <mutex>

namespace {

double counter_ms() {
    LARGE_INTEGER count, frequency;
    QueryPerformanceCounter(&count);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(count.QuadPart) * 1000 / static_cast<double>(frequency.QuadPart);
}

class Camera : public Engine {
protected:
    std::mutex lock;
    std::vector<std::string> told;
    unsigned long gap_ms = 0;

    void SetUp() override {
        Engine::SetUp();
        dvFE.connect(L"cameraLost", this, nullptr, &Camera::onLost);
        dvFE.connect(L"cameraStalled", this, nullptr, &Camera::onStalled);
        dvFE.connect(L"cameraBack", this, nullptr, &Camera::onBack);
        dvFE.connect(L"cameraChanged", this, nullptr, &Camera::onChanged);
    }
    void TearDown() override {
        Engine::TearDown();
        dvFE.disconnect(static_cast<void*>(this));
        dvFE.setReconnect(true);
        DeleteFileA("camera.log");
    }

    void note(const std::string& text) {
        const std::lock_guard guard(lock);
        told.push_back(text);
    }
    void onLost(unsigned long long newest) { note("lost " + std::to_string(newest)); }
    void onStalled(unsigned long long newest) { note("stalled " + std::to_string(newest)); }
    void onChanged(unsigned long bytes) { note("changed " + std::to_string(bytes)); }
    void onBack(unsigned long long first, unsigned long gap) {
        gap_ms = gap;
        note("back " + std::to_string(first));
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

    /// Which frames of its stream the camera has delivered, and when it was lost last.
    static std::vector<size_t> deliveries(double* lost_ms = nullptr) {
        std::vector<size_t> frames;
        std::ifstream file("camera.log");
        for (std::string line; std::getline(file, line);) {
            unsigned long number = 0, frame = 0;
            double at_ms = 0;
            if (std::sscanf(line.c_str(), "# device lost before frame %lu at %lf", &number, &at_ms) == 2) {
                if (lost_ms) {
                    *lost_ms = at_ms;
                }
            } else if (std::sscanf(line.c_str(), "%lu %lu %lf", &number, &frame, &at_ms) == 3) {
                frames.push_back(frame);
            }
        }
        return frames;
    }

    /// Checks that a recording holds what the camera delivered, one behind the other over every loss.
    static void expectAllDelivered(const std::string& recording, size_t least) {
        const auto source = readFrames(streamPath("pal.dv"), 144000, 0, 144000);
        std::vector<size_t> recorded;
        for (const auto& frame : recording.find(".avi") != std::string::npos
                                     ? readAviFrames(recording, 144000)
                                     : readFrames(recording, 144384, 8, 144000)) {
            recorded.push_back(
                static_cast<size_t>(std::find(source.begin(), source.end(), frame) - source.begin()));
        }
        const auto sent = deliveries();
        EXPECT_GE(recorded.size(), least);
        EXPECT_EQ(recorded.size(), dvFE.writtenFrame());
        EXPECT_NE(std::search(sent.begin(), sent.end(), recorded.begin(), recorded.end()), sent.end());
    }
};

TEST_F(Camera, IsTakenUpAgainIntoTheSameRecording) {
    ASSERT_NO_FATAL_FAILURE(start("speed = 2\nlose = 40:600\n", nullptr));
    ASSERT_TRUE(heard(1));
    EXPECT_EQ(dvFE.cameraState().state, dvCameraState::gone);
    const unsigned long long first = dvFE.lastFrame();
    EXPECT_TRUE(pumpUntil([&] { return dvFE.playedFrame() + 1 == first; })) << "the last picture is shown";
    ASSERT_TRUE(pumpUntil([&] { return dvFE.playedFrame() >= first; }));
    const double shown_ms = counter_ms();
    ASSERT_TRUE(heard(2));
    EXPECT_EQ(all(), (std::vector<std::string>{"lost " + std::to_string(first - 1),
                                               "back " + std::to_string(first)}));
    EXPECT_TRUE(gap_ms > 590 && gap_ms < 2000) << gap_ms;
    EXPECT_TRUE(dvFE.cameraState().state == dvCameraState::live && dvFE.cameraState().lost == 1);
    double back_ms = 0;
    deliveries(&back_ms);
    back_ms += 600;
    std::printf("live picture %.0f msec after the camera's return\n%s", shown_ms - back_ms, log().c_str());
    EXPECT_LT(shown_ms - back_ms, 1000);
    ASSERT_TRUE(captured(first + 10));
    for (const bool fromFile : {false, true}) {
        ASSERT_TRUE(!fromFile || captured(first + 60)) << "the ring holds 50 frames";
        ASSERT_TRUE(dvFE.replay(first - 5, first + 4, nullptr));
        const auto shown = ticksUntilShown(10);
        for (size_t i = 1; i < shown.size(); ++i) {
            EXPECT_TRUE(shown[i] == shown[i - 1] ||
                        shown[i] == (shown[i - 1] == first + 4 ? first - 5 : shown[i - 1] + 1))
                << shown[i - 1] << " to " << shown[i];
        }
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
    const double begin_ms = counter_ms();
    ASSERT_TRUE(lost(10));
    const double period_ms = (counter_ms() - begin_ms) / static_cast<double>(ticks.size());
    const Footprint end = footprint();
    EXPECT_LE(end.handles, settled.handles + systems + 8);
    EXPECT_LE(end.threads, settled.threads + 1) << "the loader's";
    EXPECT_LT(period_ms, 44) << "no tick is missed";
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
    EXPECT_TRUE(devicesFree());
    EXPECT_EQ(dvFE.cameraState().state, dvCameraState::none);
}

TEST_F(Camera, DoesNotHoldUpCommandsWhileItIsOpened) {
    ASSERT_NO_FATAL_FAILURE(start("lose = 15:0\nopen = 4500\n", nullptr));
    ASSERT_TRUE(heard(1));
    pump(300);
    const auto quick = [](auto command) { EXPECT_LT(samples::elapsed_ms(command), 1500u); };
    quick([] { dvFE.live(); });
    quick([] { EXPECT_TRUE(dvFE.replay(0, 5, nullptr)); });
    quick([] { dvFE.stopRecord(); });
    quick([] { EXPECT_TRUE(dvFE.startRecord(nullptr)); });
    quick([&] { EXPECT_TRUE(dvFE.init(window, false) && dvFE.showWindow(window)); });
    EXPECT_EQ(dvFE.cameraState().state, dvCameraState::gone);
    EXPECT_LT(samples::elapsed_ms([] { dvFE.done(); }), 4500u);
    EXPECT_NE(log().find("the device does not answer"), std::string::npos);
    useCamera("pal.dv", "");
    ASSERT_TRUE(dvFE.init(window, false)) << log();
    EXPECT_TRUE(captured(5));
    dvFE.done();
    EXPECT_TRUE(devicesFree());
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
    EXPECT_EQ(all(), (std::vector<std::string>{"stalled " + std::to_string(first - 1),
                                               "back " + std::to_string(first),
                                               "lost " + std::to_string(frames - 1)}));
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
    EXPECT_EQ(all()[1], "changed 120000");
    EXPECT_EQ(dvFE.cameraState().state, dvCameraState::changed);
    EXPECT_TRUE(pumpUntil([&] { return !info.recording; }));
    AviInspector inspector;
    ASSERT_TRUE(inspector.run(L"system_test.avi", {}));
    EXPECT_TRUE(inspector.faults().empty()) << "complete without stopRecord";
    expectAllDelivered("system_test.avi", 30);
    EXPECT_TRUE(dvFE.replay(5, 9, L"system_test.avi"));
    ticksUntilShown(5);
    dvFE.stopRecord();
    ASSERT_TRUE(dvFE.init(window, false)) << log();
    EXPECT_EQ(dvFE.frameSize(), 120000u);
    EXPECT_TRUE(captured(10));
    EXPECT_EQ(dvFE.cameraState().state, dvCameraState::live);
}

} // namespace
