// Stack<T>: a last-in first-out array of pointers the caller owns. Starts with
// 16 slots and doubles when full. Not thread safe: one owner.
#pragma once

#include <cstring>

#include "foundation/debug.h"
#include "foundation/types.h"

template <typename T>
class Stack {
public:
    Stack() : mCapacity(16), mpBase(new T*[16]), mpTop(mpBase) {}
    ~Stack() { delete[] mpBase; }

    Stack(Stack const&) = delete;
    Stack& operator=(Stack const&) = delete;

    // 0 means 1.
    void reserve(u32 capacity)
    {
        if (capacity == 0) {
            capacity = 1;
        }
        u32 count = size();
        if (count > capacity) {
            dev_assert("Not enough size to copy elements.", __FILE__, __LINE__);
        }
        T** base = new T*[capacity];
        if (count != 0) {
            memcpy(static_cast<void*>(base), mpBase, count * sizeof(T*));
        }
        delete[] mpBase;
        mpBase = base;
        mpTop = base + count;
        mCapacity = capacity;
    }

    void push(T* value)
    {
        if (size() == mCapacity) {
            reserve(mCapacity * 2);
        }
        *mpTop++ = value;
    }
    T* pop()
    {
        if (mpTop == mpBase) {
            dev_assert("Stack underflow.", __FILE__, __LINE__);
        }
        return *--mpTop;
    }
    bool empty() const { return mpTop == mpBase; }
    u32 size() const { return static_cast<u32>(mpTop - mpBase); }
    void clear() { mpTop = mpBase; }

private:
    u32 mCapacity;
    T** mpBase;
    T** mpTop;
};
