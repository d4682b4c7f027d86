/// @file
/// The commands.
#pragma once

#include "tools/arguments.h"
#include "tools/failure.h"

#include <string>
#include <vector>

namespace dvrec {

/// A command: how it is called, and what it does.
struct Command {
    const char* name;
    const char* files;   ///< the file arguments, as the help shows them
    size_t leastFiles;   ///< how many they are at least
    size_t mostFiles;    ///< and at most; `anyNumber` for a command that is done for each of them
    const char* summary; ///< one line
    const char* details; ///< the rest of its help
    std::vector<std::string> options;
    /// Does the work and writes its result on the standard output. Throws the `Failure` when it cannot be
    /// done.
    ExitStatus (*run)(const Arguments& arguments);
};

/// All of them, in the order of the help.
const std::vector<Command>& commands();

/// The command's help, or that of the whole program.
std::string helpFor(const Command& command);
std::string helpForAll();

/// What each of them does; its help says it in words.
ExitStatus showInfo(const Arguments& arguments);
ExitStatus verify(const Arguments& arguments);
ExitStatus exportRange(const Arguments& arguments);
ExitStatus convert(const Arguments& arguments);
ExitStatus repair(const Arguments& arguments);
ExitStatus grab(const Arguments& arguments);
ExitStatus clips(const Arguments& arguments);

} // namespace dvrec
