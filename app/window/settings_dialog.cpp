#include "app/window/settings_dialog.h"

#include "app/window/camera_list.h"

#include <shlobj.h>

#include <algorithm>
#include <iterator>

namespace app {

namespace {

enum Id {
    camera = 100,
    folder,
    browse,
    format,
    delay,
    ring,
    deinterlace,
    language,
    monitor,
    rolling,
    backToLive,
    mute,
    port,
    token,
    keyList,
    changeKey,
    noKey,
    defaultKey,
    pageGeneral,
    pageKeys,
};

constexpr int width = 640;
constexpr int height = 640;
constexpr int labelWidth = 250;
constexpr int rowHeight = 36;
constexpr int firstRow = 64;

/// The keys that only change what others mean.
bool isModifier(int key) {
    return key == VK_SHIFT || key == VK_CONTROL || key == VK_MENU || key == VK_LWIN || key == VK_RWIN;
}

} // namespace

bool SettingsDialog::run(HWND owner, Settings& settings) {
    settings_ = settings;
    if (!createDialog(owner, words(Text::windowSettings), width, height)) {
        return false;
    }
    addButton({16, 14, 200, 46}, pageGeneral, words(Text::windowPageGeneral));
    addButton({208, 14, 392, 46}, pageKeys, words(Text::windowPageKeys));
    addRows();
    addKeys();
    note_ = addLabel({16, height - 78, width - 16, height - 52}, {});
    addButton({width - 272, height - 46, width - 150, height - 14}, IDOK, words(Text::windowOk));
    addButton({width - 138, height - 46, width - 16, height - 14}, IDCANCEL, words(Text::windowCancel));
    showPage(false);
    if (!runModal()) {
        return false;
    }
    settings = settings_;
    return true;
}

void SettingsDialog::addRows() {
    cameras_ = cameraNames();
    std::vector<std::wstring> names = {words(Text::windowFirstCamera)};
    names.insert(names.end(), cameras_.begin(), cameras_.end());
    auto chosen = std::find(cameras_.begin(), cameras_.end(), settings_.camera);
    if (!settings_.camera.empty() && chosen == cameras_.end()) {
        // One that is not plugged in now stays what it is.
        cameras_.push_back(settings_.camera);
        names.push_back(settings_.camera);
        chosen = cameras_.end() - 1;
    }
    const int cameraChosen = settings_.camera.empty() ? 0 : static_cast<int>(chosen - cameras_.begin()) + 1;
    const std::vector<std::wstring> noYes = {words(Text::windowNo), words(Text::windowYes)};
    std::vector<std::wstring> monitors = {words(Text::windowOtherMonitor)};
    // One that is not plugged in now stays what it is, too.
    for (int i = 1; i <= std::max(GetSystemMetrics(SM_CMONITORS), settings_.outputMonitor); ++i) {
        monitors.push_back(std::to_wstring(i));
    }

    int y = firstRow;
    const auto label = [&](Text id) {
        general_.push_back(addLabel({16, y + 4, 16 + labelWidth, y + 30}, words(id)));
    };
    const auto field = [&](int right) { return Area{24 + labelWidth, y, right, y + 28}; };
    const auto edit = [&](Text id, int control, const std::wstring& content, int right = width - 16) {
        label(id);
        general_.push_back(addEdit(field(right), control, content));
        y += rowHeight;
    };
    const auto choice = [&](Text id, int control, const std::vector<std::wstring>& items, int now) {
        label(id);
        general_.push_back(addChoice(field(width - 16), control, items, now));
        y += rowHeight;
    };
    const int narrow = 24 + labelWidth + 120;
    choice(Text::windowSettingCamera, camera, names, cameraChosen);
    const int folderTop = y;
    edit(Text::windowSettingFolder, folder, settings_.folder, width - 64);
    general_.push_back(addButton({width - 56, folderTop, width - 16, folderTop + 28}, browse, L"\x2026"));
    choice(Text::windowSettingFormat, format, {L".avi", L".raw"}, settings_.raw ? 1 : 0);
    edit(Text::windowSettingRolling, rolling, std::to_wstring(settings_.rolling_min), narrow);
    edit(Text::windowSettingDelay, delay, std::to_wstring(settings_.delay_ms), narrow);
    edit(Text::windowSettingRing, ring, std::to_wstring(settings_.ring_frames), narrow);
    choice(Text::windowSettingDeinterlace, deinterlace, noYes, settings_.deinterlace ? 1 : 0);
    choice(Text::windowSettingBackToLive, backToLive, noYes, settings_.backToLive ? 1 : 0);
    choice(Text::windowSettingMute, mute, noYes, settings_.mute ? 1 : 0);
    choice(Text::windowSettingMonitor, monitor, monitors, settings_.outputMonitor);
    choice(Text::windowSettingLanguage, language, {L"English", L"Deutsch"},
           settings_.language == Language::german ? 1 : 0);
    edit(Text::windowSettingPort, port, std::to_wstring(settings_.port), narrow);
    edit(Text::windowSettingToken, token, settings_.token);
}

void SettingsDialog::addKeys() {
    list_ = addList({16, firstRow, width - 16, height - 130}, keyList);
    for (size_t i = 0; i < commands().size(); ++i) {
        SendMessageW(list_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L""));
    }
    SendMessageW(list_, LB_SETCURSEL, 0, 0);
    keys_ = {
        list_, addButton({16, height - 122, 206, height - 90}, changeKey, words(Text::windowChangeKey)),
        addButton({214, height - 122, 404, height - 90}, noKey, words(Text::windowNoKey)),
        addButton({412, height - 122, width - 16, height - 90}, defaultKey, words(Text::windowDefaultKey))};
}

