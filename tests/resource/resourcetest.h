// Shared by the resource tests: a headless application whose data root is
// "<test program folder>/resources/", heaps the address sanitizer can see
// into, a fixture with the render and resource systems, and the sample
// pictures the project ships (scripts/make_textures.py).
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/allocator.h"
#include "foundation/types.h"
#include "testfiles.h"

namespace restest {

using ::readFile;
using ::writeFile;
// A file below resources/intermediate/samples/ of the source tree.
std::string readSample(char const* name);
AllocatorBase* getResourceHeap();

// Little-endian bytes, as the binary formats store their numbers.
inline std::string le16(u32 value)
{
    return {static_cast<char>(value & 255), static_cast<char>((value >> 8) & 255)};
}
inline std::string le32(u32 value)
{
    return le16(value & 0xFFFF) + le16(value >> 16);
}

// RGBA, top row first.
struct sImage {
    u32 mWidth;
    u32 mHeight;
    std::vector<u8> mPixels;
};
// The TGA samples' picture, and the BMP samples' as the reader's table
// turns them into RGBA.
sImage makeTgaSample();
sImage makeBmpSample(u32 bits);
std::string encodeTex(sImage const& image);

} // namespace restest

// Render and resource systems for each test; its files live below
// intermediate/<test name>/ and native/<test name>/ and go when it ends.
class ResourceTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // "<test name>/<name>", as createResource takes it.
    std::string local(std::string const& name) const { return mName + "/" + name; }
    std::string intermediateFile(std::string const& name) const;
    std::string nativeFile(std::string const& name) const;

    std::string mName;
};
