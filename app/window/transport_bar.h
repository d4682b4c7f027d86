/// @file
/// The buttons for what is done most.
#pragma once

#include "app/command.h"
#include "app/key_map.h"
#include "app/view.h"
#include "app/window/window.h"

#include <functional>
#include <string>
#include <vector>

namespace app {

/// Buttons with a sign and their key. What is on at the moment is lit; buttons that have no room in a narrow
/// window are left out, the least needed first.
class TransportBar : public Panel {
public:
    /// As `createPanel`.
    bool createBar(HWND parent, Fonts& fonts);
    /// Names and keys as they are now.
    void setKeys(const KeyMap& keys, Language language);
    /// Lights what is on.
    void update(const View& view);

    /// A button was pressed.
    std::function<void(Command)> onCommand;

protected:
    void paint(Canvas& canvas, const Area& area) override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    struct Button {
        Area area;
        std::wstring key;
        std::wstring name;
        COLORREF lit = 0; ///< the colour when it is on
        bool on = false;
    };

    void layOut();
    int buttonAt(LPARAM lParam) const;
    void paintSign(Canvas& canvas, const Area& area, size_t index, COLORREF ink) const;
    void setHovered(int button);

    std::vector<Button> buttons_;
    HWND hint_ = nullptr;
    int hovered_ = -1;
    int pressed_ = -1;
};

} // namespace app
