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

    /// What the program shall do.
    enum class Outcome {
        run,  ///< what the options say
        help, ///< show the help and end
        wrong ///< refuse the command line
    };

    /// Reads the arguments behind the program's name. `text` is the help, or the reason for refusing them.
    Outcome read(const std::vector<std::wstring>& arguments, std::string& text);
};

} // namespace host
