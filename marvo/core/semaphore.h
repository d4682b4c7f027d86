/// @file
/// Counting semaphores, most of which serve as the engine's locks.
#pragma once

#include "marvo/core/handle.h"
#include "marvo/core/platform.h"
#include "marvo/core/thread_annotations.h"

#include <atomic>

namespace vcore {

/// A counting semaphore of one of two kinds, by constructor. Any number of threads may use one; it is not
/// recursive, and any thread may release what another took.
///
/// The process-private kind counts in user space and sleeps on a kernel object only when it has to wait,
/// because a pair of kernel calls costs more than most of what it guards and some locks are taken ten times
/// per frame. It is not fair: a thread that comes by may take the count before one that was woken for it. The
/// kernel kind has a handle that may be given to others, such as a reference clock, or a name that other
/// processes can open.
class MARVO_CAPABILITY("semaphore") MARVO_API semaphore {
public:
    /// Kernel kind with initial and maximum count `count`; `name` may be null.
    semaphore(int count, const wchar_t* name);
    /// Process-private kind, unnamed. Counts that make no sense (maximum below 1, initial outside of 0 to
    /// maximum) make a semaphore on which every wait and release fails.
    semaphore(int maximum, int initial);
    /// Kernel kind: opens the one of that name with full access; makes one with initial and maximum count
    /// `count` only when there is none and `create` is true.
    semaphore(const wchar_t* name, bool create, int count);
    ~semaphore() = default;
    semaphore(const semaphore&) = delete;
    semaphore& operator=(const semaphore&) = delete;

    /// Takes one count, waiting at most `timeoutMs` (`INFINITE`: without end); false when it could not.
    bool wait(unsigned long timeoutMs) const;
    /// Gives one count back; false when the semaphore is at its maximum.
    bool unlock() const;
    /// Whether no count is left at this moment.
    bool isLocked() const;
    /// The kernel handle; null for the process-private kind.
    HANDLE handle() const { return private_ ? nullptr : kernel_.get(); }

private:
    bool tryTake() const;
    bool waitPrivate(unsigned long timeoutMs) const;

    const bool private_;
    const long maximum_ = 0;
    mutable std::atomic<long> count_{0};
    mutable std::atomic<long> waiting_{0};
    vcore::handle kernel_;
};

} // namespace vcore
