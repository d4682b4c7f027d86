#include "marvo/replay/frame_store.h"

#include "marvo/core/timed_guard.h"
#include "marvo/recording/recording_name.h"

#include <strmif.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr unsigned long writerJoin_ms = 1000;
/// A second helping for a writer that is held up by a busy machine: closing the file under it loses frames.
constexpr unsigned long lateWriterJoin_ms = 4000;
constexpr unsigned long idle_ms = 10;

/// The writer's thread priority for `backlog` unwritten frames in a ring of `frames` slots.
int priorityFor(unsigned long backlog, unsigned long frames) {
    if (backlog > frames / 2) {
        return THREAD_PRIORITY_HIGHEST;
    }
    if (backlog > frames / 3) {
        return THREAD_PRIORITY_ABOVE_NORMAL;
    }
    return THREAD_PRIORITY_BELOW_NORMAL;
}

void markForImmediateDisplay(IMediaSample* sample) {
    sample->SetTime(nullptr, nullptr);
    sample->SetSyncPoint(TRUE);
    sample->SetDiscontinuity(TRUE);
}

} // namespace

dvFrameStore::dvFrameStore() : vcore::semaphore(1, 1) {}

dvFrameStore::~dvFrameStore() {
    done();
}

bool dvFrameStore::init(unsigned long frameSize, unsigned long long frameDuration, unsigned long frames) {
    done();
    if (frameSize > dvFile::maxFrameSize) {
        return false;
    }
    vcore::timed_guard lock(*this, 1000);
    if (!ring_.init(frameSize, frames)) {
        return false;
    }
    frameDuration_100ns_ = frameDuration;
    return true;
}

bool dvFrameStore::initialized() const {
    return ring_.count() > 0;
}

bool dvFrameStore::add(IMediaSample* sample) {
    if (!sample) {
        return false;
    }
    vcore::timed_guard lock(*this, 300);
    const unsigned long long number = ring_.incIn();
    vvideo::dvFrame* slot = ring_.frame(number);
    if (!slot) {
        return false;
    }
    slot->setId(number);
    slot->copyFrom(sample);
    return true;
}

bool dvFrameStore::get(IMediaSample* sample, unsigned long long frame) {
    if (!sample) {
        return false;
    }
    vcore::timed_guard lock(*this, 300);
    const vvideo::dvFrame* slot = ring_.findFrame(frame);
    if (!slot || !slot->copyTo(sample)) {
        return false;
    }
    markForImmediateDisplay(sample);
    return true;
}

bool dvFrameStore::get(vvideo::dvFrame* frame, unsigned long long number) {
    if (!frame) {
        return false;
    }
    vcore::timed_guard lock(*this, 300);
    const vvideo::dvFrame* slot = ring_.findFrame(number);
    return slot && slot->copyTo(frame);
}

vvideo::dvFrame* dvFrameStore::findFrame(unsigned long long number) {
    return ring_.findFrame(number);
}

unsigned long long dvFrameStore::lastFrame() const {
    return ring_.inPos();
}

unsigned long long dvFrameStore::writtenFrame() const {
    return ring_.outPos();
}

unsigned long dvFrameStore::frameSize() const {
    return ring_.frameSize();
}

unsigned long dvFrameStore::framesPerSecond() const {
    return ring_.frameSize() == vvideo::palFrameSize ? 25 : 30;
}

const wchar_t* dvFrameStore::fileName() const {
    return fileName_.oleStr();
}

void dvFrameStore::setMaxFilesize(long long limit) {
    vcore::timed_guard lock(*this, 1000);
    maxFileSize_ = limit;
}

void dvFrameStore::setRemoteFile(const wchar_t* name) {
    vcore::timed_guard lock(*this, 300);
    remoteFile_ = name;
}

bool dvFrameStore::startRecord(const wchar_t* name) {
    if (ring_.frameSize() == 0) {
        return false;
    }
    stopWriter();
    {
        vcore::timed_guard lock(*this, 1000);
        closeFiles();
        if (!openRecording(name)) {
            return false;
        }
        fileName_ = name;
        resetRing();
    }
    start();
    return true;
}

bool dvFrameStore::openRecording(const wchar_t* name) {
    if (namesAviRecording(name)) {
        return aviFile_.create(name, ring_.frameSize());
    }
    rawFile_.setFrameSize(ring_.frameSize());
    return rawFile_.open(name);
}

void dvFrameStore::stopRecord() {
    stopWriter();
    vcore::timed_guard lock(*this, 1000);
    closeFiles();
}

