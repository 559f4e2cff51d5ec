// Named heaps. Minimal abstract interface for the frame spine; the real
// allocators (general purpose, bump, block) replace it.
#pragma once

#include "foundation/types.h"

class AllocatorBase {
public:
    AllocatorBase(u32 heapSize, char const* name) : mHeapSize(heapSize), mpName(name) {}
    virtual ~AllocatorBase() {}
    virtual void* allocate(int size, unsigned int alignment) = 0;
    virtual void deallocate(void* pointer) = 0;
    virtual void clear() = 0;
    virtual u32 getUsedSize() = 0;

    char const* getName() const { return mpName; }
    u32 getHeapSize() const { return mHeapSize; }

protected:
    u32 mHeapSize;
    char const* mpName;
};
