#include "jobs/jobsystem.h"

#include "foundation/debug.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/property.h"

namespace {

u32 const kJobThreadStackSize = 4096;
// Job objects hold pointers and member-function pointers: aligned to 16.
u32 const kJobAlignment = 16;
// A worker polls its semaphore this long after a batch before it sleeps, so
// that the next batch of a frame finds it awake; the main thread polls the
// end of the batch as long. Between frames both sleep.
u32 const kWorkerSpinMicroseconds = 100;
u32 const kEndSpinMicroseconds = 100;
// When the calling thread has taken the last job, a worker that is awake but
// has not yet taken its wake-up gets this long to do so before the wake-up
// is taken back: it keeps the worker in step for the next batch.
u32 const kWakeGraceMicroseconds = 5;

u32 clampThreadNum(u32 threadNum)
{
    if (threadNum < 1) {
        return 1;
    }
    return threadNum > JobSystem::kJobThreadMax ? JobSystem::kJobThreadMax : threadNum;
}

} // namespace

// A worker: sleeps on its semaphore, takes jobs until none is left, reports
// its end, and sleeps again. Storage from the Systems' budget.
class JobThread : public Thread {
public:
    explicit JobThread(JobSystem* jobSystem) : Thread(kJobThreadStackSize), mpJobSystem(jobSystem), mSemaphore(1, 0), mUniqueData(nullptr) {}
    ~JobThread() override
    {
        terminate();
        mSemaphore.signal();
        waitForTermination();
    }

    static void* operator new(std::size_t size) { return System::allocate(static_cast<u32>(size)); }
    static void operator delete(void* pointer) { System::deallocate(pointer); }

    void wake() { mSemaphore.signal(); }
    // True when the worker had not yet taken its wake-up, which is then undone.
    bool withdrawWake() { return mSemaphore.withdraw(kWakeGraceMicroseconds); }
    void setUniqueData(void* data) { mUniqueData = data; }
    void* getUniqueData() const { return mUniqueData; }

protected:
    void execute() override
    {
        for (;;) {
            if (!mSemaphore.waitSpinning(kWorkerSpinMicroseconds)) {
                DEV_ERROR("Event error.");
            }
            if (checkTerminateRequest()) {
                return;
            }
            mpJobSystem->runJobs(mUniqueData);
        }
    }

private:
    JobSystem* mpJobSystem;
    Semaphore mSemaphore;
    void* mUniqueData;
};

JobSystem* JobSystem::mpInstance = nullptr;
IMPLEMENT_TYPEINFO(JobSystem, "System", TypeInfo::eAttribute_Singleton);

JobSystem* JobSystem::create(u32 jobHeapSize, u32 threadNum)
{
    if (mpInstance == nullptr) {
        JobSystem* instance = new JobSystem(jobHeapSize, threadNum);
        mpInstance = instance;
    }
    return mpInstance;
}

void JobSystem::destroy()
{
    delete this;
    mpInstance = nullptr;
}

JobSystem::JobSystem(u32 jobHeapSize, u32 threadNum)
    : mpJobQueueEnd(mJobQueue), mpJobAllocator(nullptr), mUniqueData(nullptr), mJobThreadNum(clampThreadNum(threadNum)),
      mPadIndex(), mJobIndex(0), mPadEnd(), mEndCount(0), mPadEvent()
{
    DEV_ASSERT(mpInstance == nullptr, "JobSystem already instanced.");
    setProcessEnable(false, false, false);
    for (u32 i = 0; i < kJobThreadMax; ++i) {
        mpJobThread[i] = nullptr;
    }
    mpJobAllocator = new InstantAllocator(jobHeapSize, "JobSystem", System::getAllocator(), true);
    createJobThreads();
    DEV_TRACE("JobSystem : start.\n");
}

JobSystem::~JobSystem()
{
    deleteJobThreads();
    delete mpJobAllocator;
    DEV_TRACE("JobSystem : end.\n");
}

void JobSystem::createJobThreads()
{
    for (u32 i = 0; i + 1 < mJobThreadNum; ++i) {
        mpJobThread[i] = new JobThread(this);
        mpJobThread[i]->run(); // it goes to wait on its semaphore
    }
}

// Each worker: termination requested, woken so that it sees the request,
// and waited for by its destructor.
void JobSystem::deleteJobThreads()
{
    for (u32 i = 0; i < kJobThreadMax; ++i) {
        delete mpJobThread[i];
        mpJobThread[i] = nullptr;
    }
}

