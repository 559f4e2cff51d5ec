// Named heaps. Each allocator owns one region taken whole at construction,
// from its parent or, for "Global", from malloc; it reports its use and treats
// a leak at its end as fatal. GPAllocator is first fit with headers, BlockAllocator
// a stack of equal blocks, InstantAllocator a two-ended bump heap cleared whole.
// The thread-safe ones may be used from any thread; clear() never concurrently.
#pragma once

#include "foundation/multithread.h"
#include "foundation/types.h"

class AllocatorBase {
public:
    // Takes the region whole: from the parent when given, else from malloc.
    AllocatorBase(u32 heapSize, char const* name, AllocatorBase* parent, bool threadSafe);
    AllocatorBase(AllocatorBase const&) = delete;
    AllocatorBase& operator=(AllocatorBase const&) = delete;
    virtual ~AllocatorBase();
    // |size| is the size; the sign picks the end of the region.
    virtual void* allocate(int size, unsigned int alignment) = 0;
    virtual void deallocate(void* pointer) = 0;
    virtual void clear() = 0;
    virtual u32 getUsedSize() = 0;

    // "Global": 128 MiB from malloc, built at first use, ended at process
    // exit after everything else, so that its leak check sees the program.
    static AllocatorBase* getGlobalAllocator();
    // The program's heap for short-lived scratch blocks (file buffers), set
    // with the application's; null where none is set, and users fall back to
    // array new.
    static void setTemporaryAllocator(AllocatorBase* allocator) { mpTemporaryAllocator = allocator; }
    static AllocatorBase* getTemporaryAllocator() { return mpTemporaryAllocator; }

    char const* getName() const { return mpName; }
    u32 getHeapSize() const { return mHeapSize; }
    void* getHeap() const { return mpHeap; }
    bool isThreadSafe() const { return mThreadSafe; }

    // Round up: (value + alignment - 1) & -alignment; alignment a power of two.
    static u32 align(u32 value, u32 alignment) { return (value + alignment - 1) & (0u - alignment); }
    static void* align(void* pointer, u32 alignment)
    {
        std::uintptr_t value = reinterpret_cast<std::uintptr_t>(pointer);
        std::uintptr_t mask = alignment - 1;
        return reinterpret_cast<void*>((value + mask) & ~mask);
    }
    static void* align128(void* pointer) { return align(pointer, 128); }

protected:
    void* mpRawHeap;
    void* mpHeap;
    u32 mHeapSize;
    bool mThreadSafe;
    char const* mpName;
    AllocatorBase* mpParent;

private:
    static AllocatorBase* mpTemporaryAllocator;
};

// First fit over an address-ordered free list of blocks, each behind a
// 32-byte header in the heap. Requests up to the threshold (and negative
// sizes) are served from the top of the heap, larger ones from the bottom.
class GPAllocator : public AllocatorBase {
public:
    GPAllocator(u32 heapSize, char const* name, AllocatorBase* parent, int threshold, bool threadSafe);
    ~GPAllocator() override;

    void* allocate(int size, unsigned int alignment) override;
    void deallocate(void* pointer) override;
    // Leak check, then one free block over the whole heap again.
    void clear() override;
    // Heap size less the space of the free blocks: a fresh heap reports 32.
    u32 getUsedSize() override;
    // Traces every block in use and fails if there is any; a heap without a
    // single free block is not examined.
    void checkLeak();
    // Whole-structure check of the free list (order, bounds, links, merging,
    // block walk); for tests after each mutation. Fatal on the first fault.
    void validate();

    u32 getFreeBlockNum();

private:
    // The header keeps its 32-bit layout on 64-bit: links are 32-bit offsets
    // from mpHeap (kNullOffset for none) instead of pointers.
    struct sHeader {
        u32 mPrevious;    // offset of the previous free block (free blocks only)
        u32 mNext;        // offset of the next free block (free blocks only)
        u32 mSize;        // bytes of space behind the header
        u32 mRequestSize; // |size| asked for; the leak report prints it
        u32 mCallNo;      // call counter at this allocation
        u32 mBack;        // 1 from the back, 0 from the front
        u32 mReserved;
        u32 mBlock;       // kNullOffset when free, else the header's own offset;
                          // it is also the word at pointer - 4 of an unaligned block
    };
    static_assert(sizeof(sHeader) == 32, "the block arithmetic counts a 32-byte header");
    static u32 const kNullOffset = 0xFFFFFFFFu;

    sHeader* at(u32 offset) const;
    u32 offsetOf(sHeader const* header) const;
    static u8* getEnd(sHeader* header) { return reinterpret_cast<u8*>(header) + sizeof(sHeader) + header->mSize; }
    sHeader* getPrevious(sHeader* header) const;
    sHeader* getNext(sHeader* header) const;
    void link(sHeader* previous, sHeader* next);
    void reset();

    u8* allocateFw(u32 size, u32 rounded, u32 alignment);
    u8* allocateBk(u32 size, u32 rounded, u32 alignment);
    u8* useBlock(sHeader* header, u8* user, u32 size, u32 back);
    void deallocateFw(sHeader* block);
    void deallocateBk(sHeader* block);

    sHeader* mpFreeFirst;
    sHeader* mpFreeLast;
    int mThreshold;
    u32 mCallNo;
    CriticalSection mCriticalSection;
};

// Two-ended bump heap without headers: positive sizes from the front,
// negative ones from the back. deallocate does nothing; clear() releases all.
class InstantAllocator : public AllocatorBase {
public:
    InstantAllocator(u32 heapSize, char const* name, AllocatorBase* parent, bool threadSafe);

    void* allocate(int size, unsigned int alignment) override;
    void deallocate(void* pointer) override;
    void clear() override;
    u32 getUsedSize() override;

    u32 getUsedSizeFw() const { return static_cast<u32>(mFront.get()); }
    // The raw back offset, not the amount used at the back.
    u32 getUsedSizeBk() const { return static_cast<u32>(mBack.get()); }

private:
    Atomic mFront;
    Atomic mBack;
};

// Equal blocks (size rounded up to 16) handed out from a stack; the first
// allocation yields the highest block. Constant time; exhaustion gives null.
class BlockAllocator : public AllocatorBase {
public:
    BlockAllocator(u32 blockSize, u32 blockNum, char const* name, AllocatorBase* parent, bool threadSafe);
    ~BlockAllocator() override;

    void* allocate(int size, unsigned int alignment) override;
    void deallocate(void* pointer) override;
    void clear() override;
    u32 getUsedSize() override;

    u32 getBlockSize() const { return mBlockSize; }
    u32 getBlockNum() const { return mBlockNum; }

private:
    void fillStack();
    u32 getFreeNum();

    u32 mBlockSize;
    u32 mBlockNum;
    // Entries are 32-bit byte offsets from mpHeap, so that the stack keeps
    // its 4 bytes per block on 64-bit.
    u32* mpStack;
    u32* mpStackTop;
    SpinLock mSpinLock;
};
