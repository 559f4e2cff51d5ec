// A frame of 1,000 animation units, each playing an animation of 4 cells
// (frames flipping through a sheet, positions moving on LINEAR keys) and one
// generator whose pool of 64 particles stays nearly full, looping at frame
// 119 by a marker. Per frame: the unit passes (sequencer stepping, particle
// update, tree placing) and the draw recording (the views' pass), as wall
// time and as the process's processor time over both; the sort; and the
// replay (executeCommand) apart, which needs a display (Xvfb: the software
// renderer). Once with one job thread, once with one per processor; and the
// particle update apart, on one thread.
#include <benchmark/benchmark.h>

#include "machineload.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#include "animation/animation.h"
#include "animation/animationlist.h"
#include "animation/animationunit.h"
#include "animation/animresource.h"
#include "animation/animsequencer.h"
#include "animbuild.h"
#include "benchapp.h"
#include "jobs/jobsystem.h"
#include "reflection/objectlist.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "resource/resourcesystem.h"
#include "resource/textureresource.h"
#include "unit/unitsystem.h"

namespace {

int const kWidth = 1024;
int const kHeight = 768;
int const kUnitNum = 1000;
u32 const kEndFrame = 120;
// 68,000 quads take some 5.5 MB of command memory: 12 MiB for the renderer.
u32 const kCommandBufferSize = 0xC00000;

// Moves one nominal frame per benchmark frame, so that units update with a
// delta of 1 and every animation advances one frame (the frame loop is not
// running here to set the delta).
class SteppedClock : public Application::Clock {
public:
    u64 getCount() override { return mNow; }
    void getTimebase(u64& numerator, u64& denominator) override
    {
        numerator = 1;
        denominator = 1;
    }
    void sleep(u32) override {}

    u64 mNow = 1000000000ull;
};
SteppedClock gClock;

void nextFrame()
{
    Application* application = Application::getInstance();
    gClock.mNow += application->getCountPerFrame();
    application->checkInterval();
}

AnimResource* makeAnimation(TextureResource* sheet)
{
    AnimResource* animation = new AnimResource();
    animation->setEndFrame(kEndFrame);
    animation->setTexture(sheet);
    char const* const cells[4] = {"c0", "c1", "c2", "c3"};
    for (u32 c = 0; c < 4; ++c) {
        addTrack(animation, cells[c], AnimCell::getStaticTypeInfo(), {"Position", "Size", "UV"});
        key(animation, cells[c], "Size", 0, sSize(16, 16));
        for (u32 f = 0; f < kEndFrame; f += 10) {
            key(animation, cells[c], "UV", f, sTexcoord(static_cast<u16>(16 * ((f / 10 + c) % 4)), 0));
        }
        for (u32 f = 0; f < kEndFrame; f += 30) {
            int const offset = (f / 30) % 2 == 0 ? 0 : 4;
            key(animation, cells[c], "Position", f, sPoint(static_cast<int>(c % 2) * 16 - 8 + offset,
                                                             static_cast<int>(c / 2) * 16 - 8),
                SequencerResource::eInterpolateType_Linear);
        }
    }
    addTrack(animation, "dust", AnimGenerator::getStaticTypeInfo(),
             {"MaxParticleNum", "Position", "Size", "UV", "VelocityMode", "Direction", "DirectionRange", "Speed",
              "OuterRadius", "LifeDuration", "AppearanceTime", "DisappearanceTime", "GenerataionRate"});
    key(animation, "dust", "MaxParticleNum", 0, u8(64));
    key(animation, "dust", "Position", 0, sPoint(0, 16));
    key(animation, "dust", "Size", 0, sSize(4, 4));
    key(animation, "dust", "UV", 0, sTexcoord(0, 16));
    key(animation, "dust", "VelocityMode", 0, u32(AnimGenerator::eVelocityMode_Directional));
    key(animation, "dust", "Direction", 0, 90.0f);
    key(animation, "dust", "DirectionRange", 0, 40.0f);
    key(animation, "dust", "Speed", 0, 0.5f);
    key(animation, "dust", "OuterRadius", 0, u32(4));
    key(animation, "dust", "LifeDuration", 0, u16(60));
    key(animation, "dust", "AppearanceTime", 0, u16(5));
    key(animation, "dust", "DisappearanceTime", 0, u16(5));
    key(animation, "dust", "GenerataionRate", 0, sFixed(1.25f));
    animation->addMarker("loop", kEndFrame - 1);
    animation->setMarkerType("loop", SequencerResource::eMarkerType_JumpFrame);
    animation->setMarkerTargetFrame("loop", 0);
    animation->clearUpdate();
    return animation;
}

// Application, heaps and the systems the units need: built at first use.
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
        harness.mpList->release();
        harness.mpResources->destroy();
        harness.mpViews->destroy();
        harness.mpRender->destroy();
        harness.mpJobs->destroy();
        delete harness.mpApplication;
    }

    JobSystem* mpJobs = nullptr;
    RenderSystem* mpRender = nullptr;
    ViewSystem* mpViews = nullptr;
    ResourceSystem* mpResources = nullptr;
    AnimationListIntermediate* mpList = nullptr;

