#include "marvo/replay/frame_loader.h"

#include "marvo/core/guarded.h"
#include "marvo/core/timed_guard.h"
#include "marvo/recording/recordings.h"

#include <algorithm>
#include <cstring>

namespace {

/// How long a lock is waited for ...
constexpr unsigned long lockWait_ms = 1000;
/// ... and by a setter, whose caller has no time.
constexpr unsigned long setterWait_ms = 50;

constexpr unsigned long idle_ms = 10;
constexpr unsigned long join_ms = 100;

/// `position` wrapped into the range of `length` frames from `first`.
unsigned long long wrap(unsigned long long position, unsigned long long first, long long length) {
    const auto offset = static_cast<long long>(position - first);
    return first + static_cast<unsigned long long>((offset % length + length) % length);
}

/// Clamps a range to what a recording of so many frames has finished. False for exactly one frame.
bool clampRange(unsigned long long frames, unsigned long long& inPoint, unsigned long long& outPoint) {
    // In 32 bits, so that an empty recording, which may be about to grow, clamps nothing.
    const unsigned long last = static_cast<std::uint32_t>(frames - 1);
    if (last == 0) {
        return false;
    }
    for (unsigned long long* point : {&inPoint, &outPoint}) {
        if (*point >= last) {
            *point = last - 1ull;
        }
    }
    return true;
}

} // namespace

dvFrameLoad::dvFrameLoad() : fileLock_(1, 1), lock_(1, 1) {}

dvFrameLoad::~dvFrameLoad() {
    done();
}

bool dvFrameLoad::isOpen(const wchar_t* name) const {
    return fileName_.len() != 0 && vcore::str::compareI(fileName_.oleStr(), name) == 0;
}

bool dvFrameLoad::loaded(const wchar_t* name, unsigned long long inPoint, unsigned long long outPoint) const {
    vcore::timed_guard lock(lock_, lockWait_ms);
    return isOpen(name) && inPoint == inPoint_ && outPoint == outPoint_;
}

bool dvFrameLoad::init(const wchar_t* name, unsigned long long inPoint, unsigned long long outPoint,
                       unsigned long maxFrames) {
    if (!name) {
        return false;
    }
    bool sameFile = false;
    {
        vcore::timed_guard lock(lock_, lockWait_ms);
        sameFile = isOpen(name);
        if (sameFile && inPoint == inPoint_ && outPoint == outPoint_) {
            return true;
        }
    }
    if (sameFile) {
        return changeRange(inPoint, outPoint);
    }
    std::unique_ptr<recording::Reader> reader = recording::openReader(name);
    if (!reader || !clampRange(reader->frames(), inPoint, outPoint)) {
        return false;
    }
    done();
    return startReader(std::move(reader), name, maxFrames, inPoint, outPoint);
}

bool dvFrameLoad::changeRange(unsigned long long inPoint, unsigned long long outPoint) {
    vcore::timed_guard fileLock(fileLock_, lockWait_ms);
    reader_->refresh();
    if (!clampRange(reader_->frames(), inPoint, outPoint)) {
        return false;
    }
    vcore::timed_guard lock(lock_, lockWait_ms);
    setRange(inPoint, outPoint);
    return true;
}

bool dvFrameLoad::startReader(std::unique_ptr<recording::Reader> reader, const wchar_t* name,
                              unsigned long maxFrames, unsigned long long inPoint,
                              unsigned long long outPoint) {
    vcore::timed_guard fileLock(fileLock_, lockWait_ms);
    vcore::timed_guard lock(lock_, lockWait_ms);
    reader_ = std::move(reader);
    reader_->describe(type_);
    fileName_ = name;
    setRange(inPoint, outPoint);
    breaker_ms_ = 0;
    endless_ = true;
    const unsigned long long length = outPoint - inPoint + 1;
    const auto slots = static_cast<unsigned long>(std::min<unsigned long long>(length, maxFrames));
    if (!ring_.init(reader_->frameSize(), slots) || !start()) {
        closeFile();
        return false;
    }
    return true;
}

void dvFrameLoad::setRange(unsigned long long inPoint, unsigned long long outPoint) {
    inPoint_ = loadPosition_ = requestPosition_ = inPoint;
    outPoint_ = outPoint;
}

void dvFrameLoad::closeFile() {
    reader_.reset();
    fileName_ = L"";
}

bool dvFrameLoad::playable(const wchar_t* name) {
    const std::unique_ptr<recording::Reader> reader = recording::openReader(name);
    return reader && reader->frames() != 1;
}

bool dvFrameLoad::get(vvideo::dvFrame* frame, unsigned long long number) {
    if (!frame) {
        return false;
    }
    vcore::timed_guard lock(lock_, lockWait_ms);
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
    vcore::timed_guard lock(lock_, lockWait_ms);
    if (fileName_.len() == 0) {
        return false;
    }
    type = type_;
    return true;
}

