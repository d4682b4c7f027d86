/// @file
/// The commands that move what is shown.
#pragma once

#include "app/command.h"
#include "app/player.h"

#include <cstdint>
#include <string>

namespace app {

struct Stage;

/// Live, hold, steps, speeds, and the last seconds again: what the operator's hands do to the picture. Each
/// command has an effect or tells why not.
class Transport {
public:
    /// `stage` outlives this object.
    explicit Transport(Stage& stage) : stage_(stage) {}

    /// Does one of the commands from Command::live to Command::nextPlayMode.
    Outcome perform(Command command, const std::wstring& argument);
    /// Steps by so many frames, however long ago the hold was.
    Outcome step(std::int64_t frames);
    /// Holds the place that is there nearest to `place`.
    Outcome showNearest(std::uint64_t place);
    /// Goes up or down the speeds, backward ones below 0.
    Outcome shuttle(int steps);

private:
    Outcome goLive();
    Outcome hold();
    Outcome holdOrGoOn();
    Outcome home();
    Outcome goTo(const std::wstring& argument);
    Outcome shuttleKey(int direction);
    Outcome setSpeed(double factor);
    Outcome playAt(double speed);
    Outcome again(double seconds);
    Outcome setMode(PlayMode mode);

    Stage& stage_;
};

} // namespace app
