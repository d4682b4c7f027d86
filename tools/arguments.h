/// @file
/// The command line.
#pragma once

#include "tools/position.h"

#include <optional>
#include <string>
#include <vector>

namespace dvrec {

/// What the command line asks for, apart from the command itself.
struct Arguments {
    std::vector<std::wstring>
        files; ///< in the order given: the recording, and the output of commands that have one
    std::optional<Position> from;
    std::optional<Position> to;
    std::optional<Position> frame;
    std::optional<std::wstring> clip; ///< its number or its name
    std::optional<bool> upperField;   ///< the field to keep
    bool square = false;
    unsigned long sector = 0; ///< 0: find out
    bool json = false;
    bool lines = false; ///< JSON in one line
    bool progress = false;
    bool force = false;
    bool noSound = false;
    bool help = false;
};

/// Reads what stands behind the command. `options` are the names of the options that the command has (without
/// the dashes; --help is always there), `least` and `most` the numbers of files that it takes. Options may
/// stand anywhere; behind "--" everything is a file. Long file names come in the form in which the system
/// opens them. Throws the `Failure` for anything else.
Arguments readArguments(const std::vector<std::wstring>& words, const std::vector<std::string>& options,
                        size_t least, size_t most);

/// For a command that takes as many files as there are.
constexpr size_t anyNumber = static_cast<size_t>(-1);

} // namespace dvrec
