/// @file
/// The graph from the play filter to the renderer.
#pragma once

#include "marvo/com/com_fg.h"
#include "marvo/com/com_filter.h"
#include "marvo/com/video_window.h"
#include "marvo/frontend/build_step.h"
#include "marvo/frontend/log.h"
#include "marvo/frontend/settings.h"
#include "marvo/replay/play_filter.h"
#include "marvo/replay/record_filter.h"

#include <atomic>

namespace frontend {

/// Play filter "dvPlayFilter", DV decoder "dvDecode" and renderer "dvWindow". Used on the host's thread; the
/// filter's own threads run while the graph is built.
class PlayGraph {
public:
    /// An unbuilt graph; `log` and `settings` outlive it.
    PlayGraph(Log& log, const Settings& settings) : log_(log), settings_(settings) {}

    /// Builds the graph on the frame store of `source`. The result is the step that failed, or `none`; what
    /// was built then is for the caller to release.
    BuildStep build(dvRecFilter& source);
    /// Builds the graph for frames `from` to `to` (in either order) of the recording `name`, without a frame
    /// store. The result is the step that failed, or `none`.
    BuildStep buildAlone(unsigned long long from, unsigned long long to, const wchar_t* name);
    /// Runs what was built. False when the graph does not start.
    bool run();
    /// Takes the graph's next event, as `vwin::com_fg::takeEvent`; one that says that the graph cannot go on
    /// counts among the faults from then on. On the delivery thread.
    bool takeEvent(long& code, long long& parameter);
    /// The `play_fault`s at this moment. From any thread.
    unsigned long faults() const;
    /// Whether the graph shows nothing any more, and only another one will.
    bool broken() const { return (faults() & ~play_no_ticks) != 0; }
    /// Whether the graph is built.
    bool built() const { return graph_.built(); }
    /// The play filter; it lives as long as this object.
    dvPlayFilter& filter() { return filter_; }
    /// The renderer's window; empty without a renderer.
    dvVideoWindow& window() { return window_; }

    /// Makes the mixing renderer when deinterlacing is on, else the plain one. False when that cannot be
    /// made; there is no fall-back from one to the other.
    bool makeRenderer();
    /// Asks a deinterlacing renderer to prefer bob. False when deinterlacing is off or the renderer has no
    /// control of it.
    bool preferBob();

    /// @name Taking apart, in this order
    /// @{

    /// Takes the graph out of the running object table.
    void revoke() { graph_.unregisterFG(); }
    /// Ends the play filter; it reports no recording any more.
    void endFilter();
    /// Lets the decoder, the renderer and its window go.
    void closeFilters();
    /// Releases the graph; `wait` as for `vwin::com_fg::done`.
    void release(bool wait) {
        graph_.done(wait);
        failed_ = false;
    }

    /// @}

private:
    BuildStep connect();
    void switchOffDeinterlacing();

    Log& log_;
    const Settings& settings_;
    vwin::com_fg graph_;
    dvPlayFilter filter_;
    vwin::com_filter decoder_;
    vwin::com_filter renderer_;
    dvVideoWindow window_;
    std::atomic<bool> failed_ = false;
};

} // namespace frontend
