// JobSystem: batches run every queued job exactly once on the workers and
// the calling thread, the queue bound, strided loops, per-thread data, the
// thread count, and a stress run of many random batches.
#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "jobs/jobsystem.h"

namespace {

#if defined(__SANITIZE_THREAD__)
int const kStressBatches = 2500;
#else
int const kStressBatches = 10000;
#endif

// Records which jobs ran, how often and on which thread.
class Recorder {
public:
    Recorder() : mMarks(JobSystem::kJobQueueSize + 1) {}

    void mark(void* user) { mMarks[reinterpret_cast<std::uintptr_t>(user)].fetch_add(1); }
    void markUnique(void* user, void* uniqueData)
    {
        mark(user);
        mUniqueSeen[reinterpret_cast<std::uintptr_t>(user)] = uniqueData;
    }
    void markIndex(int index, void*) { mMarks[static_cast<size_t>(index)].fetch_add(1); }
    void markLong(long long index, void*) { mMarks[static_cast<size_t>(index)].fetch_add(1); }
    void noteThread(void* user)
    {
        mark(user);
        mThreads[reinterpret_cast<std::uintptr_t>(user)] = std::this_thread::get_id();
    }

    int count(size_t index) const { return mMarks[index].load(); }
    void reset()
    {
        for (auto& mark : mMarks) {
            mark.store(0);
        }
    }

    std::vector<std::atomic<int>> mMarks;
    void* mUniqueSeen[8] = {};
    std::thread::id mThreads[8];
};

void* slot(std::uintptr_t index)
{
    return reinterpret_cast<void*>(index);
}

class JobSystemTest : public testing::Test {
protected:
    void TearDown() override
    {
        if (JobSystem::getInstance() != nullptr) {
            JobSystem::getInstance()->destroy();
        }
    }
};

} // namespace

TEST_F(JobSystemTest, SingleThreadRunsJobsInQueueOrderOnTheCaller)
{
    JobSystem* jobs = JobSystem::create(0x10000, 1);
    EXPECT_FALSE(jobs->isMultiThreading());
    std::vector<int> order;
    struct sOrder {
        std::vector<int>* mpOrder;
        void push(void* user) { mpOrder->push_back(static_cast<int>(reinterpret_cast<std::uintptr_t>(user))); }
    } target{&order};
    for (int i = 0; i < 5; ++i) {
        jobs->addJob(new Job<sOrder>(&target, &sOrder::push, slot(i)));
    }
    jobs->executeJob();
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), order);
    EXPECT_EQ(0u, jobs->getJobNum());
}

TEST_F(JobSystemTest, OneJobOnManyThreadsRunsOnTheCaller)
{
    JobSystem* jobs = JobSystem::create(0x10000, 4);
    Recorder recorder;
    jobs->addJob(new Job<Recorder>(&recorder, &Recorder::noteThread, slot(1)));
    jobs->executeJob();
    EXPECT_EQ(1, recorder.count(1));
    EXPECT_EQ(std::this_thread::get_id(), recorder.mThreads[1]);
}

TEST_F(JobSystemTest, QueueHoldsAtMostTenTwentyFourJobs)
{
    JobSystem* jobs = JobSystem::create(0x10000, 2);
    Recorder recorder;
    for (std::uintptr_t i = 0; i < 1025; ++i) {
        jobs->addJob(new Job<Recorder>(&recorder, &Recorder::mark, slot(i)));
    }
    EXPECT_EQ(1024u, jobs->getJobNum());
    jobs->executeJob();
    for (size_t i = 0; i < 1024; ++i) {
        ASSERT_EQ(1, recorder.count(i)) << i;
    }
    EXPECT_EQ(0, recorder.count(1024));
}

TEST_F(JobSystemTest, BatchEndClearsTheJobHeapButAnEmptyBatchDoesNot)
{
    JobSystem* jobs = JobSystem::create(0x10000, 2);
    void* scratch = jobs->allocateJob(100);
    void* next = jobs->allocateJob(16);
    EXPECT_NE(scratch, next);
    jobs->executeJob(); // empty: returns at once, the heap keeps its data
    EXPECT_EQ(static_cast<u8*>(scratch) + 112, next);
    EXPECT_EQ(static_cast<u8*>(next) + 16, jobs->allocateJob(16));

    Recorder recorder;
    jobs->addJob(new Job<Recorder>(&recorder, &Recorder::mark, slot(0)));
    jobs->executeJob();
    EXPECT_EQ(scratch, jobs->allocateJob(4)); // cleared with the batch
}

TEST_F(JobSystemTest, ThreadUniqueDataReachesEachThreadsJobs)
{
    JobSystem* jobs = JobSystem::create(0x10000, 3);
    int data[3];
    for (u32 i = 0; i < 3; ++i) {
        jobs->setThreadUniqueData(i, &data[i]);
        EXPECT_EQ(&data[i], jobs->getThreadUniqueData(i));
    }
    jobs->setThreadUniqueData(3, &data[0]); // beyond the thread count: ignored
    EXPECT_EQ(nullptr, jobs->getThreadUniqueData(3));
    Recorder recorder;
    for (std::uintptr_t i = 0; i < 8; ++i) {
        jobs->addJob(new ThreadUniqueJob<Recorder>(&recorder, &Recorder::markUnique, slot(i)));
    }
    jobs->executeJob();
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(1, recorder.count(i));
        void* seen = recorder.mUniqueSeen[i];
        EXPECT_TRUE(seen == &data[0] || seen == &data[1] || seen == &data[2]);
    }
}

