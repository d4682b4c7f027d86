/// @file
/// The command line of the host.
#pragma once

#include <string>
#include <vector>

namespace host {

/// What the command line asks for.
struct Options {
    std::wstring script; ///< script to run; empty: the window is driven by hand
    std::wstring report; ///< file for the report of a script; empty: none
    int width = 720;     ///< the video area's size in pixels
    int height = 576;

    /// How the program is called.
    static const char* usage();
    /// Reads the arguments behind the program's name. False, with the reason in `error`, when they make no
    /// sense.
    bool read(const std::vector<std::wstring>& arguments, std::string& error);
};

} // namespace host
