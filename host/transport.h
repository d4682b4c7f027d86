/// @file
/// The commands that the window and scripts give to the engine.
#pragma once

#include "host/status.h"
#include "marvo.h"

#include <optional>
#include <string>

namespace host {

/// Drives the front end for one window. Used on the window's thread only. Every command says whether it
/// worked; explanation() then says why not, in words for the user.
class Transport {
public:
    /// Shows video in `videoArea`. Progress is posted as `message` to `drain`. Both windows outlive this
    /// object.
    Transport(HWND videoArea, HWND drain, unsigned message);
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;
    /// Ends the engine and its progress messages.
    ~Transport();

    /// Builds the engine on capture device `input` (none: the one set before) and goes live.
    bool init(std::optional<int> input);
    /// Builds a replay of frames `from` to `to` of a recording, without a capture device.
    bool playInit(int from, int to, const std::wstring& file);
    /// Takes the engine apart.
    bool done();
    /// Back to the newest frame.
    bool live();
    /// Records into `file` (empty: the engine's recording file), which replays then read.
    bool record(const std::wstring& file);
    /// Ends the recording.
    bool stop();
    /// Holds or releases the shown frame.
    bool setPaused(bool paused);
    /// Replays a range of frames of `file` (empty: the file being replayed from).
    bool replay(long long from, long long to, const std::wstring& file);
    /// Replays the newest `seconds`.
    bool replayLast(double seconds);
    /// Sets the frames per tick.
    bool setSpeed(double factor);
    /// Goes to a frame.
    bool seek(long long frame);
    /// Sets the in or out point of `element` (1 to 99) to `frame`.
    bool mark(bool in, long long frame, int element);
    /// Replays a marked element.
    bool playElement(int element);
    /// Shows the video in the window, or takes it out.
    bool show();
    bool hide();
    /// Size and position of the video in its area, in pixels.
    bool setSize(int width, int height);
    bool setPosition(int x, int y);
    /// Sets a setting by its name in scripts. False for a wrong value.
    bool set(const std::string& key, const std::string& value);
    /// Gives a marker to the engine.
    bool call(const std::string& text);
    /// Writes a line into the engine's log.
    bool log(const std::string& text);

    /// The engine's state now.
    Status status() const;
    /// The last progress record.
    const play_info& info() const { return info_; }
    /// The frame that a mark without a number means: the shown one.
    long long currentFrame() const;
    /// Why the last command failed; empty when it worked.
    const std::string& explanation() const { return explanation_; }

private:
    bool report(bool worked, const std::string& explanation);
    std::string whyNoVideo() const;

    HWND videoArea_;
    play_info info_;
    int input_ = -1;
    bool initialised_ = false;
    bool recording_ = false;
    bool result_ = true;
    std::string explanation_;
};

} // namespace host
