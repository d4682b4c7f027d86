#include "tools/commands.h"
#include "tools/interruption.h"
#include "tools/json_writer.h"
#include "tools/progress.h"
#include "tools/recording.h"
#include "tools/text.h"

#include "marvo/recording/verification.h"

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
        const auto add = [&](unsigned long long offset, const std::string& text) {
            faults.add(offset, text);
        };
        const auto show = [&](unsigned long long done, unsigned long long all) {
            progress.show(done, all);
            return !wasInterrupted();
        };
        const unsigned long long all = recording::verify(*from, Faults::mostKept, add, show);
        checkInterruption();
        faults.addUnkept(all - faults.count());
    }
    faults.sortByOffset();
    report(*from, faults, arguments);
    return faults.count() == 0 ? ExitStatus::fine : ExitStatus::faultsFound;
}

} // namespace dvrec
