#include "app/command.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace app {

namespace {

constexpr std::nullopt_t none = std::nullopt;

constexpr CommandInfo table[] = {
    {Command::live, "live", Text::commandLive, L"Backspace", false, none},
    {Command::hold, "hold", Text::commandHold, L"K", false, none},
    {Command::holdOrGoOn, "hold-or-go-on", Text::commandHoldOrGoOn, L"Space", false, none},
    {Command::stepForward, "step", Text::commandStepForward, L"Right", true, none},
    {Command::stepBack, "step-back", Text::commandStepBack, L"Left", true, none},
    {Command::stepForward10, "step-10", Text::commandStepForward10, L"Shift+Right", true, none},
    {Command::stepBack10, "step-back-10", Text::commandStepBack10, L"Shift+Left", true, none},
    {Command::home, "home", Text::commandHome, L"Home", false, none},
    {Command::end, "end", Text::commandEnd, L"End", false, none},
    {Command::goTo, "go-to", Text::commandGoTo, L"", false, Text::argumentFrame},
    {Command::playForward, "play", Text::commandPlayForward, L"L", false, none},
    {Command::playBackward, "play-backward", Text::commandPlayBackward, L"J", false, none},
    {Command::speed1, "speed-1", Text::commandSpeed1, L"1 Num1", false, none},
    {Command::speed2, "speed-2", Text::commandSpeed2, L"2 Num2", false, none},
    {Command::speed3, "speed-3", Text::commandSpeed3, L"3 Num3", false, none},
    {Command::speed4, "speed-4", Text::commandSpeed4, L"4 Num4", false, none},
    {Command::speed5, "speed-5", Text::commandSpeed5, L"5 Num5", false, none},
    {Command::speed6, "speed-6", Text::commandSpeed6, L"6 Num6", false, none},
    {Command::speed7, "speed-7", Text::commandSpeed7, L"7 Num7", false, none},
    {Command::speed8, "speed-8", Text::commandSpeed8, L"8 Num8", false, none},
    {Command::speed9, "speed-9", Text::commandSpeed9, L"9 Num9", false, none},
    {Command::reverse, "reverse", Text::commandReverse, L"B", false, none},
    {Command::speed, "speed", Text::commandSpeed, L"", false, Text::argumentSpeed},
    {Command::again5, "again-5", Text::commandAgain5, L"F5", false, none},
    {Command::again10, "again-10", Text::commandAgain10, L"F6", false, none},
    {Command::again20, "again-20", Text::commandAgain20, L"F7", false, none},
    {Command::again, "again", Text::commandAgain, L"", false, Text::argumentSeconds},
    {Command::playOnce, "once", Text::commandPlayOnce, L"", false, none},
    {Command::loop, "loop", Text::commandLoop, L"", false, none},
    {Command::pingPong, "ping-pong", Text::commandPingPong, L"", false, none},
    {Command::nextPlayMode, "next-play-mode", Text::commandNextPlayMode, L"P", false, none},
    {Command::markIn, "mark-in", Text::commandMarkIn, L"I", false, none},
    {Command::markOut, "mark-out", Text::commandMarkOut, L"O", false, none},
    {Command::clearMarks, "clear-marks", Text::commandClearMarks, L"X", false, none},
    {Command::clipOfLast10, "clip-last-10", Text::commandClipOfLast10, L"C", false, none},
    {Command::nextClip, "next-clip", Text::commandNextClip, L"PageDown", false, none},
    {Command::previousClip, "previous-clip", Text::commandPreviousClip, L"PageUp", false, none},
    {Command::playClip, "play-clip", Text::commandPlayClip, L"Enter", false, Text::argumentClip},
    {Command::playAll, "play-all", Text::commandPlayAll, L"Shift+Enter", false, none},
    {Command::deleteClip, "delete-clip", Text::commandDeleteClip, L"Delete", false, none},
    {Command::undo, "undo", Text::commandUndo, L"Ctrl+Z", false, none},
    {Command::clipUp, "clip-up", Text::commandClipUp, L"Ctrl+Up", false, none},
    {Command::clipDown, "clip-down", Text::commandClipDown, L"Ctrl+Down", false, none},
    {Command::renameClip, "rename-clip", Text::commandRenameClip, L"F2", false, Text::argumentName},
    {Command::exportClip, "export-clip", Text::commandExportClip, L"Ctrl+E", false, Text::argumentFile},
    {Command::exportAll, "export-all", Text::commandExportAll, L"Ctrl+Shift+E", false, Text::argumentFolder},
    {Command::record, "record", Text::commandRecord, L"R", false, none},
    {Command::stop, "stop", Text::commandStop, L"S", false, none},
    {Command::open, "open", Text::commandOpen, L"Ctrl+O", false, Text::argumentFile},
    {Command::lookForCamera, "look-for-camera", Text::commandLookForCamera, L"F9", false, none},
    {Command::fullScreen, "full-screen", Text::commandFullScreen, L"F11", false, none},
    {Command::outputWindow, "output-window", Text::commandOutputWindow, L"F12", false, none},
    {Command::field, "field", Text::commandField, L"F", false, none},
    {Command::zoomIn, "zoom-in", Text::commandZoomIn, L"Plus NumPlus", false, none},
    {Command::zoomOut, "zoom-out", Text::commandZoomOut, L"Minus NumMinus", false, none},
    {Command::zoomWhole, "zoom-whole", Text::commandZoomWhole, L"0 Num0", false, none},
    {Command::mute, "mute", Text::commandMute, L"M", false, none},
    {Command::timeDisplay, "time-display", Text::commandTimeDisplay, L"T", false, none},
    {Command::settings, "settings", Text::commandSettings, L"F10", false, none},
    {Command::help, "help", Text::commandHelp, L"F1", false, none},
    {Command::quit, "quit", Text::commandQuit, L"Ctrl+Q", false, none},
    {Command::confirm, "confirm", Text::commandConfirm, L"Y", false, none},
    {Command::dismiss, "dismiss", Text::commandDismiss, L"Escape", false, none},
};

} // namespace

std::span<const CommandInfo> commands() {
    return table;
}

const CommandInfo& commandInfo(Command command) {
    return *std::lower_bound(std::begin(table), std::end(table), command,
                             [](const CommandInfo& row, Command wanted) { return row.command < wanted; });
}

std::optional<Command> commandOf(std::string_view nameOrNumber) {
    int number = 0;
    const std::from_chars_result read =
        std::from_chars(nameOrNumber.data(), nameOrNumber.data() + nameOrNumber.size(), number);
    const bool isNumber = read.ec == std::errc() && read.ptr == nameOrNumber.data() + nameOrNumber.size();
    for (const CommandInfo& row : table) {
        if (isNumber ? static_cast<int>(row.command) == number : row.name == nameOrNumber) {
            return row.command;
        }
    }
    return std::nullopt;
}

} // namespace app
