// Sprites through the renderer against SDL2's own renderer, in a real window.
// 1,000, 10,000 and 50,000 textured 32 by 32 quads from one 256 by 256
// texture, at random places on random draw levels, recorded from all job
// threads; per frame the recording, sort and replay times, draw calls and
// frames per second. The same sprites through SDL_Renderer (OpenGL driver,
// SDL_RenderGeometry) give its frames per second. Also the sort of 16,384
// keys against std::stable_sort on one thread. Needs a display for the
// sprites (run under Xvfb in CI); the sort runs anywhere.
//
// Two orders of recording: "layered" keeps the sprites grouped by level (as a
// game that holds its sprites per layer does), so a context's batches run
// long; "shuffled" records them in random level order, so every sprite
// breaks the batch (a command per sprite; 50,000 of them would pass the entry
// table's 16,384, so that order runs with 1,000 and 10,000). SDL draws in
// submission order and has no levels: it gets the sprites in level order, and
// in the shuffled case sorts them each frame.
#include <benchmark/benchmark.h>

#include "machineload.h"

#include <SDL2/SDL.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <time.h>
#include <cstdlib>
#include <numeric>
#include <random>
#include <vector>

#include "app/application.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "jobs/jobsystem.h"
#include "platform/glcontext.h"
#include "platform/platform.h"
#include "platform/window.h"
#include "render/drawcontext.h"
#include "render/renderobject.h"
#include "render/rendersystem.h"

namespace {

int const kWidth = 1024;
int const kHeight = 768;
int const kSpriteSize = 32;
int const kTextureSize = 256;
u32 const kLevels = 16;
// 50,000 textured quads take some 4.3 MB of command memory: more than the
// host's 4 MiB, so the benchmark's renderer gets 8 MiB.
u32 const kCommandBufferSize = 0x800000;

typedef std::chrono::steady_clock Clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

class BenchApplication : public Application {
public:
    explicit BenchApplication(sInitializer const* initializer) : Application(initializer) {}
    void setup() override {}
    void update(float) override {}
};

void pumpEvents()
{
    SDL_PumpEvents(); // keeps the window manager content between frames
}

struct Sprite {
    int x;
    int y;
    u32 level;
    u16 u; // texel of the left top corner
    u16 v;
};

// The engine's side: application window, heaps, job and render systems, and
// the sprite texture; built at first use and ended after the run.
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
        if (harness.mpTexture != nullptr) {
            harness.mpTexture->release();
        }
        if (harness.mpSdlTexture != nullptr) {
            SDL_DestroyTexture(harness.mpSdlTexture);
            SDL_DestroyRenderer(harness.mpSdlRenderer);
            SDL_DestroyWindow(harness.mpSdlWindow);
        }
        harness.mpRender->destroy();
        harness.mpJobs->destroy();
        delete harness.mpApplication;
    }

    bool hasWindow() const { return mpRender->hasContext(); }

    // The pattern of the 256 by 256 texture: 64 cells of 32 by 32, each a disc
    // of its own colour on a transparent ground.
    static std::vector<u8> texturePixels()
    {
        std::vector<u8> pixels(kTextureSize * kTextureSize * 4);
        for (int y = 0; y < kTextureSize; ++y) {
            for (int x = 0; x < kTextureSize; ++x) {
                int const cell = (y / kSpriteSize) * 8 + x / kSpriteSize;
                int const dx = x % kSpriteSize - 16;
                int const dy = y % kSpriteSize - 16;
                u8* texel = &pixels[(y * kTextureSize + x) * 4];
                texel[0] = static_cast<u8>(64 + cell * 3);
                texel[1] = static_cast<u8>(255 - cell * 3);
                texel[2] = static_cast<u8>(cell * 4);
                texel[3] = dx * dx + dy * dy < 15 * 15 ? 255 : 0;
            }
        }
        return pixels;
    }

    Texture* mpTexture = nullptr;
    RenderSystem* mpRender = nullptr;
    JobSystem* mpJobs = nullptr;
    SDL_Window* mpSdlWindow = nullptr;
    SDL_Renderer* mpSdlRenderer = nullptr;
    SDL_Texture* mpSdlTexture = nullptr;

    void makeSdlRenderer()
    {
        if (mpSdlRenderer != nullptr) {
            return;
        }
        SDL_SetHint(SDL_HINT_RENDER_DRIVER, "opengl");
        mpSdlWindow = SDL_CreateWindow("SDL_Renderer sprites", 100, 100, kWidth, kHeight, SDL_WINDOW_SHOWN);
        mpSdlRenderer = SDL_CreateRenderer(mpSdlWindow, -1, SDL_RENDERER_ACCELERATED);
        mpSdlTexture = SDL_CreateTexture(mpSdlRenderer, SDL_PIXELFORMAT_ABGR8888, SDL_TEXTUREACCESS_STATIC,
                                         kTextureSize, kTextureSize);
        std::vector<u8> const pixels = texturePixels();
        SDL_UpdateTexture(mpSdlTexture, nullptr, pixels.data(), kTextureSize * 4);
        // The engine's sprites: nearest texels, blended by source alpha.
        SDL_SetTextureBlendMode(mpSdlTexture, SDL_BLENDMODE_BLEND);
        SDL_SetTextureScaleMode(mpSdlTexture, SDL_ScaleModeNearest);
    }

    // Both windows stand at the same place; the one measured is the only one
    // shown, so that each frame's picture reaches the screen whole and the
    // other does not cover it (nor cost the X server a copy).
    void showOnly(bool engine)
    {
        if (engine) {
            if (mpSdlWindow != nullptr) {
                SDL_HideWindow(mpSdlWindow);
            }
            platform::showWindow(mpApplication->getWindowHandle());
        } else {
            platform::hideWindow(mpApplication->getWindowHandle());
            SDL_ShowWindow(mpSdlWindow);
        }
        pumpEvents();
    }

