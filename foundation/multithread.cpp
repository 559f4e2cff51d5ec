#include "foundation/multithread.h"

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
namespace {

// Polls ready() for up to the given time, checking the clock now and then.
// It never yields: on a busy machine a yield gives the rest of the time slice
// to another process, which costs far more than the short poll.
template <typename Ready>
bool spinUntil(u32 microseconds, Ready ready)
{
    if (microseconds == 0) {
        return false;
    }
    u64 const end = platform::getCount() + static_cast<u64>(microseconds) * 1000u;
    for (;;) {
        for (int i = 0; i < 64; ++i) {
            if (ready()) {
                return true;
            }
            platform::pauseProcessor();
        }
        if (platform::getCount() >= end) {
            return false;
        }
    }
}

} // namespace

// The sleeper count and the word are both sequentially consistent: a setter
// either sees the sleeper and wakes it, or the sleeper sees the new word and
// does not sleep (and the kernel re-checks the word on the way in).
Event::Event() : mSignalled(0), mSleepers(0) {}

void Event::set()
{
    mSignalled.store(1);
    if (mSleepers.load() != 0) {
        platform::wakeAddress(&mSignalled, 1);
    }
}

int Event::waitSpinning(u32 milliseconds, u32 spinMicroseconds)
{
    if (milliseconds > kMaximumWait) {
        milliseconds = kMaximumWait;
    }
    auto take = [this] { return mSignalled.load(std::memory_order_relaxed) != 0 && mSignalled.exchange(0) != 0; };
    if (take() || spinUntil(spinMicroseconds, take)) {
        return 0;
    }
    u64 const end = platform::getCount() + static_cast<u64>(milliseconds) * 1000000u;
    for (;;) {
        u64 const now = platform::getCount();
        if (now >= end) {
            return 1;
        }
        u64 const left = (end - now + 999999u) / 1000000u;
        mSleepers.fetch_add(1);
        if (mSignalled.load() == 0) {
            platform::waitOnAddress(&mSignalled, 0, static_cast<u32>(left));
        }
        mSleepers.fetch_sub(1);
        if (take()) {
            return 0;
        }
    }
}

// ---------------------------------------------------------------------------
Semaphore::Semaphore(u32 maximum, u32 initial) : mCount(initial), mSleepers(0), mMaximum(maximum) {}

bool Semaphore::signal()
{
    u32 count = mCount.load(std::memory_order_relaxed);
    do {
        if (count >= mMaximum) {
            return false;
        }
    } while (!mCount.compare_exchange_weak(count, count + 1));
    if (mSleepers.load() != 0) {
        platform::wakeAddress(&mCount, 1);
    }
    return true;
}

bool Semaphore::tryTake()
{
    u32 count = mCount.load(std::memory_order_relaxed);
    while (count != 0) {
        if (mCount.compare_exchange_weak(count, count - 1)) {
            return true;
        }
    }
    return false;
}

bool Semaphore::waitSpinning(u32 spinMicroseconds)
{
    if (tryTake() || spinUntil(spinMicroseconds, [this] { return tryTake(); })) {
        return true;
    }
    for (;;) {
        mSleepers.fetch_add(1);
        if (mCount.load() == 0) {
            platform::waitOnAddress(&mCount, 0, 0xFFFFFFFF);
        }
        mSleepers.fetch_sub(1);
        if (tryTake()) {
            return true;
        }
    }
}

// A waiter asleep in the kernel would take a while to come; one still polling
// comes at once unless the system has set it aside for another thread.
bool Semaphore::withdraw(u32 graceMicroseconds)
{
    if (mSleepers.load() == 0) {
        spinUntil(graceMicroseconds, [this] {
            return mCount.load(std::memory_order_relaxed) == 0 || mSleepers.load(std::memory_order_relaxed) != 0;
        });
    }
    return tryTake();
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
