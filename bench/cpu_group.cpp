#include "bench/bare_pipeline.h"
#include "bench/counting_pin.h"
#include "bench/cpu_time.h"
#include "bench/groups.h"
#include "bench/paced_feed.h"
#include "bench/recording.h"
#include "bench/statistics.h"

#include <stdexcept>

namespace {

constexpr unsigned long frameSize = 144000;
constexpr unsigned long ringFrames = 50;
/// Times real time. More would not fit: the play thread rests 5 ms in each period.
constexpr int pace = 4;
constexpr long long period_100ns = 400000 / pace;

/// What the engine may need: a little more than the system calls that its design prescribes, measured bare in
/// the same run, and the copies of a frame: into the ring, for the file, for the display, into the sample.
constexpr int allowedCopies = 4;
constexpr double allowedOverBare = 1.3;

/// The engine's whole pipeline between a foreign source and a foreign sink: record filter, store, writer and
/// file; play filter on the same store, paced by the system's clock at the rate of the source.
class Pipeline {
public:
    explicit Pipeline(const PacedFeed& feed) : file_(L"bench_cpu.dv") {
        vvideo::dvMediaType type;
        type.initDVType(frameSize, true);
        type.setTimePerFrame(period_100ns);
        recordPin_.attach(pinOf(record_, 0));
        playPin_.attach(pinOf(play_, 0));
        if (recordPin_->ReceiveConnection(&source_, type) != S_OK || !input_.ref(recordPin_.ptr()) ||
            FAILED(input_->NotifyAllocator(feed.allocator(), FALSE)) || !record_.init(ringFrames) ||
            !play_.init(record_.store(), type) || playPin_->Connect(&sink_, nullptr) != S_OK ||
            !clock_.create(CLSID_SystemClock)) {
            throw std::runtime_error("the pipeline cannot be built");
        }
        play_.SetSyncSource(clock_.ptr());
        if (!record_.store().startRecord(file_.name()) || FAILED(record_.Run(0)) || FAILED(play_.Run(0))) {
            throw std::runtime_error("the pipeline does not run");
        }
    }

    ~Pipeline() {
        play_.done();
        play_.Stop();
        play_.SetSyncSource(nullptr);
        record_.done();
        record_.Stop();
        sink_.Disconnect();
        playPin_->Disconnect();
        recordPin_->Disconnect();
    }

    IMemInputPin* input() const { return input_.ptr(); }
    unsigned long long captured() { return record_.store().lastFrame(); }
    unsigned long long written() { return record_.store().writtenFrame(); }
    int shown() const { return sink_.received(); }

private:
    TemporaryFile file_;
    ForeignPin source_{PINDIR_OUTPUT};
    CountingPin sink_;
    dvRecFilter record_;
    dvPlayFilter play_;
    vwin::com_<IReferenceClock> clock_;
    vwin::com_<IPin> recordPin_;
    vwin::com_<IPin> playPin_;
    vwin::com_<IMemInputPin> input_;
};

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

void addRound(Rounds& rounds, const PacedFeed& feed, int frames) {
    CountingPin sink;
    const double feed_us = feedCpu_us(feed, &sink, frames);
    rounds.feed_us.push_back(feed_us);
    {
        BarePipeline bare(frameSize, ringFrames, period_100ns);
        feed.feed(bare.input(), ringFrames);
        rounds.bare_us.push_back(feedCpu_us(feed, bare.input(), frames) - feed_us);
    }
    Pipeline pipeline(feed);
    feed.feed(pipeline.input(), ringFrames);
    const int shownBefore = pipeline.shown();
    rounds.engine_us.push_back(feedCpu_us(feed, pipeline.input(), frames) - feed_us);
    rounds.fed += frames;
    rounds.shown += pipeline.shown() - shownBefore;
    if (pipeline.captured() != ringFrames + static_cast<unsigned long long>(frames) ||
        pipeline.written() + ringFrames < pipeline.captured()) {
        throw std::runtime_error("the pipeline lost frames");
    }
}

} // namespace

void measureCpu(Bench& bench) {
    bench.progress.step("copies of a frame");
    const double copy_us = coldCopy_s(frameSize) * 1e6;
    const PacedFeed feed(frameSize, static_cast<double>(period_100ns) * 1e-7);
    constexpr int frames = 1000;
    const int roundCount = bench.scaled(4, 2);
    Rounds rounds;
    bench.progress.step("live frames through the whole pipeline");
    for (int i = 0; i < roundCount; ++i) {
        addRound(rounds, feed, frames);
        bench.progress.part(i + 1, roundCount);
    }

    const double shownShare = static_cast<double>(rounds.shown) / rounds.fed;
    const double bare_us = mean(rounds.bare_us);
    bench.report.add("engine's processor time per live frame", mean(rounds.engine_us), "us",
                     Target::atMost(allowedOverBare * bare_us + allowedCopies * copy_us),
                     "PAL, recorded and shown at 4 times real time, less the same feed without the engine; "
                     "limit: 1.3 times the same system calls alone, and 4 copies");
    bench.report.add("frames shown per frame captured", shownShare, "ratio", Target::atLeast(0.95),
                     "without it the figure above would leave out the play side");
    bench.report.add("one copy of a frame, out of the caches", copy_us, "us");
    bench.report.add("processor time per frame of the same system calls alone", bare_us, "us", {},
                     "waits, samples and writes as the engine has them, but no engine and no copies");
    bench.report.add("the engine's own: what is left of it without these", mean(rounds.engine_us) - bare_us,
                     "us", {}, "its copies and its code");
    bench.report.add("processor time per frame of the feed alone", mean(rounds.feed_us), "us");
    bench.report.add("step of the processor time, per frame of a round", processCpuStep_s() * 1e6 / frames,
                     "us", {}, "how fine the figures above can be");
}
