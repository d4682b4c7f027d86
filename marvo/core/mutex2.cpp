#include "marvo/core/mutex2.h"

namespace vcore {

bool mutex2::tryLock() const {
    const unsigned long self = GetCurrentThreadId();
    unsigned long owner = 0;
    return owner_.compare_exchange_strong(owner, self) || owner == self;
}

bool mutex2::lock() const {
    for (DWORD pause = 0; !tryLock(); pause ^= 1) {
        Sleep(pause);
    }
    return true;
}

bool mutex2::lock(int timeoutMs) const {
    const DWORD deadline = GetTickCount() + static_cast<DWORD>(timeoutMs);
    while (!tryLock()) {
        const DWORD now = GetTickCount();
        if (now < deadline || now >= 0x80000000u) {
            return false;
        }
        Sleep(now & 1);
    }
    return true;
}

void mutex2::unlock() const {
    owner_ = 0;
}

} // namespace vcore
