#include "marvo/frontend/capture_graph.h"

#include "marvo/com/pins.h"
#include "marvo/core/str.h"

#include <cstdio>

namespace frontend {

namespace {

const wchar_t* const splitterClass = L"{4EB31670-9FC6-11CF-AF6E-00AA00B67A42}";

constexpr unsigned long firstFramesStep_ms = 50;
constexpr unsigned long firstFramesLimit_ms = 5000;

} // namespace

BuildStep CaptureGraph::build(int input, unsigned long frames) {
    if (!graph_.init(true)) {
        return BuildStep::captureGraph;
    }
    built_ = true;
    graph_.registerFG();
    if (!given_ && !splitter_.createS(splitterClass)) {
        return BuildStep::createSplitter;
    }
    if (!addSource(input)) {
        return BuildStep::captureDevice;
    }
    if (const BuildStep failed = addFilters(); failed != BuildStep::none) {
        return failed;
    }
    // A ring without a slot could be made, but every frame would be lost.
    if (frames == 0 || !filter_.init(frames)) {
        return BuildStep::frameStore;
    }
    format_ = connectedFormat();
    graph_.run(0.0);
    if (!given_) {
        awaitFirstFrames();
    }
    return BuildStep::none;
}

bool CaptureGraph::addSource(int input) {
    if (given_) {
        return source_.ref(given_.ptr()) && graph_.add(source_.filter(), L"dvSource");
    }
    const vcore::str device = vcore::str(L"input") + vcore::str::toStr(input).oleStr();
    return graph_.addSource(device.oleStr(), source_, L"dvSource");
}

/// Adds what follows the source, and connects it.
BuildStep CaptureGraph::addFilters() {
    if (splitter_ && !graph_.add(splitter_.filter(), L"dvSplitter")) {
        return BuildStep::addSplitter;
    }
    if (!graph_.add(&filter_, L"dvRecFilter")) {
        return BuildStep::addRecordFilter;
    }
    graph_.renderSource(source_);
    return BuildStep::none;
}

CaptureGraph::Format CaptureGraph::connectedFormat() {
    vvideo::dvMediaType type;
    filter_.getMediaType(*static_cast<_AMMediaType*>(type));
    return {type.frameSize(), type.timePerFrame()};
}

bool CaptureGraph::recordFilterConnected() {
    return static_cast<bool>(vwin::peerOf(vwin::findPin(&filter_, L"Input", PINDIR_INPUT).ptr()));
}

long CaptureGraph::failure() {
    vwin::com_<IMediaEventEx> events;
    if (!events.ref(graph_.graph())) {
        return 0;
    }
    long failed = 0;
    long code = 0;
    LONG_PTR first = 0;
    LONG_PTR second = 0;
    while (SUCCEEDED(events->GetEvent(&code, &first, &second, 0))) {
        // A device that comes back is told by the same event.
        const bool lost = code == EC_DEVICE_LOST && second == 0;
        if (lost || code == EC_ERRORABORT || code == EC_STREAM_ERROR_STOPPED) {
            failed = code;
        }
        events->FreeEventParams(code, first, second);
    }
    return failed;
}

void CaptureGraph::close() {
    graph_.done(false);
    closeFilters();
}

CaptureGraph::Reopening CaptureGraph::reopen(int input, const std::function<bool()>& goOn) {
    // Left as it was when reopening was off.
    if (source_) {
        close();
    }
    const Reopening result = runAgain(input, goOn);
    if (result == Reopening::failed || result == Reopening::otherFormat) {
        close();
    }
    return result;
}

/// The graph stays empty between the attempts, since each one made costs the system something.
CaptureGraph::Reopening CaptureGraph::runAgain(int input, const std::function<bool()>& goOn) {
    if (!graph_.built() && !graph_.init(true)) {
        return Reopening::failed;
    }
    if (!addSource(input)) {
        return Reopening::absent;
    }
    graph_.registerFG();
    const auto split = [this] { return given_ || splitter_.createS(splitterClass); };
    if (!goOn() || !split() || addFilters() != BuildStep::none || !recordFilterConnected()) {
        return Reopening::failed;
    }
    found_ = connectedFormat();
    if (found_ != format_) {
        return Reopening::otherFormat;
    }
    return graph_.run(0.0) && goOn() ? Reopening::done : Reopening::failed;
}

void CaptureGraph::release(bool wait) {
    graph_.done(wait);
    built_ = false;
}

void CaptureGraph::awaitFirstFrames() {
    unsigned long frames = 0;
    unsigned long waited_ms = 0;
    while (frames == 0 && waited_ms < firstFramesLimit_ms) {
        Sleep(firstFramesStep_ms);
        waited_ms += firstFramesStep_ms;
        frames += filter_.frameCount();
    }
    char text[96];
    std::snprintf(text, sizeof(text), "init result: %lu frames captured at %lu msec", frames, waited_ms);
    log_.write(text, false);
}

void CaptureGraph::closeFilters() {
    splitter_.close();
    source_.clear();
}

} // namespace frontend
