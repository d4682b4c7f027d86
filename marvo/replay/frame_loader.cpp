#include "marvo/replay/frame_loader.h"

#include "marvo/core/timed_guard.h"
#include "marvo/avi/file_io_avi.h"
#include "marvo/recording/recording_name.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned long idle_ms = 10;
constexpr unsigned long join_ms = 100;

/// `position` wrapped into the range of `length` frames from `first`.
unsigned long long wrap(unsigned long long position, unsigned long long first, long long length) {
    const auto offset = static_cast<long long>(position - first);
    return first + static_cast<unsigned long long>((offset % length + length) % length);
}

} // namespace

dvFrameLoad::dvFrameLoad() : lock_(1, 1), fileLock_(1, 1) {}

dvFrameLoad::~dvFrameLoad() {
    done();
}

bool dvFrameLoad::sameFile(const wchar_t* name) const {
    if (rawFile_.opened()) {
        return vcore::str::compareI(rawFile_.filename().oleStr(), name) == 0;
    }
    return aviFile_.opened() && vcore::str::compareI(aviName_.oleStr(), name) == 0;
}

bool dvFrameLoad::loaded(const wchar_t* name, unsigned long long inPoint, unsigned long long outPoint) const {
    vcore::timed_guard lock(lock_, 1000);
    return name && sameFile(name) && inPoint == inPoint_ && outPoint == outPoint_;
}

bool dvFrameLoad::init(const wchar_t* name, unsigned long long inPoint, unsigned long long outPoint,
                       unsigned long maxFrames) {
    if (!name) {
        return false;
    }
    {
        vcore::timed_guard lock(lock_, 1000);
        if (sameFile(name)) {
            if (inPoint == inPoint_ && outPoint == outPoint_) {
                return true;
            }
            if (rawFile_.opened()) {
                inPoint_ = loadPosition_ = requestPosition_ = inPoint;
                outPoint_ = outPoint;
                return true;
            }
        }
    }
    done();
    vcore::timed_guard fileLock(fileLock_, 1000);
    vcore::timed_guard lock(lock_, 1000);
    unsigned long lastFrame = 0;
    unsigned long frameSize = 0;
    if (!openFile(name, lastFrame, frameSize)) {
        return false;
    }
    if (lastFrame == 0 || !startRange(inPoint, outPoint, lastFrame, frameSize, maxFrames)) {
        closeFiles();
        return false;
    }
    start();
    return true;
}

bool dvFrameLoad::openFile(const wchar_t* name, unsigned long& lastFrame, unsigned long& frameSize) {
    if (namesAviRecording(name)) {
        if (!aviFile_.open(name)) {
            return false;
        }
        aviName_ = name;
        lastFrame = aviFile_.frames() - 1;
        frameSize = aviFile_.getDataFrameSize();
        return true;
    }
    if (!rawFile_.open(name, 0)) {
        return false;
    }
    lastFrame = rawFile_.frameCount() - 1;
    frameSize = rawFile_.frameSize();
    return true;
}

bool dvFrameLoad::startRange(unsigned long long inPoint, unsigned long long outPoint, unsigned long lastFrame,
                             unsigned long frameSize, unsigned long maxFrames) {
    const auto clamped = [lastFrame](unsigned long long point) {
        return point >= lastFrame ? lastFrame - 1ull : point;
    };
    inPoint_ = loadPosition_ = requestPosition_ = clamped(inPoint);
    outPoint_ = clamped(outPoint);
    breaker_ms_ = 0;
    endless_ = true;
    const unsigned long long length = outPoint_ - inPoint_ + 1;
    return ring_.init(frameSize, static_cast<unsigned long>(std::min<unsigned long long>(length, maxFrames)));
}

bool dvFrameLoad::playable(const wchar_t* name) {
    if (namesAviRecording(name)) {
        dvAVIFile file;
        return file.open(name) && file.frames() != 1;
    }
    dvPlayFile file;
    return file.open(name, 0) && file.frameCount() != 1;
}

