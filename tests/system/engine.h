/// @file
/// The fixture of the whole engine on the simulated camera.
#pragma once

#include "marvo.h"

#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

/// The engine `dvFE` on the simulated camera, in a window of the test's own, with files in the current
/// directory.
class Engine : public testing::Test {
protected:
    static constexpr unsigned drainMessage = WM_APP + 7;

    HWND window = nullptr;
    play_info info;
    /// The frames of every tick, as the info drain reported them.
    std::vector<play_info> ticks;
    std::streamoff logBegin = 0;

    void SetUp() override {
        logBegin = std::ifstream("marvo.log", std::ios::binary | std::ios::ate).tellg();
        window = makeWindow();
        dvFE.setRecFile(L"system_test.dv");
        dvFE.setPlayFile(L"system_test.dv");
        dvFE.setInfoDrain(window, drainMessage, &info);
        useCamera("pal.dv", "");
    }

    void TearDown() override {
        dvFE.setInfoDrain(nullptr, 0, nullptr);
        dvFE.done();
        DestroyWindow(window);
        pump(0);
    }

    static HWND makeWindow() {
        return CreateWindowExW(0, L"STATIC", L"marvo test", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 700,
                               nullptr, nullptr, nullptr, nullptr);
    }

    static std::string streamPath(const std::string& stream) {
        char folder[MAX_PATH] = "";
        GetEnvironmentVariableA("MARVO_STREAMS", folder, sizeof(folder));
        return std::string(folder) + "\\" + stream;
    }

    /// Has the camera opened next play a stream, with faults as its text file describes them.
    static void useCamera(const std::string& stream, const std::string& faults) {
        char folder[MAX_PATH];
        GetCurrentDirectoryA(sizeof(folder), folder);
        const std::string file = std::string(folder) + "\\camera.txt";
        static int scenario = 0;
        std::ofstream(file) << "stream = " << streamPath(stream) << "\nscenario = " << ++scenario << "\n"
                            << faults;
        SetEnvironmentVariableA("MARVO_CAMERA", file.c_str());
    }

    /// Dispatches messages for `ms`.
    void pump(unsigned long ms) {
        pumpUntil([] { return false; }, ms);
    }

    /// Dispatches messages until `condition` holds, at most `limit_ms`, long because a busy machine may stand
    /// still for seconds; whether it does.
    template <class Condition>
    bool pumpUntil(Condition condition, unsigned long limit_ms = 40000) {
        const ULONGLONG end = GetTickCount64() + limit_ms;
        for (;;) {
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                if (message.message == drainMessage) {
                    noteTick(static_cast<unsigned long>(message.wParam));
                } else {
                    DispatchMessageW(&message);
                }
            }
            if (condition()) {
                return true;
            }
            if (GetTickCount64() >= end) {
                return false;
            }
            Sleep(2);
        }
    }

    /// The number comes with the message: `info` itself may tell of a later tick by now.
    void noteTick(unsigned long frame) {
        ticks.push_back(info);
        ticks.back().frame = frame;
    }

    /// Gives a command, which has to succeed, and must not hold up its caller.
    template <class Command>
    static void quick(Command command, ULONGLONG limit_ms = 5000) {
        EXPECT_LT(samples::elapsed_ms([&] { EXPECT_TRUE(command()); }), limit_ms);
    }

    bool captured(unsigned long long frames) {
        return pumpUntil([=] { return dvFE.lastFrame() >= frames; });
    }

    /// The frames of the ticks from now on until `enough` holds.
    template <class Enough>
    std::vector<unsigned long long> ticksUntil(Enough enough) {
        std::vector<unsigned long long> frames;
        pump(60);
        ticks.clear();
        EXPECT_TRUE(pumpUntil([&] {
            frames.clear();
            for (const play_info& tick : ticks) {
                frames.push_back(tick.frame);
            }
            return enough(frames);
        })) << frames.size()
            << " ticks";
        return frames;
    }

    /// The frames of the next `count` ticks.
    std::vector<unsigned long long> nextTicks(size_t count) {
        return ticksUntil([=](const auto& frames) { return frames.size() >= count; });
    }

    /// The frames of the ticks from now on until `count` different ones have been shown.
    std::vector<unsigned long long> ticksUntilShown(size_t count) {
        return ticksUntil(
            [=](const auto& frames) { return std::set(frames.begin(), frames.end()).size() >= count; });
    }

    /// Which frames of the stream a recording holds.
    static std::vector<size_t> recordedFrames(const std::string& name, const std::string& stream,
                                              size_t frameSize) {
        std::map<std::string, size_t> place;
        std::ifstream sent(streamPath(stream), std::ios::binary);
        for (std::string frame(frameSize, '\0'); sent.read(frame.data(), std::ssize(frame));) {
            place.emplace(frame, place.size());
        }
        std::vector<size_t> frames;
        std::string record((frameSize + 8 + 511) / 512 * 512, '\0');
        const auto note = [&] {
            const auto found = place.find(record.substr(8, frameSize));
            frames.push_back(found == place.end() ? ~size_t{0} : found->second);
        };
        if (dvAVIFile avi; name.ends_with(".avi")) {
            EXPECT_TRUE(avi.open(vcore::str(name.c_str()).oleStr()));
            for (unsigned long k = 0; k < avi.frames(); ++k) {
                EXPECT_TRUE(avi.readFrame(record.data(), static_cast<unsigned long>(record.size()), k)) << k;
                note();
            }
            return frames;
        }
        for (std::ifstream raw(name, std::ios::binary); raw.read(record.data(), std::ssize(record));) {
            note();
        }
        return frames;
    }

    /// Checks that a recording holds `least` or more frames of the stream, one behind the other as the camera
    /// sent them. Returns the number of frames.
    static size_t expectRecordingFollows(const std::string& recording, const std::string& stream,
                                         size_t frameSize, size_t least) {
        const auto frames = recordedFrames(recording, stream, frameSize);
        const size_t length = std::filesystem::file_size(streamPath(stream)) / frameSize;
        EXPECT_GE(frames.size(), least);
        for (size_t k = 1; k < frames.size(); ++k) {
            EXPECT_EQ(frames[k], (frames[k - 1] + 1) % length) << k;
        }
        return frames.size();
    }

    /// Checks that the frames shown are those of a loop from `from` to `to`, each for any number of ticks.
    static void expectLoop(const std::vector<unsigned long long>& shown, unsigned long long from,
                           unsigned long long to) {
        for (size_t i = 1; i < shown.size(); ++i) {
            EXPECT_TRUE(shown[i] == shown[i - 1] ||
                        shown[i] == (shown[i - 1] == to ? from : shown[i - 1] + 1))
                << shown[i - 1] << " to " << shown[i];
        }
    }

    /// What the engine has logged since the test began.
    std::string log() const {
        std::ifstream file("marvo.log", std::ios::binary);
        file.seekg(logBegin);
        std::stringstream text;
        text << file.rdbuf();
        return text.str();
    }

    /// Whether the devices are all released. Only the server itself knows.
    static bool devicesFree() {
        const HMODULE server = GetModuleHandleA("marvo-devices.dll");
        if (!server) {
            return true;
        }
        using CanUnload = HRESULT(WINAPI*)();
        const auto canUnload =
            reinterpret_cast<CanUnload>(reinterpret_cast<void*>(GetProcAddress(server, "DllCanUnloadNow")));
        return canUnload() == S_OK;
    }
};
