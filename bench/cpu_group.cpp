#include "bench/bare_pipeline.h"
#include "bench/counting_pin.h"
#include "bench/cpu_time.h"
#include "bench/groups.h"
#include "bench/paced_feed.h"
#include "bench/pipeline.h"
#include "bench/statistics.h"

#include <stdexcept>

namespace {

/// Times real time. More would not fit: the play thread rests 5 ms in each period.
constexpr int pace = 4;
constexpr long long period_100ns = 400000 / pace;

/// What the engine may need over the system calls that its design prescribes, measured bare in the same run.
constexpr double allowedOverBare = 1.3;
/// The copies of a frame that it may need besides: into the ring, for the display, into the sample ...
constexpr int liveCopies = 3;
/// ... and for the file.
constexpr int recordedCopies = 4;

/// What one of the pipelines does.
enum class Work { live, liveAndRecording };

/// Processor time per frame, in us.
double feedCpu_us(const PacedFeed& feed, IMemInputPin* pin, int frames) {
    const double before_s = processCpu_s();
    feed.feed(pin, frames);
    return (processCpu_s() - before_s) * 1e6 / frames;
}

/// The processor time advances in steps that are large for one round, so means of the rounds are reported: no
/// step is lost between them.
struct Rounds {
    std::vector<double> feed_us;
    std::vector<double> bare_us;   ///< less the feed
    std::vector<double> engine_us; ///< less the feed
    int fed = 0;
    int shown = 0;
};

void addRound(Rounds& rounds, const PacedFeed& feed, int frames, Work work) {
    const bool recording = work == Work::liveAndRecording;
    CountingPin idle;
    const double feed_us = feedCpu_us(feed, &idle, frames);
    rounds.feed_us.push_back(feed_us);
    constexpr int warmUp = Pipeline::ringFrames;
    {
        BarePipeline bare(Pipeline::frameSize, Pipeline::ringFrames, period_100ns, recording);
        feed.feed(bare.input(), warmUp);
        rounds.bare_us.push_back(feedCpu_us(feed, bare.input(), frames) - feed_us);
    }
    const TemporaryFile file(L"bench_cpu.dv");
    CountingPin sink;
    Pipeline pipeline(sink, feed.allocator(), period_100ns, recording ? file.name() : nullptr);
    feed.feed(pipeline.input(), warmUp);
    const int shownBefore = sink.received();
    rounds.engine_us.push_back(feedCpu_us(feed, pipeline.input(), frames) - feed_us);
    rounds.fed += frames;
    rounds.shown += sink.received() - shownBefore;
    const unsigned long long captured = pipeline.store().lastFrame();
    if (captured != warmUp + static_cast<unsigned long long>(frames) ||
        (recording && pipeline.store().writtenFrame() + Pipeline::ringFrames < captured)) {
        throw std::runtime_error("the pipeline lost frames");
    }
}

Rounds measureRounds(Bench& bench, const PacedFeed& feed, Work work) {
    constexpr int frames = 1000;
    const int roundCount = bench.scaled(4, 2);
    Rounds rounds;
    for (int i = 0; i < roundCount; ++i) {
        addRound(rounds, feed, frames, work);
        bench.progress.part(i + 1, roundCount);
    }
    return rounds;
}

void addRows(Bench& bench, Work work, const Rounds& rounds, double copy_us) {
    const std::string what = work == Work::live ? "live" : "live and recording";
    const int copies = work == Work::live ? liveCopies : recordedCopies;
    const double bare_us = mean(rounds.bare_us);
    const double own_us = mean(rounds.engine_us);
    bench.report.add(
        "engine's processor time per frame, " + what, own_us, "us",
        Target::atMost(allowedOverBare * bare_us + copies * copy_us),
        "PAL at 4 times real time, less the same feed without the engine; limit: 1.3 times the same "
        "system calls alone, and " +
            std::to_string(copies) + " copies");
    bench.report.add("frames shown per frame captured, " + what,
                     static_cast<double>(rounds.shown) / rounds.fed, "ratio", Target::atLeast(0.95),
                     "without it the figure above would leave out the play side");
    bench.report.add("the same system calls alone, " + what, bare_us, "us", {},
                     "waits, samples and writes as the engine has them, but no engine and no copies");
    bench.report.add("engine against these calls, " + what, own_us / bare_us, "times", {},
                     "with its copies, which it cannot do without");
    bench.report.add("engine less its copies, against these calls, " + what,
                     (own_us - copies * copy_us) / bare_us, "times");
    bench.report.add("processor time per frame of the feed alone, " + what, mean(rounds.feed_us), "us");
}

} // namespace

void measureCpu(Bench& bench) {
    bench.progress.step("copies of a frame");
    const double copy_us = coldCopy_s(Pipeline::frameSize) * 1e6;
    const PacedFeed feed(Pipeline::frameSize, static_cast<double>(period_100ns) * 1e-7);
    bench.progress.step("live frames through the whole pipeline, recorded");
    addRows(bench, Work::liveAndRecording, measureRounds(bench, feed, Work::liveAndRecording), copy_us);
    bench.progress.step("live frames through the whole pipeline, not recorded");
    addRows(bench, Work::live, measureRounds(bench, feed, Work::live), copy_us);
    bench.report.add("one copy of a frame, out of the caches", copy_us, "us");
    bench.report.add("step of the processor time, per frame of a round", processCpuStep_s() * 1e6 / 1000,
                     "us", {}, "how fine the figures above can be");
}
