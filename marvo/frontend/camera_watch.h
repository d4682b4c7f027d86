/// @file
/// Seeing that the camera is gone, and taking it up again.
#pragma once

#include "marvo/core/semaphore.h"
#include "marvo/core/thread_annotations.h"
#include "marvo/core/vobject.h"
#include "marvo/core/winthread.h"
#include "marvo/frontend/camera_state.h"
#include "marvo/frontend/capture_graph.h"
#include "marvo/frontend/log.h"
#include "marvo/replay/play_filter.h"

#include <atomic>

namespace frontend {

/// Watches a capture graph that runs. It sees that no frame has come for a second, that the device is gone,
/// and that frames come again; it logs each once, tells the host by a signal, and, when it may, opens the
/// device again as soon as that is there. The record filter stays as it is meanwhile, so that ring, numbers
/// and recording go on where they were.
///
/// A camera that comes back with another frame size or rate does not fit into ring and recording: the
/// recording is completed, capture stands still, and the watch rests until the next `begin`. The play graph
/// cannot follow by itself, since its renderer's window belongs to the host's thread.
///
/// Threads: a thread of its own, which looks four times a second. From `begin` to a successful `end` the
/// capture graph is that thread's, so it needs no lock, and no command but those that take the engine apart
/// waits for it. `state` and `reconnect` are for any thread, everything else for the host's. The signals are
/// emitted on the watch's thread, without a lock.
class CameraWatch final : public vwin::winthread {
public:
    /// Watches `capture`; `teller` emits the signals. All outlive this object.
    CameraWatch(CaptureGraph& capture, dvPlayFilter& play, Log& log, vcore::vObject& teller);
    /// As `end`.
    ~CameraWatch();

    /// Hands over the capture graph, which was built on capture device `input` and runs.
    void begin(int input);
    /// Ends the watch, and an attempt to open the device as soon as the device lets it: true when the capture
    /// graph is the caller's again, false when the device has held the thread up for three seconds. The
    /// thread then ends by itself later, and the graph is not to be touched until `end` was true.
    bool end();

    /// Whether a device that is gone is taken up again.
    void reconnect(bool on) { reconnect_ = on; }
    /// How the camera is.
    dvCameraState state() const;
    /// Whether capture stands still because the camera came back with another format.
    bool changed() const { return state().state == dvCameraState::changed; }

    /// The watch's thread.
    void run() override;

private:
    void look();
    void lookForFrames();
    void lookForSilence();
    void lose(long event);
    void failAgain();
    void open();
    void giveUpFormat();
    void enter(dvCameraState::State state);
    unsigned long long newestFrame();
    Arrivals& arrivals() { return capture_.filter().arrivals(); }

    CaptureGraph& capture_;
    dvPlayFilter& play_;
    Log& log_;
    vcore::vObject& teller_;
    std::atomic<bool> reconnect_{true};
    std::atomic<unsigned long> lost_{0};

    /// The watch's thread only, but for `begin`.
    int input_ = 0;
    dvCameraState::State seen_ = dvCameraState::none;
    unsigned long countBefore_ = 0;
    unsigned long long gapBegin_ms_ = 0;
    unsigned long long nextFrame_ = 0;
    bool deviceLost_ = false; ///< the graph has to be made anew
    bool reopened_ = false;   ///< and no frame since
    bool failureTold_ = false;

    vcore::semaphore stateLock_;
    dvCameraState::State state_ MARVO_GUARDED_BY(stateLock_) = dvCameraState::none;
    unsigned long long since_ms_ MARVO_GUARDED_BY(stateLock_) = 0;
};

} // namespace frontend
