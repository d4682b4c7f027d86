#include "marvo/flat/event_queue.h"

#include <utility>

namespace flat {

void EventQueue::put(const marvo_event& event) {
    const LockGuard guard(lock_);
    if (count_ == events_.size()) {
        first_ = (first_ + 1) % events_.size();
        --count_;
        ++lostSince_;
        ++lost_;
    }
    events_[(first_ + count_) % events_.size()] = event;
    ++count_;
    come_.wakeAll();
}

bool EventQueue::take(marvo_event& event, unsigned long limit_ms) {
    const ULONGLONG begin = GetTickCount64();
    const LockGuard guard(lock_);
    while (count_ == 0) {
        const ULONGLONG passed = GetTickCount64() - begin;
        if (passed >= limit_ms) {
            return false;
        }
        come_.wait(lock_, limit_ms == INFINITE ? INFINITE : static_cast<unsigned long>(limit_ms - passed));
    }
    event = events_[first_];
    event.lost = std::exchange(lostSince_, 0);
    first_ = (first_ + 1) % events_.size();
    --count_;
    return true;
}

void EventQueue::clear() {
    const LockGuard guard(lock_);
    count_ = 0;
    lostSince_ = 0;
}

marvo_u32 EventQueue::waiting() {
    const LockGuard guard(lock_);
    return static_cast<marvo_u32>(count_);
}

marvo_u64 EventQueue::lost() {
    const LockGuard guard(lock_);
    return lost_;
}

} // namespace flat
