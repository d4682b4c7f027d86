/// @file
/// The date and time of recording in a DV frame.
#pragma once

#include "marvo/dv/layout.h"

#include <optional>
#include <string>

namespace vdv {

/// The time of recording by the camera's clock. Cameras leave out what they do not know.
struct RecordedAt {
    struct Date {
        unsigned year = 0;
        unsigned month = 0;
        unsigned day = 0;
    };
    struct Time {
        unsigned hour = 0;
        unsigned minute = 0;
        unsigned second = 0;
    };
    std::optional<Date> date;
    std::optional<Time> time;

    /// Reads it from the subcode and the VAUX blocks.
    static RecordedAt read(FrameBytes frame);

    /// "yyyy-mm-dd hh:mm:ss", or what there is of it; empty without both.
    std::string text() const;
};

} // namespace vdv
