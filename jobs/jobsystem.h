// JobSystem: fork-join batches. The main thread fills the queue with addJob
// and runs it with executeJob, taking part itself; workers sleep on their
// semaphores between batches. Job objects come from a bump heap that is
// cleared when the batch ends. addJob, executeJob and setJobThreadNum are for
// the main thread only; a job must not add jobs.
#pragma once

#include <cstddef>

#include "app/system.h"
#include "foundation/allocator.h"
#include "foundation/multithread.h"

// A unit of work; storage from the job heap, released with the batch.
class JobBase {
public:
    virtual ~JobBase() {}
    virtual void execute(void* uniqueData) = 0;

    static void* operator new(std::size_t size);
    static void operator delete(void*) {}
};

// A resumable loop: execute() does some steps and returns true while there is more.
class LoopJobBase {
public:
    virtual ~LoopJobBase() {}
    virtual bool execute() = 0;

    static void* operator new(std::size_t size);
    static void operator delete(void*) {}
};

template <typename T>
class Job : public JobBase {
public:
    typedef void (T::*Function)(void* user);

    Job(T* object, Function function, void* user) : mpObject(object), mFunction(function), mpUser(user) {}
    void execute(void*) override { (mpObject->*mFunction)(mpUser); }

private:
    T* mpObject;
    Function mFunction;
    void* mpUser;
};

// Also hands the member the running thread's unique data.
template <typename T>
class ThreadUniqueJob : public JobBase {
public:
    typedef void (T::*Function)(void* user, void* uniqueData);

    ThreadUniqueJob(T* object, Function function, void* user) : mpObject(object), mFunction(function), mpUser(user) {}
    void execute(void* uniqueData) override { (mpObject->*mFunction)(mpUser, uniqueData); }

private:
    T* mpObject;
    Function mFunction;
    void* mpUser;
};

template <typename T, typename I>
class LoopJob : public LoopJobBase {
public:
    typedef void (T::*Function)(I index, void* user);

    LoopJob(T* object, Function function, void* user, I current, I end, I step)
        : mpObject(object), mFunction(function), mpUser(user), mCurrent(current), mEnd(end), mStep(step)
    {
    }
    // The whole slice in one call, with the index in a register: loop jobs
    // of neighbouring threads share cache lines in the job heap, and a
    // virtual call per index would cost more than a trivial body. The count
    // of steps is known first, so that the index never steps past end.
    bool execute() override
    {
        if (!(mCurrent < mEnd)) {
            return false;
        }
        T* const object = mpObject;
        void* const user = mpUser;
        I const step = mStep;
        I index = mCurrent;
        I left = (mEnd - mCurrent - I(1)) / step;
#if defined(__GNUC__) && !defined(__clang__)
        // The member bound to its object once, as a plain function: the
        // loop then pays a bare indirect call per index, without the
        // member pointer's virtual test and object adjustment.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpmf-conversions"
        typedef void (*Bound)(T*, I, void*);
        Bound const bound = (Bound)(object->*mFunction);
#pragma GCC diagnostic pop
        for (; left > I(0); --left) {
            bound(object, index, user);
            index += step;
        }
        bound(object, index, user);
#else
        Function const function = mFunction;
        for (; left > I(0); --left) {
            (object->*function)(index, user);
            index += step;
        }
        (object->*function)(index, user);
#endif
        mCurrent = mEnd;
        return false;
    }

private:
    T* mpObject;
    Function mFunction;
    void* mpUser;
    I mCurrent;
    I mEnd;
    I mStep;
};

class JobThread;

class JobSystem : public System {
public:
    static u32 const kJobQueueSize = 1024;
    static u32 const kJobThreadMax = 16;

    static JobSystem* create(u32 jobHeapSize, u32 threadNum);
    static JobSystem* getInstance() { return mpInstance; }
    void destroy() override;

    // "JobThreadNum", from 1 to 16.
    void makeUIList(List<UIBase>& list) override;

    DECLARE_TYPEINFO(TypeInfo)

    // A full queue drops the job without a word.
    void addJob(JobBase* job);
    u32 getJobNum() const { return static_cast<u32>(mpJobQueueEnd - mJobQueue); }
    // Runs the queued jobs on the workers and this thread; returns when all
    // have ended, with the queue and the job heap cleared. An empty queue
    // returns at once and clears nothing.
    void executeJob();
    // One batch of strided loops: with n threads, loop i takes begin + i,
    // begin + i + n, ... below end.
    template <typename T, typename I>
    void executeLoopJob(T* object, void (T::*function)(I, void*), I begin, I end, void* user);
    // Runs a LoopJobBase (the user pointer) until it is done.
    void loopJob(void* loopJob);

    // Lives until the end of the current batch.
    void* allocateJob(u32 size);
    void deallocateJob(void*) {}

    // Threads taking part, this one included: clamped to 1..16; a change
    // replaces every worker (and forgets their unique data).
    void setJobThreadNum(u32 threadNum);
    u32 getJobThreadNum() const { return mJobThreadNum; }
    bool isMultiThreading() const { return mJobThreadNum > 1; }
    // Index 0 is the main thread, n is worker n - 1; an index not below the
    // thread count is ignored and reads as null.
    void setThreadUniqueData(u32 index, void* data);
    void* getThreadUniqueData(u32 index) const;


protected:
    JobSystem(u32 jobHeapSize, u32 threadNum);
    ~JobSystem() override;

private:
    friend class JobThread;

    // Claims the next run of jobs [first, last) from the shared index:
    // a share of what is left, so that a thread takes neighbouring jobs
    // (neighbouring units, whose lines it then keeps) and asks seldom,
    // down to one job at a time near the end. False when none is left.
    bool takeJobs(u32& first, u32& last);
    // Runs claimed jobs until none is left, then endJob().
    void runJobs(void* uniqueData);
    void endJob();
    void clearJobQueue();
    void createJobThreads();
    void deleteJobThreads();

    JobBase* mJobQueue[kJobQueueSize];
    JobBase** mpJobQueueEnd;
    JobThread* mpJobThread[kJobThreadMax];
    InstantAllocator* mpJobAllocator;
    void* mUniqueData;
    u32 mJobThreadNum;
    // The two counters are written by every thread in a batch: each gets
    // a cache line of its own, away from the fields read per claim.
    [[maybe_unused]] u8 mPadIndex[64];
    Atomic mJobIndex;
    [[maybe_unused]] u8 mPadEnd[64];
    Atomic mEndCount;
    [[maybe_unused]] u8 mPadEvent[64];
    Event mEndEvent;

    static JobSystem* mpInstance;
};

inline void* JobBase::operator new(std::size_t size)
{
    return JobSystem::getInstance()->allocateJob(static_cast<u32>(size));
}

inline void* LoopJobBase::operator new(std::size_t size)
{
    return JobSystem::getInstance()->allocateJob(static_cast<u32>(size));
}

template <typename T, typename I>
void JobSystem::executeLoopJob(T* object, void (T::*function)(I, void*), I begin, I end, void* user)
{
    u32 const threadNum = getJobThreadNum();
    if (threadNum < 2) {
        LoopJob<T, I>* loop = new LoopJob<T, I>(object, function, user, begin, end, I(1));
        addJob(new Job<JobSystem>(this, &JobSystem::loopJob, loop));
    } else {
        for (u32 i = 0; i < threadNum && begin + I(i) < end; ++i) {
            LoopJob<T, I>* loop = new LoopJob<T, I>(object, function, user, begin + I(i), end, I(threadNum));
            addJob(new Job<JobSystem>(this, &JobSystem::loopJob, loop));
        }
    }
    executeJob();
}
