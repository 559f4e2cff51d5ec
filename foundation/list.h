// List<T>: a doubly linked list of pointers the caller owns; it never deletes
// them. All nodes lie in one array, so insertion and removal only relink and
// allocate nothing while free nodes remain. Only reserve() (and growth through
// it) moves nodes and invalidates iterators. Not thread safe: one owner.
#pragma once

#include "foundation/debug.h"
#include "foundation/iterator.h"
#include "foundation/types.h"

template <typename T>
class List {
public:
    typedef LinkIterator<T> Iterator;
    typedef ReverseLinkIterator<T> ReverseIterator;

    // A capacity of 0 allocates nothing until the first insertion.
    explicit List(u32 capacity = 0)
        : mpNodes(nullptr), mpFirst(nullptr), mpLast(nullptr), mpFree(nullptr), mSize(0), mCapacity(0)
    {
        if (capacity != 0) {
            reserve(capacity);
        }
    }
    ~List() { delete[] mpNodes; }

    List(List const&) = delete;
    List& operator=(List const&) = delete;

    // Moves the entries, in list order, into the first nodes of a new array
    // and chains the rest as free nodes. 0 releases the array.
    void reserve(u32 capacity)
    {
        if (mSize > capacity) {
            dev_assert("Invalid size.", __FILE__, __LINE__);
        }
        if (capacity == mCapacity) {
            return;
        }
        sLinkNode<T>* nodes = nullptr;
        sLinkNode<T>* first = nullptr;
        sLinkNode<T>* last = nullptr;
        sLinkNode<T>* free = nullptr;
        if (capacity != 0) {
            nodes = new sLinkNode<T>[capacity];
            u32 index = 0;
            for (sLinkNode<T>* node = mpFirst; node != nullptr; node = node->mpNext, ++index) {
                nodes[index].mpValue = node->mpValue;
                nodes[index].mpPrevious = (index == 0) ? nullptr : &nodes[index - 1];
                nodes[index].mpNext = (index + 1 == mSize) ? nullptr : &nodes[index + 1];
            }
            if (mSize != 0) {
                first = &nodes[0];
                last = &nodes[mSize - 1];
            }
            free = chainFree(nodes, mSize, capacity);
        }
        delete[] mpNodes;
        mpNodes = nodes;
        mpFirst = first;
        mpLast = last;
        mpFree = free;
        mCapacity = capacity;
    }

    // The node is taken first: growth moves every node, mpLast and mpFirst
    // included, so they are read only afterwards.
    void addLast(T* value)
    {
        sLinkNode<T>* node = takeNode(value);
        linkBehind(mpLast, node);
    }
    void addFirst(T* value)
    {
        sLinkNode<T>* node = takeNode(value);
        linkBefore(mpFirst, node);
    }

    // Before the node; at end() this is addLast.
    void insertFront(Iterator position, T* value)
    {
        if (position == end()) {
            addLast(value);
            return;
        }
        sLinkNode<T>* node = position.getNode();
        sLinkNode<T>* fresh = takeNode(value, &node);
        linkBefore(node, fresh);
    }
    // Behind the node; at end() this is addLast.
    void insertBackFront(Iterator position, T* value)
    {
        if (position == end()) {
            addLast(value);
            return;
        }
        sLinkNode<T>* node = position.getNode();
        sLinkNode<T>* fresh = takeNode(value, &node);
        linkBehind(node, fresh);
    }
    // Behind the node in forward order; at rend() this is addFirst.
    void insertFront(ReverseIterator position, T* value)
    {
        if (position == rend()) {
            addFirst(value);
            return;
        }
        sLinkNode<T>* node = position.getNode();
        sLinkNode<T>* fresh = takeNode(value, &node);
        linkBehind(node, fresh);
    }
    // Before the node in forward order; at rend() this is addFirst.
    void insertBackFront(ReverseIterator position, T* value)
    {
        if (position == rend()) {
            addFirst(value);
            return;
        }
        sLinkNode<T>* node = position.getNode();
        sLinkNode<T>* fresh = takeNode(value, &node);
        linkBefore(node, fresh);
    }

    // Returns the node behind the removed one. end() is ignored.
    Iterator remove(Iterator position)
    {
        sLinkNode<T>* node = position.getNode();
        if (node == nullptr) {
            return position;
        }
        sLinkNode<T>* next = node->mpNext;
        unlink(node);
        return Iterator(next);
    }
    // Returns the node in front of the removed one (the next in reverse).
    ReverseIterator remove(ReverseIterator position)
    {
        sLinkNode<T>* node = position.getNode();
        if (node == nullptr) {
            return position;
        }
        sLinkNode<T>* previous = node->mpPrevious;
        unlink(node);
        return ReverseIterator(previous);
    }
    Iterator remove(T* value) { return remove(find(value)); }

