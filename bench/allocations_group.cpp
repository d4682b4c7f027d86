#include "bench/allocation_counter.h"
#include "bench/engine.h"
#include "bench/groups.h"

#include <stdexcept>

namespace {

constexpr double speed = 4;

/// Counts while frames flow, and reports the allocations per captured frame.
void countWhile(Bench& bench, Engine& engine, AllocationCounter& counter, const std::string& name,
                std::optional<Target> target) {
    bench.progress.step(name);
    // What a command sets up is done by then.
    engine.wait(0.5);
    const double seconds = bench.scaled(20, 5);
    const unsigned long long before = dvFE.lastFrame();
    const int ticksBefore = engine.ticks();
    counter.reset();
    engine.waitFor(
        [&, begun = now_s()] {
            bench.progress.part(now_s() - begun, seconds);
            return false;
        },
        seconds);
    const unsigned long long allocations = counter.count();
    const std::string text = counter.text();
    const auto frames = static_cast<double>(dvFE.lastFrame() - before);
    const int ticks = engine.ticks() - ticksBefore;
    if (frames < seconds || ticks < seconds) {
        throw std::runtime_error("hardly a frame has come while allocations were counted");
    }
    bench.report.add("allocations per frame, " + name, static_cast<double>(allocations) / frames,
                     "allocations", target,
                     std::to_string(static_cast<int>(frames)) + " frames captured, " + std::to_string(ticks) +
                         " shown: " + (text.empty() ? "none" : text));
}

/// A counter that counts nothing would report success: these two objects allocate for certain.
void proveCounting(AllocationCounter& counter) {
    counter.reset();
    const vcore::str text(L"a text that is too long for any buffer within the object itself");
    vvideo::dvFrame frame(144000, nullptr);
    if (counter.functions() == 0 || counter.count() < 2) {
        throw std::runtime_error("the engine's allocations cannot be counted");
    }
}

} // namespace

void measureAllocations(Bench& bench) {
    const TemporaryFile raw(L"bench_allocations.dv");
    const TemporaryFile avi(L"bench_allocations.avi");
    AllocationCounter counter;
    proveCounting(counter);
    Engine engine({speed});
    countWhile(bench, engine, counter, "live", Target::atMost(0));
    engine.record(raw.name(), 500);
    countWhile(bench, engine, counter, "live and recording", Target::atMost(0));
    if (!dvFE.replay(0, 199, raw.name())) {
        throw std::runtime_error("replay is refused");
    }
    countWhile(bench, engine, counter, "replaying and recording", Target::atMost(0));
    dvFE.stopRecord();
    dvFE.live();
    engine.record(avi.name(), 500);
    countWhile(bench, engine, counter, "live and recording AVI", Target::atMost(0));
    if (!dvFE.replay(0, 199, avi.name())) {
        throw std::runtime_error("replay of AVI is refused");
    }
    countWhile(bench, engine, counter, "replaying and recording AVI", Target::atMost(0));
}
