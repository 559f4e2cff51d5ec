#include "resourcetest.h"

#include <cstring>
#include <filesystem>

#include "checkedheap.h"
#include "foundation/autostring.h"
#include "platform/window.h"
#include "render/rendersystem.h"
#include "resource/resourcebase.h"
#include "resource/resourcesystem.h"
#include "testapp.h"

namespace {

CheckedHeap* sResourceHeap = nullptr;
CheckedHeap* sTempHeap = nullptr;

// One headless application for the program: the data root and the
// temporary heap. The string and resource heaps stay to the end.
class ResourceTestEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        platform::setHeadless(true);
        AutoString::setAllocator(new GPAllocator(0x4000000, "String", nullptr, 32, true));
        static Application::sInitializer const initializer = {"Resource test", 320, 240, 60, 20, 60};
        mpApplication = new TestApp(&initializer);
        mpApplication->setTempAllocator(sTempHeap = new CheckedHeap("Temp"));
        ResourceBase::setAllocator(sResourceHeap = new CheckedHeap("Resource"));
    }
    void TearDown() override
    {
        delete mpApplication;
        EXPECT_EQ(sTempHeap->getUsedSize(), 0u); // every load gave its memory back
        delete sTempHeap;
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
            image.mPixels.insert(image.mPixels.end(), {byteOf(x * 16), byteOf(y * 32), byteOf(x * y * 7), byteOf(255 - x * 8)});
        }
    }
    return image;
}

sImage makeBmpSample(u32 bits)
{
    sImage image{13, 5, {}};
    for (u32 y = 0; y < image.mHeight; ++y) {
        for (u32 x = 0; x < image.mWidth; ++x) {
            u32 const i = (x + y * 3) % (1u << (bits == 24 ? 1 : bits));
            if (bits == 24) {
                image.mPixels.insert(image.mPixels.end(), {byteOf((x + y) * 10), byteOf(y * 50), byteOf(x * 19), 255});
            } else { // the palette entry's bytes as stored, blue first; 1 bit takes alpha 255
                image.mPixels.insert(image.mPixels.end(), {byteOf(i * 37), byteOf(i * 91 + 7), byteOf(i * 53 + 11),
                                                           bits == 1 ? u8(255) : byteOf(i * 5)});
            }
        }
    }
    return image;
}

std::string encodeTex(sImage const& image)
{
    std::string bytes("TEX \x01\0\0\0", 8);
    for (u32 size : {image.mWidth, image.mHeight}) {
        bytes += {static_cast<char>(size & 255), static_cast<char>(size >> 8)};
    }
    return bytes.append(image.mPixels.begin(), image.mPixels.end());
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
    // Fatal "Texture leak." while a texture is still held.
    RenderSystem::getInstance()->destroy();
    std::filesystem::remove_all(intermediateFile(""));
    std::filesystem::remove_all(nativeFile(""));
}

std::string ResourceTest::intermediateFile(std::string const& name) const
{
    return Application::getInstance()->getIntermediatePath() + local(name);
}

std::string ResourceTest::nativeFile(std::string const& name) const
{
    return Application::getInstance()->getNativePath() + local(name);
}
