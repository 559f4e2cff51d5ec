#include "platform/thread.h"

#include <linux/futex.h>
#include <pthread.h>
#include <time.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

// Small requested stacks are far too small for libc and sanitizer frames:
// the requested size is a floor, never a ceiling.
u32 const kMinimumStackSize = 0x100000;

struct sStart {
    ThreadEntry mEntry;
    void* mpParameter;
};

void* threadMain(void* start)
{
    sStart* record = static_cast<sStart*>(start);
    ThreadEntry entry = record->mEntry;
    void* parameter = record->mpParameter;
    delete record;
    entry(parameter);
    return nullptr;
}

} // namespace

bool createThread(ThreadHandle& handle, ThreadEntry entry, void* parameter, u32 stackSize)
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        return false;
    }
    size_t size = stackSize < kMinimumStackSize ? kMinimumStackSize : stackSize;
    bool ok = pthread_attr_setstacksize(&attributes, size) == 0;
    pthread_t thread = 0;
    sStart* record = new sStart{entry, parameter};
    if (ok) {
        ok = pthread_create(&thread, &attributes, threadMain, record) == 0;
    }
    pthread_attr_destroy(&attributes);
    if (!ok) {
        delete record;
        return false;
    }
    static_assert(sizeof(pthread_t) <= sizeof(ThreadHandle), "thread handle too small");
    handle = static_cast<ThreadHandle>(thread);
    return true;
}

void joinThread(ThreadHandle handle)
{
    pthread_join(static_cast<pthread_t>(handle), nullptr);
}

u32 getCurrentThreadId()
{
    return static_cast<u32>(syscall(SYS_gettid));
}

void setThreadNice(u32 threadId, int nice)
{
    // On Linux the niceness of PRIO_PROCESS with a thread id is per thread.
    setpriority(PRIO_PROCESS, static_cast<id_t>(threadId), nice);
}

void waitOnAddress(std::atomic<u32>* word, u32 expected, u32 milliseconds)
{
    static_assert(sizeof(std::atomic<u32>) == sizeof(u32), "futex word");
    timespec timeout;
    timespec* limit = nullptr;
    if (milliseconds != 0xFFFFFFFF) {
        timeout.tv_sec = static_cast<time_t>(milliseconds / 1000);
        timeout.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
        limit = &timeout;
    }
    syscall(SYS_futex, reinterpret_cast<u32*>(word), FUTEX_WAIT_PRIVATE, expected, limit, nullptr, 0);
}

void wakeAddress(std::atomic<u32>* word, u32 count)
{
    syscall(SYS_futex, reinterpret_cast<u32*>(word), FUTEX_WAKE_PRIVATE, static_cast<int>(count), nullptr, nullptr, 0);
}

} // namespace platform
