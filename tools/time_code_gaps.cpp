#include "tools/time_code_gaps.h"

namespace dvrec {

void TimeCodeGaps::add(const std::optional<TimeCode>& timeCode) {
    const unsigned long frame = frame_++;
    if (!timeCode) {
        ++missing_;
        return;
    }
    if (last_) {
        const unsigned long day = TimeCode{24, 0, 0, 0, timeCode->dropFrame}.count(rate_);
        const unsigned long expected = (last_->count(rate_) + (frame - lastFrame_)) % day;
        const unsigned long jump = (timeCode->count(rate_) % day + day - expected) % day;
        if (jump != 0) {
            // A jump of more than half a day is one backwards.
            const unsigned long lost = jump < day / 2 ? jump : 0;
            lost_ += lost;
            if (gaps_.size() < most_) {
                gaps_.push_back({frame, *last_, *timeCode, lost});
            }
            ++count_;
        }
    } else {
        first_ = timeCode;
    }
    last_ = timeCode;
    lastFrame_ = frame;
}

} // namespace dvrec
