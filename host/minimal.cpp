/// @file
/// The smallest host: a window with the live picture, recorded; the space bar shows the last five seconds
/// again in slow motion, any other key goes back to live. The camera is the first capture device.
#include "marvo.h"

namespace {

bool startSession(HWND window) {
    if (!dvFE.init(window, false)) {
        return false;
    }
    return dvFE.startRecord(L"match.dv");
}

void showLastSeconds(unsigned seconds) {
    const unsigned long long newest = dvFE.lastFrame();
    const unsigned long long span = seconds * dvFE.framesPerSecond();
    dvFE.replay(newest > span ? newest - span : 0, newest, L"match.dv");
    dvFE.setSpeed(0.5);
}

void endSession() {
    dvFE.live();
    dvFE.stopRecord();
    dvFE.done();
}

LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_KEYDOWN:
        if (wParam == VK_SPACE) {
            showLastSeconds(5);
        } else {
            dvFE.live();
        }
        return 0;
    case WM_CLOSE:
        endSession();
        DestroyWindow(window);
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

} // namespace

int main() {
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSW type{};
    type.lpfnWndProc = onMessage;
    type.hInstance = instance;
    type.lpszClassName = L"marvo minimal host";
    RegisterClassW(&type);
    const HWND window =
        CreateWindowExW(0, type.lpszClassName, L"marvo", WS_OVERLAPPEDWINDOW | WS_VISIBLE, CW_USEDEFAULT,
                        CW_USEDEFAULT, 740, 620, nullptr, nullptr, instance, nullptr);
    if (!startSession(window)) {
        MessageBoxW(window, L"There is no picture. Is a DV camera connected? marvo.log tells more.", L"marvo",
                    MB_OK);
        return 1;
    }
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
