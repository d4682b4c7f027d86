/// @file
/// What keeps a paced filter from delivering.
#pragma once

#include <windows.h>

#include <atomic>

/// What disturbs the delivery of the picture; the bits of `dvPacedSource::faults` and of "playFault".
enum play_fault : unsigned long {
    play_no_ticks =
        1, ///< for a second the reference clock has given no tick; delivery goes on, eight a second
    play_refused = 2,  ///< for a second the filters downstream have refused every sample
    play_held_up = 4,  ///< the filters downstream have not returned from a sample for a second
    play_no_graph = 8, ///< the play graph did not start, or has told that it cannot go on
};

/// Looks after one delivery thread, which tells it of every step; `faults` may be asked on any thread, also
/// while a step lasts for ever.
class DeliveryWatch {
public:
    /// What a step has changed, in bits of `play_fault`.
    struct Change {
        unsigned long begun = 0; ///< faults that were not there before
        unsigned long over = 0;  ///< faults that are no longer there
    };

    /// A delivery thread begins: what was told of the one before is over.
    Change enter();
    /// The thread is gone, and its faults with it.
    void leave();
    /// The thread has waited for a tick of the clock, which came or did not.
    Change waited(bool ticked);
    /// A sample is handed downstream ...
    void handOver() { handedOver_ms_ = GetTickCount64(); }
    /// ... and was taken there or refused.
    Change handedOver(bool taken);

    /// The `play_fault`s at this moment.
    unsigned long faults() const;

private:
    Change step(play_fault fault, ULONGLONG& since_ms, bool good);

    ULONGLONG noTickSince_ms_ = 0;  // 0: the last one came
    ULONGLONG refusedSince_ms_ = 0; // 0: the last one was taken
    unsigned long told_ = 0;
    std::atomic<ULONGLONG> handedOver_ms_ = 0;
    std::atomic<unsigned long> faults_ = 0;
};
