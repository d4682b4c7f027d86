#include "app/window/main_menu.h"

#include "app/disk.h"

#include <algorithm>
#include <cwctype>
#include <iterator>

namespace app {

namespace {

constexpr UINT firstRecent = 2000;
/// Stands for a line between two groups.
constexpr Command line{0};

const Command fileCommands[] = {Command::open,     line, Command::exportClip, Command::exportAll, line,
                                Command::settings, line, Command::quit};
const Command recordCommands[] = {Command::record, Command::stop, line, Command::live,
                                  Command::lookForCamera};
const Command replayCommands[] = {Command::again5,
                                  Command::again10,
                                  Command::again20,
                                  line,
                                  Command::holdOrGoOn,
                                  Command::playForward,
                                  Command::playBackward,
                                  line,
                                  Command::stepForward,
                                  Command::stepBack,
                                  Command::stepForward10,
                                  Command::stepBack10,
                                  Command::home,
                                  Command::end,
                                  line,
                                  Command::playOnce,
                                  Command::loop,
                                  Command::pingPong};
const Command speedCommands[] = {
    Command::speed1, Command::speed2, Command::speed3, Command::speed4, Command::speed5,
    Command::speed6, Command::speed7, Command::speed8, Command::speed9, line,
    Command::reverse};
const Command clipCommands[] = {
    Command::markIn,     Command::markOut,      Command::clearMarks, Command::clipOfLast10, line,
    Command::nextClip,   Command::previousClip, Command::playClip,   Command::playAll,      line,
    Command::renameClip, Command::clipUp,       Command::clipDown,   Command::deleteClip,   Command::undo};
const Command viewCommands[] = {
    Command::fullScreen, Command::outputWindow, line, Command::field, Command::zoomIn,
    Command::zoomOut,    Command::zoomWhole,    line, Command::mute,  Command::timeDisplay};
const Command helpCommands[] = {Command::help};
const Command onClip[] = {Command::playClip,   line,         Command::renameClip, Command::exportClip, line,
                          Command::deleteClip, Command::undo};
const Command onPicture[] = {
    Command::fullScreen, Command::outputWindow, Command::field, Command::zoomWhole, line,
    Command::mute,       Command::timeDisplay};

struct Group {
    Text title;
    const Command* commands;
    size_t count;
};

const Group groups[] = {
    {Text::windowMenuFile, fileCommands, std::size(fileCommands)},
    {Text::windowMenuRecording, recordCommands, std::size(recordCommands)},
    {Text::windowMenuReplay, replayCommands, std::size(replayCommands)},
    {Text::windowMenuSpeed, speedCommands, std::size(speedCommands)},
    {Text::windowMenuClips, clipCommands, std::size(clipCommands)},
    {Text::windowMenuView, viewCommands, std::size(viewCommands)},
    {Text::windowMenuHelp, helpCommands, std::size(helpCommands)},
};

} // namespace

MainMenu::~MainMenu() {
    // The bar belongs to its window.
    DeleteObject(ground_);
}

HMENU MainMenu::build(const Settings& settings) {
    std::vector<std::unique_ptr<Item>> items;
    HMENU bar = CreateMenu();
    for (const Group& part : groups) {
        HMENU menu = group(part.commands, part.count, settings, items);
        if (part.title == Text::windowMenuFile && !settings.recent.empty()) {
            appendLine(menu, items);
            for (size_t i = 0; i < settings.recent.size(); ++i) {
                append(menu, firstRecent + i, 0, {nameOf(settings.recent[i]), {}}, items);
            }
        }
        append(bar, reinterpret_cast<UINT_PTR>(menu), MF_POPUP,
               {text(part.title, settings.language), {}, true}, items);
    }
    MENUINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = MIM_BACKGROUND | MIM_APPLYTOSUBMENUS;
    info.hbrBack = ground_;
    SetMenuInfo(bar, &info);
    items_ = std::move(items);
    bar_ = bar;
    return bar;
}

void MainMenu::popUp(HWND owner, POINT at, bool forClip, const Settings& settings) {
    popUpItems_.clear();
    HMENU menu = forClip ? group(onClip, std::size(onClip), settings, popUpItems_)
                         : group(onPicture, std::size(onPicture), settings, popUpItems_);
    MENUINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = MIM_BACKGROUND;
    info.hbrBack = ground_;
    SetMenuInfo(menu, &info);
    TrackPopupMenu(menu, TPM_RIGHTBUTTON, at.x, at.y, 0, owner, nullptr);
    DestroyMenu(menu);
}

void MainMenu::mark(HMENU menu, const View& view) const {
    const auto check = [menu](Command command, bool on) {
        CheckMenuItem(menu, static_cast<UINT>(command), MF_BYCOMMAND | (on ? MF_CHECKED : MF_UNCHECKED));
    };
    check(Command::playOnce, view.playMode == PlayMode::once);
    check(Command::loop, view.playMode == PlayMode::loop);
    check(Command::pingPong, view.playMode == PlayMode::pingPong);
    check(Command::mute, view.mute);
    check(Command::timeDisplay, view.showTime);
    check(Command::field, view.field != Field::both);
    check(Command::record, view.recording == View::Recording::recording);
    for (size_t i = 0; i < std::size(speeds); ++i) {
        check(static_cast<Command>(static_cast<int>(Command::speed1) + static_cast<int>(i)),
              view.speed == speeds[i]);
    }
}

bool MainMenu::measure(MEASUREITEMSTRUCT& item, HWND owner, Fonts& fonts) const {
    if (item.CtlType != ODT_MENU || item.itemData == 0) {
        return false;
    }
    const Item& known = *reinterpret_cast<const Item*>(item.itemData);
    if (known.words.empty()) {
        item.itemHeight = static_cast<UINT>(fonts.scaled(9));
        return true;
    }
    HDC context = GetDC(owner);
    {
        Canvas canvas(context, fonts);
        const int words = canvas.widthOf(known.words, Writing::normal);
        const int key = canvas.widthOf(known.key, Writing::normal);
        item.itemWidth = static_cast<UINT>(known.title ? words + canvas.scaled(6)
                                                       : words + key + canvas.scaled(key > 0 ? 84 : 44));
        item.itemHeight = static_cast<UINT>(canvas.scaled(26));
    }
    ReleaseDC(owner, context);
    return true;
}

bool MainMenu::draw(const DRAWITEMSTRUCT& item, Fonts& fonts) const {
    if (item.CtlType != ODT_MENU || item.itemData == 0) {
        return false;
    }
    const Item& known = *reinterpret_cast<const Item*>(item.itemData);
    Canvas canvas(item.hDC, fonts);
    const Area area = {item.rcItem.left, item.rcItem.top, item.rcItem.right, item.rcItem.bottom};
    if (known.words.empty()) {
        canvas.fill(area, colour::panel);
        const int middle = (area.top + area.bottom) / 2;
        canvas.fill({area.left + canvas.scaled(10), middle, area.right - canvas.scaled(10), middle + 1},
                    colour::line);
        return true;
    }
    const bool chosen = (item.itemState & (ODS_SELECTED | ODS_HOTLIGHT)) != 0;
    canvas.fill(area, chosen ? colour::hovered : colour::panel);
    if (known.title) {
        canvas.text(area, known.words, Writing::normal, colour::text, Canvas::Align::middle);
        return true;
    }
    Area rest = area;
    Area sign = rest.takeLeft(canvas.scaled(28));
    if ((item.itemState & ODS_CHECKED) != 0) {
        canvas.disc((sign.left + sign.right) / 2, (sign.top + sign.bottom) / 2, canvas.scaled(4),
                    colour::text);
    }
    rest.takeRight(canvas.scaled(14));
    canvas.text(rest, known.key, Writing::normal, colour::faint, Canvas::Align::right);
    canvas.text(rest, known.words, Writing::normal, colour::text);
    return true;
}

void MainMenu::paintRest(HWND owner) const {
    HMENU menu = GetMenu(owner);
    MENUBARINFO bar = {};
    bar.cbSize = sizeof bar;
    RECT last = {};
    RECT window = {};
    if (menu == nullptr || !GetMenuBarInfo(owner, OBJID_MENU, 0, &bar) ||
        !GetMenuItemRect(owner, menu, static_cast<UINT>(GetMenuItemCount(menu) - 1), &last) ||
        !GetWindowRect(owner, &window)) {
        return;
    }
    // One line more above and below, where the system draws light ones.
    RECT rest = {last.right, bar.rcBar.top - 1, bar.rcBar.right, bar.rcBar.bottom + 1};
    OffsetRect(&rest, -window.left, -window.top);
    const RECT above = {bar.rcBar.left - window.left, rest.top, rest.right, rest.top + 1};
    RECT below = {bar.rcBar.left - window.left, last.bottom - window.top, rest.right, rest.bottom};
    HDC context = GetWindowDC(owner);
    FillRect(context, &rest, ground_);
    FillRect(context, &above, ground_);
    FillRect(context, &below, ground_);
    ReleaseDC(owner, context);
}

LRESULT MainMenu::letter(wchar_t letter, HMENU menu) const {
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        MENUITEMINFOW info = {};
        info.cbSize = sizeof info;
        info.fMask = MIIM_DATA;
        GetMenuItemInfoW(menu, static_cast<UINT>(i), TRUE, &info);
        const auto* item = reinterpret_cast<const Item*>(info.dwItemData);
        if (item != nullptr && !item->words.empty() &&
            std::towlower(item->words[0]) == std::towlower(letter)) {
            return MAKELRESULT(i, MNC_EXECUTE);
        }
    }
    return MAKELRESULT(0, MNC_IGNORE);
}

