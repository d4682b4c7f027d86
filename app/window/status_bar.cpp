#include "app/window/status_bar.h"

#include "app/disk.h"

namespace app {

ModeSign modeSign(const View& view, Language language) {
    switch (view.mode) {
    case View::Mode::noCamera:
        return {text(Text::windowNoCamera, language), colour::raised};
    case View::Mode::noSignal:
        return {text(Text::windowNoSignal, language), colour::alarm};
    case View::Mode::live:
        return {text(Text::windowLive, language), colour::live};
    case View::Mode::held:
        return {text(Text::windowHeld, language), colour::replay};
    case View::Mode::replay:
        return {text(Text::windowReplay, language), colour::replay};
    case View::Mode::playlist:
        return {text(Text::windowPlaylist, language), colour::replay};
    default:
        return {text(Text::windowOldRecording, language), colour::old};
    }
}

std::wstring recordingWords(const View& view) {
    if (view.recording < View::Recording::recording) {
        return view.recordingText;
    }
    // The name stands below in small letters.
    const std::wstring name = nameOf(view.recordingFile);
    const size_t named = name.empty() ? std::wstring::npos : view.recordingText.find(name);
    const std::wstring words = view.recordingText.substr(0, named);
    return view.recording == View::Recording::recording ? L"\x25CF " + words : words;
}

COLORREF recordingColour(const View& view) {
    switch (view.recording) {
    case View::Recording::failing:
        return colour::alarm;
    case View::Recording::recording:
        return colour::recordingGround;
    default:
        return colour::panel;
    }
}

void StatusBar::update(const View& view, Language language) {
    const ModeSign sign = modeSign(view, language);
    Cells now;
    now.mode = {sign.words, nameOf(view.file), sign.colour};
    const std::wstring time = view.held ? view.timeOfDay : view.timeOfDay.substr(0, 8);
    now.time = {time.empty() ? view.position : time, time.empty() ? std::wstring() : view.position};
    now.speed = {view.speedText, view.speedText.empty() ? std::wstring() : view.playModeText};
    const bool on =
        view.recording == View::Recording::recording || view.recording == View::Recording::failing;
    now.recording = {recordingWords(view), on ? nameOf(view.recordingFile) : std::wstring(),
                     recordingColour(view), on ? colour::text : colour::faint};
    now.drive = {view.driveText,
                 {},
                 view.driveLow ? colour::alarm : colour::panel,
                 view.driveLow ? colour::text : colour::faint};
    if (!(now == cells_)) {
        cells_ = now;
        invalidate();
    }
}

void StatusBar::paint(Canvas& canvas, const Area& area) {
    canvas.fill(area, colour::background);
    Area rest = area;
    const int width = area.width();
    const int gap = canvas.scaled(2);
    paintCell(canvas, rest.takeLeft(width * 22 / 100), cells_.mode);
    rest.takeLeft(gap);
    paintCell(canvas, rest.takeLeft(width * 19 / 100), cells_.time);
    rest.takeLeft(gap);
    paintCell(canvas, rest.takeLeft(width * 11 / 100), cells_.speed);
    rest.takeLeft(gap);
    paintCell(canvas, rest.takeRight(width * 17 / 100), cells_.drive);
    rest.takeRight(gap);
    paintCell(canvas, rest, cells_.recording);
}

void StatusBar::paintCell(Canvas& canvas, const Area& area, const Cell& cell) {
    canvas.fill(area, cell.ground);
    Area rest = area.inset(canvas.scaled(12), canvas.scaled(6));
    if (!cell.small.empty() && cell.small != cell.large) {
        canvas.text(rest.takeBottom(canvas.scaled(22)), cell.small, Writing::normal,
                    cell.ground == colour::panel ? colour::faint : colour::text);
    }
    // Words that do not fit in the largest letters are written smaller rather than cut.
    Writing writing = Writing::huge;
    if (canvas.widthOf(cell.large, writing) > rest.width()) {
        writing = Writing::large;
    }
    if (canvas.widthOf(cell.large, writing) > rest.width()) {
        canvas.paragraph(rest, cell.large, cell.small.empty() ? Writing::large : Writing::strong, cell.ink);
        return;
    }
    canvas.text(rest, cell.large, writing, cell.ink);
}

} // namespace app
