#include "video/frame_pool.h"

#include "core/timed_guard.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vvideo {

namespace {

/// The ring's lock waits without limit: nothing is called while it is held.
class ring_guard : public vcore::timed_guard {
public:
    explicit ring_guard(const vcore::semaphore& lock) : timed_guard(lock, INFINITE) {}
};

} // namespace

dvFramePool::dvFramePool() : _lock(1, 1) {}

dvFramePool& dvFramePool::operator=(const dvFramePool& source) {
    if (this == &source)
        return *this;
    frames copies;
    unsigned long frameSize, count;
    unsigned long long inPos, outPos;
    {
        ring_guard guard(source._lock);
        frameSize = source._frameSize;
        count = source._count;
        inPos = source._inPos;
        outPos = source._outPos;
        if (_makeFrames(frameSize, count, copies))
            for (unsigned long i = 0; i < count; ++i)
                *copies[i] = *source._frames[i];
        else
            frameSize = count = 0;
    }
    ring_guard guard(_lock);
    _frames = std::move(copies);
    _frameSize = frameSize;
    _count = count;
    _inPos = inPos;
    _outPos = outPos;
    return *this;
}

bool dvFramePool::_makeFrames(unsigned long frameSize, unsigned long count, frames& made) {
    frames array(new (std::nothrow) std::unique_ptr<dvFrame>[count]);
    if (!array)
        return false;
    for (unsigned long i = 0; i < count; ++i) {
        array[i].reset(new (std::nothrow) dvFrame(frameSize));
        if (!array[i] || array[i]->size() != frameSize)
            return false;
    }
    made = std::move(array);
    return true;
}

bool dvFramePool::init(unsigned long frameSize, unsigned long count) {
    done();
    ring_guard guard(_lock);
    if (!_makeFrames(frameSize, count, _frames))
        return false;
    _frameSize = frameSize;
    _count = count;
    _inPos = _outPos = 0;
    return true;
}

void dvFramePool::done() {
    ring_guard guard(_lock);
    _frames.reset();
    _count = _frameSize = 0;
    _inPos = _outPos = ~0ull;
}

dvFrame* dvFramePool::frame(unsigned long long pos) const {
    ring_guard guard(_lock);
    return _count ? _frames[pos % _count].get() : nullptr;
}

unsigned long long dvFramePool::inPos() const {
    ring_guard guard(_lock);
    return _inPos;
}

unsigned long long dvFramePool::outPos() const {
    ring_guard guard(_lock);
    return _outPos;
}

unsigned long long dvFramePool::incIn() {
    ring_guard guard(_lock);
    return _inPos++;
}

unsigned long long dvFramePool::incOut() {
    ring_guard guard(_lock);
    return _outPos++;
}

unsigned long long dvFramePool::correctOut() {
    ring_guard guard(_lock);
    return _outPos = _inPos - _count / 2;
}

long long dvFramePool::advantage() const {
    ring_guard guard(_lock);
    return static_cast<long long>(_inPos - _outPos);
}

bool dvFramePool::overrun() const {
    ring_guard guard(_lock);
    const auto used = static_cast<long long>(_inPos - _outPos + 1);
    return used >= 0 && used >= static_cast<long long>(_count);
}

bool dvFramePool::underrun() const {
    ring_guard guard(_lock);
    return static_cast<long long>(_outPos) >= static_cast<long long>(_inPos);
}

void dvFramePool::set(unsigned long long pos) {
    ring_guard guard(_lock);
    _inPos = _outPos = pos;
    for (const auto& frame : *this)
        frame->setId(noFrame);
}

dvFrame* dvFramePool::findFrame(unsigned long long id) {
    ring_guard guard(_lock);
    const auto found = std::find_if(begin(), end(), [id](const auto& frame) { return frame->id() == id; });
    return found == end() ? nullptr : found->get();
}

void dvFramePool::resetAccess() {
    ring_guard guard(_lock);
    for (const auto& frame : *this)
        frame->access() = -1;
}

void dvFramePool::lowerAccess() {
    ring_guard guard(_lock);
    for (const auto& frame : *this)
        --frame->access();
}

dvFrame* dvFramePool::findOldest() {
    ring_guard guard(_lock);
    const auto oldest = std::min_element(
        begin(), end(), [](const auto& a, const auto& b) { return a->access() < b->access(); });
    return oldest == end() ? nullptr : oldest->get();
}

unsigned long dvFramePool::frameSize() const {
    ring_guard guard(_lock);
    return _frameSize;
}

unsigned long dvFramePool::count() const {
    ring_guard guard(_lock);
    return _count;
}

} // namespace vvideo
