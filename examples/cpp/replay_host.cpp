/// @file
/// A small replay host: a window with the live picture of the first camera, recorded to match.dv. The space
/// bar shows the last three seconds again at half speed, any other key goes back to live.
///
/// replay_host [SECONDS]   with a number it goes by itself: live, as long again replayed, then it ends
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "marvo.hpp"

namespace {

void replayLast(unsigned seconds) {
    const marvo::status_info now = marvo::status();
    const marvo_u64 span = marvo_u64{seconds} * now.frames_per_second;
    if (now.next_frame > 0) {
        const marvo_u64 newest = now.next_frame - 1;
        marvo::replay(newest > span ? newest - span : 0, newest, marvo::recordFile());
        marvo::setSpeed(0.5);
    }
}

LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_KEYDOWN:
        // Exceptions must not leave a window procedure.
        try {
            first == VK_SPACE ? replayLast(3) : marvo::live();
        } catch (const marvo::error& failure) {
            std::fprintf(stderr, "%s\n", failure.what());
        }
        return 0;
    case WM_CLOSE:
        // The window stays until the engine has left it.
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcA(window, message, first, second);
    }
}

HWND makeWindow() {
    WNDCLASSA type{};
    type.lpfnWndProc = onMessage;
    type.hInstance = GetModuleHandleA(nullptr);
    type.lpszClassName = "replay host";
    RegisterClassA(&type);
    return CreateWindowExA(0, type.lpszClassName, "marvo", WS_OVERLAPPEDWINDOW | WS_VISIBLE, CW_USEDEFAULT,
                           CW_USEDEFAULT, 740, 620, nullptr, nullptr, type.hInstance, nullptr);
}

/// Handles messages until the window is closed or, unless it is 0, the time has passed; false when closed.
bool handleMessages(unsigned milliseconds) {
    const ULONGLONG began = GetTickCount64();
    MSG message;
    while (milliseconds == 0 || GetTickCount64() - began < milliseconds) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) {
                return false;
            }
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    return true;
}

void run(unsigned seconds) {
    std::printf("marvo %s\n", marvo::versionText().c_str());
    const marvo::subscription told =
        marvo::onEvent([](const marvo::event& happened) { std::printf("event: %s\n", happened.text); });
    const HWND window = makeWindow();
    {
        marvo::engine engine(window);
        marvo::startRecord("match.dv");
        if (handleMessages(seconds * 1000) && seconds > 0) {
            replayLast(seconds);
            handleMessages(seconds * 1000);
            const marvo::play_info play = marvo::play();
            std::printf("%s frame %llu of %llu to %llu\n", play.replaying ? "replaying" : "live", play.frame,
                        play.from, play.to);
        }
        marvo::stopRecord();
        engine.done();
    }
    DestroyWindow(window);
    const marvo::reader reader("match.dv");
    std::printf("match.dv: %llu frames\n", reader.frames());
}

} // namespace

int main(int count, char** words) {
    try {
        run(count > 1 ? std::strtoul(words[1], nullptr, 10) : 0);
        return 0;
    } catch (const marvo::error& failure) {
        std::fprintf(stderr, "%s: %s\n", failure.name(), failure.what());
        return 1;
    }
}
