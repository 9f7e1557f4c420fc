#include "platform/cameras/pixels/scratch_pool.h"

#include <cstring>
#include <gtest/gtest.h>
#include <thread>

namespace ostrel {
namespace tests {

using cameras::pixels::ScratchPool;

TEST(ScratchPool, GivesTheSameMemoryAgain) {
    ScratchPool pool;
    const uint8_t* first = nullptr;
    {
        const ScratchPool::Block block = pool.take(1000);
        first = block.data();
    }
    EXPECT_EQ(pool.take(1000).data(), first);
    EXPECT_EQ(pool.take(10).data(), first);
}

TEST(ScratchPool, TakesTheSmallestBlockThatIsLargeEnough) {
    ScratchPool pool;
    ScratchPool::Block large = pool.take(5000), small = pool.take(500);
    const uint8_t* largeData = large.data();
    const uint8_t* smallData = small.data();
    large = ScratchPool::Block();
    small = ScratchPool::Block();
    EXPECT_EQ(pool.take(400).data(), smallData);
    EXPECT_EQ(pool.take(501).data(), largeData);
}

TEST(ScratchPool, BlocksAreDistinctAndAsLargeAsAsked) {
    ScratchPool pool;
    std::vector<ScratchPool::Block> blocks;
    for (int i = 0; i < 10; ++i) {
        blocks.push_back(pool.take(4096));
        std::memset(blocks.back().data(), i, 4096);
    }
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(blocks[static_cast<size_t>(i)].data()[0], i);
        EXPECT_EQ(blocks[static_cast<size_t>(i)].data()[4095], i);
    }
}

TEST(ScratchPool, BlocksOutliveThePool) {
    ScratchPool::Block block;
    {
        ScratchPool pool;
        block = pool.take(100);
    }
    std::memset(block.data(), 1, 100);
    EXPECT_EQ(block.data()[99], 1);
}

TEST(ScratchPool, TwoThreadsNeverShareABlock) {
    ScratchPool pool;
    const auto work = [&pool](uint8_t mark) {
        for (int i = 0; i < 5000; ++i) {
            const ScratchPool::Block block = pool.take(64);
            std::memset(block.data(), mark, 64);
            for (int k = 0; k < 64; ++k)
                ASSERT_EQ(block.data()[k], mark);
        }
    };
    std::thread a(work, uint8_t(1)), b(work, uint8_t(2));
    a.join();
    b.join();
}

} // namespace tests
} // namespace ostrel
