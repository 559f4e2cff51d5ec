// Threads and synchronisation. Minimal forms for the frame spine (a re-entrant
// lock and sleeping); the full set of primitives replaces them.
#pragma once

#include <mutex>

#include "foundation/types.h"

class CriticalSection {
public:
    void enter() { mMutex.lock(); }
    bool tryEnter() { return mMutex.try_lock(); }
    void leave() { mMutex.unlock(); }

private:
    std::recursive_mutex mMutex;
};

class Thread {
public:
    static void sleep(u32 milliseconds);
    static void yield();
};
