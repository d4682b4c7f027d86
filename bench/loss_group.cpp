#include "bench/camera_log.h"
#include "bench/engine.h"
#include "bench/frame_buffers.h"
#include "bench/groups.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr double speed = 20;
/// Two seconds of frames, as the ring holds in real time.
constexpr unsigned long ringFrames = static_cast<unsigned long>(Engine::ringFrames * speed);
const char* const logName = "bench_camera.log";

/// What was seen from outside while the recording ran.
struct Run {
    double begun_s = 0; ///< when startRecord had returned
    double ended_s = 0; ///< just before stopRecord
    unsigned long long backlog = 0;
};

Run record(Bench& bench, const TemporaryFile& file, double seconds) {
    Engine engine({speed, logName, ringFrames});
    Run run;
    engine.record(file.name(), 0);
    run.begun_s = now_s();
    engine.waitFor(
        [&] {
            // The written position first: it cannot pass the newest one in between.
            const unsigned long long written = dvFE.writtenFrame();
            run.backlog = std::max(run.backlog, dvFE.lastFrame() - written);
            bench.progress.part(now_s() - run.begun_s, seconds);
            return false;
        },
        seconds);
    run.ended_s = now_s();
    dvFE.stopRecord();
    return run;
}

/// The recording laid beside the camera's deliveries.
struct Account {
    int delivered = 0; ///< from the start of the recording to its end
    int lost = 0;      ///< of these, not in the recording
    int foreign = 0;   ///< records that hold none of the stream's frames, or one out of order
};

/// The delivery that the recording begins with: the stream repeats, so it is looked for near the time of the
/// start.
size_t firstRecorded(const CameraLog& log, const std::vector<long>& recorded, const Run& run) {
    const auto& deliveries = log.deliveries;
    size_t i = 0;
    while (i < deliveries.size() && deliveries[i].time_s < run.begun_s - 0.3) {
        ++i;
    }
    while (i < deliveries.size() && deliveries[i].sourceFrame != recorded.front()) {
        ++i;
    }
    return i;
}

Account settle(const CameraLog& log, const std::vector<long>& recorded, const Run& run) {
    const auto& deliveries = log.deliveries;
    const size_t first = firstRecorded(log, recorded, run);
    Account account;
    // What came after startRecord had returned belongs to the recording, whether or not it was recorded.
    size_t begun = 0;
    while (begun < deliveries.size() && deliveries[begun].time_s < run.begun_s) {
        ++begun;
    }
    if (begun < first) {
        account.delivered = account.lost = static_cast<int>(first - begun);
    }
    size_t k = 0;
    size_t i = first;
    for (; i < deliveries.size() && k < recorded.size(); ++i) {
        ++account.delivered;
        if (recorded[k] == deliveries[i].sourceFrame) {
            ++k;
        } else if (recorded[k] < 0) {
            ++account.foreign;
            ++k;
        } else {
            ++account.lost;
        }
    }
    account.foreign += static_cast<int>(recorded.size() - k);
    // One delivery may have been on its way into the engine when the recording was stopped.
    constexpr double onItsWay_s = 0.005;
    for (; i < deliveries.size() && deliveries[i].time_s < run.ended_s - onItsWay_s; ++i) {
        ++account.delivered;
        ++account.lost;
    }
    return account;
}

/// How many times as fast as a camera in real time a bare loop writes records to a new file.
double plainRate(Bench& bench) {
    const FrameBuffers records(16, recordSize(Stream::palFrame));
    const TemporaryFile file(L"bench_plain.bin");
    const int frames = bench.scaled(30000, 5000);
    return frames * Engine::period_s / writeRecords(records, file, frames, 1);
}

} // namespace

void measureLoss(Bench& bench) {
    const Stream stream(streamPath("pal.dv"), Stream::palFrame);
    const TemporaryFile file(L"bench_loss.dv");
    const double seconds = bench.scaled(60, 10);
    bench.progress.step("recording at 20 times real time");
    const Run run = record(bench, file, seconds);
    const CameraLog log(logName);
    bench.progress.step("comparing the recording with the stream");
    const std::vector<long> recorded =
        identify(file.name(), stream, [&](double done, double all) { bench.progress.part(done, all); });
    if (recorded.empty()) {
        throw std::runtime_error("the recording is empty");
    }
    const Account account = settle(log, recorded, run);

    const double achieved = account.delivered * Engine::period_s / (run.ended_s - run.begun_s);
    bench.report.add("frames that the camera delivered", account.delivered, "frames");
    bench.report.add("frames recorded", static_cast<double>(recorded.size()), "frames");
    bench.report.add("frames lost", account.lost, "frames", Target::atMost(0),
                     "deliveries after startRecord that the file does not hold");
    bench.report.add("records that are none of the camera's frames", account.foreign, "frames",
                     Target::atMost(0));
    bench.report.add("deliveries that the engine refused", log.refused, "frames", Target::atMost(0));
    bench.report.add("rate of the camera", achieved, "x real time", Target::atLeast(0.95 * speed));
    bench.report.add("largest backlog of the writer", static_cast<double>(run.backlog), "frames",
                     Target::atMost(ringFrames - 1), "the ring holds 1000, two seconds as in real time");
    bench.report.add("plain writing of the disk", plainRate(bench), "x real time", {},
                     "records written one after the other to a new file, as much as the recording; below the "
                     "camera's rate frames would have to be lost");
}
