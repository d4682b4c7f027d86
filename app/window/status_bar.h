/// @file
/// What is going on, legible from two metres.
#pragma once

#include "app/settings.h"
#include "app/view.h"
#include "app/window/window.h"

namespace app {

/// What a mode is called in one or two words, and its colour.
struct ModeSign {
    std::wstring words;
    COLORREF colour = colour::raised;
};

/// The sign of the view's mode.
ModeSign modeSign(const View& view, Language language);

/// How the recording is, without its file's name: "REC 0:12:34".
std::wstring recordingWords(const View& view);
/// The colour of a recording that runs or fails.
COLORREF recordingColour(const View& view);

/// Mode, time, speed, recording, and the room on the drive.
class StatusBar : public Panel {
public:
    /// Draws what the view says now.
    void update(const View& view, Language language);

protected:
    void paint(Canvas& canvas, const Area& area) override;

private:
    /// A field of the bar: a large line above a small one.
    struct Cell {
        std::wstring large;
        std::wstring small;
        COLORREF ground = colour::panel;
        COLORREF ink = colour::text;
        bool operator==(const Cell&) const = default;
    };
    struct Cells {
        Cell mode;
        Cell time;
        Cell speed;
        Cell recording;
        Cell drive;
        bool operator==(const Cells&) const = default;
    };

    static void paintCell(Canvas& canvas, const Area& area, const Cell& cell);

    Cells cells_;
};

} // namespace app
