#include "marvo/replay/frame_store.h"

#include "marvo/core/guarded.h"
#include "marvo/core/timed_guard.h"
#include "marvo/dv/dv_system.h"
#include "marvo/recording/recordings.h"
#include "marvo/replay/full_path.h"

#include <strmif.h>

#include <cstdio>
#include <cstring>

namespace {

/// How long the store lock is waited for: with a frame in hand ...
constexpr unsigned long frameWait_ms = 300;
/// ... to empty the ring, and for the writer's answer ...
constexpr unsigned long flushWait_ms = 500;
/// ... and by other commands.
constexpr unsigned long commandWait_ms = 1000;

constexpr unsigned long writerJoin_ms = 1000;
/// A second helping for a writer that is held up by a busy machine or disk.
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
    terminate();
}

bool dvFrameStore::init(unsigned long frameSize, unsigned long long frameDuration, unsigned long frames) {
    done();
    if (frameSize > vdv::maxFrameBytes || frames == 0) {
        return false;
    }
    vcore::timed_guard lock(storeLock(), commandWait_ms);
    if (!ring_.init(frameSize, frames)) {
        return false;
    }
    frameDuration_100ns_ = frameDuration;
    return true;
}

bool dvFrameStore::initialized() const {
    return ring_.count() > 0;
}

template <class Fill>
bool dvFrameStore::addFilled(Fill fill) {
    vcore::timed_guard lock(storeLock(), frameWait_ms);
    const unsigned long long number = ring_.inPos();
    vvideo::dvFrame* slot = ring_.claim();
    if (slot) {
        fill(*slot);
    }
    ring_.publish(number);
    return slot != nullptr;
}

bool dvFrameStore::add(IMediaSample* sample) {
    return sample && addFilled([sample](vvideo::dvFrame& slot) { slot.copyFrom(sample); });
}

bool dvFrameStore::add(const void* frame, unsigned long bytes) {
    return frame && bytes != 0 && bytes == ring_.frameSize() &&
           addFilled([frame](vvideo::dvFrame& slot) { std::memcpy(slot.data(), frame, slot.size()); });
}

bool dvFrameStore::get(IMediaSample* sample, unsigned long long frame) {
    if (!sample) {
        return false;
    }
    vcore::timed_guard lock(storeLock(), frameWait_ms);
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
    vcore::timed_guard lock(storeLock(), frameWait_ms);
    const vvideo::dvFrame* slot = ring_.findFrame(number);
    return slot && slot->copyTo(frame);
}

bool dvFrameStore::get(vvideo::dvFrame* frame, unsigned long long number, const wchar_t* recording) {
    if (!frame || !recording || !*recording) {
        return false;
    }
    vcore::timed_guard lock(storeLock(), frameWait_ms);
    if (vcore::str::compareI(ringFile_.oleStr(), recording) != 0) {
        return false;
    }
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
    vcore::timed_guard lock(storeLock(), commandWait_ms);
    return fileName_.oleStr();
}

void dvFrameStore::setMaxFilesize(long long limit) {
    maxFileSize_ = limit;
}

void dvFrameStore::setRemoteFile(const wchar_t* name) {
    vcore::timed_guard lock(storeLock(), frameWait_ms);
    remoteFile_ = name;
}

bool dvFrameStore::startRecord(const wchar_t* name) {
    const unsigned long frameSize = ring_.frameSize();
    if (frameSize == 0) {
        return false;
    }
    endWriter();
    long long frameDuration_100ns = 0;
    {
        vcore::timed_guard lock(storeLock(), commandWait_ms);
        frameDuration_100ns = static_cast<long long>(frameDuration_100ns_);
    }
    writer_ = recording::createWriter(name, frameSize, frameDuration_100ns);
    if (!writer_) {
        return false;
    }
    {
        vcore::timed_guard lock(storeLock(), commandWait_ms);
        resetRing();
        fileName_ = name;
        ringFile_ = fullPath(name);
    }
    return start();
}

void dvFrameStore::stopRecord() {
    stopWriter();
    if (finished()) {
        writer_.reset();
    }
}

void dvFrameStore::stopWriter() {
    stop_.ask(*this);
    if (winthread::wait(writerJoin_ms) && running()) {
        abandonBacklog_ = true;
        winthread::wait(lateWriterJoin_ms);
    }
}

/// Also ends a writer that the disk does not let go: it must not hold up the next recording for ever.
void dvFrameStore::endWriter() {
    stopWriter();
    terminate();
    writer_.reset();
}

void dvFrameStore::resetRing() {
    ring_.flush();
    ringFile_ = L"";
}

void dvFrameStore::flush() {
    std::puts("flush record");
    vcore::timed_guard lock(storeLock(), flushWait_ms);
    resetRing();
}

void dvFrameStore::fileFlush() {
    if (!running()) {
        return;
    }
    flushed_.reset();
    flushAsked_ = true;
    flushed_.wait(flushWait_ms);
}

void dvFrameStore::done() {
    stopRecord();
    vcore::timed_guard lock(storeLock(), commandWait_ms);
    ring_.done();
    ringFile_ = L"";
}

void dvFrameStore::run() {
    const uninterruptible whole;
    stop_.enter(*this);
    abandonBacklog_ = false;
    recording::RecordBuffer staging;
    if (staging.allocate(writer_->bufferBytes())) {
        writeBacklog(staging, ring_.count());
    }
    writer_->finish();
    flushed_.set();
}

bool dvFrameStore::writerShallEnd(unsigned long long backlog) const {
    return stop_.asked() && (backlog == 0 || abandonBacklog_);
}

void dvFrameStore::writeBacklog(recording::RecordBuffer& staging, unsigned long ringFrames) {
    int priority = THREAD_PRIORITY_BELOW_NORMAL;
    unsigned long long end = ~0ull;
    for (;;) {
        flushIfAsked();
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

/// A frame that does not fit is not copied, and what was staged before is written again.
bool dvFrameStore::stageFrame(recording::RecordBuffer& staging, unsigned long long& number) {
    vcore::timed_guard lock(storeLock(), frameWait_ms);
    number = ring_.incOut();
    const vvideo::dvFrame* slot = ring_.frame(number);
    if (!slot) {
        return false;
    }
    if (slot->data() && staging.setFrameBytes(slot->size())) {
        std::memcpy(staging.frame(), slot->data(), slot->size());
    }
    return true;
}

// A disk that never answers must not hold up the next recording for ever, so the recording lets its writer be
// killed while it waits for the disk, but never while it holds a lock.
void dvFrameStore::writeStaged(recording::RecordBuffer& staging, unsigned long ringFrames) {
    vcore::guarded([&] { writer_->write(staging); });
    if (ringFrames != 0 && ring_.inPos() % ringFrames == 0) {
        writer_->flush();
    }
}

void dvFrameStore::flushIfAsked() {
    if (flushAsked_.exchange(false)) {
        writer_->flush();
        flushed_.set();
    }
}
