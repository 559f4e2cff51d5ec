// MemoryManager: the singleton register of named heaps, first to exist and
// last to go. Entry 0 is "Global", listed but not owned; every other entry is
// owned, carved from "Global", thread safe, and leak-checked when the manager
// ends. Creation and listing are for the main thread.
#pragma once

#include "foundation/allocator.h"
#include "foundation/vector.h"
#include "reflection/objectbase.h"

class MemoryManager : public ObjectBase {
public:
    static MemoryManager* create();
    static MemoryManager* getInstance() { return mpInstance; }
    virtual void destroy();

    // A general-purpose heap from "Global", threshold 32.
    AllocatorBase* createAllocator(u32 heapSize, char const* name);
    // A block heap from "Global"; block size rounded up to 16.
    AllocatorBase* createBlockAllocator(u32 blockSize, u32 blockNum, char const* name);

    // Includes "Global"; in order of creation, no bounds check.
    u32 getAllocatorNum() const { return mAllocators.size(); }
    AllocatorBase* getAllocator(u32 index) const { return mAllocators[index]; }

    DECLARE_TYPEINFO(TypeInfo)

protected:
    MemoryManager();
    ~MemoryManager() override;

private:
    Vector<AllocatorBase> mAllocators;
    static MemoryManager* mpInstance;
};
