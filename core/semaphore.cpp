#include "core/semaphore.h"

#include "core/process_state.h"

#include <algorithm>

namespace vcore {

namespace {

bool sensible(int maximum, int initial) {
    return maximum > 0 && initial >= 0 && initial <= maximum;
}

/// The end of a bounded wait. The performance counter, because the tick count steps by 16 ms.
class deadline {
public:
    explicit deadline(unsigned long ms) : _infinite(ms == INFINITE) {
        QueryPerformanceFrequency(&_frequency);
        _end = _now() + static_cast<long long>(ms) * _frequency.QuadPart / 1000;
    }
    /// Milliseconds left, rounded up; 0 when the time is over.
    unsigned long remaining() const {
        if (_infinite)
            return INFINITE;
        const long long left = _end - _now();
        if (left <= 0)
            return 0;
        return static_cast<unsigned long>((left * 1000 + _frequency.QuadPart - 1) / _frequency.QuadPart);
    }

private:
    static long long _now() {
        LARGE_INTEGER now;
        QueryPerformanceCounter(&now);
        return now.QuadPart;
    }

    bool _infinite;
    LARGE_INTEGER _frequency;
    long long _end;
};

/// A thread that is killed right after it was woken takes the wake-up with it; nobody sleeps longer than this
/// for it.
constexpr unsigned long longestSleepMs = 100;

} // namespace

semaphore::semaphore(int count, const wchar_t* name)
    : _private(false), _kernel(CreateSemaphoreW(nullptr, count, count, name)) {}

// The kernel object wakes sleepers. It needs no more than `maximum` wake-ups at once: each one pending makes
// a sleeper look at the count again, and there are never more counts than that to be taken.
semaphore::semaphore(int maximum, int initial)
    : _private(true), _maximum(sensible(maximum, initial) ? maximum : 0), _count(_maximum ? initial : 0),
      _kernel(_maximum ? CreateSemaphoreW(nullptr, 0, _maximum, nullptr) : nullptr) {}

semaphore::semaphore(const wchar_t* name, bool create, int count)
    : _private(false), _kernel(OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, name)) {
    if (!_kernel && create)
        _kernel.reset(CreateSemaphoreW(nullptr, count, count, name));
}

bool semaphore::wait(unsigned long timeoutMs) const {
    if (!_private)
        return WaitForSingleObject(_kernel.get(), timeoutMs) == WAIT_OBJECT_0;
    return _tryTake() || (timeoutMs && _maximum && _waitPrivate(timeoutMs));
}

bool semaphore::_tryTake() const {
    long count = _count.load();
    while (count > 0)
        if (_count.compare_exchange_weak(count, count - 1))
            return true;
    return false;
}

// A waiter announces itself and then looks at the count; a releaser raises the count and then looks for
// waiters. With sequentially consistent accesses one of the two always sees the other, so no wake-up is
// missed.
bool semaphore::_waitPrivate(unsigned long timeoutMs) const {
    const deadline end(timeoutMs);
    _waiting.fetch_add(1);
    bool taken = _tryTake();
    while (!taken) {
        const unsigned long left = end.remaining();
        if (!left)
            break;
        const DWORD result = WaitForSingleObject(_kernel.get(), std::min(left, longestSleepMs));
        if (result == WAIT_FAILED)
            Sleep(1);
        taken = _tryTake();
        // The holder is gone with all other threads and will release nothing any more.
        if (!taken && result == WAIT_TIMEOUT && processEnding())
            break;
    }
    _waiting.fetch_sub(1);
    return taken;
}

bool semaphore::unlock() const {
    if (!_private)
        return ReleaseSemaphore(_kernel.get(), 1, nullptr) != FALSE;
    long count = _count.load();
    do {
        if (count >= _maximum)
            return false;
    } while (!_count.compare_exchange_weak(count, count + 1));
    if (_waiting.load() > 0)
        ReleaseSemaphore(_kernel.get(), 1, nullptr);
    return true;
}

bool semaphore::isLocked() const {
    if (_private)
        return _count.load() <= 0;
    if (!wait(0))
        return true;
    unlock();
    return false;
}

} // namespace vcore
