#include "app/window/full_screen.h"

#include <gtest/gtest.h>

TEST(FullScreen, GivesBackWhatItTook) {
    HWND window = CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW, 30, 40, 500, 400, nullptr, nullptr,
                                  nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    HMENU menu = CreateMenu();
    AppendMenuW(menu, MF_STRING, 1, L"File");
    app::FullScreen full;
    full.setMenu(window, menu);
    RECT before = {}, now = {};
    GetWindowRect(window, &before);
    POINT least = {100000, 300};
    full.limit(window, least);
    EXPECT_TRUE(least.x <= GetSystemMetrics(SM_CXSCREEN) && least.y == 300);
    full.enter(window);
    // The display changes and settings are used meanwhile.
    full.follow(window);
    full.enter(window);
    menu = CreateMenu();
    AppendMenuW(menu, MF_STRING, 2, L"Datei");
    full.setMenu(window, menu);
    GetWindowRect(window, &now);
    EXPECT_TRUE(now.left == 0 && now.top == 0 && now.right == GetSystemMetrics(SM_CXSCREEN) &&
                now.bottom == GetSystemMetrics(SM_CYSCREEN));
    EXPECT_TRUE(full.on() && GetMenu(window) == nullptr);
    full.limit(window, least);
    EXPECT_TRUE(least.x == 0 && least.y == 0);
    full.leave(window);
    full.follow(window);
    GetWindowRect(window, &now);
    EXPECT_TRUE(EqualRect(&now, &before)) << now.left << ' ' << now.top << ' ' << now.right;
    EXPECT_TRUE(GetMenu(window) == menu && (GetWindowLongW(window, GWL_STYLE) & WS_CAPTION) == WS_CAPTION);
    DestroyWindow(window);
}
