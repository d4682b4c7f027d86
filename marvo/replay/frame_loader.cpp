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
/// Between two attempts to read a frame that cannot be read.
constexpr unsigned long retry_ms = 200;
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
    return isOpen(name) && inPoint == inPoint_ && outPoint == outPoint_ && unreadable_.frames == 0;
}

bool dvFrameLoad::init(const wchar_t* name, unsigned long long inPoint, unsigned long long outPoint,
                       unsigned long maxFrames) {
    if (!name) {
        return false;
    }
    bool sameFile = false;
    {
        vcore::timed_guard lock(lock_, lockWait_ms);
        sameFile = isOpen(name) && unreadable_.frames == 0;
        if (sameFile && inPoint == inPoint_ && outPoint == outPoint_) {
            return true;
        }
    }
    if (sameFile) {
        if (const std::optional<bool> changed = changeRange(inPoint, outPoint)) {
            return *changed;
        }
    }
    std::unique_ptr<recording::Reader> reader = recording::openReader(name);
    if (!reader || !clampRange(reader->frames(), inPoint, outPoint)) {
        return false;
    }
    done();
    return startReader(std::move(reader), name, maxFrames, inPoint, outPoint);
}

/// Nothing while the disk holds the loader up, or has no file.
std::optional<bool> dvFrameLoad::changeRange(unsigned long long inPoint, unsigned long long outPoint) {
    const vcore::strict_guard fileLock(fileLock_, lockWait_ms);
    if (!fileLock.held() || !reader_) {
        return std::nullopt;
    }
    refresh();
    frames_ = reader_->frames();
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
    // Opens what only the search for lost frames needs: opening may take long, and the loader shall not be
    // held up in it.
    reader_->fileBytes();
    fileName_ = name;
    setRange(inPoint, outPoint);
    breaker_ms_ = 0;
    endless_ = true;
    frames_ = reader_->frames();
    const unsigned long long length = outPoint - inPoint + 1;
    if (!makeRing(std::min<unsigned long long>(length, maxFrames)) || !start()) {
        closeFile();
        return false;
    }
    return true;
}

/// A ring of so many frames, or of as many as there is memory for.
bool dvFrameLoad::makeRing(unsigned long long frames) {
    const unsigned long frameSize = reader_->frameSize();
    const unsigned long long most = std::max(ringBytes / std::max(frameSize, 1ul), 1ull);
    auto slots = static_cast<unsigned long>(std::min(frames, most));
    while (!ring_.init(frameSize, slots)) {
        if (slots < 2) {
            return false;
        }
        slots /= 2;
    }
    return true;
}

