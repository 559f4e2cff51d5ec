// Native threads for Thread (foundation/multithread): creation with a chosen
// stack size, joining, and a best-effort niceness. The only code that calls
// pthreads; everything else goes through Thread. Callable from any thread.
#pragma once

#include <atomic>

#include "foundation/types.h"

namespace platform {

typedef u64 ThreadHandle;
typedef void (*ThreadEntry)(void* parameter);

// Starts entry(parameter) at once on a new thread. False when the system
// refuses the thread (resources, limits).
bool createThread(ThreadHandle& handle, ThreadEntry entry, void* parameter, u32 stackSize);
// Waits without limit until the thread has returned, then releases it.
void joinThread(ThreadHandle handle);
// Kernel id of the calling thread (for setThreadNice).
u32 getCurrentThreadId();
// Sets the niceness of one thread; quietly does nothing where the system
// refuses (lowering niceness needs privileges).
void setThreadNice(u32 threadId, int nice);

// Sleeps while *word holds expected, until wakeAddress on the same word or
// the time-out (milliseconds; 0xFFFFFFFF for none). May return early for no
// reason: callers test their condition again.
void waitOnAddress(std::atomic<u32>* word, u32 expected, u32 milliseconds);
// Wakes up to count threads sleeping in waitOnAddress on word.
void wakeAddress(std::atomic<u32>* word, u32 count);

// A hint to the processor inside a spin loop.
inline void pauseProcessor()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

} // namespace platform
