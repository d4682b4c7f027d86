/// @file
/// The two systems of DV video: what a frame of each is made of.
#pragma once

#include <initializer_list>
#include <iterator>

namespace vdv {

/// What there is to know of a system. From IEC 61834-2 (25 Mbit/s) and SMPTE 314M (25 and 50 Mbit/s).
struct System {
    const char* name;      ///< lines and fields
    const char* broadcast; ///< the name of the television system that it stands for
    unsigned long
        frameBytes;       ///< bytes of a frame of 25 Mbit/s, which is `sequences` of 150 blocks of 80 bytes
    unsigned sequences;   ///< DIF sequences of each channel of 25 Mbit/s
    unsigned width;       ///< pixels
    unsigned lines;       ///< lines of the coded picture
    unsigned countedRate; ///< frames per second as time codes count them
    double rate;          ///< frames per second
    long timePerFrame_100ns; ///< as media types and recordings have it
};

/// 625 lines, 50 fields: PAL.
inline constexpr System system625{"625/50", "PAL", 144000, 12, 720, 576, 25, 25.0, 400000};
/// 525 lines, 60 fields: NTSC.
inline constexpr System system525{"525/60", "NTSC", 120000, 10, 720, 480, 30, 30000.0 / 1001, 333333};

/// Bytes of one 25 Mbit/s frame of 625/50.
constexpr unsigned long palFrameBytes = system625.frameBytes;
/// Bytes of one 25 Mbit/s frame of 525/60.
constexpr unsigned long ntscFrameBytes = system525.frameBytes;

/// Channels of 25 Mbit/s in a frame of 25, 50 and 100 Mbit/s.
inline constexpr unsigned channelCounts[] = {1, 2, 4};

/// The system whose whole frames have `size` bytes; null when that is no size of a DV frame.
constexpr const System* systemOf(unsigned long size) {
    for (const System* system : {&system625, &system525}) {
        for (const unsigned channels : channelCounts) {
            if (size == system->frameBytes * channels) {
                return system;
            }
        }
    }
    return nullptr;
}

/// Whether `size` is that of a whole DV frame.
constexpr bool isFrameSize(unsigned long size) {
    return systemOf(size) != nullptr;
}

/// The largest frame there is: that of 100 Mbit/s and 625/50 (or 1080/50 and 720/50, which come in the same
/// four channels of 144000 bytes). Larger ones are refused everywhere: such a size in a file or a media type
/// is damage.
constexpr unsigned long maxFrameBytes = system625.frameBytes * channelCounts[std::size(channelCounts) - 1];
static_assert(maxFrameBytes == 576000 && isFrameSize(maxFrameBytes));

} // namespace vdv
