/// @file
/// The evening: what the operator does, and what becomes of it.
#pragma once

#include "app/capture.h"
#include "app/clip_commands.h"
#include "app/command.h"
#include "app/stage.h"
#include "app/transport.h"
#include "app/view.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// A picture that can be fetched: from the engine's ring by its number, else from its file.
struct PictureAt {
    std::wstring file;
    std::uint64_t frame = 0;
    bool inRing = false;
};

/// The state of the evening: live, held or replay; recording into a file of the operator's or a rolling one;
/// marks and clips; what is wrong. It drives the engine and never waits for it longer than one command does.
///
/// No command loses material: a recording never goes over a file that is there, it is ended by a confirmed
/// question only, and a held picture stays the same however far live has gone on.
///
/// Places are those of the reel that is shown (see Reel). Used on one thread, the engine's. Call `tick` every
/// 40 ms, and before anything else; every other call takes the time of the last tick.
class Session {
public:
    /// All of them outlive this object.
    Session(Engine& engine, Disk& disk, Recordings& recordings, const Settings& settings);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Looks for the camera and begins the rolling file: at the start, and for Command::lookForCamera. Takes
    /// up to five seconds. False without a camera, which is no failure: old recordings can be opened.
    bool start(Moment now);
    /// Follows the engine: ends of ranges, the rolling file, the camera, the recording's health.
    void tick(Moment now);
    /// The engine has shown a frame: its message of each tick. Makes ends exact that `tick` would be late
    /// for.
    void shown(std::uint64_t frame);

    /// Does a command. Some take an argument: see CommandInfo::argument. Every command has an effect, or a
    /// message says why not.
    Outcome perform(Command command, const std::wstring& argument = {});
    /// Holds the picture of a place, while the mouse is dragged over the timeline.
    Outcome scrubTo(std::uint64_t place);
    /// Steps by so many frames, as the wheel does.
    Outcome jog(int frames);
    /// Goes up or down the speeds, backward ones below 0.
    Outcome shuttle(int steps);
    /// Opens an old recording and holds its first frame.
    Outcome open(const std::wstring& file);
    /// Gives a marker of a scoreboard to the engine.
    Outcome call(const std::string& text);
    /// Chooses a clip in the list.
    Outcome chooseClip(std::uint64_t id);

    /// Takes new settings over. Camera, ring and deinterlacing count at the next `start`.
    void apply(const Settings& settings);
    /// Shows a message of the window's.
    void tell(const std::wstring& text, bool refused);
    /// Exports are running: quitting asks.
    void setBusy(bool busy) { busy_ = busy; }
    /// Ends the recording and the engine. After a confirmed quit, or when the system ends.
    void shutDown();

    /// Everything a window draws.
    const View& view() const { return view_; }
    /// The settings in use.
    const Settings& settings() const { return stage_.settings; }
    /// The reel that is shown.
    const Reel& reel() const { return stage_.reel(); }
    /// Where the picture of a place is to be had; nothing when it cannot be shown.
    std::optional<PictureAt> pictureAt(std::uint64_t place) const;
    /// Time of day and time code of a place, for the mouse over the timeline.
    std::wstring describe(std::uint64_t place);

private:
    struct Question {
        Command command;
        std::int64_t until_ms;
    };

    template <class Act>
    Outcome acted(Act act);
    Outcome dispatch(Command command, const std::wstring& argument);
    Outcome nextField();
    Outcome toggle(bool& value, Text on, Text off);
    Outcome stop();
    Outcome quit();
    Outcome ask(Command command, Text id, const std::vector<std::wstring>& values = {});
    Outcome confirm();
    Outcome dismiss();
    void take(Player::Event event);
    void refresh();

    Stage stage_;
    Transport transport_{stage_};
    ClipCommands clipCommands_{stage_};
    Capture capture_{stage_};
    View view_;
    std::optional<Question> question_;
    std::wstring questionText_;
    std::int64_t clipsTried_ms_ = 0;
    Field field_ = Field::both;
    bool showTime_ = true;
    bool busy_ = false;
    bool quit_ = false;
};

} // namespace app
