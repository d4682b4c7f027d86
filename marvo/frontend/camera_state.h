/// @file
/// How the camera is.
#pragma once

/// What `dvFrontEnd::cameraState` tells.
struct dvCameraState {
    /// The states of the camera.
    enum State : int {
        none = 0,   ///< no capture graph is built
        live = 1,   ///< frames come
        silent = 2, ///< the camera is there, but no frame has come for a second, or none yet since it is back
        gone = 3,   ///< the device is gone, or has failed
        changed = 4, ///< it came back with another frame size or rate; capture stands still until `init`
    };

    State state = none;         ///< the state now
    unsigned long since_ms = 0; ///< for how long it has been so, up to 49 days
    unsigned long lost = 0;     ///< how often the device was lost since `init`
};