private:
    Harness()
    {
        // A fixed rate: each frame that is due counts as one nominal frame.
        Application::sInitializer initializer = {"Animation benchmark", static_cast<u32>(kWidth),
                                                 static_cast<u32>(kHeight), 60, 60, 60};
        mpApplication = startBenchApplication(initializer, 0x400000, &gClock);
        mpApplication->checkInterval();
        MemoryManager* memory = MemoryManager::getInstance();
        // As the host: every bound lane keeps a control and its property here.
        PropertyBase::setAllocator(memory->createBlockAllocator(48, 0x10000, "Property"));
        System::setAllocator(memory->createAllocator(0x2000000, "System"));
        UnitBase::setAllocator(memory->createAllocator(0x2000000, "Unit"));
        ResourceBase::setAllocator(memory->createAllocator(0x2000000, "Resource"));
        mpJobs = JobSystem::create(0x10000, platform::getProcessorNum());
        mpRender = RenderSystem::create(kCommandBufferSize);
        mpViews = ViewSystem::create();
        mpResources = ResourceSystem::create();
        std::string const folder = std::string(mpApplication->getIntermediatePath()) + "bench";
        std::system(("mkdir -p '" + folder + "'").c_str());
        writeSheet(folder + "/anim_sheet.tga");
        ResourceBase* sheet = mpResources->createResource("bench/anim_sheet", TextureResource::getStaticTypeInfo());
        AnimResource* animation = makeAnimation(static_cast<TextureResource*>(sheet));
        mpList = new AnimationListIntermediate();
        mpList->setAnimation(0, animation);
        animation->release();
        if (sheet != nullptr) {
            sheet->release();
        }
    }

    BenchApplication* mpApplication = nullptr;
};