bool dvFrameLoad::get(vvideo::dvFrame* frame, unsigned long long number) {
    if (!frame) {
        return false;
    }
    vcore::timed_guard lock(lock_, 1000);
    const auto length = static_cast<long long>(outPoint_ - inPoint_ + 1);
    auto distance = static_cast<long long>(number - requestPosition_);
    if (distance > length) {
        distance -= length;
    } else if (distance < -length) {
        distance += length;
    }
    requestPosition_ = number;
    direction_ = distance > 0 ? 1.0 : distance < 0 ? -1.0 : 0.0;
    const vvideo::dvFrame* slot = ring_.findFrame(number);
    return slot && slot->copyTo(frame);
}

bool dvFrameLoad::getType(vvideo::dvMediaType& type) const {
    vcore::timed_guard lock(lock_, 1000);
    if (rawFile_.opened()) {
        type = rawFile_.type();
        return true;
    }
    if (aviFile_.opened()) {
        vvideo::clearMediaType(type);
        type.initVideoType(ring_.frameSize(), 0xFFFFFFFFul);
        return true;
    }
    return false;
}

void dvFrameLoad::setSpeed(double speed) {
    vcore::timed_guard lock(lock_, 50);
    direction_ = speed;
}

void dvFrameLoad::setBreaker(unsigned long ms) {
    vcore::timed_guard lock(lock_, 50);
    breaker_ms_ = ms;
}

unsigned long dvFrameLoad::breaker() const {
    vcore::timed_guard lock(lock_, 50);
    return breaker_ms_;
}

unsigned long long dvFrameLoad::inPoint() const {
    vcore::timed_guard lock(lock_, 1000);
    return inPoint_;
}

unsigned long long dvFrameLoad::outPoint() const {
    vcore::timed_guard lock(lock_, 1000);
    return outPoint_;
}

void dvFrameLoad::closeFiles() {
    rawFile_.close();
    aviFile_.close();
}

void dvFrameLoad::done() {
    stop_.ask(*this);
    {
        // A reader that is stuck in a slow read is not waited for longer than this; closing then makes it
        // fail. The index of an AVI file must outlive the reading.
        vcore::timed_guard fileLock(fileLock_, join_ms);
        vcore::timed_guard lock(lock_, 1000);
        rawFile_.close();
        if (fileLock.held()) {
            aviFile_.close();
        }
    }
    wait(join_ms);
    terminate();
    vcore::timed_guard lock(lock_, 1000);
    closeFiles();
    ring_.done();
    inPoint_ = loadPosition_ = requestPosition_ = outPoint_ = 0;
}

void dvFrameLoad::run() {
    const uninterruptible whole;
    stop_.enter(*this);
    if (aviFile_.opened() || endless_) {
        _dynamicLoad();
    } else {
        _completeLoad();
    }
}

dvFrameLoad::Decision dvFrameLoad::decide(unsigned long ringFrames) {
    vcore::timed_guard lock(lock_, 1000);
    const auto length = static_cast<long long>(outPoint_ - inPoint_ + 1);
    if (length <= 0) {
        return {};
    }
    const unsigned long long request = wrap(requestPosition_, inPoint_, length);
    const unsigned long long position = wrap(loadPosition_, inPoint_, length);
    auto lead = static_cast<long long>(direction_ < 0 ? request - position : position - request);
    if (lead < 0) {
        lead += length;
    }
    const bool moving = direction_ != 0;
    if (moving && lead < static_cast<long long>(ringFrames / 2)) {
        return {true, position};
    }
    const bool jumpedAway = moving && lead >= static_cast<long long>(ringFrames);
    if (!jumpedAway && ring_.findFrame(request)) {
        return {};
    }
    loadPosition_ = requestPosition_;
    return {true, request};
}

bool dvFrameLoad::seekRaw(unsigned long long frame) {
    vcore::timed_guard lock(lock_, 1000);
    if (frame >= rawFile_.frameCount()) {
        rawFile_.refresh();
    }
    return frame < rawFile_.frameCount() && rawFile_.seekFrame(static_cast<long long>(frame));
}

