/// @file
/// The source filter that stands in the place of a camera.
#pragma once

#include "marvo/core/semaphore.h"
#include "marvo/core/thread_annotations.h"
#include "marvo/video/alloc.h"
#include "marvo/video/base_filter.h"
#include "marvo/video/media_type.h"
#include "marvo/video/output_pin.h"

#include <memory>

/// A source filter with the one pin "Output" that sends the DV frames a host hands over, each once and at
/// once, on the thread that hands it over: as a capture device's own thread would. Given to
/// `dvFrontEnd::setSource`, it makes the engine capture the host's frames.
///
/// Frames have no time stamps; who hands them over sets the pace. Other than the live filter it repeats
/// nothing and leaves nothing out, so that what is recorded is what was handed over.
///
/// Threads: `add` on any thread, one frame at a time. The filter lock (this object's semaphore) is held while
/// a frame is sent, so that `Stop` returns when the last one is through; the receiver's locks are taken
/// inside it. A timed wait that runs out is not an error.
class MARVO_API dvFeedFilter : public vvideo::dvBaseFilter, public vcore::semaphore {
public:
    dvFeedFilter();

    /// As `done`.
    ~dvFeedFilter() override;

    dvFeedFilter(const dvFeedFilter&) = delete;
    dvFeedFilter& operator=(const dvFeedFilter&) = delete;

    /// Takes the DV format and makes the samples ready, before the pin is connected. False without memory for
    /// the samples, and on a thread without COM.
    virtual bool init(vvideo::dvMediaType& type);

    /// Sends a copy of a frame. False for null, a number of bytes that is not the format's, while the graph
    /// does not run, and when the receiver refuses it.
    virtual bool add(const void* frame, unsigned long bytes);

    /// Whether frames are sent on: the graph runs.
    bool sending() const;

    /// Bytes of one frame; 0 when not initialised.
    unsigned long frameSize() const;

    /// Sends nothing any more, and frees the samples.
    virtual void done();

    /// Sends what is handed over from now on.
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
    /// Sends nothing any more; waits for the frame on its way.
    HRESULT STDMETHODCALLTYPE Stop() override;
    /// The pin "Output".
    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** out) override;

private:
    const vcore::semaphore& filterLock() const MARVO_RETURN_CAPABILITY(this) { return *this; }

    void letRun(bool on);

    std::unique_ptr<vvideo::dvOutputPin> output_;
    vvideo::dvAlloc allocator_ MARVO_GUARDED_BY(filterLock());
    unsigned long frameSize_ MARVO_GUARDED_BY(filterLock()) = 0;
    bool running_ MARVO_GUARDED_BY(filterLock()) = false;
};