void JobSystem::addJob(JobBase* job)
{
    if (mpJobQueueEnd < mJobQueue + kJobQueueSize) {
        *mpJobQueueEnd++ = job;
    }
}

void JobSystem::executeJob()
{
    u32 const count = getJobNum();
    if (count == 0) {
        return;
    }
    if (!isMultiThreading()) {
        for (u32 i = 0; i < count; ++i) {
            mJobQueue[i]->execute(mUniqueData);
        }
    } else {
        u32 const active = mJobThreadNum < count ? mJobThreadNum : count;
        for (u32 i = 0; i + 1 < active; ++i) {
            mpJobThread[i]->wake();
        }
        runJobs(mUniqueData);
        // Every job is taken now: a worker that has not yet taken its wake-up
        // would only find the queue empty and report its end. Taking the
        // wake-up back and reporting for it here spares the batch the wait
        // for a thread the system has not run yet (a busy machine, or a
        // worker still coming out of sleep while this thread did the work).
        for (u32 i = 0; i + 1 < active; ++i) {
            if (mpJobThread[i]->withdrawWake()) {
                endJob();
            }
        }
        mEndEvent.waitSpinning(0xFFFFFFFF, kEndSpinMicroseconds);
    }
    clearJobQueue();
    mEndCount.set(0);
}

// The single atomic index is the whole load balancing: runs of jobs go to
// whichever thread asks first, in queue order. A claim is an eighth of what
// is left per thread, at least one job, so that the last jobs still spread.
bool JobSystem::takeJobs(u32& first, u32& last)
{
    u32 const count = getJobNum();
    u32 const seen = static_cast<u32>(mJobIndex.get());
    if (seen >= count) {
        return false;
    }
    u32 share = (count - seen) / (mJobThreadNum * 8);
    if (share == 0) {
        share = 1;
    }
    first = static_cast<u32>(mJobIndex.add(static_cast<int>(share)));
    if (first >= count) {
        return false;
    }
    last = first + share < count ? first + share : count;
    return true;
}

void JobSystem::runJobs(void* uniqueData)
{
    u32 first = 0;
    u32 last = 0;
    while (takeJobs(first, last)) {
        for (u32 i = first; i < last; ++i) {
            mJobQueue[i]->execute(uniqueData);
        }
    }
    endJob();
}

// Whichever thread ends last, main or worker, wakes the main thread. The
// count is read before the increment: after it the main thread may already
// be clearing the queue.
void JobSystem::endJob()
{
    u32 const count = getJobNum();
    u32 const active = mJobThreadNum < count ? mJobThreadNum : count;
    if (static_cast<u32>(mEndCount.increment()) == active - 1) {
        mEndEvent.set();
    }
}

void JobSystem::clearJobQueue()
{
    for (JobBase** job = mJobQueue; job < mpJobQueueEnd; ++job) {
        (*job)->~JobBase(); // storage goes with the heap's clear()
    }
    mpJobQueueEnd = mJobQueue;
    mpJobAllocator->clear();
    mJobIndex.set(0);
}

void JobSystem::loopJob(void* loopJob)
{
    LoopJobBase* loop = static_cast<LoopJobBase*>(loopJob);
    while (loop->execute()) {
    }
}

void* JobSystem::allocateJob(u32 size)
{
    return mpJobAllocator->allocate(static_cast<int>(size), kJobAlignment);
}

void JobSystem::setJobThreadNum(u32 threadNum)
{
    threadNum = clampThreadNum(threadNum);
    if (threadNum == mJobThreadNum) {
        return;
    }
    deleteJobThreads();
    mJobThreadNum = threadNum;
    createJobThreads();
}

void JobSystem::setThreadUniqueData(u32 index, void* data)
{
    if (index >= mJobThreadNum) {
        return;
    }
    if (index == 0) {
        mUniqueData = data;
    } else {
        mpJobThread[index - 1]->setUniqueData(data);
    }
}

void* JobSystem::getThreadUniqueData(u32 index) const
{
    if (index >= mJobThreadNum) {
        return nullptr;
    }
    return index == 0 ? mUniqueData : mpJobThread[index - 1]->getUniqueData();
}

void JobSystem::makeUIList(List<UIBase>& list)
{
    PropertyControl control(new IndirectProperty<u32>("JobThreadNum", this, &JobSystem::getJobThreadNum,
                                                      &JobSystem::setJobThreadNum),
                            1u, 16u);
    if (UIBase* widget = Utils::makeUIFromControl(&control)) {
        list.addLast(widget);
    }
}
