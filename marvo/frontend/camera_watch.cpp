#include "marvo/frontend/camera_watch.h"

#include "marvo/core/timed_guard.h"

#include <algorithm>
#include <cstdio>

namespace frontend {

namespace {

constexpr int lookPeriod_ms = 250;
constexpr unsigned long silence_ms = 1000;
constexpr unsigned long endWait_ms = 3000;
constexpr unsigned long stateWait_ms = 50;

template <class... Values>
void writeLine(Log& log, const char* format, Values... values) {
    char line[192];
    std::snprintf(line, sizeof(line), format, values...);
    log.write(line, false);
}

double milliseconds(const CaptureGraph::Format& format) {
    return static_cast<double>(format.framePeriod_100ns) / 10000.0;
}

} // namespace

CameraWatch::CameraWatch(CaptureGraph& capture, dvPlayFilter& play, Log& log, vcore::vObject& teller)
    : capture_(capture), play_(play), log_(log), teller_(teller), stateLock_(1, 1) {
    enter(dvCameraState::none);
}

CameraWatch::~CameraWatch() {
    end();
}

void CameraWatch::begin(int input) {
    input_ = input;
    deviceLost_ = reopened_ = false;
    countBefore_ = arrivals().count();
    gapBegin_ms_ = GetTickCount64();
    lost_ = 0;
    enter(dvCameraState::live);
    start();
}

bool CameraWatch::end() {
    stop(0);
    if (wait(endWait_ms) && running()) {
        log_.write("camera: the device does not answer", false);
        return false;
    }
    enter(dvCameraState::none);
    return true;
}

dvCameraState CameraWatch::state() const {
    vcore::timed_guard lock(stateLock_, stateWait_ms);
    dvCameraState now;
    now.state = state_;
    now.since_ms = static_cast<unsigned long>(GetTickCount64() - since_ms_);
    now.lost = lost_;
    return now;
}

void CameraWatch::enter(dvCameraState::State state) {
    seen_ = state;
    vcore::timed_guard lock(stateLock_, stateWait_ms);
    state_ = state;
    since_ms_ = GetTickCount64();
}

unsigned long long CameraWatch::newestFrame() {
    return capture_.filter().store().lastFrame() - 1;
}

void CameraWatch::run() {
    const uninterruptible whole;
    while (seen_ != dvCameraState::changed && !finishing(lookPeriod_ms)) {
        look();
    }
}

/// A device that is gone sends nothing; that is no news of its own.
void CameraWatch::look() {
    const long event = deviceLost_ ? 0 : capture_.failure();
    lookForFrames();
    if (event != 0) {
        lose(event);
        return;
    }
    lookForSilence();
    if (deviceLost_ && reconnect_) {
        open();
    }
}

/// The frames' number is looked up before their count: while the count stands still, the next frame to come
/// gets that number, unless a recording begins before.
void CameraWatch::lookForFrames() {
    const unsigned long long next = capture_.filter().store().lastFrame();
    const unsigned long count = arrivals().count();
    const unsigned long long latest_ms = arrivals().latest_ms();
    if (count == countBefore_) {
        nextFrame_ = next;
        return;
    }
    const unsigned long long gapBegin_ms = gapBegin_ms_;
    countBefore_ = count;
    gapBegin_ms_ = latest_ms;
    if (seen_ == dvCameraState::live) {
        return;
    }
    reopened_ = false;
    // Where nobody opens the device anew, its own filter may have come back to life.
    deviceLost_ = deviceLost_ && reconnect_;
    const unsigned long long first = next < nextFrame_ ? 0 : nextFrame_;
    // A frame that came while the gap was being noted may have been the only one since.
    const unsigned long long noted_ms = arrivals().firstAfterGap_ms();
    const auto gap_ms = static_cast<unsigned long>((noted_ms != 0 ? noted_ms : latest_ms) - gapBegin_ms);
    enter(dvCameraState::live);
    writeLine(log_, "camera: frames again from %llu after a gap of %lu msec", first, gap_ms);
    teller_.emitSignal(L"cameraBack", 12, first, gap_ms);
}

void CameraWatch::lookForSilence() {
    const unsigned long long quiet_ms = GetTickCount64() - gapBegin_ms_;
    if (seen_ != dvCameraState::live || quiet_ms < silence_ms) {
        return;
    }
    arrivals().beginGap();
    enter(dvCameraState::silent);
    writeLine(log_, "camera: no frames for %lu msec, the newest is %lld",
              static_cast<unsigned long>(quiet_ms), static_cast<long long>(newestFrame()));
    teller_.emitSignal(L"cameraStalled", 8, newestFrame());
}

void CameraWatch::lose(long event) {
    deviceLost_ = true;
    if (reconnect_) {
        capture_.close();
        lookForFrames();
    }
    if (reopened_) {
        failAgain();
        return;
    }
    if (seen_ == dvCameraState::live) {
        arrivals().beginGap();
        countBefore_ = arrivals().count();
        gapBegin_ms_ = std::max(gapBegin_ms_, arrivals().latest_ms());
    }
    failureTold_ = false;
    nextFrame_ = capture_.filter().store().lastFrame();
    ++lost_;
    enter(dvCameraState::gone);
    writeLine(log_, "camera: lost after frame %lld (event 0x%02lx)%s", static_cast<long long>(newestFrame()),
              static_cast<unsigned long>(event), reconnect_ ? "" : ", left to the host");
    teller_.emitSignal(L"cameraLost", 8, newestFrame());
}

/// A device that is there but does not start: nothing new for the host.
void CameraWatch::failAgain() {
    reopened_ = false;
    if (!failureTold_) {
        failureTold_ = true;
        log_.write("camera: there, but it does not start", false);
    }
    enter(dvCameraState::gone);
}

void CameraWatch::open() {
    const ULONGLONG begin = GetTickCount64();
    const auto result = capture_.reopen(input_, [this] { return !finishing(0); });
    if (result == CaptureGraph::Reopening::otherFormat) {
        giveUpFormat();
    } else if (result == CaptureGraph::Reopening::done) {
        deviceLost_ = false;
        reopened_ = true;
        writeLine(log_, "camera: opened again in %lu msec",
                  static_cast<unsigned long>(GetTickCount64() - begin));
        enter(dvCameraState::silent);
    } else if (result == CaptureGraph::Reopening::failed && !finishing(0)) {
        failAgain();
    }
}

void CameraWatch::giveUpFormat() {
    const CaptureGraph::Format& found = capture_.foundFormat();
    const CaptureGraph::Format& ring = capture_.format();
    capture_.filter().store().endRecord();
    play_.setRecording(false);
    enter(dvCameraState::changed);
    writeLine(log_,
              "camera: back with frames of %lu bytes every %.2f msec, not %lu every %.2f: recording ended, "
              "init is needed",
              found.frameBytes, milliseconds(found), ring.frameBytes, milliseconds(ring));
    teller_.emitSignal(L"cameraChanged", 4, found.frameBytes);
}

} // namespace frontend
