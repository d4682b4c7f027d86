#include "bench/options.h"

#include <stdexcept>

Options Options::parse(int count, const char* const* arguments) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        const auto value = [&] {
            if (++i == count) {
                throw std::invalid_argument(argument + " needs a value");
            }
            return arguments[i];
        };
        if (argument == "--quick") {
            options.quick = true;
        } else if (argument == "--help") {
            options.help = true;
        } else if (argument == "--only") {
            options.only = value();
        } else if (argument == "--out") {
            options.out = value();
        } else if (argument == "--ffmpeg") {
            options.ffmpeg = value();
        } else if (argument == "--copy") {
            options.copyFrom = value();
            options.copyTo = value();
        } else {
            throw std::invalid_argument("unknown argument " + argument);
        }
    }
    return options;
}

const char* Options::usage() {
    return "usage: marvo-bench [--quick] [--only GROUP] [--out FILE]\n"
           "\n"
           "Measures the engine and prints a table; exits with 1 when a target is missed.\n"
           "Ratios compare with a baseline that is run in turn with the engine in the same process.\n"
           "\n"
           "  --quick            shorter rounds and fewer of them\n"
           "  --only GROUP       one group of measurements\n"
           "  --out FILE         where the figures go as JSON (out\\bench.json); a Windows path\n"
           "  --copy STREAM AVI  only copies a PAL stream into an AVI file and prints the seconds it took\n"
           "  --ffmpeg FILE      copying times to report: lines of two numbers, --copy's and ffmpeg's "
           "seconds\n"
           "  --help             this text\n"
           "\n"
           "Groups:\n";
}
