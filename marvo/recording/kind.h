/// @file
/// The kinds of recording.
#pragma once

namespace recording {

/// What a recording file is.
enum class Kind {
    raw,    ///< the engine's own records, one per frame, without a header of the file (see `dvFile`)
    avi,    ///< AVI with a DV video stream
    stream, ///< DV frames one behind the other and nothing else; only read
};

} // namespace recording
