#include "foundation/multithread.h"

#include <chrono>

#include "foundation/debug.h"
#include "platform/platform.h"
#include "platform/thread.h"

namespace {

// Task weights of Thread::ePriority, highest first.
u32 const kPriorityWeight[] = {10000, 1000, 500, 100, 50, 10, 1};
static_assert(sizeof(kPriorityWeight) / sizeof(kPriorityWeight[0]) == Thread::ePriority_Num, "priority table");

u32 const kNormalWeight = 100;
u32 const kMaximumWait = 0x7FFFFFFE;
int const kSpinTries = 15;

// Niceness for a weight: only weights below the normal one can be honoured
// without privileges; each tenth of the weight is five steps of niceness.
int getNice(u32 weight)
{
    if (weight >= kNormalWeight) {
        return 0;
    }
    if (weight >= 50) {
        return 5;
    }
    if (weight >= 10) {
        return 10;
    }
    return 19;
}

} // namespace

// ---------------------------------------------------------------------------
Event::Event() : mSignalled(false) {}

void Event::set()
{
    {
        std::lock_guard<std::mutex> guard(mMutex);
        mSignalled = true;
    }
    mCondition.notify_one();
}

int Event::wait(u32 milliseconds)
{
    if (milliseconds > kMaximumWait) {
        milliseconds = kMaximumWait;
    }
    std::unique_lock<std::mutex> guard(mMutex);
    if (!mCondition.wait_for(guard, std::chrono::milliseconds(milliseconds), [this] { return mSignalled; })) {
        return 1;
    }
    mSignalled = false;
    return 0;
}

// ---------------------------------------------------------------------------
Semaphore::Semaphore(u32 maximum, u32 initial) : mMaximum(maximum), mCount(initial) {}

bool Semaphore::signal()
{
    {
        std::lock_guard<std::mutex> guard(mMutex);
        if (mCount >= mMaximum) {
            return false;
        }
        ++mCount;
    }
    mCondition.notify_one();
    return true;
}

bool Semaphore::wait()
{
    std::unique_lock<std::mutex> guard(mMutex);
    mCondition.wait(guard, [this] { return mCount > 0; });
    --mCount;
    return true;
}

// ---------------------------------------------------------------------------
// Rounds of 15 tries, yielding the processor between rounds.
void SpinLock::lockContended()
{
    for (;;) {
        for (int i = 0; i < kSpinTries; ++i) {
            u32 expected = 0;
            if (mWord.load(std::memory_order_relaxed) == 0 &&
                mWord.compare_exchange_strong(expected, 4, std::memory_order_acquire)) {
                return;
            }
        }
        Thread::yield();
    }
}



// ---------------------------------------------------------------------------
Thread::Thread(u32 stackSize)
    : mTask(0), mQueue(0), mStatus(eStatus_Created), mPriority(ePriority_Normal), mThreadId(0)
{
    if (!platform::createThread(mTask, innerFunction, this, stackSize)) {
        dev_assert("Could not create thread.", __FILE__, __LINE__);
    }
    mQueue.setDirect(1);
}

Thread::~Thread()
{
    terminate();
    waitForTermination();
}

void Thread::innerFunction(void* parameter)
{
    Thread* thread = static_cast<Thread*>(parameter);
    thread->prepare();
    // Termination asked for before run(): leave without ever executing.
    if (!thread->mStatus.compareAndSet(eStatus_Created, eStatus_Running)) {
        return;
    }
    thread->mThreadId.set(static_cast<int>(platform::getCurrentThreadId()));
    thread->applyPriority();
    thread->execute();
}

void Thread::prepare()
{
    while (mStartEvent.wait(0xFFFFFFFF) != 0) {
    }
}

void Thread::run()
{
    mStartEvent.set();
}

void Thread::terminate()
{
    int status = mStatus.get();
    if (status == eStatus_TerminateRequest || status == eStatus_Ended) {
        return;
    }
    if (mStatus.compareAndSet(eStatus_Created, eStatus_TerminateRequest)) {
        run(); // wakes the waiting task so that it can end
    } else {
        mStatus.compareAndSet(eStatus_Running, eStatus_TerminateRequest);
    }
}

void Thread::waitForTermination()
{
    if (mQueue.compareAndSet(1, 0)) {
        platform::joinThread(mTask);
    }
    mStatus.set(eStatus_Ended);
}

void Thread::setPriority(ePriority priority)
{
    mPriority.set(priority);
    applyPriority();
}

void Thread::applyPriority()
{
    int threadId = mThreadId.get();
    if (threadId != 0 && mQueue.get() != 0) {
        platform::setThreadNice(static_cast<u32>(threadId), getNice(kPriorityWeight[mPriority.get()]));
    }
}

void Thread::sleep(u32 milliseconds)
{
    platform::sleepMilliseconds(milliseconds);
}

void Thread::yield()
{
    platform::yieldThread();
}
