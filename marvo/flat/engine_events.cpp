#include "marvo/flat/engine_events.h"

#include "marvo/core/guarded.h"
#include "marvo/core/text.h"
#include "marvo/flat/text.h"
#include "marvo/frontend/front_end.h"
#include "marvo/frontend/trouble_text.h"

namespace flat {

namespace {

constexpr std::size_t mostEvents = 512;

/// The log's drain has no place for an object; there is one of these at most.
std::atomic<Callbacks*> lines{nullptr};

void takeLine(const char* line) {
    if (Callbacks* const to = lines) {
        to->post(line);
    }
}

struct KindOf {
    record_event event;
    marvo_event_kind kind;
};
constexpr KindOf recordKinds[] = {
    {record_event::failing, MARVO_EVENT_WRITE_FAILED},
    {record_event::recovered, MARVO_EVENT_WRITE_RECOVERED},
    {record_event::overrun, MARVO_EVENT_RING_OVERRUN},
    {record_event::caughtUp, MARVO_EVENT_CAUGHT_UP},
    {record_event::incomplete, MARVO_EVENT_INCOMPLETE},
};

} // namespace

EngineEvents::EngineEvents() : queue_(mostEvents) {
    dvFE.connect(L"cameraLost", this, nullptr, &EngineEvents::onCameraLost);
    dvFE.connect(L"cameraStalled", this, nullptr, &EngineEvents::onCameraStalled);
    dvFE.connect(L"cameraBack", this, nullptr, &EngineEvents::onCameraBack);
    dvFE.connect(L"cameraChanged", this, nullptr, &EngineEvents::onCameraChanged);
    dvFE.connect(L"recError", this, nullptr, &EngineEvents::onRecError);
    dvFE.connect(L"recEnd", this, nullptr, &EngineEvents::onRecEnd);
    dvFE.connect(L"playError", this, nullptr, &EngineEvents::onPlayError);
    dvFE.connect(L"playFault", this, nullptr, &EngineEvents::onPlayFault);
    dvFE.connect(L"playEvent", this, nullptr, &EngineEvents::onPlayEvent);
    dvFE.playFilter().connect(L"playTime", this, nullptr, &EngineEvents::onPlayTime);
    lines = &callbacks_;
    dvFE.setLogDrain(takeLine);
}

EngineEvents::~EngineEvents() {
    dvFE.setLogDrain(nullptr);
    lines = nullptr;
    dvFE.playFilter().disconnect(static_cast<void*>(this));
    dvFE.disconnect(static_cast<void*>(this));
    postTicks(nullptr, 0);
}

void EngineEvents::tell(marvo_event_kind kind, unsigned long long frame, unsigned long long count,
                        unsigned long code, const std::string& text) {
    FILETIME now{};
    GetSystemTimePreciseAsFileTime(&now);
    marvo_event event{};
    event.size = sizeof event;
    event.kind = kind;
    event.time_100ns = static_cast<marvo_u64>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
    event.frame = frame;
    event.count = count;
    event.code = code;
    putText(event.text, sizeof event.text, asUtf8(text));
    const LockGuard guard(order_);
    event.serial = ++serial_;
    queue_.put(event);
    callbacks_.post(event);
}

marvo_play_info EngineEvents::play() {
    return toInfo(dvFE.playFilter().state());
}

marvo_play_info EngineEvents::toInfo(const play_state& state) {
    const auto& info = state.info;
    marvo_play_info play{};
    play.size = sizeof play;
    play.replaying = info.replaying ? 1 : 0;
    play.recording = info.recording ? 1 : 0;
    play.paused = state.paused ? 1 : 0;
    play.frame = info.frame;
    play.from = info.replaying ? info.from : MARVO_NO_FRAME;
    play.to = info.replaying ? info.to : MARVO_NO_FRAME;
    play.next_frame = info.last != MARVO_NO_FRAME ? info.last : 0;
    play.speed = state.speed;
    return play;
}

void EngineEvents::postTicks(HWND window, unsigned message) {
    dvFE.setInfoDrain(window, message, &ticks_);
}

void EngineEvents::onCameraLost(unsigned long long newest) {
    tell(MARVO_EVENT_CAMERA_LOST, newest, 0, 0, "The camera is gone.");
}

void EngineEvents::onCameraStalled(unsigned long long newest) {
    tell(MARVO_EVENT_CAMERA_SILENT, newest, 0, 0, "The camera has sent no frame for a second.");
}

void EngineEvents::onCameraBack(unsigned long long first, unsigned long gap_ms) {
    tell(MARVO_EVENT_CAMERA_BACK, first, gap_ms, 0,
         vcore::format("The camera sends frames again, from number %llu, after %lu ms.", first, gap_ms));
}

void EngineEvents::onCameraChanged(unsigned long bytes) {
    tell(MARVO_EVENT_CAMERA_CHANGED, 0, bytes, 0,
         vcore::format("The camera is back with frames of %lu bytes; marvo_init is needed.", bytes));
}

void EngineEvents::onRecError(unsigned long long frame, unsigned long long frames, unsigned long systemError,
                              record_event event) {
    for (const KindOf& row : recordKinds) {
        if (row.event == event) {
            tell(row.kind, frame, frames, systemError,
                 frontend::recordingText(event, frame, frames, systemError));
        }
    }
}

void EngineEvents::onRecEnd() {
    const record_status status = dvFE.recordStatus();
    const std::string name = utf8(dvFE.recFilter().store().fileName());
    tell(MARVO_EVENT_RECORD_ENDED, 0, status.written, status.firstError,
         frontend::totalsText(name.c_str(), status));
}

void EngineEvents::onPlayError(unsigned long long first, unsigned long long frames, unsigned long error) {
    const std::string name = utf8(dvFE.playFilter().replayFile().oleStr());
    tell(frames != 0 ? MARVO_EVENT_UNREADABLE : MARVO_EVENT_READABLE, first, frames, error,
         frontend::errorText(name.c_str(), {first, frames, static_cast<std::uint32_t>(error)}));
}

void EngineEvents::onPlayFault(unsigned long fault, unsigned long begun) {
    tell(begun != 0 ? MARVO_EVENT_PICTURE_FAULT : MARVO_EVENT_PICTURE_WELL, 0, 0, fault,
         frontend::faultText(fault, begun != 0));
}

void EngineEvents::onPlayEvent(long code, long long parameter) {
    tell(MARVO_EVENT_GRAPH, 0, 0, static_cast<unsigned long>(code), frontend::eventText(code, parameter));
}

void EngineEvents::onPlayTime() {
    if (callbacks_.wantsTicks()) {
        callbacks_.post(play());
    }
}

} // namespace flat
