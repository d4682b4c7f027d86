/// @file
/// The base of the filters that deliver at the pace of the reference clock.
#pragma once

#include "marvo/core/semaphore.h"
#include "marvo/core/thread_annotations.h"
#include "marvo/core/winthread.h"
#include "marvo/replay/clock_pacer.h"
#include "marvo/replay/delivery_watch.h"
#include "marvo/replay/stop_flag.h"
#include "marvo/video/alloc.h"
#include "marvo/video/base_filter.h"
#include "marvo/video/output_pin.h"

#include <atomic>
#include <memory>

/// What the live and the play filter have in common: a source filter with the one pin "Output", whose thread
/// prepares one sample per tick of the reference clock and delivers it at the start of the next pass.
///
/// Samples carry no presentation time, so that a renderer shows each at once; the clock's advice is what
/// paces them.
///
/// Threads: `run` is the delivery thread; `Run`, `SetSyncSource`, `EnumPins` and `stopDelivery` are called on
/// the graph's control thread or the host's. The filter lock (this object's semaphore) guards what the
/// derived filter says; nothing is delivered while it is held.
class MARVO_API dvPacedSource : public vvideo::dvBaseFilter, public vwin::winthread, public vcore::semaphore {
public:
    /// Arms the clock advice, starts the delivery thread, and enters the running state.
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;

    /// Cancels the advice on the old clock and takes the new one (null allowed).
    HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;

    /// The pin "Output".
    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** out) override;

    /// What disturbs the delivery at this moment: `play_fault` bits. From any thread, without a lock.
    unsigned long faults() const;

protected:
    /// `settle_ms`: the pause after each delivery, in which new frames can arrive before the next one is
    /// chosen.
    explicit dvPacedSource(unsigned long settle_ms);
    ~dvPacedSource() override;

    /// Fetches the next sample, with one reference for the caller, or null when there is none to be had.
    /// Called on the delivery thread once per pass, without a lock.
    virtual IMediaSample* nextSample() = 0;

    /// A `play_fault` has begun, or is over. Called on the delivery thread, without a lock.
    virtual void faultChanged(unsigned long fault, bool begun);

    /// The delivery thread.
    void run() override;

    /// The filter lock: guards what the derived filter says, and the members below.
    const vcore::semaphore& filterLock() const MARVO_RETURN_CAPABILITY(this) { return *this; }

    /// (Re)arms the clock advice with the current period. False without a clock.
    bool _initSync();

    /// Makes the allocator ready for 8 samples of `frameSize` bytes and gives it to the output pin. Call it
    /// before the pin is connected. The allocator is created here when the library was loaded before COM was
    /// up.
    bool prepareSamples(unsigned long frameSize);

    /// Stops the delivery thread: waits `join_ms`, then ends its wait for a sample that does not come free,
    /// and kills it only inside a downstream call that does not return for another second.
    void stopDelivery(unsigned long join_ms);

    /// One sample for the times `start` to `stop` (100 ns, media time), or null. Blocks until a buffer is
    /// free.
    IMediaSample* takeSample();

    /// Marks a sample that is not bound to presentation times.
    static void markSample(IMediaSample* sample, long long start, long long stop, bool discontinuity);

    /// The one pin.
    std::unique_ptr<vvideo::dvOutputPin> output_;
    /// Where the samples come from.
    vvideo::dvAlloc allocator_;
    /// Bytes of one frame; 0 until known.
    unsigned long frameSize_ MARVO_GUARDED_BY(filterLock()) = 0;
    /// Time per frame in 100 ns.
    long long period_100ns_ MARVO_GUARDED_BY(filterLock()) = 0;
    /// Stream time of the next sample in 100 ns.
    long long streamTime_100ns_ MARVO_GUARDED_BY(filterLock()) = 0;

private:
    void tell(const DeliveryWatch::Change& change);

    const unsigned long settle_ms_;
    DeliveryWatch watch_;
    /// The delivery thread has come to its end, and was not killed.
    std::atomic<bool> ended_ = true;
    ClockPacer pacer_;
    StopFlag stop_;
};
