// JobSystem: batches run every queued job exactly once on the workers and the
// calling thread; the queue bound, the batch heap, strided loops, per-thread
// data, the thread count, and a stress run of many random batches.
#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <random>
#include <thread>
#include <vector>

#include "jobs/jobsystem.h"

namespace {

// Small batches meet workers still spinning from the batch before, and
// batches of every size up to the queue's; the small ones are most. Some
// batches hold jobs of uneven length, so that the calling thread runs out
// of jobs while a worker is still busy, or before it has even woken.
#if defined(__SANITIZE_THREAD__)
int const kStressBatches = 20000;
#else
int const kStressBatches = 100000;
#endif

// Counts how often each slot ran, and notes the thread and unique data seen.
class Recorder {
public:
    Recorder() : mMarks(JobSystem::kJobQueueSize + 1) {}
    void mark(void* user) { markLong(static_cast<long long>(reinterpret_cast<std::uintptr_t>(user)), nullptr); }
    void markSlowly(void* user)
    {
        for (volatile std::uintptr_t spin = reinterpret_cast<std::uintptr_t>(user) % 3 * 300; spin > 0; --spin) {
        }
        mark(user);
    }
    void markIndex(int index, void*) { markLong(index, nullptr); }
    void markLong(long long index, void*) { mMarks[static_cast<size_t>(index)].fetch_add(1); }
    void markFromTop(int index, void*) { markLong(INT_MAX - 1 - index, nullptr); }
    void push(void* user) { mOrder.push_back(reinterpret_cast<std::uintptr_t>(user)); }
    void markUnique(void* user, void* uniqueData)
    {
        mark(user);
        mUnique[reinterpret_cast<std::uintptr_t>(user)] = uniqueData;
        mThread[reinterpret_cast<std::uintptr_t>(user)] = std::this_thread::get_id();
    }
    // Slots below count ran once, the next ones up to scan never; clears
    // the marks.
    bool ranOnce(size_t count, size_t scan = JobSystem::kJobQueueSize + 1)
    {
        bool ok = true;
        for (size_t i = 0; i < scan; ++i) {
            ok = ok && mMarks[i].exchange(0) == (i < count ? 1 : 0);
        }
        return ok;
    }

    std::vector<std::atomic<int>> mMarks;
    void* mUnique[8] = {};
    std::thread::id mThread[8];
    std::vector<std::uintptr_t> mOrder;
};

void* slot(std::uintptr_t index)
{
    return reinterpret_cast<void*>(index);
}

void addMarks(JobSystem* jobs, Recorder& recorder, std::uintptr_t count, void (Recorder::*method)(void*) = &Recorder::mark)
{
    for (std::uintptr_t i = 0; i < count; ++i) {
        jobs->addJob(new Job<Recorder>(&recorder, method, slot(i)));
    }
}

// Reaches the protected constructor, as a second instance would.
class SecondJobSystem : public JobSystem {
public:
    SecondJobSystem() : JobSystem(0x100, 1) {}
};

class JobSystemTest : public testing::Test {
protected:
    void TearDown() override { JobSystem::getInstance()->destroy(); }
    Recorder mRecorder;
};

} // namespace

TEST_F(JobSystemTest, SingleThreadRunsJobsInQueueOrderOnTheCaller)
{
    JobSystem* jobs = JobSystem::create(0x10000, 1);
    EXPECT_FALSE(jobs->isMultiThreading());
    addMarks(jobs, mRecorder, 5, &Recorder::push);
    jobs->executeJob();
    EXPECT_EQ((std::vector<std::uintptr_t>{0, 1, 2, 3, 4}), mRecorder.mOrder);
}

TEST_F(JobSystemTest, OneJobRunsOnTheCallerAndTheQueueDropsBeyondTenTwentyFour)
{
    JobSystem* jobs = JobSystem::create(0x10000, 4);
    int data = 0;
    jobs->setThreadUniqueData(0, &data);
    jobs->addJob(new ThreadUniqueJob<Recorder>(&mRecorder, &Recorder::markUnique, slot(1)));
    jobs->executeJob();
    EXPECT_EQ(std::this_thread::get_id(), mRecorder.mThread[1]);
    EXPECT_EQ(&data, mRecorder.mUnique[1]);
    mRecorder.mMarks[1].store(0);
    addMarks(jobs, mRecorder, 1025);
    EXPECT_EQ(1024u, jobs->getJobNum());
    jobs->executeJob();
    EXPECT_TRUE(mRecorder.ranOnce(1024));
}

