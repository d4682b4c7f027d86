/// @file
/// The table of in and out points.
#pragma once

#include "marvo/core/str.h"

#include <array>
#include <optional>
#include <utility>

namespace frontend {

/// The first and last frames of numbered pieces of a recording, as markers set them. Used on the host's
/// thread.
class Elements {
public:
    /// Numbers from 0 to this can be set.
    static constexpr int count = 128;

    /// All unset.
    Elements() { clear(); }
    /// Unsets every point.
    void clear();
    /// Sets the point that a marker "XInnFRAME" or "XOnnFRAME" names. A marker whose number has not two
    /// characters or is outside of the table is ignored.
    void set(const vcore::str& marker);
    /// Sets both points of an element of the table, each as it is: negative for unset.
    void set(int element, long long in, long long out);
    /// Both points of an element of the table; negative for unset.
    std::pair<long long, long long> points(int element) const;
    /// In and out point of an element. Nothing unless both are set and 1 <= element < count: element 0 can be
    /// set but not played (deliberate).
    std::optional<std::pair<unsigned long long, unsigned long long>> range(int element) const;

private:
    /// Negative: unset.
    std::array<long long, count> in_;
    std::array<long long, count> out_;
};

} // namespace frontend
