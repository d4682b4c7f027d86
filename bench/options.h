#pragma once

#include <string>

/// What the command line asks for.
struct Options {
    bool quick = false;                  ///< shorter rounds and fewer of them
    bool help = false;                   ///< only explain
    std::string copyFrom;                ///< a stream to copy into the AVI file `copyTo`, and nothing else
    std::string copyTo;                  ///< see `copyFrom`
    std::string ffmpeg;                  ///< file of copying times, the engine's and ffmpeg's; empty: none
    std::string only;                    ///< the one group to run; empty: all
    std::string out = "out\\bench.json"; ///< where the figures go, as a Windows path

    /// Throws std::invalid_argument that says what is wrong with the arguments.
    static Options parse(int count, const char* const* arguments);

    /// The explanation for `--help`, up to the list of groups.
    static const char* usage();
};