TEST_F(JobSystemTest, BatchEndClearsTheJobHeapButAnEmptyBatchDoesNot)
{
    JobSystem* jobs = JobSystem::create(0x10000, 2);
    u8* scratch = static_cast<u8*>(jobs->allocateJob(100));
    jobs->executeJob(); // empty: returns at once, the heap keeps its data
    EXPECT_EQ(scratch + 112, jobs->allocateJob(16));
    addMarks(jobs, mRecorder, 1);
    jobs->executeJob();
    EXPECT_EQ(scratch, jobs->allocateJob(4)); // cleared with the batch
}

TEST_F(JobSystemTest, UniqueDataAndThreadCountFollowTheWorkers)
{
    JobSystem* jobs = JobSystem::create(0x10000, 0);
    EXPECT_EQ(1u, jobs->getJobThreadNum());
    jobs->setJobThreadNum(99);
    EXPECT_EQ(16u, jobs->getJobThreadNum());
    jobs->setJobThreadNum(3);
    int data[3];
    for (u32 i = 0; i < 3; ++i) {
        jobs->setThreadUniqueData(i, &data[i]);
    }
    jobs->setThreadUniqueData(3, &data[0]); // beyond the thread count: ignored
    EXPECT_EQ(nullptr, jobs->getThreadUniqueData(3));
    for (std::uintptr_t i = 0; i < 8; ++i) {
        jobs->addJob(new ThreadUniqueJob<Recorder>(&mRecorder, &Recorder::markUnique, slot(i)));
    }
    jobs->executeJob();
    for (void* seen : mRecorder.mUnique) {
        EXPECT_TRUE(seen == &data[0] || seen == &data[1] || seen == &data[2]);
    }
    EXPECT_TRUE(mRecorder.ranOnce(8));
    jobs->setJobThreadNum(2); // new workers, no data
    EXPECT_EQ(nullptr, jobs->getThreadUniqueData(1));
}

TEST_F(JobSystemTest, LoopJobsTakeStridedSlices)
{
    JobSystem* jobs = JobSystem::create(0x10000, 4);
    jobs->executeLoopJob(&mRecorder, &Recorder::markIndex, 0, 2, nullptr); // two loops only
    EXPECT_TRUE(mRecorder.ranOnce(2));
    jobs->executeLoopJob(&mRecorder, &Recorder::markLong, 0LL, 1000LL, nullptr);
    EXPECT_TRUE(mRecorder.ranOnce(1000));
    jobs->executeLoopJob(&mRecorder, &Recorder::markFromTop, INT_MAX - 9, INT_MAX, nullptr); // no step past the top
    EXPECT_TRUE(mRecorder.ranOnce(9));
    jobs->setJobThreadNum(1);
    jobs->executeLoopJob(&mRecorder, &Recorder::markIndex, 3, 3, nullptr); // empty range
    EXPECT_TRUE(mRecorder.ranOnce(0));
}

TEST_F(JobSystemTest, ManyRandomBatchesRunEachJobExactlyOnce)
{
    JobSystem* jobs = JobSystem::create(0x10000, std::max(2u, std::thread::hardware_concurrency()));
    std::mt19937 random(99);
    for (int batch = 0; batch < kStressBatches; ++batch) {
        std::uintptr_t const count =
            batch % 64 == 0 ? 1 + random() % JobSystem::kJobQueueSize : 1 + random() % (2 * jobs->getJobThreadNum() + 3);
        addMarks(jobs, mRecorder, count, batch % 4 == 1 ? &Recorder::markSlowly : &Recorder::mark);
        jobs->executeJob();
        ASSERT_TRUE(mRecorder.ranOnce(count, count + 1)) << "batch " << batch;
    }
}

TEST_F(JobSystemTest, SingletonWithItsTraces)
{
    testing::internal::CaptureStderr();
    JobSystem* jobs = JobSystem::create(0x10000, 2);
    EXPECT_EQ(jobs, JobSystem::create(0x100, 8));
    EXPECT_EQ(2u, jobs->getJobThreadNum());
    jobs->destroy();
    EXPECT_EQ(nullptr, JobSystem::getInstance());
    EXPECT_EQ("JobSystem : start.\nJobSystem : end.\n", testing::internal::GetCapturedStderr());
    JobSystem::create(0x10000, 1); // for TearDown
}

TEST(JobSystemDeathTest, SecondInstanceAndExhaustedJobHeapAreFatal)
{
    EXPECT_DEATH(
        {
            JobSystem* jobs = JobSystem::create(256, 2);
            for (int i = 0; i < 20; ++i) {
                jobs->allocateJob(32);
            }
        },
        "This allocator do not have enough memory\\.");
    JobSystem* jobs = JobSystem::create(0x100, 1);
    EXPECT_DEATH(new SecondJobSystem(), "JobSystem already instanced\\.");
    jobs->destroy();
}
