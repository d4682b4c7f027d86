/// @file
/// The source filter for frames that a host hands over.
#pragma once

#include "marvo/replay/paced_source.h"
#include "marvo/video/frame_pool.h"
#include "marvo/video/media_type.h"

/// A source filter that turns DV frames, handed to it one at a time, into a steady stream at the frame rate.
/// When no new frame has come it sends again what it holds; before the first frame it sends grey. The stream
/// lags one frame behind the newest (deliberate: that frame may still be in copying).
///
/// Numbers start at 1 here: the first added frame goes to slot 1 of 8, slot 0 holds the grey frame until
/// frame 8.
///
/// Threads: `addFrame` on the host's feeding thread; the rest as in `dvPacedSource`. The filter lock covers
/// the frame copy in both directions and the stream time. A timed wait that runs out is not an error.
class MARVO_API dvLiveFilter : public dvPacedSource {
public:
    dvLiveFilter();

    /// As `done`.
    ~dvLiveFilter() override;

    dvLiveFilter(const dvLiveFilter&) = delete;
    dvLiveFilter& operator=(const dvLiveFilter&) = delete;

    /// Takes the DV format: makes the ring, paints the grey frame, makes the samples ready. Before the pin is
    /// connected. Always true.
    virtual bool init(vvideo::dvMediaType& type);

    /// Takes a copy of `frame` as the newest. False when it could not be copied.
    virtual bool addFrame(const vvideo::dvFrame& frame);

    /// Frames added since the last call; the counter starts again at 0.
    int frames();

    /// Time per frame in 100 ns; 0 when not initialised.
    long long period() const;

    /// Bytes per DV frame; 0 when not initialised.
    unsigned long frameSize() const;

    /// Stops delivering (waiting up to a second), releases the samples and cancels the clock advice.
    virtual void done();

protected:
    IMediaSample* nextSample() override;

private:
    int added_ MARVO_GUARDED_BY(filterLock()) = 0;
    vvideo::dvFramePool ring_;
};
