#include "bench/groups.h"
#include "bench/machine_load.h"
#include "bench/paced_feed.h"
#include "bench/pipeline.h"
#include "bench/statistics.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

constexpr long long period_100ns = 400000;
constexpr double period_s = 0.04;

/// When something happened, again and again. From one thread, read when that has ended.
class Moments {
public:
    void note() { times_s_.push_back(now_s()); }
    const std::vector<double>& times_s() const { return times_s_; }

private:
    std::vector<double> times_s_;
};

/// A pin that notes when samples come.
class TimingPin : public ForeignPin {
public:
    const std::vector<double>& times_s() const { return moments_.times_s(); }

    STDMETHODIMP Receive(IMediaSample*) override {
        moments_.note();
        return S_OK;
    }

private:
    Moments moments_;
};

/// A thread that the system's clock wakes once per frame, as it does the engine's.
class BareLoop {
public:
    BareLoop() {
        REFERENCE_TIME now = 0;
        if (!clock_.create(CLSID_SystemClock) || FAILED(clock_->GetTime(&now)) ||
            FAILED(clock_->AdvisePeriodic(now + period_100ns, period_100ns,
                                          reinterpret_cast<HSEMAPHORE>(tick_.handle()), &advice_))) {
            throw std::runtime_error("there is no clock to measure with");
        }
        thread_ = std::thread([this] {
            while (!stop_) {
                if (tick_.wait(120)) {
                    moments_.note();
                }
            }
        });
    }
    ~BareLoop() { end(); }

    /// The moments that it woke at; ends the loop.
    const std::vector<double>& times_s() {
        end();
        return moments_.times_s();
    }

private:
    void end() {
        if (thread_.joinable()) {
            stop_ = true;
            thread_.join();
            clock_->Unadvise(advice_);
        }
    }

    vwin::com_<IReferenceClock> clock_;
    vcore::semaphore tick_{1, nullptr};
    DWORD_PTR advice_ = 0;
    Moments moments_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

/// The clock's grid, as far as the moments tell it: its ticks lie at this time and whole periods from it.
/// Most moments come right behind a tick, so it is where nearly all begin; the earliest may be an outlier.
double gridOf(const std::vector<double>& times_s) {
    std::vector<double> offsets;
    for (const double time_s : times_s) {
        offsets.push_back(std::remainder(time_s - times_s.front(), period_s));
    }
    const double middle = median(offsets);
    for (double& offset : offsets) {
        offset = middle + std::remainder(offset - middle, period_s);
    }
    return times_s.front() + percentile(offsets, 0.02);
}

/// How late each moment is against the tick that it answers, in ms. A wait for the clock takes the first tick
/// since the wait before; those that come while it is late are one.
std::vector<double> lateness_ms(const std::vector<double>& times_s) {
    // The clock and the performance counter may drift apart, so every 20 seconds have a grid of their own.
    constexpr size_t block = 500;
    std::vector<double> result;
    for (size_t from = 0; from + block <= times_s.size(); from += block) {
        const std::vector<double> part(times_s.begin() + static_cast<std::ptrdiff_t>(from),
                                       times_s.begin() + static_cast<std::ptrdiff_t>(from + block));
        const double grid_s = gridOf(part);
        for (size_t i = 1; i < part.size(); ++i) {
            // A moment on the very edge of its tick counts as behind it.
            constexpr double edge_s = 0.001;
            const double tick = std::floor((part[i - 1] - grid_s + edge_s) / period_s) + 1;
            result.push_back(std::max(0.0, (part[i] - grid_s - tick * period_s) * 1000));
        }
    }
    if (result.empty()) {
        throw std::runtime_error("too few frames were shown");
    }
    return result;
}

/// Watches replays of changing ranges and live pictures while the camera's frames are fed and recorded.
void playInTurn(Pipeline& pipeline, const wchar_t* file, int turn) {
    if (turn % 2 == 0) {
        pipeline.play().live();
        return;
    }
    const unsigned long long written = pipeline.store().writtenFrame();
    const unsigned long long from =
        written > 300 ? (static_cast<unsigned long long>(turn) * 97) % (written - 250) : 0;
    if (!pipeline.play().play(from, from + 200, file, turn % 4 == 1 ? 1.0 : -0.5, 100,
                              Pipeline::ringFrames)) {
        throw std::runtime_error("replay is refused");
    }
}

} // namespace

void measureLateness(Bench& bench) {
    const int frames = bench.scaled(15000, 1500);
    constexpr int turnFrames = 250;
    const PacedFeed feed(Pipeline::frameSize, period_s);
    const TemporaryFile file(L"bench_lateness.dv");
    std::vector<double> bare_ms, engine_ms;
    double written_bytes = 0;
    const Stopwatch watch;
    bench.progress.step("frames shown on a loaded machine");
    {
        const MachineLoad load;
        TimingPin sink;
        BareLoop bare;
        {
            Pipeline pipeline(sink, feed.allocator(), period_100ns, file.name());
            for (int turn = 0; turn < frames / turnFrames; ++turn) {
                playInTurn(pipeline, file.name(), turn);
                feed.feed(pipeline.input(), turnFrames);
                bench.progress.part(turn + 1, frames / turnFrames);
            }
        }
        bare_ms = lateness_ms(bare.times_s());
        engine_ms = lateness_ms(sink.times_s());
        written_bytes = static_cast<double>(load.written_bytes());
    }
    const auto add = [&](const char* what, double part, double allowed_ms) {
        const double bareLate_ms = percentile(bare_ms, part);
        const double late_ms = percentile(engine_ms, part);
        bench.report.add(
            std::string("lateness of a shown frame, ") + what, late_ms, "ms",
            Target::atMost(bareLate_ms + allowed_ms),
            "against its tick, live and replays in turn while it is recorded, all processors and the "
            "disk busy; limit: what a bare wait for the clock shows in the same run, and " +
                std::to_string(static_cast<int>(allowed_ms)) + " ms");
        bench.report.add(std::string("lateness of a bare wait for the clock, ") + what, bareLate_ms, "ms");
    };
    add("median", 0.5, 10);
    add("99.9 of 100", 0.999, 10);
    add("worst", 1, 40);
    bench.report.add("frames shown", static_cast<double>(engine_ms.size()), "frames");
    bench.report.add("what kept the disk busy", written_bytes / 1e6 / watch.seconds(), "MB/s");
}
