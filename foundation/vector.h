// Vector<T>: an array of pointers the caller owns. Minimal form for the frame
// spine; the full vector with its growth and removal rules replaces it.
#pragma once

#include <vector>

#include "foundation/types.h"

template <typename T>
class Vector {
public:
    explicit Vector(u32 capacity = 0) { mValues.reserve(capacity); }
    void reserve(u32 capacity) { mValues.reserve(capacity); }
    void addLast(T* value) { mValues.push_back(value); }
    T*& operator[](u32 index) { return mValues[index]; }
    T* operator[](u32 index) const { return mValues[index]; }
    u32 size() const { return static_cast<u32>(mValues.size()); }
    bool empty() const { return mValues.empty(); }
    void clear() { mValues.clear(); }

private:
    std::vector<T*> mValues;
};
