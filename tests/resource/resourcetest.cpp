#include "resourcetest.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>

#include "app/application.h"
#include "foundation/autostring.h"
#include "platform/window.h"
#include "render/rendersystem.h"
#include "resource/resourcebase.h"
#include "resource/resourcesystem.h"

namespace {

class TestApplication : public Application {
public:
    explicit TestApplication(sInitializer const* initializer) : Application(initializer) {}
    void setup() override {}
    void update(float) override {}
};

// A heap whose blocks are separate allocations, so that the address
// sanitizer sees the bounds of each file and image the readers handle (one
// region carved up would hide a read past a block). Counts what is in use.
class CheckedHeap : public AllocatorBase {
public:
    explicit CheckedHeap(char const* name) : AllocatorBase(16, name, nullptr, true), mUsed(0) {}
    void* allocate(int size, unsigned int) override
    {
        u32 const bytes = static_cast<u32>(size < 0 ? -size : size);
        u8* block = new (std::nothrow) u8[bytes + kHeader];
        if (block == nullptr) {
            return nullptr;
        }
        memcpy(block, &bytes, sizeof(bytes));
        mUsed.add(static_cast<int>(bytes));
        return block + kHeader;
    }
    void deallocate(void* pointer) override
    {
        if (pointer != nullptr) {
            u8* block = static_cast<u8*>(pointer) - kHeader;
            u32 bytes;
            memcpy(&bytes, block, sizeof(bytes));
            mUsed.sub(static_cast<int>(bytes));
            delete[] block;
        }
    }
    void clear() override {}
    u32 getUsedSize() override { return static_cast<u32>(mUsed.get()); }

private:
    static u32 const kHeader = 16; // keeps the 16-byte alignment of new[]
    Atomic mUsed;
};

CheckedHeap* sResourceHeap = nullptr;
CheckedHeap* sTempHeap = nullptr;

// One headless application for the whole program: it gives the data root
// and the temporary heap. The string and resource heaps are never deleted:
// tests check their use, and a leak check at exit would only see what a
// failed test left.
class ResourceTestEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        platform::setHeadless(true);
        if (AutoString::getAllocator() == nullptr) {
            AutoString::setAllocator(new GPAllocator(0x4000000, "String", nullptr, 32, true));
        }
        static Application::sInitializer const initializer = {"Resource test", 320, 240, 60, 20, 60};
        mpApplication = new TestApplication(&initializer);
        sTempHeap = new CheckedHeap("Temp");
        mpApplication->setTempAllocator(sTempHeap);
        sResourceHeap = new CheckedHeap("Resource");
        ResourceBase::setAllocator(sResourceHeap);
        std::filesystem::create_directories(restest::root() + "intermediate");
        std::filesystem::create_directories(restest::root() + "native");
    }
    void TearDown() override
    {
        delete mpApplication;
        mpApplication = nullptr;
        EXPECT_EQ(sTempHeap->getUsedSize(), 0u); // every load gives its memory back
        delete sTempHeap;
        sTempHeap = nullptr;
    }

private:
    Application* mpApplication = nullptr;
};

testing::Environment* const sEnvironment = testing::AddGlobalTestEnvironment(new ResourceTestEnvironment);

u8 byteOf(u32 value)
{
    return static_cast<u8>(value & 255u);
}

} // namespace

namespace restest {

std::string root()
{
    return Application::getInstance()->getRootPath();
}

std::string readFile(std::string const& path)
{
    std::string bytes;
    FILE* file = fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return bytes;
    }
    char buffer[4096];
    size_t count;
    while ((count = fread(buffer, 1, sizeof(buffer), file)) != 0) {
        bytes.append(buffer, count);
    }
    fclose(file);
    return bytes;
}

void writeFile(std::string const& path, std::string const& bytes)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    FILE* file = fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr) << path;
    fwrite(bytes.data(), 1, bytes.size(), file);
    fclose(file);
}