std::optional<Command> MainMenu::commandOf(WORD id) {
    const std::span<const CommandInfo> known = commands();
    const bool there = std::any_of(known.begin(), known.end(), [id](const CommandInfo& info) {
        return static_cast<int>(info.command) == id;
    });
    return there ? std::optional(static_cast<Command>(id)) : std::nullopt;
}

std::optional<size_t> MainMenu::recentOf(WORD id) {
    return id >= firstRecent ? std::optional<size_t>(id - firstRecent) : std::nullopt;
}

void MainMenu::append(HMENU menu, UINT_PTR id, UINT flags, Item item,
                      std::vector<std::unique_ptr<Item>>& items) {
    items.push_back(std::make_unique<Item>(std::move(item)));
    AppendMenuW(menu, MF_OWNERDRAW | flags, id, reinterpret_cast<const wchar_t*>(items.back().get()));
}

void MainMenu::appendLine(HMENU menu, std::vector<std::unique_ptr<Item>>& items) {
    append(menu, 0, MF_SEPARATOR, {}, items);
}

HMENU MainMenu::group(const Command* commands, size_t count, const Settings& settings,
                      std::vector<std::unique_ptr<Item>>& items) {
    HMENU menu = CreatePopupMenu();
    for (size_t i = 0; i < count; ++i) {
        if (commands[i] == line) {
            appendLine(menu, items);
            continue;
        }
        const CommandInfo& info = commandInfo(commands[i]);
        const std::vector<Key> keys = settings.keys.keys(commands[i]);
        append(menu, static_cast<UINT_PTR>(commands[i]), 0,
               {text(info.text, settings.language), keys.empty() ? std::wstring() : keys.front().text()},
               items);
    }
    return menu;
}

} // namespace app