// Argument: job threads (0: one per processor).
void BM_AnimationFrame(benchmark::State& state)
{
    Harness& harness = Harness::get();
    u32 const threads = state.range(0) == 0 ? platform::getProcessorNum() : static_cast<u32>(state.range(0));
    harness.mpJobs->setJobThreadNum(threads);
    UnitSystem* units = UnitSystem::create();
    units->setup(); // draws into the game views
    std::mt19937 random(12345);
    for (int i = 0; i < kUnitNum; ++i) {
        AnimationUnit* unit = new AnimationUnit();
        unit->setPosition(sVector(sFixed(static_cast<int>(random() % (kWidth - 64)) - kWidth / 2 + 32, 16),
                                  sFixed(static_cast<int>(random() % (kHeight - 64)) - kHeight / 2 + 32, 16)));
        unit->setAnimationList(harness.mpList);
        unit->setCurrentAnimation(0);
        unit->setCurrentFrame(static_cast<u32>(i) % (kEndFrame - 1)); // spread over the timeline
        units->addUnit(unit);
    }
    // Warm up until every pool is nearly full.
    for (int i = 0; i < 80; ++i) {
        nextFrame();
        harness.mpRender->preprocess();
        units->preprocess();
        units->update();
        harness.mpViews->update();
        units->postprocess();
        harness.mpRender->postprocess();
        harness.mpRender->executeCommand();
    }
    double update = 0.0;
    double draw = 0.0;
    double sort = 0.0;
    double replay = 0.0;
    double cpu = 0.0;
    double cpuUpdate = 0.0;
    double best = 1e9;
    for (auto _ : state) {
        nextFrame();
        harness.mpRender->preprocess();
        units->preprocess();
        std::clock_t const cpuStart = std::clock();
        BenchClock::time_point start = BenchClock::now();
        units->update();
        double const updateTime = millisecondsSince(start);
        std::clock_t const cpuMiddle = std::clock();
        start = BenchClock::now();
        harness.mpViews->update();
        double const drawTime = millisecondsSince(start);
        std::clock_t const cpuEnd = std::clock();
        cpuUpdate += cpuMilliseconds(cpuStart, cpuMiddle);
        cpu += cpuMilliseconds(cpuStart, cpuEnd);
        update += updateTime;
        draw += drawTime;
        best = std::min(best, updateTime + drawTime);
        units->postprocess();
        start = BenchClock::now();
        harness.mpRender->postprocess();
        sort += millisecondsSince(start);
        start = BenchClock::now();
        harness.mpRender->executeCommand();
        replay += millisecondsSince(start);
    }
    // What the last frame drew: textured quads, and the particles among them.
    u32 quads = 0;
    for (sCommand* const* entry = harness.mpRender->getSortedEntry(); (*entry)->mType != sCommand::eType_End; ++entry) {
        if ((*entry)->mType == sCommand::eType_Draw) {
            quads += static_cast<sDrawCommand const*>(*entry)->getVertexCount() / 4;
        }
    }
    double const frames = static_cast<double>(state.iterations());
    state.counters["quads"] = quads;
    state.counters["threads"] = threads;
    state.counters["update_ms"] = update / frames;
    state.counters["draw_ms"] = draw / frames;
    state.counters["update_draw_ms"] = (update + draw) / frames;
    state.counters["best_update_draw_ms"] = best;
    state.counters["cpu_update_draw_ms"] = cpu / frames;
    state.counters["cpu_update_ms"] = cpuUpdate / frames;
    state.counters["cpu_draw_ms"] = (cpu - cpuUpdate) / frames;
    state.counters["sort_ms"] = sort / frames;
    state.counters["replay_ms"] = replay / frames;
    state.counters["entries"] = harness.mpRender->getEntryCount();
    state.counters["gl"] = harness.mpRender->hasContext() ? 1 : 0;
    units->destroy();
}
BENCHMARK(BM_AnimationFrame)->ArgNames({"threads"})->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

// The particle part of the update pass alone: 1,000 generators set up as the
// animation's, kept nearly full, each updated by one frame per iteration on
// the calling thread. The units' update pass is this, the sequencers'
// stepping and the trees.
void BM_ParticleUpdate(benchmark::State& state)
{
    Harness::get();
    std::vector<AnimGenerator*> generators;
    for (int i = 0; i < kUnitNum; ++i) {
        AnimGenerator* generator = new AnimGenerator();
        generator->setMaxParticleNum(64);
        generator->setSize(sSize(4, 4));
        generator->setVelocityMode(AnimGenerator::eVelocityMode_Directional);
        generator->mDirection = 90.0f;
        generator->mDirectionRange = 40.0f;
        generator->mSpeed = 0.5f;
        generator->mOuterRadius = 4;
        generator->mLifeDuration = 60;
        generator->mAppearanceTime = 5;
        generator->mDisappearanceTime = 5;
        generator->setGenerateRate(sFixed(1.25f));
        for (int f = 0; f < 80 + i % 60; ++f) {
            generator->update(sFixed::One);
        }
        generators.push_back(generator);
    }
    std::clock_t const cpuStart = std::clock();
    for (auto _ : state) {
        for (AnimGenerator* generator : generators) {
            generator->update(sFixed::One);
        }
    }
    state.counters["cpu_ms"] = cpuMillisecondsSince(cpuStart) / static_cast<double>(state.iterations());
    state.counters["particles"] = kUnitNum * 64;
    for (AnimGenerator* generator : generators) {
        delete generator;
    }
}
BENCHMARK(BM_ParticleUpdate)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, &Harness::end);
}
