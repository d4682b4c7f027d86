/// @file
/// What a process holds of the system, to see whether it grows.
#pragma once

#include <cstddef>

/// What this process holds.
struct Footprint {
    int handles = 0; ///< open ones, counted one by one, since not every system keeps the count
    unsigned long threads = 0;
    size_t bytes = 0; ///< committed memory
};

/// What this process holds now.
Footprint footprint();

/// Handles that the system itself leaves open each time so many filter graphs are made and the camera is
/// looked up: Wine keeps an event per graph and registry keys per look-up. Needs COM.
int systemsHandlesPerCycle(int graphs);
