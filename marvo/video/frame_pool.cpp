#include "marvo/video/frame_pool.h"

#include "marvo/core/timed_guard.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vvideo {

namespace {

/// The ring's lock waits without limit: nothing is called while it is held.
class MARVO_SCOPED_CAPABILITY RingGuard : vcore::timed_guard {
public:
    explicit RingGuard(const vcore::semaphore& lock) MARVO_ACQUIRE(lock) : timed_guard(lock, INFINITE) {}
    ~RingGuard() MARVO_RELEASE() = default;
};

} // namespace

dvFramePool::dvFramePool() : lock_(1, 1) {}

dvFramePool& dvFramePool::operator=(const dvFramePool& source) {
    if (this == &source) {
        return *this;
    }
    Frames copies;
    unsigned long frameSize, count;
    unsigned long long inPos, outPos;
    {
        RingGuard guard(source.lock_);
        frameSize = source.frameSize_;
        count = source.count_;
        inPos = source.inPos_;
        outPos = source.outPos_;
        if (makeFrames(frameSize, count, copies)) {
            for (unsigned long i = 0; i < count; ++i) {
                *copies[i] = *source.frames_[i];
            }
        } else {
            frameSize = count = 0;
        }
    }
    RingGuard guard(lock_);
    frames_ = std::move(copies);
    frameSize_ = frameSize;
    count_ = count;
    inPos_ = inPos;
    outPos_ = outPos;
    return *this;
}

bool dvFramePool::makeFrames(unsigned long frameSize, unsigned long count, Frames& made) {
    if (count > mostBytes / (frameSize + sizeof(dvFrame))) {
        return false;
    }
    Frames array(new (std::nothrow) std::unique_ptr<dvFrame>[count]);
    if (!array) {
        return false;
    }
    for (unsigned long i = 0; i < count; ++i) {
        array[i].reset(new (std::nothrow) dvFrame(frameSize));
        if (!array[i] || array[i]->size() != frameSize) {
            return false;
        }
    }
    made = std::move(array);
    return true;
}

bool dvFramePool::init(unsigned long frameSize, unsigned long count) {
    done();
    RingGuard guard(lock_);
    if (!makeFrames(frameSize, count, frames_)) {
        return false;
    }
    frameSize_ = frameSize;
    count_ = count;
    inPos_ = outPos_ = 0;
    return true;
}

void dvFramePool::done() {
    RingGuard guard(lock_);
    frames_.reset();
    count_ = frameSize_ = 0;
    inPos_ = outPos_ = ~0ull;
}

dvFrame* dvFramePool::frame(unsigned long long pos) const {
    RingGuard guard(lock_);
    return count_ ? frames_[pos % count_].get() : nullptr;
}

unsigned long long dvFramePool::inPos() const {
    RingGuard guard(lock_);
    return inPos_;
}

unsigned long long dvFramePool::outPos() const {
    RingGuard guard(lock_);
    return outPos_;
}

unsigned long long dvFramePool::incIn() {
    RingGuard guard(lock_);
    return inPos_++;
}

unsigned long long dvFramePool::incOut() {
    RingGuard guard(lock_);
    return outPos_++;
}

unsigned long long dvFramePool::correctOut() {
    RingGuard guard(lock_);
    return outPos_ = inPos_ - count_ / 2;
}

long long dvFramePool::advantage() const {
    RingGuard guard(lock_);
    return static_cast<long long>(inPos_ - outPos_);
}

bool dvFramePool::overrun() const {
    RingGuard guard(lock_);
    const auto used = static_cast<long long>(inPos_ - outPos_ + 1);
    return used >= 0 && used >= static_cast<long long>(count_);
}

bool dvFramePool::underrun() const {
    RingGuard guard(lock_);
    return static_cast<long long>(outPos_) >= static_cast<long long>(inPos_);
}

void dvFramePool::set(unsigned long long pos) {
    RingGuard guard(lock_);
    inPos_ = outPos_ = pos;
    std::for_each(begin(), end(), [](const auto& frame) { frame->setId(noFrame); });
}

dvFrame* dvFramePool::claim() {
    RingGuard guard(lock_);
    if (!count_) {
        return nullptr;
    }
    dvFrame* const claimed = frames_[inPos_ % count_].get();
    claimed->setId(noFrame);
    return claimed;
}

void dvFramePool::publish(unsigned long long number) {
    RingGuard guard(lock_);
    if (count_) {
        frames_[inPos_ % count_]->setId(number);
    }
    ++inPos_;
}

dvFrame* dvFramePool::findFrame(unsigned long long id) {
    if (id == noFrame) {
        return nullptr;
    }
    RingGuard guard(lock_);
    const auto found = std::find_if(begin(), end(), [id](const auto& frame) { return frame->id() == id; });
    return found == end() ? nullptr : found->get();
}

void dvFramePool::resetAccess() {
    RingGuard guard(lock_);
    std::for_each(begin(), end(), [](const auto& frame) { frame->access() = -1; });
}

void dvFramePool::lowerAccess() {
    RingGuard guard(lock_);
    std::for_each(begin(), end(), [](const auto& frame) { --frame->access(); });
}

dvFrame* dvFramePool::findOldest() {
    RingGuard guard(lock_);
    const auto oldest = std::min_element(
        begin(), end(), [](const auto& a, const auto& b) { return a->access() < b->access(); });
    return oldest == end() ? nullptr : oldest->get();
}

unsigned long dvFramePool::frameSize() const {
    RingGuard guard(lock_);
    return frameSize_;
}

unsigned long dvFramePool::count() const {
    RingGuard guard(lock_);
    return count_;
}

} // namespace vvideo
