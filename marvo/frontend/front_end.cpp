#include "marvo/frontend/front_end.h"

#include "marvo/core/process_state.h"
#include "marvo/core/text.h"
#include "marvo/core/timed_guard.h"
#include "marvo/frontend/refusal.h"
#include "marvo/frontend/trouble_text.h"
#include "marvo/recording/drive_search.h"

#include <algorithm>

namespace {

constexpr const wchar_t* defaultFile = L"temp.dv";

constexpr int backlogAllowance_frames = 25;
constexpr int longestBreaker_ms = 20;

constexpr unsigned long widgetStyle = 0x100000;

} // namespace

dvFrontEnd dvFE;

dvFrontEnd::dvFrontEnd()
    : vwin::vWidget(L"VIDEOFRAME", widgetStyle), capture_(log_), play_(log_, settings_), recInfoLock_(1, 1),
      cameraWatch_(capture_, play_.filter(), log_, *this) {
    show(false);
    videoWidget_.hide(true);
    CoInitialize(nullptr);
    log_.open();
    recFilter().store().connect(L"poolInfo", this, this, &dvFrontEnd::onRecInfo);
    recFilter().store().connect(L"recError", this, this, &dvFrontEnd::onRecError);
    recFilter().store().connect(L"recEnd", this, this, &dvFrontEnd::onRecEnd);
    playFilter().connect(L"playTime", this, this, &dvFrontEnd::onPlayTime);
    playFilter().connect(L"playError", this, this, &dvFrontEnd::onPlayError);
    playFilter().connect(L"playFault", this, this, &dvFrontEnd::onPlayFault);
    settingsFiles_.readInto(settings_, log_);
    log_.writeSuppressible(settings_.logging);
    setDeinterlace(settings_.deinterlace);
    setReconnect(settings_.reconnect);
    if (settings_.maxFilesize_frames) {
        setMaxFilesize(*settings_.maxFilesize_frames);
    }
    initRecord();
}

dvFrontEnd::~dvFrontEnd() {
    if (vcore::processEnding()) {
        return;
    }
    hideWindow();
    done();
}

bool dvFrontEnd::init(HWND window, bool) {
    return settle(whole([&] { return build(window); }));
}

bool dvFrontEnd::playinit(HWND window, int from, int to, const char* name) {
    return settle(whole([&] {
        vcore::str file;
        file = name;
        const bool noFrame = from < 0 || to < 0;
        return buildPlayOnly(window, static_cast<unsigned>(from), static_cast<unsigned>(to),
                             noFrame ? nullptr : file.oleStr());
    }));
}

bool dvFrontEnd::playinitWide(HWND window, unsigned long long from, unsigned long long to,
                              const wchar_t* name) {
    return settle(whole([&] { return buildPlayOnly(window, from, to, name); }));
}

void dvFrontEnd::setSource(IBaseFilter* source) {
    capture_.setSource(source);
}

dvFrontEnd::Built dvFrontEnd::built() const {
    if (capture_.built()) {
        return Built::all;
    }
    return play_.built() ? Built::playAlone : Built::nothing;
}

bool dvFrontEnd::reinit(HWND window) {
    return showWindow(window);
}

bool dvFrontEnd::showWindow(HWND window) {
    return settle(whole([&] { return present(window); }));
}

bool dvFrontEnd::onError(const wchar_t* text) {
    return settle(whole([&] { return refuse(text); }));
}

void dvFrontEnd::done() {
    vcore::guarded([this] { takeApart(); });
    settle(true);
}

/// Carries a command out that may build the engine: wholly, or nothing of it is left.
template <class Command>
bool dvFrontEnd::whole(Command command) {
    return frontend::refusable(log_, false, command, [this] { takeApart(); });
}

/// The last act of every command that may have taken the engine apart.
bool dvFrontEnd::settle(bool result) {
    if (!capture_.built() && !play_.built() && !cameraWatch_.running()) {
        hold_.letGo();
    }
    return result;
}

