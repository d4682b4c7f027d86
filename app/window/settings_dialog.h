/// @file
/// All settings, to be changed by hand.
#pragma once

#include "app/settings.h"
#include "app/window/dark_dialog.h"

namespace app {

/// The dialog of the settings: one page for how the application works, one for its keys. It works on a copy;
/// what makes no sense is named and keeps it open.
class SettingsDialog : public DarkDialog {
public:
    /// Shows the dialog over `owner`; true when `settings` were changed and are to be used.
    bool run(HWND owner, Settings& settings);

protected:
    void onCommand(int id, int notification) override;
    void drawRow(Canvas& canvas, const Area& area, int item, bool chosen) override;
    bool onKey(const MSG& message) override;

private:
    std::wstring words(Text id) const { return text(id, settings_.language); }
    void addRows();
    void addKeys();
    void showPage(bool keys);
    bool takeOver();
    bool takeNumber(int id, int least, int most, int& value);
    void chooseFolder();
    void setKeys(const std::wstring& keys);
    void complain(const std::wstring& reason);

    Settings settings_;
    std::vector<HWND> general_;
    std::vector<HWND> keys_;
    std::vector<std::wstring> cameras_;
    HWND list_ = nullptr;
    HWND note_ = nullptr;
    bool waitingForKey_ = false;
};

} // namespace app
