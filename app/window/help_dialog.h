/// @file
/// What every key does.
#pragma once

#include "app/settings.h"
#include "app/window/dark_dialog.h"

namespace app {

/// The list of all commands with their keys.
class HelpDialog : public DarkDialog {
public:
    /// Shows it over `owner` until it is closed.
    void run(HWND owner, const Settings& settings);

protected:
    void onCommand(int id, int notification) override;
    void drawRow(Canvas& canvas, const Area& area, int item, bool chosen) override;

private:
    const Settings* settings_ = nullptr;
};

} // namespace app
