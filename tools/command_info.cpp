#include "tools/avi_recording.h"
#include "tools/commands.h"
#include "tools/json_writer.h"
#include "tools/progress.h"
#include "tools/raw_recording.h"
#include "tools/stream_recording.h"
#include "tools/text.h"
#include "tools/time_code_gaps.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>
#include <vector>

namespace dvrec {

namespace {

constexpr size_t mostGaps = 10;

/// What the camera noted in the frames.
struct CameraNotes {
    TimeCodeGaps timeCode;
    std::string firstRecorded;
    std::string lastRecorded;
};

/// Frames in whose begin there is no time code are read further, if the first one has it further behind.
size_t bytesToTimeCode(const Recording& recording, std::vector<unsigned char>& memory) {
    const FrameBytes first = recording.readHead(0, memory);
    const bool atBegin = readTimeCode(first.first(std::min(first.size(), frameHeadBytes))).has_value();
    return atBegin || !readTimeCode(first) ? frameHeadBytes : memory.size();
}

CameraNotes readNotes(const Recording& recording, Progress& progress) {
    CameraNotes notes{TimeCodeGaps(is625Size(recording.frameSize()) ? 25 : 30, mostGaps), {}, {}};
    const unsigned long frames = recording.frames();
    if (frames == 0) {
        return notes;
    }
    std::vector<unsigned char> memory(recording.frameSize());
    const size_t needed = bytesToTimeCode(recording, memory);
    const unsigned long long bytes = recording.file().size();
    for (unsigned long frame = 0; frame < frames; ++frame) {
        notes.timeCode.add(readTimeCode(
            recording.readHead(frame, std::span(memory).first(std::min(needed, memory.size())))));
        progress.update(recording.place(frame).offset, bytes);
    }
    notes.firstRecorded = readRecordedAt(recording.readHead(0, memory)).text();
    notes.lastRecorded = readRecordedAt(recording.readHead(frames - 1, memory)).text();
    return notes;
}

/// Whether the recording came to its proper end.
struct State {
    const char* name;
    std::string details;
};

State stateOf(const Recording& recording) {
    if (recording.file().isBeingWritten()) {
        return {"recording", "it is being written at this moment"};
    }
    unsigned long long tail = 0;
    if (const auto* raw = dynamic_cast<const RawRecording*>(&recording)) {
        tail = raw->tail();
    } else if (const auto* stream = dynamic_cast<const StreamRecording*>(&recording)) {
        tail = stream->tail();
    }
    if (tail > 0) {
        return {"cut off", counted(tail, "byte") + " behind the last whole frame"};
    }
    if (const auto* avi = dynamic_cast<const AviRecording*>(&recording)) {
        const AVI_ODMLFileInfo& info = avi->avi().info();
        if (info.walkedFrames > 0) {
            return {"cut off", counted(info.walkedFrames, "frame") + " in no index"};
        }
        if (info.headerTotalFrames > info.totalFrames) {
            return {"cut off", format("its header promises %lu frames", info.headerTotalFrames)};
        }
    }
    return {"finished", ""};
}

/// The facts of the file's structure, with a name for programs and one for people.
struct Fact {
    const char* identifier;
    const char* title;
    unsigned long long value;
};

std::vector<Fact> structureOf(const Recording& recording) {
    if (const auto* raw = dynamic_cast<const RawRecording*>(&recording)) {
        return {{"recordSize", "record size", raw->recordSize()}, {"sector", "sector size", raw->sector()}};
    }
    const auto* avi = dynamic_cast<const AviRecording*>(&recording);
    if (!avi) {
        return {};
    }
    const AVI_ODMLFileInfo& info = avi->avi().info();
    const unsigned long long slot = recording.frames() > 1
                                        ? recording.place(1).offset - recording.place(0).offset
                                        : avi->avi().slotSize();
    return {{"slotSize", "from frame to frame", slot},
            {"pieces", "RIFF pieces", info.pieces},
            {"standardIndexes", "standard indexes", info.indexPositions.size()},
            {"legacyEntries", "legacy index entries", info.legacyEntries},
            {"unindexedFrames", "frames in no index", info.walkedFrames},
            {"streams", "streams", info.streams},
            {"audioStreams", "sound streams", info.audioStreams}};
}

const char* systemOf(const Recording& recording) {
    if (recording.frames() == 0) {
        return "unknown";
    }
    return is625Size(recording.frameSize()) ? "625/50 (PAL)" : "525/60 (NTSC)";
}

double durationOf(const Recording& recording) {
    return recording.frames() / frameRate(recording.frameSize());
}

void reportGaps(const TimeCodeGaps& notes, JsonWriter& json) {
    json.beginObject("timeCode");
    json.add("first", notes.first() ? notes.first()->text() : "");
    json.add("last", notes.last() ? notes.last()->text() : "");
    json.add("framesWithout", notes.missing());
    json.add("gapCount", notes.count());
    json.add("lost", notes.lost());
    json.beginList("gaps");
    for (const TimeCodeGaps::Gap& gap : notes.gaps()) {
        json.beginObject();
        json.add("frame", gap.frame);
        json.add("before", gap.before.text());
        json.add("after", gap.after.text());
        json.add("lost", gap.lost);
        json.end();
    }
    json.end();
    json.end();
}

void reportJson(const Recording& recording, const CameraNotes& notes, const Arguments& arguments) {
    const State state = stateOf(recording);
    JsonWriter json;
    json.beginObject();
    json.add("file", utf8(arguments.files[0]));
    json.add("kind", identifier(recording.kind()));
    json.add("system", recording.frames() == 0 ? "" : is625Size(recording.frameSize()) ? "625/50" : "525/60");
    json.add("frames", recording.frames());
    json.add("frameSize", recording.frameSize());
    json.add("frameRate", frameRate(recording.frameSize()));
    json.add("duration", durationOf(recording));
    json.add("size", recording.file().size());
    json.add("state", state.name);
    json.add("stateDetails", state.details);
    for (const Fact& fact : structureOf(recording)) {
        json.add(fact.identifier, fact.value);
    }
    json.beginObject("recorded");
    json.add("first", notes.firstRecorded);
    json.add("last", notes.lastRecorded);
    json.end();
    reportGaps(notes.timeCode, json);
    json.end();
    std::fputs(json.text().c_str(), stdout);
}

void printLine(const char* title, const std::string& text) {
    std::printf("  %-21s %s\n", title, text.c_str());
}

void printRange(const char* title, const std::string& first, const std::string& last) {
    printLine(title, first.empty() && last.empty() ? "not in the frames" : first + " to " + last);
}

void printGaps(const TimeCodeGaps& notes) {
    printRange("time code", notes.first() ? notes.first()->text() : "",
               notes.last() ? notes.last()->text() : "");
    if (!notes.first()) {
        return;
    }
    if (notes.missing() > 0) {
        printLine("", counted(notes.missing(), "frame") + " without time code");
    }
    printLine("time code gaps", notes.count() == 0
                                    ? "none"
                                    : std::to_string(notes.count()) + ", in which the camera counted " +
                                          counted(notes.lost(), "frame"));
    for (const TimeCodeGaps::Gap& gap : notes.gaps()) {
        printLine("", format("frame %lu: %s follows %s", gap.frame, gap.after.text().c_str(),
                             gap.before.text().c_str()));
    }
    if (notes.count() > notes.gaps().size()) {
        printLine("",
                  format("and %lu more", static_cast<unsigned long>(notes.count() - notes.gaps().size())));
    }
}

void reportText(const Recording& recording, const CameraNotes& notes, const Arguments& arguments) {
    const State state = stateOf(recording);
    std::printf("'%s'\n", utf8(arguments.files[0]).c_str());
    printLine("kind", describe(recording.kind()));
    printLine("system", systemOf(recording));
    printLine("frames", format("%lu of %lu bytes", recording.frames(), recording.frameSize()));
    printLine("duration", durationText(durationOf(recording)));
    printRange("recorded", notes.firstRecorded, notes.lastRecorded);
    printGaps(notes.timeCode);
    printLine("file size", counted(recording.file().size(), "byte"));
    for (const Fact& fact : structureOf(recording)) {
        printLine(fact.title, std::to_string(fact.value));
    }
    printLine("state", state.name + (state.details.empty() ? "" : ": " + state.details));
}

} // namespace

ExitStatus showInfo(const Arguments& arguments) {
    const std::unique_ptr<Recording> recording = openRecording(arguments.files[0], arguments.sector);
    const CameraNotes notes = [&] {
        Progress progress("reading " + quoted(arguments.files[0]), arguments.progress);
        return readNotes(*recording, progress);
    }();
    arguments.json ? reportJson(*recording, notes, arguments) : reportText(*recording, notes, arguments);
    return ExitStatus::fine;
}

} // namespace dvrec
