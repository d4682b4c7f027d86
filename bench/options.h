/// @file
/// What the command line of the measurements asks for.
#pragma once

#include <string>
#include <vector>

/// What the command line asks for; main.cpp says what each option means.
struct Options {
    bool quick = false;
    std::vector<std::string> copy; ///< a stream and the AVI file to copy it into; empty: measure
    std::string ffmpeg;            ///< file of copying times, the engine's and ffmpeg's; empty: none
    std::string ffmpegDecoding;    ///< file of ffmpeg's decoding times; empty: none
    std::string scrub;             ///< file of scrubbing times; empty: none
    std::string only;              ///< the one group to run; empty: all
    std::string out = "out\\bench.json";
};
