/// @file
/// The graph from the capture device to the frame store.
#pragma once

#include "marvo/com/com_fg.h"
#include "marvo/com/com_filter.h"
#include "marvo/frontend/build_step.h"
#include "marvo/frontend/log.h"
#include "marvo/replay/record_filter.h"

#include <atomic>
#include <functional>

namespace frontend {

/// Capture device "dvSource", DV splitter "dvSplitter" and record filter "dvRecFilter" with the frame store.
/// Used by one thread at a time: the host's, and from the end of `init` until everything is taken apart the
/// camera watch's. `built` and `filter` may be asked on the host's thread at any time; the filter's own
/// threads run while the graph is built.
class CaptureGraph {
public:
    /// What frames the camera sends.
    struct Format {
        unsigned long frameBytes = 0;    ///< bytes of one frame
        long long framePeriod_100ns = 0; ///< time per frame
        /// Whether frames of one fit into a ring and a recording of the other.
        bool operator==(const Format& other) const {
            return frameBytes == other.frameBytes && framePeriod_100ns == other.framePeriod_100ns;
        }
    };

    /// How an attempt to open the device again ended.
    enum class Reopening {
        absent,      ///< there is no such device
        failed,      ///< it cannot be started yet
        otherFormat, ///< its frames do not fit into the ring; it is closed again
        done         ///< it runs
    };

    /// An unbuilt graph; `log` outlives it.
    explicit CaptureGraph(Log& log) : log_(log) {}

    /// The filter to take frames from instead of a device, from the next `build` on; null for the device. A
    /// reference is held. Its pin "Output" offers DV video, which needs no splitter.
    void setSource(IBaseFilter* source) { given_ = vwin::com_<IBaseFilter>(source); }

    /// Builds and runs the graph on capture device `input` with a ring of `frames` frames, and waits up to 5
    /// s for the device's first frames; none is no failure. The result is the step that failed, or `none`;
    /// what was built then is for the caller to release.
    BuildStep build(int input, unsigned long frames);
    /// Whether the graph was built and not released since; also while the device is gone.
    bool built() const { return built_; }
    /// The record filter; it lives as long as this object.
    dvRecFilter& filter() { return filter_; }

    /// @name The device's coming and going
    /// @{

    /// Takes the graph's events. The code (EC_...) of one that says that the device is gone or the graph has
    /// failed, else 0.
    long failure();
    /// Stops the graph and lets everything but the record filter go, so that the system is free to bring the
    /// device back.
    void close();
    /// Tries to open the capture device `input` again and to run the graph; ring and numbers are left as they
    /// are. Asks `goOn` after each step that a device may hold up, and closes everything when it says no. An
    /// absent device costs one look at the list of devices.
    Reopening reopen(int input, const std::function<bool()>& goOn);
    /// The format of ring and recording, as the device had it when the graph was built.
    const Format& format() const { return format_; }
    /// The format that the device had when it was opened again last.
    const Format& foundFormat() const { return found_; }

    /// @}
    /// @name Taking apart, in this order
    /// @{

    /// Takes the graph out of the running object table.
    void revoke() { graph_.unregisterFG(); }
    /// Stops the graph, whose build failed or is given up.
    void stop() { graph_.stop(); }
    /// Lets the splitter and the source go.
    void closeFilters();
    /// Releases the graph; `wait` as for `vwin::com_fg::done`.
    void release(bool wait);
    /// As far as the host is concerned the graph is not built any more. For a device that holds up the thread
    /// that uses the graph; the next `build` releases what is left.
    void abandon() { built_ = false; }

    /// @}

private:
    bool addSource(int input);
    BuildStep addFilters();
    Reopening runAgain(int input, const std::function<bool()>& goOn);
    bool recordFilterConnected();
    Format connectedFormat();
    void awaitFirstFrames();

    Log& log_;
    vwin::com_fg graph_;
    vwin::com_filter source_;
    vwin::com_filter splitter_;
    vwin::com_<IBaseFilter> given_;
    dvRecFilter filter_;
    Format format_;
    Format found_;
    std::atomic<bool> built_{false};
};

} // namespace frontend
