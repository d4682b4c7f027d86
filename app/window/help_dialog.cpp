#include "app/window/help_dialog.h"

namespace app {

namespace {

constexpr int width = 620;
constexpr int height = 700;
constexpr int listId = 100;

} // namespace

void HelpDialog::run(HWND owner, const Settings& settings) {
    settings_ = &settings;
    if (!createDialog(owner, text(Text::windowHelpTitle, settings.language), width, height)) {
        return;
    }
    HWND list = addList({12, 12, width - 12, height - 58}, listId);
    for (size_t i = 0; i < commands().size(); ++i) {
        SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L""));
    }
    const std::wstring version = L"Marvo replay " + std::to_wstring(marvo::versionMajor) + L"." +
                                 std::to_wstring(marvo::versionMinor) + L"." +
                                 std::to_wstring(marvo::versionPatch);
    addLabel({16, height - 40, 300, height - 16}, version);
    addButton({width - 142, height - 46, width - 12, height - 12}, IDOK,
              text(Text::windowClose, settings.language));
    runModal();
}

void HelpDialog::onCommand(int id, int) {
    if (id == IDOK) {
        finish(true);
    }
}

void HelpDialog::drawRow(Canvas& canvas, const Area& area, int item, bool) {
    const CommandInfo& info = commands()[static_cast<size_t>(item)];
    Area rest = area.inset(canvas.scaled(8), 0);
    canvas.text(rest.takeRight(canvas.scaled(190)), settings_->keys.text(info.command), Writing::strong,
                colour::text);
    canvas.text(rest, text(info.text, settings_->language), Writing::normal, colour::text);
}

} // namespace app
