#include "platform/platform.h"

#include <SDL2/SDL.h>
#include <sched.h>
#include <sys/resource.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

namespace platform {

namespace {
std::atomic<int> sUnattended{-1}; // -1: not decided yet
}

u64 getCount()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<u64>(now.tv_sec) * 1000000000ull + static_cast<u64>(now.tv_nsec);
}

void getTimebase(u64& numerator, u64& denominator)
{
    numerator = 1;
    denominator = 1;
}

void sleepMilliseconds(u32 milliseconds)
{
    sleepNanoseconds(static_cast<u64>(milliseconds) * 1000000ull);
}

void sleepNanoseconds(u64 nanoseconds)
{
    // An absolute deadline, so that a signal cannot shorten the sleep.
    timespec deadline;
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    u64 total = static_cast<u64>(deadline.tv_nsec) + nanoseconds;
    deadline.tv_sec += static_cast<time_t>(total / 1000000000ull);
    deadline.tv_nsec = static_cast<long>(total % 1000000000ull);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) != 0) {
    }
}

void yieldThread()
{
    sched_yield();
}

u32 getProcessorNum()
{
    long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count > 0 ? static_cast<u32>(count) : 1u;
}

void setUnattended(bool unattended)
{
    sUnattended.store(unattended ? 1 : 0);
}

bool isAttended()
{
    int state = sUnattended.load();
    if (state < 0) {
        char const* display = getenv("DISPLAY");
        bool const noDisplay = display == nullptr || display[0] == '\0';
        bool const ci = getenv("CI") != nullptr;
        state = (noDisplay || ci || !isatty(STDIN_FILENO)) ? 1 : 0;
        sUnattended.store(state);
    }
    return state == 0;
}

void showStopAlert(char const* title, char const* text)
{
    if (!isAttended()) {
        return;
    }
    // Modal: returns when the person confirms.
    SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_ERROR, title, text, nullptr);
}

bool limitAddressSpace(u64 bytes)
{
    rlimit limit;
    limit.rlim_cur = limit.rlim_max = static_cast<rlim_t>(bytes);
    return setrlimit(RLIMIT_AS, &limit) == 0;
}

bool getExecutableFolder(char* path, u32 size)
{
    if (size == 0) {
        return false;
    }
    ssize_t length = readlink("/proc/self/exe", path, size - 1);
    if (length <= 0 || static_cast<u32>(length) >= size - 1) {
        return false;
    }
    path[length] = '\0';
    char* slash = strrchr(path, '/');
    if (slash == nullptr) {
        return false;
    }
    *slash = '\0';
    return true;
}

} // namespace platform
