/// @file
/// Names for new recordings.
#pragma once

#include "app/disk.h"

#include <cstdint>
#include <string>

namespace app {

/// The path of a new recording in `folder`: "2026-11-21 19-30-05.avi", with " (2)" and so on in front of the
/// extension while a file of that name, or a clip file for it, is there. `extension` has its dot.
std::wstring recordingName(Disk& disk, const std::wstring& folder, std::int64_t timeOfDay_ms,
                           const std::wstring& extension);

} // namespace app
