// A heap for tests and fuzz targets in which each block is an allocation of
// its own, so that the address sanitizer sees the bounds of every file and
// image a reader handles (one region carved up would hide a read past a
// block). Counts the bytes in use; any thread.
#pragma once

#include <cstring>

#include "foundation/allocator.h"
#include "foundation/multithread.h"

class CheckedHeap : public AllocatorBase {
public:
    explicit CheckedHeap(char const* name) : AllocatorBase(16, name, nullptr, true) {}
    void* allocate(int size, unsigned int) override
    {
        u32 const bytes = static_cast<u32>(size < 0 ? -size : size);
        u8* block = new u8[bytes + 16]; // the size first, keeping new[]'s alignment
        memcpy(block, &bytes, sizeof(bytes));
        mUsed.add(static_cast<int>(bytes));
        return block + 16;
    }
    void deallocate(void* pointer) override
    {
        if (u8* block = pointer != nullptr ? static_cast<u8*>(pointer) - 16 : nullptr) {
            mUsed.sub(*reinterpret_cast<int*>(block));
            delete[] block;
        }
    }
    void clear() override {}
    u32 getUsedSize() override { return static_cast<u32>(mUsed.get()); }
    // The blocks lie outside the region: each is taken for one of this heap's.
    bool contains(void const*) const override { return true; }

private:
    Atomic mUsed;
};
