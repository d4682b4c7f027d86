/// @file
/// The library's version. The build reads it from here, for the DLL's version resource as well.
#pragma once

namespace marvo {

constexpr int versionMajor = 0; ///< changes when hosts have to be changed
constexpr int versionMinor = 1; ///< changes with what is added
constexpr int versionPatch = 0; ///< changes with what is mended

} // namespace marvo