void dvFrameLoad::setRange(unsigned long long inPoint, unsigned long long outPoint) {
    inPoint_ = loadPosition_ = requestPosition_ = inPoint;
    outPoint_ = outPoint;
    unreadable_ = {};
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

void dvFrameLoad::expect(unsigned long long number) {
    {
        vcore::timed_guard lock(lock_, lockWait_ms);
        requestPosition_ = number;
    }
    expected_.set();
}

bool dvFrameLoad::getType(vvideo::dvMediaType& type) const {
    vcore::timed_guard lock(lock_, lockWait_ms);
    if (fileName_.len() == 0) {
        return false;
    }
    type = type_;
    return true;
}

play_error dvFrameLoad::unreadable() const {
    vcore::timed_guard lock(lock_, lockWait_ms);
    return unreadable_;
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

void dvFrameLoad::refresh() {
    reader_->refresh();
    frames_ = std::max(frames_, reader_->frames());
}

/// Reads what is shown as `number`.
dvFrameLoad::Attempt dvFrameLoad::readFrame(unsigned long long number, recording::RecordBuffer& staging) {
    const vcore::strict_guard fileLock(fileLock_, lockWait_ms);
    if (!fileLock.held() || !reader_) {
        return Attempt::notYet;
    }
    unsigned long error = ERROR_NOT_ENOUGH_MEMORY;
    Attempt attempt = Attempt::failed;
    // Not by `guarded`: the analysis of locks does not follow them into a lambda.
    try {
        attempt = tryFrame(number, staging, error);
    } catch (const std::exception&) {
    }
    // A reader that was given up fails as well.
    if (attempt == Attempt::failed && !stop_.asked()) {
        noteUnreadable(number, error);
    }
    return attempt;
}

dvFrameLoad::Attempt dvFrameLoad::tryFrame(unsigned long long number, recording::RecordBuffer& staging,
                                           unsigned long& error) {
    if (number >= reader_->frames()) {
        refresh();
    }
    const unsigned long long frames = reader_->frames();
    if (number >= frames && number < frames_) {
        error = ERROR_HANDLE_EOF;
        return Attempt::failed;
    }
    const bool atTheEnd =
        number == frames && reader_->end().state == recording::Reader::End::State::beingWritten;
    if (frames == 0 || atTheEnd) {
        return Attempt::notYet;
    }
    if (reader_->read(std::min(number, frames - 1), staging)) {
        return Attempt::read;
    }
    error = reader_->systemError();
    refresh();
    return Attempt::failed;
}

/// Whether a frame that was in the recording lies behind the end of its file, of so many bytes.
bool dvFrameLoad::isGone(unsigned long long frame, unsigned long long bytes) const {
    recording::Reader::Place place;
    return frame < frames_ && (!reader_->place(frame, place) || place.offset + place.size > bytes);
}

/// Keeps which frames around `number` cannot be read: with a file that was cut, all that are gone.
void dvFrameLoad::noteUnreadable(unsigned long long number, unsigned long error) {
    const unsigned long long bytes = reader_->fileBytes();
    vcore::timed_guard lock(lock_, lockWait_ms);
    if (unreadable_.holds(number) && unreadable_.error == error) {
        return;
    }
    unsigned long long first = number;
    unsigned long long behind = number + 1;
    if (isGone(number, bytes)) {
        while (first > inPoint_ && isGone(first - 1, bytes)) {
            --first;
        }
        while (behind <= outPoint_ && isGone(behind, bytes)) {
            ++behind;
        }
    }
    unreadable_ = {first, behind - first, static_cast<std::uint32_t>(error)};
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
    if (unreadable_.holds(number)) {
        unreadable_ = {};
    }
}

void dvFrameLoad::pauseAfter(Attempt attempt) const {
    // What is not there is tried again on the next pass; without a pause that would take a whole core.
    const unsigned long pause_ms = std::max(breaker_ms_.load(), attempt == Attempt::read ? 0ul : idle_ms);
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
    std::optional<unsigned long long> failed;
    ULONGLONG failedAt_ms = 0;
    while (!stop_.asked()) {
        const Decision decision = decide(ringFrames);
        const bool tooEarly = failed == decision.frame && GetTickCount64() - failedAt_ms < retry_ms;
        if (!decision.load || tooEarly || ringFrames == 0) {
            expected_.wait(idle_ms);
            continue;
        }
        const Attempt attempt = readFrame(decision.frame, staging);
        failed = attempt == Attempt::failed ? std::optional(decision.frame) : std::nullopt;
        failedAt_ms = GetTickCount64();
        if (attempt == Attempt::read) {
            vcore::timed_guard lock(lock_, lockWait_ms);
            store(staging, decision.frame);
            if (direction_ < 0) {
                loadPosition_ = loadPosition_ <= inPoint_ ? outPoint_ : loadPosition_ - 1;
            } else {
                ++loadPosition_;
            }
        }
        pauseAfter(attempt);
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
        const Attempt attempt = readFrame(number, staging);
        if (attempt == Attempt::read) {
            vcore::timed_guard lock(lock_, lockWait_ms);
            store(staging, number);
            ++loadPosition_;
        } else if (attempt == Attempt::failed) {
            finishing(retry_ms);
        }
        pauseAfter(attempt);
    }
}
