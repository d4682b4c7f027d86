#include "app/window/window.h"

namespace app {

namespace {

constexpr wchar_t className[] = L"MarvoReplay";
constexpr int iconId = 1;

} // namespace

Window::~Window() {
    destroy();
}

Area Window::client() const {
    RECT rect = {};
    GetClientRect(window_, &rect);
    return {0, 0, rect.right, rect.bottom};
}

void Window::place(const Area& area) const {
    SetWindowPos(window_, nullptr, area.left, area.top, area.width(), area.height(),
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

bool Window::create(const wchar_t* title, DWORD style, DWORD extendedStyle, HWND parent, const Area& area) {
    WNDCLASSW windowClass = {};
    windowClass.style = CS_DBLCLKS;
    windowClass.lpfnWndProc = windowProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hIcon = LoadIconW(windowClass.hInstance, MAKEINTRESOURCEW(iconId));
    windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    windowClass.lpszClassName = className;
    RegisterClassW(&windowClass);
    CreateWindowExW(extendedStyle, className, title, style, area.left, area.top, area.width(), area.height(),
                    parent, nullptr, windowClass.hInstance, this);
    return window_ != nullptr;
}

LRESULT Window::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcW(window_, message, wParam, lParam);
}

void Window::destroy() {
    if (window_ != nullptr) {
        HWND window = window_;
        window_ = nullptr;
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        DestroyWindow(window);
    }
}

LRESULT CALLBACK Window::windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* made = static_cast<Window*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made));
        made->window_ = window;
    }
    auto* self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    const LRESULT result = self->handleMessage(message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        self->window_ = nullptr;
    }
    return result;
}

bool Panel::createPanel(HWND parent, Fonts& fonts, DWORD more) {
    fonts_ = &fonts;
    return create(L"", WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN | more, 0, parent, {});
}

LRESULT Panel::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_ERASEBKGND:
        return TRUE;
    case WM_PAINT: {
        PAINTSTRUCT painting;
        HDC screen = BeginPaint(handle(), &painting);
        const Area area = client();
        if (HDC memory = buffer_.context(screen, area.width(), area.height())) {
            {
                Canvas canvas(memory, *fonts_);
                paint(canvas, area);
            }
            BitBlt(screen, 0, 0, area.width(), area.height(), memory, 0, 0, SRCCOPY);
        }
        EndPaint(handle(), &painting);
        return 0;
    }
    case WM_SIZE:
        invalidate();
        return 0;
    }
    return Window::handleMessage(message, wParam, lParam);
}

void Panel::watchMouseLeave() const {
    TRACKMOUSEEVENT wanted = {sizeof wanted, TME_LEAVE, handle(), 0};
    TrackMouseEvent(&wanted);
}

} // namespace app