bool dvFrontEnd::build(HWND window) {
    log("init", true);
    const frontend::Log::Scope scope(log_);
    if (capture_.built() && !cameraWatch_.changed()) {
        return present(window);
    }
    if (capture_.built() || play_.built()) {
        takeApart();
    }
    hold_.take();
    failedStep_ = frontend::BuildStep::captureGraph;
    if (!cameraWatch_.end()) {
        return refuse(L"no video - init - 1");
    }
    setWindow(window);
    initRecord();
    frontend::BuildStep failed = capture_.build(settings_.input, settings_.maxRecFrames);
    failedStep_ = failed;
    if (failed == frontend::BuildStep::captureDevice) {
        log("init result: no video source!", false);
        takeApart();
        return false;
    }
    if (failed == frontend::BuildStep::none) {
        failed = play_.build(recFilter());
    }
    failedStep_ = failed;
    if (failed != frontend::BuildStep::none) {
        return giveUp(failed);
    }
    runPlay(window);
    cameraWatch_.begin(settings_.input);
    return true;
}

bool dvFrontEnd::giveUp(frontend::BuildStep failed) {
    capture_.stop();
    capture_.release(true);
    play_.release(true);
    hide(true);
    const vcore::str text =
        vcore::str(L"no video - init - ") + vcore::str::toStr(static_cast<int>(failed)).oleStr();
    return refuse(text.oleStr());
}

bool dvFrontEnd::buildPlayOnly(HWND window, unsigned long long from, unsigned long long to,
                               const wchar_t* name) {
    log("playinit", true);
    const frontend::Log::Scope scope(log_);
    if (capture_.built() || play_.built()) {
        takeApart();
    }
    hold_.take();
    setWindow(window);
    failedStep_ = play_.buildAlone(from, to, name);
    if (failedStep_ != frontend::BuildStep::none) {
        play_.release(true);
        hide(true);
        return refuse(L"no video - playinit");
    }
    runPlay(window);
    return true;
}

/// Shows the video and starts it: the last step of both builds.
void dvFrontEnd::runPlay(HWND window) {
    present(window);
    startPlay();
    initialised_ = true;
}

bool dvFrontEnd::startPlay() {
    const bool started = play_.run();
    if (!started) {
        onPlayFault(play_no_graph, 1);
    }
    return started;
}

/// Makes the play graph anew for one that shows nothing any more. Capture and recording do not notice.
bool dvFrontEnd::rebuildPlay() {
    log("the play graph is made anew", false);
    const bool recording = playFilter().recording();
    const auto release = [this] {
        play_.revoke();
        play_.endFilter();
        play_.closeFilters();
        play_.release(false);
    };
    release();
    videoSeen_ = false;
    const frontend::BuildStep failed = failedStep_ = play_.build(recFilter());
    if (failed != frontend::BuildStep::none) {
        release();
        log((vcore::str(L"no video - show - ") + vcore::str::toStr(static_cast<int>(failed)).oleStr())
                .getStr(),
            false);
        return false;
    }
    playFilter().setRecording(recording);
    placeVideo();
    return startPlay();
}

bool dvFrontEnd::refuse(const wchar_t* text) {
    log("error", true);
    log(vcore::str(text).getStr(), false);
    const frontend::Log::Scope scope(log_);
    takeApart();
    return false;
}

void dvFrontEnd::takeApart() {
    log("done", false);
    const frontend::Log::Scope scope(log_);
    const bool captureIsFree = cameraWatch_.end();
    if (initialised_) {
        play_.revoke();
    }
    if (captureIsFree && initialised_) {
        capture_.revoke();
    }
    play_.endFilter();
    recFilter().done();
    if (captureIsFree) {
        capture_.closeFilters();
    }
    play_.closeFilters();
    play_.release(false);
    if (captureIsFree) {
        capture_.release(false);
    } else {
        capture_.abandon();
    }
    hide(true);
    videoSeen_ = false;
    initialised_ = false;
}

bool dvFrontEnd::_initVideoWindow() {
    return frontend::refusable(log_, false, [&] { return play_.makeRenderer(); });
}

bool dvFrontEnd::_configureVideoWindow() {
    return frontend::refusable(log_, false, [&] { return play_.preferBob(); });
}

bool dvFrontEnd::initRecord() {
    return frontend::refusable(log_, false, [&] {
        if (settings_.recFile != defaultFile) {
            return true;
        }
        vcore::str root;
        if (!dvDriveSearch::enough(dvDriveSearch().best(root, defaultFile))) {
            MessageBoxA(nullptr, "Not enough disk space for video replay!", "Tarvex", MB_OK);
            return false;
        }
        settings_.recFile = root + defaultFile;
        settings_.playFile = settings_.recFile;
        return true;
    });
}

