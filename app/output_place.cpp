#include "app/output_place.h"

namespace app {

std::optional<std::size_t> outputMonitor(std::size_t monitors, std::size_t operators, int wanted) {
    const bool there = wanted >= 1 && static_cast<std::size_t>(wanted) <= monitors;
    const std::size_t chosen = there ? static_cast<std::size_t>(wanted) - 1 : operators == 0 ? 1 : 0;
    return chosen < monitors && chosen != operators ? std::optional(chosen) : std::nullopt;
}

} // namespace app
