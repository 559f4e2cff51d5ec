// Shared by the fuzz targets: the heaps a load needs, the input as a file
// (every reader reaches its data through a file stream), and a guard that
// turns a fatal error into the end of one input. A damaged file may end in
// a fatal format error by design; anything else (a sanitizer report, a
// signal, a hang) is a finding. One thread.
#pragma once

#include <cstddef>

#include "foundation/types.h"

namespace fuzz {

// Makes the string heap once; every target calls it first.
void setup();

// Writes the input to a file of this process with the given extension
// ("xml", "tga") and answers its path, valid until the next call.
char const* writeInput(u8 const* data, size_t size, char const* extension);

// Whether the XML reader parses the file without a fatal error.
bool isWellFormedXml(char const* path);

// Runs body(user). A fatal error inside it ends body there by longjmp, so
// what must be freed (streams, readers) lives outside body; false then.
bool runGuarded(void (*body)(void*), void* user);

template <typename F>
bool runGuarded(F const& body)
{
    return runGuarded([](void* user) { (*static_cast<F const*>(user))(); }, const_cast<F*>(&body));
}

} // namespace fuzz
