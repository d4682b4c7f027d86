#include "marvo/replay/feed_filter.h"

#include "marvo/core/timed_guard.h"
#include "marvo/video/enum_pins.h"

#include <cstring>

namespace {

/// How long the filter lock is waited for: as long as the record filter may need for a frame.
constexpr unsigned long lockWait_ms = 4000;

/// The receiver gives each sample back before it returns, but a filter behind it may keep some.
constexpr unsigned long samples = 8;

} // namespace

dvFeedFilter::dvFeedFilter()
    : vcore::semaphore(1, 1), output_(std::make_unique<vvideo::dvOutputPin>(this, L"Output")) {}

dvFeedFilter::~dvFeedFilter() {
    done();
}

bool dvFeedFilter::init(vvideo::dvMediaType& type) {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    output_->setType(type);
    frameSize_ = type.frameSize();
    if (!static_cast<IMemAllocator*>(allocator_)) {
        allocator_.create();
    }
    output_->setMem(allocator_);
    return allocator_.init(frameSize_, samples, 0, 1);
}

bool dvFeedFilter::add(const void* frame, unsigned long bytes) {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    IMediaSample* sample = nullptr;
    if (!frame || bytes == 0 || bytes != frameSize_ || !running_ || !allocator_.getSample(&sample, -1, -1)) {
        return false;
    }
    BYTE* to = nullptr;
    const bool filled = SUCCEEDED(sample->GetPointer(&to));
    if (filled) {
        std::memcpy(to, frame, bytes);
        sample->SetActualDataLength(static_cast<long>(bytes));
    }
    const bool taken = filled && output_->deliver(sample);
    sample->Release();
    return taken;
}

bool dvFeedFilter::sending() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return running_;
}

unsigned long dvFeedFilter::frameSize() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return frameSize_;
}

void dvFeedFilter::done() {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    running_ = false;
    frameSize_ = 0;
    allocator_.done();
}

void dvFeedFilter::letRun(bool on) {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    running_ = on;
}

HRESULT STDMETHODCALLTYPE dvFeedFilter::Run(REFERENCE_TIME start) {
    letRun(true);
    return vvideo::dvBaseFilter::Run(start);
}

HRESULT STDMETHODCALLTYPE dvFeedFilter::Stop() {
    letRun(false);
    return vvideo::dvBaseFilter::Stop();
}

HRESULT STDMETHODCALLTYPE dvFeedFilter::EnumPins(IEnumPins** out) {
    return vvideo::enumeratePins({output_.get()}, out);
}
