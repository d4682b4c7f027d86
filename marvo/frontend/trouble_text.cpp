#include "marvo/frontend/trouble_text.h"

#include "marvo/core/directshow.h"
#include "marvo/core/str.h"
#include "marvo/core/text.h"
#include "marvo/replay/delivery_watch.h"

#include <evcode.h>

namespace frontend {

namespace {

struct Text {
    long value;
    const char* text;
};

constexpr Text faultTexts[] = {
    {play_no_ticks, "the clock gives no ticks"},
    {play_refused, "the decoder or renderer refuses the frames"},
    {play_held_up, "the decoder or renderer holds a frame"},
    {play_no_graph, "the play graph does not run"},
};

constexpr Text eventTexts[] = {
    {EC_USERABORT, "the user has closed the picture"},
    {EC_ERRORABORT, "the play graph has given up"},
    {EC_STREAM_ERROR_STOPPED, "a stream has stopped with an error"},
    {EC_STREAM_ERROR_STILLPLAYING, "an error in a stream"},
    {EC_ERROR_STILLPLAYING, "an error, but the graph goes on"},
    {EC_VIDEO_SIZE_CHANGED, "the picture has another size"},
    {EC_DISPLAY_CHANGED, "the display has changed"},
    {EC_WINDOW_DESTROYED, "the picture's window is gone"},
    {EC_CLOCK_UNSET, "the clock has been taken away"},
};

const char* wordsOf(long code) {
    for (const Text& row : eventTexts) {
        if (row.value == code) {
            return row.text;
        }
    }
    return nullptr;
}

/// The system's words for an error, and its number.
std::string inWords(unsigned long systemError) {
    const vcore::str text(vcore::systemMessage(systemError).c_str());
    return vcore::format("%s (%lu)", text.getStr(), systemError);
}

} // namespace

std::string recordingText(record_event event, unsigned long long frame, unsigned long long frames,
                          unsigned long systemError) {
    const std::string missing = vcore::counted(frames, "frame");
    switch (event) {
    case record_event::failing:
        return vcore::format("recording: frame %llu could not be written: ", frame) + inWords(systemError);
    case record_event::recovered:
        return vcore::format("recording: goes on with frame %llu, %s could not be written", frame,
                             missing.c_str());
    case record_event::overrun:
        return vcore::format(
            "recording: the disk is too slow, frame %llu was overwritten before it was written", frame);
    case record_event::caughtUp:
        return vcore::format("recording: caught up at frame %llu, %s overwritten before", frame,
                             missing.c_str());
    case record_event::incomplete:
        return "recording: the file could not be completed: " + inWords(systemError);
    }
    return {};
}

std::string totalsText(const char* file, const record_status& status) {
    return vcore::format(
        "recording ended: %s: %s taken, %llu written, %llu lost, %llu failed, %llu beyond the limit", file,
        vcore::counted(status.taken, "frame").c_str(), status.written, status.lost, status.failed,
        status.beyondLimit);
}

std::string errorText(const char* file, const play_error& error) {
    if (error.frames == 0) {
        return "replay: the frames are there again, or not asked for any more";
    }
    const std::string frames =
        error.frames == 1 ? vcore::format("frame %llu", error.first)
                          : vcore::format("frames %llu to %llu", error.first, error.first + error.frames - 1);
    return "replay: " + frames + " of " + file + " cannot be read: " + inWords(error.error);
}

std::string faultText(unsigned long faults, bool begun) {
    std::string text = begun ? "no picture:" : "picture again after:";
    for (const Text& row : faultTexts) {
        if ((faults & static_cast<unsigned long>(row.value)) != 0) {
            text += std::string(" ") + row.text;
        }
    }
    return text;
}

bool isKnownEvent(long code) {
    return wordsOf(code) != nullptr;
}

std::string eventText(long code, long long parameter) {
    const char* const words = wordsOf(code);
    return vcore::format("play graph: %s (event %ld, %lld)", words != nullptr ? words : "an event", code,
                         parameter);
}

} // namespace frontend
