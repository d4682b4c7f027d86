/// @file
/// Events that wait to be taken.
#pragma once

#include "marvo/core/thread_annotations.h"
#include "marvo/flat/lock.h"
#include "marvo_c.h"

#include <vector>

namespace flat {

/// The newest events, of which each is taken once. An event that finds the queue full takes the place of the
/// oldest, which is lost. Any thread; putting in takes no memory.
class EventQueue {
public:
    /// Room for `most` events.
    explicit EventQueue(std::size_t most) : events_(most) {}
    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    /// Puts an event in.
    void put(const marvo_event& event);
    /// Takes the oldest, whose `lost` are those that were lost since the one before. Waits up to `limit_ms`
    /// for one; false when none came.
    bool take(marvo_event& event, unsigned long limit_ms);
    /// Forgets all that wait.
    void clear();

    /// How many wait.
    marvo_u32 waiting();
    /// How many were lost in all.
    marvo_u64 lost();

private:
    Lock lock_;
    Signal come_;
    std::vector<marvo_event> events_ MARVO_GUARDED_BY(lock_);
    std::size_t first_ MARVO_GUARDED_BY(lock_) = 0;
    std::size_t count_ MARVO_GUARDED_BY(lock_) = 0;
    marvo_u32 lostSince_ MARVO_GUARDED_BY(lock_) = 0;
    marvo_u64 lost_ MARVO_GUARDED_BY(lock_) = 0;
};

} // namespace flat