bool dvFrontEnd::present(HWND window) {
    log("show", false);
    const frontend::Log::Scope scope(log_);
    if (!moveInto(window)) {
        return false;
    }
    // A play graph alone is shown as it is; building the capture graph would end its replay.
    if (!capture_.built() && !play_.built()) {
        return build(window);
    }
    placeVideo();
    const bool broken = capture_.built() && (!play_.built() || play_.broken() || videoGone());
    return !window || !broken || rebuildPlay();
}

/// Whether the renderer's window has gone with the thread that made it.
bool dvFrontEnd::videoGone() {
    const bool there = GetWindow(handle(), GW_CHILD) != nullptr;
    const bool gone = videoSeen_ && !there;
    videoSeen_ = there;
    return gone;
}

/// Puts the widget into `window` and shows it there; null: takes it out. A widget outside of any host would
/// be a bare popup on the desktop, so there it is hidden.
bool dvFrontEnd::moveInto(HWND window) {
    if (!window) {
        takeOut();
        return true;
    }
    RECT area{};
    if (!GetClientRect(window, &area)) {
        return false;
    }
    return reparent(window) && resize(area.right, area.bottom) && show(true);
}

void dvFrontEnd::placeVideo() {
    const dvVideoWindow& video = play_.window();
    if (!video) {
        return;
    }
    RECT area{};
    GetClientRect(handle(), &area);
    video->put_Owner(reinterpret_cast<OAHWND>(handle()));
    video->put_MessageDrain(reinterpret_cast<OAHWND>(hostWindow_));
    video->put_WindowStyle(WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN);
    video->SetWindowPosition(0, 0, area.right, area.bottom);
    video->put_Visible(OATRUE);
}

bool dvFrontEnd::hideWindow() {
    log("hide", false);
    const frontend::Log::Scope scope(log_);
    takeOut();
    return true;
}

void dvFrontEnd::takeOut() {
    hide(true);
    reparent(nullptr);
    if (play_.window()) {
        play_.window()->put_MessageDrain(reinterpret_cast<OAHWND>(hostWindow_));
    }
}

void dvFrontEnd::destroyEvent() {
    log("destroy", false);
    const frontend::Log::Scope scope(log_);
    takeOut();
    hostWindow_ = nullptr;
}

void dvFrontEnd::setWindow(HWND window) {
    if (window) {
        hostWindow_ = window;
    }
}

bool dvFrontEnd::setSize(int width, int height) {
    log("setSize", true);
    const frontend::Log::Scope scope(log_);
    const dvVideoWindow& video = play_.window();
    if (!video || !hostAnswers()) {
        return false;
    }
    video->put_Width(width);
    video->put_Height(height);
    resize(width, height);
    invalidate();
    return true;
}

bool dvFrontEnd::setPos(int x, int y) {
    log("setPos", true);
    const frontend::Log::Scope scope(log_);
    const dvVideoWindow& video = play_.window();
    if (!video || !hostAnswers()) {
        return false;
    }
    video->put_Left(x);
    video->put_Top(y);
    invalidate();
    return true;
}

void dvFrontEnd::resizeEvent(int, int) {}

void dvFrontEnd::timerEvent(char) {}

bool dvFrontEnd::live() {
    log("live", true);
    const frontend::Log::Scope scope(log_);
    return playFilter().live();
}

bool dvFrontEnd::pause() {
    log("pause", true);
    const frontend::Log::Scope scope(log_);
    return playFilter().setPause(true);
}

bool dvFrontEnd::resume() {
    log("resume", true);
    const frontend::Log::Scope scope(log_);
    return playFilter().setPause(false);
}

bool dvFrontEnd::replay(unsigned long long from, unsigned long long to, const wchar_t* file) {
    return frontend::refusable(log_, false, [&] {
        log("replay", true);
        const frontend::Log::Scope scope(log_);
        if (!play_.built()) {
            return false;
        }
        return playFilter().play(from, to, file && *file ? file : settings_.playFile.oleStr(), 1.0,
                                 settings_.playDelay_ms, settings_.maxPlayFrames);
    });
}

