#include "marvo/replay/frame_store.h"

#include "marvo/core/guarded.h"
#include "marvo/core/text.h"
#include "marvo/core/timed_guard.h"
#include "marvo/dv/dv_system.h"
#include "marvo/recording/recordings.h"
#include "marvo/replay/full_path.h"

#include <strmif.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <utility>

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

/// Asking the system for the room on a drive is slow.
constexpr unsigned long driveSpacePeriod_ms = 1000;

constexpr wchar_t noMemory[] = L"there is not enough memory";

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

/// What a thread needs to throw, the run-time library reserves when it throws first; so that there is memory
/// for it, that is here.
void reserveForThrowing() {
    try {
        throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
        return;
    }
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
        tally_.take();
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

template <class Copy>
bool dvFrameStore::copyOut(unsigned long long number, const wchar_t* recording, Copy copy) {
    vcore::timed_guard lock(storeLock(), frameWait_ms);
    if (recording && vcore::str::compareI(ringFile_.c_str(), recording) != 0) {
        return false;
    }
    const vvideo::dvFrame* slot = ring_.findFrame(number);
    return slot && copy(*slot);
}

bool dvFrameStore::get(IMediaSample* sample, unsigned long long frame) {
    return sample && copyOut(frame, nullptr, [sample](const vvideo::dvFrame& slot) {
               const bool copied = slot.copyTo(sample);
               if (copied) {
                   markForImmediateDisplay(sample);
               }
               return copied;
           });
}

bool dvFrameStore::get(vvideo::dvFrame* frame, unsigned long long number) {
    return frame &&
           copyOut(number, nullptr, [frame](const vvideo::dvFrame& slot) { return slot.copyTo(frame); });
}

bool dvFrameStore::get(vvideo::dvFrame* frame, unsigned long long number, const wchar_t* recording) {
    return frame && recording && *recording &&
           copyOut(number, recording, [frame](const vvideo::dvFrame& slot) { return slot.copyTo(frame); });
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

record_status dvFrameStore::recordStatus() const {
    return tally_.status();
}

unsigned long dvFrameStore::frameSize() const {
    return ring_.frameSize();
}

unsigned long dvFrameStore::framesPerSecond() const {
    return ring_.frameSize() == vvideo::palFrameSize ? 25 : 30;
}

const wchar_t* dvFrameStore::fileName() const {
    vcore::timed_guard lock(storeLock(), commandWait_ms);
    return fileName_.c_str();
}

std::wstring dvFrameStore::numberedFile() const {
    vcore::timed_guard lock(storeLock(), commandWait_ms);
    return ringFile_;
}

unsigned long dvFrameStore::ringFrames() const {
    return ring_.count();
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
        tally_.refuse(L"there is no ring for the frames of a camera");
        return false;
    }
    endWriter();
    try {
        std::wstring reason;
        if (openRecording(name, frameSize, reason)) {
            return true;
        }
        tally_.refuse(reason.c_str());
    } catch (const std::bad_alloc&) {
        tally_.refuse(noMemory);
    }
    if (writer_) {
        closeFile();
        DeleteFileW(name);
    }
    return false;
}

bool dvFrameStore::openRecording(const wchar_t* name, unsigned long frameSize, std::wstring& reason) {
    long long frameDuration_100ns = 0;
    {
        vcore::timed_guard lock(storeLock(), commandWait_ms);
        frameDuration_100ns = static_cast<long long>(frameDuration_100ns_);
    }
    writer_ = recording::createWriter(name, frameSize, frameDuration_100ns, &reason);
    if (!writer_) {
        return false;
    }
    if (!staging_.allocate(writer_->bufferBytes())) {
        reason = noMemory;
        return false;
    }
    std::wstring fileName = name;
    std::wstring path = fullPath(name).oleStr();
    endAsked_ = false;
    // The thread begins with waiting for this lock.
    vcore::timed_guard lock(storeLock(), commandWait_ms);
    if (!start()) {
        reason = vcore::systemMessage(GetLastError());
        return false;
    }
    resetRing();
    tally_.begin();
    fileName_ = std::move(fileName);
    ringFile_ = std::move(path);
    return true;
}

void dvFrameStore::closeFile() {
    writer_.reset();
    staging_ = recording::RecordBuffer();
}

void dvFrameStore::stopRecord() {
    stopWriter();
    if (finished()) {
        closeFile();
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
    if (tally_.recording()) {
        completeFile();
    }
    closeFile();
}

void dvFrameStore::resetRing() {
    ring_.flush();
    ringFile_.clear();
}

void dvFrameStore::flush() {
    std::puts("flush record");
    vcore::timed_guard lock(storeLock(), flushWait_ms);
    tally_.drop(ring_.inPos() - ring_.outPos());
    resetRing();
}

void dvFrameStore::continueAt(unsigned long long number) {
    vcore::timed_guard lock(storeLock(), flushWait_ms);
    ring_.set(number);
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
    ringFile_.clear();
}

void dvFrameStore::run() {
    const uninterruptible whole;
    stop_.enter(*this);
    reserveForThrowing();
    abandonBacklog_ = false;
    { vcore::timed_guard untilStarted(storeLock(), commandWait_ms); }
    writeBacklog(ring_.count());
    completeFile();
    flushed_.set();
}

bool dvFrameStore::writerShallEnd(unsigned long long backlog) const {
    return ending() && (backlog == 0 || abandonBacklog_);
}

/// Frames captured from now on belong to no recording; without this bound a camera that is as fast as the
/// disk would keep the writer for ever.
unsigned long long dvFrameStore::endOfRecording() {
    vcore::timed_guard lock(storeLock(), frameWait_ms);
    tally_.close();
    return ring_.inPos();
}

void dvFrameStore::writeBacklog(unsigned long ringFrames) {
    int priority = THREAD_PRIORITY_BELOW_NORMAL;
    unsigned long long end = ~0ull;
    driveSpaceAsked_ms_ = GetTickCount() - driveSpacePeriod_ms;
    for (;;) {
        flushIfAsked();
        askDriveSpace();
        if (ending() && end == ~0ull) {
            end = endOfRecording();
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
        report(L"poolInfo", ring_.inPos(), written, ringFrames);
        if (const int due = priorityFor(backlog, ringFrames); due != priority) {
            priority = due;
            SetThreadPriority(GetCurrentThread(), priority);
        }
        const Taken frame = stageFrame();
        if (!frame.present) {
            Sleep(0);
            continue;
        }
        const long long limit = maxFileSize_;
        if (limit >= 0 && frame.number >= static_cast<unsigned long long>(limit)) {
            tally_.leaveOut();
            continue;
        }
        tell(tally_.reach(frame.number, frame.lost, backlog, ringFrames));
        writeStaged(frame, ringFrames);
    }
}

/// A frame of a size that the kind of file cannot take does not get into the buffer, and the writer refuses
/// that.
dvFrameStore::Taken dvFrameStore::stageFrame() {
    vcore::timed_guard lock(storeLock(), frameWait_ms);
    Taken taken{ring_.incOut()};
    if (const vvideo::dvFrame* slot = ring_.frame(taken.number)) {
        taken.present = true;
        taken.lost = slot->id() != taken.number;
        if (slot->data() && staging_.setFrameBytes(slot->size())) {
            std::memcpy(staging_.frame(), slot->data(), slot->size());
        }
    }
    return taken;
}

// A disk that never answers must not hold up the next recording for ever, so the recording lets its writer be
// killed while it waits for the disk, but never while it holds a lock.
void dvFrameStore::writeStaged(const Taken& frame, unsigned long ringFrames) {
    std::optional<RecordNews> news;
    try {
        news = writer_->write(staging_)
                   ? tally_.wrote(frame.number, frame.lost)
                   : tally_.failed(frame.number, frame.lost, writerError(), writer_->error().c_str());
    } catch (const std::bad_alloc&) {
        news = tally_.failed(frame.number, frame.lost, ERROR_NOT_ENOUGH_MEMORY, noMemory);
    }
    tell(news);
    if (ringFrames != 0 && ring_.inPos() % ringFrames == 0) {
        flushFile();
    }
}

void dvFrameStore::flushFile() {
    if (!writer_->flush()) {
        tellIncomplete();
    }
}

void dvFrameStore::flushIfAsked() {
    if (flushAsked_.exchange(false)) {
        flushFile();
        flushed_.set();
    }
}

void dvFrameStore::askDriveSpace() {
    const DWORD now = GetTickCount();
    if (now - driveSpaceAsked_ms_ < driveSpacePeriod_ms) {
        return;
    }
    driveSpaceAsked_ms_ = now;
    const unsigned long long bytes = writer_->freeBytes();
    tally_.setDriveSpace(bytes == ~0ull ? record_status::unknown : bytes / writer_->bufferBytes());
}

void dvFrameStore::completeFile() {
    bool complete = false;
    try {
        complete = writer_->finish();
    } catch (const std::bad_alloc&) {
        complete = false;
    }
    if (!complete) {
        tellIncomplete();
    }
    tally_.end(complete);
    report(L"recEnd");
}

void dvFrameStore::tellIncomplete() {
    try {
        tell(tally_.incomplete(writerError(), writer_->error().c_str()));
    } catch (const std::bad_alloc&) {
        tell(tally_.incomplete(ERROR_NOT_ENOUGH_MEMORY, noMemory));
    }
}

/// Never 0, which means that all is well.
std::uint32_t dvFrameStore::writerError() const {
    const unsigned long error = writer_->systemError();
    return error != ERROR_SUCCESS ? error : ERROR_WRITE_FAULT;
}

/// What a receiver has no memory for, it can ask for later.
template <class... Arguments>
void dvFrameStore::report(const wchar_t* signal, const Arguments&... arguments) {
    try {
        emitSignal(signal, (0 + ... + static_cast<int>(sizeof(Arguments))), arguments...);
    } catch (const std::bad_alloc&) {
        return;
    }
}

void dvFrameStore::tell(const std::optional<RecordNews>& news) {
    if (news) {
        report(L"recError", news->frame, news->frames, news->error, news->event);
    }
}
