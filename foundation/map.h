// Map<T>: pointers the caller owns, keyed by a u32 id, in one array sorted by
// id. Look-up is a binary search with constant-time hits at both ends, since
// ids usually come in rising order (and then add never moves an entry). Id 0
// is reserved. Storage is the plain global array new[]. Not thread safe.
#pragma once

#include <cstring>

#include "foundation/debug.h"
#include "foundation/types.h"

template <typename T>
class Map {
public:
    struct sEntryTag {
        T* mpValue;
        u32 mId;
    };

    // Walks the entries by ascending id.
    class Iterator {
    public:
        Iterator() : mpEntry(nullptr) {}
        explicit Iterator(sEntryTag* entry) : mpEntry(entry) {}

        T* operator*() const { return mpEntry->mpValue; }
        T* operator->() const { return mpEntry->mpValue; }
        u32 getId() const { return mpEntry->mId; }

        Iterator& operator++()
        {
            ++mpEntry;
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator old = *this;
            ++mpEntry;
            return old;
        }
        Iterator& operator--()
        {
            --mpEntry;
            return *this;
        }
        bool operator==(Iterator const& other) const { return mpEntry == other.mpEntry; }
        bool operator!=(Iterator const& other) const { return mpEntry != other.mpEntry; }

    private:
        sEntryTag* mpEntry;
    };

    explicit Map(u32 capacity = 0) : mpEntries(nullptr), mMinId(0), mMaxId(0), mSize(0), mCapacity(0)
    {
        if (capacity != 0) {
            reserve(capacity);
        }
    }
    ~Map() { delete[] mpEntries; }

    Map(Map const&) = delete;
    Map& operator=(Map const&) = delete;

    void reserve(u32 capacity)
    {
        if (mSize > capacity) {
            dev_assert("Invalid size.", __FILE__, __LINE__);
        }
        sEntryTag* entries = nullptr;
        if (capacity != 0) {
            entries = new sEntryTag[capacity];
            if (mSize != 0) {
                memcpy(static_cast<void*>(entries), mpEntries, mSize * sizeof(sEntryTag));
            }
        }
        delete[] mpEntries;
        mpEntries = entries;
        mCapacity = capacity;
    }

    void add(T* value, u32 id)
    {
        if (id == 0) {
            dev_assert("ID number 0 is reserved.", __FILE__, __LINE__);
        }
        if (mpEntries == nullptr) {
            reserve(16);
        } else if (mSize == mCapacity) {
            reserve(mCapacity * 2);
        }
        u32 position;
        if (mSize == 0) {
            position = 0;
            mMinId = id;
            mMaxId = id;
        } else if (id < mMinId) {
            position = 0;
            mMinId = id;
        } else if (id > mMaxId) {
            position = mSize;
            mMaxId = id;
        } else {
            position = findNearest(id);
            if (mpEntries[position].mId == id) {
                dev_assert("ID number conflict.", __FILE__, __LINE__);
            }
        }
        if (position < mSize) {
            memmove(static_cast<void*>(mpEntries + position + 1), mpEntries + position,
                    (mSize - position) * sizeof(sEntryTag));
        }
        mpEntries[position].mpValue = value;
        mpEntries[position].mId = id;
        ++mSize;
    }

    T* find(u32 id) const
    {
        if (mSize == 0 || id < mMinId || id > mMaxId) {
            return nullptr;
        }
        if (id == mMinId) {
            return mpEntries[0].mpValue;
        }
        if (id == mMaxId) {
            return mpEntries[mSize - 1].mpValue;
        }
        sEntryTag const& entry = mpEntries[findNearest(id)];
        return (entry.mId == id) ? entry.mpValue : nullptr;
    }

    // The index of the entry with this id; for a missing id between the ends,
    // the index where it would be inserted. 0 for an empty map.
    u32 findNearest(u32 id) const
    {
        if (mSize == 0) {
            return 0;
        }
        u32 low = 0;
        u32 high = mSize - 1;
        u32 mid = high / 2;
        while (high - low > 1) {
            u32 midId = mpEntries[mid].mId;
            if (midId == id) {
                return mid;
            }
            if (midId > id) {
                high = mid;
            } else {
                low = mid;
            }
            mid = (high + low) / 2;
        }
        return (mpEntries[low].mId == id) ? low : high;
    }

    // An emptied map keeps its old bounds; add() sets them afresh.
    void remove(u32 id)
    {
        if (mSize == 0 || id < mMinId || id > mMaxId) {
            return;
        }
        u32 position = findNearest(id);
        if (mpEntries[position].mId != id) {
            return;
        }
        --mSize;
        if (position < mSize) {
            memmove(static_cast<void*>(mpEntries + position), mpEntries + position + 1,
                    (mSize - position) * sizeof(sEntryTag));
        }
        if (mSize != 0) {
            mMinId = mpEntries[0].mId;
            mMaxId = mpEntries[mSize - 1].mId;
        }
    }

    u32 size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    Iterator begin() const { return Iterator(mpEntries); }
    Iterator end() const { return Iterator(mpEntries + mSize); }

private:
    sEntryTag* mpEntries;
    u32 mMinId;
    u32 mMaxId;
    u32 mSize;
    u32 mCapacity;
};
