#include "bench/frame_buffers.h"
#include "bench/groups.h"
#include "bench/recording.h"
#include "bench/statistics.h"
#include "bench/synthetic_avi.h"

#include <algorithm>
#include <fstream>
#include <numeric>
#include <random>
#include <stdexcept>

namespace {

constexpr unsigned long frameSize = 144000;
constexpr unsigned long chunkHeader = 8;

void need(bool done, const char* otherwise) {
    if (!done) {
        throw std::runtime_error(otherwise);
    }
}

char* text(unsigned char* bytes) {
    return reinterpret_cast<char*>(bytes);
}

/// Seconds from the first frame until the file is closed.
double record(const wchar_t* name, const FrameBuffers& slots, int frames) {
    dvAVIFile file;
    need(file.create(name, frameSize), "the AVI recording cannot be made");
    need(file.getAVIFrameSize() == slots.size(), "the slots of an AVI recording have another size");
    const Stopwatch watch;
    for (int i = 0; i < frames; ++i) {
        need(file.writeFrame(text(slots[static_cast<size_t>(i)]), frameSize,
                             static_cast<unsigned long>(slots.size())),
             "the AVI recording takes no more");
    }
    file.close();
    return watch.seconds();
}

/// Seconds from the first slot until the file is closed, which is `bytes` long then.
double write(const wchar_t* name, const FrameBuffers& slots, unsigned long long bytes) {
    vcore::handle file(CreateFileW(name, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                   FILE_FLAG_NO_BUFFERING, nullptr));
    const Stopwatch watch;
    for (size_t i = 0; bytes > 0; ++i) {
        const auto now = static_cast<DWORD>(std::min<unsigned long long>(bytes, slots.size()));
        DWORD done = 0;
        need(WriteFile(file.get(), slots[i], now, &done, nullptr) && done == now, "the disk takes no more");
        bytes -= now;
    }
    file.reset();
    return watch.seconds();
}

unsigned long slotSize(const TemporaryFile& file) {
    dvAVIFile probe;
    need(probe.create(file.name(), frameSize), "an AVI recording cannot be made");
    return probe.getAVIFrameSize();
}

void measureRecording(Bench& bench) {
    bench.progress.step("recording, against plain writing");
    const TemporaryFile recording(L"bench_avi.avi");
    const TemporaryFile plain(L"bench_avi_plain.bin");
    const FrameBuffers slots(50, slotSize(recording));
    const int frames = bench.scaled(2000, 1000);
    const int rounds = bench.scaled(11, 7);
    const auto engine = [&] {
        recording.remove();
        return record(recording.name(), slots, frames);
    };
    const auto baseline = [&] {
        plain.remove();
        return write(plain.name(), slots, recording.size());
    };
    const Comparison result = compare(rounds, engine, baseline);
    bench.report.add("recording AVI, against plain writing of as many bytes", result.ratio, "ratio",
                     Target::atLeast(0.8), "PAL, dvAVIFile::writeFrame() and close(), both unbuffered");
    bench.report.add("recording AVI", frames / result.engine_s, "frames/s");
}

/// `options.ffmpeg` names a file with a line "engine's seconds, ffmpeg's seconds" for each pair of runs.
void reportFfmpeg(Bench& bench) {
    if (bench.options.ffmpeg.empty()) {
        return;
    }
    std::ifstream pairs(bench.options.ffmpeg);
    std::vector<double> engines, ratios;
    for (double engine_s = 0, ffmpeg_s = 0; pairs >> engine_s >> ffmpeg_s;) {
        need(engine_s > 0 && ffmpeg_s > 0, "ffmpeg's times make no sense");
        engines.push_back(engine_s);
        ratios.push_back(ffmpeg_s / engine_s);
    }
    need(!ratios.empty(), "ffmpeg was not measured");
    bench.report.add("copying a stream to AVI, against ffmpeg -c copy", median(ratios), "ratio",
                     Target::atLeast(1.4),
                     "an export without sound; ours with opening and closing the files, ffmpeg's without");
    bench.report.add("copying a stream to AVI", median(engines), "s");
}

/// Seconds of opening a file, the mean of several times.
double open_s(const wchar_t* name, unsigned long frames, int times) {
    const Stopwatch watch;
    for (int i = 0; i < times; ++i) {
        FileIOAVI file;
        need(file.open(name) == FileIOAVI::Ok && file.frames() == frames && file.info().walkedFrames == 0,
             "the synthetic recording is not read by its indexes");
    }
    return watch.seconds() / times;
}

/// Seconds of reading the headers and the standard indexes, the mean of several times.
double readIndexes_s(const wchar_t* name, const std::vector<SyntheticAvi::Block>& blocks, int times) {
    std::vector<unsigned char> bytes(SyntheticAvi::headerSize);
    const Stopwatch watch;
    for (int i = 0; i < times; ++i) {
        const vcore::handle file(CreateFileW(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                             OPEN_EXISTING, 0, nullptr));
        const auto read = [&](const SyntheticAvi::Block& block) {
            LARGE_INTEGER position{};
            position.QuadPart = static_cast<long long>(block.offset);
            DWORD done = 0;
            need(SetFilePointerEx(file.get(), position, nullptr, FILE_BEGIN) &&
                     ReadFile(file.get(), bytes.data(), block.size, &done, nullptr) && done == block.size,
                 "the synthetic recording cannot be read");
        };
        read({0, SyntheticAvi::headerSize});
        std::for_each(blocks.begin(), blocks.end(), read);
    }
    return watch.seconds() / times;
}

void measureOpening(Bench& bench) {
    constexpr unsigned long hour = 90000;
    const int rounds = bench.scaled(15, 7);
    std::vector<double> perFrame;
    for (const unsigned long frames : {1000ul, 10000ul, hour, 1000000ul}) {
        bench.progress.step("opening " + std::to_string(frames) + " frames");
        const TemporaryFile file(L"bench_avi_synthetic.avi");
        const SyntheticAvi made(file.name(), frames);
        const int times = static_cast<int>(std::clamp(hour / frames * 10, 3ul, 200ul));
        const Comparison result = compare(
            rounds, [&] { return open_s(file.name(), frames, times); },
            [&] { return readIndexes_s(file.name(), made.indexes(), times); });
        const std::string what = "opening AVI with " + std::to_string(frames) + " frames";
        bench.report.add(what, result.engine_s * 1000, "ms");
        if (frames == hour) {
            bench.report.add(what + ", against plain reads", 1 / result.ratio, "times", Target::atMost(1.3),
                             "of the header block and of its 46 standard indexes, one read each");
        }
        perFrame.push_back(result.engine_s / static_cast<double>(frames));
    }
    bench.report.add("opening AVI, a frame of 1000000 against one of 90000", perFrame[3] / perFrame[2],
                     "times", Target::atMost(2),
                     "1 when the time grows as the number of frames does, 11 with its square");
}

void measureRandomReads(Bench& bench) {
    bench.progress.step("random reads, against plain ones");
    constexpr int frames = 400;
    const TemporaryFile recording(L"bench_avi.avi");
    const FrameBuffers slots(50, slotSize(recording));
    record(recording.name(), slots, frames);
    dvAVIFile file;
    need(file.open(recording.name()) && file.frames() == frames, "the AVI recording cannot be opened");
    const vcore::handle plain(CreateFileW(recording.name(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          nullptr, OPEN_EXISTING, 0, nullptr));
    const FrameBuffers buffer(1, slots.size());
    const auto size = static_cast<unsigned long>(buffer.size());
    std::vector<unsigned long> order(frames);
    std::iota(order.begin(), order.end(), 0ul);
    std::vector<LARGE_INTEGER> positions(frames);
    for (const unsigned long frame : order) {
        FileIOAVI::FramePosition position;
        need(file.io().framePosition(frame, position), "a frame has no position");
        positions[frame].QuadPart = static_cast<long long>(position.offset);
    }
    std::mt19937 random(1);
    const auto engine = [&] {
        std::shuffle(order.begin(), order.end(), random);
        const Stopwatch watch;
        for (const unsigned long frame : order) {
            file.seekFrame(frame);
            need(file.readFrame(text(buffer[0]), size, frame), "a frame cannot be read");
        }
        return watch.seconds();
    };
    const auto baseline = [&] {
        const Stopwatch watch;
        for (const unsigned long frame : order) {
            DWORD done = 0;
            need(SetFilePointerEx(plain.get(), positions[frame], nullptr, FILE_BEGIN) &&
                     ReadFile(plain.get(), buffer[0], chunkHeader + frameSize, &done, nullptr) &&
                     done == chunkHeader + frameSize,
                 "a frame cannot be read plainly");
        }
        return watch.seconds();
    };
    const Comparison result = compare(bench.scaled(41, 15), engine, baseline);
    bench.report.add("a random frame of AVI, against plain seek and read", 1 / result.ratio, "times",
                     Target::atMost(1.2), "seekFrame() and readFrame(), PAL, the file in the system's cache");
    bench.report.add("a random frame of AVI", result.engine_s / frames * 1e6, "us");
}

} // namespace

void measureAvi(Bench& bench) {
    measureOpening(bench);
    measureRecording(bench);
    reportFfmpeg(bench);
    measureRandomReads(bench);
}
