#include "marvo/gui/widget.h"

#include "marvo/core/process_state.h"

#include <cwchar>
#include <iterator>

namespace vwin {

namespace {

constexpr UINT ownerWait_ms = 300;
/// Asks the window's own thread to put it into the host window in lParam (null: give it back).
constexpr UINT reparentMessage = WM_APP + 0x52;

/// The module that this code is in, whatever program loaded it.
HINSTANCE thisModule() {
    static const int anchor = 0;
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&anchor), &module);
    return module;
}

bool ownedByThisThread(HWND window) {
    return GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId();
}

/// Whether the thread of a window takes messages: into a window of one that does not, another thread would
/// move its own for as long as that lasts.
bool answers(HWND window) {
    DWORD_PTR ignored = 0;
    return ownedByThisThread(window) ||
           SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL | SMTO_ABORTIFHUNG, ownerWait_ms,
                               &ignored) != 0;
}

/// A window's styles without those that differ between a popup and a child.
LONG_PTR commonStyle(HWND window) {
    return GetWindowLongPtrW(window, GWL_STYLE) & ~static_cast<LONG_PTR>(WS_POPUP | WS_CHILD);
}

} // namespace

vWidget::vWidget() : vWidget(L"VIDEOFRAME", 0) {}

vWidget::vWidget(const wchar_t* className, unsigned long style) : style_(style) {
    if (className != nullptr) {
        std::wcsncpy(className_, className, classNameSize - 1);
    }
}

vWidget::~vWidget() {
    if (vcore::processEnding()) {
        return;
    }
    HWND window = current();
    window_ = nullptr;
    if (window != nullptr) {
        retire(window);
    }
    // Fails while another widget has a window of the class, which is as it should be.
    UnregisterClassW(className_, thisModule());
}

void vWidget::destroyEvent() {}

void vWidget::resizeEvent(int, int) {}

void vWidget::timerEvent(char) {}

bool vWidget::show(bool visible) {
    HWND window = visible ? handle() : current();
    if (window == nullptr) {
        return !visible;
    }
    const int command = visible ? SW_SHOWNOACTIVATE : SW_HIDE;
    if (!ownedByThisThread(window)) {
        ShowWindowAsync(window, command);
        return true;
    }
    if (!hostAnswers()) {
        return false;
    }
    ShowWindow(window, command);
    return true;
}

bool vWidget::hide(bool hidden) {
    return show(!hidden);
}

bool vWidget::visible() const {
    HWND window = current();
    return window != nullptr && (GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE) != 0;
}

bool vWidget::resize(int width, int height) {
    if (width < 0 || height < 0) {
        return false;
    }
    HWND window = handle();
    if (window == nullptr) {
        return false;
    }
    const UINT async = ownedByThisThread(window) ? 0 : SWP_ASYNCWINDOWPOS;
    return SetWindowPos(window, nullptr, 0, 0, width, height,
                        SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | async) != FALSE;
}

bool vWidget::invalidate() {
    HWND window = current();
    return window != nullptr && InvalidateRect(window, nullptr, eraseBackground_) != FALSE;
}

bool vWidget::reparent(HWND host) {
    if (host == nullptr && current() == nullptr) {
        return true;
    }
    if (host != nullptr && !(IsWindow(host) && answers(host))) {
        return false;
    }
    HWND window = handle();
    if (window == nullptr) {
        return false;
    }
    if (ownedByThisThread(window)) {
        return hostAnswers() && moveInto(window, host);
    }

    DWORD_PTR moved = FALSE;
    if (SendMessageTimeoutW(window, reparentMessage, 0, reinterpret_cast<LPARAM>(host),
                            SMTO_NORMAL | SMTO_ABORTIFHUNG, ownerWait_ms, &moved) != 0) {
        return moved != FALSE;
    }
    const bool wasVisible = visible();
    RECT area = {};
    GetWindowRect(window, &area);
    window_ = nullptr;
    retire(window);
    HWND fresh = create();
    return fresh != nullptr && resize(area.right - area.left, area.bottom - area.top) &&
           moveInto(fresh, host) && show(wasVisible);
}

