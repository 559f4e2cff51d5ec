// A frame of 1,000 units, the most that one level of a parallel pass and one
// view take (the job queue holds 1,024). Each unit moves its position in its
// update and draws 10 or 100 quads around it in GAME0, on one of 16 draw
// levels. Per frame: preprocess (render and unit systems), update (the unit
// passes), draw recording (the views' pass), sort (the render postprocess) and
// replay (executeCommand), as wall time; the processor time of the whole
// process over update and draw recording; and the fastest frame's update and
// draw (on a shared machine, the one least disturbed). Once with one job
// thread, once with one per processor. Replay needs a display (Xvfb: software
// GL, whose own threads then also count as processor time); without one it
// makes no GL calls.
#include <benchmark/benchmark.h>

#include "benchapp.h"
#include "machineload.h"

#include <algorithm>
#include <random>
#include <vector>

#include "foundation/memorymanager.h"
#include "jobs/jobsystem.h"
#include "platform/platform.h"
#include "render/drawcontext.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "unit/unitbase.h"
#include "unit/unitsystem.h"

namespace {

int const kWidth = 1024;
int const kHeight = 768;
int const kUnitNum = 1000;
int const kQuadSize = 8;
u32 const kLevels = 16;
// 100,000 quads take some 6.4 MB of command memory, more than the host's
// 4 MiB: the benchmark's renderer gets 12 MiB, from a System heap of 32 MiB.
u32 const kCommandBufferSize = 0xC00000;

// Bounces around the world rectangle of GAME0 and draws a small cluster of
// quads around its position.
class MovingUnit : public UnitBase {
public:
    MovingUnit(std::mt19937& random, u32 quads, u32 level) : mQuads(quads), mLevel(level)
    {
        mPosition = sVector(sFixed(static_cast<int>(random() % (kWidth - 64)) - kWidth / 2 + 32, 16),
                            sFixed(static_cast<int>(random() % (kHeight - 64)) - kHeight / 2 + 32, 16));
        mVelocity = sVector(sFixed(static_cast<int>(random() % 0x30000) - 0x18000, 0),
                            sFixed(static_cast<int>(random() % 0x30000) - 0x18000, 0));
        mColor = sColor(static_cast<u8>(random()), static_cast<u8>(random()), static_cast<u8>(random()), 255);
    }

    void update(float delta) override
    {
        sFixed const step(delta);
        mPosition.x += mVelocity.x * step;
        mPosition.y += mVelocity.y * step;
        if (mPosition.x < sFixed(-kWidth / 2, 16) || mPosition.x > sFixed(kWidth / 2, 16)) {
            mVelocity.x = -mVelocity.x;
        }
        if (mPosition.y < sFixed(-kHeight / 2, 16) || mPosition.y > sFixed(kHeight / 2, 16)) {
            mVelocity.y = -mVelocity.y;
        }
    }

    void draw(DrawContext* context) const override
    {
        context->setDrawLevel(mLevel, 0);
        context->setVertexDecl(eVertexDecl_Plain);
        context->setBlendMode(eBlendMode_Opaque);
        DrawContext::sVertex* vertex =
            static_cast<DrawContext::sVertex*>(context->allocateVertices(ePrimitiveType_Quad, mQuads * 4));
        sFixed const size(kQuadSize, 16);
        for (u32 i = 0; i < mQuads; ++i) {
            // A row of quads to the right of the position, wrapping every ten.
            sFixed const left = mPosition.x + sFixed(static_cast<int>(i % 10) * (kQuadSize + 2), 16);
            sFixed const top = mPosition.y + sFixed(static_cast<int>(i / 10) * (kQuadSize + 2), 16);
            vertex[0].mPosition = sVector(left, top);
            vertex[1].mPosition = sVector(left + size, top);
            vertex[2].mPosition = sVector(left, top + size);
            vertex[3].mPosition = sVector(left + size, top + size);
            for (int corner = 0; corner < 4; ++corner) {
                vertex[corner].mColor = mColor;
            }
            vertex += 4;
        }
    }

private:
    sVector mPosition;
    sVector mVelocity;
    sColor mColor;
    u32 mQuads;
    u32 mLevel;
};

// Application, heaps, job, render and view systems: built at first use.
class Harness {
public:
    static Harness& get()
    {
        static Harness* harness = new Harness();
        return *harness;
    }

