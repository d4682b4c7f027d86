#include "bench/camera_log.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

CameraLog::CameraLog(const std::string& file) {
    std::ifstream in(file);
    if (!in) {
        throw std::runtime_error("the camera has left no log");
    }
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("# start", 0) == 0) {
            deliveries.clear();
            refused = 0;
        } else if (line.find("refused") != std::string::npos) {
            ++refused;
        } else {
            std::istringstream fields(line);
            unsigned long long number = 0;
            long frame = 0;
            double time_ms = 0;
            if (fields >> number >> frame >> time_ms) {
                deliveries.push_back({frame, time_ms / 1000});
            }
        }
    }
}