void SettingsDialog::showPage(bool keys) {
    for (HWND control : general_) {
        ShowWindow(control, keys ? SW_HIDE : SW_SHOW);
    }
    for (HWND control : keys_) {
        ShowWindow(control, keys ? SW_SHOW : SW_HIDE);
    }
    waitingForKey_ = false;
    complain({});
}

void SettingsDialog::onCommand(int id, int notification) {
    switch (id) {
    case IDOK:
        if (takeOver()) {
            finish(true);
        }
        break;
    case browse:
        chooseFolder();
        break;
    case pageGeneral:
    case pageKeys:
        showPage(id == pageKeys);
        break;
    case keyList:
        if (notification == LBN_DBLCLK) {
            onCommand(changeKey, 0);
        }
        break;
    case changeKey:
        waitingForKey_ = true;
        complain(words(Text::windowPressKey));
        SetFocus(list_);
        break;
    case noKey:
        setKeys({});
        break;
    case defaultKey: {
        const LRESULT row = SendMessageW(list_, LB_GETCURSEL, 0, 0);
        if (row >= 0) {
            setKeys(commands()[static_cast<size_t>(row)].keys);
        }
        break;
    }
    default:
        break;
    }
}

void SettingsDialog::drawRow(Canvas& canvas, const Area& area, int item, bool) {
    const CommandInfo& info = commands()[static_cast<size_t>(item)];
    Area rest = area.inset(canvas.scaled(8), 0);
    canvas.text(rest.takeRight(canvas.scaled(200)), settings_.keys.text(info.command), Writing::normal,
                settings_.keys.changed(info.command) ? colour::mark : colour::text);
    canvas.text(rest, words(info.text), Writing::normal, colour::text);
}

bool SettingsDialog::onKey(const MSG& message) {
    const int code = static_cast<int>(message.wParam);
    if (!waitingForKey_ || isModifier(code)) {
        return false;
    }
    waitingForKey_ = false;
    const auto down = [](int key) { return GetKeyState(key) < 0; };
    setKeys(Key{code, down(VK_CONTROL), down(VK_SHIFT), down(VK_MENU)}.text());
    return true;
}

/// Reads the first page; false, with the reason shown, when something makes no sense.
bool SettingsDialog::takeOver() {
    int minutes = 0;
    int milliseconds = 0;
    int frames = 0;
    int number = 0;
    if (!takeNumber(rolling, 1, 240, minutes) || !takeNumber(delay, 0, 60000, milliseconds) ||
        !takeNumber(ring, 25, 2000, frames) || !takeNumber(port, 0, 65535, number)) {
        return false;
    }
    if (number != 0 && number < 1024) {
        complain(text(Text::windowNumberWanted, settings_.language,
                      {words(Text::windowSettingPort), L"1024", L"65535"}));
        SetFocus(GetDlgItem(handle(), port));
        return false;
    }
    if (number != 0 && textOf(token).empty()) {
        complain(words(Text::windowTokenWanted));
        SetFocus(GetDlgItem(handle(), token));
        return false;
    }
    const int chosen = choiceOf(camera);
    settings_.camera = chosen <= 0 ? std::wstring() : cameras_[static_cast<size_t>(chosen - 1)];
    settings_.folder = textOf(folder);
    settings_.raw = choiceOf(format) == 1;
    settings_.rolling_min = minutes;
    settings_.delay_ms = milliseconds;
    settings_.ring_frames = frames;
    settings_.deinterlace = choiceOf(deinterlace) == 1;
    settings_.backToLive = choiceOf(backToLive) == 1;
    settings_.mute = choiceOf(mute) == 1;
    settings_.outputMonitor = choiceOf(monitor);
    settings_.language = choiceOf(language) == 1 ? Language::german : Language::english;
    settings_.port = number;
    settings_.token = textOf(token);
    return true;
}

bool SettingsDialog::takeNumber(int id, int least, int most, int& value) {
    const std::wstring content = textOf(id);
    wchar_t* end = nullptr;
    const long number = std::wcstol(content.c_str(), &end, 10);
    if (content.empty() || *end != 0 || number < least || number > most) {
        const Text name = id == rolling ? Text::windowSettingRolling
                          : id == delay ? Text::windowSettingDelay
                          : id == ring  ? Text::windowSettingRing
                                        : Text::windowSettingPort;
        showPage(false);
        complain(text(Text::windowNumberWanted, settings_.language,
                      {words(name), std::to_wstring(least), std::to_wstring(most)}));
        SetFocus(GetDlgItem(handle(), id));
        return false;
    }
    value = static_cast<int>(number);
    return true;
}

void SettingsDialog::chooseFolder() {
    const std::wstring title = words(Text::windowSettingFolder);
    BROWSEINFOW wanted = {};
    wanted.hwndOwner = handle();
    wanted.lpszTitle = title.c_str();
    wanted.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
    if (PIDLIST_ABSOLUTE chosen = SHBrowseForFolderW(&wanted)) {
        wchar_t path[MAX_PATH] = L"";
        if (SHGetPathFromIDListW(chosen, path)) {
            SetDlgItemTextW(handle(), folder, path);
        }
        CoTaskMemFree(chosen);
    }
}

void SettingsDialog::setKeys(const std::wstring& keys) {
    const LRESULT row = SendMessageW(list_, LB_GETCURSEL, 0, 0);
    if (row < 0) {
        return;
    }
    std::wstring why;
    const Command command = commands()[static_cast<size_t>(row)].command;
    complain(settings_.keys.set(command, keys, settings_.language, why) ? std::wstring() : why);
    InvalidateRect(list_, nullptr, FALSE);
}

void SettingsDialog::complain(const std::wstring& reason) {
    SetWindowTextW(note_, reason.c_str());
}

} // namespace app
