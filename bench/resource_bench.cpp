// Loading a 1024 x 1024 texture through ResourceSystem::createResource, as a
// headless host would (the texture's GL upload is not part of it): from the
// TGA with the conversion that writes the native file, and from the native
// file alone, read from the page cache. Bytes per second count the file read
// by the measured route (the TGA, or the native file), over wall time.
#include <benchmark/benchmark.h>

#include "machineload.h"

#include <cstdio>
#include <filesystem>
#include <string>

#include "benchapp.h"
#include "foundation/allocator.h"
#include "foundation/autostring.h"
#include "platform/window.h"
#include "render/rendersystem.h"
#include "resource/resourcebase.h"
#include "resource/resourcesystem.h"
#include "resource/textureresource.h"

namespace {

u32 const kSize = 1024;
char const* const kPath = "bench/big";

std::string nativeFile()
{
    return std::string(Application::getInstance()->getNativePath()) + kPath + ".tex";
}

std::string intermediateFile()
{
    return std::string(Application::getInstance()->getIntermediatePath()) + kPath + ".tga";
}

// A 32-bit TGA, top row first, of a gradient.
void writeTga()
{
    std::filesystem::create_directories(std::filesystem::path(intermediateFile()).parent_path());
    FILE* file = fopen(intermediateFile().c_str(), "wb");
    unsigned char header[18] = {0, 0, 2};
    header[12] = kSize & 255;
    header[13] = kSize >> 8;
    header[14] = kSize & 255;
    header[15] = kSize >> 8;
    header[16] = 32;
    header[17] = 0x28;
    fwrite(header, 1, sizeof(header), file);
    std::string row(kSize * 4, '\0');
    for (u32 y = 0; y < kSize; ++y) {
        for (u32 x = 0; x < kSize; ++x) {
            row[x * 4] = static_cast<char>(x);
            row[x * 4 + 1] = static_cast<char>(y);
            row[x * 4 + 2] = static_cast<char>(x ^ y);
            row[x * 4 + 3] = static_cast<char>(255);
        }
        fwrite(row.data(), 1, row.size(), file);
    }
    fclose(file);
}

void loadOnce(benchmark::State& state)
{
    ResourceBase* resource = ResourceSystem::getInstance()->createResource(kPath, TextureResource::getStaticTypeInfo());
    if (resource == nullptr || static_cast<TextureResource*>(resource)->getWidth() != kSize) {
        state.SkipWithError("texture did not load");
        return;
    }
    resource->release();
}

void LoadFromTgaWithConversion(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        std::filesystem::remove(nativeFile());
        state.ResumeTiming();
        loadOnce(state);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (18 + kSize * kSize * 4));
}

void LoadFromNative(benchmark::State& state)
{
    loadOnce(state); // makes the native file and brings it into the page cache
    for (auto _ : state) {
        loadOnce(state);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (12 + kSize * kSize * 4));
}

BENCHMARK(LoadFromTgaWithConversion)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(LoadFromNative)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    reportMachineLoad();
    // The host's heaps and its headless form: String, Temp and Resource.
    platform::setHeadless(true);
    AutoString::setAllocator(new GPAllocator(0x200000, "String", nullptr, 32, true));
    static Application::sInitializer const initializer = {"Resource bench", 320, 240, 60, 20, 60};
    BenchApplication* application = new BenchApplication(&initializer);
    application->setTempAllocator(new GPAllocator(0x1000000, "Temp", nullptr, 32, true));
    ResourceBase::setAllocator(new GPAllocator(0x2000000, "Resource", nullptr, 32, true));
    RenderSystem::create();
    ResourceSystem::create();
    writeTga();

    // The loader's traces would time the terminal.
    FILE* quiet = freopen("/dev/null", "w", stderr);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    (void)quiet;

    ResourceSystem::getInstance()->destroy();
    RenderSystem::getInstance()->destroy();
    std::filesystem::remove_all(std::filesystem::path(intermediateFile()).parent_path());
    std::filesystem::remove_all(std::filesystem::path(nativeFile()).parent_path());
    delete application;
    return 0;
}
