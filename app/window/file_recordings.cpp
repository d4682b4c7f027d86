#include "app/window/file_recordings.h"

#include "app/moment.h"

#include <cstdio>

namespace app {

std::optional<RecordingFacts> FileRecordings::look(const std::wstring& file, std::wstring& why) {
    dvRecording recording;
    if (!recording.open(file.c_str())) {
        why = recording.explanation();
        while (!why.empty() && why.back() == L'.') {
            why.pop_back();
        }
        return std::nullopt;
    }
    RecordingFacts facts;
    facts.frames = recording.frames();
    facts.frameBytes = recording.frameBytes();
    facts.frameDuration_100ns = recording.frameDuration_100ns();
    const dvClockTime when = recording.recordedAt(0);
    if (when.dateKnown && when.timeKnown) {
        Calendar calendar;
        calendar.year = static_cast<int>(when.year);
        calendar.month = static_cast<int>(when.month);
        calendar.day = static_cast<int>(when.day);
        calendar.hour = static_cast<int>(when.hour);
        calendar.minute = static_cast<int>(when.minute);
        calendar.second = static_cast<int>(when.second);
        facts.recordedAt_ms = timeOfDay_ms(calendar);
    }
    return facts;
}

std::wstring FileRecordings::timeCode(const std::wstring& file, std::uint64_t frame) {
    if (file.empty() || (file != recording_.name() && !recording_.open(file.c_str()))) {
        return {};
    }
    if (frame >= recording_.frames()) {
        recording_.refresh();
    }
    const dvTimeCode code = recording_.timeCode(frame);
    if (!code.known) {
        return {};
    }
    wchar_t words[32];
    std::swprintf(words, sizeof words / sizeof *words, L"%02u:%02u:%02u%ls%02u", code.hours, code.minutes,
                  code.seconds, code.dropFrame ? L";" : L":", code.frames);
    return words;
}

} // namespace app
