// Named heaps: block arithmetic of GPAllocator (routes, splits, merges, leak
// walk), the two-ended bump of InstantAllocator, the block stack, and all of
// them under concurrent use.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "foundation/allocator.h"

namespace {

// A fixed text as a death-test pattern.
std::string literal(char const* text)
{
    std::string pattern;
    for (char const* c = text; *c != '\0'; ++c) {
        if (std::string("\\^$.|?*+()[]{}").find(*c) != std::string::npos) {
            pattern += '\\';
        }
        pattern += *c;
    }
    return pattern;
}

std::uintptr_t address(void const* pointer)
{
    return reinterpret_cast<std::uintptr_t>(pointer);
}

#if defined(__SANITIZE_THREAD__)
int const kHammerRounds = 10000;
#else
int const kHammerRounds = 100000;
#endif

} // namespace

// ---------------------------------------------------------------------------
TEST(GPAllocator, FreshHeapReportsOneHeaderUsed)
{
    GPAllocator heap(0x10000, "Test", nullptr, 32, false);
    EXPECT_EQ(32u, heap.getUsedSize());
    EXPECT_EQ(1u, heap.getFreeBlockNum());
    EXPECT_EQ(0u, address(heap.getHeap()) % 128);
    heap.validate();
}

TEST(GPAllocator, ThresholdAndSignChooseTheEndOfTheHeap)
{
    GPAllocator heap(0x10000, "Test", nullptr, 32, false);
    std::uintptr_t const start = address(heap.getHeap());
    std::uintptr_t const end = start + heap.getHeapSize();

    void* large = heap.allocate(33, 4); // above the threshold: bottom
    EXPECT_EQ(start + 32, address(large));
    void* small = heap.allocate(32, 4); // at the threshold: top
    EXPECT_EQ(end - 32, address(small));
    void* negative = heap.allocate(-100, 4); // negative: top, 128 bytes
    EXPECT_EQ(end - 32 - 32 - 128, address(negative));
    heap.validate();

    // Used: the free block's header plus three headers and 64 + 32 + 128.
    EXPECT_EQ(32u + 3 * 32 + 64 + 32 + 128, heap.getUsedSize());
    heap.deallocate(negative);
    heap.validate();
    heap.deallocate(large);
    heap.validate();
    heap.deallocate(small);
    heap.validate();
    EXPECT_EQ(32u, heap.getUsedSize());
    EXPECT_EQ(1u, heap.getFreeBlockNum());
}

TEST(GPAllocator, ZeroSizeGetsOneUnitOfSpace)
{
    GPAllocator heap(0x1000, "Test", nullptr, 32, false);
    void* block = heap.allocate(0, 4);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(32u + 32 + 32, heap.getUsedSize());
    void* next = heap.allocate(0, 4);
    EXPECT_EQ(64u, address(block) - address(next));
    heap.deallocate(block);
    heap.deallocate(next);
    heap.deallocate(nullptr);
    EXPECT_EQ(32u, heap.getUsedSize());
}

TEST(GPAllocator, FrontRestBelowSixtyFourBytesStaysWithTheBlock)
{
    // One free block of 95 bytes: 32 asked, 63 left over.
    GPAllocator whole(127, "Whole", nullptr, 0, false);
    void* block = whole.allocate(32, 4);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(0u, whole.getFreeBlockNum());
    EXPECT_EQ(127u, whole.getUsedSize());
    whole.deallocate(block);
    whole.validate();
    EXPECT_EQ(32u, whole.getUsedSize());

    // One free block of 96 bytes: 64 left over splits into a header and 32.
    GPAllocator split(128, "Split", nullptr, 0, false);
    block = split.allocate(32, 4);
    EXPECT_EQ(1u, split.getFreeBlockNum());
    EXPECT_EQ(128u - 32, split.getUsedSize());
    split.validate();
    split.deallocate(block);
    split.validate();
    EXPECT_EQ(32u, split.getUsedSize());
}