    static void end()
    {
        Harness& harness = get();
        harness.mpViews->destroy();
        harness.mpRender->destroy();
        harness.mpJobs->destroy();
        delete harness.mpApplication;
    }

    JobSystem* mpJobs = nullptr;
    RenderSystem* mpRender = nullptr;
    ViewSystem* mpViews = nullptr;

private:
    Harness()
    {
        Application::sInitializer initializer = {"Unit benchmark", static_cast<u32>(kWidth), static_cast<u32>(kHeight),
                                                 60, 20, 240};
        mpApplication = startBenchApplication(initializer, 0x200000);
        MemoryManager* memory = MemoryManager::getInstance();
        System::setAllocator(memory->createAllocator(0x2000000, "System"));
        UnitBase::setAllocator(memory->createAllocator(0x1000000, "Unit"));
        mpJobs = JobSystem::create(0x10000, platform::getProcessorNum());
        mpRender = RenderSystem::create(kCommandBufferSize);
        mpViews = ViewSystem::create();
    }

    BenchApplication* mpApplication = nullptr;
};

// Arguments: quads per unit, job threads (0: one per processor).
void BM_UnitFrame(benchmark::State& state)
{
    Harness& harness = Harness::get();
    u32 const quads = static_cast<u32>(state.range(0));
    u32 const threads = state.range(1) == 0 ? platform::getProcessorNum() : static_cast<u32>(state.range(1));
    harness.mpJobs->setJobThreadNum(threads);
    UnitSystem* units = UnitSystem::create();
    units->setup(); // draws into the game views
    std::mt19937 random(12345);
    for (int i = 0; i < kUnitNum; ++i) {
        units->addUnit(new MovingUnit(random, quads, static_cast<u32>(i) % kLevels));
    }
    double preprocess = 0.0;
    double update = 0.0;
    double draw = 0.0;
    double sort = 0.0;
    double replay = 0.0;
    double cpu = 0.0;
    double best = 1e9; // the fastest frame's update and draw recording
    for (auto _ : state) {
        BenchClock::time_point start = BenchClock::now();
        harness.mpRender->preprocess();
        units->preprocess();
        preprocess += millisecondsSince(start);

        std::clock_t const cpuStart = std::clock();
        start = BenchClock::now();
        units->update();
        double const updateTime = millisecondsSince(start);
        start = BenchClock::now();
        harness.mpViews->update();
        double const drawTime = millisecondsSince(start);
        update += updateTime;
        draw += drawTime;
        best = std::min(best, updateTime + drawTime);
        cpu += cpuMillisecondsSince(cpuStart);

        units->postprocess();
        start = BenchClock::now();
        harness.mpRender->postprocess();
        sort += millisecondsSince(start);
        start = BenchClock::now();
        harness.mpRender->executeCommand();
        replay += millisecondsSince(start);
    }
    double const frames = static_cast<double>(state.iterations());
    state.counters["threads"] = threads;
    state.counters["preprocess_ms"] = preprocess / frames;
    state.counters["update_ms"] = update / frames;
    state.counters["draw_ms"] = draw / frames;
    state.counters["sort_ms"] = sort / frames;
    state.counters["replay_ms"] = replay / frames;
    state.counters["cpu_update_draw_ms"] = cpu / frames;
    state.counters["best_update_draw_ms"] = best;
    state.counters["entries"] = harness.mpRender->getEntryCount();
    state.counters["gl"] = harness.mpRender->hasContext() ? 1 : 0;
    units->destroy();
}
BENCHMARK(BM_UnitFrame)
    ->ArgNames({"quads", "threads"})
    ->Args({10, 1})
    ->Args({10, 0})
    ->Args({100, 1})
    ->Args({100, 0})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, &Harness::end);
}
