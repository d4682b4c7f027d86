#include "tools/commands.h"
#include "tools/head_reader.h"
#include "tools/json_writer.h"
#include "tools/progress.h"
#include "tools/recording.h"
#include "tools/text.h"
#include "tools/time_code_gaps.h"

#include "marvo/dv/frame_notes.h"
#include "marvo/dv/sound.h"
#include "marvo/dv/recorded_at.h"

#include <cstdio>
#include <memory>

namespace dvrec {

namespace {

constexpr size_t mostGaps = 10;

/// What the camera noted in the frames.
struct CameraNotes {
    TimeCodeGaps timeCode;
    std::string firstRecorded;
    std::string lastRecorded;
    std::string codec; ///< these by the first frame
    dvAspect aspect;
    dvFields fields;
    std::unique_ptr<dvSound> sound;
};

/// The sound of a frame in words.
std::string soundText(const dvSound& sound) {
    return sound.rate() == 0
               ? "none"
               : format("%lu Hz, %s of %u bits%s", sound.rate(), counted(sound.channels(), "channel").c_str(),
                        sound.bits(), sound.locked() ? "" : ", not locked to the picture");
}

/// The codec in words: the family that the frame's header says, its rate and how it samples colour.
std::string codecOf(vdv::FrameBytes frame) {
    const vdv::System* const system = vdv::systemOf(static_cast<unsigned long>(frame.size()));
    if (!system || frame.size() <= 4) {
        return {};
    }
    const unsigned long channels = static_cast<unsigned long>(frame.size()) / system->frameBytes;
    if (channels > 1) {
        return format("DV %lu Mbit/s, 4:2:2", channels * 25);
    }
    // The application id: 0 is that of consumers' cameras.
    const bool consumer = (frame[4] & 7) == 0;
    return format("DV 25 Mbit/s, %s", system == &vdv::system625 && consumer ? "4:2:0" : "4:1:1");
}

std::string aspectText(const dvAspect& aspect) {
    return format("%u:%u", aspect.width, aspect.height);
}

/// The field order in the words that programs rely on.
const char* fieldsName(const dvFields& fields) {
    return !fields.known            ? "unknown"
           : !fields.interlaced     ? "progressive"
           : fields.upperFieldFirst ? "top first"
                                    : "bottom first";
}

const vdv::System& systemOf(const recording::Reader& from) {
    const vdv::System* const system = vdv::systemOf(from.frameSize());
    return system ? *system : vdv::system525;
}

CameraNotes readNotes(const recording::Reader& from, Progress& progress) {
    CameraNotes notes{
        TimeCodeGaps(systemOf(from).countedRate, mostGaps), {}, {}, {}, {}, {}, std::make_unique<dvSound>()};
    const unsigned long long frames = from.frames();
    if (frames == 0) {
        return notes;
    }
    HeadReader reader(from);
    const unsigned long long bytes = from.fileBytes();
    for (unsigned long long frame = 0; frame < frames; ++frame) {
        notes.timeCode.add(TimeCode::read(reader.head(frame)));
        recording::Reader::Place place;
        from.place(frame, place);
        progress.update(place.offset, bytes);
    }
    notes.lastRecorded = vdv::RecordedAt::read(reader.whole(frames - 1)).text();
    const vdv::FrameBytes first = reader.whole(0);
    notes.firstRecorded = vdv::RecordedAt::read(first).text();
    notes.codec = codecOf(first);
    notes.aspect = dvFrameNotes::aspect(first.data(), first.size());
    notes.fields = dvFrameNotes::fields(first.data(), first.size());
    notes.sound->decode(first.data(), static_cast<unsigned long>(first.size()));
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
    JsonWriter json(arguments.lines);
    json.beginObject();
    json.add("file", utf8Name(arguments.files[0]));
    json.add("kind", rowOf(from.kind()).identifier);
    json.add("system", from.frames() == 0 ? "" : systemOf(from).name);
    json.add("frames", from.frames());
    json.add("frameSize", from.frameSize());
    json.add("frameRate", systemOf(from).rate);
    json.add("duration", durationOf(from));
    json.add("codec", notes.codec);
    json.add("aspect", notes.aspect.known ? aspectText(notes.aspect) : "");
    json.add("fields", fieldsName(notes.fields));
    json.beginObject("sound");
    json.add("rate", notes.sound->rate());
    json.add("channels", static_cast<unsigned long>(notes.sound->channels()));
    json.add("bits", static_cast<unsigned long>(notes.sound->bits()));
    json.add("locked", notes.sound->locked());
    json.end();
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
    std::printf("%s\n", quoted(arguments.files[0]).c_str());
    printLine("kind", describe(from.kind()));
    const vdv::System& system = systemOf(from);
    printLine("system", from.frames() == 0 ? "unknown" : format("%s (%s)", system.name, system.broadcast));
    printLine("frames", format("%llu of %lu bytes", from.frames(), from.frameSize()));
    printLine("duration", durationText(durationOf(from)));
    printLine("codec", notes.codec.empty() ? "unknown" : notes.codec);
    printLine("picture", aspectText(notes.aspect) + (notes.aspect.known ? "" : " (not in the frames)") +
                             ", fields: " + fieldsName(notes.fields));
    printLine("sound", soundText(*notes.sound));
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
