#include "bench/avi_copy.h"
#include "bench/groups.h"
#include "marvo.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

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
    {"lateness", "frames shown on a loaded machine, against a bare wait for the clock", measureLateness},
    {"commands", "building, taking apart, and a camera that comes back", measureCommands},
    {"loss", "recording a camera at twenty times real time", measureLoss},
    {"allocations", "memory allocated while frames flow", measureAllocations},
    {"start", "how long dvrec takes to start, against an empty program", measureStart},
    {"strings", "strings against the standard library's, lookups of settings", measureStrings},
    {"decoder", "the simulated decoder, against ffmpeg's", measureDecoder},
    {"scrub", "from the mouse on the application's timeline to the picture", measureScrub},
    {"info", "other figures, without targets", measureInfo},
};

/// Makes the options known to the parser, which fills them in.
void declare(Options& options, CLI::App& parser) {
    parser.description(
        "Measures the engine and prints a table; exits with 1 when a target is missed.\n"
        "Ratios compare with a baseline that is run in turn with the engine in the same process.");
    std::vector<std::string> names;
    std::string footer = "Groups:";
    for (const Group& group : groups) {
        names.emplace_back(group.name);
        footer += "\n  " + names.back() + std::string(12 - names.back().size(), ' ') + group.about;
    }
    parser.footer(footer);
    parser.add_flag("--quick", options.quick, "shorter rounds and fewer of them");
    parser.add_option("--only", options.only, "one group of measurements")
        ->type_name("GROUP")
        ->check(CLI::IsMember(names).description(""));
    parser.add_option("--out", options.out, "where the figures go as JSON")
        ->type_name("FILE")
        ->capture_default_str();
    parser
        .add_option("--copy", options.copy,
                    "only copies a PAL stream into an AVI file and prints the seconds")
        ->type_name("STREAM AVI")
        ->expected(2);
    parser.add_option("--ffmpeg", options.ffmpeg, "lines of seconds to report: of --copy and of ffmpeg")
        ->type_name("FILE");
    parser
        .add_option("--ffmpeg-decoding", options.ffmpegDecoding,
                    "lines of stream, frames and seconds to report, of ffmpeg")
        ->type_name("FILE");
    parser.add_option("--scrub", options.scrub, "lines of milliseconds to report, and of frames lost")
        ->type_name("FILE");
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
        const std::filesystem::path from = options.copy[0], to = options.copy[1];
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
    CLI::App parser;
    declare(options, parser);
    try {
        parser.parse(count, arguments);
    } catch (const CLI::ParseError& reason) {
        return parser.exit(reason) == 0 ? 0 : 2;
    }
    if (!options.copy.empty()) {
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
