/// @file
/// What the simulated camera notes about its frames.
#pragma once

#include <string>
#include <vector>

/// What the simulated camera says it has delivered since its last start.
struct CameraLog {
    struct Delivery {
        long sourceFrame; ///< number in the camera's stream
        double time_s;    ///< on the performance counter, just before the delivery
    };

    std::vector<Delivery> deliveries;
    int refused = 0; ///< deliveries that the engine did not take

    /// Throws std::runtime_error when the file cannot be read.
    explicit CameraLog(const std::string& file);
};
