#include "bench/cpu_time.h"
#include "bench/engine.h"
#include "bench/groups.h"
#include "bench/statistics.h"

namespace {

/// Nanoseconds of one call, the median of several rounds.
template <class Call>
double costOf_ns(int calls, Call call) {
    std::vector<double> rounds;
    for (int round = 0; round < 7; ++round) {
        const Stopwatch watch;
        for (int i = 0; i < calls; ++i) {
            call();
        }
        rounds.push_back(watch.seconds() / calls * 1e9);
    }
    return median(rounds);
}

void measureLocks(Bench& bench) {
    bench.progress.step("locks");
    const vcore::semaphore own(1, 1);
    const vcore::semaphore kernel(1, nullptr);
    bench.report.add("taking and releasing a lock of the engine",
                     costOf_ns(100000,
                               [&] {
                                   own.wait(INFINITE);
                                   own.unlock();
                               }),
                     "ns");
    bench.report.add("taking and releasing a kernel semaphore",
                     costOf_ns(2000,
                               [&] {
                                   kernel.wait(INFINITE);
                                   kernel.unlock();
                               }),
                     "ns");
}

void measureGraph(Bench& bench) {
    bench.progress.step("the whole graph in real time");
    const TemporaryFile file(L"bench_info.dv");
    const double seconds = bench.scaled(20, 5);
    Engine engine({});
    engine.record(file.name(), 1);
    const unsigned long long before = dvFE.lastFrame();
    const double cpuBefore_s = processCpu_s();
    engine.wait(seconds);
    const auto frames = static_cast<double>(dvFE.lastFrame() - before);
    bench.report.add("building both graphs up to the first frame", engine.initSeconds() * 1000, "ms");
    bench.report.add("processor time of the process per frame, live and recording",
                     (processCpu_s() - cpuBefore_s) * 1e6 / frames, "us", {},
                     "with the simulated camera, splitter and decoder, and the renderer");
}

} // namespace

void measureInfo(Bench& bench) {
    measureLocks(bench);
    measureGraph(bench);
}