TEST(GPAllocator, BackRestBelowSixtyFourBytesStaysWithTheBlock)
{
    // 96 bytes of space; 64 asked from the back leaves a front of 32: the
    // block is used whole and the pointer stands high in it.
    GPAllocator heap(128, "Test", nullptr, 1000, false);
    void* block = heap.allocate(64, 4);
    EXPECT_EQ(address(heap.getHeap()) + 64, address(block));
    EXPECT_EQ(0u, heap.getFreeBlockNum());
    heap.deallocate(block);
    heap.validate();
    EXPECT_EQ(32u, heap.getUsedSize());

    // 32 asked leaves a front of 64: split, the low part stays free.
    block = heap.allocate(32, 4);
    EXPECT_EQ(address(heap.getHeap()) + 96, address(block));
    EXPECT_EQ(1u, heap.getFreeBlockNum());
    EXPECT_EQ(128u - 32, heap.getUsedSize());
    heap.deallocate(block);
    heap.validate();
}

TEST(GPAllocator, LargeAlignmentOnBothRoutes)
{
    GPAllocator heap(0x10000, "Test", nullptr, 32, false);
    void* front = heap.allocate(100, 256);
    void* back = heap.allocate(-40, 512);
    void* plain = heap.allocate(200, 4);
    EXPECT_EQ(0u, address(front) % 256);
    EXPECT_EQ(0u, address(back) % 512);
    heap.validate();
    // Write the whole space asked for: the headers must survive it.
    memset(front, 0xAB, 100);
    memset(back, 0xCD, 40);
    memset(plain, 0xEF, 200);
    heap.validate();
    heap.deallocate(back);
    heap.deallocate(front);
    heap.deallocate(plain);
    heap.validate();
    EXPECT_EQ(32u, heap.getUsedSize());
}

TEST(GPAllocator, FreeingInAnyOrderMergesBackToOneBlock)
{
    std::mt19937 random(1234);
    for (int round = 0; round < 40; ++round) {
        GPAllocator heap(0x20000, "Test", nullptr, 64, false);
        std::vector<void*> blocks;
        for (int i = 0; i < 60; ++i) {
            int size = static_cast<int>(random() % 300) - 60;
            unsigned int alignment = 4u << (random() % 6);
            void* block = heap.allocate(size, alignment);
            ASSERT_NE(nullptr, block);
            ASSERT_EQ(0u, address(block) % alignment);
            blocks.push_back(block);
            heap.validate();
        }
        std::shuffle(blocks.begin(), blocks.end(), random);
        // Free half, refill, then free everything: merges meet new splits.
        for (size_t i = 0; i < blocks.size() / 2; ++i) {
            heap.deallocate(blocks[i]);
            heap.validate();
            blocks[i] = heap.allocate(static_cast<int>(random() % 200) - 50, 4);
            heap.validate();
        }
        std::shuffle(blocks.begin(), blocks.end(), random);
        for (void* block : blocks) {
            heap.deallocate(block);
            heap.validate();
        }
        ASSERT_EQ(32u, heap.getUsedSize());
        ASSERT_EQ(1u, heap.getFreeBlockNum());
    }
}

TEST(GPAllocator, EmptiedFreeListRefillsFromAnyBlock)
{
    // Three blocks fill the heap exactly; freeing them in each order goes
    // through the only-entry case and both merge directions.
    int const orders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    for (auto const& order : orders) {
        for (int route = 0; route < 2; ++route) {
            GPAllocator heap(32 * 9, "Test", nullptr, route == 0 ? 0 : 1000, false);
            void* blocks[3];
            for (void*& block : blocks) {
                block = heap.allocate(64, 4);
                ASSERT_NE(nullptr, block);
            }
            EXPECT_EQ(0u, heap.getFreeBlockNum());
            for (int index : order) {
                heap.deallocate(blocks[index]);
                heap.validate();
            }
            EXPECT_EQ(32u, heap.getUsedSize());
            EXPECT_EQ(1u, heap.getFreeBlockNum());
        }
    }
}

TEST(GPAllocator, ExhaustionTracesAndReturnsNull)
{
    GPAllocator heap(0x1000, "Small", nullptr, 32, false);
    testing::internal::CaptureStderr();
    void* block = heap.allocate(0x1000, 4);
    std::string const trace = testing::internal::GetCapturedStderr();
    EXPECT_EQ(nullptr, block);
    EXPECT_EQ("Heap allocation failed.(Small:size = 4096)", trace);
    heap.validate();
    EXPECT_EQ(32u, heap.getUsedSize());
}

