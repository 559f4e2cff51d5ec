#include "foundation/memorymanager.h"

#include "foundation/debug.h"

MemoryManager* MemoryManager::mpInstance = nullptr;
IMPLEMENT_TYPEINFO(MemoryManager, "ObjectBase", TypeInfo::eAttribute_Singleton);

MemoryManager* MemoryManager::create()
{
    if (mpInstance == nullptr) {
        MemoryManager* instance = new MemoryManager();
        mpInstance = instance;
    }
    return mpInstance;
}

void MemoryManager::destroy()
{
    mpInstance = nullptr;
    delete this;
}

MemoryManager::MemoryManager()
{
    DEV_ASSERT(mpInstance == nullptr, "MemoryManager already instanced.");
    DEV_TRACE("MemoryManager : start.\n");
    mAllocators.addLast(AllocatorBase::getGlobalAllocator());
}

// Each allocator's destructor runs its leak check, which is fatal.
MemoryManager::~MemoryManager()
{
    for (u32 i = 1; i < mAllocators.size(); ++i) {
        if (mAllocators[i] != nullptr) {
            delete mAllocators[i];
        }
    }
    DEV_TRACE("MemoryManager : end.\n");
}

// The allocator objects come from the plain global new: they must exist
// without any allocator of ours.
AllocatorBase* MemoryManager::createAllocator(u32 heapSize, char const* name)
{
    AllocatorBase* allocator = new GPAllocator(heapSize, name, AllocatorBase::getGlobalAllocator(), 32, true);
    mAllocators.addLast(allocator);
    return allocator;
}

AllocatorBase* MemoryManager::createBlockAllocator(u32 blockSize, u32 blockNum, char const* name)
{
    AllocatorBase* allocator = new BlockAllocator(blockSize, blockNum, name, AllocatorBase::getGlobalAllocator(), true);
    mAllocators.addLast(allocator);
    return allocator;
}
