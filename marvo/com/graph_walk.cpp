#include "marvo/com/graph_walk.h"

#include "marvo/com/pins.h"

#include <algorithm>

namespace vwin {

std::vector<com_<IBaseFilter>> filtersOf(IFilterGraph* graph) {
    std::vector<com_<IBaseFilter>> filters;
    com_<IEnumFilters> newestFirst;
    if (graph == nullptr || FAILED(graph->EnumFilters(newestFirst.put())) || !newestFirst) {
        return filters;
    }
    com_<IBaseFilter> filter;
    for (ULONG fetched = 0; newestFirst->Next(1, filter.put(), &fetched) == S_OK && fetched == 1;
         fetched = 0) {
        filters.push_back(filter);
    }
    std::reverse(filters.begin(), filters.end());
    return filters;
}

GraphWalk::GraphWalk(IGraphBuilder* graph)
    : graph_(graph), filters_(filtersOf(graph)), entered_(filters_.size(), false) {}

bool GraphWalk::connect(IPin* out) {
    const size_t source = indexOf(ownerOf(out).ptr());
    if (source == filters_.size()) {
        return false;
    }
    entered_[source] = true;
    for (size_t step = 1; step < filters_.size(); ++step) {
        const size_t next = (source + step) % filters_.size();
        if (!entered_[next] && connectTo(out, next)) {
            return true;
        }
    }
    return false;
}

size_t GraphWalk::indexOf(IBaseFilter* filter) const {
    size_t index = 0;
    while (index < filters_.size() && !sameObject(filters_[index].ptr(), filter)) {
        ++index;
    }
    return index;
}

bool GraphWalk::connectTo(IPin* out, size_t filter) {
    for (const com_<IPin>& in : freePins(filters_[filter].ptr(), PINDIR_INPUT)) {
        if (FAILED(graph_->ConnectDirect(out, in.ptr(), nullptr))) {
            continue;
        }
        goOnFrom(filter);
        return true;
    }
    return false;
}

void GraphWalk::goOnFrom(size_t filter) {
    entered_[filter] = true;
    std::vector<com_<IPin>> outs = freePins(filters_[filter].ptr(), PINDIR_OUTPUT);
    std::erase_if(outs, [](const com_<IPin>& pin) { return !offersTypes(pin.ptr()); });
    std::stable_partition(outs.begin(), outs.end(),
                          [](const com_<IPin>& pin) { return offersDv(pin.ptr()); });
    for (const com_<IPin>& out : outs) {
        connect(out.ptr());
    }
}

} // namespace vwin
