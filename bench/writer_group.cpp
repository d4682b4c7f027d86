#include "bench/frame_buffers.h"
#include "bench/groups.h"
#include "tests/support/import_patch.h"
#include "bench/recording.h"
#include "bench/sample_pool.h"
#include "bench/statistics.h"

#include <atomic>
#include <stdexcept>
#include <string>

namespace {

constexpr unsigned long frameSize = 144000;
constexpr unsigned long ringFrames = 50;
constexpr size_t sampleCount = 8;

std::atomic<int> flushes = 0;

BOOL WINAPI countingFlush(HANDLE file) {
    ++flushes;
    return FlushFileBuffers(file);
}

/// Records frames into a file as fast as the writer takes them.
///
/// The frames are fed on the writer's own thread, one for each that it takes, in the signal that it emits
/// before it takes one; the time for that is not counted. So the writer neither waits for the feed nor shares
/// the processors with it, and it sees the ring's positions pass as it does with a camera.
class Recorder {
public:
    Recorder() {
        if (!store_.init(frameSize, 400000, ringFrames)) {
            throw std::runtime_error("the frame store gives no ring");
        }
        store_.connect(L"poolInfo", this, nullptr, &Recorder::onTaking);
        for (size_t i = 0; i < sampleCount; ++i) {
            samples_.push_back(pool_.sample(frames_[i]));
        }
    }

    /// Seconds from the first frame that the writer takes until the file is closed, less the feeding.
    double record(const TemporaryFile& file, int frames) {
        file.remove();
        flushes = 0;
        begun_s_ = feeding_s_ = 0;
        fed_ = 0;
        framesToFeed_ = frames;
        if (!store_.startRecord(file.name())) {
            throw std::runtime_error("the recording cannot be made");
        }
        add();
        if (!allFed_.wait(limit_ms)) {
            throw std::runtime_error("the writer has stopped");
        }
        store_.stopRecord();
        return now_s() - begun_s_ - feeding_s_;
    }

private:
    static constexpr unsigned long long backlog = ringFrames / 2;
    static constexpr unsigned long limit_ms = 60000;

    void add() { store_.add(samples_[static_cast<size_t>(fed_++) % sampleCount].ptr()); }

    void onTaking(unsigned long long newest, unsigned long long written) {
        const double from_s = now_s();
        if (begun_s_ == 0) {
            begun_s_ = from_s;
        }
        for (; fed_ < framesToFeed_ && newest - written < backlog; ++newest) {
            add();
            if (fed_ == framesToFeed_) {
                allFed_.set();
            }
        }
        feeding_s_ += now_s() - from_s;
    }

    FrameBuffers frames_{sampleCount, frameSize};
    SamplePool pool_{sampleCount, frameSize};
    std::vector<vwin::com_<IMediaSample>> samples_;
    vcore::event allFed_;
    double begun_s_ = 0;
    double feeding_s_ = 0;
    int fed_ = 0;
    int framesToFeed_ = 0;
    dvFrameStore store_;
};

/// A kind of recording, and how many bytes its file has beside the frames.
struct Kind {
    const char* name;
    const wchar_t* file;
    bool recordsAlone;
};

constexpr Kind kinds[] = {{"raw", L"bench_writer.dv", true}, {"AVI", L"bench_writer.avi", false}};

void measureKind(Bench& bench, const Kind& kind) {
    bench.progress.step(std::string("recording as fast as the file takes it, ") + kind.name);
    const FrameBuffers records(ringFrames, recordSize(frameSize));
    Recorder recorder;
    const ImportPatch counting(engineModule(), "FlushFileBuffers", reinterpret_cast<void*>(&countingFlush));
    const TemporaryFile recording(kind.file);
    const TemporaryFile plain(L"bench_plain.bin");
    // Not a multiple of the ring: there the writer would flush after each frame of its last backlog.
    const int frames = bench.scaled(40, 20) * static_cast<int>(ringFrames) + static_cast<int>(ringFrames) / 2;
    const int rounds = bench.scaled(15, 9);
    std::vector<double> flushCounts;
    const auto engine = [&] {
        bench.progress.part(static_cast<double>(flushCounts.size()), rounds + 1);
        const double seconds = recorder.record(recording, frames);
        const unsigned long long frameBytes = static_cast<unsigned long long>(frames) * records.size();
        if (kind.recordsAlone ? recording.size() != frameBytes : recording.size() < frameBytes) {
            throw std::runtime_error("frames are missing from the recording");
        }
        flushCounts.push_back(flushes);
        return seconds;
    };
    const auto baseline = [&] { return writeRecords(records, plain, frames, flushes); };
    const Comparison result = compare(rounds, engine, baseline);

    const std::string what = std::string("frames from the ring to the file, ") + kind.name;
    bench.report.add(what + ", against plain writing", result.ratio, "ratio", Target::atLeast(0.95),
                     "PAL, both unbuffered, with the same number of flushes");
    bench.report.add(what, frames / result.engine_s, "frames/s");
    bench.report.add("plain writing of the records", frames / result.baseline_s, "frames/s");
    bench.report.add("flushes per ring's worth of frames", median(flushCounts) * ringFrames / frames,
                     "flushes");
}

} // namespace

void measureWriter(Bench& bench) {
    for (const Kind& kind : kinds) {
        measureKind(bench, kind);
    }
}
