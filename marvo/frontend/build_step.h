/// @file
/// The steps in which the front end is built, as its failures name them.
#pragma once

namespace frontend {

/// A step that failed. The numbers stand in the log ("no video - init - 7"), so they never change; 5 and 6
/// are not used.
enum class BuildStep : int {
    captureDevice = -1, ///< there is no such device: reported in words, without a number
    none = 0,           ///< nothing failed
    captureGraph = 1,
    createSplitter = 2,
    addSplitter = 3,
    addRecordFilter = 4,
    frameStore = 7,
    playGraph = 8,
    playFilter = 9,
    createDecoder = 10,
    createRenderer = 11,
    addPlayFilter = 12,
    addDecoder = 13,
    addRenderer = 14,
    connectDecoder = 15,
    connectRenderer = 16,
    videoWindow = 17
};

} // namespace frontend
