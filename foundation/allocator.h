// Named heaps. Minimal form for the frame spine: the abstract interface with
// its region, the real allocators (general purpose, bump, block) come later.
#pragma once

#include "foundation/types.h"

class AllocatorBase {
public:
    // Takes the region whole: from the parent when given, else from malloc.
    AllocatorBase(u32 heapSize, char const* name, AllocatorBase* parent, bool threadSafe);
    virtual ~AllocatorBase();
    // |size| is the size; the sign picks the end of the region.
    virtual void* allocate(int size, unsigned int alignment) = 0;
    virtual void deallocate(void* pointer) = 0;
    virtual void clear() = 0;
    virtual u32 getUsedSize() = 0;

    char const* getName() const { return mpName; }
    u32 getHeapSize() const { return mHeapSize; }
    void* getHeap() const { return mpHeap; }
    bool isThreadSafe() const { return mThreadSafe; }

protected:
    void* mpRawHeap;
    void* mpHeap;
    u32 mHeapSize;
    bool mThreadSafe;
    char const* mpName;
    AllocatorBase* mpParent;
};
