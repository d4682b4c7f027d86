/// @file
/// The commands on marks and clips.
#pragma once

#include "app/clips.h"
#include "app/command.h"
#include "app/engine.h"

#include <cstddef>
#include <string>

namespace app {

struct Stage;

/// Marks, the clips made of them, and the playlist. Each command has an effect or tells why not; a change is
/// saved at once.
class ClipCommands {
public:
    /// `stage` outlives this object.
    explicit ClipCommands(Stage& stage) : stage_(stage) {}

    /// Does one of the commands from Command::markIn to Command::exportAll.
    Outcome perform(Command command, const std::wstring& argument);
    /// A clip of the playlist has ended: the next one, or all anew unless they are played once. False, and
    /// no playlist any more, when there is none.
    bool playNext();

private:
    Outcome markIn();
    Outcome markOut();
    Outcome clearMark();
    Outcome makeClip(FrameSpan places);
    Outcome neighbour(int by);
    Outcome playClip(const std::wstring& argument);
    Outcome playClip(const Clip& clip);
    Outcome playAll();
    bool playFromList(std::size_t first);
    Outcome deleteClip();
    Outcome moveClip(int by);
    Outcome renameClip(const std::wstring& name);
    Outcome undo();

    Stage& stage_;
};

} // namespace app
