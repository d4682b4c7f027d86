#include "host/app_window.h"

#include "host/text.h"

#include <iterator>

namespace host {

namespace {

constexpr wchar_t className[] = L"MarvoHost";
constexpr wchar_t videoClassName[] = L"MarvoHostVideo";
constexpr int buttonHeight = 28;
constexpr int statusHeight = 22;
constexpr int controlsHeight = 2 * buttonHeight + statusHeight;
constexpr int firstButtonId = 100;
constexpr UINT_PTR statusTimer = 1;
constexpr UINT statusPeriod_ms = 200;
constexpr unsigned long long messageTime_ms = 6000;
constexpr double fastest = 8.0;
constexpr double slowest = 0.125;

bool changeSpeed(Transport& transport, double factor) {
    const double speed = transport.status().speed * factor;
    const double size = speed < 0.0 ? -speed : speed;
    return size < slowest || size > fastest || transport.setSpeed(speed);
}

/// A button, the key that does the same, and the command.
struct Control {
    const wchar_t* label;
    WPARAM key;
    bool (*act)(Transport&);
};

const Control controls[] = {
    {L"L  Live", 'L', [](Transport& t) { return t.status().initialised ? t.live() : t.init(std::nullopt); }},
    {L"R  Record", 'R', [](Transport& t) { return t.record({}); }},
    {L"S  Stop", 'S', [](Transport& t) { return t.stop(); }},
    {L"Space  Hold", VK_SPACE, [](Transport& t) { return t.setPaused(!t.status().paused); }},
    {L"5  Last 5 s", '5', [](Transport& t) { return t.replayLast(5.0); }},
    {L"0  Last 10 s", '0', [](Transport& t) { return t.replayLast(10.0); }},
    {L"-  Slower", VK_OEM_MINUS, [](Transport& t) { return changeSpeed(t, 0.5); }},
    {L"+  Faster", VK_OEM_PLUS, [](Transport& t) { return changeSpeed(t, 2.0); }},
    {L"N  Normal", 'N', [](Transport& t) { return t.setSpeed(1.0); }},
    {L"B  Reverse", 'B', [](Transport& t) { return changeSpeed(t, -1.0); }},
    {L"\x2190  Frame", VK_LEFT, [](Transport& t) { return t.seek(t.currentFrame() - 1); }},
    {L"\x2192  Frame", VK_RIGHT, [](Transport& t) { return t.seek(t.currentFrame() + 1); }},
    {L"I  Mark in", 'I', [](Transport& t) { return t.mark(true, t.currentFrame(), 1); }},
    {L"O  Mark out", 'O', [](Transport& t) { return t.mark(false, t.currentFrame(), 1); }},
    {L"P  Play marks", 'P', [](Transport& t) { return t.playElement(1); }},
    {L"V  Video", 'V', [](Transport& t) { return t.status().initialised ? t.done() : t.init(std::nullopt); }},
};
constexpr size_t buttonsPerRow = std::size(controls) / 2;

/// The video area: black where there is no video.
void registerVideoClass() {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    windowClass.lpszClassName = videoClassName;
    RegisterClassW(&windowClass);
}

/// Keys of the number pad that mean the same as others.
WPARAM mainKey(WPARAM key) {
    if (key == VK_ADD) {
        return VK_OEM_PLUS;
    }
    return key == VK_SUBTRACT ? VK_OEM_MINUS : key;
}

} // namespace

AppWindow::~AppWindow() {
    transport_ = nullptr;
    if (window_ != nullptr) {
        DestroyWindow(window_);
    }
}

bool AppWindow::create(int videoWidth, int videoHeight) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = windowProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
    windowClass.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    windowClass.lpszClassName = className;
    RegisterClassW(&windowClass);
    registerVideoClass();
    RECT area = {0, 0, videoWidth, videoHeight + controlsHeight};
    AdjustWindowRect(&area, WS_OVERLAPPEDWINDOW, FALSE);
    HWND window = CreateWindowExW(0, className, L"Marvo replay", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                                  CW_USEDEFAULT, CW_USEDEFAULT, area.right - area.left,
                                  area.bottom - area.top, nullptr, nullptr, windowClass.hInstance, this);
    if (window == nullptr) {
        return false;
    }
    createControls();
    layOut(videoWidth, videoHeight + controlsHeight);
    SetTimer(window, statusTimer, statusPeriod_ms, nullptr);
    ShowWindow(window, SW_SHOW);
    return true;
}

