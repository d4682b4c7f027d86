#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <thread>

using vvideo::dvAlloc;

namespace {

IMediaSample* take(dvAlloc& allocator) {
    IMediaSample* sample = nullptr;
    return allocator.getSample(&sample, -1, -1) ? sample : nullptr;
}

} // namespace

// A host may load the library on a thread without COM.
TEST(Alloc, CanBeMadeBeforeComIsUp) {
    std::thread([] {
        dvAlloc allocator;
        EXPECT_FALSE(allocator.init(100, 1, 0, 1) || allocator.create());
        EXPECT_EQ(allocator.threadID(), ~0ul);
        const samples::Com com;
        EXPECT_TRUE(allocator.create() && allocator.init(100, 1, 0, 1));
        EXPECT_EQ(allocator.threadID(), GetCurrentThreadId());
    }).join();
}

TEST(Alloc, HandsOutWhatItWasInitialisedFor) {
    const samples::Com com;
    dvAlloc allocator;
    EXPECT_EQ(take(allocator), nullptr) << "not committed";
    EXPECT_FALSE(allocator.init(1000, 2, 0, 0)) << "the system refuses an alignment of 0";
    ASSERT_TRUE(allocator.init(1000, 1, 0, 16));
    EXPECT_FALSE(allocator.getSample(nullptr, 0, 0));
    IMediaSample* const sample = take(allocator);
    ASSERT_NE(sample, nullptr);
    EXPECT_EQ(sample->GetSize(), 1000);
    std::thread waiter([&] { EXPECT_EQ(take(allocator), nullptr) << "the wait ends when it is done"; });
    Sleep(30);
    allocator.done();
    waiter.join();
    EXPECT_EQ(sample->Release(), 0u);
    EXPECT_EQ(allocator.count(), 0u);
    // Sizes that wrap in the system's allocator would give buffers that lie over each other.
    for (const auto& [size, buffers] : {std::pair{2000ul, 0ul}, {0x20000001, 8}, {0x80000000, 1}}) {
        EXPECT_FALSE(allocator.init(size, buffers, 0, 1) || take(allocator)) << size << " x " << buffers;
    }
    EXPECT_TRUE(allocator.init(1000, 1, 0, 16));
    EXPECT_FALSE(allocator.init(2000, 1, 0, 0)) << "the buffers of 1000 bytes do not serve";
    {
        dvAlloc copy(allocator), assigned;
        assigned = copy;
        EXPECT_EQ(static_cast<IMemAllocator*>(assigned), static_cast<IMemAllocator*>(allocator)) << "shared";
    }
    allocator->AddRef();
    EXPECT_EQ(allocator->Release(), 1u);
}
