// Threads and synchronisation: Atomic, CriticalSection (re-entrant), Event
// (auto-reset), Semaphore (bounded), SpinLock and the abstract Thread. Built on
// the C++ standard library; native threads come from platform/thread. Every
// object here may be used from any thread once constructed.
#pragma once

#include <atomic>

#include "foundation/types.h"

// One 32-bit integer. Atomic operations carry a full barrier; get() and
// setDirect() are for data with a single writer at that moment.
class Atomic {
public:
    explicit Atomic(int initial = 0) : mValue(initial) {}

    int get() const { return mValue.load(std::memory_order_relaxed); }
    void setDirect(int value) { mValue.store(value, std::memory_order_relaxed); }
    // Exchange; returns the old value.
    int set(int value) { return mValue.exchange(value); }
    bool compareAndSet(int expected, int value) { return mValue.compare_exchange_strong(expected, value); }
    // All of these return the value before the operation.
    int add(int value) { return mValue.fetch_add(value); }
    int sub(int value) { return mValue.fetch_sub(value); }
    int increment() { return mValue.fetch_add(1); }
    int decrement() { return mValue.fetch_sub(1); }

private:
    std::atomic<int> mValue;
};

// A bounded count on one futex word. signal() makes a system call only when
// a thread is asleep in wait(); a waiter that spins first takes a signal
// that comes soon without sleeping at all.
class Semaphore {
public:
    Semaphore(u32 maximum, u32 initial);
    // False when the count is already at its maximum (the signal is lost).
    bool signal();
    // Waits without limit; true once a count was taken.
    bool wait() { return waitSpinning(0); }
    // The same, polling the count for up to spinMicroseconds before sleeping.
    bool waitSpinning(u32 spinMicroseconds);
    // Takes back a count that no waiter has taken, so that a signal can be
    // undone: a waiter that is polling (not asleep) gets up to
    // graceMicroseconds to take it first. True when the count was taken back.
    bool withdraw(u32 graceMicroseconds);

private:
    bool tryTake();

    std::atomic<u32> mCount;
    std::atomic<u32> mSleepers;
    u32 mMaximum;
};

// Re-entrant: the owning thread may enter again and must leave as often.
// An uncontended enter or leave is one atomic operation on mCount (threads
// holding or waiting); only contention goes through the semaphore.
class CriticalSection {
public:
    CriticalSection() : mCount(0), mpOwner(nullptr), mDepth(0), mSemaphore(0x7FFFFFFF, 0) {}

    void enter()
    {
        void const* self = getThreadToken();
        if (mpOwner.load(std::memory_order_relaxed) == self) {
            ++mDepth;
            return;
        }
        if (mCount.fetch_add(1, std::memory_order_acquire) != 0) {
            mSemaphore.wait();
        }
        mpOwner.store(self, std::memory_order_relaxed);
        mDepth = 1;
    }
    bool tryEnter()
    {
        void const* self = getThreadToken();
        if (mpOwner.load(std::memory_order_relaxed) == self) {
            ++mDepth;
            return true;
        }
        int expected = 0;
        if (!mCount.compare_exchange_strong(expected, 1, std::memory_order_acquire)) {
            return false;
        }
        mpOwner.store(self, std::memory_order_relaxed);
        mDepth = 1;
        return true;
    }
    void leave()
    {
        if (--mDepth != 0) {
            return;
        }
        mpOwner.store(nullptr, std::memory_order_relaxed);
        if (mCount.fetch_sub(1, std::memory_order_release) != 1) {
            mSemaphore.signal(); // hand over to one waiter
        }
    }

private:
    // One distinct address per thread.
    static void const* getThreadToken()
    {
        static thread_local char sToken;
        return &sToken;
    }

    std::atomic<int> mCount;
    std::atomic<void const*> mpOwner;
    int mDepth;
    Semaphore mSemaphore;
};

// Auto-reset: one waiter takes a set() and the event is clear again. Like
// Semaphore, set() makes a system call only when a waiter sleeps.
class Event {
public:
    Event();
    void set();
    // 0 when signalled, 1 on time-out. Time-outs above 0x7FFFFFFE ms are
    // used as 0x7FFFFFFE, so "0xFFFFFFFF" waits some 24 days, not for ever.
    int wait(u32 milliseconds) { return waitSpinning(milliseconds, 0); }
    // The same, polling for up to spinMicroseconds before sleeping.
    int waitSpinning(u32 milliseconds, u32 spinMicroseconds);

private:
    std::atomic<u32> mSignalled;
    std::atomic<u32> mSleepers;
};

// For sections of a few instructions only (the block allocator's stack).
class SpinLock {
public:
    SpinLock() : mWord(0) {}
    // The first try is inline: an uncontended lock is one compare-and-swap.
    void lock()
    {
        u32 expected = 0;
        if (!mWord.compare_exchange_strong(expected, 4, std::memory_order_acquire)) {
            lockContended();
        }
    }
    // Clearing the word is all an atomic AND with 0 does; a release store
    // does it without a locked instruction.
    void unlock() { mWord.store(0, std::memory_order_release); }

private:
    void lockContended();

    std::atomic<u32> mWord; // 0 free, 4 held
};

// A thread that starts waiting at construction and runs execute() after
// run(). Status: 0 created, 1 running, 2 termination requested, 3 ended.
// execute() must poll checkTerminateRequest(); a derived class must wake its
// thread and have it leave execute() before its own destructor ends.
class Thread {
public:
    enum ePriority {
        ePriority_Highest,
        ePriority_High,
        ePriority_AboveNormal,
        ePriority_Normal,
        ePriority_BelowNormal,
        ePriority_Low,
        ePriority_Lowest,
        ePriority_Num
    };

    enum eStatus { eStatus_Created, eStatus_Running, eStatus_TerminateRequest, eStatus_Ended };

    explicit Thread(u32 stackSize);
    virtual ~Thread();

    void run();
    void terminate();
    void waitForTermination();
    int getStatus() const { return mStatus.get(); }
    bool checkTerminateRequest() const { return mStatus.get() == eStatus_TerminateRequest; }
    // Linux gives unprivileged threads only lower priorities: weights below
    // the normal one raise the niceness, higher ones keep the default.
    void setPriority(ePriority priority);

    static void sleep(u32 milliseconds);
    static void yield();

protected:
    virtual void execute() = 0;

private:
    static void innerFunction(void* parameter);
    void prepare();
    void applyPriority();

    u64 mTask;
    Atomic mQueue; // 1 while the native thread still has to be joined
    Event mStartEvent;
    Atomic mStatus;
    Atomic mPriority;
    Atomic mThreadId; // kernel id once the thread runs, 0 before
};