TEST_F(JobSystemTest, ThreadCountIsClampedAndReplacesTheWorkers)
{
    JobSystem* jobs = JobSystem::create(0x10000, 0);
    EXPECT_EQ(1u, jobs->getJobThreadNum());
    jobs->setJobThreadNum(99);
    EXPECT_EQ(16u, jobs->getJobThreadNum());
    int data = 0;
    jobs->setThreadUniqueData(15, &data);
    EXPECT_EQ(&data, jobs->getThreadUniqueData(15));
    jobs->setJobThreadNum(0);
    EXPECT_EQ(1u, jobs->getJobThreadNum());
    EXPECT_EQ(nullptr, jobs->getThreadUniqueData(15));
    jobs->setJobThreadNum(3);
    EXPECT_EQ(nullptr, jobs->getThreadUniqueData(2)); // new workers, no data
    Recorder recorder;
    for (std::uintptr_t i = 0; i < 100; ++i) {
        jobs->addJob(new Job<Recorder>(&recorder, &Recorder::mark, slot(i)));
    }
    jobs->executeJob();
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(1, recorder.count(i));
    }
}

TEST_F(JobSystemTest, LoopJobsTakeStridedSlices)
{
    JobSystem* jobs = JobSystem::create(0x10000, 4);
    Recorder recorder;
    jobs->executeLoopJob(&recorder, &Recorder::markIndex, 0, 2, nullptr);
    EXPECT_EQ(1, recorder.count(0));
    EXPECT_EQ(1, recorder.count(1));
    EXPECT_EQ(0, recorder.count(2));

    recorder.reset();
    jobs->executeLoopJob(&recorder, &Recorder::markLong, 5LL, 1000LL, nullptr);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(i >= 5 ? 1 : 0, recorder.count(i)) << i;
    }

    recorder.reset();
    jobs->setJobThreadNum(1);
    jobs->executeLoopJob(&recorder, &Recorder::markIndex, 3, 3, nullptr); // empty range
    jobs->executeLoopJob(&recorder, &Recorder::markIndex, 0, 10, nullptr);
    for (int i = 0; i < 12; ++i) {
        ASSERT_EQ(i < 10 ? 1 : 0, recorder.count(i));
    }
}

TEST_F(JobSystemTest, ManyRandomBatchesRunEachJobExactlyOnce)
{
    JobSystem* jobs = JobSystem::create(0x10000, std::max(2u, std::thread::hardware_concurrency()));
    Recorder recorder;
    std::mt19937 random(99);
    for (int batch = 0; batch < kStressBatches; ++batch) {
        std::uintptr_t const count = 1 + random() % JobSystem::kJobQueueSize;
        for (std::uintptr_t i = 0; i < count; ++i) {
            jobs->addJob(new Job<Recorder>(&recorder, &Recorder::mark, slot(i)));
        }
        jobs->executeJob();
        for (std::uintptr_t i = 0; i < JobSystem::kJobQueueSize; ++i) {
            ASSERT_EQ(i < count ? 1 : 0, recorder.mMarks[i].exchange(0)) << "batch " << batch << " slot " << i;
        }
    }
}

TEST_F(JobSystemTest, JobsAllocateFromThreadSafeHeapsOnEveryThread)
{
    JobSystem* jobs = JobSystem::create(0x10000, 4);
    GPAllocator heap(0x100000, "Jobs", nullptr, 32, true);
    BlockAllocator blocks(64, 256, "Blocks", nullptr, true);
    struct sWork {
        GPAllocator* mpHeap;
        BlockAllocator* mpBlocks;
        void run(void* user)
        {
            std::mt19937 random(static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(user)));
            void* held[16];
            for (int round = 0; round < 50; ++round) {
                for (void*& block : held) {
                    block = random() % 2 ? mpHeap->allocate(static_cast<int>(random() % 200) - 40, 16)
                                         : mpBlocks->allocate(64, 4);
                }
                for (void* block : held) {
                    if (block >= mpBlocks->getHeap() &&
                        block < static_cast<u8*>(mpBlocks->getHeap()) + mpBlocks->getHeapSize()) {
                        mpBlocks->deallocate(block);
                    } else {
                        mpHeap->deallocate(block);
                    }
                }
            }
        }
    } work{&heap, &blocks};
    for (int batch = 0; batch < 20; ++batch) {
        for (std::uintptr_t i = 0; i < 16; ++i) {
            jobs->addJob(new Job<sWork>(&work, &sWork::run, slot(batch * 16 + i)));
        }
        jobs->executeJob();
    }
    heap.validate();
    EXPECT_EQ(32u, heap.getUsedSize());
    EXPECT_EQ(0u, blocks.getUsedSize());
}

TEST_F(JobSystemTest, SingletonAndTraces)
{
    testing::internal::CaptureStderr();
    JobSystem* jobs = JobSystem::create(0x10000, 2);
    EXPECT_EQ(jobs, JobSystem::getInstance());
    EXPECT_EQ(jobs, JobSystem::create(0x100, 8)); // already there
    EXPECT_EQ(2u, jobs->getJobThreadNum());
    EXPECT_STREQ("JobSystem", jobs->getTypeInfo()->getName());
    EXPECT_FALSE(jobs->isPreprocessEnable() || jobs->isUpdateEnable() || jobs->isPostprocessEnable());
    jobs->destroy();
    EXPECT_EQ(nullptr, JobSystem::getInstance());
    EXPECT_EQ("JobSystem : start.\nJobSystem : end.\n", testing::internal::GetCapturedStderr());
}

TEST(JobSystemDeathTest, RunningOutOfJobHeapIsFatal)
{
    EXPECT_DEATH(
        {
            JobSystem* jobs = JobSystem::create(256, 2);
            for (int i = 0; i < 20; ++i) {
                jobs->allocateJob(32);
            }
        },
        "This allocator do not have enough memory\\.");
}
