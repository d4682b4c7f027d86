/// @file
/// What a camera notes in its frames beside picture and sound, for hosts.
#pragma once

#include "marvo/core/platform.h"

#include <cstddef>

/// The camera's time code.
struct dvTimeCode {
    bool known = false;     ///< whether the frame has one; everything else is 0 otherwise
    unsigned hours = 0;     ///< 0 to 23
    unsigned minutes = 0;   ///< 0 to 59
    unsigned seconds = 0;   ///< 0 to 59
    unsigned frames = 0;    ///< 0 to 24, or to 29 in 525/60
    bool dropFrame = false; ///< numbers 0 and 1 are left out in every minute but each tenth
};

/// When a frame was recorded, by the camera's clock. Cameras leave out what they do not know.
struct dvClockTime {
    bool dateKnown = false; ///< whether there is a date; `year` to `day` are 0 otherwise
    unsigned year = 0;      ///< four digits
    unsigned month = 0;     ///< 1 to 12
    unsigned day = 0;       ///< 1 to 31
    bool timeKnown = false; ///< whether there is a time of day; `hour` to `second` are 0 otherwise
    unsigned hour = 0;      ///< 0 to 23
    unsigned minute = 0;    ///< 0 to 59
    unsigned second = 0;    ///< 0 to 59
};

/// The sides of the picture as it is to be shown, whatever its pixels: 4:3 or 16:9.
struct dvAspect {
    bool known = false;  ///< whether the frame says so; otherwise 4:3 is a guess
    unsigned width = 4;  ///< 4 or 16
    unsigned height = 3; ///< 3 or 9
};

/// How the two fields of a frame belong together.
struct dvFields {
    bool known = false;           ///< whether the frame says so; otherwise the rest is what cameras mostly do
    bool interlaced = true;       ///< the fields were taken at different times
    bool upperFieldFirst = false; ///< the field with the topmost line is the earlier one
};

/// Reads what the camera noted in a DV frame: in its subcode and VAUX packs (IEC 61834-4).
///
/// Each takes the frame from its start and needs not have all of it: the first 480 bytes hold the notes once,
/// and each further 12000 bytes repeat them. Null is a frame of no bytes, in which nothing is known; so is
/// what is no DV frame. No state: any thread, at any time.
class MARVO_API dvFrameNotes {
public:
    /// Bytes at the start of a frame that hold every note once.
    static constexpr std::size_t headBytes = 480;

    /// The time code.
    static dvTimeCode timeCode(const void* frame, std::size_t bytes);
    /// Date and time of day of recording.
    static dvClockTime recordedAt(const void* frame, std::size_t bytes);
    /// The sides of the picture.
    static dvAspect aspect(const void* frame, std::size_t bytes);
    /// The order of the fields.
    static dvFields fields(const void* frame, std::size_t bytes);
};
