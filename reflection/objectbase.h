// ObjectBase: root of every reflected class. Minimal form for the frame spine;
// the full base with properties, controls and XML persistence replaces it.
#pragma once

#include <cstddef>

#include "foundation/allocator.h"
#include "reflection/typeinfo.h"

class ObjectBase {
public:
    virtual ~ObjectBase() {}
    virtual TypeInfo const* getTypeInfo() const { return &mUniqueTypeInfo; }

    static TypeInfo mUniqueTypeInfo;

    // Every reflected object lives in "Global". Alignment 16, not 4: on 64-bit
    // objects hold pointers and vtables and need max_align_t alignment.
    // noexcept, so that an exhausted heap yields null instead of a construction.
    static void* operator new(std::size_t size) noexcept { return allocateObject(size); }
    static void* operator new[](std::size_t size) noexcept { return allocateObject(size); }
    static void operator delete(void* pointer) { AllocatorBase::getGlobalAllocator()->deallocate(pointer); }
    static void operator delete[](void* pointer) { AllocatorBase::getGlobalAllocator()->deallocate(pointer); }
    // The class-level forms hide the global placement form; keep it usable.
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) {}

private:
    static void* allocateObject(std::size_t size)
    {
        return AllocatorBase::getGlobalAllocator()->allocate(static_cast<int>(size), kObjectAlignment);
    }
    static unsigned int const kObjectAlignment = 16;
    static_assert(kObjectAlignment >= alignof(std::max_align_t), "objects need the platform's alignment");
};
