/// @file
/// The command line of marvo-replay.
#pragma once

#include <string>
#include <vector>

namespace app {

/// What the command line asks for.
struct StartOptions {
    bool help = false;
    bool version = false;
    bool fullScreen = false;
    std::vector<std::wstring> files; ///< recordings to open
    std::wstring unknown;            ///< the first option that does not exist

    /// Reads the words behind the program's name.
    static StartOptions read(const std::vector<std::wstring>& words);
};

} // namespace app
