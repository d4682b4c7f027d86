#include "marvo/core/mutex.h"

#include "marvo/core/event.h"

namespace vcore {

mutex::mutex() : mutex_(CreateMutexW(nullptr, FALSE, nullptr)) {}

mutex::~mutex() {
    ReleaseMutex(mutex_.get());
}

bool mutex::lock(int timeoutMs) const {
    return taken(event::wait(mutex_.get(), static_cast<unsigned long>(timeoutMs)));
}

bool mutex::msglock(int timeoutMs) const {
    return taken(event::msgwait(mutex_.get(), static_cast<unsigned long>(timeoutMs)));
}

bool mutex::taken(bool success) const {
    if (success) {
        owner_ = GetCurrentThreadId();
    }
    return success;
}

bool mutex::unlock() const {
    owner_ = 0;
    return ReleaseMutex(mutex_.get()) != FALSE;
}

bool mutex::isLocked() const {
    if (!event::wait(mutex_.get(), 0)) {
        return true;
    }
    ReleaseMutex(mutex_.get());
    return false;
}

} // namespace vcore