void dvFrameLoad::setEndless(bool endless) {
    vcore::timed_guard lock(lock_, lockWait_ms);
    endless_ = endless;
}

void dvFrameLoad::setSpeed(double speed) {
    vcore::timed_guard lock(lock_, setterWait_ms);
    direction_ = speed;
}

void dvFrameLoad::setBreaker(unsigned long ms) {
    breaker_ms_ = ms;
}

unsigned long dvFrameLoad::breaker() const {
    return breaker_ms_;
}

unsigned long long dvFrameLoad::inPoint() const {
    vcore::timed_guard lock(lock_, lockWait_ms);
    return inPoint_;
}

unsigned long long dvFrameLoad::outPoint() const {
    vcore::timed_guard lock(lock_, lockWait_ms);
    return outPoint_;
}

void dvFrameLoad::done() {
    stop_.ask(*this);
    {
        // A loader that is stuck in a slow read is not waited for longer than this; it fails then.
        vcore::timed_guard fileLock(fileLock_, join_ms);
        if (reader_) {
            reader_->abandon();
        }
    }
    wait(join_ms);
    terminate();
    vcore::timed_guard fileLock(fileLock_, lockWait_ms);
    vcore::timed_guard lock(lock_, lockWait_ms);
    closeFile();
    ring_.done();
    setRange(0, 0);
}

void dvFrameLoad::run() {
    const uninterruptible whole;
    stop_.enter(*this);
    bool endless = false;
    {
        vcore::timed_guard lock(lock_, lockWait_ms);
        endless = endless_;
    }
    if (endless) {
        _dynamicLoad();
    } else {
        _completeLoad();
    }
}

dvFrameLoad::Decision dvFrameLoad::decide(unsigned long ringFrames) {
    vcore::timed_guard lock(lock_, lockWait_ms);
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

bool dvFrameLoad::makeStaging(recording::RecordBuffer& staging) {
    vcore::timed_guard fileLock(fileLock_, lockWait_ms);
    return reader_ && staging.allocate(reader_->bufferBytes());
}

/// The frame of the recording that is shown as `number`. False when there is none yet.
bool dvFrameLoad::frameFor(unsigned long long number, unsigned long long& frame) {
    if (number >= reader_->frames()) {
        reader_->refresh();
    }
    const unsigned long long frames = reader_->frames();
    const bool atTheEnd =
        number == frames && reader_->end().state == recording::Reader::End::State::beingWritten;
    frame = std::min(number, frames - 1);
    return frames != 0 && !atTheEnd;
}

/// Reads what is shown as `number`. False when it is not there or cannot be read.
bool dvFrameLoad::readFrame(unsigned long long number, recording::RecordBuffer& staging) {
    vcore::timed_guard fileLock(fileLock_, lockWait_ms);
    unsigned long long frame = 0;
    return vcore::guarded(
        false, [&] { return reader_ && frameFor(number, frame) && reader_->read(frame, staging); });
}

/// Copies a frame that was read into the ring's next slot. Another program may have written one that is
/// shorter than a DV frame; the rest is zero then, so that a replay goes on.
void dvFrameLoad::store(const recording::RecordBuffer& staging, unsigned long long number) {
    vvideo::dvFrame* slot = ring_.claim();
    if (!slot || !slot->data()) {
        return;
    }
    const unsigned long bytes = std::min(staging.frameBytes(), slot->size());
    std::memcpy(slot->data(), staging.frame(), bytes);
    std::memset(slot->data() + bytes, 0, slot->size() - bytes);
    ring_.publish(number);
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
    recording::RecordBuffer staging;
    if (!makeStaging(staging)) {
        return;
    }
    const unsigned long ringFrames = ring_.count();
    while (!stop_.asked()) {
        const Decision decision = decide(ringFrames);
        if (!decision.load) {
            Sleep(idle_ms);
            continue;
        }
        const bool read = ringFrames != 0 && readFrame(decision.frame, staging);
        if (read) {
            vcore::timed_guard lock(lock_, lockWait_ms);
            store(staging, decision.frame);
            if (direction_ < 0) {
                loadPosition_ = loadPosition_ <= inPoint_ ? outPoint_ : loadPosition_ - 1;
            } else {
                ++loadPosition_;
            }
        }
        pauseAfter(read);
    }
}

void dvFrameLoad::_completeLoad() {
    recording::RecordBuffer staging;
    if (!makeStaging(staging)) {
        return;
    }
    const auto next = [this](unsigned long long& number) {
        vcore::timed_guard lock(lock_, lockWait_ms);
        number = loadPosition_;
        return number <= outPoint_;
    };
    for (unsigned long long number = 0; !stop_.asked() && next(number);) {
        const bool read = readFrame(number, staging);
        if (read) {
            vcore::timed_guard lock(lock_, lockWait_ms);
            store(staging, number);
            ++loadPosition_;
        }
        pauseAfter(read);
    }
}
