/// @file
/// What a DV frame says of itself. From IEC 61834-2 and -4 (consumer DV) and SMPTE 314M (DV-based 25 and 50
/// Mbit/s), which agree in what is read here: a frame is a row of sequences of 150 DIF blocks of 80 bytes, in
/// each the header block, two blocks of subcode, three of VAUX, and then picture and sound.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace dvrec {

/// Bytes of a frame, from its begin.
using FrameBytes = std::span<const unsigned char>;

/// Bytes of a DIF sequence.
constexpr size_t sequenceBytes = 12000;
/// Bytes at the begin of a frame that hold its first header, subcode and VAUX blocks.
constexpr size_t frameHeadBytes = 480;

/// Hours, minutes, seconds and frames as the camera counted them.
struct TimeCode {
    unsigned hours = 0;
    unsigned minutes = 0;
    unsigned seconds = 0;
    unsigned frames = 0;
    bool dropFrame = false; ///< numbers 0 and 1 are left out in every minute but each tenth

    /// Frames since 00:00:00:00, at 25 or 30 frames per counted second.
    unsigned long count(unsigned rate) const;
    /// "hh:mm:ss:ff", with ";" before the frames in drop-frame counting.
    std::string text() const;
};

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

    /// "yyyy-mm-dd hh:mm:ss", or what there is of it; empty without both.
    std::string text() const;
};

/// The time code in the subcode. Nothing when no sequence in `frame` has one, or only one with impossible
/// digits.
std::optional<TimeCode> readTimeCode(FrameBytes frame);

/// The recording date and time in the subcode and the VAUX blocks.
RecordedAt readRecordedAt(FrameBytes frame);

/// Whether the frame's header block says 625/50 (else 525/60).
bool is625(FrameBytes frame);

/// Whether a frame of `size` bytes can be 625/50; sizes are those of 25, 50 and 100 Mbit/s.
bool is625Size(unsigned long size);
/// Whether `size` is that of a whole DV frame.
bool isFrameSize(unsigned long size);
/// Frames per second of video with frames of `size` bytes.
double frameRate(unsigned long size);

/// Whether a frame begins at the first byte; 4 bytes are looked at.
bool isFrameStart(FrameBytes bytes);

/// What is wrong with a frame that should be whole: its size, its begin, or a block that is not where it
/// belongs. Empty when nothing is.
std::string faultOf(FrameBytes frame);

} // namespace dvrec
