// The register of named heaps: "Global" as entry 0, children carved from it,
// ownership and the fatal leak check at the manager's end.
#include <gtest/gtest.h>

#include "foundation/memorymanager.h"

namespace {
// Reaches the protected constructor, as a second instance would.
class SecondManager : public MemoryManager {
};
} // namespace

TEST(MemoryManager, ListsGlobalFirstAndOwnsItsChildren)
{
    AllocatorBase* global = AllocatorBase::getGlobalAllocator();
    u32 const before = global->getUsedSize();
    MemoryManager* manager = MemoryManager::create();
    EXPECT_EQ(manager, MemoryManager::create());
    ASSERT_EQ(1u, manager->getAllocatorNum());
    EXPECT_EQ(global, manager->getAllocator(0));
    EXPECT_STREQ("Global", manager->getAllocator(0)->getName());

    // The host's six heaps: some 85 MiB of the 128.
    AllocatorBase* strings = manager->createAllocator(0x200000, "String");
    manager->createAllocator(0x1000000, "Temp");
    AllocatorBase* properties = manager->createBlockAllocator(48, 0x10000, "Property");
    manager->createAllocator(0x1000000, "System");
    manager->createAllocator(0x2000000, "Resource");
    manager->createAllocator(0x1000000, "Unit");
    ASSERT_EQ(7u, manager->getAllocatorNum());
    EXPECT_EQ(properties, manager->getAllocator(3));
    EXPECT_EQ(0x300000u, properties->getHeapSize());
    EXPECT_TRUE(strings->isThreadSafe() && properties->isThreadSafe());
    EXPECT_GT(global->getUsedSize() - before, 85u * 0x100000);
    EXPECT_LT(global->getUsedSize() - before, 86u * 0x100000);

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
        "Temp : leak detected\\(call no = 1,size = 24\\)\\.\n.*Memory leak detected\\.");
    EXPECT_DEATH(MemoryManager::create()->createAllocator(0x8000000, "Huge"), "Not enough memory\\.");
    MemoryManager* manager = MemoryManager::create();
    EXPECT_DEATH(new SecondManager(), "MemoryManager already instanced\\.");
    manager->destroy();
}
