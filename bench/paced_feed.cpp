#include "bench/paced_feed.h"

#include "bench/stopwatch.h"

PacedFeed::PacedFeed(size_t frameSize, double period_s)
    : period_s_(period_s), frames_(200, frameSize), pool_(8, frameSize) {}

void PacedFeed::feed(IMemInputPin* pin, int frames) const {
    const Stopwatch watch;
    for (int i = 0; i < frames; ++i) {
        const double ahead_s = i * period_s_ - watch.seconds();
        if (ahead_s > 0) {
            Sleep(static_cast<DWORD>(ahead_s * 1000) + 1);
        }
        pin->Receive(pool_.sample(frames_[static_cast<size_t>(i)]).ptr());
    }
}
