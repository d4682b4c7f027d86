/// @file
/// The evening: what the operator does, and what becomes of it.
#pragma once

#include "app/clip_desk.h"
#include "app/command.h"
#include "app/disk.h"
#include "app/engine.h"
#include "app/moment.h"
#include "app/player.h"
#include "app/recorder.h"
#include "app/recordings.h"
#include "app/reel.h"
#include "app/settings.h"
#include "app/view.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// What became of a command.
enum class Outcome {
    done,   ///< it has its effect
    told,   ///< it had none, and the message says why; or a question waits for its answer
    window, ///< it is the window's to do: dialogs, full screen, zoom
};

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
    const Settings& settings() const { return settings_; }
    /// The reel that is shown.
    const Reel& reel() const { return old_ ? *old_ : evening_; }
    /// Where the picture of a place is to be had; nothing when it cannot be shown.
    std::optional<PictureAt> pictureAt(std::uint64_t place) const;
    /// Time of day and time code of a place, for the mouse over the timeline.
    std::wstring describe(std::uint64_t place);

private:
    struct Question {
        Command command;
        std::int64_t until_ms;
    };
    struct Playlist {
        std::vector<std::uint64_t> clips;
        std::size_t at = 0;
    };
    struct Loss {
        std::int64_t since_ms;   ///< on the steady clock
        std::uint64_t nextPlace; ///< of the first frame behind it, unless another file begins before
    };

    template <class Act>
    Outcome acted(Act act);
    Outcome dispatch(Command command, const std::wstring& argument);
    Outcome transport(Command command, const std::wstring& argument);
    Outcome clipCommand(Command command, const std::wstring& argument);
    Outcome done(Text id, const std::vector<std::wstring>& values = {});
    Outcome told(Text id, const std::vector<std::wstring>& values = {});
    Outcome needs(Command command);
    Outcome report(Player::Result result);

    Outcome goLive();
    Outcome hold();
    Outcome holdOrGoOn();
    Outcome step(std::int64_t frames);
    Outcome showNearest(std::uint64_t place);
    Outcome home();
    Outcome goTo(const std::wstring& argument);
    Outcome shuttleKey(int direction);
    Outcome setSpeed(double factor);
    Outcome playAt(double speed);
    Outcome again(double seconds);
    Outcome setMode(PlayMode mode);
    Outcome nextField();
    Outcome toggle(bool& value, Text on, Text off);

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

    Outcome record();
    Outcome stop();
    void stopNow();
    Outcome lookForCamera();
    Outcome quit();
    Outcome ask(Command command, Text id, const std::vector<std::wstring>& values = {});
    Outcome confirm();
    Outcome dismiss();

    bool startEngine();
    void restartForOtherFormat();
    void restoreShown();
    void closeOld();
    void watchCamera();
    void watchRecording();
    void watchDrive();
    void roll();
    void take(Player::Event event);
    void refresh();

    ClipDesk& clips() { return old_ ? oldClips_ : eveningClips_; }
    std::optional<FrameSpan> placesOf(const Clip& clip) const;
    std::wstring placeText(std::uint64_t place) const;
    std::wstring lengthText(FrameSpan places) const;
    std::wstring folder() const { return settings_.folder; }

    Engine& engine_;
    Disk& disk_;
    Recordings& recordings_;
    Settings settings_;
    Reel evening_;
    std::optional<Reel> old_;
    Player player_;
    Recorder recorder_;
    ClipDesk eveningClips_;
    ClipDesk oldClips_;
    EngineState state_;
    View view_;
    Moment now_;
    View::Message message_;
    std::optional<Question> question_;
    std::wstring questionText_;
    std::optional<Playlist> playlist_;
    std::optional<Loss> loss_;
    std::optional<std::uint64_t> freeBytes_;
    std::int64_t driveAsked_ms_ = 0;
    std::int64_t rollingTried_ms_ = 0;
    std::int64_t clipsTried_ms_ = 0;
    std::optional<std::int64_t> restartAt_ms_;
    bool restartRecords_ = false;
    std::wstring ended_; ///< what is to be said of a recording that ended by itself
    Field field_ = Field::both;
    bool showTime_ = true;
    bool busy_ = false;
    bool quit_ = false;
};

} // namespace app
