/// @file
/// The menus: every command with its key.
#pragma once

#include "app/command.h"
#include "app/settings.h"
#include "app/view.h"
#include "app/window/canvas.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// The menu bar of the main window and the menus of the right button, drawn in the application's colours.
class MainMenu {
public:
    MainMenu() = default;
    MainMenu(const MainMenu&) = delete;
    MainMenu& operator=(const MainMenu&) = delete;
    ~MainMenu();

    /// Makes the menu bar anew, for these keys, this language and these recent files. The caller gives it to
    /// its window at once; the one before is gone then.
    HMENU build(const Settings& settings);
    /// The menu of a clip or of the picture, at a place of the screen; the command goes to `owner` as
    /// WM_COMMAND.
    void popUp(HWND owner, POINT at, bool forClip, const Settings& settings);
    /// Marks what is on.
    void mark(HMENU menu, const View& view) const;

    /// For the owner's messages of these names; false when it is not a menu's.
    bool measure(MEASUREITEMSTRUCT& item, HWND owner, Fonts& fonts) const;
    bool draw(const DRAWITEMSTRUCT& item, Fonts& fonts) const; ///< see there
    /// Paints the part of the bar that no item covers, behind the owner's WM_NCPAINT and WM_NCACTIVATE.
    void paintRest(HWND owner) const;
    /// The answer to WM_MENUCHAR: the item that a letter means.
    LRESULT letter(wchar_t letter, HMENU menu) const;

    /// What a WM_COMMAND of these menus means: a command, or the number of a recent file.
    static std::optional<Command> commandOf(WORD id);
    static std::optional<size_t> recentOf(WORD id); ///< see there

private:
    struct Item {
        std::wstring words; ///< empty: a line between two groups
        std::wstring key;
        bool title = false; ///< of the bar
    };

    void append(HMENU menu, UINT_PTR id, UINT flags, Item item, std::vector<std::unique_ptr<Item>>& items);
    void appendLine(HMENU menu, std::vector<std::unique_ptr<Item>>& items);
    HMENU group(const Command* commands, size_t count, const Settings& settings,
                std::vector<std::unique_ptr<Item>>& items);

    HMENU bar_ = nullptr;
    std::vector<std::unique_ptr<Item>> items_;
    std::vector<std::unique_ptr<Item>> popUpItems_;
    HBRUSH ground_ = CreateSolidBrush(colour::panel);
};

} // namespace app
