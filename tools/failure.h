/// @file
/// Why a command ends early.
#pragma once

#include <string>

namespace dvrec {

/// What the program ends with.
enum class ExitStatus : int {
    fine = 0,
    faultsFound = 1,
    usage = 2,
    cannotRead = 3,
    cannotWrite = 4,
    noPicture = 5,
    interrupted = 6,
};

/// Thrown when a command cannot go on: the exit status, and one sentence for the user with the file's name,
/// the reason and, where there is one, the way out.
struct Failure {
    ExitStatus status;
    std::string sentence;
};

/// The system's words for an error code, without the full stop; the number when it has none.
std::string systemMessage(unsigned long error);

} // namespace dvrec
