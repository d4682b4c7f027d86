#include "app/window/theme.h"

namespace app {

namespace {

struct Size {
    int height; ///< of a letter with its room, in pixels at 96 dots per inch
    int weight;
};

Size sizeOf(Writing writing) {
    switch (writing) {
    case Writing::small:
        return {14, FW_NORMAL};
    case Writing::normal:
        return {18, FW_NORMAL};
    case Writing::strong:
        return {18, FW_BOLD};
    case Writing::large:
        return {26, FW_BOLD};
    default:
        return {40, FW_BOLD};
    }
}

} // namespace

void Fonts::setDpi(int dpi) {
    clear();
    dpi_ = dpi;
}

HFONT Fonts::get(Writing writing) {
    HFONT& font = fonts_[writing];
    if (font == nullptr) {
        const Size size = sizeOf(writing);
        font = CreateFontW(-scaled(size.height) * 4 / 5, 0, 0, 0, size.weight, FALSE, FALSE, FALSE,
                           DEFAULT_CHARSET, OUT_TT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY,
                           VARIABLE_PITCH | FF_SWISS, L"Segoe UI");
    }
    return font;
}

void Fonts::clear() {
    for (const auto& [writing, font] : fonts_) {
        DeleteObject(font);
    }
    fonts_.clear();
}

int dpiOf(HWND window) {
    using GetDpi = UINT(WINAPI*)(HWND);
    // Only newer systems have a resolution per screen.
    static const auto getDpi = reinterpret_cast<GetDpi>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
    const UINT own = getDpi != nullptr ? getDpi(window) : 0;
    if (own != 0) {
        return static_cast<int>(own);
    }
    HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi;
}

} // namespace app