private:
    Harness()
    {
        platform::setUnattended(true);
        char const* display = getenv("DISPLAY");
        platform::setHeadless(display == nullptr || display[0] == '\0');
        Application::sInitializer initializer = {"Sprite benchmark", static_cast<u32>(kWidth),
                                                 static_cast<u32>(kHeight), 60, 20, 240};
        mpApplication = new BenchApplication(&initializer);
        if (mpApplication->getWindowHandle() == nullptr) {
            delete mpApplication;
            platform::setHeadless(true);
            mpApplication = new BenchApplication(&initializer);
        }
        MemoryManager* memory = MemoryManager::getInstance();
        AutoString::setAllocator(memory->createAllocator(0x200000, "String"));
        mpApplication->setTempAllocator(memory->createAllocator(0x1000000, "Temp"));
        System::setAllocator(memory->createAllocator(0x1000000, "System"));
        mpJobs = JobSystem::create(0x10000, platform::getProcessorNum());
        mpRender = RenderSystem::create(kCommandBufferSize);
        std::vector<u8> pixels = texturePixels();
        mpTexture = new Texture(kTextureSize, kTextureSize, false, pixels.data());
    }

    BenchApplication* mpApplication = nullptr;
};

class SpriteScene {
public:
    SpriteScene(u32 count, bool layered) : mSprites(count), mLayered(layered)
    {
        std::mt19937 random(12345);
        for (Sprite& sprite : mSprites) {
            sprite.x = static_cast<int>(random() % (kWidth - kSpriteSize));
            sprite.y = static_cast<int>(random() % (kHeight - kSpriteSize));
            sprite.level = static_cast<u32>(random() % kLevels);
            u32 const cell = random() % 64;
            sprite.u = static_cast<u16>((cell % 8) * kSpriteSize);
            sprite.v = static_cast<u16>((cell / 8) * kSpriteSize);
        }
        if (layered) {
            std::stable_sort(mSprites.begin(), mSprites.end(),
                             [](Sprite const& a, Sprite const& b) { return a.level < b.level; });
        }
    }

