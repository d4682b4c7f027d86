/// @file
/// The steps in which the front end is built, as its failures name them.
#pragma once

namespace frontend {

/// A step that failed. The numbers stand in the log ("no video - init - 7"), so they never change; 5 and 6
/// are not used.
enum class BuildStep : int {
    captureDevice = -1,   ///< there is no such device: reported in words, without a number
    none = 0,             ///< nothing failed
    captureGraph = 1,     ///< the capture graph cannot be made, or a device still holds the former one
    createSplitter = 2,   ///< there is no DV splitter
    addSplitter = 3,      ///< the splitter does not enter the graph
    addRecordFilter = 4,  ///< the record filter does not
    frameStore = 7,       ///< there is no memory for the ring, or it has no frames
    playGraph = 8,        ///< the play graph cannot be made
    playFilter = 9,       ///< the play filter cannot be prepared
    createDecoder = 10,   ///< there is no DV video decoder
    createRenderer = 11,  ///< there is no renderer
    addPlayFilter = 12,   ///< the play filter does not enter the graph
    addDecoder = 13,      ///< the decoder does not
    addRenderer = 14,     ///< the renderer does not
    connectDecoder = 15,  ///< the play filter and the decoder do not connect
    connectRenderer = 16, ///< the decoder and the renderer do not connect
    videoWindow = 17      ///< the renderer offers no window
};

} // namespace frontend
