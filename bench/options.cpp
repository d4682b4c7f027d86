#include "bench/options.h"

#include <stdexcept>

Options Options::parse(int count, const char* const* arguments) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (argument == "--quick") {
            options.quick = true;
        } else if (argument == "--help") {
            options.help = true;
        } else if (argument == "--only" || argument == "--out") {
            if (++i == count) {
                throw std::invalid_argument(argument + " needs a value");
            }
            (argument == "--only" ? options.only : options.out) = arguments[i];
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
           "  --quick       shorter rounds and fewer of them\n"
           "  --only GROUP  one group of measurements\n"
           "  --out FILE    where the figures go as JSON (out\\bench.json); a Windows path\n"
           "  --help        this text\n"
           "\n"
           "Groups:\n";
}
