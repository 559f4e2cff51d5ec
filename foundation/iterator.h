// Iterators of the pointer containers. Each holds one pointer: a node for the
// linked forms (null is the end, so end() of any list is null), a slot for
// arrays. Dereferencing gives the stored T*. Not thread safe; an iterator is as
// valid as the node or slot it holds (List::reserve moves every node).
#pragma once

#include "foundation/types.h"

template <typename T>
struct sLinkNode {
    sLinkNode* mpPrevious;
    sLinkNode* mpNext;
    T* mpValue;
};

template <typename T>
class List;
template <typename T>
class Queue;

// Forward over nodes. Stepping off either end gives null and stays there.
template <typename T>
class LinkIterator {
public:
    LinkIterator() : mpNode(nullptr) {}
    explicit LinkIterator(sLinkNode<T>* node) : mpNode(node) {}

    T* operator*() const { return mpNode->mpValue; }
    T* operator->() const { return mpNode->mpValue; }

    LinkIterator& operator++()
    {
        if (mpNode != nullptr) {
            mpNode = mpNode->mpNext;
        }
        return *this;
    }
    LinkIterator operator++(int)
    {
        LinkIterator old = *this;
        ++*this;
        return old;
    }
    LinkIterator& operator--()
    {
        if (mpNode != nullptr) {
            mpNode = mpNode->mpPrevious;
        }
        return *this;
    }
    LinkIterator operator--(int)
    {
        LinkIterator old = *this;
        --*this;
        return old;
    }
    // Steps forward and stops at null. A negative count does not step at all.
    LinkIterator& operator+=(int count)
    {
        for (int i = 0; i < count && mpNode != nullptr; ++i) {
            mpNode = mpNode->mpNext;
        }
        return *this;
    }
    LinkIterator operator+(int count) const
    {
        LinkIterator result = *this;
        result += count;
        return result;
    }
    // Steps from other forward until this node (or the end) is reached.
    int operator-(LinkIterator const& other) const
    {
        int distance = 0;
        for (sLinkNode<T>* node = other.mpNode; node != mpNode && node != nullptr; node = node->mpNext) {
            ++distance;
        }
        return distance;
    }

    bool operator==(LinkIterator const& other) const { return mpNode == other.mpNode; }
    bool operator!=(LinkIterator const& other) const { return mpNode != other.mpNode; }

    sLinkNode<T>* getNode() const { return mpNode; }

private:
    sLinkNode<T>* mpNode;
};

// Backward over nodes: ++ goes to the previous node.
template <typename T>
class ReverseLinkIterator {
public:
    ReverseLinkIterator() : mpNode(nullptr) {}
    explicit ReverseLinkIterator(sLinkNode<T>* node) : mpNode(node) {}

    T* operator*() const { return mpNode->mpValue; }
    T* operator->() const { return mpNode->mpValue; }

    ReverseLinkIterator& operator++()
    {
        if (mpNode != nullptr) {
            mpNode = mpNode->mpPrevious;
        }
        return *this;
    }
    ReverseLinkIterator operator++(int)
    {
        ReverseLinkIterator old = *this;
        ++*this;
        return old;
    }
    ReverseLinkIterator& operator--()
    {
        if (mpNode != nullptr) {
            mpNode = mpNode->mpNext;
        }
        return *this;
    }
    ReverseLinkIterator operator--(int)
    {
        ReverseLinkIterator old = *this;
        --*this;
        return old;
    }
    ReverseLinkIterator& operator+=(int count)
    {
        for (int i = 0; i < count && mpNode != nullptr; ++i) {
            mpNode = mpNode->mpPrevious;
        }
        return *this;
    }
    ReverseLinkIterator operator+(int count) const
    {
        ReverseLinkIterator result = *this;
        result += count;
        return result;
    }
    int operator-(ReverseLinkIterator const& other) const
    {
        int distance = 0;
        for (sLinkNode<T>* node = other.mpNode; node != mpNode && node != nullptr; node = node->mpPrevious) {
            ++distance;
        }
        return distance;
    }

    bool operator==(ReverseLinkIterator const& other) const { return mpNode == other.mpNode; }
    bool operator!=(ReverseLinkIterator const& other) const { return mpNode != other.mpNode; }

    sLinkNode<T>* getNode() const { return mpNode; }

private:
    sLinkNode<T>* mpNode;
};

// Over the slots of an array of T*.
template <typename T>
class ArrayIterator {
public:
    ArrayIterator() : mpSlot(nullptr) {}
    explicit ArrayIterator(T** slot) : mpSlot(slot) {}

    T* operator*() const { return *mpSlot; }
    T* operator->() const { return *mpSlot; }

    ArrayIterator& operator++()
    {
        ++mpSlot;
        return *this;
    }
    ArrayIterator operator++(int)
    {
        ArrayIterator old = *this;
        ++mpSlot;
        return old;
    }
    ArrayIterator& operator--()
    {
        --mpSlot;
        return *this;
    }
    ArrayIterator operator--(int)
    {
        ArrayIterator old = *this;
        --mpSlot;
        return old;
    }
    ArrayIterator& operator+=(int count)
    {
        mpSlot += count;
        return *this;
    }
    ArrayIterator operator+(int count) const { return ArrayIterator(mpSlot + count); }
    int operator-(ArrayIterator const& other) const { return static_cast<int>(mpSlot - other.mpSlot); }

    bool operator==(ArrayIterator const& other) const { return mpSlot == other.mpSlot; }
    bool operator!=(ArrayIterator const& other) const { return mpSlot != other.mpSlot; }
    bool operator<(ArrayIterator const& other) const { return mpSlot < other.mpSlot; }

    T** getSlot() const { return mpSlot; }

private:
    T** mpSlot;
};
