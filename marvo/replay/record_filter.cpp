#include "marvo/replay/record_filter.h"

#include "marvo/core/timed_guard.h"
#include "marvo/video/enum_pins.h"

namespace {

/// How long the filter lock is waited for ...
constexpr unsigned long lockWait_ms = 1000;
/// ... and at the end, when what it guards is not needed any more.
constexpr unsigned long lastLockWait_ms = 300;
/// How long a sample waits for the one before it, and `done` for the one on its way.
constexpr unsigned long receiveWait_ms = 4000;
constexpr unsigned long lastReceiveWait_ms = 100;

} // namespace

dvRecFilter::dvRecFilter()
    : vcore::semaphore(1, 1), receiveLock_(1, 1),
      input_(std::make_unique<vvideo::dvInputPin>(this, L"Input", 0)),
      preview_(std::make_unique<vvideo::dvOutputPin>(this, L"Preview")) {
    input_->registerSink(this);
}

dvRecFilter::~dvRecFilter() {
    input_->unregisterSink();
    done();
}

bool dvRecFilter::init(unsigned long frames) {
    vvideo::dvMediaType type;
    getMediaType(type);
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        paused_ = false;
        done_ = false;
        samples_ = 0;
    }
    return store_.init(type.frameSize(), static_cast<unsigned long long>(type.timePerFrame()), frames);
}

bool dvRecFilter::paused() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return paused_;
}

void dvRecFilter::setPause(bool paused) {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    paused_ = paused;
}

unsigned long dvRecFilter::frameCount() {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    const unsigned long samples = samples_;
    samples_ = 0;
    return samples;
}

void dvRecFilter::getMediaType(_AMMediaType& type) {
    input_->ConnectionMediaType(&type);
}

bool dvRecFilter::acceptFormat(vvideo::dvInputPin*, vvideo::dvMediaType&) {
    return true;
}

void dvRecFilter::notifyConnect(vvideo::dvInputPin* pin) {
    preview_->setType(pin->type());
}

void dvRecFilter::notifyAllocator(vvideo::dvInputPin* pin) {
    preview_->setMem(pin->allocator());
}

void dvRecFilter::notifyDisconnect(vvideo::dvInputPin*) {
    preview_->setMem(nullptr);
}

bool dvRecFilter::receive(vvideo::dvInputPin*, IMediaSample* sample) {
    if (!sample || done_) {
        return false;
    }
    arrivals_.note();
    bool paused = false;
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        paused = paused_;
        ++samples_;
    }
    vcore::timed_guard receiving(receiveLock_, receiveWait_ms);
    if (!paused) {
        store_.add(sample);
    }
    sample->SetTime(nullptr, nullptr);
    sample->SetSyncPoint(TRUE);
    sample->SetDiscontinuity(TRUE);
    preview_->deliver(sample);
    return true;
}

HRESULT STDMETHODCALLTYPE dvRecFilter::EnumPins(IEnumPins** out) {
    return vvideo::enumeratePins({input_.get(), preview_.get()}, out);
}

void dvRecFilter::done() {
    {
        vcore::timed_guard lock(filterLock(), lastLockWait_ms);
        done_ = true;
    }
    { vcore::timed_guard sampleOnItsWay(receiveLock_, lastReceiveWait_ms); }
    store_.done();
}
