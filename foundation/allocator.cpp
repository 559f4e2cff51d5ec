#include "foundation/allocator.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "foundation/debug.h"

namespace {

u32 const kHeaderSize = 32;
// A split leaves at least one header and one 32-byte unit; smaller rests
// stay with the block.
u32 const kSplitLimit = 64;

u32 getAbsolute(int size)
{
    return size < 0 ? 0u - static_cast<u32>(size) : static_cast<u32>(size);
}

} // namespace

// ---------------------------------------------------------------------------
// AllocatorBase

AllocatorBase::AllocatorBase(u32 heapSize, char const* name, AllocatorBase* parent, bool threadSafe)
    : mpRawHeap(nullptr), mpHeap(nullptr), mHeapSize(heapSize), mThreadSafe(threadSafe), mpName(name), mpParent(parent)
{
    if (parent != nullptr) {
        mpRawHeap = parent->allocate(static_cast<int>(heapSize), 128);
        mpHeap = mpRawHeap;
    } else {
        mpRawHeap = malloc(static_cast<size_t>(heapSize) + 127);
        mpHeap = align128(mpRawHeap);
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

AllocatorBase* AllocatorBase::mpTemporaryAllocator = nullptr;

// ---------------------------------------------------------------------------
// ClassHeap

void ClassHeap::set(AllocatorBase* allocator)
{
    if (mpAllocator != nullptr) {
        dev_assert("Allocator already set.", __FILE__, __LINE__);
    }
    mpAllocator = allocator;
}

void* ClassHeap::allocate(std::size_t size)
{
    if (mpAllocator != nullptr) {
        return mpAllocator->allocate(static_cast<int>(size), kAlignment);
    }
    void* block = AllocatorBase::getGlobalAllocator()->allocate(static_cast<int>(size), kAlignment);
    if (block != nullptr) {
        ++mEarlyNum;
    }
    return block;
}

void ClassHeap::deallocate(void* pointer)
{
    if (pointer == nullptr) {
        return;
    }
    if (mpAllocator != nullptr && mpAllocator->contains(pointer)) {
        mpAllocator->deallocate(pointer);
        return;
    }
    // The heaps are carved from "Global": a block of this heap lies in both,
    // an early block in "Global" only.
    AllocatorBase* global = AllocatorBase::getGlobalAllocator();
    if (mEarlyNum.load() == 0 || !global->contains(pointer)) {
        dev_assert("Block returned to the wrong heap.", __FILE__, __LINE__);
    }
    --mEarlyNum;
    global->deallocate(pointer);
}

AllocatorBase* AllocatorBase::getGlobalAllocator()
{
    static GPAllocator sGlobal(0x8000000, "Global", nullptr, 32, true);
    return &sGlobal;
}

// ---------------------------------------------------------------------------
// GPAllocator

GPAllocator::GPAllocator(u32 heapSize, char const* name, AllocatorBase* parent, int threshold, bool threadSafe)
    : AllocatorBase(heapSize, name, parent, threadSafe), mpFreeFirst(nullptr), mpFreeLast(nullptr),
      mThreshold(threshold), mCallNo(0)
{
    reset();
}

GPAllocator::~GPAllocator()
{
    checkLeak();
}

GPAllocator::sHeader* GPAllocator::at(u32 offset) const
{
    return reinterpret_cast<sHeader*>(static_cast<u8*>(mpHeap) + offset);
}

u32 GPAllocator::offsetOf(sHeader const* header) const
{
    if (header == nullptr) {
        return kNullOffset;
    }
    return static_cast<u32>(reinterpret_cast<u8 const*>(header) - static_cast<u8 const*>(mpHeap));
}

// The ends of the list are told by mpFreeFirst and mpFreeLast, never by the
// link fields: a block that became the only entry keeps the links (and the
// mBlock) it had while in use.
GPAllocator::sHeader* GPAllocator::getPrevious(sHeader* header) const
{
    return header == mpFreeFirst ? nullptr : at(header->mPrevious);
}

GPAllocator::sHeader* GPAllocator::getNext(sHeader* header) const
{
    return header == mpFreeLast ? nullptr : at(header->mNext);
}

// Makes next follow previous; a null side is the end of the list.
void GPAllocator::link(sHeader* previous, sHeader* next)
{
    if (previous != nullptr) {
        previous->mNext = offsetOf(next);
    } else {
        mpFreeFirst = next;
    }
    if (next != nullptr) {
        next->mPrevious = offsetOf(previous);
    } else {
        mpFreeLast = previous;
    }
}

void GPAllocator::reset()
{
    sHeader* block = static_cast<sHeader*>(mpHeap);
    memset(block, 0, sizeof(sHeader));
    block->mPrevious = kNullOffset;
    block->mNext = kNullOffset;
    block->mSize = mHeapSize - kHeaderSize;
    block->mBlock = kNullOffset;
    mpFreeFirst = block;
    mpFreeLast = block;
}

void* GPAllocator::allocate(int size, unsigned int alignment)
{
    if (alignment == 0) {
        alignment = 1;
    }
    u32 const absolute = getAbsolute(size);
    u32 const rounded = absolute == 0 ? kHeaderSize : align(absolute, kHeaderSize);
    if (mThreadSafe) {
        mCriticalSection.enter();
    }
    ++mCallNo;
    // Small and negative requests gather at the top, so that long-lived small
    // objects cannot split the large blocks at the bottom.
    u8* result = mThreshold < size ? allocateFw(absolute, rounded, alignment)
                                   : allocateBk(absolute, rounded, alignment);
    if (mThreadSafe) {
        mCriticalSection.leave();
    }
    if (result == nullptr) {
        DEV_TRACE("Heap allocation failed.(%s:size = %d)", mpName, size);
        return nullptr;
    }
    return result;
}

u8* GPAllocator::useBlock(sHeader* header, u8* user, u32 size, u32 back)
{
    header->mCallNo = mCallNo;
    header->mRequestSize = size;
    header->mBack = back;
    header->mBlock = offsetOf(header);
    u32 const offset = header->mBlock;
    memcpy(user - 4, &offset, sizeof(offset));
    return user;
}

// First fit from the bottom; the user pointer stands right behind the header
// (or higher, for a larger alignment) and a large enough rest is split off.
u8* GPAllocator::allocateFw(u32 size, u32 rounded, u32 alignment)
{
    for (sHeader* block = mpFreeFirst; block != nullptr; block = getNext(block)) {
        u8* const end = getEnd(block);
        u8* const user = static_cast<u8*>(align(reinterpret_cast<u8*>(block) + kHeaderSize, alignment));
        if (user > end || rounded > static_cast<u32>(end - user)) {
            continue;
        }
        u32 const room = static_cast<u32>(end - user);
        sHeader* const previous = getPrevious(block);
        sHeader* const next = getNext(block);
        if (room - rounded < kSplitLimit) {
            link(previous, next);
        } else {
            // The rest takes the block's place in the list.
            sHeader* rest = reinterpret_cast<sHeader*>(user + rounded);
            rest->mSize = static_cast<u32>(end - (user + rounded)) - kHeaderSize;
            rest->mBlock = kNullOffset;
            block->mSize = static_cast<u32>(user + rounded - (reinterpret_cast<u8*>(block) + kHeaderSize));
            link(previous, rest);
            link(rest, next);
        }
        return useBlock(block, user, size, 0);
    }
    return nullptr;
}

// First fit from the top; the user pointer stands at the block's end less the
// rounded size, aligned downward, and the low rest stays free in its place.
u8* GPAllocator::allocateBk(u32 size, u32 rounded, u32 alignment)
{
    for (sHeader* block = mpFreeLast; block != nullptr; block = getPrevious(block)) {
        if (rounded > block->mSize) {
            continue;
        }
        u8* const space = reinterpret_cast<u8*>(block) + kHeaderSize;
        u8* const end = space + block->mSize;
        u8* const start = end - rounded;
        u8* const user = reinterpret_cast<u8*>(reinterpret_cast<std::uintptr_t>(start) & ~std::uintptr_t(alignment - 1));
        if (user < space) {
            continue;
        }
        u32 const room = static_cast<u32>(end - user);
        u32 const front = block->mSize - room;
        if (front < kSplitLimit) {
            // Used whole: the low header stays, the user pointer stands high.
            link(getPrevious(block), getNext(block));
            return useBlock(block, user, size, 1);
        }
        sHeader* used = reinterpret_cast<sHeader*>(user - kHeaderSize);
        used->mSize = room;
        block->mSize = front - kHeaderSize;
        return useBlock(used, user, size, 1);
    }
    return nullptr;
}

void GPAllocator::deallocate(void* pointer)
{
    if (pointer == nullptr) {
        return;
    }
    u32 offset;
    memcpy(&offset, static_cast<u8*>(pointer) - 4, sizeof(offset));
    sHeader* block = at(offset);
    if (mThreadSafe) {
        mCriticalSection.enter();
    }
    if (block->mBack != 0) {
        deallocateBk(block);
    } else {
        deallocateFw(block);
    }
    if (mThreadSafe) {
        mCriticalSection.leave();
    }
}

// Back blocks lie high: their place is searched from the top.
void GPAllocator::deallocateBk(sHeader* block)
{
    if (mpFreeFirst == nullptr) {
        mpFreeFirst = block;
        mpFreeLast = block;
        return;
    }
    sHeader* lower = mpFreeLast;
    while (lower != nullptr && lower > block) {
        lower = getPrevious(lower);
    }
    if (lower == nullptr) {
        sHeader* first = mpFreeFirst;
        if (getEnd(block) == reinterpret_cast<u8*>(first)) {
            block->mSize += kHeaderSize + first->mSize;
            first = getNext(first);
        }
        link(nullptr, block);
        link(block, first);
        block->mBlock = kNullOffset;
        return;
    }
    sHeader* result = block;
    if (getEnd(lower) == reinterpret_cast<u8*>(block)) {
        lower->mSize += kHeaderSize + block->mSize;
        result = lower;
    } else {
        sHeader* next = getNext(lower);
        link(lower, block);
        link(block, next);
        block->mBlock = kNullOffset;
    }
    sHeader* next = getNext(result);
    if (next != nullptr && getEnd(result) == reinterpret_cast<u8*>(next)) {
        result->mSize += kHeaderSize + next->mSize;
        link(result, getNext(next));
    }
}

// Front blocks lie low: their place is searched from the bottom.
void GPAllocator::deallocateFw(sHeader* block)
{
    if (mpFreeFirst == nullptr) {
        mpFreeFirst = block;
        mpFreeLast = block;
        return;
    }
    sHeader* higher = mpFreeFirst;
    while (higher != nullptr && higher < block) {
        higher = getNext(higher);
    }
    if (higher == nullptr) {
        sHeader* last = mpFreeLast;
        if (getEnd(last) == reinterpret_cast<u8*>(block)) {
            last->mSize += kHeaderSize + block->mSize;
        } else {
            link(last, block);
            link(block, nullptr);
            block->mBlock = kNullOffset;
        }
        return;
    }
    sHeader* previous = getPrevious(higher);
    sHeader* next = higher;
    if (getEnd(block) == reinterpret_cast<u8*>(higher)) {
        block->mSize += kHeaderSize + higher->mSize;
        next = getNext(higher);
    }
    link(previous, block);
    link(block, next);
    block->mBlock = kNullOffset;
    if (previous != nullptr && getEnd(previous) == reinterpret_cast<u8*>(block)) {
        previous->mSize += kHeaderSize + block->mSize;
        link(previous, next);
    }
}

void GPAllocator::clear()
{
    if (mThreadSafe) {
        mCriticalSection.enter();
    }
    checkLeak();
    reset();
    if (mThreadSafe) {
        mCriticalSection.leave();
    }
}

u32 GPAllocator::getUsedSize()
{
    if (mThreadSafe) {
        mCriticalSection.enter();
    }
    u32 used = mHeapSize;
    for (sHeader* block = mpFreeFirst; block != nullptr; block = getNext(block)) {
        used -= block->mSize;
    }
    if (mThreadSafe) {
        mCriticalSection.leave();
    }
    return used;
}

u32 GPAllocator::getFreeBlockNum()
{
    if (mThreadSafe) {
        mCriticalSection.enter();
    }
    u32 count = 0;
    for (sHeader* block = mpFreeFirst; block != nullptr; block = getNext(block)) {
        ++count;
    }
    if (mThreadSafe) {
        mCriticalSection.leave();
    }
    return count;
}

void GPAllocator::checkLeak()
{
    if (mThreadSafe) {
        mCriticalSection.enter();
    }
    bool leak = false;
    if (mpFreeFirst != nullptr) {
        u8* position = static_cast<u8*>(mpHeap);
        u8* const heapEnd = position + mHeapSize;
        sHeader* cursor = mpFreeFirst;
        while (position < heapEnd) {
            if (cursor != nullptr && position >= reinterpret_cast<u8*>(cursor)) {
                position = getEnd(cursor);
                cursor = getNext(cursor);
                continue;
            }
            sHeader* used = reinterpret_cast<sHeader*>(position);
            DEV_TRACE("%s : leak detected(call no = %d,size = %d).\n", mpName, used->mCallNo, used->mRequestSize);
            leak = true;
            position = getEnd(used);
        }
    }
    if (mThreadSafe) {
        mCriticalSection.leave();
    }
    if (leak) {
        dev_assert("Memory leak detected.", __FILE__, __LINE__);
    }
}

void GPAllocator::validate()
{
    if (mThreadSafe) {
        mCriticalSection.enter();
    }
    u8* const heap = static_cast<u8*>(mpHeap);
    u8* const heapEnd = heap + mHeapSize;
    DEV_ASSERT((mpFreeFirst == nullptr) == (mpFreeLast == nullptr), "GPAllocator: free list ends disagree.");
    // The list: inside the heap, ascending, linked both ways, never adjacent.
    u32 const limit = mHeapSize / kHeaderSize;
    u32 count = 0;
    sHeader* previous = nullptr;
    for (sHeader* block = mpFreeFirst; block != nullptr; block = getNext(block)) {
        DEV_ASSERT(++count <= limit, "GPAllocator: free list does not end.");
        u8* const start = reinterpret_cast<u8*>(block);
        DEV_ASSERT(start >= heap && start + kHeaderSize <= heapEnd && getEnd(block) <= heapEnd,
                   "GPAllocator: free block outside the heap.");
        DEV_ASSERT(block->mBlock == kNullOffset || block->mBlock == offsetOf(block),
                   "GPAllocator: free block with a foreign block word.");
        if (previous != nullptr) {
            DEV_ASSERT(previous < block, "GPAllocator: free list out of address order.");
            DEV_ASSERT(getEnd(previous) < start, "GPAllocator: adjacent free blocks not merged.");
            DEV_ASSERT(previous->mNext == offsetOf(block) && block->mPrevious == offsetOf(previous),
                       "GPAllocator: free list links broken.");
        }
        previous = block;
    }
    DEV_ASSERT(previous == mpFreeLast, "GPAllocator: free list does not end at its last block.");
    // The heap: blocks tile it exactly; the free ones are those of the list.
    sHeader* cursor = mpFreeFirst;
    u8* position = heap;
    while (position < heapEnd) {
        sHeader* block = reinterpret_cast<sHeader*>(position);
        DEV_ASSERT(position + kHeaderSize <= heapEnd && getEnd(block) <= heapEnd, "GPAllocator: block walk leaves the heap.");
        if (block == cursor) {
            cursor = getNext(cursor);
        } else {
            DEV_ASSERT(cursor == nullptr || position < reinterpret_cast<u8*>(cursor), "GPAllocator: free block not on the block walk.");
            DEV_ASSERT(block->mBlock == offsetOf(block), "GPAllocator: used block without its own block word.");
        }
        position = getEnd(block);
    }
    DEV_ASSERT(position == heapEnd && cursor == nullptr, "GPAllocator: blocks do not tile the heap.");
    if (mThreadSafe) {
        mCriticalSection.leave();
    }
}

// ---------------------------------------------------------------------------
// InstantAllocator

InstantAllocator::InstantAllocator(u32 heapSize, char const* name, AllocatorBase* parent, bool threadSafe)
    : AllocatorBase(heapSize, name, parent, threadSafe), mFront(0), mBack(static_cast<int>(heapSize))
{
}

void* InstantAllocator::allocate(int size, unsigned int alignment)
{
    if (alignment == 0) {
        alignment = 1;
    }
    int offset;
    if (size >= 0) {
        int const bytes = alignment > 1 ? static_cast<int>(align(static_cast<u32>(size), alignment)) : size;
        if (mThreadSafe) {
            offset = mFront.add(bytes);
        } else {
            offset = mFront.get();
            mFront.setDirect(offset + bytes);
        }
        // Checked after the addition, so that job threads never wait.
        if (static_cast<s64>(offset) + bytes > mBack.get()) {
            dev_assert("This allocator do not have enough memory.", __FILE__, __LINE__);
        }
    } else {
        int const bytes = alignment > 1 ? -static_cast<int>(align(getAbsolute(size), alignment)) : size;
        if (mThreadSafe) {
            offset = mBack.add(bytes) + bytes;
        } else {
            offset = mBack.get() + bytes;
            mBack.setDirect(offset);
        }
        if (mFront.get() > offset) {
            dev_assert("This allocator do not have enough memory.", __FILE__, __LINE__);
        }
    }
    return align(static_cast<u8*>(mpHeap) + offset, alignment);
}

void InstantAllocator::deallocate(void*)
{
}

// A heap of one thread at a time (a draw context's) is cleared once per
// flush: plain stores there, the locked exchange only where threads share it.
void InstantAllocator::clear()
{
    if (mThreadSafe) {
        mFront.set(0);
        mBack.set(static_cast<int>(mHeapSize));
    } else {
        mFront.setDirect(0);
        mBack.setDirect(static_cast<int>(mHeapSize));
    }
}

u32 InstantAllocator::getUsedSize()
{
    return static_cast<u32>(mFront.get()) + mHeapSize - static_cast<u32>(mBack.get());
}

// ---------------------------------------------------------------------------
// BlockAllocator

BlockAllocator::BlockAllocator(u32 blockSize, u32 blockNum, char const* name, AllocatorBase* parent, bool threadSafe)
    : AllocatorBase(align(blockSize, 16) * blockNum, name, parent, threadSafe), mBlockSize(align(blockSize, 16)),
      mBlockNum(blockNum), mpStack(nullptr), mpStackTop(nullptr)
{
    u32 const stackBytes = blockNum * static_cast<u32>(sizeof(u32));
    if (parent != nullptr) {
        mpStack = static_cast<u32*>(parent->allocate(static_cast<int>(stackBytes), 4));
    } else {
        mpStack = new u32[blockNum];
    }
    DEV_ASSERT(mpStack != nullptr, "Not enough memory.");
    fillStack();
}

BlockAllocator::~BlockAllocator()
{
    if (getFreeNum() != mBlockNum) {
        DEV_TRACE("%s : leak detected.\n", mpName);
        dev_assert("Memory leak detected.", __FILE__, __LINE__);
    }
    if (mpParent != nullptr) {
        mpParent->deallocate(mpStack);
    } else {
        delete[] mpStack;
    }
}

// Ascending, so that the first allocation yields the highest block.
void BlockAllocator::fillStack()
{
    for (u32 i = 0; i < mBlockNum; ++i) {
        mpStack[i] = i * mBlockSize;
    }
    mpStackTop = mpStack + mBlockNum;
}

u32 BlockAllocator::getFreeNum()
{
    if (mThreadSafe) {
        mSpinLock.lock();
    }
    u32 const count = static_cast<u32>(mpStackTop - mpStack);
    if (mThreadSafe) {
        mSpinLock.unlock();
    }
    return count;
}

void* BlockAllocator::allocate(int size, unsigned int)
{
    if (getAbsolute(size) > mBlockSize) {
        dev_assert("Requested size is larger than block size.", __FILE__, __LINE__);
    }
    if (mThreadSafe) {
        mSpinLock.lock();
    }
    if (mpStackTop == mpStack) {
        if (mThreadSafe) {
            mSpinLock.unlock();
        }
        DEV_TRACE("BlockAllocator : Stack underflow.\n");
        return nullptr;
    }
    u32 const offset = *--mpStackTop;
    if (mThreadSafe) {
        mSpinLock.unlock();
    }
    return static_cast<u8*>(mpHeap) + offset;
}

void BlockAllocator::deallocate(void* pointer)
{
    if (pointer == nullptr) {
        return;
    }
    u8* const block = static_cast<u8*>(pointer);
    u8* const heap = static_cast<u8*>(mpHeap);
    if (block < heap || block >= heap + mHeapSize || static_cast<u32>(block - heap) % mBlockSize != 0) {
        dev_assert("Deallocation block does not exist.", __FILE__, __LINE__);
    }
    if (mThreadSafe) {
        mSpinLock.lock();
    }
    *mpStackTop++ = static_cast<u32>(block - heap);
    if (mThreadSafe) {
        mSpinLock.unlock();
    }
}

void BlockAllocator::clear()
{
    if (getFreeNum() != mBlockNum) {
        dev_assert("Memory leak detected.", __FILE__, __LINE__);
    }
    fillStack();
}

u32 BlockAllocator::getUsedSize()
{
    return mBlockSize * (mBlockNum - getFreeNum());
}
