// Native threads for Thread (foundation/multithread): creation with a chosen
// stack size, joining, and a best-effort niceness. The only code that calls
// pthreads; everything else goes through Thread. Callable from any thread.
#pragma once

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

} // namespace platform
