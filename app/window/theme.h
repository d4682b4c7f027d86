/// @file
/// Colours and fonts of the application's windows.
#pragma once

#include "marvo.h"

#include <map>

namespace app {

/// The colours: dark and calm, so that the picture is the brightest thing on the screen, and few, so that
/// each means one thing.
namespace colour {
inline constexpr COLORREF background = RGB(16, 18, 21);
inline constexpr COLORREF panel = RGB(25, 28, 32);
inline constexpr COLORREF raised = RGB(42, 46, 53);
inline constexpr COLORREF hovered = RGB(56, 62, 71);
inline constexpr COLORREF pressed = RGB(74, 82, 94);
inline constexpr COLORREF line = RGB(58, 64, 72);
inline constexpr COLORREF text = RGB(236, 238, 241);
inline constexpr COLORREF faint = RGB(158, 165, 174);
inline constexpr COLORREF off = RGB(98, 104, 112);
inline constexpr COLORREF live = RGB(33, 140, 66);
inline constexpr COLORREF replay = RGB(24, 100, 200);
inline constexpr COLORREF old = RGB(132, 76, 180);
inline constexpr COLORREF alarm = RGB(200, 36, 36);
inline constexpr COLORREF warning = RGB(226, 158, 20);
inline constexpr COLORREF recording = RGB(232, 62, 62);
inline constexpr COLORREF recordingGround = RGB(110, 24, 24);
inline constexpr COLORREF cursor = RGB(255, 255, 255);
inline constexpr COLORREF ring = RGB(52, 140, 186);
inline constexpr COLORREF disk = RGB(62, 84, 106);
inline constexpr COLORREF gap = RGB(128, 40, 40);
inline constexpr COLORREF mark = RGB(250, 200, 60);
inline constexpr COLORREF clip = RGB(214, 150, 40);
} // namespace colour

/// The sizes of writing. Status and messages are read from two metres, keys and times from the chair.
enum class Writing { small, normal, strong, large, huge };

/// The fonts of one resolution. Owned by the window that has it; one thread.
class Fonts {
public:
    explicit Fonts(int dpi) : dpi_(dpi) {}
    Fonts(const Fonts&) = delete;
    Fonts& operator=(const Fonts&) = delete;
    ~Fonts() { clear(); }

    /// Makes the fonts anew for another resolution; those given out before are gone.
    void setDpi(int dpi);
    /// Dots per inch; 96 is a screen of ordinary resolution.
    int dpi() const { return dpi_; }
    /// A length given for 96 dots per inch.
    int scaled(int length) const { return MulDiv(length, dpi_, 96); }
    /// The font, made at its first use.
    HFONT get(Writing writing);

private:
    void clear();

    int dpi_;
    std::map<Writing, HFONT> fonts_;
};

/// The resolution of the screen that a window is on, or of the system where it has but one.
int dpiOf(HWND window);

} // namespace app
