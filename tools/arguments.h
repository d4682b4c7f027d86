/// @file
/// The command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace dvrec {

/// What the command line asks for, apart from the command itself.
struct Arguments {
    std::vector<std::wstring>
        files; ///< in the order given: the recording, and the output of commands that have one
    std::optional<unsigned long> from;
    std::optional<unsigned long> to;
    std::optional<unsigned long> frame;
    unsigned long sector = 0; ///< 0: find out
    bool json = false;
    bool progress = false;
    bool force = false;
    bool noSound = false;
    bool help = false;
};

/// Reads what stands behind the command. `options` are the names of the options that the command has (without
/// the dashes; --help is always there), `files` the number of files that it takes. Options may stand
/// anywhere; behind "--" everything is a file. Throws the `Failure` for anything else.
Arguments readArguments(const std::vector<std::wstring>& words, const std::vector<std::string>& options,
                        size_t files);

} // namespace dvrec
