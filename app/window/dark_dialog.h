/// @file
/// Dialogs in the application's colours.
#pragma once

#include "app/window/window.h"

#include <string>
#include <vector>

namespace app {

/// A modal window made of plain controls. Derived classes put controls into it and are told of what happens.
class DarkDialog : public Window {
public:
    ~DarkDialog() override;

protected:
    DarkDialog() = default;
    /// Makes the window in the middle of its owner; sizes are at 96 dots per inch.
    bool createDialog(HWND owner, const std::wstring& title, int width, int height);
    /// Dispatches messages until `finish`, with the owner disabled. The answer given there.
    bool runModal();
    /// Ends `runModal`.
    void finish(bool answer);

    /// Makes controls; places are at 96 dots per inch.
    HWND addLabel(const Area& area, const std::wstring& words);
    HWND addEdit(const Area& area, int id, const std::wstring& content);
    HWND addButton(const Area& area, int id, const std::wstring& words);
    HWND addChoice(const Area& area, int id, const std::vector<std::wstring>& items, int chosen);
    HWND addList(const Area& area, int id);

    /// A control did something.
    virtual void onCommand(int id, int notification) = 0;
    /// A row of a list is to be drawn; `item` is its number.
    virtual void drawRow(Canvas& canvas, const Area& area, int item, bool chosen);
    /// A key before the dialog takes it; true: it is done with.
    virtual bool onKey(const MSG&) { return false; }
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

    std::wstring textOf(int id) const;
    int choiceOf(int id) const;
    Fonts& fonts() { return fonts_; }
    Area scaledArea(const Area& area) const;

private:
    HWND add(const wchar_t* kind, const std::wstring& words, DWORD style, const Area& area, int id);
    void drawControl(const DRAWITEMSTRUCT& item);
    void drawChoice(HWND choice);
    static LRESULT CALLBACK choiceProc(HWND choice, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                       DWORD_PTR self);

    Fonts fonts_{96};
    HBRUSH ground_ = nullptr;
    HBRUSH field_ = nullptr;
    HWND owner_ = nullptr;
    bool running_ = false;
    bool answer_ = false;
};

} // namespace app
