#include "tools/avi_recording.h"
#include "tools/commands.h"
#include "tools/interruption.h"
#include "tools/json_writer.h"
#include "tools/progress.h"
#include "tools/raw_recording.h"
#include "tools/stream_recording.h"
#include "tools/text.h"

#include <algorithm>
#include <cstdio>

namespace dvrec {

namespace {

/// What is wrong with a recording.
class Faults {
public:
    struct Fault {
        unsigned long long offset;
        std::string text;
    };

    void add(unsigned long long offset, std::string text) {
        if (kept_.size() < mostKept) {
            kept_.emplace_back(offset, std::move(text));
        }
        ++count_;
    }
    void addUnkept(unsigned long long count) { count_ += count; }

    void sortByOffset() {
        std::stable_sort(kept_.begin(), kept_.end(),
                         [](const Fault& one, const Fault& other) { return one.offset < other.offset; });
    }

    const std::vector<Fault>& kept() const { return kept_; }
    unsigned long long count() const { return count_; }

private:
    static constexpr size_t mostKept = 1000;

    std::vector<Fault> kept_;
    unsigned long long count_ = 0;
};

void checkFrames(Recording& recording, Faults& faults, Progress& progress) {
    Slot slot;
    const unsigned long long bytes = recording.file().size();
    for (unsigned long frame = 0; frame < recording.frames(); ++frame) {
        const Recording::Place place = recording.place(frame);
        std::string fault;
        if (recording.read(frame, slot, fault)) {
            fault = faultOf(slot.frame());
        }
        if (!fault.empty()) {
            faults.add(place.offset, format("frame %lu %s", frame, fault.c_str()));
        }
        progress.update(place.offset + place.size, bytes);
    }
    if (recording.frames() == 0) {
        faults.add(0, "there is no whole frame in the file");
    }
}

void checkTail(unsigned long long tail, const Recording& recording, Faults& faults) {
    if (tail > 0) {
        faults.add(recording.file().size() - tail,
                   "the file is cut off: it ends with " + counted(tail, "byte") + " that are no whole frame");
    }
}

void checkRecordHeaders(const RawRecording& recording, Faults& faults) {
    const RawRecording::Header first = recording.header(0);
    for (unsigned long frame = 0; frame < recording.frames(); ++frame) {
        const RawRecording::Header header = recording.header(frame);
        const unsigned long long offset = static_cast<unsigned long long>(frame) * recording.recordSize();
        if (header.frameSize != first.frameSize) {
            faults.add(offset, format("record %lu says that its frame has %lu bytes, the first record %lu",
                                      frame, static_cast<unsigned long>(header.frameSize),
                                      static_cast<unsigned long>(first.frameSize)));
        } else if (header.timePerFrame_100ns != first.timePerFrame_100ns) {
            faults.add(offset, format("record %lu has another time per frame than the first", frame));
        }
    }
}

/// Checks the structure of an AVI file, which the engine knows best.
void checkStructure(const std::wstring& name, Faults& faults, Progress& progress) {
    AviInspector inspector;
    AviInspector::Options options;
    options.frames = false;
    // Exceptions must not pass through the engine, so an interruption waits until the walk has ended.
    options.progress = [&](unsigned long long done, unsigned long long all) {
        progress.show(done, all);
        return !wasInterrupted();
    };
    inspector.run(name.c_str(), options);
    checkInterruption();
    for (const AviInspector::Fault& fault : inspector.faults()) {
        faults.add(fault.offset, utf8(fault.text.oleStr()));
    }
    faults.addUnkept(inspector.faultCount() - inspector.faults().size());
}

void report(const Recording& recording, const Faults& faults, const Arguments& arguments) {
    if (arguments.json) {
        JsonWriter json;
        json.beginObject();
        json.add("file", utf8(arguments.files[0]));
        json.add("kind", identifier(recording.kind()));
        json.add("frames", recording.frames());
        json.add("faultCount", faults.count());
        json.beginList("faults");
        for (const Faults::Fault& fault : faults.kept()) {
            json.beginObject();
            json.add("offset", fault.offset);
            json.add("text", fault.text);
            json.end();
        }
        json.end();
        json.end();
        std::fputs(json.text().c_str(), stdout);
        return;
    }
    for (const Faults::Fault& fault : faults.kept()) {
        std::printf("at byte %llu: %s\n", fault.offset, fault.text.c_str());
    }
    if (faults.count() > faults.kept().size()) {
        std::printf("and %s more\n", counted(faults.count() - faults.kept().size(), "fault").c_str());
    }
    std::printf("'%s': %s, %s, %s\n", utf8(arguments.files[0]).c_str(), describe(recording.kind()),
                counted(recording.frames(), "frame").c_str(),
                faults.count() == 0 ? "no faults" : counted(faults.count(), "fault").c_str());
}

} // namespace

ExitStatus verify(const Arguments& arguments) {
    const std::unique_ptr<Recording> recording = openRecording(arguments.files[0], arguments.sector);
    Faults faults;
    {
        Progress progress("reading " + quoted(arguments.files[0]), arguments.progress);
        if (recording->kind() == Kind::avi) {
            checkStructure(arguments.files[0], faults, progress);
        }
        checkFrames(*recording, faults, progress);
        if (const auto* raw = dynamic_cast<const RawRecording*>(recording.get())) {
            checkRecordHeaders(*raw, faults);
            checkTail(raw->tail(), *raw, faults);
        } else if (const auto* stream = dynamic_cast<const StreamRecording*>(recording.get())) {
            checkTail(stream->tail(), *stream, faults);
        }
    }
    faults.sortByOffset();
    report(*recording, faults, arguments);
    return faults.count() == 0 ? ExitStatus::fine : ExitStatus::faultsFound;
}

} // namespace dvrec
