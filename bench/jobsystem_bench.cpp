// Fork-join cost of the job system: the latency of an empty batch with one
// job per thread, and a loop of 1,000,000 trivial iterations through
// executeLoopJob against a serial loop and OpenMP's parallel for, all three
// calling the same out-of-line body.
#include <benchmark/benchmark.h>

#include "machineload.h"

#include <algorithm>
#include <chrono>
#include <vector>

#if defined(HARBOR_BENCH_OPENMP)
#include <omp.h>
#endif

#include "jobs/jobsystem.h"
#include "platform/platform.h"

namespace {

int const kLoopSize = 1000000;

class Work {
public:
    Work() : mInput(kLoopSize) {}
    void nothing(void*) {}
    // Read-only, so that threads on neighbouring indices share no written line.
    __attribute__((noinline)) void step(int index, void*) { benchmark::DoNotOptimize(mInput[index] * 3 + 1); }

    std::vector<int> mInput;
};

JobSystem* getJobSystem()
{
    JobSystem* jobs = JobSystem::create(0x10000, platform::getProcessorNum());
    return jobs;
}

void BM_EmptyBatch(benchmark::State& state)
{
    JobSystem* jobs = getJobSystem();
    Work work;
    u32 const threadNum = jobs->getJobThreadNum();
    std::vector<double> latencies;
    latencies.reserve(1 << 20);
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        for (u32 i = 0; i < threadNum; ++i) {
            jobs->addJob(new Job<Work>(&work, &Work::nothing, nullptr));
        }
        jobs->executeJob();
        latencies.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(latencies.begin(), latencies.end());
    state.counters["threads"] = threadNum;
    state.counters["median_us"] = latencies[latencies.size() / 2];
    state.counters["p90_us"] = latencies[latencies.size() * 9 / 10];
}

void BM_Loop_Serial(benchmark::State& state)
{
    Work work;
    for (auto _ : state) {
        for (int i = 0; i < kLoopSize; ++i) {
            work.step(i, nullptr);
        }
    }
    state.SetItemsProcessed(state.iterations() * kLoopSize);
}

void BM_Loop_JobSystem(benchmark::State& state)
{
    JobSystem* jobs = getJobSystem();
    Work work;
    for (auto _ : state) {
        jobs->executeLoopJob(&work, &Work::step, 0, kLoopSize, nullptr);
    }
    state.counters["threads"] = jobs->getJobThreadNum();
    state.SetItemsProcessed(state.iterations() * kLoopSize);
}

// The loop machinery alone: the same batch on the calling thread only.
void BM_Loop_JobSystemOneThread(benchmark::State& state)
{
    JobSystem* jobs = getJobSystem();
    u32 const threadNum = jobs->getJobThreadNum();
    jobs->setJobThreadNum(1);
    Work work;
    for (auto _ : state) {
        jobs->executeLoopJob(&work, &Work::step, 0, kLoopSize, nullptr);
    }
    jobs->setJobThreadNum(threadNum);
    state.SetItemsProcessed(state.iterations() * kLoopSize);
}

#if defined(HARBOR_BENCH_OPENMP)
void BM_Loop_OpenMP(benchmark::State& state)
{
    Work work;
    int const threadNum = static_cast<int>(platform::getProcessorNum());
    for (auto _ : state) {
#pragma omp parallel for num_threads(threadNum)
        for (int i = 0; i < kLoopSize; ++i) {
            work.step(i, nullptr);
        }
    }
    state.counters["threads"] = threadNum;
    state.SetItemsProcessed(state.iterations() * kLoopSize);
}

// OpenMP's threads with the loop job's split: thread t takes t, t + n, ...
// Against the blocked split above it shows what the stride itself costs.
void BM_Loop_OpenMPStrided(benchmark::State& state)
{
    Work work;
    int const threadNum = static_cast<int>(platform::getProcessorNum());
    for (auto _ : state) {
#pragma omp parallel num_threads(threadNum)
        {
            for (int i = omp_get_thread_num(); i < kLoopSize; i += threadNum) {
                work.step(i, nullptr);
            }
        }
    }
    state.counters["threads"] = threadNum;
    state.SetItemsProcessed(state.iterations() * kLoopSize);
}
#endif

} // namespace

BENCHMARK(BM_EmptyBatch)->UseRealTime();
BENCHMARK(BM_Loop_Serial)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Loop_JobSystem)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Loop_JobSystemOneThread)->UseRealTime()->Unit(benchmark::kMicrosecond);
#if defined(HARBOR_BENCH_OPENMP)
BENCHMARK(BM_Loop_OpenMP)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Loop_OpenMPStrided)->UseRealTime()->Unit(benchmark::kMicrosecond);
#endif

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    reportMachineLoad();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (JobSystem::getInstance() != nullptr) {
        JobSystem::getInstance()->destroy();
    }
    return 0;
}
