#include "marvo/frontend/front_end.h"

#include "marvo/com/com_clsid.h"
#include "marvo/frontend/front_end_log_scope.h"

// d3d9.h has what vmr9.h expects to find.
#include <d3d9.h>
#include <vmr9.h>

#include <algorithm>
#include <cstdio>

namespace {

// The system's own filters, and the interface of its mixing renderer:
const wchar_t* const splitterClass = L"{4EB31670-9FC6-11CF-AF6E-00AA00B67A42}";
const wchar_t* const decoderClass = L"{B1B77C00-C3E4-11CF-AF79-00AA00B67A42}";
const wchar_t* const mixingRendererClass = L"{51B4ABF3-748F-4E3B-A276-C828330E926A}";
const wchar_t* const plainRendererClass = L"{70E102B0-5556-11CE-97C0-00AA0055595A}";
const wchar_t* const deinterlaceControlId = L"{a215fb8d-13c2-4f7f-993c-003d6271a459}";

/// What `buildCapture` returns when there is no capture device: no step number, since it is reported
/// otherwise.
constexpr int noSource = -1;

/// Bit of `SetDeinterlacePrefs` that prefers bob.
constexpr DWORD preferBob = 2;
constexpr DWORD allStreams = 0xFFFFFFFF;

constexpr unsigned long firstFramesStep_ms = 50;
constexpr unsigned long firstFramesLimit_ms = 5000;

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

bool dvFrontEnd::init(HWND window, bool) {
    log("init", true);
    const LogScope scope(*this);
    if (captureGraph_.built()) {
        return showWindow(window);
    }
    if (playGraph_.built()) {
        done();
    }
    setWindow(window);
    initRecord();
    int failedStep = buildCapture();
    if (failedStep == noSource) {
        log("init result: no video source!", false);
        done();
        return false;
    }
    if (failedStep == 0) {
        failedStep = buildPlay();
    }
    if (failedStep != 0) {
        return giveUp(failedStep);
    }
    runPlay(window);
    return true;
}

bool dvFrontEnd::giveUp(int failedStep) {
    captureGraph_.stop();
    captureGraph_.done(true);
    playGraph_.done(true);
    hide(true);
    const vcore::str text = vcore::str(L"no video - init - ") + vcore::str::toStr(failedStep).oleStr();
    return onError(text.oleStr());
}

/// Steps 1 to 7. The result is the number of the step that failed, or 0.
int dvFrontEnd::buildCapture() {
    if (!captureGraph_.init(true)) {
        return 1;
    }
    captureGraph_.registerFG();
    if (!splitter_.createS(splitterClass)) {
        return 2;
    }
    const vcore::str device = vcore::str(L"input") + vcore::str::toStr(input_).oleStr();
    if (!captureGraph_.addSource(device.oleStr(), source_, L"dvSource")) {
        return noSource;
    }
    if (!captureGraph_.add(splitter_.filter(), L"dvSplitter")) {
        return 3;
    }
    if (!captureGraph_.add(&recFilter_, L"dvRecFilter")) {
        return 4;
    }
    captureGraph_.renderSource(source_);
    if (!recFilter_.init(maxRecFrames_)) {
        return 7;
    }
    captureGraph_.run(0.0);
    awaitFirstFrames();
    return 0;
}

void dvFrontEnd::awaitFirstFrames() {
    unsigned long frames = 0;
    unsigned long waited_ms = 0;
    while (frames == 0 && waited_ms < firstFramesLimit_ms) {
        Sleep(firstFramesStep_ms);
        waited_ms += firstFramesStep_ms;
        frames += recFilter_.frameCount();
    }
    char text[96];
    std::snprintf(text, sizeof(text), "init result: %lu frames captured at %lu msec", frames, waited_ms);
    log(text, false);
}

/// Steps 8 to 17, with the frame store as the play filter's source.
int dvFrontEnd::buildPlay() {
    if (!playGraph_.init(true)) {
        return 8;
    }
    playGraph_.registerFG();
    vvideo::dvMediaType type;
    recFilter_.getMediaType(*static_cast<_AMMediaType*>(type));
    if (!playFilter_.init(recFilter_.store(), type)) {
        return 9;
    }
    return connectPlay();
}

/// Steps 10 to 17: decoder and renderer, and their connections with the play filter.
int dvFrontEnd::connectPlay() {
    if (!decoder_.createS(decoderClass)) {
        return 10;
    }
    if (!_initVideoWindow()) {
        return 11;
    }
    if (!playGraph_.add(&playFilter_, L"dvPlayFilter")) {
        return 12;
    }
    if (!playGraph_.add(decoder_.filter(), L"dvDecode")) {
        return 13;
    }
    if (!playGraph_.add(renderer_.filter(), L"dvWindow")) {
        return 14;
    }
    if (!playGraph_.connect(&playFilter_, L"Output", decoder_.filter(), L"XForm In", nullptr)) {
        return 15;
    }
    if (!playGraph_.connect(decoder_.filter(), L"XForm Out", renderer_.filter(), L"VMR Input0", nullptr) &&
        !playGraph_.connect(decoder_.filter(), L"XForm Out", renderer_.filter(), L"Input", nullptr)) {
        return 16;
    }
    _configureVideoWindow();
    if (videoFilter_ == 1) {
        switchOffDeinterlacing();
    }
    return videoWindow_.ref(renderer_.filter()) ? 0 : 17;
}

bool dvFrontEnd::_initVideoWindow() {
    if (!renderer_.createS(deinterlace_ ? mixingRendererClass : plainRendererClass)) {
        return false;
    }
    log(deinterlace_ ? "marvo created Mixing renderer 9" : "marvo created VideoRenderer", true);
    return true;
}

bool dvFrontEnd::_configureVideoWindow() {
    if (!deinterlace_) {
        return false;
    }
    const auto control = deinterlaceControl(renderer_.filter());
    if (!control) {
        return false;
    }
    log("marvo deinterlace VideoRenderer9", true);
    return SUCCEEDED(control->SetDeinterlacePrefs(preferBob));
}

void dvFrontEnd::switchOffDeinterlacing() {
    const auto control = deinterlaceControl(renderer_.filter());
    if (!control) {
        return;
    }
    log("marvo deinterlacing VideoRenderer9 on init", true);
    GUID none = GUID_NULL;
    control->SetDeinterlaceMode(allStreams, &none);
}

/// Shows the video and starts it: the last step of both builds.
void dvFrontEnd::runPlay(HWND window) {
    showWindow(window);
    playGraph_.run(0.0);
    initialised_ = true;
}

bool dvFrontEnd::playinit(HWND window, int from, int to, const char* name) {
    log("playinit", true);
    const LogScope scope(*this);
    if (captureGraph_.built() || playGraph_.built()) {
        done();
    }
    setWindow(window);
    vcore::str file;
    file = name;
    if (!playGraph_.init(true) || from < 0 || to < 0 ||
        !playFilter_.playinit(static_cast<unsigned long long>(std::min(from, to)),
                              static_cast<unsigned long long>(std::max(from, to)), file.oleStr(), 1.0,
                              playDelay_ms_, playOnlyFrames) ||
        connectPlay() != 0) {
        playGraph_.done(true);
        hide(true);
        return onError(L"no video - playinit");
    }
    playGraph_.registerFG();
    runPlay(window);
    return true;
}

bool dvFrontEnd::reinit(HWND window) {
    return showWindow(window);
}

bool dvFrontEnd::onError(const wchar_t* text) {
    log("error", true);
    log(vcore::str(text).getStr(), false);
    const LogScope scope(*this);
    done();
    return false;
}

void dvFrontEnd::done() {
    log("done", false);
    const LogScope scope(*this);
    if (initialised_) {
        playGraph_.unregisterFG();
        captureGraph_.unregisterFG();
    }
    playFilter_.done();
    recFilter_.done();
    splitter_.close();
    source_.clear();
    decoder_.close();
    renderer_.close();
    releaseVideoWindow();
    playGraph_.done(false);
    captureGraph_.done(false);
    hide(true);
    initialised_ = false;
}

/// A renderer's window must have left its owner before the renderer goes.
void dvFrontEnd::releaseVideoWindow() {
    if (videoWindow_) {
        videoWindow_->put_Visible(OAFALSE);
        videoWindow_->put_Owner(0);
        videoWindow_.clear();
    }
}

bool dvFrontEnd::showWindow(HWND window) {
    log("show", false);
    const LogScope scope(*this);
    RECT area{};
    if (window && GetClientRect(window, &area)) {
        resize(area.right, area.bottom);
    }
    reparent(window);
    show(true);
    // A play graph alone is shown as it is; building the capture graph would end its replay.
    if (!captureGraph_.built() && !playGraph_.built()) {
        return init(window, false);
    }
    placeVideo();
    return true;
}

void dvFrontEnd::placeVideo() {
    if (!videoWindow_) {
        return;
    }
    RECT area{};
    GetClientRect(handle(), &area);
    videoWindow_->put_Owner(reinterpret_cast<OAHWND>(handle()));
    videoWindow_->put_MessageDrain(reinterpret_cast<OAHWND>(hostWindow_));
    videoWindow_->put_WindowStyle(WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN);
    videoWindow_->SetWindowPosition(0, 0, area.right, area.bottom);
    videoWindow_->put_Visible(OATRUE);
}

bool dvFrontEnd::hideWindow() {
    log("hide", false);
    const LogScope scope(*this);
    takeBack();
    return true;
}

void dvFrontEnd::takeBack() {
    reparent(nullptr);
    if (videoWindow_) {
        videoWindow_->put_MessageDrain(reinterpret_cast<OAHWND>(hostWindow_));
    }
}

void dvFrontEnd::destroyEvent() {
    log("destroy", false);
    const LogScope scope(*this);
    takeBack();
    hostWindow_ = nullptr;
}

bool dvFrontEnd::setSize(int width, int height) {
    log("setSize", true);
    const LogScope scope(*this);
    if (!videoWindow_) {
        return false;
    }
    videoWindow_->put_Width(width);
    videoWindow_->put_Height(height);
    resize(width, height);
    invalidate();
    return true;
}

bool dvFrontEnd::setPos(int x, int y) {
    log("setPos", true);
    const LogScope scope(*this);
    if (!videoWindow_) {
        return false;
    }
    videoWindow_->put_Left(x);
    videoWindow_->put_Top(y);
    invalidate();
    return true;
}

bool dvFrontEnd::live() {
    log("live", true);
    const LogScope scope(*this);
    return playFilter_.live();
}

bool dvFrontEnd::pause() {
    log("pause", true);
    const LogScope scope(*this);
    return playFilter_.setPause(true);
}

bool dvFrontEnd::resume() {
    log("resume", true);
    const LogScope scope(*this);
    return playFilter_.setPause(false);
}

bool dvFrontEnd::replay(unsigned long long from, unsigned long long to, const wchar_t* file) {
    log("replay", true);
    const LogScope scope(*this);
    if (!playGraph_.built()) {
        return false;
    }
    return playFilter_.play(from, to, file && *file ? file : playFile_.oleStr(), 1.0, playDelay_ms_,
                            maxPlayFrames_);
}

bool dvFrontEnd::setSpeed(double factor) {
    log("speed", true);
    const LogScope scope(*this);
    return playFilter_.setSpeed(factor);
}

bool dvFrontEnd::seekPosition(unsigned long long frame) {
    log("seek", true);
    const LogScope scope(*this);
    playFilter_.seekFrame(static_cast<long long>(frame));
    return true;
}

bool dvFrontEnd::startRecord(const wchar_t* file) {
    log("startRecord", true);
    const LogScope scope(*this);
    elementIn_.fill(-1);
    elementOut_.fill(-1);
    const bool started = recFilter_.store().startRecord(file && *file ? file : recFile_.oleStr());
    playFilter_.setRecording(started);
    playFilter_.reset();
    return started;
}

void dvFrontEnd::stopRecord() {
    log("stopRecord", true);
    const LogScope scope(*this);
    playFilter_.setRecording(false);
    recFilter_.store().stopRecord();
}
