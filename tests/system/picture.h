/// @file
/// What a window shows, looked at.
#pragma once

#include "tests/system/engine.h"

/// An engine whose picture is looked at. The test streams move and have many colours all over.
class PictureEngine : public Engine {
protected:
    static constexpr int points = 16; ///< of a look, each way

    /// The colours of a grid of points in a part of a window's client area.
    static std::vector<COLORREF> look(HWND window, const RECT& part) {
        const int width = part.right - part.left;
        const int height = part.bottom - part.top;
        const HDC source = GetDC(window);
        const HDC memory = CreateCompatibleDC(source);
        const HBITMAP bitmap = CreateCompatibleBitmap(source, width, height);
        const HGDIOBJ former = SelectObject(memory, bitmap);
        BitBlt(memory, 0, 0, width, height, source, part.left, part.top, SRCCOPY);
        std::vector<COLORREF> seen;
        for (int i = 0; i < points * points; ++i) {
            seen.push_back(GetPixel(memory, width * (2 * (i % points) + 1) / (2 * points),
                                    height * (2 * (i / points) + 1) / (2 * points)));
        }
        SelectObject(memory, former);
        DeleteObject(bitmap);
        DeleteDC(memory);
        ReleaseDC(window, source);
        return seen;
    }

    static RECT clientOf(HWND window) {
        RECT area{};
        GetClientRect(window, &area);
        return area;
    }

    /// Whether a picture fills a part of a window, quarter by quarter, and moves.
    bool moves(HWND window, const RECT& part) {
        std::set<std::vector<COLORREF>> pictures;
        return pumpUntil(
            [&] {
                const auto seen = look(window, part);
                std::set<COLORREF> quarters[4];
                for (int i = 0; i < points * points; ++i) {
                    quarters[i % points / (points / 2) + i / points / (points / 2) * 2].insert(seen[i]);
                }
                if (std::any_of(quarters, quarters + 4,
                                [](const auto& colours) { return colours.size() < 4; })) {
                    return false;
                }
                pictures.insert(seen);
                return pictures.size() >= 3;
            },
            20000);
    }
    bool moves(HWND window) { return moves(window, clientOf(window)); }

    /// Whether a part of a window comes to show one colour.
    bool isBare(HWND window, const RECT& part) {
        return pumpUntil(
            [&] {
                const auto seen = look(window, part);
                return std::set<COLORREF>(seen.begin(), seen.end()).size() == 1;
            },
            20000);
    }
};
