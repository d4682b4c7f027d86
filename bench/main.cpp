#include "bench/avi_copy.h"
#include "bench/groups.h"
#include "marvo.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>

namespace {

struct Group {
    const char* name;
    const char* about;
    void (*measure)(Bench&);
};

const Group groups[] = {
    {"store", "adding frames to the ring, against copying them", measureStore},
    {"writer", "from the ring to the recording file, against writing it", measureWriter},
    {"avi", "writing and reading AVI files, against plain writes and reads", measureAvi},
    {"cpu", "the engine's processor time per live frame", measureCpu},
    {"replay", "from the replay command to its first frame", measureReplay},
    {"seek", "from the seek command to the frame", measureSeek},
    {"loss", "recording a camera at eight times real time", measureLoss},
    {"allocations", "memory allocated while frames flow", measureAllocations},
    {"start", "how long dvrec takes to start, against an empty program", measureStart},
    {"strings", "strings against the standard library's, lookups of settings", measureStrings},
    {"info", "other figures, without targets", measureInfo},
};

bool known(const std::string& name) {
    for (const Group& group : groups) {
        if (name == group.name) {
            return true;
        }
    }
    return false;
}

void printHelp() {
    std::fputs(Options::usage(), stdout);
    for (const Group& group : groups) {
        std::printf("  %-12s %s\n", group.name, group.about);
    }
}

void measure(const Options& options, Report& report) {
    Progress progress;
    Bench bench{options, report, progress};
    for (const Group& group : groups) {
        if (!options.only.empty() && options.only != group.name) {
            continue;
        }
        report.beginGroup(group.name);
        progress.beginGroup(group.name);
        try {
            group.measure(bench);
        } catch (const std::exception& reason) {
            report.notMeasured(reason.what());
        }
    }
}

int copy(const Options& options) {
    try {
        const std::filesystem::path from = options.copyFrom, to = options.copyTo;
        std::printf("%.6f\n", copyStream_s(from.c_str(), to.c_str()));
        return 0;
    } catch (const std::exception& reason) {
        std::fprintf(stderr, "marvo-bench: %s\n", reason.what());
        return 1;
    }
}

} // namespace

int main(int count, char** arguments) {
    Options options;
    try {
        options = Options::parse(count, arguments);
        if (!options.only.empty() && !known(options.only)) {
            throw std::invalid_argument("there is no group " + options.only);
        }
    } catch (const std::exception& reason) {
        std::fprintf(stderr, "marvo-bench: %s; see --help\n", reason.what());
        return 2;
    }
    if (options.help) {
        printHelp();
        return 0;
    }
    if (!options.copyFrom.empty()) {
        return copy(options);
    }
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    Report report;
    measure(options, report);
    report.print();
    const bool written = report.write(options.out, options.quick);
    if (!written) {
        std::fprintf(stderr, "marvo-bench: cannot write %s\n", options.out.c_str());
    }
    CoUninitialize();
    return report.allMet() && written ? 0 : 1;
}
