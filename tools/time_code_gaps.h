/// @file
/// Jumps of the camera's time code.
#pragma once

#include "marvo/dv/time_code.h"

#include <vector>

namespace dvrec {

using vdv::TimeCode;

/// Follows the time code through a recording. A gap is where a frame's time code is not one more than that of
/// the last frame before it that has one; frames without time code in between count as frames. At midnight
/// the count begins anew.
class TimeCodeGaps {
public:
    /// One jump.
    struct Gap {
        unsigned long frame; ///< the first frame behind it
        TimeCode before;
        TimeCode after;
        /// Frames that the camera counted and the recording has not; 0 where the count went back.
        unsigned long lost;
    };

    /// For video of 25 or 30 counted frames per second; at most `most` gaps are kept.
    TimeCodeGaps(unsigned rate, size_t most) : rate_(rate), most_(most) {}

    /// Takes note of the next frame, the first of which is number 0.
    void add(const std::optional<TimeCode>& timeCode);

    /// The first gaps.
    const std::vector<Gap>& gaps() const { return gaps_; }
    /// Number of gaps, also of those that were not kept.
    unsigned long count() const { return count_; }
    /// Frames lost in all gaps.
    unsigned long long lost() const { return lost_; }
    /// Frames without time code.
    unsigned long missing() const { return missing_; }
    /// The first and the last time code; nothing when no frame has one.
    const std::optional<TimeCode>& first() const { return first_; }
    const std::optional<TimeCode>& last() const { return last_; }

private:
    const unsigned rate_;
    const size_t most_;
    unsigned long frame_ = 0;
    unsigned long lastFrame_ = 0;
    std::optional<TimeCode> first_;
    std::optional<TimeCode> last_;
    std::vector<Gap> gaps_;
    unsigned long count_ = 0;
    unsigned long long lost_ = 0;
    unsigned long missing_ = 0;
};

} // namespace dvrec
