#include "marvo/video/frame_pool.h"

#include <gtest/gtest.h>

#include <thread>

using vvideo::dvFramePool;

TEST(FramePool, MakesItsFramesOrNone) {
    dvFramePool pool;
    EXPECT_FALSE(pool.frame(0) || pool.findOldest() || pool.inPos());
    ASSERT_TRUE(pool.init(100, 8));
    EXPECT_EQ(pool.frame(11), pool.frame(3));
    EXPECT_EQ(pool.frame(7)->size(), 100u);
    EXPECT_EQ(pool.frame(7)->id(), vvideo::noFrame);
    EXPECT_FALSE(pool.init(0x7FFFFFFF, 64)) << "more than there is memory";
    EXPECT_EQ(pool.count(), 0u);
    EXPECT_EQ(pool.inPos(), ~0ull);
}

TEST(FramePool, GoesOnBehind32Bits) {
    constexpr unsigned long long distant = (1ull << 32) - 2;
    dvFramePool pool;
    ASSERT_TRUE(pool.init(10, 7)); // of which 2^32 is no multiple
    pool.set(distant);
    for (unsigned long long number = distant; number < distant + 9; ++number) {
        EXPECT_EQ(pool.inPos(), number);
        vvideo::dvFrame* const claimed = pool.claim();
        EXPECT_EQ(claimed, pool.frame(number));
        pool.publish(number);
        EXPECT_EQ(pool.findFrame(number), claimed);
    }
    EXPECT_FALSE(pool.findFrame(distant + 1)) << "overwritten";
    EXPECT_EQ(pool.inPos(), distant + 9);
    EXPECT_EQ(pool.advantage(), 9);
    EXPECT_TRUE(pool.overrun());
    EXPECT_EQ(pool.correctOut(), distant + 9 - 3);
    for (unsigned long long number = distant + 9 - 3; number < distant + 9; ++number) {
        EXPECT_FALSE(pool.underrun());
        EXPECT_EQ(pool.incOut(), number);
    }
    EXPECT_TRUE(pool.underrun() && pool.advantage() == 0);
}

TEST(FramePool, ComparesItsPositionsAndCorrectsTheReaderToHalfTheRing) {
    const struct {
        unsigned long long in, out;
        bool overrun, underrun;
    } cases[] = {{10, 3, true, false},  {10, 4, false, false}, {10, 10, false, true},
                 {10, 11, false, true}, {10, 13, false, true}, {9, 0, true, false}};
    dvFramePool pool;
    pool.init(10, 8);
    for (const auto& c : cases) {
        pool.set(std::min(c.in, c.out));
        while (pool.inPos() < c.in) {
            pool.incIn();
        }
        while (pool.outPos() < c.out) {
            pool.incOut();
        }
        EXPECT_EQ(pool.advantage(), static_cast<long long>(c.in - c.out));
        EXPECT_EQ(pool.overrun(), c.overrun) << c.in << " " << c.out;
        EXPECT_EQ(pool.underrun(), c.underrun) << c.in << " " << c.out;
        EXPECT_TRUE(pool.incIn() == c.in && pool.incOut() == c.out) << "the positions before";
    }
    pool.set(100);
    EXPECT_TRUE(pool.correctOut() == 96 && pool.outPos() == 96);
    pool.set(2);
    EXPECT_EQ(pool.correctOut(), ~0ull - 1) << "not clamped";
}

TEST(FramePool, AnnouncesAFrameWithItsNumber) {
    constexpr unsigned long long frames = 200;
    dvFramePool pool;
    ASSERT_TRUE(pool.init(10, frames));
    std::thread camera([&pool] {
        for (unsigned long long number = 0; number < frames; ++number) {
            pool.claim();
            pool.publish(number);
        }
    });
    for (unsigned long long known = 0; known < frames;) {
        known = pool.inPos();
        EXPECT_TRUE(known == 0 || pool.findFrame(known - 1)) << known;
    }
    camera.join();
}

TEST(FramePool, FindsFramesByNumberAndAge) {
    dvFramePool pool, copy;
    pool.init(10, 3);
    pool.frame(1)->setId(42);
    pool.frame(2)->setId(42);
    EXPECT_EQ(pool.findFrame(42), pool.frame(1));
    EXPECT_FALSE(pool.findFrame(43) || pool.findFrame(vvideo::noFrame)) << "an empty slot has no number";
    pool.resetAccess();
    pool.frame(0)->access() = 3;
    EXPECT_EQ(pool.findOldest(), pool.frame(1)) << "the lowest slot of two";
    pool.lowerAccess();
    EXPECT_TRUE(pool.frame(0)->access() == 2 && pool.frame(2)->access() == -2);
    copy = pool;
    pool.incIn();
    pool.flush();
    EXPECT_FALSE(pool.findFrame(42) || pool.inPos());
    EXPECT_EQ(copy.findFrame(42), copy.frame(1)) << "a copy has frames of its own";
}
