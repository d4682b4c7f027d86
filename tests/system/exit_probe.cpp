/// A host that ends while the engine records: by return, by exit, killed, while a camera that was gone is
/// being opened, or without ever having touched COM. The exit code says that it got that far (42, killed 43);
/// a hang or a fault at the end shows as another one.

#include "marvo.h"

#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    const std::string way = argc > 1 ? argv[1] : "return";
    if (way == "no-com") {
        return dvFE.replay(0, 1, nullptr) ? 1 : 42;
    }
    const HWND window = CreateWindowExW(0, L"STATIC", L"probe", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 400,
                                        300, nullptr, nullptr, nullptr, nullptr);
    if (!dvFE.init(window, false) || !dvFE.startRecord(L"exit_probe.dv")) {
        return 1;
    }
    while (dvFE.writtenFrame() < 30) {
        Sleep(10);
    }
    dvFE.replay(0, 9, nullptr);
    while (way == "gone" && dvFE.cameraState().state != dvCameraState::gone) {
        Sleep(10);
    }
    Sleep(way == "gone" ? 400 : 0); // by then the camera is being opened
    if (way == "killed") {
        TerminateProcess(GetCurrentProcess(), 43);
    }
    if (way == "exit") {
        std::exit(42);
    }
    return 42;
}
