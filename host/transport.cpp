#include "host/transport.h"

#include "host/text.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace host {

namespace {

constexpr double longestReplay_s = 100000.0;
const char* const notBuilt = "The video is not running; start it first.";

std::optional<long> wholeNumber(const std::string& text) {
    long value = 0;
    const std::from_chars_result read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

const wchar_t* orNull(const std::wstring& text) {
    return text.empty() ? nullptr : text.c_str();
}

} // namespace

Transport::Transport(HWND videoArea, HWND drain, unsigned message) : videoArea_(videoArea) {
    dvFE.setInfoDrain(drain, message, &info_);
}

Transport::~Transport() {
    done();
    dvFE.setInfoDrain(nullptr, 0, nullptr);
}

bool Transport::init(std::optional<int> input) {
    if (input) {
        input_ = *input;
        dvFE.setInput(input_);
    }
    initialised_ = dvFE.init(videoArea_, false);
    return report(initialised_, initialised_ ? "" : whyNoVideo());
}

bool Transport::playInit(int from, int to, const std::wstring& file) {
    // The engine takes this one name in the system's narrow code page.
    std::string name(WideCharToMultiByte(CP_ACP, 0, file.c_str(), -1, nullptr, 0, nullptr, nullptr), '\0');
    WideCharToMultiByte(CP_ACP, 0, file.c_str(), -1, name.data(), static_cast<int>(name.size()), nullptr,
                        nullptr);
    initialised_ = dvFE.playinit(videoArea_, from, to, name.c_str());
    if (initialised_) {
        dvFE.setPlayFile(file.c_str());
    }
    return report(initialised_, "The recording " + utf8(file) + " could not be opened for replay.");
}

bool Transport::done() {
    if (recording_) {
        stop();
    }
    dvFE.done();
    initialised_ = false;
    return report(true, {});
}

bool Transport::live() {
    return report(initialised_ && dvFE.live(), notBuilt);
}

bool Transport::record(const std::wstring& file) {
    if (!initialised_) {
        return report(false, notBuilt);
    }
    recording_ = dvFE.startRecord(orNull(file));
    if (recording_ && !file.empty()) {
        dvFE.setPlayFile(file.c_str());
    }
    return report(recording_, file.empty() ? "The recording file could not be made."
                                           : "The recording file " + utf8(file) + " could not be made.");
}

bool Transport::stop() {
    dvFE.stopRecord();
    recording_ = false;
    return report(true, {});
}

bool Transport::setPaused(bool paused) {
    return report(initialised_ && (paused ? dvFE.pause() : dvFE.resume()), notBuilt);
}

bool Transport::replay(long long from, long long to, const std::wstring& file) {
    if (from < 0 || to < 0) {
        return report(false, "There is no frame with a negative number.");
    }
    return report(
        dvFE.replay(static_cast<unsigned long long>(from), static_cast<unsigned long long>(to), orNull(file)),
        initialised_ ? "Nothing could be replayed; is there a recording?" : notBuilt);
}

bool Transport::replayLast(double seconds) {
    if (!(seconds > 0.0 && seconds <= longestReplay_s)) {
        return report(false, "A replay is longer than 0 and at most 100000 seconds.");
    }
    const long long newest = status().newest();
    const long long frames = std::llround(seconds * static_cast<double>(dvFE.framesPerSecond()));
    if (newest < 0 || frames < 1) {
        return report(false, "There is nothing to replay yet.");
    }
    return replay(newest >= frames ? newest - frames + 1 : 0, newest, {});
}

bool Transport::setSpeed(double factor) {
    return report(initialised_ && dvFE.setSpeed(factor), notBuilt);
}

bool Transport::seek(long long frame) {
    if (frame < 0) {
        return report(false, "There is no frame with a negative number.");
    }
    return report(initialised_ && dvFE.seekPosition(static_cast<unsigned long long>(frame)), notBuilt);
}

bool Transport::mark(bool in, long long frame, int element) {
    if (element < 1 || element > 99 || frame < 0 || frame > INT_MAX) {
        return report(false, "A mark needs a frame and an element from 1 to 99.");
    }
    char marker[32];
    std::snprintf(marker, sizeof marker, "X%c%02d%lld", in ? 'I' : 'O', element, frame);
    return report(dvFE.call(marker), {});
}

bool Transport::playElement(int element) {
    return report(dvFE.playElement(element),
                  initialised_ ? "The element has no in and out point, or nothing is recorded." : notBuilt);
}

bool Transport::show() {
    initialised_ = dvFE.showWindow(videoArea_);
    return report(initialised_, initialised_ ? "" : whyNoVideo());
}

bool Transport::hide() {
    return report(dvFE.hideWindow(), {});
}

bool Transport::setSize(int width, int height) {
    return report(dvFE.setSize(width, height), notBuilt);
}

bool Transport::setPosition(int x, int y) {
    return report(dvFE.setPos(x, y), notBuilt);
}

bool Transport::set(const std::string& key, const std::string& value) {
    if (key == "recfile" || key == "playfile" || key == "remotefile") {
        const std::wstring name = wide(value);
        if (key == "recfile") {
            dvFE.setRecFile(name.c_str());
        } else if (key == "playfile") {
            dvFE.setPlayFile(name.c_str());
        } else {
            dvFE.setRemoteFile(name.c_str());
        }
        return report(true, {});
    }
    if (key == "deinterlace") {
        const bool on = value == "on" || value == "1" || value == "true";
        const bool off = value == "off" || value == "0" || value == "false";
        if (on || off) {
            dvFE.setDeinterlace(on);
        }
        return report(on || off, "deinterlace is on or off, not " + value);
    }
    const std::optional<long> number = wholeNumber(value);
    if (!number || (*number < 0 && key != "input")) {
        return report(false, key + " needs a whole number, not " + value);
    }
    if (key == "input") {
        dvFE.setInput(input_ = static_cast<int>(*number));
    } else if (key == "playdelay") {
        dvFE.setPlayDelay(static_cast<int>(*number));
    } else if (key == "maxrec") {
        dvFE.setMaxRecFrames(static_cast<unsigned long>(*number));
    } else if (key == "maxplay") {
        dvFE.setMaxPlayFrames(static_cast<unsigned long>(*number));
    } else if (key == "maxfilesize") {
        dvFE.setMaxFilesize(static_cast<unsigned long>(*number));
    } else {
        return report(false, "there is no setting " + key);
    }
    return report(true, {});
}

bool Transport::call(const std::string& text) {
    return report(dvFE.call(text.c_str()), {});
}

bool Transport::log(const std::string& text) {
    dvFE.log(text.c_str(), false);
    return report(true, {});
}

Status Transport::status() const {
    Status now;
    if (initialised_) {
        now.captured = static_cast<long long>(dvFE.lastFrame());
        now.taken = static_cast<long long>(dvFE.writtenFrame());
    }
    now.shown = static_cast<long long>(dvFE.playedFrame());
    now.record = dvFE.recordStatus();
    now.initialised = initialised_;
    now.recording = recording_;
    now.playing = dvFE.playing();
    now.paused = dvFE.paused();
    now.speed = dvFE.speed();
    now.fps = dvFE.framesPerSecond();
    now.frameSize = dvFE.frameSize();
    now.time_ms = dvFE.getTime();
    now.rawTime_ms = dvFE.getRawTime();
    now.result = result_;
    now.info = info_;
    now.camera = dvFE.cameraState();
    return now;
}

long long Transport::currentFrame() const {
    return static_cast<long long>(dvFE.playedFrame());
}

bool Transport::report(bool worked, const std::string& explanation) {
    result_ = worked;
    explanation_ = worked ? std::string() : explanation;
    return worked;
}

std::string Transport::whyNoVideo() const {
    const int devices = vwin::com_fg::sourceCount();
    if (devices == 0) {
        return "No capture device was found. Connect a DV camera and switch it on.";
    }
    if (input_ >= devices) {
        return "There is no capture device number " + std::to_string(input_) + "; this system has " +
               std::to_string(devices) + ", counted from 0.";
    }
    return "The video could not be started. marvo.log in the current directory says which step failed.";
}

} // namespace host
