/// @file
/// What the settings files and the host's setters choose.
#pragma once

#include "marvo/core/str.h"

#include <optional>

namespace frontend {

/// The front end's settings with their defaults. The names and meanings of those that files can set stand in
/// setting_table.h. Used on the host's thread.
struct Settings {
    vcore::str recFile{L"temp.dv"};                  ///< file to record into
    vcore::str playFile{L"temp.dv"};                 ///< file to replay from when none is named
    int input = 0;                                   ///< number of the capture device
    int playDelay_ms = 100;                          ///< between loading and starting a replay
    bool logging = true;                             ///< suppressible log lines are written
    bool control = true;                             ///< markers are interpreted
    bool reconnect = true;                           ///< a camera that was gone is taken up again
    int videoFilter = -1;                            ///< 1: deinterlacing is switched off in the renderer
    bool deinterlace = false;                        ///< the mixing renderer is used and asked for it
    unsigned long maxPlayFrames = 50;                ///< frames a replay may hold in memory
    unsigned long maxRecFrames = 50;                 ///< frames of the record filter's ring
    std::optional<unsigned long> maxFilesize_frames; ///< limit of the recording file; nothing: no limit
};

} // namespace frontend
