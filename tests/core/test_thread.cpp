#include "core/winthread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>

using vwin::winthread;

namespace {

/// For what must happen, but may take its time on a busy machine.
constexpr unsigned long patienceMs = 30000;

class worker final : public winthread {
public:
    explicit worker(std::function<void(worker&)> body) : _body(std::move(body)) {}
    worker(const worker& source) : winthread(source), _body(source._body) {}
    ~worker() { terminate(); }
    using winthread::finish;
    std::atomic<int> step{0};

    bool reaches(int wanted) {
        const ULONGLONG end = GetTickCount64() + patienceMs;
        while (step < wanted && GetTickCount64() < end)
            Sleep(1);
        return step >= wanted;
    }

protected:
    void run() override { _body(*this); }

private:
    std::function<void(worker&)> _body;
};

void polite(worker& w) {
    w.step = 1;
    w.finishing(INFINITE);
    w.step = 2;
}

void stubborn(worker& w) {
    w.step = 1;
    for (;;)
        Sleep(1000);
}

ULONGLONG elapsedMs(const std::function<void()>& action) {
    const ULONGLONG begin = GetTickCount64();
    action();
    return GetTickCount64() - begin;
}

} // namespace

TEST(Thread, TellsWhereItStands) {
    worker w(polite);
    EXPECT_TRUE(w.finished() && !w.running());
    EXPECT_TRUE(w.wait(0)) << "true without a thread";
    EXPECT_FALSE(w.suspend() || w.resume());
    w.terminate();

    EXPECT_TRUE(w.start() && w.reaches(1));
    EXPECT_TRUE(w.running() && !w.finished());
    EXPECT_TRUE(w.wait(1)) << "true on a time-out";
    worker copy(w);
    EXPECT_TRUE(!copy.running() && copy.start()) << "a copy is a new object";
    w.stop(0);
    EXPECT_FALSE(w.wait(patienceMs)) << "false when it ended";
    EXPECT_TRUE(w.step == 2 && w.finished() && copy.running());
}

TEST(Thread, StartsAgainInEveryStateAndIsKilledWhenItDoesNotStopInTime) {
    worker running(stubborn);
    for (int i = 0; i < 3; ++i) {
        running.step = 0;
        EXPECT_GE(elapsedMs([&] { EXPECT_TRUE(running.start()); }), i ? 80u : 0u) << "100 ms of grace";
        EXPECT_TRUE(running.reaches(1));
    }
    EXPECT_GE(elapsedMs([&] { running.stop(60); }), 40u);
    EXPECT_TRUE(running.finished() && !running.suspend()) << "there is no thread any more";
    worker ended([](worker& self) { ++self.step; });
    for (int i = 1; i <= 20; ++i) {
        EXPECT_TRUE(ended.start());
        EXPECT_FALSE(ended.wait(patienceMs));
        EXPECT_EQ(ended.step, i);
    }
}

TEST(Thread, TellsARequestToStopFromAnotherSignalAndOnlyAsksForAStopOfNoTime) {
    const vcore::event tick;
    worker w([&](worker& self) {
        while (!self.finishing(-1, tick.handle()))
            ++self.step;
        tick.wait(patienceMs);
        self.step += 100;
    });
    w.start();
    for (int i = 1; i <= 3; ++i)
        EXPECT_TRUE(tick.set() && w.reaches(i));
    w.stop(0);
    EXPECT_TRUE(w.wait(20) && !w.finished());
    EXPECT_TRUE(tick.set() && !w.wait(patienceMs));
    EXPECT_EQ(w.step, 103);
}

TEST(Thread, IsKilledInsideAShieldedRegionOnlyWhereThatIsOpen) {
    for (const bool opens : {true, false}) {
        worker w([&](worker& self) {
            winthread::uninterruptible whole;
            { winthread::killable brief; }
            self.step = 1;
            while (!self.finishing(0))
                Sleep(1);
            Sleep(50);
            self.step = 2;
            if (!opens)
                return;
            winthread::killable blocking;
            stubborn(self);
        });
        EXPECT_TRUE(w.start() && w.reaches(1));
        w.terminate();
        EXPECT_TRUE(w.finished());
        EXPECT_TRUE(w.step == 2 || opens) << "it ended by itself";
        EXPECT_GE(w.step, 1);
    }
}

// Killing races with the thread's beginning and end, with regions and with memory being allocated.
TEST(Thread, SurvivesManyKills) {
    std::atomic<int> held{0};
    for (int i = 0; i < 60; ++i) {
        worker w([&](worker& self) {
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
        EXPECT_TRUE(w.finished());
        EXPECT_EQ(held, 0);
    }
}

TEST(Thread, MayVanishAfterItsEndWasTold) {
    for (int i = 0; i < 20; ++i) {
        const auto w = std::make_unique<worker>([](worker& self) { self.finish(); });
        w->start();
        EXPECT_FALSE(w->wait(patienceMs));
    }
}

TEST(Thread, SuspendsAndResumesByCount) {
    worker w([](worker& self) {
        while (!self.finishing(1))
            ++self.step;
    });
    EXPECT_TRUE(w.start() && w.reaches(1));
    EXPECT_TRUE(w.suspend());
    EXPECT_FALSE(w.suspend()) << "it was suspended already";
    const int stands = w.step;
    Sleep(30);
    EXPECT_LE(w.step, stands + 1);
    EXPECT_FALSE(w.resume()) << "one suspension is left";
    EXPECT_TRUE(w.resume() && w.reaches(stands + 2));
    w.stop(patienceMs);
}

TEST(Thread, ASuspensionDoesNotKeepAShieldedRegionFromEnding) {
    worker w([](worker& self) {
        const winthread::uninterruptible whole;
        polite(self);
    });
    EXPECT_TRUE(w.start() && w.reaches(1));
    w.suspend();
    w.suspend();
    w.stop(10);
    EXPECT_TRUE(w.finished());
    EXPECT_EQ(w.step, 2);
}

TEST(Thread, RunsInTheMultithreadedApartmentWithClampedPriorities) {
    worker w([](worker& self) {
        APTTYPE type;
        APTTYPEQUALIFIER qualifier;
        EXPECT_TRUE(SUCCEEDED(CoGetApartmentType(&type, &qualifier)) && type == APTTYPE_MTA);
        EXPECT_TRUE(winthread::setPriority(99, nullptr));
        EXPECT_EQ(GetThreadPriority(GetCurrentThread()), 15);
        EXPECT_TRUE(winthread::setPriority(-40, nullptr));
        EXPECT_EQ(GetThreadPriority(GetCurrentThread()), -15);
        self.step = 1;
    });
    EXPECT_TRUE(w.start() && w.reaches(1));
}
