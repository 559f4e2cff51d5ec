// The platform layer: clock, sleeping, processor count, alerts and the
// program's own folder. This folder is the only code that calls SDL2 or POSIX;
// the rest of the program calls these functions. Thread safe unless noted.
#pragma once

#include "foundation/types.h"

namespace platform {

// Monotonic count; counts x numerator / denominator gives nanoseconds.
u64 getCount();
void getTimebase(u64& numerator, u64& denominator);

// Blocks the calling thread for at least the given milliseconds.
void sleepMilliseconds(u32 milliseconds);
// Blocks for at least the given nanoseconds (fine polling of the event loop).
void sleepNanoseconds(u64 nanoseconds);
void yieldThread();

u32 getProcessorNum();

// A stop alert for a person at the screen. In an unattended run (no display,
// no terminal on standard input, CI, or tests that said so) nothing is shown
// and the call returns at once: the caller's trace and abort() follow.
void showStopAlert(char const* title, char const* text);
void setUnattended(bool unattended);
bool isAttended();

// Caps the process's address space (tests of resource exhaustion).
bool limitAddressSpace(u64 bytes);

// Absolute path of the folder holding the executable, without a trailing "/".
// Returns false when the platform cannot tell.
bool getExecutableFolder(char* path, u32 size);

} // namespace platform
