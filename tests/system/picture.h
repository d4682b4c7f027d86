/// @file
/// What a window shows, looked at.
#pragma once

#include "tests/system/engine.h"

/// An engine whose picture is looked at. The test streams move and have many colours all over.
class PictureEngine : public Engine {
protected:
    /// The colours of a grid of points in a part of a window's client area.
    static std::vector<COLORREF> look(HWND window, const RECT& part) {
        constexpr int points = 16;
        const HDC source = GetDC(window);
        const HDC memory = CreateCompatibleDC(source);
        const HBITMAP bitmap = CreateCompatibleBitmap(source, points, points);
        const HGDIOBJ former = SelectObject(memory, bitmap);
        std::vector<COLORREF> seen;
        for (int i = 0; i < points * points; ++i) {
            const int x = part.left + (part.right - part.left) * (2 * (i % points) + 1) / (2 * points);
            const int y = part.top + (part.bottom - part.top) * (2 * (i / points) + 1) / (2 * points);
            BitBlt(memory, i % points, i / points, 1, 1, source, x, y, SRCCOPY);
        }
        for (int i = 0; i < points * points; ++i) {
            seen.push_back(GetPixel(memory, i % points, i / points));
        }
        SelectObject(memory, former);
        DeleteObject(bitmap);
        DeleteDC(memory);
        ReleaseDC(window, source);
        return seen;
    }

    static size_t colours(HWND window, const RECT& part) {
        const auto seen = look(window, part);
        return std::set<COLORREF>(seen.begin(), seen.end()).size();
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
                const LONG x = (part.left + part.right) / 2;
                const LONG y = (part.top + part.bottom) / 2;
                for (const RECT& quarter :
                     {RECT{part.left, part.top, x, y}, RECT{x, part.top, part.right, y},
                      RECT{part.left, y, x, part.bottom}, RECT{x, y, part.right, part.bottom}}) {
                    if (colours(window, quarter) < 4) {
                        return false;
                    }
                }
                pictures.insert(look(window, part));
                return pictures.size() >= 3;
            },
            20000);
    }
    bool moves(HWND window) { return moves(window, clientOf(window)); }

    /// Whether a part of a window comes to show one colour.
    bool isBare(HWND window, const RECT& part) {
        return pumpUntil([&] { return colours(window, part) == 1; }, 20000);
    }
};
