/// @file
/// Where and when figures are measured.
#pragma once

#include <string>

/// Where and when the figures were measured.
struct Machine {
    int cores;
    std::string processor;
    std::string system; ///< "Wine 8.0" or "Windows"
    std::string target; ///< "win32" or "win64"
    std::string date;   ///< local, as 2024-01-31T12:00:00

    Machine();
};
