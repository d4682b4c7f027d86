/// @file
/// marvo-endurance: days of video in hours. The whole engine on a camera that runs many times as fast as a
/// real one, with recordings and replays starting and stopping; every recording is compared with the camera's
/// stream, and what the process holds is noted as it goes.
#include "bench/engine.h"
#include "bench/frame_buffers.h"
#include "bench/progress.h"
#include "bench/recording.h"
#include "tests/support/footprint.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

namespace {

constexpr double framesPerHour = 25 * 3600;

struct Options {
    double hours = 1;
    double speed = 40;
    unsigned seed = 1;
    std::string out = "out\\endurance.csv";
};

/// What has been seen since the start.
struct Totals {
    unsigned long long frames = 0;  ///< captured while recordings ran
    unsigned long long missing = 0; ///< of these, not in the file
    unsigned long long wrong = 0;   ///< in the file, but not the camera's next frame
    unsigned long long shown = 0;   ///< ticks of the play filter
    unsigned long long backlog = 0; ///< the writer's largest, in frames
    int recordings = 0;
    int replays = 0;
    int builds = 0;
};

/// Reads the frames of a recording one after the other, raw or AVI.
class Frames {
public:
    explicit Frames(const TemporaryFile& file)
        : avi_(std::wstring(file.name()).ends_with(L".avi")), raw_(file.name(), OPEN_EXISTING) {
        if (avi_ ? !aviFile_.open(file.name()) : !raw_.open(nullptr)) {
            throw std::runtime_error("a recording cannot be opened");
        }
        count_ = avi_ ? aviFile_.frames() : raw_.size() / rawRecord_bytes;
    }

    unsigned long long count() const { return count_; }

    /// The next frame; null when it cannot be read.
    const unsigned char* next() {
        unsigned long done = 0;
        const bool read = avi_ ? aviFile_.readFrame(reinterpret_cast<char*>(record_[0]),
                                                    aviFile_.getAVIFrameSize(), number_++)
                               : raw_.read(record_[0], rawRecord_bytes, &done) && done == rawRecord_bytes;
        return read ? record_[0] + header_bytes : nullptr;
    }

private:
    /// In front of a frame, in a file of either kind.
    static constexpr size_t header_bytes = 8;

    const bool avi_;
    const unsigned long rawRecord_bytes = static_cast<unsigned long>(recordSize(Stream::palFrame));
    /// Room for a record of either kind.
    const FrameBuffers record_{1, Stream::palFrame + 65536};
    vcore::file raw_;
    dvAVIFile aviFile_;
    unsigned long long count_ = 0;
    unsigned long number_ = 0;
};

/// How many of a recording's frames are not the one that follows in the camera's stream, which goes round.
unsigned long long wrongFrames(const TemporaryFile& file, const Stream& stream, unsigned long long& count) {
    Frames frames(file);
    count = frames.count();
    unsigned long long wrong = 0;
    long last = -1;
    for (unsigned long long k = 0; k < count; ++k) {
        const unsigned char* frame = frames.next();
        const auto due = static_cast<size_t>(last + 1);
        if (frame && last >= 0 && std::memcmp(stream[due], frame, stream.frameSize()) == 0) {
            last = static_cast<long>(due % stream.frames());
            continue;
        }
        wrong += k != 0;
        last = frame ? stream.find(frame, due) : -1;
    }
    return wrong;
}

/// The host of the run: gives commands at random and looks at what comes of them.
class Host {
public:
    Host(const Options& options, Totals& totals)
        : options_(options), totals_(totals), stream_(streamPath("pal.dv"), Stream::palFrame),
          random_(options.seed) {}

    /// A session: both graphs are built, some recordings are made, and everything is taken apart again.
    /// `stop` says when enough has been recorded.
    template <class Stop>
    void session(Stop stop) {
        Engine engine({options_.speed, "", ringFrames()});
        ++totals_.builds;
        dvFE.setPlayDelay(20);
        for (int i = 0; i < recordingsPerSession && !stop(); ++i) {
            record(engine, pick(300, 9000));
        }
        totals_.shown += static_cast<unsigned long long>(engine.ticks());
    }

private:
    static constexpr int recordingsPerSession = 12;

    /// Two seconds of the camera's frames, as in real time.
    unsigned long ringFrames() const {
        return static_cast<unsigned long>(Engine::ringFrames * std::max(1.0, options_.speed));
    }

    unsigned long long pick(unsigned long long least, unsigned long long most) {
        return std::uniform_int_distribution(least, most)(random_);
    }

