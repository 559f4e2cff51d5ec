// List<T>: a list of pointers the caller owns. Minimal form for the frame
// spine (append, walk, remove during a walk); the full node-array list with
// its growth rules replaces it.
#pragma once

#include <list>

#include "foundation/types.h"

template <typename T>
class List;

template <typename T>
class LinkIterator {
public:
    LinkIterator() : mpList(nullptr) {}
    T* operator*() const { return *mIterator; }
    LinkIterator& operator++()
    {
        if (mpList != nullptr && mIterator != mpList->end()) {
            ++mIterator;
        }
        return *this;
    }
    bool operator==(LinkIterator const& other) const { return mIterator == other.mIterator; }
    bool operator!=(LinkIterator const& other) const { return !(*this == other); }

private:
    friend class List<T>;
    typename std::list<T*>::iterator mIterator;
    std::list<T*>* mpList;
};

template <typename T>
class List {
public:
    typedef LinkIterator<T> Iterator;

    explicit List(u32 capacity = 0) { (void)capacity; }
    void reserve(u32 capacity) { (void)capacity; }
    void addLast(T* value) { mValues.push_back(value); }
    void addFirst(T* value) { mValues.push_front(value); }
    Iterator begin() { return make(mValues.begin()); }
    Iterator end() { return make(mValues.end()); }
    Iterator remove(Iterator it)
    {
        if (it.mIterator == mValues.end()) {
            return it;
        }
        return make(mValues.erase(it.mIterator));
    }
    Iterator find(T const* value)
    {
        for (auto it = mValues.begin(); it != mValues.end(); ++it) {
            if (*it == value) {
                return make(it);
            }
        }
        return end();
    }
    void remove(T* value) { remove(find(value)); }
    u32 size() const { return static_cast<u32>(mValues.size()); }
    bool empty() const { return mValues.empty(); }
    void clear() { mValues.clear(); }

private:
    Iterator make(typename std::list<T*>::iterator it)
    {
        Iterator result;
        result.mIterator = it;
        result.mpList = &mValues;
        return result;
    }
    std::list<T*> mValues;
};
