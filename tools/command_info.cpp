#include "tools/commands.h"
#include "tools/json_writer.h"
#include "tools/progress.h"
#include "tools/recording.h"
#include "tools/text.h"
#include "tools/time_code_gaps.h"

#include "marvo/dv/recorded_at.h"

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

vdv::FrameBytes readHead(const recording::Reader& from, unsigned long long frame,
                         std::span<unsigned char> to) {
    return to.first(from.readHead(frame, to.data(), to.size()));
}

/// Frames in whose start there is no time code are read further, if the first one has it further behind.
size_t bytesToTimeCode(const recording::Reader& from, std::span<unsigned char> memory) {
    const vdv::FrameBytes first = readHead(from, 0, memory);
    const size_t start = std::min<size_t>(first.size(), vdv::frameHeadBytes);
    return TimeCode::read(first.first(start)) || !TimeCode::read(first) ? start : memory.size();
}

const vdv::System& systemOf(const recording::Reader& from) {
    const vdv::System* const system = vdv::systemOf(from.frameSize());
    return system ? *system : vdv::system525;
}

CameraNotes readNotes(const recording::Reader& from, Progress& progress) {
    CameraNotes notes{TimeCodeGaps(systemOf(from).countedRate, mostGaps), {}, {}};
    const unsigned long long frames = from.frames();
    if (frames == 0) {
        return notes;
    }
    std::vector<unsigned char> memory(from.frameSize());
    const size_t needed = bytesToTimeCode(from, memory);
    const unsigned long long bytes = from.fileBytes();
    for (unsigned long long frame = 0; frame < frames; ++frame) {
        notes.timeCode.add(TimeCode::read(readHead(from, frame, std::span(memory).first(needed))));
        recording::Reader::Place place;
        from.place(frame, place);
        progress.update(place.offset, bytes);
    }
    notes.firstRecorded = vdv::RecordedAt::read(readHead(from, 0, memory)).text();
    notes.lastRecorded = vdv::RecordedAt::read(readHead(from, frames - 1, memory)).text();
    return notes;
}

/// In which way the recording ended, in the words that programs rely on.
const char* stateName(recording::Reader::End::State state) {
    using State = recording::Reader::End::State;
    return state == State::finished ? "finished" : state == State::beingWritten ? "recording" : "cut off";
}

double durationOf(const recording::Reader& from) {
    return static_cast<double>(from.frames()) / systemOf(from).rate;
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

void reportJson(const recording::Reader& from, const CameraNotes& notes, const Arguments& arguments) {
    const recording::Reader::End end = from.end();
    JsonWriter json;
    json.beginObject();
    json.add("file", utf8(arguments.files[0]));
    json.add("kind", rowOf(from.kind()).identifier);
    json.add("system", from.frames() == 0 ? "" : systemOf(from).name);
    json.add("frames", from.frames());
    json.add("frameSize", from.frameSize());
    json.add("frameRate", systemOf(from).rate);
    json.add("duration", durationOf(from));
    json.add("size", from.fileBytes());
    json.add("state", stateName(end.state));
    json.add("stateDetails", end.text);
    for (const recording::Reader::Fact& fact : from.facts()) {
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

void reportText(const recording::Reader& from, const CameraNotes& notes, const Arguments& arguments) {
    const recording::Reader::End end = from.end();
    std::printf("'%s'\n", utf8(arguments.files[0]).c_str());
    printLine("kind", describe(from.kind()));
    const vdv::System& system = systemOf(from);
    printLine("system", from.frames() == 0 ? "unknown" : format("%s (%s)", system.name, system.broadcast));
    printLine("frames", format("%llu of %lu bytes", from.frames(), from.frameSize()));
    printLine("duration", durationText(durationOf(from)));
    printRange("recorded", notes.firstRecorded, notes.lastRecorded);
    printGaps(notes.timeCode);
    printLine("file size", counted(from.fileBytes(), "byte"));
    for (const recording::Reader::Fact& fact : from.facts()) {
        printLine(fact.title, std::to_string(fact.value));
    }
    printLine("state", stateName(end.state) + (end.text.empty() ? "" : ": " + end.text));
}

} // namespace

ExitStatus showInfo(const Arguments& arguments) {
    const std::unique_ptr<recording::Reader> from = openRecording(arguments.files[0], arguments.sector);
    const CameraNotes notes = [&] {
        Progress progress("reading " + quoted(arguments.files[0]), arguments.progress);
        return readNotes(*from, progress);
    }();
    arguments.json ? reportJson(*from, notes, arguments) : reportText(*from, notes, arguments);
    return ExitStatus::fine;
}

} // namespace dvrec
