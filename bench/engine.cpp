#include "bench/engine.h"

#include <fstream>
#include <stdexcept>

namespace {

std::string currentFolder() {
    char folder[MAX_PATH] = "";
    GetCurrentDirectoryA(sizeof(folder), folder);
    return folder;
}

void describeCamera(const CameraSetup& camera) {
    const std::string folder = currentFolder();
    const std::string file = folder + "\\bench_camera.txt";
    std::ofstream text(file);
    text << "stream = " << streamPath("pal.dv") << "\nspeed = " << camera.speed << "\n";
    if (!camera.log.empty()) {
        text << "log = " << folder << "\\" << camera.log << "\n";
    }
    text << camera.faults;
    SetEnvironmentVariableA("MARVO_CAMERA", file.c_str());
}

} // namespace

Engine::Engine(const CameraSetup& camera) {
    describeCamera(camera);
    window_ = CreateWindowExW(0, L"STATIC", L"marvo-bench", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 640,
                              nullptr, nullptr, nullptr, nullptr);
    dvFE.setMaxRecFrames(camera.ringFrames);
    dvFE.setInfoDrain(window_, drainMessage, &info_);
    const Stopwatch watch;
    const bool built = dvFE.init(window_, false);
    initSeconds_ = watch.seconds();
    if (!built || !waitFor([] { return dvFE.lastFrame() > 0; }, 5)) {
        takeApart();
        throw std::runtime_error(built ? "the camera sends no frames (is the test stream there?)"
                                       : "the engine cannot be built (is the simulated camera registered?)");
    }
}

Engine::~Engine() {
    takeApart();
}

void Engine::takeApart() {
    dvFE.stopRecord();
    dvFE.setInfoDrain(nullptr, 0, nullptr);
    dvFE.done();
    DestroyWindow(window_);
    takeMessages();
}

void Engine::record(const wchar_t* file, unsigned long long frames) {
    if (!dvFE.startRecord(file)) {
        throw std::runtime_error("the recording cannot be made");
    }
    if (!waitFor([=] { return dvFE.lastFrame() >= frames; },
                 static_cast<double>(frames) * period_s * 2 + 5)) {
        throw std::runtime_error("the camera has stopped sending");
    }
}

void Engine::takeMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == drainMessage) {
            ++ticks_;
        } else {
            DispatchMessageW(&message);
        }
    }
}
