#include "platform/process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

sChildEnd runChild(void (*function)(void* user), void* user)
{
    sChildEnd end = {false, 0, false, 0};
    pid_t const child = fork();
    if (child == 0) {
        function(user);
        _exit(0);
    }
    if (child < 0) {
        end.mExited = true;
        end.mCode = -1;
        return end;
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            end.mExited = true;
            end.mCode = -1;
            return end;
        }
    }
    if (WIFEXITED(status)) {
        end.mExited = true;
        end.mCode = WEXITSTATUS(status);
    } else if (WIFSIGNALED(status)) {
        end.mSignaled = true;
        end.mSignal = WTERMSIG(status);
    }
    return end;
}

} // namespace platform
