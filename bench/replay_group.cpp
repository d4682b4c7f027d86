#include "bench/engine.h"
#include "bench/groups.h"
#include "bench/statistics.h"

#include <random>
#include <stdexcept>

namespace {

constexpr int playDelay_ms = 100;
constexpr unsigned long long rangeFrames = 50;

/// Replays of ranges long gone from the ring, in the recording that is still being made.
class Replays {
public:
    explicit Replays(const CameraSetup& camera) : engine_(camera) {
        dvFE.setPlayDelay(playDelay_ms);
        engine_.record(file_.name(), 6 * rangeFrames);
    }

    /// Ticks from the call of `replay` until `playedFrame` is in the range, less the configured delay.
    double start(bool fromLive) {
        if (fromLive) {
            dvFE.live();
        }
        // A command comes at any time within a tick.
        engine_.wait(std::uniform_real_distribution(0.1, 0.2)(random_));
        const unsigned long long from = nextRange();
        const Stopwatch watch;
        if (!dvFE.replay(from, from + rangeFrames - 1, file_.name())) {
            throw std::runtime_error("replay is refused");
        }
        if (!engine_.waitFor([=] { return dvFE.playedFrame() - from < rangeFrames; }, 3)) {
            throw std::runtime_error("replay shows no frame of its range within 3 s");
        }
        return (watch.seconds() - playDelay_ms * 1e-3) / Engine::period_s;
    }

private:
    /// The first frame of a range that does not hold what is being shown: one of the recording's two halves
    /// in turn.
    unsigned long long nextRange() {
        second_ = !second_;
        return (second_ ? 2 * rangeFrames : 0) + random_() % rangeFrames;
    }

    TemporaryFile file_{L"bench_replay.dv"};
    Engine engine_;
    std::mt19937 random_{1};
    bool second_ = false;
};

void report(Bench& bench, const std::string& name, const std::vector<double>& ticks) {
    bench.report.add(
        name + ", median", median(ticks), "ticks", Target::atMost(2),
        "from replay() until playedFrame() is in the range, less the play delay; 1 tick = 40 ms");
    bench.report.add(name + ", 99 of 100", percentile(ticks, 0.99), "ticks");
    bench.report.add(name + ", longest", percentile(ticks, 1), "ticks");
}

} // namespace

void measureReplay(Bench& bench) {
    bench.progress.step("recording something to replay");
    Replays replays({});
    const int trials = bench.scaled(60, 20);
    std::vector<double> fromLive, fromReplay;
    bench.progress.step("starting replays");
    for (int i = 0; i < trials; ++i) {
        fromLive.push_back(replays.start(true));
        fromReplay.push_back(replays.start(false));
        bench.progress.part(i, trials);
    }
    report(bench, "live to the first frame of a replay", fromLive);
    report(bench, "one replay to the first frame of another", fromReplay);
}