bool dvFrontEnd::setSpeed(double factor) {
    log("speed", true);
    const frontend::Log::Scope scope(log_);
    return playFilter().setSpeed(factor);
}

bool dvFrontEnd::seekPosition(unsigned long long frame) {
    log("seek", true);
    const frontend::Log::Scope scope(log_);
    playFilter().seekFrame(static_cast<long long>(frame));
    return true;
}

bool dvFrontEnd::startRecord(const wchar_t* file) {
    return frontend::refusable(log_, false, [&] {
        log("startRecord", true);
        const frontend::Log::Scope scope(log_);
        elements_.clear();
        const wchar_t* const name = file && *file ? file : settings_.recFile.oleStr();
        const bool started = recFilter().store().startRecord(name);
        if (!started) {
            const vcore::str text = vcore::str(L"startRecord result: ") + name + L" cannot be recorded: " +
                                    recordStatus().firstErrorText;
            log(text.getStr(), false);
        }
        playFilter().setRecording(started);
        playFilter().reset();
        return started;
    });
}

void dvFrontEnd::stopRecord() {
    frontend::refusable(log_, [&] {
        log("stopRecord", true);
        const frontend::Log::Scope scope(log_);
        playFilter().setRecording(false);
        recFilter().store().stopRecord();
    });
}

bool dvFrontEnd::call(const char* text) {
    return frontend::refusable(log_, false, [&] {
        vcore::str marker;
        marker = text;
        const vcore::str logged = settings_.control ? marker : vcore::str(L"_") + marker.oleStr();
        log(logged.getStr(), false);
        const frontend::Log::Scope scope(log_);
        if (!settings_.control) {
            return true;
        }
        if (marker.startsWith(L"XI") || marker.startsWith(L"XO")) {
            elements_.set(marker);
        } else if (marker.startsWith(L"XR")) {
            markerClock_.start();
        } else if (marker.startsWith(L"Z+")) {
            markerClock_.stop();
        }
        return true;
    });
}

bool dvFrontEnd::playElement(int element) {
    const auto range = elements_.range(element);
    return range && replay(range->first, range->second, nullptr);
}

bool dvFrontEnd::setElement(int element, long long in, long long out) {
    const bool there = element >= 0 && element < frontend::Elements::count;
    if (there) {
        elements_.set(element, in, out);
    }
    return there;
}

std::pair<long long, long long> dvFrontEnd::element(int element) const {
    const bool there = element >= 0 && element < frontend::Elements::count;
    return there ? elements_.points(element) : std::pair<long long, long long>{-1, -1};
}

void dvFrontEnd::setControl(bool on) {
    settings_.control = on;
}

void dvFrontEnd::setLogging(bool on) {
    settings_.logging = on;
    log_.writeSuppressible(on);
}

void dvFrontEnd::setVideoFilter(int filter) {
    settings_.videoFilter = filter;
}

void dvFrontEnd::setInput(int input) {
    settings_.input = input;
}

void dvFrontEnd::setRecFile(const wchar_t* name) {
    frontend::refusable(log_, [&] { settings_.recFile = name; });
}

void dvFrontEnd::setPlayFile(const wchar_t* name) {
    frontend::refusable(log_, [&] { settings_.playFile = name; });
}

void dvFrontEnd::setRemoteFile(const wchar_t* name) {
    frontend::refusable(log_, [&] { recFilter().store().setRemoteFile(name); });
}

void dvFrontEnd::setMaxRecFrames(unsigned long frames) {
    settings_.maxRecFrames = frames;
}

void dvFrontEnd::setMaxPlayFrames(unsigned long frames) {
    settings_.maxPlayFrames = frames;
}

void dvFrontEnd::setPlayDelay(int ms) {
    settings_.playDelay_ms = std::clamp(ms, 0, dvPlayFilter::longestPlayDelay_ms);
}

void dvFrontEnd::setMaxFilesize(unsigned long frames) {
    recFilter().store().setMaxFilesize(static_cast<long long>(frames));
}

void dvFrontEnd::setDeinterlace(bool on) {
    log(on ? "marvo set deinterlacing on" : "marvo set deinterlacing off", true);
    settings_.deinterlace = on;
}

dvCameraState dvFrontEnd::cameraState() const {
    return cameraWatch_.state();
}

