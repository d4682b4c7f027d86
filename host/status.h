/// @file
/// What the engine is doing at one moment.
#pragma once

#include "marvo.h"

#include <functional>
#include <optional>
#include <string>

namespace host {

/// A snapshot of the front end's state. Frame numbers are -1 where there is no frame.
struct Status {
    long long captured = 0; ///< frames captured since numbering began
    long long taken = 0;    ///< frames the writer has taken
    long long shown = -1;   ///< frame being shown
    bool initialised = false;
    bool recording = false;
    bool playing = false; ///< a replay is on
    bool paused = false;
    double speed = 1.0;
    unsigned long fps = 0;
    unsigned long frameSize = 0; ///< bytes
    int time_ms = 0;
    int rawTime_ms = 0;
    bool result = true;   ///< of the last command
    record_status record; ///< the recording's frames
    play_info info;       ///< the last progress record
    dvCameraState camera;

    /// The newest captured frame, -1 for none.
    long long newest() const { return captured - 1; }
    /// The newest frame taken for the file, -1 for none.
    long long written() const { return taken - 1; }
    /// Frames captured but not taken yet.
    long long backlog() const { return captured - taken; }
    /// The value that scripts call `name`; nothing for an unknown name.
    std::optional<double> value(const std::string& name) const;
    /// Calls `visit` for every value in a fixed order.
    void forEach(const std::function<void(const char* name, double value)>& visit) const;
    /// One line for people.
    std::string line() const;
};

} // namespace host