/// The data of `frame`, read from whichever file is open; null when it cannot be read. The data is in a
/// buffer of the raw file or in `staging`, and stays there until the next call.
const unsigned char* dvFrameLoad::readFrame(unsigned long long frame, vvideo::dvFrame& staging) {
    vcore::timed_guard fileLock(fileLock_, 1000);
    if (rawFile_.opened()) {
        if (!seekRaw(frame)) {
            return nullptr;
        }
        const killable slowDisk;
        return rawFile_.readFrame() ? rawFile_.data() + dvFile::headerSize : nullptr;
    }
    return readAvi(frame, staging) ? staging.data() + dvFile::headerSize : nullptr;
}

/// Reads `frame` of the AVI file into `staging`. Another program may have written a frame that is shorter
/// than a DV frame; the rest is zero then, so that a replay goes on. The caller holds the file lock.
bool dvFrameLoad::readAvi(unsigned long long frame, vvideo::dvFrame& staging) {
    if (!aviFile_.opened() || !staging.data()) {
        return false;
    }
    if (frame >= aviFile_.frames()) {
        aviFile_.refresh();
    }
    const auto number = static_cast<unsigned long>(frame);
    FileIOAVI::FramePosition position;
    if (number != frame || !aviFile_.io().framePosition(number, position) ||
        !aviFile_.readFrame(reinterpret_cast<char*>(staging.data()), staging.size(), number)) {
        return false;
    }
    const unsigned long read = dvFile::headerSize + position.size;
    if (read < staging.size()) {
        std::memset(staging.data() + read, 0, staging.size() - read);
    }
    return true;
}

/// Copies a frame that was read into the ring's next slot. The caller holds the lock.
void dvFrameLoad::store(const unsigned char* frameData, unsigned long long frame) {
    vvideo::dvFrame* slot = ring_.frame(ring_.inPos());
    if (!slot || !slot->data()) {
        return;
    }
    std::memcpy(slot->data(), frameData, slot->size());
    slot->setId(frame);
    ring_.incIn();
}

void dvFrameLoad::pauseAfter(bool loaded) const {
    // A frame that cannot be read is tried again on the next pass; without a pause that would take a whole
    // core.
    const unsigned long pause_ms = std::max(breaker_ms_.load(), loaded ? 0ul : idle_ms);
    if (pause_ms == 0) {
        Sleep(0);
    } else {
        finishing(static_cast<int>(pause_ms));
    }
}

void dvFrameLoad::_dynamicLoad() {
    const bool raw = rawFile_.opened();
    vvideo::dvFrame staging;
    staging.init(raw ? rawFile_.alignSize(ring_.frameSize() + dvFile::headerSize)
                     : aviFile_.getAVIFrameSize());
    const unsigned long ringFrames = ring_.count();
    while (!stop_.asked()) {
        const Decision decision = decide(ringFrames);
        if (!decision.load) {
            Sleep(idle_ms);
            continue;
        }
        if (!raw && !aviFile_.opened()) {
            return;
        }
        const unsigned char* frameData = ringFrames != 0 ? readFrame(decision.frame, staging) : nullptr;
        if (frameData) {
            vcore::timed_guard lock(lock_, 1000);
            store(frameData, decision.frame);
            if (direction_ < 0) {
                loadPosition_ = loadPosition_ <= inPoint_ ? outPoint_ : loadPosition_ - 1;
            } else {
                ++loadPosition_;
            }
        }
        pauseAfter(frameData != nullptr);
    }
}

void dvFrameLoad::_completeLoad() {
    vvideo::dvFrame none;
    while (!stop_.asked() && loadPosition_ <= outPoint_) {
        const unsigned char* frameData = readFrame(loadPosition_, none);
        if (frameData) {
            vcore::timed_guard lock(lock_, 1000);
            store(frameData, loadPosition_);
            ++loadPosition_;
        }
        pauseAfter(frameData != nullptr);
    }
}
