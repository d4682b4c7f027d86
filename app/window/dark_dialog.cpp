#include "app/window/dark_dialog.h"

#include <commctrl.h>

namespace app {

DarkDialog::~DarkDialog() {
    destroy();
    DeleteObject(ground_);
    DeleteObject(field_);
}

bool DarkDialog::createDialog(HWND owner, const std::wstring& title, int width, int height) {
    owner_ = owner;
    fonts_.setDpi(dpiOf(owner));
    ground_ = CreateSolidBrush(colour::panel);
    field_ = CreateSolidBrush(colour::background);
    RECT size = scaledArea({0, 0, width, height}).rect();
    const DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;
    AdjustWindowRect(&size, style, FALSE);
    RECT around = {};
    GetWindowRect(owner, &around);
    const int across = size.right - size.left;
    const int up = size.bottom - size.top;
    const int left = (around.left + around.right - across) / 2;
    const int top = (around.top + around.bottom - up) / 2;
    return create(title.c_str(), style, WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT, owner,
                  {left, top, left + across, top + up});
}

bool DarkDialog::runModal() {
    running_ = true;
    EnableWindow(owner_, FALSE);
    ShowWindow(handle(), SW_SHOW);
    SetFocus(GetNextDlgTabItem(handle(), nullptr, FALSE));
    MSG message;
    while (running_) {
        if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
            // The program ends: the loop outside must hear of it, too.
            PostQuitMessage(0);
            answer_ = false;
            break;
        }
        const bool key = message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN;
        const bool own = message.hwnd == handle() || IsChild(handle(), message.hwnd);
        if (!(key && own && onKey(message)) && !IsDialogMessageW(handle(), &message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    // First the owner, or the focus would leave the program.
    EnableWindow(owner_, TRUE);
    destroy();
    SetFocus(owner_);
    return answer_;
}

void DarkDialog::finish(bool answer) {
    answer_ = answer;
    running_ = false;
}

HWND DarkDialog::addLabel(const Area& area, const std::wstring& words) {
    return add(L"STATIC", words, SS_LEFT | SS_NOPREFIX, area, 0);
}

HWND DarkDialog::addEdit(const Area& area, int id, const std::wstring& content) {
    return add(L"EDIT", content, WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL, area, id);
}

HWND DarkDialog::addButton(const Area& area, int id, const std::wstring& words) {
    return add(L"BUTTON", words, WS_TABSTOP | BS_OWNERDRAW, area, id);
}

HWND DarkDialog::addChoice(const Area& area, int id, const std::vector<std::wstring>& items, int chosen) {
    Area open = area;
    open.bottom += 200;
    HWND choice =
        add(L"COMBOBOX", {}, WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST | CBS_OWNERDRAWFIXED | CBS_HASSTRINGS,
            open, id);
    SendMessageW(choice, CB_SETITEMHEIGHT, static_cast<WPARAM>(-1), fonts_.scaled(22));
    SendMessageW(choice, CB_SETITEMHEIGHT, 0, fonts_.scaled(24));
    for (const std::wstring& item : items) {
        SendMessageW(choice, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item.c_str()));
    }
    SendMessageW(choice, CB_SETCURSEL, static_cast<WPARAM>(chosen), 0);
    SetWindowSubclass(choice, &DarkDialog::choiceProc, 0, reinterpret_cast<DWORD_PTR>(this));
    return choice;
}

HWND DarkDialog::addList(const Area& area, int id) {
    HWND list =
        add(L"LISTBOX", {}, WS_TABSTOP | WS_VSCROLL | WS_BORDER | LBS_OWNERDRAWFIXED | LBS_NOTIFY, area, id);
    SendMessageW(list, LB_SETITEMHEIGHT, 0, fonts_.scaled(24));
    return list;
}

/// The system draws frame and arrow light: they are drawn over.
LRESULT CALLBACK DarkDialog::choiceProc(HWND choice, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                        DWORD_PTR self) {
    const LRESULT result = DefSubclassProc(choice, message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(choice, &DarkDialog::choiceProc, id);
    } else if (message == WM_PAINT || message == WM_NCPAINT || message == WM_SETFOCUS ||
               message == WM_KILLFOCUS || message == WM_LBUTTONDOWN || message == WM_LBUTTONUP) {
        reinterpret_cast<DarkDialog*>(self)->drawChoice(choice);
    }
    return result;
}

void DarkDialog::drawChoice(HWND choice) {
    COMBOBOXINFO parts = {};
    parts.cbSize = sizeof parts;
    RECT outside = {};
    if (!GetComboBoxInfo(choice, &parts) || !GetClientRect(choice, &outside)) {
        return;
    }
    HDC context = GetDC(choice);
    {
        Canvas canvas(context, fonts_);
        const Area whole = {outside.left, outside.top, outside.right, outside.bottom};
        const RECT& words = parts.rcItem;
        const Area button = {words.right, whole.top + 1, whole.right - 1, whole.bottom - 1};
        canvas.fill({whole.left, whole.top, words.left, whole.bottom}, colour::background);
        canvas.fill({whole.left, whole.top, whole.right, words.top}, colour::background);
        canvas.fill({whole.left, words.bottom, whole.right, whole.bottom}, colour::background);
        canvas.frame({words.left, words.top, words.right, words.bottom}, 1, colour::background);
        canvas.fill(button, colour::raised);
        canvas.frame(whole, 1, GetFocus() == choice ? colour::replay : colour::line);
        const int x = (button.left + button.right) / 2;
        const int y = (button.top + button.bottom) / 2;
        const int half = canvas.scaled(4);
        canvas.polygon({{x - half, y - half / 2}, {x + half, y - half / 2}, {x, y + half / 2}}, colour::text);
    }
    ReleaseDC(choice, context);
}

void DarkDialog::drawRow(Canvas&, const Area&, int, bool) {}

LRESULT DarkDialog::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_ERASEBKGND: {
        const RECT all = client().rect();
        FillRect(reinterpret_cast<HDC>(wParam), &all, ground_);
        return TRUE;
    }
    case WM_CTLCOLORSTATIC:
        SetTextColor(reinterpret_cast<HDC>(wParam), colour::text);
        SetBkColor(reinterpret_cast<HDC>(wParam), colour::panel);
        return reinterpret_cast<LRESULT>(ground_);
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
        SetTextColor(reinterpret_cast<HDC>(wParam), colour::text);
        SetBkColor(reinterpret_cast<HDC>(wParam), colour::background);
        return reinterpret_cast<LRESULT>(field_);
    case WM_DRAWITEM:
        drawControl(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
    case WM_COMMAND:
        if (LOWORD(wParam) == IDCANCEL) {
            finish(false);
        } else {
            onCommand(LOWORD(wParam), HIWORD(wParam));
        }
        return 0;
    case WM_CLOSE:
        finish(false);
        return 0;
    }
    return Window::handleMessage(message, wParam, lParam);
}

std::wstring DarkDialog::textOf(int id) const {
    HWND control = GetDlgItem(handle(), id);
    std::wstring words(static_cast<size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
    words.resize(static_cast<size_t>(GetWindowTextW(control, words.data(), static_cast<int>(words.size()))));
    return words;
}

int DarkDialog::choiceOf(int id) const {
    return static_cast<int>(SendDlgItemMessageW(handle(), id, CB_GETCURSEL, 0, 0));
}

Area DarkDialog::scaledArea(const Area& area) const {
    return {fonts_.scaled(area.left), fonts_.scaled(area.top), fonts_.scaled(area.right),
            fonts_.scaled(area.bottom)};
}

HWND DarkDialog::add(const wchar_t* kind, const std::wstring& words, DWORD style, const Area& area, int id) {
    const Area place = scaledArea(area);
    HWND control = CreateWindowExW(0, kind, words.c_str(), WS_CHILD | WS_VISIBLE | style, place.left,
                                   place.top, place.width(), place.height(), handle(),
                                   reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                                   GetModuleHandleW(nullptr), nullptr);
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(fonts_.get(Writing::normal)), FALSE);
    return control;
}

void DarkDialog::drawControl(const DRAWITEMSTRUCT& item) {
    Canvas canvas(item.hDC, fonts_);
    const Area area = {item.rcItem.left, item.rcItem.top, item.rcItem.right, item.rcItem.bottom};
    if (item.CtlType == ODT_BUTTON) {
        const bool down = (item.itemState & ODS_SELECTED) != 0;
        canvas.fill(area, (item.itemState & ODS_FOCUS) != 0 ? colour::replay : colour::line);
        canvas.fill(area.inset(canvas.scaled(2), canvas.scaled(2)), down ? colour::pressed : colour::raised);
        wchar_t words[128] = L"";
        GetWindowTextW(item.hwndItem, words, 128);
        canvas.text(area, words, Writing::normal, colour::text, Canvas::Align::middle);
        return;
    }
    const bool chosen = (item.itemState & ODS_SELECTED) != 0;
    canvas.fill(area, chosen ? colour::hovered : colour::background);
    if (item.itemID == static_cast<UINT>(-1)) {
        return;
    }
    if (item.CtlType == ODT_COMBOBOX) {
        std::wstring words(
            static_cast<size_t>(SendMessageW(item.hwndItem, CB_GETLBTEXTLEN, item.itemID, 0)) + 1, L'\0');
        SendMessageW(item.hwndItem, CB_GETLBTEXT, item.itemID, reinterpret_cast<LPARAM>(words.data()));
        words.pop_back();
        canvas.text(area.inset(canvas.scaled(6), 0), words, Writing::normal, colour::text);
    } else {
        drawRow(canvas, area, static_cast<int>(item.itemID), chosen);
    }
}

} // namespace app