void AppWindow::showMessage(const std::string& text) {
    SetWindowTextW(status_, wide(text).c_str());
    messageUntil_ = GetTickCount64() + messageTime_ms;
}

bool AppWindow::dispatch(double ms) {
    const ULONGLONG begin = GetTickCount64();
    while (window_ != nullptr) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_KEYDOWN && actOnKey(message.wParam)) {
                continue;
            }
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        const double left = ms - static_cast<double>(GetTickCount64() - begin);
        if (ms >= 0.0 && left <= 0.0) {
            break;
        }
        if (window_ != nullptr) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, ms < 0.0 ? INFINITE : static_cast<DWORD>(left) + 1,
                                      QS_ALLINPUT);
        }
    }
    return window_ != nullptr;
}

LRESULT CALLBACK AppWindow::windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* self = static_cast<AppWindow*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        self->window_ = window;
    }
    auto* self = reinterpret_cast<AppWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return self != nullptr ? self->handleMessage(message, wParam, lParam)
                           : DefWindowProcW(window, message, wParam, lParam);
}

LRESULT AppWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    HWND window = window_;
    switch (message) {
    case playInfoMessage:
        if (observer_) {
            observer_(static_cast<unsigned long>(wParam));
        }
        return 0;
    case WM_COMMAND:
        if (LOWORD(wParam) >= firstButtonId && HIWORD(wParam) == BN_CLICKED) {
            act(LOWORD(wParam) - firstButtonId);
        }
        return 0;
    case WM_TIMER:
        showStatus();
        return 0;
    case WM_SIZE:
        if (wParam != SIZE_MINIMIZED && videoArea_ != nullptr) {
            layOut(LOWORD(lParam), HIWORD(lParam));
        }
        return 0;
    case WM_CLOSE:
        if (transport_ != nullptr) {
            transport_->done();
        }
        DestroyWindow(window);
        return 0;
    case WM_DESTROY:
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        window_ = videoArea_ = status_ = nullptr;
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void AppWindow::createControls() {
    const HINSTANCE module = GetModuleHandleW(nullptr);
    videoArea_ = CreateWindowExW(0, videoClassName, L"", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, 0, 0,
                                 window_, nullptr, module, nullptr);
    status_ = CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE | SS_LEFT, 0, 0, 0, 0, window_,
                              nullptr, module, nullptr);
    for (size_t i = 0; i < std::size(controls); ++i) {
        CreateWindowExW(0, L"BUTTON", controls[i].label, WS_CHILD | WS_VISIBLE | BS_PUSHBUTTON, 0, 0, 0, 0,
                        window_, reinterpret_cast<HMENU>(firstButtonId + i), module, nullptr);
    }
}

void AppWindow::layOut(int width, int height) {
    const int videoHeight = height > controlsHeight ? height - controlsHeight : 0;
    SetWindowPos(videoArea_, nullptr, 0, 0, width, videoHeight, SWP_NOZORDER | SWP_NOACTIVATE);
    for (size_t i = 0; i < std::size(controls); ++i) {
        const int column = static_cast<int>(i % buttonsPerRow);
        const int row = static_cast<int>(i / buttonsPerRow);
        const int columns = static_cast<int>(buttonsPerRow);
        const int left = width * column / columns;
        SetWindowPos(GetDlgItem(window_, firstButtonId + static_cast<int>(i)), nullptr, left,
                     videoHeight + row * buttonHeight, width * (column + 1) / columns - left, buttonHeight,
                     SWP_NOZORDER | SWP_NOACTIVATE);
    }
    SetWindowPos(status_, nullptr, 4, height - statusHeight + 2, width - 4, statusHeight - 2,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    if (transport_ != nullptr) {
        transport_->setSize(width, videoHeight);
    }
}

void AppWindow::showStatus() {
    if (transport_ != nullptr && GetTickCount64() >= messageUntil_) {
        SetWindowTextW(status_, wide(transport_->status().line()).c_str());
    }
}

void AppWindow::act(size_t control) {
    if (transport_ == nullptr || control >= std::size(controls)) {
        return;
    }
    if (!controls[control].act(*transport_)) {
        showMessage(transport_->explanation());
    }
    SetFocus(window_);
}

bool AppWindow::actOnKey(WPARAM key) {
    for (size_t i = 0; i < std::size(controls); ++i) {
        if (controls[i].key == mainKey(key)) {
            act(i);
            return true;
        }
    }
    return false;
}

} // namespace host
