/// @file
/// The whole engine on the simulated camera, as a measurement drives it.
#pragma once

#include "bench/recording.h"
#include "bench/stopwatch.h"
#include "marvo.h"

#include <string>

/// What the simulated camera is to do; `dvFE` reads it when it is built.
struct CameraSetup {
    double speed = 1;
    std::string log{}; ///< a file in the current directory, or empty
    unsigned long ringFrames = 50;
    std::string faults{}; ///< further lines of its configuration
};

/// The engine `dvFE`, built on the simulated camera's PAL stream in a window of its own, as a host would run
/// it: with an info drain, and its messages taken whenever this object waits. One at a time.
class Engine {
public:
    static constexpr double period_s = 0.04;
    static constexpr unsigned long ringFrames = 50;

    /// Throws std::runtime_error when the engine cannot be built or no frame comes.
    explicit Engine(const CameraSetup& camera);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Seconds that `dvFE.init` took.
    double initSeconds() const { return initSeconds_; }

    /// Records into `file` and waits until `frames` frames are captured. Throws when it fails.
    void record(const wchar_t* file, unsigned long long frames);

    /// Takes messages for some time.
    void wait(double seconds) {
        waitFor([] { return false; }, seconds);
    }

    /// Takes messages until the condition holds, asking about once a millisecond; false after the time.
    template <class Condition>
    bool waitFor(Condition condition, double limit_s = 10) {
        const Stopwatch watch;
        while (!condition()) {
            if (watch.seconds() >= limit_s) {
                return false;
            }
            takeMessages();
            Sleep(1);
        }
        return true;
    }

    /// Ticks of the play filter since the engine was built, as the info drain told them.
    int ticks() const { return ticks_; }

private:
    static constexpr unsigned drainMessage = WM_APP + 1;

    void takeMessages();
    void takeApart();

    TemporaryFile cameraFile_{L"bench_camera.txt"};
    HWND window_ = nullptr;
    play_info info_;
    double initSeconds_ = 0;
    int ticks_ = 0;
};
