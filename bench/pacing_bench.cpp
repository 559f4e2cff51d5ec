// Pacing accuracy and cost of the real frame loop (event loop, tick, pacing
// routine, sleeps) with an empty frame, headless so that no display is needed.
// Reports achieved frames per second, |interval - target| at the median and
// the 99th percentile, and process CPU time per wall second. A third case
// runs a frame of eight small job batches, as units and windows do: the job
// workers' polling after each frame must keep the idle cost low.
#include <benchmark/benchmark.h>

#include "machineload.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <vector>

#include "app/application.h"
#include "jobs/jobsystem.h"
#include "platform/platform.h"
#include "platform/window.h"

namespace {

class EmptyFrameApp : public Application {
public:
    EmptyFrameApp(sInitializer const* initializer, f64 seconds, bool jobs)
        : Application(initializer), mSeconds(seconds), mJobs(jobs)
    {
    }
    void setup() override {}
    void nothing(void*) {}
    void update(float) override
    {
        if (mJobs) {
            JobSystem* jobs = JobSystem::getInstance();
            for (int batch = 0; batch < 8; ++batch) {
                for (u32 i = 0; i < jobs->getJobThreadNum(); ++i) {
                    jobs->addJob(new Job<EmptyFrameApp>(this, &EmptyFrameApp::nothing, nullptr));
                }
                jobs->executeJob();
            }
        }
        u64 const now = platform::getCount();
        if (mStamps.empty()) {
            mStamps.reserve(4096);
        }
        mStamps.push_back(now);
        if (static_cast<f64>(now - mStamps.front()) >= mSeconds * 1e9) {
            platform::quitEventLoop();
        }
    }
    f64 mSeconds;
    bool mJobs;
    std::vector<u64> mStamps;
};

void runPacing(benchmark::State& state, u32 rate, u32 minimum, u32 maximum, bool jobs = false)
{
    platform::setHeadless(true);
    Application::sInitializer initializer = {"Pacing", 1024, 768, rate, minimum, maximum};
    // The shortest interval is the one an empty frame achieves.
    f64 const target = 1e9 / static_cast<f64>(maximum);
    for (auto _ : state) {
        EmptyFrameApp app(&initializer, 5.0, jobs);
        if (jobs) {
            JobSystem::create(0x10000, platform::getProcessorNum());
        }
        std::clock_t const cpuStart = std::clock();
        u64 const wallStart = platform::getCount();
        app.execute();
        f64 const wall = static_cast<f64>(platform::getCount() - wallStart) / 1e9;
        f64 const cpu = static_cast<f64>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
        if (jobs) {
            JobSystem::getInstance()->destroy();
        }

        std::vector<f64> deviations;
        for (size_t i = 1; i < app.mStamps.size(); ++i) {
            deviations.push_back(std::fabs(static_cast<f64>(app.mStamps[i] - app.mStamps[i - 1]) - target));
        }
        std::sort(deviations.begin(), deviations.end());
        f64 const span = static_cast<f64>(app.mStamps.back() - app.mStamps.front()) / 1e9;
        state.counters["fps"] = static_cast<f64>(app.mStamps.size() - 1) / span;
        state.counters["dev_median_ms"] = deviations[deviations.size() / 2] / 1e6;
        state.counters["dev_p99_ms"] = deviations[deviations.size() * 99 / 100] / 1e6;
        state.counters["cpu_per_wall_s"] = cpu / wall;
    }
}

void BM_PacingFixed60(benchmark::State& state)
{
    runPacing(state, 60, 60, 60);
}

void BM_PacingFixed60JobBatches(benchmark::State& state)
{
    runPacing(state, 60, 60, 60, true);
}

void BM_PacingHost60_20_240(benchmark::State& state)
{
    runPacing(state, 60, 20, 240);
}

} // namespace

BENCHMARK(BM_PacingFixed60)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK(BM_PacingFixed60JobBatches)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK(BM_PacingHost60_20_240)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

HARBOR_BENCHMARK_MAIN()
