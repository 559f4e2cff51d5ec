// Queue<T>: a first-in first-out ring of pointers the caller owns. Equal read
// and write positions mean empty, so a ring of n nodes holds at most n - 1
// unread entries: the n-th makes the queue read as empty, and the growth in
// push() can never fire. Owners reserve more than they will ever have waiting.
// Not thread safe: one owner.
#pragma once

#include "foundation/debug.h"
#include "foundation/iterator.h"
#include "foundation/types.h"

template <typename T>
class Queue {
public:
    typedef LinkIterator<T> Iterator;

    Queue() : mCapacity(0), mpNodes(nullptr), mpWrite(nullptr), mpRead(nullptr) { reserve(16); }
    ~Queue() { delete[] mpNodes; }

    Queue(Queue const&) = delete;
    Queue& operator=(Queue const&) = delete;

    void reserve(u32 capacity)
    {
        u32 count = size();
        // A ring needs at least one node for its write position.
        if (capacity < count || capacity == 0) {
            dev_assert("Invalid size.", __FILE__, __LINE__);
        }
        sLinkNode<T>* nodes = new sLinkNode<T>[capacity];
        for (u32 i = 0; i < capacity; ++i) {
            nodes[i].mpPrevious = &nodes[(i + capacity - 1) % capacity];
            nodes[i].mpNext = &nodes[(i + 1) % capacity];
            nodes[i].mpValue = nullptr;
        }
        u32 copied = 0;
        for (sLinkNode<T>* node = mpRead; node != mpWrite; node = node->mpNext) {
            // The write position must stay distinct from the read position.
            if (copied + 1 >= capacity) {
                dev_assert("Not enough size to copy elements.", __FILE__, __LINE__);
            }
            nodes[copied++].mpValue = node->mpValue;
        }
        delete[] mpNodes;
        mpNodes = nodes;
        mpRead = &nodes[0];
        mpWrite = &nodes[copied];
        mCapacity = capacity;
    }

    void push(T* value)
    {
        mpWrite->mpValue = value;
        mpWrite = mpWrite->mpNext;
        // Unreachable by construction (see the header); kept as the rule says.
        if (size() == mCapacity) {
            reserve(mCapacity * 2);
        }
    }
    T* pop()
    {
        if (mpRead == mpWrite) {
            dev_assert("Queue underflow.", __FILE__, __LINE__);
        }
        T* value = mpRead->mpValue;
        mpRead = mpRead->mpNext;
        return value;
    }

    // Distance from read to write around the ring.
    u32 size() const
    {
        if (mpNodes == nullptr) {
            return 0;
        }
        u32 write = static_cast<u32>(mpWrite - mpNodes);
        u32 read = static_cast<u32>(mpRead - mpNodes);
        return (write + mCapacity - read) % mCapacity;
    }
    bool empty() const { return mpRead == mpWrite; }

    // From the oldest unread entry up to the write position.
    Iterator begin() const { return Iterator(mpRead); }
    Iterator end() const { return Iterator(mpWrite); }

private:
    u32 mCapacity;
    sLinkNode<T>* mpNodes;
    sLinkNode<T>* mpWrite;
    sLinkNode<T>* mpRead;
};
