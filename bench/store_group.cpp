#include "bench/frame_buffers.h"
#include "bench/groups.h"
#include "bench/sample_pool.h"
#include "bench/statistics.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace {

constexpr size_t ringFrames = 50;
constexpr size_t sampleCount = 8;

struct System {
    const char* name;
    size_t frameSize;
    unsigned long long period_100ns;
};

const System systems[] = {{"PAL", 144000, 400000}, {"NTSC", 120000, 333333}};

void measureSystem(Bench& bench, const System& system) {
    const FrameBuffers slots(ringFrames, system.frameSize);
    const SamplePool pool(sampleCount, system.frameSize);
    std::vector<vwin::com_<IMediaSample>> samples;
    for (size_t i = 0; i < sampleCount; ++i) {
        samples.push_back(pool.sample(slots[i]));
    }
    dvFrameStore store;
    if (!store.init(static_cast<unsigned long>(system.frameSize), system.period_100ns, ringFrames)) {
        throw std::runtime_error("the frame store gives no ring");
    }
    const int frames = bench.scaled(3000, 1000);
    const int rounds = bench.scaled(21, 9);
    int done = 0;
    bench.progress.step(std::string(system.name) + " frames into the ring");

    const auto add = [&] {
        bench.progress.part(done++, rounds);
        const Stopwatch watch;
        for (int i = 0; i < frames; ++i) {
            store.add(samples[static_cast<size_t>(i) % sampleCount].ptr());
        }
        return watch.seconds();
    };
    const auto copy = [&] {
        const Stopwatch watch;
        for (size_t i = 0; i < static_cast<size_t>(frames); ++i) {
            std::memcpy(slots[i], bytesOf(samples[i % sampleCount].ptr()), system.frameSize);
        }
        return watch.seconds();
    };
    const Comparison result = compare(rounds, add, copy);
    if (store.lastFrame() != static_cast<unsigned long long>(frames) * static_cast<unsigned>(rounds + 1)) {
        throw std::runtime_error("the frame store did not take every frame");
    }

    const std::string name = std::string(system.name) + " frames into the ring";
    bench.report.add(name + ", against copying them", result.ratio, "ratio", Target::atLeast(0.8));
    bench.report.add(name, frames / result.engine_s, "frames/s");
    bench.report.add(name + ": the copies alone", frames / result.baseline_s, "frames/s");
}

} // namespace

void measureStore(Bench& bench) {
    for (const System& system : systems) {
        measureSystem(bench, system);
    }
}