TEST(GPAllocator, HeapWithoutFreeBlockReportsNoLeak)
{
    GPAllocator* heap = new GPAllocator(127, "Full", nullptr, 0, false);
    void* block = heap->allocate(32, 4);
    ASSERT_NE(nullptr, block);
    heap->checkLeak();
    delete heap; // no leak report, although the block is in use
}

TEST(GPAllocatorDeathTest, LeakReportNamesEachBlockThenFails)
{
    EXPECT_DEATH(
        {
            GPAllocator* heap = new GPAllocator(0x1000, "Leaky", nullptr, 32, true);
            heap->allocate(100, 4);
            heap->deallocate(heap->allocate(10, 4));
            heap->allocate(-7, 4);
            delete heap;
        },
        literal("Leaky : leak detected(call no = 1,size = 100).\n"
                "Leaky : leak detected(call no = 3,size = 7).\n") +
            ".*" + literal("Memory leak detected."));
}

TEST(GPAllocatorDeathTest, ClearChecksForLeaks)
{
    GPAllocator heap(0x1000, "Test", nullptr, 32, false);
    void* block = heap.allocate(500, 4);
    void* kept = heap.allocate(5, 4);
    heap.deallocate(block);
    EXPECT_DEATH(heap.clear(), literal("Test : leak detected(call no = 2,size = 5).\n") + ".*" +
                                   literal("Memory leak detected."));
    heap.deallocate(kept);
    GPAllocator clean(0x1000, "Clean", nullptr, 32, false);
    clean.deallocate(clean.allocate(40, 4));
    clean.clear();
    EXPECT_EQ(32u, clean.getUsedSize());
}

TEST(GPAllocator, ChildRegionComesFromTheParentAndGoesBack)
{
    GPAllocator parent(0x100000, "Parent", nullptr, 32, false);
    u32 const before = parent.getUsedSize();
    {
        GPAllocator child(0x10000, "Child", &parent, 32, false);
        EXPECT_EQ(0u, address(child.getHeap()) % 128);
        EXPECT_GE(parent.getUsedSize(), before + 0x10000);
        child.deallocate(child.allocate(50, 4));
    }
    EXPECT_EQ(before, parent.getUsedSize());
    parent.validate();
}

TEST(GPAllocator, GlobalIsOneHundredTwentyEightMebibytes)
{
    AllocatorBase* global = AllocatorBase::getGlobalAllocator();
    EXPECT_STREQ("Global", global->getName());
    EXPECT_EQ(0x8000000u, global->getHeapSize());
    EXPECT_TRUE(global->isThreadSafe());
    EXPECT_EQ(global, AllocatorBase::getGlobalAllocator());
}

