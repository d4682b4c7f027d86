#include "marvo/frontend/capture_graph.h"

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
    graph_.registerFG();
    if (!splitter_.createS(splitterClass)) {
        return BuildStep::createSplitter;
    }
    const vcore::str device = vcore::str(L"input") + vcore::str::toStr(input).oleStr();
    if (!graph_.addSource(device.oleStr(), source_, L"dvSource")) {
        return BuildStep::captureDevice;
    }
    if (!graph_.add(splitter_.filter(), L"dvSplitter")) {
        return BuildStep::addSplitter;
    }
    if (!graph_.add(&filter_, L"dvRecFilter")) {
        return BuildStep::addRecordFilter;
    }
    graph_.renderSource(source_);
    // A ring without a slot could be made, but every frame would be lost.
    if (frames == 0 || !filter_.init(frames)) {
        return BuildStep::frameStore;
    }
    graph_.run(0.0);
    awaitFirstFrames();
    return BuildStep::none;
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
