#include "marvo/replay/paced_source.h"

#include "marvo/core/timed_guard.h"
#include "marvo/video/enum_pins.h"

namespace {

/// How long the filter lock is waited for.
constexpr unsigned long lockWait_ms = 1000;

constexpr unsigned long samples = 8;
/// A restart may not be held up for long by the thread of the former run.
constexpr unsigned long restartJoin_ms = 100;
/// A downstream filter that is only slow, as on a busy machine, may hold locks of its own: nobody is killed
/// for that.
constexpr unsigned long slowDelivery_ms = 1000;

} // namespace

dvPacedSource::dvPacedSource(unsigned long settle_ms)
    : vcore::semaphore(1, 1), output_(std::make_unique<vvideo::dvOutputPin>(this, L"Output")),
      settle_ms_(settle_ms) {}

dvPacedSource::~dvPacedSource() = default;

HRESULT STDMETHODCALLTYPE dvPacedSource::Run(REFERENCE_TIME start) {
    if (running()) {
        stopDelivery(restartJoin_ms);
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        if (allocator_.count() == 0 && frameSize_ != 0) {
            prepareSamples(frameSize_);
        }
    }
    _initSync();
    vwin::winthread::start();
    return vvideo::dvBaseFilter::Run(start);
}

HRESULT STDMETHODCALLTYPE dvPacedSource::SetSyncSource(IReferenceClock* newClock) {
    pacer_.cancel(clock());
    return vvideo::dvBaseFilter::SetSyncSource(newClock);
}

HRESULT STDMETHODCALLTYPE dvPacedSource::EnumPins(IEnumPins** out) {
    return vvideo::enumeratePins({output_.get()}, out);
}

bool dvPacedSource::_initSync() {
    long long period_100ns = 0;
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        period_100ns = period_100ns_;
    }
    return pacer_.arm(clock(), period_100ns);
}

bool dvPacedSource::prepareSamples(unsigned long frameSize) {
    if (!static_cast<IMemAllocator*>(allocator_)) {
        allocator_.create();
    }
    output_->setMem(allocator_);
    // The system allocator refuses an alignment of 0.
    return allocator_.init(frameSize, samples, 0, 1);
}

void dvPacedSource::stopDelivery(unsigned long join_ms) {
    stop_.ask(*this);
    pacer_.wake();
    if (!running()) {
        return;
    }
    winthread::wait(join_ms);
    if (running()) {
        // The thread may be waiting for a sample that nobody returns; decommitting ends that wait.
        allocator_.done();
        stop(slowDelivery_ms);
        if (!ended_) {
            // It was killed with a sample in its hands, which nobody returns any more.
            allocator_.create();
        }
    }
    watch_.leave();
}

IMediaSample* dvPacedSource::takeSample() {
    IMediaSample* sample = nullptr;
    return allocator_.getSample(&sample, -1, -1) ? sample : nullptr;
}

void dvPacedSource::markSample(IMediaSample* sample, long long start, long long stop, bool discontinuity) {
    sample->SetMediaTime(&start, &stop);
    sample->SetSyncPoint(TRUE);
    sample->SetPreroll(FALSE);
    sample->SetDiscontinuity(discontinuity ? TRUE : FALSE);
}

unsigned long dvPacedSource::faults() const {
    return watch_.faults();
}

void dvPacedSource::faultChanged(unsigned long, bool) {}

void dvPacedSource::tell(const DeliveryWatch::Change& change) {
    if (const unsigned long changed = change.begun | change.over) {
        faultChanged(changed, change.begun != 0);
    }
}

void dvPacedSource::run() {
    const uninterruptible whole;
    stop_.enter(*this);
    ended_ = false;
    tell(watch_.enter());
    IMediaSample* held = nullptr;
    do {
        if (held) {
            watch_.handOver();
            const bool taken = output_->deliver(held);
            held->Release();
            tell(watch_.handedOver(taken));
        }
        Sleep(settle_ms_);
        held = nextSample();
        tell(watch_.waited(pacer_.waitForTick()));
    } while (!stop_.asked());
    if (held) {
        held->Release();
    }
    ended_ = true;
}
