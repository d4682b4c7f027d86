/// @file
/// Commands for several recordings.
#pragma once

#include "tools/arguments.h"
#include "tools/failure.h"

namespace dvrec {

/// Does a command for each of the recordings that the arguments name, of which some may be patterns with "*"
/// and "?" for the files of a folder, in the order of their names. A single recording that is named as it is
/// gets what `run` gives. With more, a recording that cannot be read is told, as one more object with --json,
/// and the others go on; the result is the worst of all. Throws the `Failure` for an interruption.
ExitStatus forEachFile(const Arguments& arguments, ExitStatus (*run)(const Arguments& arguments));

} // namespace dvrec
