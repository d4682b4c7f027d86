/// @file
/// Places in a recording, as the command line names them.
#pragma once

#include "marvo/dv/time_code.h"
#include "marvo/recording/reader.h"

#include <optional>
#include <string>

namespace dvrec {

struct Arguments;

/// What a word of the command line means as a place.
struct Position {
    /// By what it names it.
    enum class Kind {
        frame,    ///< "57": the frame's number
        duration, ///< "0:12.5", "1:02:03", "12.5": time from the start of the recording
        timeCode, ///< "01:02:03:20", or with ";" before the frames: the camera's time code
        clock,    ///< "@21:58:59", "@2024-02-29 21:58:59": date and time of day by the camera's clock
    };

    Kind kind = Kind::frame;
    unsigned long long frame = 0;
    double seconds = 0;      ///< from the start of the recording, or of the day
    std::optional<long> day; ///< of the clock, in days since 1970
    vdv::TimeCode timeCode;
    std::string text; ///< as it was given

    /// Reads it. Nothing when it is none of these.
    static std::optional<Position> read(const std::wstring& word);
};

/// First and last frame of a range, both included.
struct Range {
    unsigned long long first = 0;
    unsigned long long last = 0;
};

/// The range that --from and --to name, or all of the recording. A time code or a time of day that the
/// recording passes over means the first frame behind it, or the last one in front. Throws the `Failure` when
/// there is no such place; whether there are such frames is not looked at.
Range rangeOf(const recording::Reader& from, const Arguments& arguments);

/// The frame that --frame names, which must be given. Throws the `Failure` when no frame is just there.
unsigned long long frameOf(const recording::Reader& from, const Arguments& arguments);

} // namespace dvrec
