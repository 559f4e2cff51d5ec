// Threads and synchronisation: the return values of the atomics, re-entry and
// exclusion of the locks, auto-reset and time-outs of Event, the bound of
// Semaphore and the status protocol of Thread.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "foundation/multithread.h"
#include "platform/platform.h"

namespace {

// A thread whose body is a function.
class TestThread : public Thread {
public:
    explicit TestThread(std::function<void(TestThread&)> body, u32 stackSize = 4096) : Thread(stackSize), mBody(body) {}
    ~TestThread() override
    {
        terminate();
        waitForTermination();
    }
    bool isTerminateRequested() const { return checkTerminateRequest(); }
    Atomic mExecuted;

protected:
    void execute() override
    {
        mExecuted.increment();
        mBody(*this);
    }

private:
    std::function<void(TestThread&)> mBody;
};

long long millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

void onFourThreads(std::function<void(int)> body)
{
    std::thread threads[4] = {std::thread(body, 0), std::thread(body, 1), std::thread(body, 2), std::thread(body, 3)};
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace

TEST(Atomic, OperationsReturnTheOldValueAndLoseNothing)
{
    Atomic value(5);
    EXPECT_EQ(5, value.add(3));
    EXPECT_EQ(8, value.sub(10));
    EXPECT_EQ(-2, value.increment());
    EXPECT_EQ(-1, value.decrement());
    EXPECT_EQ(-2, value.set(7));
    EXPECT_FALSE(value.compareAndSet(6, 1));
    EXPECT_TRUE(value.compareAndSet(7, 1));
    value.setDirect(0);
    onFourThreads([&](int) {
        for (int i = 0; i < 10000; ++i) {
            value.increment();
        }
    });
    EXPECT_EQ(40000, value.get());
}

TEST(Locks, CriticalSectionIsReentrantAndBothExcludeOtherThreads)
{
    CriticalSection section;
    section.enter();
    EXPECT_TRUE(section.tryEnter()); // the owner may enter again
    bool otherGotIn = true;
    std::thread([&] { otherGotIn = section.tryEnter(); }).join();
    EXPECT_FALSE(otherGotIn);
    section.leave();
    section.leave();

    // Counters guarded only by the locks: a race shows under TSan.
    SpinLock lock;
    int guarded = 0;
    int spun = 0;
    onFourThreads([&](int t) {
        for (int i = 0; i < 20000; ++i) {
            while (t == 0 && !section.tryEnter()) {
                Thread::yield();
            }
            section.enter();
            ++guarded;
            section.leave();
            if (t == 0) {
                section.leave();
            }
            lock.lock();
            ++spun;
            lock.unlock();
        }
    });
    EXPECT_EQ(80000, guarded);
    EXPECT_EQ(80000, spun);
}

TEST(Event, ResetsWhenTakenAndTimesOut)
{
    Event event;
    EXPECT_EQ(1, event.wait(0));
    event.set();
    event.set(); // not counted: still one wake-up
    EXPECT_EQ(0, event.wait(0));
    EXPECT_EQ(1, event.wait(0));
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(1, event.wait(30));
    EXPECT_GE(millisecondsSince(start), 29);
    // 0xFFFFFFFF is capped, not turned into an immediate time-out.
    std::thread setter([&] {
        Thread::sleep(20);
        event.set();
    });
    EXPECT_EQ(0, event.wait(0xFFFFFFFF));
    setter.join();
}

TEST(Semaphore, SignalBeyondTheMaximumIsRefused)
{
    Semaphore semaphore(1, 0);
    EXPECT_TRUE(semaphore.signal());
    EXPECT_FALSE(semaphore.signal());
    EXPECT_TRUE(semaphore.wait());
    std::thread waiter([&] { semaphore.wait(); }); // the one count was taken: it blocks
    Thread::sleep(10);
    EXPECT_TRUE(semaphore.signal());
    waiter.join();
}

TEST(Thread, StatusGoesFromCreatedThroughRunningToEndedAndARunningBodyPollsTheRequest)
{
    Event done;
    TestThread thread([&](TestThread&) { done.set(); });
    thread.setPriority(Thread::ePriority_Lowest);
    EXPECT_EQ(0, thread.getStatus());
    thread.run();
    EXPECT_EQ(0, done.wait(0xFFFFFFFF));
    EXPECT_EQ(1, thread.getStatus());
    thread.waitForTermination();
    EXPECT_EQ(3, thread.getStatus());
    EXPECT_EQ(1, thread.mExecuted.get());
    // Terminated before run: ends without execute.
    TestThread early([](TestThread&) {});
    early.terminate();
    EXPECT_EQ(2, early.getStatus());
    early.terminate(); // twice is harmless
    early.waitForTermination();
    early.terminate(); // after the end: nothing
    EXPECT_EQ(3, early.getStatus());
    EXPECT_EQ(0, early.mExecuted.get());
    TestThread unstarted([](TestThread&) {}); // its destructor must not hang

    // A running body polls the terminate request.
    Event started;
    TestThread polling([&](TestThread& self) {
        started.set();
        while (!self.isTerminateRequested()) {
            Thread::yield();
        }
    });
    polling.run();
    EXPECT_EQ(0, started.wait(0xFFFFFFFF));
    polling.terminate();
    EXPECT_EQ(2, polling.getStatus());
    polling.waitForTermination();
    EXPECT_EQ(3, polling.getStatus());
}

// The sanitizers reserve far more address space than the limit this test sets
// (their own allocations fail first); GCC and clang name them differently.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HARBOR_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HARBOR_SANITIZED 1
#endif
#endif
#ifndef HARBOR_SANITIZED
TEST(ThreadDeathTest, AThreadTheSystemCannotCreateIsFatal)
{
    // A 4 GiB stack cannot be mapped under a 1 GiB address-space limit.
    EXPECT_DEATH(
        {
            platform::limitAddressSpace(1ull << 30);
            TestThread thread([](TestThread&) {}, 0xF0000000u);
        },
        "Could not create thread\\.");
}
#endif
