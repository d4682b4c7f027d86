/// @file
/// The filter that takes the captured frames.
#pragma once

#include "marvo/core/semaphore.h"
#include "marvo/core/thread_annotations.h"
#include "marvo/replay/arrivals.h"
#include "marvo/replay/frame_store.h"
#include "marvo/video/base_filter.h"
#include "marvo/video/input_pin.h"
#include "marvo/video/output_pin.h"
#include "marvo/video/sink.h"

#include <memory>

/// The end of the capture branch: every DV sample that reaches the pin "Input" is stored in the frame store
/// under the next number, unless recording is paused, and passed on unchanged, marked for immediate display,
/// through the pin "Preview". Owns the frame store.
///
/// Threads: `receive` on the capture device's streaming thread; connecting on the thread that builds the
/// graph, which may be another one later, and `getMediaType` not beside it; everything else on the host's.
/// The filter lock (this object's semaphore) guards the flags and the counter; the receive lock is held while
/// one sample is stored and passed on, and the store's locks are taken inside it. A timed wait that runs out
/// is not an error.
class MARVO_API dvRecFilter : public vvideo::dvBaseFilter, public vvideo::dvSink, public vcore::semaphore {
public:
    dvRecFilter();

    /// Detaches from the input pin, then as `done`.
    ~dvRecFilter() override;

    dvRecFilter(const dvRecFilter&) = delete;
    dvRecFilter& operator=(const dvRecFilter&) = delete;

    /// Makes the frame store ready for `frames` frames of the connected format; call it once the input pin is
    /// connected. Clears pause, counter and a former `done`. False when the store cannot have its ring, which
    /// needs at least one slot.
    virtual bool init(unsigned long frames);

    /// The frame store; lives as long as this filter.
    dvFrameStore& store() { return store_; }

    /// Whether samples are passed on and counted, but not stored.
    bool paused() const;
    /// Pauses storing, or resumes it.
    void setPause(bool paused);

    /// Samples received since the last call; the counter starts again at 0.
    unsigned long frameCount();

    /// When samples came, also those that were not stored.
    Arrivals& arrivals() { return arrivals_; }

    /// Copies the input pin's connection media type into `type`, whose former content is not freed.
    void getMediaType(_AMMediaType& type);

    /// Accepts every format.
    bool acceptFormat(vvideo::dvInputPin* pin, vvideo::dvMediaType& type) override;

    /// Offers the captured format on the preview pin.
    void notifyConnect(vvideo::dvInputPin* pin) override;

    /// Has the preview pin announce the capture branch's allocator, since it delivers that branch's samples.
    void notifyAllocator(vvideo::dvInputPin* pin) override;

    /// Gives the capture branch's allocator back.
    void notifyDisconnect(vvideo::dvInputPin* pin) override;

    /// Stores and passes on one sample, whose reference stays the caller's. False for null and after `done`;
    /// a sample that cannot be stored is still passed on.
    bool receive(vvideo::dvInputPin* pin, IMediaSample* sample) override;

    /// The pins "Input" and "Preview", in this order.
    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** out) override;

    /// Refuses further samples, waits up to 100 ms for the one on its way, which still belongs to the
    /// recording, and ends the store.
    virtual void done();

private:
    const vcore::semaphore& filterLock() const MARVO_RETURN_CAPABILITY(this) { return *this; }

    dvFrameStore store_;
    Arrivals arrivals_;
    vcore::semaphore receiveLock_;
    std::unique_ptr<vvideo::dvInputPin> input_;
    std::unique_ptr<vvideo::dvOutputPin> preview_;
    std::atomic<bool> done_ = false;
    bool paused_ MARVO_GUARDED_BY(filterLock()) = false;
    unsigned long samples_ MARVO_GUARDED_BY(filterLock()) = 0;
};
