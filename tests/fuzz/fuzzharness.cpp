#include "fuzzharness.h"

#include <unistd.h>

#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include "checkedheap.h"
#include "foundation/autostring.h"
#include "foundation/debug.h"
#include "platform/platform.h"
#include "serial/stream.h"
#include "serial/xmlreader.h"

namespace fuzz {

namespace {

jmp_buf sGuard;
bool sGuarded = false;

void leaveGuard(char const*)
{
    if (sGuarded) {
        sGuarded = false;
        longjmp(sGuard, 1);
    }
}

// What an input ends in a fatal error leaves behind (the guard skips the
// destructors), and objects a file made for plain pointers, stay in their
// heaps by design; the heaps' check at the end of the program and the leak
// sanitizer's would call that a finding. The run ends here instead, with the
// status the fuzzer gave.
void endWithoutLeakChecks(int status, void*)
{
    fflush(nullptr);
    _exit(status);
}

} // namespace

void setup()
{
    static bool done = false;
    if (done) {
        return;
    }
    done = true;
    // Registered after "Global" exists, so it runs before that heap's end.
    AllocatorBase::getGlobalAllocator();
    on_exit(&endWithoutLeakChecks, nullptr);
    platform::setUnattended(true);
    AutoString::setAllocator(new CheckedHeap("String"));
    setFatalHandler(&leaveGuard);
}

char const* writeInput(u8 const* data, size_t size, char const* extension)
{
    static char path[256];
    snprintf(path, sizeof(path), "/tmp/harbor_fuzz_%d.%s", static_cast<int>(getpid()), extension);
    FILE* file = fopen(path, "wb");
    if (file == nullptr) {
        abort(); // no input can be tried at all
    }
    if (size != 0) {
        fwrite(data, 1, size, file);
    }
    fclose(file);
    return path;
}

bool isWellFormedXml(char const* path)
{
    TextFileStream stream(path, Stream::eMode_Read);
    XmlReader reader;
    return runGuarded([&] { reader.parse(&stream); });
}

bool runGuarded(void (*body)(void*), void* user)
{
    if (setjmp(sGuard) != 0) {
        return false;
    }
    sGuarded = true;
    body(user);
    sGuarded = false;
    return true;
}

} // namespace fuzz
