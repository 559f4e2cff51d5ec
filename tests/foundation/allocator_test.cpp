// Named heaps: block arithmetic of GPAllocator (routes, splits, merges, leak
// walk), the two-ended bump of InstantAllocator, the block stack, all of them
// under concurrent use, and the classes' heaps behind operator new.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "app/system.h"
#include "foundation/allocator.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "resource/resourcebase.h"
#include "ui/uibase.h"
#include "unit/unitbase.h"

namespace {

// A fixed text as a death-test pattern.
std::string literal(std::string const& text)
{
    std::string pattern;
    for (char c : text) {
        pattern += std::string(std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos ? "\\" : "") + c;
    }
    return pattern;
}

// Reaches the protected constructor, as a second instance would.
class SecondManager : public MemoryManager {
};

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

TEST(GPAllocator, ThresholdAndSignChooseTheEndAndFreeingRestoresOneBlock)
{
    GPAllocator heap(0x10000, "Test", nullptr, 32, false);
    EXPECT_EQ(32u, heap.getUsedSize()); // the free block's header
    EXPECT_EQ(0u, address(heap.getHeap()) % 128);
    std::uintptr_t const start = address(heap.getHeap());
    std::uintptr_t const end = start + heap.getHeapSize();

    void* large = heap.allocate(33, 4);      // above the threshold: bottom
    void* small = heap.allocate(32, 4);      // at the threshold: top
    void* negative = heap.allocate(-100, 4); // negative: top, 128 bytes
    void* empty = heap.allocate(0, 4);       // one unit of 32
    EXPECT_EQ(start + 32, address(large));
    EXPECT_EQ(end - 32, address(small));
    EXPECT_EQ(end - 64 - 128, address(negative));
    EXPECT_EQ(address(negative) - 64, address(empty));
    EXPECT_EQ(32u + 4 * 32 + 64 + 32 + 128 + 32, heap.getUsedSize());
    for (void* block : {negative, large, empty, small, static_cast<void*>(nullptr)}) {
        heap.deallocate(block);
        heap.validate();
    }
    EXPECT_EQ(32u, heap.getUsedSize());
    EXPECT_EQ(1u, heap.getFreeBlockNum());
}

TEST(GPAllocator, RestsBelowSixtyFourBytesStayWithTheBlock)
{
    // Front: 95 bytes of space, 32 asked, a rest of 63 is not split off. A
    // heap without any free block then reports no leak at its end.
    GPAllocator* whole = new GPAllocator(127, "Whole", nullptr, 0, false);
    void* block = whole->allocate(32, 4);
    EXPECT_EQ(0u, whole->getFreeBlockNum());
    EXPECT_EQ(127u, whole->getUsedSize());
    delete whole;
    // Front: 96 bytes of space, a rest of 64 splits into a header and 32.
    GPAllocator split(128, "Split", nullptr, 0, false);
    block = split.allocate(32, 4);
    EXPECT_EQ(1u, split.getFreeBlockNum());
    split.deallocate(block);
    split.validate();
    // Back: 64 asked leaves a front of 32: used whole, the pointer stands high.
    GPAllocator back(128, "Back", nullptr, 1000, false);
    block = back.allocate(64, 4);
    EXPECT_EQ(address(back.getHeap()) + 64, address(block));
    EXPECT_EQ(0u, back.getFreeBlockNum());
    back.deallocate(block);
    // Back: 32 asked leaves a front of 64: split, the low part stays free.
    block = back.allocate(32, 4);
    EXPECT_EQ(address(back.getHeap()) + 96, address(block));
    EXPECT_EQ(1u, back.getFreeBlockNum());
    back.deallocate(block);
    back.validate();
    EXPECT_EQ(32u, back.getUsedSize());
}

TEST(GPAllocator, AnyOrderOfMixedRequestsMergesBackToOneBlock)
{
    std::mt19937 random(1234);
    for (int round = 0; round < 40; ++round) {
        GPAllocator heap(0x20000, "Test", nullptr, 64, false);
        std::vector<std::pair<void*, int>> blocks;
        auto add = [&] {
            int const size = static_cast<int>(random() % 300) - 60;
            unsigned const alignment = 4u << (random() % 7);
            void* block = heap.allocate(size, alignment);
            ASSERT_NE(nullptr, block);
            ASSERT_EQ(0u, address(block) % alignment);
            memset(block, 0xAB, static_cast<size_t>(std::abs(size))); // headers must survive
            blocks.emplace_back(block, size);
            heap.validate();
        };
        for (int i = 0; i < 60; ++i) {
            add();
        }
        // Free half and refill, then free everything: merges meet new splits.
        std::shuffle(blocks.begin(), blocks.end(), random);
        for (int i = 0; i < 30; ++i) {
            heap.deallocate(blocks.back().first);
            blocks.pop_back();
            heap.validate();
            add();
        }
        std::shuffle(blocks.begin(), blocks.end(), random);
        for (auto const& block : blocks) {
            heap.deallocate(block.first);
            heap.validate();
        }
        ASSERT_EQ(32u, heap.getUsedSize());
        ASSERT_EQ(1u, heap.getFreeBlockNum());
    }
}

TEST(GPAllocator, ExhaustionTracesAndReturnsNull)
{
    GPAllocator heap(0x1000, "Small", nullptr, 32, false);
    testing::internal::CaptureStderr();
    EXPECT_EQ(nullptr, heap.allocate(0x1000, 4));
    EXPECT_EQ("Heap allocation failed.(Small:size = 4096)", testing::internal::GetCapturedStderr());
    EXPECT_EQ(32u, heap.getUsedSize());
}

TEST(GPAllocatorDeathTest, LeaksAreReportedBlockByBlockThenFatal)
{
    EXPECT_DEATH(
        {
            GPAllocator* heap = new GPAllocator(0x1000, "Leaky", nullptr, 32, true);
            heap->allocate(100, 4);
            heap->deallocate(heap->allocate(10, 4));
            heap->allocate(-7, 4);
            delete heap;
        },
        literal("Leaky : leak detected(call no = 1,size = 100).\nLeaky : leak detected(call no = 3,size = 7).\n") +
            ".*" + literal("Memory leak detected."));
    GPAllocator heap(0x1000, "Test", nullptr, 32, false);
    void* kept = heap.allocate(5, 4);
    EXPECT_DEATH(heap.clear(), literal("Test : leak detected(call no = 1,size = 5).\n") + ".*Memory leak detected");
    heap.deallocate(kept);
    heap.clear();
    EXPECT_EQ(32u, heap.getUsedSize());
}

TEST(InstantAllocator, BumpsFromBothEndsUntilClear)
{
    InstantAllocator heap(0x1000, "Instant", nullptr, true);
    u8* const start = static_cast<u8*>(heap.getHeap());
    u8* first = static_cast<u8*>(heap.allocate(64, 128)); // size rounded to the alignment
    EXPECT_EQ(start, first);
    EXPECT_EQ(first + 128, heap.allocate(64, 128));
    u8* odd = static_cast<u8*>(heap.allocate(3, 1)); // alignment 1: as asked
    EXPECT_EQ(odd + 3, heap.allocate(5, 1));
    EXPECT_EQ(start + 0x1000 - 112, heap.allocate(-100, 16));
    EXPECT_EQ(264u, heap.getUsedSizeFw());
    EXPECT_EQ(0x1000u - 112, heap.getUsedSizeBk()); // the raw back offset
    EXPECT_EQ(264u + 112, heap.getUsedSize());
    heap.deallocate(first); // does nothing
    heap.clear();
    EXPECT_EQ(0u, heap.getUsedSize());
    heap.allocate(0x800, 4);
    heap.allocate(-0x800, 4); // the ends may meet exactly
    EXPECT_EQ(0x1000u, heap.getUsedSize());
}

TEST(InstantAllocatorDeathTest, RunningOutIsFatalAtEitherEnd)
{
    InstantAllocator heap(256, "Instant", nullptr, false);
    heap.allocate(200, 4);
    EXPECT_DEATH(heap.allocate(60, 4), literal("This allocator do not have enough memory."));
    EXPECT_DEATH(heap.allocate(-60, 4), literal("This allocator do not have enough memory."));
}

TEST(InstantAllocator, ConcurrentBumpsNeverOverlap)
{
    int const perThread = 2000;
    InstantAllocator heap(4 * perThread * 32, "Instant", nullptr, true);
    std::vector<u8*> all(4 * perThread);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&heap, &all, t] {
            for (int i = 0; i < perThread; ++i) {
                all[t * perThread + i] = static_cast<u8*>(heap.allocate(i % 2 == 0 ? 32 : -32, 32));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::sort(all.begin(), all.end());
    EXPECT_EQ(all.end(), std::adjacent_find(all.begin(), all.end(), [](u8* a, u8* b) { return b - a < 32; }));
    EXPECT_EQ(heap.getHeapSize(), heap.getUsedSize());
}

TEST(BlockAllocator, StackHandsOutTheHighestBlockFirst)
{
    EXPECT_EQ(64u, BlockAllocator(50, 10, "Rounded", nullptr, false).getBlockSize()); // rounded to 32
    GPAllocator parent(0x10000, "Parent", nullptr, 32, false);
    u32 const before = parent.getUsedSize();
    {
        BlockAllocator heap(48, 4, "Blocks", &parent, true);
            // The region at its 128 alignment; the stack, 4 bytes a block, behind it.
        EXPECT_EQ(before + 128 + 192 + 32 + 32, parent.getUsedSize());
        u8* const start = static_cast<u8*>(heap.getHeap());
        u8* a = static_cast<u8*>(heap.allocate(48, 4));
        u8* b = static_cast<u8*>(heap.allocate(-10, 4));
        EXPECT_EQ(start + 3 * 48, a);
        EXPECT_EQ(start + 2 * 48, b);
        EXPECT_EQ(96u, heap.getUsedSize());
        heap.deallocate(a);
        heap.deallocate(b);
        EXPECT_EQ(b, heap.allocate(1, 4)); // last in, first out
        heap.deallocate(b);
        heap.clear(); // back in the constructor's order
        EXPECT_EQ(a, heap.allocate(1, 4));
        heap.allocate(1, 4);
        heap.allocate(1, 4);
        heap.allocate(1, 4);
        testing::internal::CaptureStderr();
        EXPECT_EQ(nullptr, heap.allocate(16, 4));
        EXPECT_EQ("BlockAllocator : Stack underflow.\n", testing::internal::GetCapturedStderr());
        for (int i = 0; i < 4; ++i) {
            heap.deallocate(start + i * 48);
        }
        heap.deallocate(nullptr);
        EXPECT_EQ(0u, heap.getUsedSize());
    }
    EXPECT_EQ(before, parent.getUsedSize());
}

TEST(BlockAllocatorDeathTest, MisuseAndLeaksAreFatal)
{
    BlockAllocator heap(48, 4, "Blocks", nullptr, true);
    EXPECT_DEATH(heap.allocate(-49, 4), literal("Requested size is larger than block size."));
    u8* block = static_cast<u8*>(heap.allocate(48, 4));
    EXPECT_DEATH(heap.deallocate(block + 16), literal("Deallocation block does not exist."));
    EXPECT_DEATH(heap.deallocate(block + 48), literal("Deallocation block does not exist."));
    EXPECT_DEATH(heap.clear(), literal("Memory leak detected."));
    heap.deallocate(block);
    EXPECT_DEATH(
        {
            BlockAllocator* leaky = new BlockAllocator(48, 4, "Property", nullptr, true);
            leaky->allocate(48, 4);
            delete leaky;
        },
        literal("Property : leak detected.\n") + ".*" + literal("Memory leak detected."));
}

// Each thread tags what it holds; a block handed out twice shows as a
// foreign tag, a broken list in validate().
TEST(AllocatorConcurrency, ThreadSafeHeapsSurviveEveryThreadAtOnce)
{
    GPAllocator general(0x400000, "Shared", nullptr, 64, true);
    BlockAllocator blocks(64, 1024, "Blocks", nullptr, true);
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < std::max(4u, std::thread::hardware_concurrency()); ++t) {
        threads.emplace_back([&, t] {
            std::mt19937 random(t);
            std::vector<std::pair<u8*, AllocatorBase*>> held;
            for (int i = 0; i < kHammerRounds; ++i) {
                if (held.size() < 64 && (held.empty() || random() % 3 != 0)) {
                    int const size = static_cast<int>(random() % 256) - 32;
                    AllocatorBase* heap = random() % 2 ? static_cast<AllocatorBase*>(&general) : &blocks;
                    u8* block = static_cast<u8*>(heap->allocate(heap == &blocks ? 64 : size, 4u << (random() % 3)));
                    ASSERT_NE(nullptr, block);
                    block[0] = static_cast<u8>(t);
                    held.emplace_back(block, heap);
                } else {
                    size_t const index = random() % held.size();
                    ASSERT_EQ(t, held[index].first[0]);
                    held[index].second->deallocate(held[index].first);
                    held[index] = held.back();
                    held.pop_back();
                }
            }
            for (auto const& entry : held) {
                entry.second->deallocate(entry.first);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    general.validate();
    EXPECT_EQ(32u, general.getUsedSize());
    EXPECT_EQ(0u, blocks.getUsedSize());
}

// The register of named heaps: "Global" as entry 0, children carved from it
// and handed back at the manager's end.
TEST(MemoryManager, ListsGlobalFirstAndOwnsItsChildren)
{
    AllocatorBase* global = AllocatorBase::getGlobalAllocator();
    u32 const before = global->getUsedSize();
    MemoryManager* manager = MemoryManager::create();
    EXPECT_EQ(manager, MemoryManager::create());
    ASSERT_EQ(1u, manager->getAllocatorNum());
    EXPECT_EQ(global, manager->getAllocator(0));
    AllocatorBase* strings = manager->createAllocator(0x200000, "String");
    AllocatorBase* properties = manager->createBlockAllocator(48, 0x10000, "Property");
    ASSERT_EQ(3u, manager->getAllocatorNum());
    EXPECT_EQ(properties, manager->getAllocator(2));
    EXPECT_GT(global->getUsedSize() - before, 0x500000u);
    // Threshold 32: a small request stays at the top, a large one at the bottom.
    void* small = strings->allocate(16, 4);
    void* large = strings->allocate(100, 4);
    EXPECT_GT(small, large);
    strings->deallocate(small);
    strings->deallocate(large);
    properties->deallocate(properties->allocate(48, 4));
    manager->destroy();
    EXPECT_EQ(nullptr, MemoryManager::getInstance());
    EXPECT_EQ(before, global->getUsedSize());
}

TEST(MemoryManagerDeathTest, HeldBlockOrExhaustedGlobalIsFatal)
{
    EXPECT_DEATH(
        {
            MemoryManager* manager = MemoryManager::create();
            manager->createAllocator(0x10000, "Temp")->allocate(24, 4);
            manager->destroy();
        },
        literal("Temp : leak detected(call no = 1,size = 24).\n") + ".*" + literal("Memory leak detected."));
    EXPECT_DEATH(MemoryManager::create()->createAllocator(0x8000000, "Huge"), literal("Not enough memory."));
    MemoryManager* manager = MemoryManager::create();
    EXPECT_DEATH(new SecondManager(), literal("MemoryManager already instanced."));
    manager->destroy();
}

// Every class with a named heap, and the widgets: blocks aligned to 16, blocks
// made before the heap was set go back to "Global", and a block of another
// heap is fatal. Each
// case runs in a child process, where the class's heap may be set.
TEST(ClassHeapDeathTest, EveryNamedHeapAlignsTo16AndCatchesABlockOfAnotherHeap)
{
    struct Case {
        char const* mpName;
        void (*mSet)(AllocatorBase* heap);
        void* (*mNew)(std::size_t size);
        void (*mDelete)(void* pointer);
    };
    Case const cases[] = {
        {"String", &AutoString::setAllocator, [](std::size_t size) { return AutoString::operator new(size); },
         [](void* pointer) { AutoString::operator delete(pointer); }},
        {"System", &System::setAllocator, [](std::size_t size) { return System::allocate(static_cast<u32>(size)); },
         &System::deallocate},
        {"Property", &PropertyBase::setAllocator, [](std::size_t size) { return PropertyBase::operator new(size); },
         [](void* pointer) { PropertyBase::operator delete(pointer); }},
        {"Control", &PropertyBase::setAllocator, [](std::size_t size) { return ControlBase::operator new(size); },
         [](void* pointer) { ControlBase::operator delete(pointer); }},
        {"Resource", &ResourceBase::setAllocator, [](std::size_t size) { return ResourceBase::operator new(size); },
         [](void* pointer) { ResourceBase::operator delete(pointer); }},
        {"Unit", &UnitBase::setAllocator, [](std::size_t size) { return UnitBase::operator new(size); },
         [](void* pointer) { UnitBase::operator delete(pointer); }},
        // Widgets stay in "Global": their heap is never set.
        {"Widget", [](AllocatorBase* heap) { delete heap; },
         [](std::size_t size) { return UIBase::allocate(static_cast<unsigned int>(size)); }, &UIBase::deallocate},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.mpName);
        auto const run = [&c] {
            void* early = c.mNew(40);
            c.mSet(new GPAllocator(0x10000, c.mpName, nullptr, 32, true));
            void* blocks[] = {c.mNew(1), c.mNew(24), c.mNew(40)};
            for (void* block : blocks) {
                if (block == nullptr || reinterpret_cast<std::uintptr_t>(block) % 16 != 0) {
                    fprintf(stderr, "misaligned\n");
                    _exit(1);
                }
                c.mDelete(block);
            }
            c.mDelete(early);
            GPAllocator other(0x1000, "Other", nullptr, 32, false);
            c.mDelete(other.allocate(16, 16));
        };
        EXPECT_DEATH(run(), "Block returned to the wrong heap\\.");
    }
}
