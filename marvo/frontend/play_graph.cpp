#include "marvo/frontend/play_graph.h"

#include "marvo/com/com_clsid.h"
#include "marvo/core/str.h"
#include "marvo/video/media_type.h"

// d3d9.h has what vmr9.h expects to find.
#include <d3d9.h>
#include <vmr9.h>

#include <evcode.h>

#include <algorithm>

namespace frontend {

namespace {

const wchar_t* const decoderClass = L"{B1B77C00-C3E4-11CF-AF79-00AA00B67A42}";
const wchar_t* const mixingRendererClass = L"{51B4ABF3-748F-4E3B-A276-C828330E926A}";
const wchar_t* const plainRendererClass = L"{70E102B0-5556-11CE-97C0-00AA0055595A}";
const wchar_t* const deinterlaceControlId = L"{a215fb8d-13c2-4f7f-993c-003d6271a459}";

/// Bit of `SetDeinterlacePrefs` that prefers bob.
constexpr DWORD bobPreference = 2;
constexpr DWORD allStreams = 0xFFFFFFFF;

/// Frames that a replay without a capture graph may hold in memory.
constexpr unsigned long playOnlyFrames = 250;

/// The renderer's control of deinterlacing, or nothing when it has none.
vwin::com_<IVMRDeinterlaceControl9> deinterlaceControl(IBaseFilter* renderer) {
    vwin::com_<IVMRDeinterlaceControl9> control;
    if (renderer) {
        const vwin::com_clsid id(deinterlaceControlId);
        renderer->QueryInterface(id.guid(), reinterpret_cast<void**>(control.put()));
    }
    return control;
}

} // namespace

BuildStep PlayGraph::build(dvRecFilter& source) {
    if (!graph_.init(true)) {
        return BuildStep::playGraph;
    }
    graph_.registerFG();
    vvideo::dvMediaType type;
    source.getMediaType(*static_cast<_AMMediaType*>(type));
    if (!filter_.init(source.store(), type)) {
        return BuildStep::playFilter;
    }
    return connect();
}

BuildStep PlayGraph::buildAlone(unsigned long long from, unsigned long long to, const wchar_t* name) {
    if (!graph_.init(true)) {
        return BuildStep::playGraph;
    }
    if (!filter_.playinit(std::min(from, to), std::max(from, to), name, 1.0, settings_.playDelay_ms,
                          playOnlyFrames)) {
        return BuildStep::playFilter;
    }
    const BuildStep failed = connect();
    if (failed == BuildStep::none) {
        graph_.registerFG();
    }
    return failed;
}

/// Decoder and renderer, and their connections with the play filter.
BuildStep PlayGraph::connect() {
    failed_ = false;
    if (!decoder_.createS(decoderClass)) {
        return BuildStep::createDecoder;
    }
    if (!makeRenderer()) {
        return BuildStep::createRenderer;
    }
    if (!graph_.add(&filter_, L"dvPlayFilter")) {
        return BuildStep::addPlayFilter;
    }
    if (!graph_.add(decoder_.filter(), L"dvDecode")) {
        return BuildStep::addDecoder;
    }
    if (!graph_.add(renderer_.filter(), L"dvWindow")) {
        return BuildStep::addRenderer;
    }
    if (!graph_.connect(&filter_, L"Output", decoder_.filter(), L"XForm In", nullptr)) {
        return BuildStep::connectDecoder;
    }
    if (!graph_.connect(decoder_.filter(), L"XForm Out", renderer_.filter(), L"VMR Input0", nullptr) &&
        !graph_.connect(decoder_.filter(), L"XForm Out", renderer_.filter(), L"Input", nullptr)) {
        return BuildStep::connectRenderer;
    }
    preferBob();
    if (settings_.videoFilter == 1) {
        switchOffDeinterlacing();
    }
    return window_.ref(renderer_.filter()) ? BuildStep::none : BuildStep::videoWindow;
}

bool PlayGraph::run() {
    // A graph may say that it runs although its renderer has refused to.
    FILTER_STATE state = State_Stopped;
    failed_ = !graph_.run(0.0) || FAILED(renderer_.filter()->GetState(0, &state)) || state == State_Stopped;
    return !failed_;
}

bool PlayGraph::takeEvent(long& code, long long& parameter) {
    if (!graph_.takeEvent(code, parameter)) {
        return false;
    }
    if (code == EC_ERRORABORT || code == EC_USERABORT || code == EC_WINDOW_DESTROYED) {
        failed_ = true;
    }
    return true;
}

unsigned long PlayGraph::faults() const {
    return filter_.faults() | (failed_ ? play_no_graph : 0ul);
}

bool PlayGraph::makeRenderer() {
    const bool mixing = settings_.deinterlace;
    if (!renderer_.createS(mixing ? mixingRendererClass : plainRendererClass)) {
        return false;
    }
    log_.write(mixing ? "marvo created Mixing renderer 9" : "marvo created VideoRenderer", true);
    return true;
}

bool PlayGraph::preferBob() {
    if (!settings_.deinterlace) {
        return false;
    }
    const auto control = deinterlaceControl(renderer_.filter());
    if (!control) {
        return false;
    }
    log_.write("marvo deinterlace VideoRenderer9", true);
    return SUCCEEDED(control->SetDeinterlacePrefs(bobPreference));
}

void PlayGraph::switchOffDeinterlacing() {
    const auto control = deinterlaceControl(renderer_.filter());
    if (!control) {
        return;
    }
    log_.write("marvo deinterlacing VideoRenderer9 on init", true);
    GUID none = GUID_NULL;
    control->SetDeinterlaceMode(allStreams, &none);
}

void PlayGraph::endFilter() {
    filter_.setRecording(false);
    filter_.done();
}

void PlayGraph::closeFilters() {
    decoder_.close();
    renderer_.close();
    // A renderer's window must have left its owner before the renderer goes.
    if (window_) {
        window_->put_Visible(OAFALSE);
        window_->put_Owner(0);
        window_.clear();
    }
}

} // namespace frontend
