// What the benchmark programs share: an application whose own frame does
// nothing, the timing helpers, and the start of an application that opens a
// window only when the machine has a display to show it on.
#pragma once

#include <chrono>
#include <cstdlib>
#include <ctime>

#include "app/application.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "platform/platform.h"

class BenchApplication : public Application {
public:
    // clock: null for the real one.
    explicit BenchApplication(sInitializer const* initializer, Clock* clock = nullptr)
        : Application(initializer, clock)
    {
    }
    void setup() override {}
    void update(float) override {}
};

typedef std::chrono::steady_clock BenchClock;

inline double millisecondsSince(BenchClock::time_point start)
{
    return std::chrono::duration<double, std::milli>(BenchClock::now() - start).count();
}

// The process's processor time, all threads, between two readings.
inline double cpuMilliseconds(std::clock_t start, std::clock_t stop)
{
    return 1000.0 * static_cast<double>(stop - start) / CLOCKS_PER_SEC;
}

inline double cpuMillisecondsSince(std::clock_t start)
{
    return cpuMilliseconds(start, std::clock());
}

// Unattended, headless without a display, with the String heap of the given
// size and a Temp heap of 16 MiB. clock: null for the real one.
inline BenchApplication* startBenchApplication(Application::sInitializer const& initializer, u32 stringHeap,
                                               Application::Clock* clock = nullptr)
{
    platform::setUnattended(true);
    char const* display = std::getenv("DISPLAY");
    platform::setHeadless(display == nullptr || display[0] == '\0');
    BenchApplication* application = new BenchApplication(&initializer, clock);
    MemoryManager* memory = MemoryManager::getInstance();
    AutoString::setAllocator(memory->createAllocator(stringHeap, "String"));
    application->setTempAllocator(memory->createAllocator(0x1000000, "Temp"));
    return application;
}
