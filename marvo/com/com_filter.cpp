#include "marvo/com/com_filter.h"

#include "marvo/com/com_clsid.h"
#include "marvo/com/pins.h"
#include "marvo/core/process_state.h"
#include "marvo/core/str.h"

#include <cwchar>

namespace vwin {

namespace {

/// A filter's name in its graph and the graph itself, whose reference it owns.
struct FilterInfo {
    explicit FilterInfo(IBaseFilter* filter) {
        FILTER_INFO info = {};
        if (filter == nullptr || FAILED(filter->QueryFilterInfo(&info))) {
            return;
        }
        info.achName[std::size(info.achName) - 1] = 0;
        std::wcscpy(name, info.achName);
        graph.attach(info.pGraph);
        known = true;
    }

    wchar_t name[std::size(FILTER_INFO{}.achName)] = {};
    com_<IFilterGraph> graph;
    bool known = false;
};

} // namespace

com_filter::~com_filter() {
    if (vcore::processEnding()) {
        static_cast<void>(filter_.detach());
    }
}

bool com_filter::create(const GUID& clsid) {
    return filter_.create(clsid);
}

bool com_filter::createS(const wchar_t* clsidText) {
    com_clsid clsid;
    if (clsid.set(clsidText)) {
        return create(clsid.guid());
    }
    clear();
    return false;
}

void com_filter::close() {
    clear();
}

void com_filter::destroy() {
    disconnectPins();
    FilterInfo info(filter_.ptr());
    if (info.graph) {
        info.graph->RemoveFilter(filter_.ptr());
    }
    close();
}

bool com_filter::ref(IUnknown* object) {
    return filter_.ref(object);
}

void com_filter::clear() {
    filter_.clear();
}

com_<IPin> com_filter::findPin(const wchar_t* name, int direction) {
    return vwin::findPin(filter_.ptr(), name, direction);
}

bool com_filter::compareName(const wchar_t* name) {
    FilterInfo info(filter_.ptr());
    return info.known && name != nullptr && std::wcscmp(info.name, name) == 0;
}

bool com_filter::getName(vcore::str& name) {
    FilterInfo info(filter_.ptr());
    name = info.name;
    return info.known;
}

bool com_filter::disconnectPins() {
    FilterInfo info(filter_.ptr());
    return info.known && disconnectAllPins(info.graph.ptr(), filter_.ptr());
}

} // namespace vwin