    Iterator find(T const* value) const
    {
        for (sLinkNode<T>* node = mpFirst; node != nullptr; node = node->mpNext) {
            if (node->mpValue == value) {
                return Iterator(node);
            }
        }
        return Iterator();
    }

    // Linear. An index past the end dereferences null.
    T* operator[](u32 index) const { return *(begin() + static_cast<int>(index)); }

    Iterator begin() const { return Iterator(mpFirst); }
    Iterator end() const { return Iterator(); }
    ReverseIterator rbegin() const { return ReverseIterator(mpLast); }
    ReverseIterator rend() const { return ReverseIterator(); }
    u32 size() const { return mSize; }
    u32 getCapacity() const { return mCapacity; }
    bool empty() const { return mSize == 0; }

    // Keeps the array; the free chain is rebuilt in array order.
    void clear()
    {
        if (mpNodes == nullptr) {
            return;
        }
        mpFirst = nullptr;
        mpLast = nullptr;
        mSize = 0;
        mpFree = chainFree(mpNodes, 0, mCapacity);
    }

private:
    static sLinkNode<T>* chainFree(sLinkNode<T>* nodes, u32 from, u32 capacity)
    {
        for (u32 i = from; i < capacity; ++i) {
            nodes[i].mpPrevious = nullptr;
            nodes[i].mpNext = (i + 1 < capacity) ? &nodes[i + 1] : nullptr;
            nodes[i].mpValue = nullptr;
        }
        return (from < capacity) ? &nodes[from] : nullptr;
    }

    // Takes a free node, growing first when none is left. Growth compacts the
    // array, so a node the caller holds (anchor) is looked up again by its
    // position in the list.
    sLinkNode<T>* takeNode(T* value, sLinkNode<T>** anchor = nullptr)
    {
        if (mpNodes == nullptr || mpFree == nullptr) {
            u32 anchorIndex = 0;
            if (anchor != nullptr) {
                for (sLinkNode<T>* node = mpFirst; node != *anchor; node = node->mpNext) {
                    ++anchorIndex;
                }
            }
            reserve((mpNodes == nullptr) ? 16 : mCapacity + 16);
            if (anchor != nullptr) {
                *anchor = &mpNodes[anchorIndex];
            }
        }
        sLinkNode<T>* node = mpFree;
        mpFree = node->mpNext;
        node->mpValue = value;
        node->mpPrevious = nullptr;
        node->mpNext = nullptr;
        ++mSize;
        return node;
    }

    // anchor null: the list is empty or the node becomes the first.
    void linkBefore(sLinkNode<T>* anchor, sLinkNode<T>* node)
    {
        if (anchor == nullptr) {
            node->mpNext = mpFirst;
            if (mpFirst != nullptr) {
                mpFirst->mpPrevious = node;
            }
            mpFirst = node;
            if (mpLast == nullptr) {
                mpLast = node;
            }
            return;
        }
        node->mpNext = anchor;
        node->mpPrevious = anchor->mpPrevious;
        if (anchor->mpPrevious != nullptr) {
            anchor->mpPrevious->mpNext = node;
        } else {
            mpFirst = node;
        }
        anchor->mpPrevious = node;
    }

    // anchor null: the list is empty or the node becomes the last.
    void linkBehind(sLinkNode<T>* anchor, sLinkNode<T>* node)
    {
        if (anchor == nullptr) {
            node->mpPrevious = mpLast;
            if (mpLast != nullptr) {
                mpLast->mpNext = node;
            }
            mpLast = node;
            if (mpFirst == nullptr) {
                mpFirst = node;
            }
            return;
        }
        node->mpPrevious = anchor;
        node->mpNext = anchor->mpNext;
        if (anchor->mpNext != nullptr) {
            anchor->mpNext->mpPrevious = node;
        } else {
            mpLast = node;
        }
        anchor->mpNext = node;
    }

    void unlink(sLinkNode<T>* node)
    {
        if (node->mpPrevious != nullptr) {
            node->mpPrevious->mpNext = node->mpNext;
        } else {
            mpFirst = node->mpNext;
        }
        if (node->mpNext != nullptr) {
            node->mpNext->mpPrevious = node->mpPrevious;
        } else {
            mpLast = node->mpPrevious;
        }
        node->mpPrevious = nullptr;
        node->mpValue = nullptr;
        node->mpNext = mpFree;
        mpFree = node;
        --mSize;
    }

    sLinkNode<T>* mpNodes;
    sLinkNode<T>* mpFirst;
    sLinkNode<T>* mpLast;
    sLinkNode<T>* mpFree;
    u32 mSize;
    u32 mCapacity;
};
