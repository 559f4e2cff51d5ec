// Diagnostics: the program's only error reporting. DEV_TRACE writes a line to
// standard error; dev_assert and DEV_ERROR report a broken invariant (alert for
// a person at the screen, a line on standard error) and abort. Callable from
// any thread. There are no exceptions and no error codes for programming errors.
#pragma once

// Formats into a 1024-byte line on the stack; a longer line is cut and ends in
// "\n". The text of the format is read twice, so "%%%%" in it prints one "%"
// (and so does "%%"); what the arguments give (paths, names, file contents)
// is printed as it stands, never read as a format. Callers add their own "\n".
void DEV_TRACE(char const* format, ...) __attribute__((format(printf, 1, 2)));

// Holds no condition: the caller tests and calls it on failure.
[[noreturn]] void dev_assert(char const* message, char const* file, unsigned int line);

[[noreturn]] void DEV_ERROR(char const* message);

// Called with the message before a fatal error reports and aborts. Only a
// harness that runs damaged input on purpose (the fuzz targets) sets one, and
// it leaves by longjmp; a handler that returns lets the error go on. Null by
// default; one for the whole program.
typedef void (*FatalHandler)(char const* message);
void setFatalHandler(FatalHandler handler);

// The usual call site: test, then report with this file and line.
#define DEV_ASSERT(condition, message)                   \
    do {                                                 \
        if (!(condition)) {                              \
            dev_assert((message), __FILE__, __LINE__);   \
        }                                                \
    } while (0)
