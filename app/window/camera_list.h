/// @file
/// The cameras of this system.
#pragma once

#include <string>
#include <vector>

namespace app {

/// The names of the capture devices, in the order of their numbers, on a thread with COM.
std::vector<std::wstring> cameraNames();

/// The number of the camera of that name, of the first one for an empty name or one that is not there.
int cameraNumber(const std::wstring& name);

} // namespace app
