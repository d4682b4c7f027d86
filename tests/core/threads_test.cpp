#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

using vcore::event;
using vcore::semaphore;
using vwin::winthread;

namespace {

constexpr unsigned long patience_ms = 30000;

class Worker final : public winthread {
public:
    explicit Worker(std::function<void(Worker&)> body) : body_(std::move(body)) {}
    Worker(const Worker& source) : winthread(source), body_(source.body_) {}
    ~Worker() { terminate(); }
    using winthread::finish;
    std::atomic<int> step{0};
    bool begins() { return start() && reaches(1); }
    bool reaches(int wanted) {
        return samples::eventually([&] { return step >= wanted; });
    }

protected:
    void run() override { body_(*this); }

private:
    std::function<void(Worker&)> body_;
};

void stubborn(Worker& w) {
    w.step = 1;
    for (;;) {
        Sleep(1000);
    }
}

std::atomic<int> timers;
void WINAPI countTimer(HWND, UINT, UINT_PTR, DWORD) {
    ++timers;
}

} // namespace

// Both kinds of semaphore, full with a maximum of 2.
TEST(Semaphore, CountsAndWaits) {
    const semaphore named(2, nullptr), plain(2, 2);
    EXPECT_TRUE(named.handle() && !plain.handle());
    for (const semaphore* lock : {&named, &plain}) {
        EXPECT_FALSE(lock->unlock()) << "it is at its maximum";
        EXPECT_TRUE(lock->wait(0) && !lock->isLocked());
        EXPECT_TRUE(lock->wait(INFINITE) && lock->isLocked() && !lock->wait(0));
        EXPECT_GE(samples::elapsed_ms([&] { EXPECT_FALSE(lock->wait(60)); }), 40u);
        std::thread releaser([&] { Sleep(30), lock->unlock(); });
        EXPECT_TRUE(lock->wait(60000));
        releaser.join();
        EXPECT_TRUE(lock->unlock() && lock->unlock() && !lock->unlock());
    }
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

// Producers and consumers with every mixture of waits: a count that two took overflows the other side.
TEST(Semaphore, HandsEveryCountToOneWaiterUnderContention) {
    for (const int places : {1, 8}) {
        const semaphore filled(places, 0), empty(places, places);
        std::atomic<int> overflows{0};
        const auto handOver = [&](int thread) {
            const semaphore& from = thread < 2 ? empty : filled;
            const semaphore& to = thread < 2 ? filled : empty;
            for (int i = 0; i < 5000; ++i) {
                while (!from.wait(thread == 0 ? INFINITE : thread == 2 ? 60000 : i % 3))
                    ;
                overflows += !to.unlock();
            }
        };
        for (std::vector<std::jthread> threads; threads.size() < 4;) {
            threads.emplace_back(handOver, static_cast<int>(threads.size()));
        }
        EXPECT_TRUE(overflows == 0 && filled.isLocked() && !empty.unlock());
    }
}

TEST(TimedGuard, GoesOnAndReleasesInEveryCase) {
    const semaphore lock(1, 1);
    EXPECT_TRUE(vcore::timed_guard(lock, INFINITE).held() && lock.isLocked());
    EXPECT_TRUE(lock.wait(0)) << "it was released";
    EXPECT_FALSE(vcore::timed_guard(lock, 5).held());
    EXPECT_FALSE(lock.isLocked());
}

TEST(Mutex, IsRecursiveForItsOwner) {
    const vcore::mutex lock;
    EXPECT_TRUE(lock.lock(0) && lock.msglock(0) && lock.owner() == GetCurrentThreadId());
    EXPECT_FALSE(lock.isLocked()) << "the owner sees its own mutex as free";
    std::thread([&] { EXPECT_FALSE(!lock.isLocked() || lock.lock(1) || lock.unlock()); }).join();
    EXPECT_TRUE(lock.unlock() && lock.unlock() && lock.owner() == 0u);
    std::thread([&] { lock.lock(0); }).join();
    EXPECT_TRUE(lock.lock(1000)) << "its owner has ended";
}

TEST(SpinLock, ReentersUncountedAndExcludesOthers) {
    const vcore::mutex2 lock;
    EXPECT_TRUE(lock.lock() && lock.lock() && lock.lock(0));
    std::thread([&] {
        EXPECT_LT(samples::elapsed_ms([&] { EXPECT_FALSE(lock.lock(60000)); }), 20000u) << "no waiting";
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
        EXPECT_TRUE(e.set() && e.isSet() && e.isSet() && e.wait(0)) << "a test consumes nothing; " << flags;
        EXPECT_EQ(e.wait(0), (flags & event::manualReset) != 0) << flags;
        EXPECT_TRUE(e.reset() && !e.isSet());
    }
}

TEST(Event, OwnsWhatItMadeAndWaitsForSeveralHandles) {
    event made(event::signalled | event::manualReset);
    { event wrapped(made.handle()); }
    EXPECT_TRUE(made.isSet());
    { event heir(made); }
    EXPECT_FALSE(made.set()) << "the heir has closed the handle";
    EXPECT_FALSE(event(L"marvo-test-no-event", false, 0).set());

    const event a, b(event::manualReset);
    HANDLE handles[] = {a.handle(), b.handle()};
    EXPECT_EQ(event::wait(handles, 2, false, 1), -1);
    b.set();
    EXPECT_TRUE(event::wait(handles, 2, false, 0) == 1 && event::wait(handles, 2, true, 1) == -1);
}

TEST(Event, DispatchesMessagesWhileItWaits) {
    const event done;
    timers = 0;
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, &countTimer);
    std::thread setter([&] { samples::eventually([] { return timers > 0; }), done.set(); });
    PostQuitMessage(7);
    EXPECT_TRUE(done.msgwait(60000) && timers > 0);
    setter.join();
    KillTimer(nullptr, timer);
    MSG message;
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "kept for the host's loop";
    EXPECT_EQ(message.wParam, 7u);
}

TEST(State, ChangesOnceFromWhatIsExpected) {
    vcore::state state(3);
    EXPECT_TRUE(state.changeState(3, 5) && !state.changeState(3, 6) && state == 5);
}

TEST(Thread, TellsWhereItStands) {
    Worker w([](Worker& self) {
        self.step = 1;
        self.finishing(INFINITE);
    });
    EXPECT_TRUE(w.finished() && !w.running() && w.wait(0) && !w.suspend() && !w.resume());
    w.terminate();
    EXPECT_TRUE(w.begins() && w.running() && w.wait(1));
    Worker copy(w);
    EXPECT_TRUE(!copy.running() && copy.start()) << "a copy is a new object";
    w.stop(0);
    EXPECT_TRUE(!w.wait(patience_ms) && w.finished() && copy.running());
    EXPECT_TRUE(w.start() && w.wait(20)) << "it is not asked to stop any more";
}

TEST(Thread, StartsAgainInEveryStateAndIsKilledWhenItDoesNotStopInTime) {
    Worker running(stubborn);
    EXPECT_TRUE(running.begins());
    running.step = 0;
    EXPECT_GE(samples::elapsed_ms([&] { EXPECT_TRUE(running.begins()); }), 80u) << "100 ms of grace";
    EXPECT_GE(samples::elapsed_ms([&] { running.stop(60); }), 40u);
    EXPECT_TRUE(running.finished() && !running.suspend());
    Worker ended([](Worker& self) { ++self.step; });
    for (int i = 1; i <= 20; ++i) {
        EXPECT_TRUE(ended.start() && !ended.wait(patience_ms) && ended.step == i);
    }
}

TEST(Thread, TellsARequestToStopFromAnotherSignalAndOnlyAsksForAStopOfNoTime) {
    const vcore::event tick;
    Worker w([&](Worker& self) {
        while (!self.finishing(-1, tick.handle())) {
            ++self.step;
        }
        tick.wait(patience_ms);
        self.step += 100;
    });
    w.start();
    for (int i = 1; i <= 3; ++i) {
        EXPECT_TRUE(tick.set() && w.reaches(i));
    }
    w.stop(0);
    EXPECT_TRUE(w.wait(20) && !w.finished());
    EXPECT_TRUE(tick.set() && !w.wait(patience_ms) && w.step == 103);
}

TEST(Thread, IsKilledInsideAShieldedRegionOnlyWhereThatIsOpen) {
    for (const bool opens : {true, false}) {
        Worker w([&](Worker& self) {
            winthread::uninterruptible whole;
            { winthread::killable brief; }
            self.step = 1;
            while (!self.finishing(0)) {
                Sleep(1);
            }
            Sleep(50);
            self.step = 2;
            if (opens) {
                winthread::killable blocking;
                stubborn(self);
            }
        });
        EXPECT_TRUE(w.begins());
        w.terminate();
        EXPECT_TRUE(w.finished() && (w.step == 2 || opens));
    }
}

// Killing races with the thread's beginning and end, with regions and with memory being allocated.
TEST(Thread, SurvivesManyKills) {
    std::atomic<int> held{0};
    for (int i = 0; i < 60; ++i) {
        Worker w([&](Worker& self) {
            self.step = 1;
            for (int n = 0; n < i * 50; ++n) {
                winthread::uninterruptible region;
                ++held;
                delete new long long(n);
                --held;
            }
        });
        EXPECT_TRUE(w.start() && (i % 2 || w.reaches(1)));
        w.terminate();
        EXPECT_TRUE(w.finished() && held == 0);
    }
}

TEST(Thread, MayVanishAfterItsEndWasTold) {
    for (int i = 0; i < 20; ++i) {
        const auto w = std::make_unique<Worker>([](Worker& self) { self.finish(); });
        w->start();
        EXPECT_FALSE(w->wait(patience_ms));
    }
}

TEST(Thread, SuspendsAndResumesByCountAndIsResumedWhereItMustNotBeKilled) {
    std::atomic<bool> ended{false};
    Worker w([&](Worker& self) {
        const winthread::uninterruptible whole;
        while (!self.finishing(1)) {
            ++self.step;
        }
        ended = true;
    });
    EXPECT_TRUE(w.begins() && w.suspend() && !w.suspend()) << "true the first time";
    const int stands = w.step;
    Sleep(30);
    EXPECT_LE(w.step, stands + 1);
    EXPECT_FALSE(w.resume()) << "one suspension is left";
    EXPECT_TRUE(w.resume() && w.reaches(stands + 2) && w.suspend() && !w.suspend());
    w.stop(10);
    EXPECT_TRUE(w.finished() && ended);
}

TEST(Thread, RunsInTheMultithreadedApartmentWithClampedPriorities) {
    Worker w([](Worker& self) {
        APTTYPE type;
        APTTYPEQUALIFIER qualifier;
        EXPECT_TRUE(SUCCEEDED(CoGetApartmentType(&type, &qualifier)) && type == APTTYPE_MTA);
        const HANDLE thread = GetCurrentThread();
        EXPECT_TRUE(winthread::setPriority(99, nullptr) && GetThreadPriority(thread) == 15);
        EXPECT_TRUE(winthread::setPriority(-40, thread) && GetThreadPriority(thread) == -15);
        self.step = 1;
    });
    EXPECT_TRUE(w.begins());
}
