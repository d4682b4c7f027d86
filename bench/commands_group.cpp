#include "bench/camera_log.h"
#include "bench/engine.h"
#include "bench/groups.h"
#include "bench/statistics.h"

#include <stdexcept>

void measureCommands(Bench& bench) {
    const int rounds = bench.scaled(15, 5);
    std::vector<double> init_s, done_s;
    bench.progress.step("building and taking apart");
    for (int round = 0; round < rounds; ++round) {
        Engine engine({});
        init_s.push_back(engine.initSeconds());
        engine.wait(0.2);
        const Stopwatch watch;
        dvFE.done();
        done_s.push_back(watch.seconds());
        bench.progress.part(round + 1, rounds);
    }
    bench.report.add("init, until both graphs run and the first frame is there, longest",
                     percentile(init_s, 1), "s", Target::atMost(1.5),
                     "median " + std::to_string(median(init_s)) + " s");
    bench.report.add("done, longest", percentile(done_s, 1), "s", Target::atMost(0.5),
                     "median " + std::to_string(median(done_s)) + " s");
}
