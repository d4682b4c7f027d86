/// @file
/// The graph from the capture device to the frame store.
#pragma once

#include "marvo/com/com_fg.h"
#include "marvo/com/com_filter.h"
#include "marvo/frontend/build_step.h"
#include "marvo/frontend/log.h"
#include "marvo/replay/record_filter.h"

namespace frontend {

/// Capture device "dvSource", DV splitter "dvSplitter" and record filter "dvRecFilter" with the frame store.
/// Used on the host's thread; the filter's own threads run while the graph is built.
class CaptureGraph {
public:
    /// An unbuilt graph; `log` outlives it.
    explicit CaptureGraph(Log& log) : log_(log) {}

    /// Builds and runs the graph on capture device `input` with a ring of `frames` frames, and waits up to 5
    /// s for the first captured frames; none is no failure. The result is the step that failed, or `none`;
    /// what was built then is for the caller to release.
    BuildStep build(int input, unsigned long frames);
    /// Whether the graph is built.
    bool built() const { return graph_.built(); }
    /// The record filter; it lives as long as this object.
    dvRecFilter& filter() { return filter_; }

    /// @name Taking apart, in this order
    /// @{

    /// Takes the graph out of the running object table.
    void revoke() { graph_.unregisterFG(); }
    /// Stops the graph, whose build failed or is given up.
    void stop() { graph_.stop(); }
    /// Lets the splitter and the source go.
    void closeFilters();
    /// Releases the graph; `wait` as for `vwin::com_fg::done`.
    void release(bool wait) { graph_.done(wait); }

    /// @}

private:
    void awaitFirstFrames();

    Log& log_;
    vwin::com_fg graph_;
    vwin::com_filter source_;
    vwin::com_filter splitter_;
    dvRecFilter filter_;
};

} // namespace frontend
