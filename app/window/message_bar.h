/// @file
/// The line for messages, alarms and questions.
#pragma once

#include "app/settings.h"
#include "app/view.h"
#include "app/window/window.h"

#include <functional>

namespace app {

/// Shows the question that waits, else the weightiest alarm, beside the message, which stays until the next
/// one or a key.
class MessageBar : public Panel {
public:
    /// Draws what the view says now.
    void update(const View& view, Language language);
    /// Whether there is anything to read.
    bool empty() const { return shown_ == Shown(); }

    /// One of a question's buttons was pressed.
    std::function<void(bool yes)> onAnswer;

protected:
    void paint(Canvas& canvas, const Area& area) override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    struct Shown {
        std::wstring question;
        std::wstring alarm;
        std::wstring message;
        bool refused = false;
        bool operator==(const Shown&) const = default;
    };

    Shown shown_;
    std::wstring yes_;
    std::wstring no_;
    Area yesArea_;
    Area noArea_;
};

} // namespace app
