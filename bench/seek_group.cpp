#include "bench/engine.h"
#include "bench/groups.h"
#include "bench/statistics.h"

#include <random>
#include <stdexcept>

namespace {

/// A range being replayed, and seeks within it. Play goes on meanwhile, and so does the recording.
class Seeks {
public:
    Seeks(Engine& engine, std::mt19937& random, const wchar_t* file, unsigned long long from,
          unsigned long long frames)
        : engine_(engine), random_(random), from_(from), frames_(frames) {
        if (!dvFE.replay(from, from + frames - 1, file) ||
            !engine_.waitFor([&] { return distance(dvFE.playedFrame()) < frames_; }, 3)) {
            throw std::runtime_error("replay shows no frame of its range within 3 s");
        }
    }

    /// A frame of the range, `least` to `most` frames on from the one being shown, going round.
    unsigned long long target(unsigned long long least, unsigned long long most) {
        const unsigned long long step = least + random_() % (most - least + 1);
        return from_ + (distance(dvFE.playedFrame()) + step) % frames_;
    }

    /// Ticks from the call of `seekPosition` until `playedFrame` is the frame, or one just behind it when the
    /// machine has kept this thread from asking in time.
    double ticksTo(unsigned long long frame) {
        constexpr unsigned long long overlooked = 3;
        const Stopwatch watch;
        dvFE.seekPosition(frame);
        if (!engine_.waitFor([=] { return dvFE.playedFrame() - frame < overlooked; }, 3)) {
            throw std::runtime_error("a seek shows no frame within 3 s");
        }
        return watch.seconds() / Engine::period_s;
    }

    /// Commands come at any time within a tick.
    void waitAnyTime(double least_s) {
        engine_.wait(std::uniform_real_distribution(least_s, least_s + Engine::period_s)(random_));
    }

private:
    unsigned long long distance(unsigned long long frame) const { return frame - from_; }

    Engine& engine_;
    std::mt19937& random_;
    unsigned long long from_;
    unsigned long long frames_;
};

bool inRing(unsigned long long frame) {
    return dvFE.recFilter().store().findFrame(frame) != nullptr;
}

/// A range of the newest half of the ring, which the ring still holds whole after these few seeks.
void seekInRing(Engine& engine, std::mt19937& random, const wchar_t* file, std::vector<double>& ticks) {
    constexpr unsigned long long frames = Engine::ringFrames / 2;
    constexpr int seeks = 4;
    Seeks range(engine, random, file, dvFE.writtenFrame() - frames - 2, frames);
    for (int i = 0; i < seeks; ++i) {
        range.waitAnyTime(0.04);
        const unsigned long long frame = range.target(6, frames - 6);
        const double taken = range.ticksTo(frame);
        if (!inRing(frame)) {
            throw std::runtime_error("a frame has left the ring before it was shown");
        }
        ticks.push_back(taken);
    }
}

/// So far from what is shown that the loader's ring (50 frames) does not hold it.
void seekInFile(Engine& engine, std::mt19937& random, const wchar_t* file, int seeks,
                std::vector<double>& ticks, Progress& progress) {
    constexpr unsigned long long frames = 200;
    Seeks range(engine, random, file, 0, frames);
    for (int i = 0; i < seeks; ++i) {
        range.waitAnyTime(0.12);
        const unsigned long long frame = range.target(60, 140);
        if (inRing(frame)) {
            throw std::runtime_error("a frame that should come from the file is in the ring");
        }
        ticks.push_back(range.ticksTo(frame));
        progress.part(i, seeks);
    }
}

void report(Bench& bench, const std::string& name, const std::vector<double>& ticks, double limit) {
    bench.report.add(
        name + ", median", median(ticks), "ticks", Target::atMost(limit),
        "from seekPosition() at a random time of the tick until playedFrame() is the frame; 1 tick = 40 ms");
    bench.report.add(name + ", 99 of 100", percentile(ticks, 0.99), "ticks");
    bench.report.add(name + ", longest", percentile(ticks, 1), "ticks");
}

} // namespace

void measureSeek(Bench& bench) {
    const TemporaryFile file(L"bench_seek.dv");
    bench.progress.step("recording something to seek in");
    Engine engine({});
    engine.record(file.name(), 300);
    std::mt19937 random(1);
    const int trials = bench.scaled(120, 40);

    bench.progress.step("seeking in the ring");
    std::vector<double> ring, disk;
    while (ring.size() < static_cast<size_t>(trials)) {
        seekInRing(engine, random, file.name(), ring);
        bench.progress.part(static_cast<double>(ring.size()), trials);
    }
    bench.progress.step("seeking in the file");
    seekInFile(engine, random, file.name(), trials, disk, bench.progress);

    report(bench, "seek to a frame in the ring", ring, 1);
    report(bench, "seek to a frame in the file", disk, 1);
}
