#include "marvo/core/semaphore.h"

#include "marvo/core/process_state.h"

#include <algorithm>

namespace vcore {

namespace {

bool sensible(int maximum, int initial) {
    return maximum > 0 && initial >= 0 && initial <= maximum;
}

/// The end of a bounded wait. The performance counter, because the tick count steps by 16 ms.
class Deadline {
public:
    explicit Deadline(unsigned long ms) : infinite_(ms == INFINITE) {
        QueryPerformanceFrequency(&frequency_);
        end_ = now() + static_cast<long long>(ms) * frequency_.QuadPart / 1000;
    }
    /// Milliseconds left, rounded up; 0 when the time is over.
    unsigned long remaining() const {
        if (infinite_) {
            return INFINITE;
        }
        const long long left = end_ - now();
        if (left <= 0) {
            return 0;
        }
        return static_cast<unsigned long>((left * 1000 + frequency_.QuadPart - 1) / frequency_.QuadPart);
    }

private:
    static long long now() {
        LARGE_INTEGER now;
        QueryPerformanceCounter(&now);
        return now.QuadPart;
    }

    bool infinite_;
    LARGE_INTEGER frequency_;
    long long end_;
};

/// A thread that is killed right after it was woken takes the wake-up with it; nobody sleeps longer than this
/// for it.
constexpr unsigned long longestSleep_ms = 100;

} // namespace

semaphore::semaphore(int count, const wchar_t* name)
    : private_(false), kernel_(CreateSemaphoreW(nullptr, count, count, name)) {}

// The kernel object wakes sleepers. It needs no more than `maximum` wake-ups at once: each one pending makes
// a sleeper look at the count again, and there are never more counts than that to be taken.
semaphore::semaphore(int maximum, int initial)
    : private_(true), maximum_(sensible(maximum, initial) ? maximum : 0), count_(maximum_ ? initial : 0),
      kernel_(maximum_ ? CreateSemaphoreW(nullptr, 0, maximum_, nullptr) : nullptr) {}

semaphore::semaphore(const wchar_t* name, bool create, int count)
    : private_(false), kernel_(OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, name)) {
    if (!kernel_ && create) {
        kernel_.reset(CreateSemaphoreW(nullptr, count, count, name));
    }
}

bool semaphore::wait(unsigned long timeoutMs) const {
    if (!private_) {
        return WaitForSingleObject(kernel_.get(), timeoutMs) == WAIT_OBJECT_0;
    }
    return tryTake() || (timeoutMs && maximum_ && waitPrivate(timeoutMs));
}

bool semaphore::tryTake() const {
    long count = count_.load();
    while (count > 0) {
        if (count_.compare_exchange_weak(count, count - 1)) {
            return true;
        }
    }
    return false;
}

// A waiter announces itself and then looks at the count; a releaser raises the count and then looks for
// waiters. With sequentially consistent accesses one of the two always sees the other, so no wake-up is
// missed.
bool semaphore::waitPrivate(unsigned long timeoutMs) const {
    const Deadline end(timeoutMs);
    waiting_.fetch_add(1);
    bool taken = tryTake();
    while (!taken) {
        const unsigned long left = end.remaining();
        if (!left) {
            break;
        }
        const DWORD result = WaitForSingleObject(kernel_.get(), std::min(left, longestSleep_ms));
        if (result == WAIT_FAILED) {
            Sleep(1);
        }
        taken = tryTake();
        // The holder is gone with all other threads and will release nothing any more.
        if (!taken && result == WAIT_TIMEOUT && processEnding()) {
            break;
        }
    }
    waiting_.fetch_sub(1);
    return taken;
}

bool semaphore::unlock() const {
    if (!private_) {
        return ReleaseSemaphore(kernel_.get(), 1, nullptr) != FALSE;
    }
    long count = count_.load();
    do {
        if (count >= maximum_) {
            return false;
        }
    } while (!count_.compare_exchange_weak(count, count + 1));
    if (waiting_.load() > 0) {
        ReleaseSemaphore(kernel_.get(), 1, nullptr);
    }
    return true;
}

bool semaphore::isLocked() const {
    if (private_) {
        return count_.load() <= 0;
    }
    if (!wait(0)) {
        return true;
    }
    unlock();
    return false;
}

} // namespace vcore
