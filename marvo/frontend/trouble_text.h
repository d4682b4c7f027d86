/// @file
/// What the log says of the recording's and the picture's troubles.
#pragma once

#include "marvo/replay/play_error.h"
#include "marvo/replay/record_status.h"

#include <string>

namespace frontend {

/// What has begun to go wrong with a recording, or is over; the arguments are those of "recError".
std::string recordingText(record_event event, unsigned long long frame, unsigned long long frames,
                          unsigned long systemError);
/// How the recording `file` went that has ended.
std::string totalsText(const char* file, const record_status& status);
/// Which frames of the recording `file` cannot be read and why; or that none is missing any more.
std::string errorText(const char* file, const play_error& error);
/// That `play_fault`s have begun or are over.
std::string faultText(unsigned long faults, bool begun);
/// Whether an event is one that disturbs the picture.
bool isKnownEvent(long code);
/// An event of the play graph with its first parameter.
std::string eventText(long code, long long parameter);

} // namespace frontend
