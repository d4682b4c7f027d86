/// @file
/// Where the audience's window goes.
#pragma once

#include <cstddef>
#include <optional>

namespace app {

/// Which of `monitors` the audience's window fills, counted from 0, where the operator's window is on the
/// monitor `operators` and the settings want monitor `wanted`, counted from 1: that one, or for 0 and for one
/// that is not there the first that the operator is not on. Nothing when that is the operator's own: it is an
/// ordinary window there.
std::optional<std::size_t> outputMonitor(std::size_t monitors, std::size_t operators, int wanted);

} // namespace app
