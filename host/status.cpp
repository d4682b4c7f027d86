#include "host/status.h"

#include "host/text.h"

namespace host {

namespace {

struct NamedValue {
    const char* name;
    double (*read)(const Status&);
};

double number(std::uint64_t frame) {
    return static_cast<double>(static_cast<std::int64_t>(frame));
}

/// What is wrong with the camera, as the end of a line; nothing while frames come.
std::string cameraText(const dvCameraState& camera) {
    const std::string seconds = " for " + std::to_string(camera.since_ms / 1000) + " s";
    switch (camera.state) {
    case dvCameraState::silent:
        return ", CAMERA SENDS NOTHING" + seconds;
    case dvCameraState::gone:
        return ", CAMERA GONE" + seconds;
    case dvCameraState::changed:
        return ", ANOTHER CAMERA FORMAT: start the video again (V, V)";
    default:
        return {};
    }
}

constexpr NamedValue values[] = {
    {"newest", [](const Status& s) { return static_cast<double>(s.newest()); }},
    {"written", [](const Status& s) { return static_cast<double>(s.written()); }},
    {"shown", [](const Status& s) { return static_cast<double>(s.shown); }},
    {"captured", [](const Status& s) { return static_cast<double>(s.captured); }},
    {"backlog", [](const Status& s) { return static_cast<double>(s.backlog()); }},
    {"lost", [](const Status& s) { return static_cast<double>(s.record.lost); }},
    {"failed", [](const Status& s) { return static_cast<double>(s.record.failed); }},
    {"failing", [](const Status& s) { return s.record.failing ? 1.0 : 0.0; }},
    {"initialised", [](const Status& s) { return s.initialised ? 1.0 : 0.0; }},
    {"recording", [](const Status& s) { return s.recording ? 1.0 : 0.0; }},
    {"playing", [](const Status& s) { return s.playing ? 1.0 : 0.0; }},
    {"paused", [](const Status& s) { return s.paused ? 1.0 : 0.0; }},
    {"speed", [](const Status& s) { return s.speed; }},
    {"fps", [](const Status& s) { return static_cast<double>(s.fps); }},
    {"framesize", [](const Status& s) { return static_cast<double>(s.frameSize); }},
    {"time", [](const Status& s) { return static_cast<double>(s.time_ms); }},
    {"rawtime", [](const Status& s) { return static_cast<double>(s.rawTime_ms); }},
    {"camera", [](const Status& s) { return static_cast<double>(s.camera.state); }},
    {"result", [](const Status& s) { return s.result ? 1.0 : 0.0; }},
    {"info.frame", [](const Status& s) { return number(s.info.frame); }},
    {"info.from", [](const Status& s) { return number(s.info.from); }},
    {"info.to", [](const Status& s) { return number(s.info.to); }},
    {"info.last", [](const Status& s) { return number(s.info.last); }},
    {"info.replaying", [](const Status& s) { return s.info.replaying ? 1.0 : 0.0; }},
    {"info.recording", [](const Status& s) { return s.info.recording ? 1.0 : 0.0; }},
};

} // namespace

std::optional<double> Status::value(const std::string& name) const {
    for (const NamedValue& named : values) {
        if (name == named.name) {
            return named.read(*this);
        }
    }
    return std::nullopt;
}

void Status::forEach(const std::function<void(const char* name, double value)>& visit) const {
    for (const NamedValue& named : values) {
        visit(named.name, named.read(*this));
    }
}

std::string Status::line() const {
    std::string text = "newest " + std::to_string(newest()) + ", written " + std::to_string(written()) +
                       ", shown " + std::to_string(shown) + ", " + (playing ? "replay" : "live") +
                       (paused ? " paused" : "") + ", speed " + numberText(speed) + ", " +
                       std::to_string(fps) + " fps";
    // Without a recording nothing is taken for the file, and the backlog says nothing.
    if (recording) {
        text += ", recording, backlog " + std::to_string(backlog());
        const std::uint64_t missing = record.lost + record.failed;
        text += missing != 0 ? ", " + std::to_string(missing) + " FRAMES MISSING" : "";
        text += record.failing ? ", RECORDING FAILS" : "";
    }
    return text + cameraText(camera);
}

} // namespace host
