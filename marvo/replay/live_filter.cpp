#include "marvo/replay/live_filter.h"

#include "marvo/core/timed_guard.h"

namespace {
/// How long the filter lock is waited for.
constexpr unsigned long lockWait_ms = 1000;
/// How long `done` waits for the delivery thread.
constexpr unsigned long join_ms = 1000;

constexpr unsigned long ringFrames = 8;
constexpr unsigned long settle_ms = 10;
} // namespace

dvLiveFilter::dvLiveFilter() : dvPacedSource(settle_ms) {}

dvLiveFilter::~dvLiveFilter() {
    done();
}

bool dvLiveFilter::init(vvideo::dvMediaType& type) {
    output_->setType(type);
    ring_.init(type.frameSize(), ringFrames);
    if (vvideo::dvFrame* gray = ring_.frame(0)) {
        gray->fillGray();
    }
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    frameSize_ = type.frameSize();
    period_100ns_ = type.timePerFrame();
    prepareSamples(frameSize_);
    streamTime_100ns_ = 0;
    return true;
}

bool dvLiveFilter::addFrame(const vvideo::dvFrame& frame) {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    const unsigned long long number = ring_.incIn() + 1;
    const bool copied = frame.copyTo(ring_.frame(number));
    ++added_;
    return copied;
}

int dvLiveFilter::frames() {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    const int added = added_;
    added_ = 0;
    return added;
}

long long dvLiveFilter::period() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return period_100ns_;
}

unsigned long dvLiveFilter::frameSize() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return frameSize_;
}

void dvLiveFilter::done() {
    stopDelivery(join_ms);
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        frameSize_ = 0;
        period_100ns_ = 0;
        allocator_.done();
    }
    _initSync();
}

IMediaSample* dvLiveFilter::nextSample() {
    long long start = 0;
    long long stop = 0;
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        start = streamTime_100ns_;
        stop = start + period_100ns_;
        streamTime_100ns_ = stop;
    }
    IMediaSample* sample = takeSample();
    if (!sample) {
        return nullptr;
    }
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        const unsigned long long newest = ring_.inPos();
        if (const vvideo::dvFrame* frame = ring_.frame(newest != 0 ? newest - 1 : 0)) {
            frame->copyTo(sample);
        }
    }
    markSample(sample, start, stop, start == 0);
    return sample;
}
