// Child processes: running a function in a copy of this process and learning
// how that copy ended. For tests that must survive what they provoke (aborts,
// crashes, hangs). Call it only while this process runs no other threads.
#pragma once

namespace platform {

struct sChildEnd {
    bool mExited;   // ended through exit: mCode holds its status
    int mCode;
    bool mSignaled; // ended by a signal: mSignal holds its number
    int mSignal;
};

// Forks; the child runs function(user) and exits with status 0 when it
// returns. The parent waits for the child and answers how it ended.
sChildEnd runChild(void (*function)(void* user), void* user);

} // namespace platform
