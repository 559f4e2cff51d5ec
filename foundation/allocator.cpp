#include "foundation/allocator.h"

#include <cstdint>
#include <cstdlib>

#include "foundation/debug.h"

AllocatorBase::AllocatorBase(u32 heapSize, char const* name, AllocatorBase* parent, bool threadSafe)
    : mpRawHeap(nullptr), mpHeap(nullptr), mHeapSize(heapSize), mThreadSafe(threadSafe), mpName(name), mpParent(parent)
{
    if (parent != nullptr) {
        mpRawHeap = parent->allocate(static_cast<int>(heapSize), 128);
        mpHeap = mpRawHeap;
    } else {
        mpRawHeap = malloc(static_cast<size_t>(heapSize) + 127);
        mpHeap = reinterpret_cast<void*>((reinterpret_cast<std::uintptr_t>(mpRawHeap) + 127) & ~std::uintptr_t(127));
    }
    DEV_ASSERT(mpRawHeap != nullptr, "Not enough memory.");
}

AllocatorBase::~AllocatorBase()
{
    if (mpParent != nullptr) {
        mpParent->deallocate(mpRawHeap);
    } else {
        free(mpRawHeap);
    }
}
