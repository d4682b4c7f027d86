/// @file
/// The recording that is always there, before Record is pressed.
#pragma once

#include "app/disk.h"

#include <cstdint>
#include <string>
#include <vector>

namespace app {

/// The rolling files: two by turns, so that at least the set length is always on disk. Each has a new name in
/// the folder "rolling" of the recordings' folder; the older ones are deleted, but never one that has clips.
class RollingFile {
public:
    /// `folder` is that of the recordings.
    RollingFile(Disk& disk, const std::wstring& folder, std::wstring extension);

    /// The name for a new file; makes the folder. Empty, with the reason in `why`, when that fails.
    std::wstring next(std::int64_t timeOfDay_ms, std::wstring& why);
    /// Deletes the files before the newest two and returns those that are gone. What is in use stays and is
    /// tried again the next time.
    std::vector<std::wstring> recycle();
    /// Whether it is time for the next file: the length is reached. While somebody looks at a replay, up to
    /// three times the length is waited, since a new file interrupts the picture.
    static bool due(std::int64_t recorded_ms, std::int64_t length_ms, bool watched);
    /// The folder of the rolling files.
    const std::wstring& folder() const { return folder_; }

private:
    Disk& disk_;
    std::wstring folder_;
    std::wstring extension_;
};

} // namespace app
