#include "bench/groups.h"
#include "bench/statistics.h"

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

void measureScrub(Bench& bench) {
    std::ifstream lines(bench.options.scrub);
    std::vector<double> times_ms;
    double lost = -1;
    for (std::string word; lines >> word;) {
        if (word == "lost") {
            lines >> lost;
        } else {
            times_ms.push_back(std::stod(word));
        }
    }
    if (times_ms.empty() || lost < 0) {
        throw std::runtime_error("needs ./bench.sh, which drags the mouse in the application's window");
    }
    constexpr double tick_ms = 40;
    const std::string note = "from the mouse's move to other pixels, while recording; " +
                             std::to_string(times_ms.size()) + " moves";
    bench.report.add("scrubbing, median", percentile(times_ms, 0.5) / tick_ms, "ticks", Target::atMost(2),
                     note);
    bench.report.add("scrubbing, 99th percentile", percentile(times_ms, 0.99) / tick_ms, "ticks",
                     Target::atMost(4));
    bench.report.add("frames lost meanwhile", lost, "frames", Target::atMost(0));
}