    // A job: one slice of the sprites into the running thread's context.
    void recordSlice(void* user, void* uniqueData)
    {
        u32 const slice = static_cast<u32>(reinterpret_cast<std::uintptr_t>(user));
        u32 const count = static_cast<u32>(mSprites.size());
        u32 const begin = static_cast<u32>(static_cast<u64>(count) * slice / mSlices);
        u32 const end = static_cast<u32>(static_cast<u64>(count) * (slice + 1) / mSlices);
        DrawContext* context = static_cast<DrawContext*>(uniqueData);
        u32 level = 0xFFFFFFFFu;
        for (u32 i = begin; i < end; ++i) {
            Sprite const& sprite = mSprites[i];
            if (sprite.level != level) {
                level = sprite.level;
                context->setDrawLevel(level, 0);
            }
            DrawContext::sTexturedVertex* vertex =
                static_cast<DrawContext::sTexturedVertex*>(context->allocateVertices(ePrimitiveType_Quad, 4));
            sFixed const left(sprite.x, 16);
            sFixed const top(sprite.y, 16);
            sFixed const right(sprite.x + kSpriteSize, 16);
            sFixed const bottom(sprite.y + kSpriteSize, 16);
            u16 const u1 = static_cast<u16>(sprite.u + kSpriteSize);
            u16 const v1 = static_cast<u16>(sprite.v + kSpriteSize);
            vertex[0] = {sVector(left, top), sColor::White, sTexcoord(sprite.u, sprite.v)};
            vertex[1] = {sVector(right, top), sColor::White, sTexcoord(u1, sprite.v)};
            vertex[2] = {sVector(left, bottom), sColor::White, sTexcoord(sprite.u, v1)};
            vertex[3] = {sVector(right, bottom), sColor::White, sTexcoord(u1, v1)};
        }
    }

    // One frame of the engine: record from all job threads, sort, replay.
    void engineFrame(Harness& harness, double& recordMs, double& sortMs, double& replayMs)
    {
        RenderSystem* render = harness.mpRender;
        JobSystem* jobs = harness.mpJobs;
        Clock::time_point start = Clock::now();
        render->preprocess();
        DrawContext* parent = render->popContext();
        sRect const window(0, 0, kWidth, kHeight);
        parent->setViewport(window);
        parent->setScissorRect(window);
        parent->setProjectionRect(window);
        parent->setVertexDecl(eVertexDecl_Textured);
        parent->setBlendMode(eBlendMode_Alpha);
        parent->setTexture(harness.mpTexture);
        parent->setTextureFiltering(eTextureFiltering_Nearest);
        u32 const threads = jobs->getJobThreadNum();
        mSlices = threads;
        std::vector<DrawContext*> contexts(threads, parent);
        jobs->setThreadUniqueData(0, parent);
        for (u32 i = 1; i < threads; ++i) {
            contexts[i] = render->popContext();
            contexts[i]->duplicate(parent);
            jobs->setThreadUniqueData(i, contexts[i]);
        }
        for (u32 slice = 0; slice < mSlices; ++slice) {
            jobs->addJob(new ThreadUniqueJob<SpriteScene>(this, &SpriteScene::recordSlice,
                                                          reinterpret_cast<void*>(std::uintptr_t(slice))));
        }
        jobs->executeJob();
        for (u32 i = 0; i < threads; ++i) {
            render->pushContext(contexts[i]);
        }
        recordMs += millisecondsSince(start);

        start = Clock::now();
        render->postprocess();
        sortMs += millisecondsSince(start);

        start = Clock::now();
        render->executeCommand();
        replayMs += millisecondsSince(start);
    }

