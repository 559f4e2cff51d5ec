#include "foundation/memorymanager.h"

#include "foundation/debug.h"

MemoryManager* MemoryManager::mpInstance = nullptr;
TypeInfo MemoryManager::mUniqueTypeInfo("MemoryManager", "ObjectBase", 2);

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
}

MemoryManager::~MemoryManager()
{
    DEV_TRACE("MemoryManager : end.\n");
}
