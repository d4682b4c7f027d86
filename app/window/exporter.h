/// @file
/// Clips as files for other programs.
#pragma once

#include "app/clips.h"
#include "app/jobs.h"

#include <string>

namespace app {

/// What an export makes.
enum class ExportKind {
    dv,      ///< the frames as they came from the camera, one behind the other
    avi,     ///< picture and sound for any player
    pictures ///< a folder with a PNG for each frame
};

/// The kind that a file name means by its extension: ".dv" and ".avi"; any other name is a folder's.
ExportKind exportKindOf(const std::wstring& target);

/// The work of exporting a clip for the queue of jobs. A file grows under another name and gets its own when
/// it is whole; an export that is cancelled or fails leaves nothing. Recording goes first: the work is done
/// at low priority.
JobQueue::Work exportWork(const Clip& clip, const std::wstring& target);

} // namespace app