void dvFrameStore::stopWriter() {
    stop_.ask(*this);
    if (winthread::wait(writerJoin_ms) && running()) {
        abandonBacklog_ = true;
        winthread::wait(lateWriterJoin_ms);
    }
}

void dvFrameStore::closeFiles() {
    rawFile_.close();
    aviFile_.close();
}

void dvFrameStore::resetRing() {
    ring_.flush();
}

void dvFrameStore::flush() {
    std::puts("flush record");
    vcore::timed_guard lock(*this, 500);
    resetRing();
}

void dvFrameStore::fileFlush() {
    vcore::timed_guard lock(*this, 500);
    rawFile_.flush();
}

void dvFrameStore::done() {
    stopRecord();
    vcore::timed_guard lock(*this, 1000);
    ring_.done();
}

void dvFrameStore::run() {
    const uninterruptible whole;
    stop_.enter(*this);
    abandonBacklog_ = false;
    const unsigned long ringFrames = ring_.count();
    vvideo::dvFrame staging;
    if (!staging.init(rawFile_.opened() ? rawFile_.alignSize(ring_.frameSize() + dvFile::headerSize)
                                        : aviFile_.getAVIFrameSize())) {
        return;
    }
    std::memset(staging.data(), 0, staging.size());
    writeBacklog(staging, ringFrames);
}

bool dvFrameStore::writerShallEnd(unsigned long long backlog) const {
    return stop_.asked() && (backlog == 0 || abandonBacklog_);
}

void dvFrameStore::writeBacklog(vvideo::dvFrame& staging, unsigned long ringFrames) {
    int priority = THREAD_PRIORITY_BELOW_NORMAL;
    unsigned long long end = ~0ull;
    for (;;) {
        if (stop_.asked() && end == ~0ull) {
            // Frames captured from now on belong to no recording; without this bound a camera that is as fast
            // as the disk would keep the writer for ever.
            end = ring_.inPos();
        }
        const unsigned long long newest = ring_.inPos() < end ? ring_.inPos() : end;
        const unsigned long long written = ring_.outPos();
        const auto backlog = static_cast<unsigned long>(newest > written ? newest - written : 0);
        if (writerShallEnd(backlog)) {
            return;
        }
        if (backlog == 0) {
            Sleep(idle_ms);
            continue;
        }
        emitSignal(L"poolInfo", 20, ring_.inPos(), written, ringFrames);
        if (const int due = priorityFor(backlog, ringFrames); due != priority) {
            priority = due;
            SetThreadPriority(GetCurrentThread(), priority);
        }
        unsigned long long number = 0;
        if (!stageFrame(staging, number)) {
            Sleep(0);
            continue;
        }
        const long long limit = maxFileSize_;
        if (limit >= 0 && number >= static_cast<unsigned long long>(limit)) {
            continue;
        }
        writeStaged(staging, ringFrames);
    }
}

bool dvFrameStore::stageFrame(vvideo::dvFrame& staging, unsigned long long& number) {
    vcore::timed_guard lock(*this, 300);
    number = ring_.incOut();
    const vvideo::dvFrame* slot = ring_.frame(number);
    if (!slot) {
        return false;
    }
    if (slot->data() && slot->size() + dvFile::headerSize <= staging.size()) {
        const std::uint32_t header[2] = {static_cast<std::uint32_t>(slot->size()),
                                         static_cast<std::uint32_t>(frameDuration_100ns_)};
        std::memcpy(staging.data(), header, sizeof(header));
        std::memcpy(staging.data() + sizeof(header), slot->data(), slot->size());
    }
    return true;
}

void dvFrameStore::writeStaged(const vvideo::dvFrame& staging, unsigned long ringFrames) {
    // A disk that never answers must not hold up the next recording for ever, so the writer may be killed
    // while it waits for the disk, but never while it holds the ring's lock. The AVI file does so in its own
    // writes, because it can be finished only when what it knows of its contents is whole.
    if (rawFile_.opened()) {
        unsigned long done = 0;
        {
            const killable disk;
            rawFile_.write(staging.data(), staging.size(), &done);
        }
        if (ringFrames != 0 && ring_.inPos() % ringFrames == 0) {
            const killable disk;
            rawFile_.flush();
        }
    }
    if (aviFile_.opened()) {
        aviFile_.writeFrame(reinterpret_cast<char*>(staging.data()), ring_.frameSize(), staging.size());
    }
}
