/// @file
/// A picture of a window.
#pragma once

#include "marvo.h"

#include <string>

namespace host {

/// Writes what the window's client area shows, its child windows included, to a 24-bit BMP file. False when
/// the window has no area or the file cannot be written.
bool saveScreenshot(HWND window, const std::wstring& file);

} // namespace host
