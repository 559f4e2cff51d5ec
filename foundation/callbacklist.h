// CallbackList: a fixed table of plain callbacks, each a function with the
// object it was registered for, called in the order of their rank (equal
// ranks in the order of registration). Lets a lower layer call code above it
// that registered itself, without knowing its class. Nothing is allocated; a
// full table is fatal. Not locked: registration and calls on one thread.
#pragma once

#include "foundation/debug.h"
#include "foundation/types.h"

template <typename Arg, u32 Capacity>
class CallbackList {
public:
    typedef void (*Function)(void* object, Arg argument);

    // The function that calls a member of T: CallbackList::member<T, &T::f>.
    template <typename T, void (T::*Method)(Arg)>
    static void member(void* object, Arg argument)
    {
        (static_cast<T*>(object)->*Method)(argument);
    }

    CallbackList() : mNum(0) {}

    void add(Function function, void* object, u32 rank = 0)
    {
        DEV_ASSERT(mNum < Capacity, "CallbackList is full.");
        u32 at = mNum;
        while (at > 0 && mEntry[at - 1].mRank > rank) {
            mEntry[at] = mEntry[at - 1];
            --at;
        }
        mEntry[at] = sEntry{function, object, rank};
        ++mNum;
    }

    // Every entry of the object goes.
    void remove(void* object)
    {
        u32 kept = 0;
        for (u32 i = 0; i < mNum; ++i) {
            if (mEntry[i].mpObject != object) {
                mEntry[kept++] = mEntry[i];
            }
        }
        mNum = kept;
    }

    void call(Arg argument) const
    {
        for (u32 i = 0; i < mNum; ++i) {
            mEntry[i].mFunction(mEntry[i].mpObject, argument);
        }
    }

    u32 size() const { return mNum; }

private:
    struct sEntry {
        Function mFunction;
        void* mpObject;
        u32 mRank;
    };

    sEntry mEntry[Capacity];
    u32 mNum;
};