    void record(Engine& engine, unsigned long long frames) {
        const TemporaryFile file(totals_.recordings % 2 == 0 ? L"endurance.dv" : L"endurance.avi");
        if (!dvFE.startRecord(file.name())) {
            throw std::runtime_error("a recording cannot be made");
        }
        const auto lag = [&] {
            const unsigned long long written = dvFE.writtenFrame();
            totals_.backlog = std::max(totals_.backlog, dvFE.lastFrame() - written);
            return dvFE.lastFrame() >= frames;
        };
        const Stopwatch watch;
        while (!engine.waitFor(lag, std::uniform_real_distribution(0.05, 0.4)(random_))) {
            command(file);
            if (watch.seconds() > static_cast<double>(frames) * Engine::period_s) {
                throw std::runtime_error("the camera has stopped sending");
            }
        }
        const unsigned long long captured = dvFE.lastFrame();
        dvFE.stopRecord();
        unsigned long long recorded = 0;
        totals_.wrong += wrongFrames(file, stream_, recorded);
        totals_.missing += captured > recorded ? captured - recorded : 0;
        totals_.frames += captured;
        ++totals_.recordings;
    }

    void command(const TemporaryFile& file) {
        const unsigned long long newest = std::max<unsigned long long>(dvFE.lastFrame(), 2);
        switch (pick(0, 5)) {
        case 0:
            dvFE.live();
            break;
        case 1:
            dvFE.seekPosition(pick(0, newest - 1));
            break;
        case 2:
            dvFE.setSpeed(std::uniform_real_distribution(-4.0, 4.0)(random_));
            break;
        case 3:
            dvFE.paused() ? dvFE.resume() : dvFE.pause();
            break;
        default: {
            const unsigned long long from = pick(0, newest - 1);
            totals_.replays += dvFE.replay(from, from + pick(10, 500), file.name());
        }
        }
    }

    const Options& options_;
    Totals& totals_;
    const Stream stream_;
    std::mt19937_64 random_;
};

/// The notes of the run, a line per session.
class Notes {
public:
    explicit Notes(const Options& options) : file_(options.out, std::ios::trunc) {
        file_ << "hours,frames,missing,wrong,recordings,replays,ticks,builds,backlog,handles,system_handles,"
                 "threads,kib\n";
    }

    void add(const Totals& totals, int systemsHandles) {
        const Footprint now = footprint();
        file_ << static_cast<double>(totals.frames) / framesPerHour << ',' << totals.frames << ','
              << totals.missing << ',' << totals.wrong << ',' << totals.recordings << ',' << totals.replays
              << ',' << totals.shown << ',' << totals.builds << ',' << totals.backlog << ',' << now.handles
              << ',' << systemsHandles * totals.builds << ',' << now.threads << ',' << now.bytes / 1024
              << '\n'
              << std::flush;
        if (!file_) {
            throw std::runtime_error("the notes cannot be written");
        }
    }

private:
    std::ofstream file_;
};

/// Exit status: 0 when no frame was missing or wrong.
int run(const Options& options) {
    const int systemsHandles = systemsHandlesPerCycle(2);
    Totals totals;
    Notes notes(options);
    Host host(options, totals);
    Progress progress;
    progress.beginGroup("endurance");
    progress.step("hours of video");
    const Stopwatch watch;
    const auto enough = [&] { return static_cast<double>(totals.frames) >= options.hours * framesPerHour; };
    while (!enough()) {
        host.session(enough);
        notes.add(totals, systemsHandles);
        progress.part(static_cast<double>(totals.frames) / framesPerHour, options.hours);
    }
    std::printf("%.2f hours of video, %llu frames, in %.1f minutes: %llu missing, %llu wrong; %d recordings, "
                "%d replays, %d times built, largest backlog %llu of %.0f\n",
                static_cast<double>(totals.frames) / framesPerHour, totals.frames, watch.seconds() / 60,
                totals.missing, totals.wrong, totals.recordings, totals.replays, totals.builds,
                totals.backlog, Engine::ringFrames * options.speed);
    return totals.missing == 0 && totals.wrong == 0 ? 0 : 1;
}

} // namespace

int main(int count, char** arguments) {
    Options options;
    CLI::App parser("Runs the engine through hours of video in minutes and notes what the process holds.");
    parser.add_option("--hours", options.hours, "of PAL video")->capture_default_str();
    parser.add_option("--speed", options.speed, "of the camera, times real time")->capture_default_str();
    parser.add_option("--seed", options.seed, "of the commands and lengths")->capture_default_str();
    parser.add_option("--out", options.out, "where the notes go, as comma-separated values")
        ->capture_default_str();
    CLI11_PARSE(parser, count, arguments);
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    int status = 2;
    try {
        status = run(options);
    } catch (const std::exception& reason) {
        std::fprintf(stderr, "marvo-endurance: %s\n", reason.what());
    }
    CoUninitialize();
    return status;
}
