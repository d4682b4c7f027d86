#include "marvo/frontend/front_end.h"

#include "marvo/core/process_state.h"
#include "marvo/core/timed_guard.h"
#include "marvo/recording/drive_search.h"
#include "marvo/frontend/front_end_log_scope.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

constexpr const wchar_t* defaultFile = L"temp.dv";

constexpr int backlogAllowance_frames = 25;
constexpr int longestBreaker_ms = 20;

constexpr unsigned long widgetStyle = 0x100000;

/// `text` without carriage returns, line feeds and tabs.
std::string onOneLine(const char* text) {
    std::string line(text);
    std::erase_if(line, [](char c) { return c == '\r' || c == '\n' || c == '\t'; });
    return line;
}

SYSTEMTIME localTime() {
    SYSTEMTIME utc{};
    SYSTEMTIME local{};
    GetSystemTime(&utc);
    return SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) ? local : utc;
}

} // namespace

dvFrontEnd dvFE;

dvFrontEnd::dvFrontEnd()
    : vwin::vWidget(L"VIDEOFRAME", widgetStyle), settings_(L"marvo.ini"), dvSettings_(L"dv.ini"),
      videoSettings_(L"video.ini"), recFile_(defaultFile), playFile_(defaultFile), recInfoLock_(1, 1),
      logFile_(L"marvo.log", CREATE_ALWAYS) {
    show(false);
    videoWidget_.hide(true);
    setEraseBackground(false);
    CoInitialize(nullptr);
    logFile_.open(nullptr);
    elementIn_.fill(-1);
    elementOut_.fill(-1);
    recFilter_.store().connect(L"poolInfo", this, this, &dvFrontEnd::onRecInfo);
    playFilter_.connect(L"playTime", this, this, &dvFrontEnd::onPlayTime);
    readSettings();
    initRecord();
}

dvFrontEnd::~dvFrontEnd() {
    if (vcore::processEnding()) {
        return;
    }
    hideWindow();
    done();
}

void dvFrontEnd::readSettings() {
    const auto given = [this](const wchar_t* name) { return dvSettings_.defined(name); };
    if (given(L"dv.control")) {
        control_ = dvSettings_.get(L"dv.control").getB();
    }
    if (given(L"dv.logging")) {
        logging_ = dvSettings_.get(L"dv.logging").getB();
    }
    if (given(L"dv.maxfilesize")) {
        setMaxFilesize(static_cast<unsigned long>(dvSettings_.get(L"dv.maxfilesize").getI()));
    }
    if (given(L"dv.playdelay")) {
        playDelay_ms_ = dvSettings_.get(L"dv.playdelay").getI();
    }
    if (given(L"dv.input")) {
        input_ = dvSettings_.get(L"dv.input").getI();
    }
    if (given(L"dv.file")) {
        recFile_ = dvSettings_.getS(L"dv.file");
        playFile_ = recFile_;
    }
    setDeinterlace(videoSettings_.defined(L"video.deinterlace") &&
                   videoSettings_.get(L"video.deinterlace").getB());
    if (videoSettings_.defined(L"video.filter")) {
        videoFilter_ = videoSettings_.get(L"video.filter").getI();
    }
}

bool dvFrontEnd::initRecord() {
    if (recFile_ != defaultFile) {
        return true;
    }
    vcore::str root;
    if (!dvDriveSearch::enough(dvDriveSearch().best(root, defaultFile))) {
        MessageBoxA(nullptr, "Not enough disk space for video replay!", "Tarvex", MB_OK);
        return false;
    }
    recFile_ = root + defaultFile;
    playFile_ = recFile_;
    return true;
}

void dvFrontEnd::setWindow(HWND window) {
    if (window) {
        hostWindow_ = window;
    }
}

void dvFrontEnd::resizeEvent(int, int) {}

void dvFrontEnd::timerEvent(char) {}

bool dvFrontEnd::call(const char* text) {
    vcore::str marker;
    marker = text;
    const vcore::str logged = control_ ? marker : vcore::str(L"_") + marker.oleStr();
    log(logged.getStr(), false);
    const LogScope scope(*this);
    if (!control_) {
        return true;
    }
    if (marker.startsWith(L"XI") || marker.startsWith(L"XO")) {
        setElementPoint(marker.oleStr());
    } else if (marker.startsWith(L"XR")) {
        timeBase_ms_ = GetTickCount();
        timeOffset_ms_ = 0;
    } else if (marker.startsWith(L"Z+") && timeOffset_ms_ == 0) {
        timeOffset_ms_ = GetTickCount() - timeBase_ms_;
    }
    return true;
}

/// Takes the point from a marker "XInnFRAME" or "XOnnFRAME".
void dvFrontEnd::setElementPoint(const wchar_t* text) {
    vcore::str marker;
    marker = text;
    const vcore::str number(marker.mid(2, 2));
    const long element = number.toLong();
    if (number.len() < 2 || element < 0 || element >= elementCount) {
        return;
    }
    const long frame = vcore::str(marker.mid(4)).toLong();
    (text[1] == L'I' ? elementIn_ : elementOut_)[static_cast<size_t>(element)] = frame;
}