std::string readSample(char const* name)
{
    std::string const bytes = readFile(std::string(HARBOR_SOURCE_DIR) + "/resources/intermediate/samples/" + name);
    EXPECT_FALSE(bytes.empty()) << name;
    return bytes;
}

AllocatorBase* getResourceHeap()
{
    return sResourceHeap;
}

sImage makeTgaSample()
{
    sImage image{16, 8, {}};
    for (u32 y = 0; y < image.mHeight; ++y) {
        for (u32 x = 0; x < image.mWidth; ++x) {
            image.mPixels.insert(image.mPixels.end(),
                                 {byteOf(x * 16), byteOf(y * 32), byteOf(x * y * 7), byteOf(255 - x * 8)});
        }
    }
    return image;
}

sImage makeBmpSample(u32 bits)
{
    sImage image{13, 5, {}};
    for (u32 y = 0; y < image.mHeight; ++y) {
        for (u32 x = 0; x < image.mWidth; ++x) {
            if (bits == 24) {
                image.mPixels.insert(image.mPixels.end(),
                                     {byteOf((x + y) * 10), byteOf(y * 50), byteOf(x * 19), 255});
                continue;
            }
            // The palette entry's stored bytes (blue first) as they stand;
            // 1-bit images take alpha 255.
            u32 const i = (x + y * 3) % (1u << bits);
            u8 const alpha = (bits == 1) ? 255 : byteOf(i * 5);
            image.mPixels.insert(image.mPixels.end(), {byteOf(i * 37), byteOf(i * 91 + 7), byteOf(i * 53 + 11), alpha});
        }
    }
    return image;
}

std::string encodeTga(sImage const& image, bool topFirst)
{
    std::string bytes(18, '\0');
    bytes[2] = 2;
    bytes[12] = static_cast<char>(image.mWidth & 255);
    bytes[13] = static_cast<char>(image.mWidth >> 8);
    bytes[14] = static_cast<char>(image.mHeight & 255);
    bytes[15] = static_cast<char>(image.mHeight >> 8);
    bytes[16] = 32;
    bytes[17] = static_cast<char>(8 | (topFirst ? 0x20 : 0));
    for (u32 row = 0; row < image.mHeight; ++row) {
        u32 const y = topFirst ? row : image.mHeight - 1 - row;
        for (u32 x = 0; x < image.mWidth; ++x) {
            u8 const* p = &image.mPixels[(y * image.mWidth + x) * 4];
            bytes += static_cast<char>(p[2]);
            bytes += static_cast<char>(p[1]);
            bytes += static_cast<char>(p[0]);
            bytes += static_cast<char>(p[3]);
        }
    }
    return bytes;
}

std::string encodeTex(sImage const& image)
{
    std::string bytes("TEX \x01\0\0\0", 8);
    bytes += static_cast<char>(image.mWidth & 255);
    bytes += static_cast<char>(image.mWidth >> 8);
    bytes += static_cast<char>(image.mHeight & 255);
    bytes += static_cast<char>(image.mHeight >> 8);
    bytes.append(image.mPixels.begin(), image.mPixels.end());
    return bytes;
}

} // namespace restest

void ResourceTest::SetUp()
{
    mName = testing::UnitTest::GetInstance()->current_test_info()->name();
    RenderSystem::create();
    ResourceSystem::create();
}

void ResourceTest::TearDown()
{
    if (ResourceSystem::getInstance() != nullptr) {
        ResourceSystem::getInstance()->destroy();
    }
    // Fatal "Texture leak." when a texture is still held.
    RenderSystem::getInstance()->destroy();
    std::filesystem::remove_all(restest::root() + "intermediate/" + mName);
    std::filesystem::remove_all(restest::root() + "native/" + mName);
}

std::string ResourceTest::local(char const* file) const
{
    return mName + "/" + file;
}

std::string ResourceTest::intermediateFile(char const* file) const
{
    return restest::root() + "intermediate/" + local(file);
}

std::string ResourceTest::nativeFile(char const* file) const
{
    return restest::root() + "native/" + local(file);
}
