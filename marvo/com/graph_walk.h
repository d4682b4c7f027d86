/// @file
/// Completing a graph downstream of a pin through the filters that are in it.
#pragma once

#include "marvo/com/com_ptr.h"
#include "marvo/core/directshow.h"

#include <vector>

namespace vwin {

/// The graph's filters in the order in which they were added.
std::vector<com_<IBaseFilter>> filtersOf(IFilterGraph* graph);

/// Connects pins downstream of a pin, filter by filter. Each filter is entered once at most, so the walk
/// ends.
class GraphWalk {
public:
    /// A walk through the filters that `graph` has now; the graph must outlive it.
    explicit GraphWalk(IGraphBuilder* graph);

    /// Connects `out` to a free input pin of another filter and goes on from that filter's free output pins
    /// that say what they offer, those offering DV video first. Filters next in the order of adding are tried
    /// first, so that a sink that accepts everything does not take the place of a splitter added before it.
    /// True when `out` was connected.
    bool connect(IPin* out);

private:
    size_t indexOf(IBaseFilter* filter) const;
    bool connectTo(IPin* out, size_t filter);
    void goOnFrom(size_t filter);

    IGraphBuilder* graph_;
    std::vector<com_<IBaseFilter>> filters_;
    std::vector<bool> entered_;
};

} // namespace vwin