void dvFrontEnd::setReconnect(bool on) {
    settings_.reconnect = on;
    cameraWatch_.reconnect(on);
}

HWND dvFrontEnd::setInfoDrain(HWND window, unsigned message, play_info* info) {
    return playFilter().setInfoDrain(window, message, info);
}

void dvFrontEnd::getRecFilename(char* buffer) {
    frontend::refusable(log_, [&] { settings_.recFile.copyTo(buffer); });
}

dvRecFilter& dvFrontEnd::recFilter() {
    return capture_.filter();
}

dvPlayFilter& dvFrontEnd::playFilter() {
    return play_.filter();
}

bool dvFrontEnd::paused() {
    return playFilter().paused();
}

bool dvFrontEnd::playing() {
    return playFilter().playing();
}

double dvFrontEnd::speed() {
    return playFilter().speed();
}

unsigned long long dvFrontEnd::lastFrame() {
    return recFilter().store().lastFrame();
}

unsigned long long dvFrontEnd::playedFrame() {
    return playFilter().playedFrame();
}

unsigned long long dvFrontEnd::writtenFrame() {
    return recFilter().store().writtenFrame();
}

record_status dvFrontEnd::recordStatus() {
    return recFilter().store().recordStatus();
}

unsigned long dvFrontEnd::frameSize() {
    return recFilter().store().frameSize();
}

unsigned long dvFrontEnd::framesPerSecond() {
    return recFilter().store().framesPerSecond();
}

unsigned long dvFrontEnd::frameCount() {
    return recFilter().frameCount();
}

int dvFrontEnd::getTime() {
    const unsigned long msPerFrame = 1000 / framesPerSecond();
    return static_cast<int>(msPerFrame * static_cast<std::uint32_t>(playedFrame()) -
                            markerClock_.offset_ms());
}

int dvFrontEnd::getRawTime() {
    return static_cast<int>(playedFrame() * 1000 / framesPerSecond());
}

void dvFrontEnd::log(const char* text, bool suppressible) {
    log_.write(text, suppressible);
}

void dvFrontEnd::logBegin() {
    log_.deeper();
}

void dvFrontEnd::logEnd() {
    log_.shallower();
}

void dvFrontEnd::onRecInfo(unsigned long long last, unsigned long long written, unsigned long poolSize) {
    vcore::timed_guard lock(recInfoLock_, 500);
    const auto backlog = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(last) - static_cast<std::uint32_t>(written) - backlogAllowance_frames);
    playFilter().setBreaker(static_cast<unsigned long>(std::clamp(backlog, 0, longestBreaker_ms)));
    emitSignal(L"recInfo", 20, last, written, poolSize);
}

void dvFrontEnd::onRecError(unsigned long long frame, unsigned long long frames, unsigned long systemError,
                            record_event event) {
    log(frontend::recordingText(event, frame, frames, systemError).c_str(), false);
    emitSignal(L"recError", 24, frame, frames, systemError, event);
}

void dvFrontEnd::onRecEnd() {
    const vcore::str name(recFilter().store().fileName());
    log(frontend::totalsText(name.getStr(), recordStatus()).c_str(), false);
    emitSignal(L"recEnd", 0);
}

void dvFrontEnd::onPlayTime() {
    constexpr unsigned long ticksPerLook = 8;
    if (++playTicks_ % ticksPerLook != 0) {
        return;
    }
    long code = 0;
    long long parameter = 0;
    while (play_.takeEvent(code, parameter)) {
        log(frontend::eventText(code, parameter).c_str(), !frontend::isKnownEvent(code));
        emitSignal(L"playEvent", 12, code, parameter);
    }
}

play_error dvFrontEnd::playError() {
    return playFilter().unreadable();
}

unsigned long dvFrontEnd::playFaults() {
    return play_.faults();
}

void dvFrontEnd::onPlayError(unsigned long long first, unsigned long long frames, unsigned long error) {
    vcore::str file = playFilter().replayFile();
    log(frontend::errorText(file.getStr(), {first, frames, error}).c_str(), false);
    emitSignal(L"playError", 20, first, frames, error);
}

void dvFrontEnd::onPlayFault(unsigned long fault, unsigned long begun) {
    log(frontend::faultText(fault, begun != 0).c_str(), false);
    emitSignal(L"playFault", 8, fault, begun);
}
