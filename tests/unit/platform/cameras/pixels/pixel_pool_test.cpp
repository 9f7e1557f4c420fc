#include "platform/cameras/pixels/pixel_pool.h"

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <thread>
#include <type_traits>
#include <vector>

namespace ostrel::tests {

using cameras::pixels::PixelPool;

// A pool with a shelf of its own that keeps everything.
const int64_t ALWAYS = INT64_MAX;

TEST(PixelPool, GivesTheSameMemoryAgain) {
    PixelPool pool(ALWAYS);
    const uint8_t* first = nullptr;
    {
        const PixelPool::Block block = pool.take(1000);
        first = block.data();
    }
    EXPECT_EQ(pool.take(1000).data(), first);
    EXPECT_EQ(pool.take(999).data(), first);
    EXPECT_EQ(pool.allocations(), 1u);
}

TEST(PixelPool, OfEqualBlocksGivesTheOneThatCameBackLast) {
    PixelPool pool(ALWAYS);
    PixelPool::Block one = pool.take(1000), two = pool.take(1000);
    const uint8_t* const last = one.data();
    two = PixelPool::Block();
    one = PixelPool::Block();
    EXPECT_EQ(pool.take(1000).data(), last);
}

TEST(PixelPool, AllocatesNothingOnceTheSizesInUseHaveBeenSeen) {
    PixelPool pool(ALWAYS);
    const auto use = [&pool] {
        const PixelPool::Block a = pool.take(100), b = pool.take(3000), c = pool.take(200);
        const PixelPool::Block d = pool.take(5000000);
    };
    use();
    use();
    EXPECT_EQ(pool.allocations(), 4u);
}

TEST(PixelPool, GivesNoBlockOfMoreThanTwiceTheSize) {
    PixelPool pool(ALWAYS);
    { const PixelPool::Block block = pool.take(1000); }
    { const PixelPool::Block block = pool.take(500); }
    EXPECT_EQ(pool.allocations(), 1u);
    { const PixelPool::Block block = pool.take(499); }
    EXPECT_EQ(pool.allocations(), 2u);
}

TEST(PixelPool, FreesWhatNobodyTookForLongWhenAnotherComesBack) {
    PixelPool pool(0);
    PixelPool::Block first = pool.take(1000), second = pool.take(1000);
    first = PixelPool::Block();
    second = PixelPool::Block();
    first = pool.take(1000);
    EXPECT_EQ(pool.allocations(), 2u) << "the last that came back stays";
    second = pool.take(1000);
    EXPECT_EQ(pool.allocations(), 3u);
}

TEST(PixelPool, KeepsAsManyBlocksAsWereInUseLately) {
    PixelPool pool(ALWAYS);
    for (int round = 0; round < 2; ++round) {
        std::vector<PixelPool::Block> blocks;
        for (int i = 0; i < 100; ++i)
            blocks.push_back(pool.take(1000));
    }
    EXPECT_EQ(pool.allocations(), 100u);
}

TEST(PixelPool, SharesWhatLiesUnusedWithTheOtherPools) {
    PixelPool one, other;
    const uint8_t* first = nullptr;
    {
        const PixelPool::Block block = one.take(1000);
        first = block.data();
    }
    EXPECT_EQ(other.take(1000).data(), first);
    EXPECT_EQ(other.allocations(), 0u);
}

TEST(PixelPool, GoneItLeavesNothingUnused) {
    PixelPool stays;
    {
        PixelPool goes;
        const PixelPool::Block block = goes.take(1000);
    }
    { const PixelPool::Block block = stays.take(1000); }
    EXPECT_EQ(stays.allocations(), 1u);
}

TEST(PixelPool, RetiredItKeepsNothing) {
    PixelPool pool(ALWAYS);
    { const PixelPool::Block block = pool.take(1000); }
    pool.retire();
    { const PixelPool::Block block = pool.take(1000); }
    EXPECT_EQ(pool.allocations(), 2u);
    { const PixelPool::Block block = pool.take(1000); }
    EXPECT_EQ(pool.allocations(), 3u);
}

TEST(PixelPool, RetiredTwiceCountsOnce) {
    PixelPool stays;
    {
        PixelPool goes;
        goes.retire();
    }
    { const PixelPool::Block block = stays.take(1000); }
    { const PixelPool::Block block = stays.take(1000); }
    EXPECT_EQ(stays.allocations(), 1u);
}

TEST(PixelPool, WithoutMemoryThrowsAndGoesOn) {
    PixelPool pool(ALWAYS);
    EXPECT_THROW(pool.take(SIZE_MAX), std::bad_alloc);
    const PixelPool::Block block = pool.take(10);
    EXPECT_TRUE(block);
    EXPECT_FALSE(PixelPool::Block());
}

static_assert(std::is_nothrow_destructible<PixelPool::Block>::value, "frames give back in destructors");

TEST(PixelPool, TakesTheSmallestBlockThatIsLargeEnough) {
    PixelPool pool(ALWAYS);
    PixelPool::Block large = pool.take(800), small = pool.take(500);
    const uint8_t* largeData = large.data();
    const uint8_t* smallData = small.data();
    small = PixelPool::Block();
    large = PixelPool::Block();
    EXPECT_EQ(pool.take(400).data(), smallData);
    EXPECT_EQ(pool.take(501).data(), largeData);
}

TEST(PixelPool, BlocksAreDistinctAndAsLargeAsAsked) {
    PixelPool pool(ALWAYS);
    std::vector<PixelPool::Block> blocks;
    for (int i = 0; i < 10; ++i) {
        blocks.push_back(pool.take(4096));
        std::memset(blocks.back().data(), i, 4096);
    }
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(blocks[static_cast<size_t>(i)].data()[0], i);
        EXPECT_EQ(blocks[static_cast<size_t>(i)].data()[4095], i);
    }
}

TEST(PixelPool, BlocksOutliveThePool) {
    PixelPool::Block block;
    {
        PixelPool pool(ALWAYS);
        block = pool.take(100);
    }
    std::memset(block.data(), 1, 100);
    EXPECT_EQ(block.data()[99], 1);
}

TEST(PixelPool, TwoThreadsNeverShareABlock) {
    PixelPool pool(ALWAYS);
    const auto work = [&pool](uint8_t mark) {
        for (int i = 0; i < 5000; ++i) {
            const PixelPool::Block block = pool.take(64);
            std::memset(block.data(), mark, 64);
            for (int k = 0; k < 64; ++k)
                ASSERT_EQ(block.data()[k], mark);
        }
    };
    std::thread a(work, uint8_t(1)), b(work, uint8_t(2));
    a.join();
    b.join();
}

} // namespace ostrel::tests
