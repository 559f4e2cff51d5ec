// Shared by the resource tests: a headless application whose data root is
// "<test program folder>/resources/", the heaps the resource code takes its
// memory from, a fixture with the render and resource systems, files in a
// folder of each test's own, and the sample pictures the project ships.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/allocator.h"
#include "foundation/types.h"

class ResourceBase;

namespace restest {

// The data root with its final "/".
std::string root();
std::string readFile(std::string const& path);
// Makes the folders on the way.
void writeFile(std::string const& path, std::string const& bytes);
// A file the project ships below resources/intermediate/samples/.
std::string readSample(char const* name);
AllocatorBase* getResourceHeap();

// RGBA, top row first.
struct sImage {
    u32 mWidth;
    u32 mHeight;
    std::vector<u8> mPixels;
};

// The pictures of scripts/make_textures.py: the TGA samples, and the BMP
// samples as the reader's table turns them into RGBA.
sImage makeTgaSample();
sImage makeBmpSample(u32 bits);

// A 32-bit TGA of image, rows top first or bottom first.
std::string encodeTga(sImage const& image, bool topFirst);
// The native file of image.
std::string encodeTex(sImage const& image);

} // namespace restest

// Render and resource systems for each test; files below intermediate/<name>/
// and native/<name>/, where <name> is the test's own, go when it ends.
class ResourceTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // "<name>/<file>": the path as createResource takes it.
    std::string local(char const* file) const;
    std::string intermediateFile(char const* file) const;
    std::string nativeFile(char const* file) const;

    std::string mName;
};