TEST(GPAllocator, ThreadSafeHeapSurvivesEveryThreadAtOnce)
{
    GPAllocator heap(0x400000, "Shared", nullptr, 64, true);
    unsigned const threadNum = std::max(4u, std::thread::hardware_concurrency());
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < threadNum; ++t) {
        threads.emplace_back([&heap, t] {
            std::mt19937 random(t);
            std::vector<std::pair<u8*, u8>> held;
            for (int i = 0; i < kHammerRounds; ++i) {
                if (held.size() < 32 && (held.empty() || random() % 3 != 0)) {
                    int size = static_cast<int>(random() % 256) - 32;
                    size = size == 0 ? 1 : size;
                    u8* block = static_cast<u8*>(heap.allocate(size, 4u << (random() % 3)));
                    ASSERT_NE(nullptr, block);
                    u8 tag = static_cast<u8>(random());
                    memset(block, tag, size < 0 ? -size : size);
                    held.emplace_back(block, tag);
                } else {
                    size_t index = random() % held.size();
                    // Nobody else wrote into this block.
                    ASSERT_EQ(held[index].second, held[index].first[0]);
                    heap.deallocate(held[index].first);
                    held[index] = held.back();
                    held.pop_back();
                }
            }
            for (auto const& entry : held) {
                heap.deallocate(entry.first);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    heap.validate();
    EXPECT_EQ(32u, heap.getUsedSize());
    EXPECT_EQ(1u, heap.getFreeBlockNum());
}

// ---------------------------------------------------------------------------
TEST(InstantAllocator, SizeIsRoundedUpToTheAlignment)
{
    InstantAllocator heap(0x1000, "Instant", nullptr, false);
    u8* first = static_cast<u8*>(heap.allocate(64, 128));
    u8* second = static_cast<u8*>(heap.allocate(64, 128));
    EXPECT_EQ(128, second - first);
    EXPECT_EQ(static_cast<u8*>(heap.getHeap()), first);
    EXPECT_EQ(256u, heap.getUsedSize());
    // Alignment 1 takes the size as it is.
    u8* third = static_cast<u8*>(heap.allocate(3, 1));
    u8* fourth = static_cast<u8*>(heap.allocate(5, 1));
    EXPECT_EQ(3, fourth - third);
}

TEST(InstantAllocator, NegativeSizesComeFromTheTop)
{
    InstantAllocator heap(0x1000, "Instant", nullptr, true);
    u8* const start = static_cast<u8*>(heap.getHeap());
    u8* top = static_cast<u8*>(heap.allocate(-100, 16));
    EXPECT_EQ(start + 0x1000 - 112, top);
    heap.allocate(10, 4);
    EXPECT_EQ(12u, heap.getUsedSizeFw());
    EXPECT_EQ(0x1000u - 112, heap.getUsedSizeBk()); // the raw back offset
    EXPECT_EQ(12u + 112, heap.getUsedSize());
    heap.deallocate(top); // does nothing
    EXPECT_EQ(12u + 112, heap.getUsedSize());
    heap.clear();
    EXPECT_EQ(0u, heap.getUsedSize());
    EXPECT_EQ(0u, heap.getUsedSizeFw());
    EXPECT_EQ(0x1000u, heap.getUsedSizeBk());
}

TEST(InstantAllocator, BothEndsMayMeetExactly)
{
    InstantAllocator heap(256, "Instant", nullptr, false);
    heap.allocate(128, 4);
    heap.allocate(-128, 4);
    EXPECT_EQ(256u, heap.getUsedSize());
}

TEST(InstantAllocatorDeathTest, RunningOutIsFatalAtEitherEnd)
{
    InstantAllocator heap(256, "Instant", nullptr, true);
    heap.allocate(200, 4);
    EXPECT_DEATH(heap.allocate(60, 4), literal("This allocator do not have enough memory."));
    EXPECT_DEATH(heap.allocate(-60, 4), literal("This allocator do not have enough memory."));
    heap.allocate(-56, 4);
    EXPECT_EQ(256u, heap.getUsedSize());
}

TEST(InstantAllocator, ConcurrentBumpsNeverOverlap)
{
    unsigned const threadNum = 4;
    int const perThread = 2000;
    InstantAllocator heap(threadNum * perThread * 32, "Instant", nullptr, true);
    std::vector<std::vector<u8*>> results(threadNum);
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < threadNum; ++t) {
        threads.emplace_back([&heap, &results, t] {
            for (int i = 0; i < perThread; ++i) {
                results[t].push_back(static_cast<u8*>(heap.allocate(i % 2 == 0 ? 32 : -32, 32)));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::vector<u8*> all;
    for (auto const& list : results) {
        all.insert(all.end(), list.begin(), list.end());
    }
    std::sort(all.begin(), all.end());
    for (size_t i = 1; i < all.size(); ++i) {
        ASSERT_GE(all[i] - all[i - 1], 32);
    }
    EXPECT_EQ(heap.getHeapSize(), heap.getUsedSize());
}

// ---------------------------------------------------------------------------
TEST(BlockAllocator, BlockSizeRoundsUpToSixteen)
{
    BlockAllocator exact(48, 10, "Exact", nullptr, false);
    EXPECT_EQ(48u, exact.getBlockSize());
    EXPECT_EQ(480u, exact.getHeapSize());
    BlockAllocator rounded(50, 10, "Rounded", nullptr, false);
    EXPECT_EQ(64u, rounded.getBlockSize());
    EXPECT_EQ(640u, rounded.getHeapSize());
}

TEST(BlockAllocator, FirstAllocationYieldsTheHighestBlock)
{
    BlockAllocator heap(48, 4, "Blocks", nullptr, true);
    u8* const start = static_cast<u8*>(heap.getHeap());
    u8* a = static_cast<u8*>(heap.allocate(48, 4));
    u8* b = static_cast<u8*>(heap.allocate(-10, 4));
    EXPECT_EQ(start + 3 * 48, a);
    EXPECT_EQ(start + 2 * 48, b);
    EXPECT_EQ(96u, heap.getUsedSize());
    heap.deallocate(a);
    EXPECT_EQ(a, heap.allocate(1, 4)); // last in, first out
    heap.deallocate(a);
    heap.deallocate(b);
    heap.deallocate(nullptr);
    EXPECT_EQ(0u, heap.getUsedSize());
}

TEST(BlockAllocator, ExhaustionTracesAndReturnsNull)
{
    BlockAllocator heap(16, 2, "Blocks", nullptr, false);
    void* a = heap.allocate(16, 4);
    void* b = heap.allocate(16, 4);
    testing::internal::CaptureStderr();
    EXPECT_EQ(nullptr, heap.allocate(16, 4));
    EXPECT_EQ("BlockAllocator : Stack underflow.\n", testing::internal::GetCapturedStderr());
    heap.deallocate(a);
    heap.deallocate(b);
}

TEST(BlockAllocator, ClearRebuildsTheStackInOrder)
{
    BlockAllocator heap(32, 3, "Blocks", nullptr, false);
    void* a = heap.allocate(32, 4);
    void* b = heap.allocate(32, 4);
    heap.deallocate(a);
    heap.deallocate(b); // b is now on top
    heap.clear();
    EXPECT_EQ(a, heap.allocate(32, 4));
    heap.deallocate(a);
}

TEST(BlockAllocator, StackComesFromTheParent)
{
    GPAllocator parent(0x10000, "Parent", nullptr, 32, false);
    u32 const before = parent.getUsedSize();
    {
        BlockAllocator heap(48, 64, "Blocks", &parent, true);
        // The region of 48 x 64 stands at 128 (its alignment), the stack of
        // 4 bytes per block behind it with its own header.
        EXPECT_EQ(before + 128 + 3072 + 32 + 256, parent.getUsedSize());
    }
    EXPECT_EQ(before, parent.getUsedSize());
}

TEST(BlockAllocatorDeathTest, FatalMisuse)
{
    BlockAllocator heap(48, 4, "Blocks", nullptr, true);
    EXPECT_DEATH(heap.allocate(49, 4), literal("Requested size is larger than block size."));
    EXPECT_DEATH(heap.allocate(-49, 4), literal("Requested size is larger than block size."));
    u8* block = static_cast<u8*>(heap.allocate(48, 4));
    EXPECT_DEATH(heap.deallocate(block + 16), literal("Deallocation block does not exist."));
    EXPECT_DEATH(heap.deallocate(static_cast<u8*>(heap.getHeap()) + 4 * 48),
                 literal("Deallocation block does not exist."));
    EXPECT_DEATH(heap.clear(), literal("Memory leak detected."));
    heap.deallocate(block);
}

TEST(BlockAllocatorDeathTest, LeakAtTheEndIsFatal)
{
    EXPECT_DEATH(
        {
            BlockAllocator* heap = new BlockAllocator(48, 4, "Property", nullptr, true);
            heap->allocate(48, 4);
            delete heap;
        },
        literal("Property : leak detected.\n") + ".*" + literal("Memory leak detected."));
}

TEST(BlockAllocator, EveryThreadAtOnceKeepsBlocksApart)
{
    BlockAllocator heap(64, 256, "Shared", nullptr, true);
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 4; ++t) {
        threads.emplace_back([&heap, t] {
            std::vector<u8*> held;
            for (int i = 0; i < kHammerRounds; ++i) {
                if (held.size() < 60 && (held.empty() || i % 3 != 0)) {
                    u8* block = static_cast<u8*>(heap.allocate(64, 4));
                    ASSERT_NE(nullptr, block);
                    memset(block, static_cast<int>(t), 64);
                    held.push_back(block);
                } else {
                    ASSERT_EQ(t, held.back()[63]);
                    heap.deallocate(held.back());
                    held.pop_back();
                }
            }
            for (u8* block : held) {
                heap.deallocate(block);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(0u, heap.getUsedSize());
}