    // One frame of SDL_Renderer: vertices in level order, one geometry call.
    void sdlFrame(Harness& harness)
    {
        std::vector<Sprite const*>& order = mOrder;
        if (order.size() != mSprites.size()) {
            order.resize(mSprites.size());
            mVertices.resize(mSprites.size() * 4);
            mIndices.resize(mSprites.size() * 6);
            for (size_t i = 0; i < mSprites.size(); ++i) {
                int const base = static_cast<int>(i * 4);
                int const quad[6] = {base, base + 1, base + 2, base + 1, base + 2, base + 3};
                std::copy(quad, quad + 6, mIndices.begin() + static_cast<long>(i * 6));
            }
        }
        for (size_t i = 0; i < mSprites.size(); ++i) {
            order[i] = &mSprites[i];
        }
        if (!mLayered) {
            // SDL has no draw levels: the frame's order is sorted here.
            std::stable_sort(order.begin(), order.end(), [](Sprite const* a, Sprite const* b) { return a->level < b->level; });
        }
        float const scale = 1.0f / kTextureSize;
        SDL_Color const white = {255, 255, 255, 255};
        for (size_t i = 0; i < order.size(); ++i) {
            Sprite const& sprite = *order[i];
            float const left = static_cast<float>(sprite.x);
            float const top = static_cast<float>(sprite.y);
            float const u0 = sprite.u * scale;
            float const v0 = sprite.v * scale;
            float const u1 = (sprite.u + kSpriteSize) * scale;
            float const v1 = (sprite.v + kSpriteSize) * scale;
            SDL_Vertex* vertex = &mVertices[i * 4];
            vertex[0] = {{left, top}, white, {u0, v0}};
            vertex[1] = {{left + kSpriteSize, top}, white, {u1, v0}};
            vertex[2] = {{left, top + kSpriteSize}, white, {u0, v1}};
            vertex[3] = {{left + kSpriteSize, top + kSpriteSize}, white, {u1, v1}};
        }
        SDL_SetRenderDrawColor(harness.mpSdlRenderer, 77, 77, 77, 255);
        SDL_RenderClear(harness.mpSdlRenderer);
        SDL_RenderGeometry(harness.mpSdlRenderer, harness.mpSdlTexture, mVertices.data(),
                           static_cast<int>(mVertices.size()), mIndices.data(), static_cast<int>(mIndices.size()));
        SDL_RenderPresent(harness.mpSdlRenderer);
    }

private:
    std::vector<Sprite> mSprites;
    bool mLayered;
    u32 mSlices = 1;
    std::vector<Sprite const*> mOrder;
    std::vector<SDL_Vertex> mVertices;
    std::vector<int> mIndices;
};

// Processor time of the whole process (the renderer's threads included) since
// start: on a shared machine a fairer measure of the work than the clock.
double processMilliseconds(std::clock_t start)
{
    return 1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// Processor time of the calling thread alone: what the main thread itself
// spends per frame (recording, submitting, presenting), apart from the
// rasteriser's threads and from the time it waits or is preempted.
double threadMilliseconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1000.0 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1.0e6;
}

void BM_Engine(benchmark::State& state, bool layered)
{
    Harness& harness = Harness::get();
    if (!harness.hasWindow()) {
        state.SkipWithError("needs a display");
        return;
    }
    harness.showOnly(true);
    SpriteScene scene(static_cast<u32>(state.range(0)), layered);
    double record = 0.0, sort = 0.0, replay = 0.0;
    scene.engineFrame(harness, record, sort, replay); // warm-up
    record = sort = replay = 0.0;
    u64 draws = 0;
    std::clock_t const cpuStart = std::clock();
    double const mainStart = threadMilliseconds();
    for (auto _ : state) {
        scene.engineFrame(harness, record, sort, replay);
        draws += harness.mpRender->getDrawCount();
        pumpEvents();
    }
    double const frames = static_cast<double>(state.iterations());
    state.counters["cpu_ms"] = processMilliseconds(cpuStart) / frames;
    state.counters["main_cpu_ms"] = (threadMilliseconds() - mainStart) / frames;
    state.counters["record_ms"] = record / frames;
    state.counters["sort_ms"] = sort / frames;
    state.counters["replay_ms"] = replay / frames;
    state.counters["draws"] = static_cast<double>(draws) / frames;
    state.counters["entries"] = harness.mpRender->getEntryCount();
    state.counters["fps"] = benchmark::Counter(frames, benchmark::Counter::kIsRate);
    state.counters["threads"] = harness.mpJobs->getJobThreadNum();
}

