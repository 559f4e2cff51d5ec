// The register of named heaps: "Global" as entry 0, children carved from it,
// ownership and the fatal leak check at the manager's end.
#include <gtest/gtest.h>

#include <string>

#include "foundation/memorymanager.h"

namespace {

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

} // namespace

TEST(MemoryManager, GlobalIsEntryZeroBeforeAnyAllocator)
{
    MemoryManager* manager = MemoryManager::create();
    EXPECT_EQ(manager, MemoryManager::getInstance());
    EXPECT_EQ(manager, MemoryManager::create());
    ASSERT_EQ(1u, manager->getAllocatorNum());
    EXPECT_STREQ("Global", manager->getAllocator(0)->getName());
    EXPECT_EQ(AllocatorBase::getGlobalAllocator(), manager->getAllocator(0));
    EXPECT_STREQ("MemoryManager", manager->getTypeInfo()->getName());
    manager->destroy();
    EXPECT_EQ(nullptr, MemoryManager::getInstance());
}

TEST(MemoryManager, ChildrenAreCarvedFromGlobalAndReturnedAtTheEnd)
{
    AllocatorBase* global = AllocatorBase::getGlobalAllocator();
    u32 const before = global->getUsedSize();
    MemoryManager* manager = MemoryManager::create();
    u32 const withManager = global->getUsedSize();

    AllocatorBase* strings = manager->createAllocator(0x200000, "String");
    AllocatorBase* properties = manager->createBlockAllocator(48, 0x10000, "Property");
    ASSERT_EQ(3u, manager->getAllocatorNum());
    EXPECT_EQ(strings, manager->getAllocator(1));
    EXPECT_EQ(properties, manager->getAllocator(2));
    EXPECT_STREQ("String", strings->getName());
    EXPECT_TRUE(strings->isThreadSafe());
    EXPECT_TRUE(properties->isThreadSafe());
    EXPECT_EQ(32u, strings->getUsedSize());
    // The block heap of the host: 3 MiB of blocks plus its 256 KiB stack.
    EXPECT_EQ(0x300000u, properties->getHeapSize());
    EXPECT_GE(global->getUsedSize(), withManager + 0x200000 + 0x300000 + 0x40000);

    // A small request stays at the top of the child; a large one at its bottom.
    void* small = strings->allocate(16, 4);
    void* large = strings->allocate(100, 4);
    EXPECT_GT(small, large);
    strings->deallocate(small);
    strings->deallocate(large);
    properties->deallocate(properties->allocate(48, 4));

    manager->destroy();
    EXPECT_EQ(before, global->getUsedSize());
}

TEST(MemoryManager, HostHeapsFitInGlobal)
{
    AllocatorBase* global = AllocatorBase::getGlobalAllocator();
    u32 const before = global->getUsedSize();
    MemoryManager* manager = MemoryManager::create();
    manager->createAllocator(0x200000, "String");
    manager->createAllocator(0x1000000, "Temp");
    manager->createBlockAllocator(48, 0x10000, "Property");
    manager->createAllocator(0x1000000, "System");
    manager->createAllocator(0x2000000, "Resource");
    manager->createAllocator(0x1000000, "Unit");
    EXPECT_EQ(7u, manager->getAllocatorNum());
    // Some 85 MiB of the 128.
    EXPECT_LT(global->getUsedSize() - before, 86u * 0x100000);
    EXPECT_GT(global->getUsedSize() - before, 85u * 0x100000);
    manager->destroy();
    EXPECT_EQ(before, global->getUsedSize());
}

TEST(MemoryManagerDeathTest, HeldBlockAtTheEndStopsTheProgram)
{
    EXPECT_DEATH(
        {
            MemoryManager* manager = MemoryManager::create();
            AllocatorBase* temp = manager->createAllocator(0x10000, "Temp");
            temp->allocate(24, 4);
            manager->destroy();
        },
        literal("Temp : leak detected(call no = 1,size = 24).\n") + ".*" + literal("Memory leak detected."));
}

TEST(MemoryManagerDeathTest, ExhaustedGlobalIsFatal)
{
    EXPECT_DEATH(
        {
            MemoryManager* manager = MemoryManager::create();
            manager->createAllocator(0x8000000, "Huge");
        },
        literal("Not enough memory."));
}
