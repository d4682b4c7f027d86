/// @file
/// Everything an operator can do, with its number, its name and its keys.
#pragma once

#include "app/text.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace app {

/// What an operator can do. The numbers are for remote hands: they stay for ever, and the number of a command
/// that is taken out is never given to another.
enum class Command : int {
    live = 1,
    hold = 2,
    holdOrGoOn = 3,
    stepForward = 10,
    stepBack = 11,
    stepForward10 = 12,
    stepBack10 = 13,
    home = 14,
    end = 15,
    goTo = 16,
    playForward = 20,
    playBackward = 21,
    speed1 = 31,
    speed2 = 32,
    speed3 = 33,
    speed4 = 34,
    speed5 = 35,
    speed6 = 36,
    speed7 = 37,
    speed8 = 38,
    speed9 = 39,
    reverse = 40,
    speed = 41,
    again5 = 50,
    again10 = 51,
    again20 = 52,
    again = 53,
    playOnce = 60,
    loop = 61,
    pingPong = 62,
    nextPlayMode = 63,
    markIn = 70,
    markOut = 71,
    clearMarks = 72,
    clipOfLast10 = 73,
    nextClip = 80,
    previousClip = 81,
    playClip = 82,
    playAll = 83,
    deleteClip = 84,
    undo = 85,
    clipUp = 86,
    clipDown = 87,
    renameClip = 88,
    exportClip = 89,
    exportAll = 90,
    record = 100,
    stop = 101,
    open = 102,
    lookForCamera = 103,
    fullScreen = 110,
    outputWindow = 111,
    field = 112,
    zoomIn = 113,
    zoomOut = 114,
    zoomWhole = 115,
    mute = 116,
    timeDisplay = 117,
    settings = 118,
    help = 119,
    quit = 120,
    confirm = 121,
    dismiss = 122,
};

/// What became of a command.
enum class Outcome {
    done,   ///< it has its effect
    told,   ///< it had none, and the message says why; or a question waits for its answer
    window, ///< it is the window's to do: dialogs, full screen, zoom
};

/// What is fixed about a command.
struct CommandInfo {
    Command command;              ///< its number is what remote hands may send
    const char* name;             ///< for the protocol and the settings file: "again-10"
    Text text;                    ///< for menus and help
    const wchar_t* keys;          ///< default keys as KeyMap reads them, divided by blanks; empty: none
    bool repeats;                 ///< a held key goes on triggering it: steps only
    std::optional<Text> argument; ///< what may or must stand behind its name; none: nothing
};

/// All commands, ascending by number.
std::span<const CommandInfo> commands();

/// The row of a command.
const CommandInfo& commandInfo(Command command);

/// The command of that name or number; none for anything else.
std::optional<Command> commandOf(std::string_view nameOrNumber);

/// The speeds of speed1 to speed9.
inline constexpr double speeds[] = {0.1, 0.2, 0.25, 0.33, 0.5, 0.75, 1.0, 2.0, 4.0};

} // namespace app
