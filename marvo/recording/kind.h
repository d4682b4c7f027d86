/// @file
/// The kinds of recording.
#pragma once

namespace recording {

/// What a recording file is. The rest of what there is to know of each is in the table of kinds.
enum class Kind {
    raw,    ///< the engine's own records, one per frame, without a header of the file (see `dvFile`)
    avi,    ///< AVI with a DV video stream
    stream, ///< DV frames one behind the other and nothing else
};

} // namespace recording
