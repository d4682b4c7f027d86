#include "tools/commands.h"
#include "tools/interruption.h"
#include "tools/json_writer.h"
#include "tools/progress.h"
#include "tools/recording.h"
#include "tools/text.h"

#include "marvo/dv/inspection.h"

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

    static constexpr unsigned long mostKept = 1000;

private:
    std::vector<Fault> kept_;
    unsigned long long count_ = 0;
};

/// What the reader of the kind knows to be wrong: the structure, and how the file ends.
void checkStructure(const recording::Reader& from, Faults& faults, Progress& progress) {
    const auto add = [&](unsigned long long offset, const std::string& text) { faults.add(offset, text); };
    const auto show = [&](unsigned long long done, unsigned long long all) {
        progress.show(done, all);
        return !wasInterrupted();
    };
    faults.addUnkept(from.check(add, show, Faults::mostKept));
    checkInterruption();
}

void checkFrames(recording::Reader& from, Faults& faults, Progress& progress) {
    recording::RecordBuffer buffer;
    allocate(buffer, from.bufferBytes());
    const unsigned long long bytes = from.fileBytes();
    for (unsigned long long frame = 0; frame < from.frames(); ++frame) {
        recording::Reader::Place place;
        from.place(frame, place);
        std::string fault;
        if (readFrame(from, frame, buffer, fault)) {
            fault = vdv::faultOf({buffer.frame(), buffer.frameBytes()});
        }
        if (!fault.empty()) {
            faults.add(place.offset, format("frame %llu %s", frame, fault.c_str()));
        }
        progress.update(place.offset + place.size, bytes);
    }
    if (from.frames() == 0) {
        faults.add(0, "there is no whole frame in the file");
    }
}

void report(const recording::Reader& from, const Faults& faults, const Arguments& arguments) {
    if (arguments.json) {
        JsonWriter json(arguments.lines);
        json.beginObject();
        json.add("file", utf8Name(arguments.files[0]));
        json.add("kind", rowOf(from.kind()).identifier);
        json.add("frames", from.frames());
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
    std::printf("%s: %s, %s, %s\n", quoted(arguments.files[0]).c_str(), describe(from.kind()),
                counted(from.frames(), "frame").c_str(),
                faults.count() == 0 ? "no faults" : counted(faults.count(), "fault").c_str());
}

} // namespace

ExitStatus verify(const Arguments& arguments) {
    const std::unique_ptr<recording::Reader> from = openRecording(arguments.files[0], arguments.sector);
    Faults faults;
    {
        Progress progress("reading " + quoted(arguments.files[0]), arguments.progress);
        checkStructure(*from, faults, progress);
        checkFrames(*from, faults, progress);
    }
    faults.sortByOffset();
    report(*from, faults, arguments);
    return faults.count() == 0 ? ExitStatus::fine : ExitStatus::faultsFound;
}

} // namespace dvrec
