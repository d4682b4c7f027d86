#include "app/marvo_engine.h"

#include "app/disk.h"
#include "app/system_text.h"
#include "app/text.h"

#include <algorithm>

namespace app {

namespace {

constexpr std::int64_t palFrame_100ns = 400000;
constexpr std::int64_t ntscFrame_100ns = 333667;
constexpr unsigned long palFrame_bytes = 144000;

/// Any name but the library's own default keeps the library from choosing a drive, and from asking about it.
constexpr wchar_t unusedRecFile[] = L"marvo-replay.avi";

/// A file's name in the system's narrow code page; empty when it has characters that are not in there.
std::string narrow(const std::wstring& name) {
    const int size = static_cast<int>(name.size());
    BOOL lossy = FALSE;
    std::string result(WideCharToMultiByte(CP_ACP, 0, name.data(), size, nullptr, 0, nullptr, nullptr), '\0');
    WideCharToMultiByte(CP_ACP, 0, name.data(), size, result.data(), static_cast<int>(result.size()), nullptr,
                        &lossy);
    return lossy ? std::string() : result;
}

/// The same, with the file's short name where its own cannot be said.
std::string narrowFile(const std::wstring& name) {
    std::string result = narrow(name);
    wchar_t shortName[MAX_PATH];
    if (const DWORD length = GetShortPathNameW(name.c_str(), shortName, MAX_PATH);
        result.empty() && length > 0 && length < MAX_PATH) {
        result = narrow(std::wstring(shortName, length));
    }
    return result;
}

EngineState::Camera cameraOf(dvCameraState::State state) {
    using Camera = EngineState::Camera;
    constexpr Camera states[] = {Camera::none, Camera::live, Camera::silent, Camera::gone, Camera::changed};
    return states[state];
}

} // namespace

MarvoEngine::MarvoEngine(HWND videoArea, HWND drain, unsigned message) : videoArea_(videoArea) {
    dvFE.setRecFile(unusedRecFile);
    dvFE.setInfoDrain(drain, message, &info_);
}

MarvoEngine::~MarvoEngine() {
    stop();
    dvFE.setInfoDrain(nullptr, 0, nullptr);
}

void MarvoEngine::set(const Options& options) {
    options_ = options;
    dvFE.setPlayDelay(options_.delay_ms);
}

bool MarvoEngine::done(bool worked, const std::wstring& explanation) {
    explanation_ = worked ? L"" : explanation;
    return worked;
}

bool MarvoEngine::start() {
    stop();
    if (vwin::com_fg::sourceCount() == 0) {
        return done(false);
    }
    dvFE.setInput(options_.input);
    dvFE.setMaxRecFrames(options_.ring_frames);
    dvFE.setPlayDelay(options_.delay_ms);
    dvFE.setDeinterlace(options_.deinterlace);
    built_ = dvFE.init(videoArea_, false);
    return done(built_, L"marvo.log has the step that failed");
}

void MarvoEngine::stop() {
    if (ready()) {
        dvFE.done();
    }
    built_ = false;
    recorded_ = false;
    playFile_.clear();
}

bool MarvoEngine::live() {
    return done(built_ && dvFE.live(), L"there is no camera");
}

bool MarvoEngine::pause() {
    return done(ready() && dvFE.pause(), L"nothing is shown");
}

bool MarvoEngine::resume() {
    return done(ready() && dvFE.resume(), L"nothing is shown");
}

std::wstring MarvoEngine::whyNotPlayable(const std::wstring& file) const {
    const vcore::handle handle(CreateFileW(file.c_str(), GENERIC_READ,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return nameOf(file) + L": " +
           (handle ? L"it holds no two frames that can be played" : systemText(GetLastError()));
}

/// Has the engine replay a range of a file, held.
bool MarvoEngine::open(const std::wstring& file, FrameSpan range) {
    if (built_ || (!playFile_.empty() && samePath(playFile_, file))) {
        const bool wasPaused = dvFE.paused();
        dvFE.pause();
        if (dvFE.replay(range.first, range.last, file.c_str())) {
            return true;
        }
        if (!wasPaused) {
            dvFE.resume();
        }
        return done(false, whyNotPlayable(file));
    }
    // A play graph is made for the frames of one file.
    const std::string name = narrowFile(file);
    constexpr std::uint64_t most = INT_MAX;
    if (name.empty()) {
        return done(false, nameOf(file) + L": its name has letters that this system cannot pass on");
    }
    playFile_.clear();
    if (!dvFE.playinit(videoArea_, static_cast<int>(std::min(range.first, most)),
                       static_cast<int>(std::min(range.last, most)), name.c_str())) {
        return done(false, whyNotPlayable(file));
    }
    playFile_ = file;
    return dvFE.pause();
}

std::optional<FrameSpan> MarvoEngine::replay(const std::wstring& file, FrameSpan range, std::uint64_t at) {
    if (!open(file, range)) {
        return std::nullopt;
    }
    // The position stands at the first frame of the range that it has become, and the frame before that is,
    // wrapped into the range, its last one.
    FrameSpan real;
    dvFE.seekPosition(range.first);
    real.first = static_cast<std::uint64_t>(dvFE.playFilter().frame());
    dvFE.seekPosition(real.first - 1);
    real.last = static_cast<std::uint64_t>(dvFE.playFilter().frame());
    dvFE.seekPosition(std::clamp(at, real.first, std::max(real.first, real.last)));
    dvFE.setSpeed(1.0);
    done(true);
    return real;
}

bool MarvoEngine::setSpeed(double framesPerTick) {
    return done(ready() && dvFE.setSpeed(framesPerTick), L"nothing is shown");
}

bool MarvoEngine::seek(std::uint64_t frame) {
    return done(ready() && dvFE.seekPosition(frame), L"nothing is shown");
}

bool MarvoEngine::startRecord(const std::wstring& file) {
    if (!built_) {
        return done(false, L"there is no camera");
    }
    recorded_ = true;
    return done(dvFE.startRecord(file.c_str()), dvFE.recordStatus().firstErrorText);
}

void MarvoEngine::stopRecord() {
    dvFE.stopRecord();
}

bool MarvoEngine::call(const std::string& text) {
    return done(dvFE.call(text.c_str()), L"there is not enough memory");
}

void MarvoEngine::log(const std::wstring& text) {
    dvFE.log(utf8(text).c_str(), false);
}

EngineState MarvoEngine::state() {
    EngineState now;
    const dvCameraState camera = dvFE.cameraState();
    now.camera = cameraOf(camera.state);
    now.cameraSince_ms = camera.since_ms;
    now.built = built_;
    if (!ready()) {
        return now;
    }
    now.shown = dvFE.playedFrame();
    now.frameDuration_100ns = dvFE.playFilter().period();
    now.pictureDisturbed = dvFE.playFaults() != 0;
    const play_error error = dvFE.playError();
    now.unreadableFrom = error.first;
    now.unreadable = error.frames;
    now.unreadableError = error.frames == 0 ? L"" : systemText(error.error);
    if (!built_) {
        return now;
    }
    const unsigned long long captured = dvFE.lastFrame();
    now.captured = captured == noFrame ? 0 : captured;
    now.frameBytes = dvFE.frameSize();
    now.ringFrames = options_.ring_frames;
    if (now.frameDuration_100ns == 0) {
        now.frameDuration_100ns = now.frameBytes == palFrame_bytes ? palFrame_100ns : ntscFrame_100ns;
    }
    if (recorded_) {
        const record_status status = dvFE.recordStatus();
        now.recording.on = status.recording;
        now.recording.failing = status.failing;
        now.recording.behind = status.behind;
        now.recording.complete = status.complete;
        now.recording.written = status.written;
        now.recording.lost = status.lost;
        now.recording.failed = status.failed;
        if (status.driveSpace_frames != record_status::unknown) {
            now.recording.driveSpace_frames = status.driveSpace_frames;
        }
        now.recording.error = status.firstErrorText;
    }
    return now;
}

} // namespace app
