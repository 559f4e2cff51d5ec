#include "foundation/multithread.h"

#include "platform/platform.h"

void Thread::sleep(u32 milliseconds)
{
    platform::sleepMilliseconds(milliseconds);
}

void Thread::yield()
{
    platform::yieldThread();
}