bool dvFrontEnd::playElement(int element) {
    if (element < 1 || element >= elementCount) {
        return false;
    }
    const long long in = elementIn_[static_cast<size_t>(element)];
    const long long out = elementOut_[static_cast<size_t>(element)];
    return in >= 0 && out >= 0 &&
           replay(static_cast<unsigned long long>(in), static_cast<unsigned long long>(out), nullptr);
}

void dvFrontEnd::setInput(int input) {
    input_ = input;
}

void dvFrontEnd::setRecFile(const wchar_t* name) {
    recFile_ = name;
}

void dvFrontEnd::setPlayFile(const wchar_t* name) {
    playFile_ = name;
}

void dvFrontEnd::setRemoteFile(const wchar_t* name) {
    recFilter_.store().setRemoteFile(name);
}

void dvFrontEnd::setMaxRecFrames(unsigned long frames) {
    maxRecFrames_ = frames;
}

void dvFrontEnd::setMaxPlayFrames(unsigned long frames) {
    maxPlayFrames_ = frames;
}

void dvFrontEnd::setPlayDelay(int ms) {
    playDelay_ms_ = ms;
}

void dvFrontEnd::setMaxFilesize(unsigned long frames) {
    recFilter_.store().setMaxFilesize(static_cast<long long>(frames));
}

void dvFrontEnd::setDeinterlace(bool on) {
    log(on ? "marvo set deinterlacing on" : "marvo set deinterlacing off", true);
    deinterlace_ = on;
}

HWND dvFrontEnd::setInfoDrain(HWND window, unsigned message, play_info* info) {
    return playFilter_.setInfoDrain(window, message, info);
}

void dvFrontEnd::getRecFilename(char* buffer) {
    recFile_.copyTo(buffer);
}

dvRecFilter& dvFrontEnd::recFilter() {
    return recFilter_;
}

dvPlayFilter& dvFrontEnd::playFilter() {
    return playFilter_;
}

bool dvFrontEnd::paused() {
    return playFilter_.paused();
}

bool dvFrontEnd::playing() {
    return playFilter_.playing();
}

double dvFrontEnd::speed() {
    return playFilter_.speed();
}

unsigned long long dvFrontEnd::lastFrame() {
    return recFilter_.store().lastFrame();
}

unsigned long long dvFrontEnd::playedFrame() {
    return playFilter_.playedFrame();
}

unsigned long long dvFrontEnd::writtenFrame() {
    return recFilter_.store().writtenFrame();
}

unsigned long dvFrontEnd::frameSize() {
    return recFilter_.store().frameSize();
}

unsigned long dvFrontEnd::framesPerSecond() {
    return recFilter_.store().framesPerSecond();
}

unsigned long dvFrontEnd::frameCount() {
    return recFilter_.frameCount();
}

int dvFrontEnd::getTime() {
    const unsigned long msPerFrame = 1000 / framesPerSecond();
    return static_cast<int>(msPerFrame * static_cast<std::uint32_t>(playedFrame()) - timeOffset_ms_);
}

int dvFrontEnd::getRawTime() {
    return static_cast<int>(playedFrame() * 1000 / framesPerSecond());
}

void dvFrontEnd::log(const char* text, bool suppressible) {
    if (!logFile_.opened() || (suppressible && !logging_) || !text) {
        return;
    }
    const SYSTEMTIME now = localTime();
    const int depth = logDepth_;
    char prefix[64];
    int length = std::snprintf(prefix, sizeof(prefix), "%02d:%02d:%02d.%03d[%05d]:", now.wHour, now.wMinute,
                               now.wSecond, now.wMilliseconds, static_cast<int>(GetCurrentThreadId()));
    if (depth < 1) {
        length += std::snprintf(prefix + length, sizeof(prefix) - length, "  ");
    } else {
        length += std::snprintf(prefix + length, sizeof(prefix) - length, "%d ", depth);
    }
    const std::string line = prefix + onOneLine(text) + "\r\n";
    unsigned long written = 0;
    logFile_.write(line.data(), static_cast<unsigned long>(line.size()), &written);
}

void dvFrontEnd::logBegin() {
    ++logDepth_;
}

void dvFrontEnd::logEnd() {
    --logDepth_;
}

void dvFrontEnd::onRecInfo(unsigned long long last, unsigned long long written, unsigned long poolSize) {
    vcore::timed_guard lock(recInfoLock_, 500);
    const auto backlog = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(last) - static_cast<std::uint32_t>(written) - backlogAllowance_frames);
    playFilter_.setBreaker(static_cast<unsigned long>(std::clamp(backlog, 0, longestBreaker_ms)));
    emitSignal(L"recInfo", 20, last, written, poolSize);
}

void dvFrontEnd::onPlayTime() {}
