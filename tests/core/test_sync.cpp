#include "core/event.h"
#include "core/mutex.h"
#include "core/mutex2.h"
#include "core/state.h"
#include "core/timed_guard.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

using vcore::event;
using vcore::semaphore;

namespace {

double elapsedMs(const std::function<void()>& action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

void onThreads(int count, const std::function<void(int)>& body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back(body, i);
    for (std::thread& thread : threads)
        thread.join();
}

// Both kinds of semaphore, full with a maximum of 2.
class BothSemaphores : public testing::TestWithParam<bool> {
protected:
    const std::unique_ptr<semaphore> lock{GetParam() ? new semaphore(2, nullptr) : new semaphore(2, 2)};
};

std::atomic<int> timers;
void WINAPI countTimer(HWND, UINT, UINT_PTR, DWORD) {
    ++timers;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Semaphore, BothSemaphores, testing::Bool());

TEST_P(BothSemaphores, CountsAndWaits) {
    EXPECT_EQ(lock->handle() != nullptr, GetParam());
    EXPECT_FALSE(lock->unlock()) << "it is at its maximum";
    EXPECT_TRUE(lock->wait(0) && !lock->isLocked());
    EXPECT_TRUE(lock->wait(INFINITE) && lock->isLocked());
    EXPECT_FALSE(lock->wait(0));
    EXPECT_GE(elapsedMs([&] { EXPECT_FALSE(lock->wait(30)); }), 25.0);
    std::thread releaser([&] { Sleep(30), lock->unlock(); });
    EXPECT_LT(elapsedMs([&] { EXPECT_TRUE(lock->wait(60000)); }), 20000.0);
    releaser.join();
    EXPECT_TRUE(lock->unlock() && lock->unlock());
    EXPECT_FALSE(lock->unlock());
}

TEST(Semaphore, OpensOrCreatesByNameAndFailsForSenselessCounts) {
    EXPECT_FALSE(semaphore(L"marvo-test-none", false, 1).handle());
    semaphore first(L"marvo-test-lock", true, 1), second(L"marvo-test-lock", false, 5);
    EXPECT_TRUE(first.wait(0) && second.isLocked());
    for (const auto& [maximum, initial] : std::vector<std::pair<int, int>>{{0, 0}, {1, 2}, {1, -1}}) {
        const semaphore lock(maximum, initial);
        EXPECT_FALSE(lock.wait(1) || lock.unlock());
    }
}

// Every mixture of waits at once: no two holders, and no wake-up missed.
TEST(Semaphore, ExcludesUnderContention) {
    constexpr int rounds = 10000;
    const semaphore lock(1, 1);
    std::atomic<int> inside{0}, overlaps{0};
    int total = 0;
    onThreads(4, [&](int thread) {
        for (int i = 0; i < rounds; ++i) {
            while (!lock.wait(thread == 0 ? INFINITE : thread == 1 ? 10000 : i % 3))
                ;
            overlaps += inside++ != 0;
            ++total;
            if (i % 64 == 0)
                Sleep(0);
            --inside;
            lock.unlock();
        }
    });
    EXPECT_EQ(overlaps, 0);
    EXPECT_EQ(total, 4 * rounds);
    EXPECT_FALSE(lock.isLocked());
}

TEST(Semaphore, HandsEveryCountToOneWaiter) {
    const semaphore filled(8, 0), empty(8, 8);
    onThreads(4, [&](int thread) {
        const semaphore& from = thread < 2 ? empty : filled;
        const semaphore& to = thread < 2 ? filled : empty;
        for (int i = 0; i < 5000; ++i)
            ASSERT_TRUE(from.wait(60000) && to.unlock()) << "after " << i;
    });
    EXPECT_TRUE(filled.isLocked());
}

TEST(TimedGuard, GoesOnAndReleasesInEveryCase) {
    const semaphore lock(1, 1);
    {
        vcore::timed_guard holder(lock, INFINITE);
        EXPECT_TRUE(holder.held() && lock.isLocked());
        EXPECT_FALSE(vcore::timed_guard(lock, 5).held());
        EXPECT_FALSE(lock.isLocked());
    }
    EXPECT_FALSE(lock.isLocked());
}

TEST(Mutex, IsRecursiveForItsOwner) {
    const vcore::mutex lock;
    EXPECT_TRUE(lock.lock(0) && lock.msglock(0));
    EXPECT_EQ(lock.owner(), GetCurrentThreadId());
    EXPECT_FALSE(lock.isLocked()) << "the owner sees its own mutex as free";
    std::thread([&] { EXPECT_FALSE(!lock.isLocked() || lock.lock(1) || lock.unlock()); }).join();
    EXPECT_TRUE(lock.unlock() && lock.unlock());
    EXPECT_EQ(lock.owner(), 0u);
    std::thread([&] { lock.lock(0); }).join();
    EXPECT_TRUE(lock.lock(1000)) << "its owner has ended";
}

TEST(SpinLock, ReentersUncountedAndExcludesOthers) {
    const vcore::mutex2 lock;
    EXPECT_TRUE(lock.lock() && lock.lock() && lock.lock(0));
    std::thread([&] {
        EXPECT_LT(elapsedMs([&] { EXPECT_FALSE(lock.lock(60000)); }), 20000.0) << "one attempt, no waiting";
    }).join();
    std::atomic<bool> taken{false};
    std::thread waiter([&] { taken = lock.lock(0); });
    Sleep(30);
    EXPECT_FALSE(taken) << "a time-out of 0 means without end";
    lock.unlock();
    waiter.join();
    EXPECT_TRUE(taken);
}

TEST(Event, FollowsItsFlags) {
    for (int flags = 0; flags < 4; ++flags) {
        const event e(flags);
        EXPECT_EQ(e.isSet(), (flags & event::signalled) != 0) << flags;
        EXPECT_TRUE(e.set() && e.isSet() && e.isSet()) << "the test must not consume; flags " << flags;
        EXPECT_TRUE(e.wait(0));
        EXPECT_EQ(e.wait(0), (flags & event::manualReset) != 0) << flags;
        EXPECT_TRUE(e.reset() && !e.isSet());
    }
}

TEST(Event, OwnsWhatItMadeButNotWhatItWraps) {
    event made(event::signalled | event::manualReset);
    { event wrapped(made.handle()); }
    EXPECT_TRUE(made.isSet());
    { event heir(made); }
    EXPECT_FALSE(made.set()) << "the heir has closed the handle";
    EXPECT_FALSE(event(L"marvo-test-no-event", false, 0).set());
}

TEST(Event, WaitsForSeveralHandles) {
    const event a, b(event::manualReset);
    HANDLE handles[] = {a.handle(), b.handle()};
    EXPECT_EQ(event::wait(handles, 2, false, 1), -1);
    b.set();
    EXPECT_EQ(event::wait(handles, 2, false, 0), 1);
    EXPECT_EQ(event::wait(handles, 2, true, 1), -1);
}

TEST(Event, DispatchesMessagesWhileItWaits) {
    const event done;
    timers = 0;
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, &countTimer);
    std::thread setter([&] {
        for (int i = 0; i < 3000 && timers == 0; ++i)
            Sleep(10);
        done.set();
    });
    PostQuitMessage(7);
    EXPECT_TRUE(done.msgwait(60000));
    setter.join();
    KillTimer(nullptr, timer);
    EXPECT_GE(timers, 1);
    MSG message;
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "kept for the host's loop";
    EXPECT_EQ(message.wParam, 7u);
}

TEST(State, ChangesOnceForAllThreads) {
    vcore::state state(3);
    std::atomic<int> changes{0};
    onThreads(4, [&](int) { changes += state.changeState(3, 5); });
    EXPECT_TRUE(changes == 1 && state == 5 && state != 3);
}
