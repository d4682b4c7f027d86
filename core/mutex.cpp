#include "core/mutex.h"

#include "core/event.h"

namespace vcore {

mutex::mutex() : _mutex(CreateMutexW(nullptr, FALSE, nullptr)) {}

mutex::~mutex() {
    ReleaseMutex(_mutex.get());
}

bool mutex::lock(int timeoutMs) const {
    return _taken(event::wait(_mutex.get(), static_cast<unsigned long>(timeoutMs)));
}

bool mutex::msglock(int timeoutMs) const {
    return _taken(event::msgwait(_mutex.get(), static_cast<unsigned long>(timeoutMs)));
}

bool mutex::_taken(bool success) const {
    if (success)
        _owner = GetCurrentThreadId();
    return success;
}

bool mutex::unlock() const {
    _owner = 0;
    return ReleaseMutex(_mutex.get()) != FALSE;
}

bool mutex::isLocked() const {
    if (!event::wait(_mutex.get(), 0))
        return true;
    ReleaseMutex(_mutex.get());
    return false;
}

} // namespace vcore