void BM_SdlRenderer(benchmark::State& state, bool layered)
{
    Harness& harness = Harness::get();
    if (!harness.hasWindow()) {
        state.SkipWithError("needs a display");
        return;
    }
    harness.makeSdlRenderer();
    harness.showOnly(false);
    SpriteScene scene(static_cast<u32>(state.range(0)), layered);
    scene.sdlFrame(harness); // warm-up
    std::clock_t const cpuStart = std::clock();
    double const mainStart = threadMilliseconds();
    for (auto _ : state) {
        scene.sdlFrame(harness);
        pumpEvents();
    }
    double const frames = static_cast<double>(state.iterations());
    state.counters["cpu_ms"] = processMilliseconds(cpuStart) / frames;
    state.counters["main_cpu_ms"] = (threadMilliseconds() - mainStart) / frames;
    state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

// 16,383 commands with random keys and the end command: a full entry table.
// Only postprocess is timed, which is the sort and the handing over of 32
// empty contexts. The argument is the number of job threads (0: all).
void BM_SortFullTable_Engine(benchmark::State& state)
{
    Harness& harness = Harness::get();
    RenderSystem* render = harness.mpRender;
    u32 const allThreads = harness.mpJobs->getJobThreadNum();
    if (state.range(0) != 0) {
        harness.mpJobs->setJobThreadNum(static_cast<u32>(state.range(0)));
    }
    u32 const count = RenderSystem::kCommandEntryMax - 1;
    std::mt19937 random(99);
    std::vector<u32> keys(count);
    for (u32& key : keys) {
        key = static_cast<u32>(random());
    }
    std::vector<sCommand*> commands(count);
    for (auto _ : state) {
        render->preprocess();
        for (u32 i = 0; i < count; ++i) {
            commands[i] = render->allocateCommandBuffer(sizeof(sDrawCommand));
            commands[i]->mType = sCommand::eType_Draw;
            commands[i]->mKey = keys[i];
        }
        render->entryCommand(commands.data(), count);
        Clock::time_point const start = Clock::now();
        render->postprocess();
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
    state.counters["threads"] = harness.mpJobs->getJobThreadNum();
    state.SetItemsProcessed(state.iterations() * (count + 1));
    harness.mpJobs->setJobThreadNum(allThreads);
}

void BM_SortFullTable_StdStableSort(benchmark::State& state)
{
    Harness& harness = Harness::get();
    RenderSystem* render = harness.mpRender;
    u32 const count = RenderSystem::kCommandEntryMax;
    std::mt19937 random(99);
    std::vector<sCommand*> commands(count);
    std::vector<sCommand*> sorted(count);
    render->preprocess();
    for (u32 i = 0; i < count; ++i) {
        commands[i] = render->allocateCommandBuffer(sizeof(sDrawCommand));
        commands[i]->mType = sCommand::eType_Draw;
        commands[i]->mKey = i + 1 < count ? static_cast<u32>(random()) : 0xFFFFFFFFu;
    }
    for (auto _ : state) {
        std::copy(commands.begin(), commands.end(), sorted.begin());
        Clock::time_point const start = Clock::now();
        std::stable_sort(sorted.begin(), sorted.end(), [](sCommand const* a, sCommand const* b) { return a->mKey < b->mKey; });
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        benchmark::DoNotOptimize(sorted.data());
    }
    state.SetItemsProcessed(state.iterations() * count);
}

} // namespace

// The machine may be shared: with repetitions, the fastest run is the one
// least disturbed by other work.
static double fastest(std::vector<double> const& runs)
{
    return *std::min_element(runs.begin(), runs.end());
}

BENCHMARK(BM_SortFullTable_Engine)->Arg(0)->Arg(1)->UseManualTime()->ComputeStatistics("min", fastest)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SortFullTable_StdStableSort)->UseManualTime()->ComputeStatistics("min", fastest)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Engine, layered, true)->Arg(1000)->Arg(10000)->Arg(50000)->UseRealTime()->MinTime(2.0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_SdlRenderer, layered, true)->Arg(1000)->Arg(10000)->Arg(50000)->UseRealTime()->MinTime(2.0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Engine, shuffled, false)->Arg(1000)->Arg(10000)->UseRealTime()->MinTime(2.0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_SdlRenderer, shuffled, false)->Arg(1000)->Arg(10000)->UseRealTime()->MinTime(2.0)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    reportMachineLoad();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    Harness::end();
    return 0;
}
