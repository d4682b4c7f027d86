#include "bench/engine.h"
#include "bench/groups.h"
#include "bench/statistics.h"

#include <stdexcept>

namespace {

/// Seconds from when a camera that was lost is there again until its next frame is shown live. The camera
/// goes one period behind the frame before, and comes back after a second.
double backToLive_s(int round) {
    constexpr double away_s = 1;
    // Another scenario begins the losses anew.
    Engine engine({1, "", Engine::ringFrames, "lose = 30:1000\nscenario = " + std::to_string(round) + "\n"});
    unsigned long long newest = 0;
    double newest_s = now_s();
    const auto lost = [&] {
        if (const unsigned long long next = dvFE.lastFrame(); next != newest) {
            newest = next;
            newest_s = now_s();
        }
        return dvFE.cameraState().lost != 0;
    };
    if (!engine.waitFor(lost) || !engine.waitFor([&] {
            const unsigned long long shown = dvFE.playedFrame();
            return shown != ~0ull && shown >= newest && dvFE.lastFrame() > newest;
        })) {
        throw std::runtime_error("the camera is not lost and taken up again");
    }
    return now_s() - (newest_s + Engine::period_s + away_s);
}

} // namespace

void measureCommands(Bench& bench) {
    const int rounds = bench.scaled(15, 5);
    std::vector<double> init_s, done_s, back_s;
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
    bench.progress.step("losing the camera");
    for (int round = 0; round < rounds; ++round) {
        back_s.push_back(backToLive_s(round));
        bench.progress.part(round + 1, rounds);
    }
    const auto add = [&](const std::string& what, const std::vector<double>& seconds, double limit_s) {
        bench.report.add(what + ", longest", percentile(seconds, 1), "s", Target::atMost(limit_s));
        bench.report.add(what + ", median", median(seconds), "s");
    };
    add("init, until both graphs run and the first frame is there", init_s, 1.5);
    add("done", done_s, 0.5);
    add("from the camera's return to its next frame shown live", back_s, 1);
}