bool vWidget::hostAnswers() const {
    HWND window = current();
    HWND host = window != nullptr ? GetAncestor(window, GA_PARENT) : nullptr;
    return host == nullptr || host == GetDesktopWindow() || answers(host);
}

void vWidget::setEraseBackground(bool on) {
    eraseBackground_ = on;
}

HWND vWidget::handle() {
    HWND window = current();
    return window != nullptr ? window : create();
}

/// The window, null when there is none or when it is gone: its number may even be another window's by now.
HWND vWidget::current() const {
    HWND window = window_.load();
    const bool ours =
        window != nullptr && GetWindowLongPtrW(window, GWLP_USERDATA) == reinterpret_cast<LONG_PTR>(this);
    return ours ? window : nullptr;
}

LRESULT CALLBACK vWidget::windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
    }
    auto* widget = reinterpret_cast<vWidget*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return widget != nullptr ? widget->handleMessage(window, message, wParam, lParam)
                             : DefWindowProcW(window, message, wParam, lParam);
}

LRESULT vWidget::handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case reparentMessage:
        return moveInto(window, reinterpret_cast<HWND>(lParam));
    case WM_ERASEBKGND:
        if (!eraseBackground_) {
            return TRUE;
        }
        break;
    case WM_SIZE:
        resizeEvent(LOWORD(lParam), HIWORD(lParam));
        return 0;
    case WM_TIMER:
        timerEvent(static_cast<char>(wParam));
        return 0;
    case WM_DESTROY:
        onDestroy(window);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void vWidget::onDestroy(HWND window) {
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    HWND expected = window;
    if (!window_.compare_exchange_strong(expected, nullptr)) {
        return;
    }
    keepChildren(window);
    destroyEvent();
}

/// Moves the windows inside the dying one to a new window, hidden: a renderer's picture window would
/// otherwise be lost for ever with the host's. Windows of other threads are not touched, because that could
/// block.
void vWidget::keepChildren(HWND dying) {
    HWND child = GetWindow(dying, GW_CHILD);
    while (child != nullptr) {
        HWND next = GetWindow(child, GW_HWNDNEXT);
        if (ownedByThisThread(child)) {
            if (HWND fresh = handle()) {
                SetParent(child, fresh);
            }
        }
        child = next;
    }
}

HWND vWidget::create() {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = windowProc;
    windowClass.hInstance = thisModule();
    windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    windowClass.lpszClassName = className_;
    if (RegisterClassW(&windowClass) == 0 && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
        return nullptr;
    }
    HWND window =
        CreateWindowExW(WS_EX_TOOLWINDOW, className_, L"", WS_POPUP | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, 0, 0,
                        0, 0, nullptr, nullptr, thisModule(), this);
    window_ = window;
    return window;
}

/// Cuts the window off from this object and has it destroyed, on its own thread when that is another one.
void vWidget::retire(HWND window) {
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    if (ownedByThisThread(window)) {
        DestroyWindow(window);
        return;
    }
    // The window may outlive the library: its procedure must not be ours any more.
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(DefWindowProcW));
    ShowWindowAsync(window, SW_HIDE);
    PostMessageW(window, WM_CLOSE, 0, 0);
}

bool vWidget::moveInto(HWND window, HWND host) {
    const bool child = host != nullptr;
    const LONG_PTR before = GetWindowLongPtrW(window, GWL_STYLE);
    const LONG_PTR style = commonStyle(window) | (child ? WS_CHILD : WS_POPUP);
    // A window must be a child before it gets a parent, and lose its parent before it is a popup again.
    if (child) {
        SetWindowLongPtrW(window, GWL_STYLE, style);
    }
    if (SetParent(window, host) == nullptr) {
        SetWindowLongPtrW(window, GWL_STYLE, before);
        return false;
    }
    if (!child) {
        SetWindowLongPtrW(window, GWL_STYLE, style);
    }
    SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    return true;
}

} // namespace vwin
