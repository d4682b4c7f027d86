#include "host/screenshot.h"

#include "host/text.h"

#include <vector>

namespace host {

namespace {

/// The window's client area, rows from the bottom, 3 bytes a pixel, each row padded to 4 bytes. Empty on
/// failure.
std::string readPixels(HWND window, int width, int height, const BITMAPINFOHEADER& header) {
    std::string pixels(static_cast<size_t>(header.biSizeImage), '\0');
    HDC source = GetDC(window);
    HDC memory = CreateCompatibleDC(source);
    HBITMAP bitmap = CreateCompatibleBitmap(source, width, height);
    HGDIOBJ former = SelectObject(memory, bitmap);
    const bool copied = BitBlt(memory, 0, 0, width, height, source, 0, 0, SRCCOPY) != FALSE;
    SelectObject(memory, former);
    BITMAPINFO info = {};
    info.bmiHeader = header;
    const int rows =
        copied ? GetDIBits(memory, bitmap, 0, static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS)
               : 0;
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(window, source);
    return rows == height ? pixels : std::string();
}

} // namespace

bool saveScreenshot(HWND window, const std::wstring& file) {
    RECT area = {};
    if (!GetClientRect(window, &area) || area.right <= 0 || area.bottom <= 0) {
        return false;
    }
    UpdateWindow(window);
    BITMAPINFOHEADER header = {};
    header.biSize = sizeof header;
    header.biWidth = area.right;
    header.biHeight = area.bottom;
    header.biPlanes = 1;
    header.biBitCount = 24;
    header.biCompression = BI_RGB;
    header.biSizeImage = static_cast<DWORD>((area.right * 3 + 3) / 4 * 4 * area.bottom);
    const std::string pixels = readPixels(window, area.right, area.bottom, header);
    if (pixels.empty()) {
        return false;
    }
    BITMAPFILEHEADER fileHeader = {};
    fileHeader.bfType = 0x4D42;
    fileHeader.bfOffBits = sizeof fileHeader + sizeof header;
    fileHeader.bfSize = fileHeader.bfOffBits + header.biSizeImage;
    std::string content(reinterpret_cast<const char*>(&fileHeader), sizeof fileHeader);
    content.append(reinterpret_cast<const char*>(&header), sizeof header);
    return writeFile(file, content + pixels);
}

} // namespace host
