#include "bench/cpu_time.h"
#include "bench/groups.h"
#include "bench/statistics.h"

#include "devices/dv_decoder.h"
#include "devices/dv_painter.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

Bytes read(const std::string& stream) {
    const char* const folder = std::getenv("MARVO_STREAMS");
    std::ifstream file(std::string(folder ? folder : ".") + "\\" + stream, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

/// ffmpeg's frames per second of processor time by stream: the medians of lines "stream, frames, seconds".
std::map<std::string, double> ffmpegSpeeds(const std::string& file) {
    std::ifstream lines(file);
    std::map<std::string, std::vector<double>> all;
    std::string stream;
    for (double frames = 0, seconds = 0; lines >> stream >> frames >> seconds;) {
        if (seconds <= 0) {
            throw std::runtime_error("ffmpeg's times make no sense");
        }
        all[stream].push_back(frames / seconds);
    }
    std::map<std::string, double> medians;
    for (const auto& [name, speeds] : all) {
        medians[name] = median(speeds);
    }
    return medians;
}

/// Frames per second of processor time, the median of the rounds.
template <class Work>
double speed(int rounds, const Bytes& stream, const devices::dv_system& system, Work work) {
    const size_t frames = stream.size() / system.frame_bytes;
    std::vector<double> speeds;
    for (int round = 0; round < rounds; ++round) {
        const double start_s = processCpu_s();
        for (size_t frame = 0; frame < frames; ++frame) {
            work(&stream[frame * system.frame_bytes]);
        }
        speeds.push_back(static_cast<double>(frames) /
                         std::max(processCpu_s() - start_s, processCpuStep_s()));
    }
    return median(speeds);
}

} // namespace

void measureDecoder(Bench& bench) {
    const auto ffmpeg = ffmpegSpeeds(bench.options.ffmpegDecoding);
    const int rounds = bench.scaled(9, 3);
    for (const std::string name : {"pal.dv", "ntsc.dv"}) {
        bench.progress.step("decoding " + name);
        const Bytes stream = read(name);
        const devices::dv_system* const system = devices::dv_system::of_frame(stream.data(), stream.size());
        if (!system || stream.size() < system->frame_bytes) {
            throw std::runtime_error("there is no test stream " + name);
        }
        devices::dv_decoder decoder;
        const auto decode = [&](const uint8_t* frame) {
            decoder.decode(frame, system->frame_bytes, *system);
        };
        const double planes = speed(rounds, stream, *system, decode);
        Bytes pixels(static_cast<size_t>(system->width) * system->height * 4);
        const double rgb = speed(rounds, stream, *system, [&](const uint8_t* frame) {
            decode(frame);
            devices::dv_painter(decoder.picture()).paint(*system, devices::dv_pixels::rgb32, pixels.data());
        });
        const std::string what = std::string("decoding ") + system->name;
        bench.report.add(what + " into planes", planes, "frames/s", Target::atLeast(250),
                         "of one core's time; the simulated decoder");
        bench.report.add(what + " into RGB32", rgb, "frames/s");
        if (const auto found = ffmpeg.find(name); found != ffmpeg.end()) {
            bench.report.add(what + " with ffmpeg", found->second, "frames/s", {}, "into planes, -threads 1");
            bench.report.add(what + ", against ffmpeg", planes / found->second, "ratio",
                             Target::atLeast(0.5));
        }
    }
}
