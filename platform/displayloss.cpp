#include "platform/displayloss.h"

#include <X11/Xlib.h>
#include <unistd.h>

#include <cstdio>

namespace platform {

namespace {

// Xlib expects the process to end here: returning would end it anyway.
int onDisplayLost(Display*)
{
    static char const kMessage[] = "Lost the connection to the display: the program ends.\n";
    fflush(stderr);
    ssize_t const written = write(STDERR_FILENO, kMessage, sizeof(kMessage) - 1);
    (void)written;
    _exit(1);
}

} // namespace

void watchDisplayLoss()
{
    XSetIOErrorHandler(&onDisplayLost);
}

} // namespace platform
