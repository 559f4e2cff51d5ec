// ResourceSystem: one instance per file, the native cache made on first use,
// new-file names, the load thread with its callbacks and cancellation, the
// leak report, and resource properties resolving through the system.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <mutex>
#include <thread>

#include "foundation/functor.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "render/renderobject.h"
#include "resource/resourcesystem.h"
#include "resource/textureresource.h"
#include "resourcetest.h"
#include "serial/stream.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"

namespace {

TypeInfo const* texType()
{
    return TextureResource::getStaticTypeInfo();
}

TextureResource* createTexture(std::string const& path)
{
    return static_cast<TextureResource*>(ResourceSystem::getInstance()->createResource(path.c_str(), texType()));
}

// Counts callbacks by resource, from the load thread.
class Collector {
public:
    void loaded(ResourceBase* resource)
    {
        std::lock_guard<std::mutex> guard(mMutex);
        ++mCalls[resource];
        ++mTotal;
    }
    int total()
    {
        std::lock_guard<std::mutex> guard(mMutex);
        return mTotal;
    }
    ResourceSystem::Callback* make() { return new Functor<Collector, ResourceBase*, void>(this, &Collector::loaded); }

    std::mutex mMutex;
    std::map<ResourceBase*, int> mCalls;
    int mTotal = 0;
};

// Waits as a frame loop would: the update pass runs meanwhile.
bool waitFor(Collector& collector, int count)
{
    auto const limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (collector.total() < count && std::chrono::steady_clock::now() < limit) {
        ResourceSystem::getInstance()->update();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ResourceSystem::getInstance()->update();
    return collector.total() == count;
}

} // namespace

TEST_F(ResourceTest, OneFileIsOneInstanceAndMissingNativeIsBuiltFromTheTga)
{
    restest::sImage const image = restest::makeTgaSample();
    restest::writeFile(intermediateFile("pic.tga"), restest::readSample("tga32_bottom.tga"));

    TextureResource* first = createTexture(local("pic"));
    TextureResource* second = createTexture(local("pic"));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_EQ(first->getRefCount(), 2);
    EXPECT_EQ(first->getTypeInfo(), texType());
    EXPECT_STREQ(first->getPath().c_str(), ("native/" + local("pic.tex")).c_str());
    EXPECT_EQ(first->getWidth(), 16u);
    EXPECT_EQ(first->getHeight(), 8u);
    ASSERT_NE(first->getTexture(), nullptr);
    EXPECT_EQ(first->getTexture()->getWidth(), 16u);
    // Only the native resource stays: the intermediate went after converting.
    EXPECT_EQ(ResourceSystem::getInstance()->getResources().size(), 1u);

    // Header, then the picture top row first in RGBA.
    EXPECT_EQ(restest::readFile(nativeFile("pic.tex")), restest::encodeTex(image));
    EXPECT_FALSE(std::filesystem::exists(nativeFile("pic.tex.1.part")));

    first->release();
    second->release();
    EXPECT_TRUE(ResourceSystem::getInstance()->getResources().empty());

    // Now from the native file alone, even with the TGA gone.
    std::filesystem::remove(intermediateFile("pic.tga"));
    TextureResource* again = createTexture(local("pic"));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->getHeight(), 8u);
    again->release();

    ResourceSystem* system = ResourceSystem::getInstance();
    EXPECT_EQ(system->getTypeInfoByExtension("tga"), TextureResourceTGA::getStaticTypeInfo());
    EXPECT_EQ(system->getTypeInfoByExtension("bmp"), TextureResourceBMP::getStaticTypeInfo());
    EXPECT_EQ(system->getTypeInfoByExtension("tex"), texType());
    EXPECT_EQ(system->getTypeInfoByExtension("xyz"), nullptr);
    EXPECT_EQ(system->getTypeInfoByExtension(nullptr), nullptr);
}

TEST_F(ResourceTest, MissingFilesAnswerNullOrTheUnloadedNativeObject)
{
    testing::internal::CaptureStderr();
    ResourceBase* tga = ResourceSystem::getInstance()->createResource(local("none").c_str(),
                                                                      TextureResourceTGA::getStaticTypeInfo());
    // Neither file: the native object comes back as it stands, unloaded and
    // outside the map.
    TextureResource* tex = createTexture(local("none"));
    std::string const traces = testing::internal::GetCapturedStderr();
    EXPECT_EQ(tga, nullptr);
    EXPECT_NE(traces.find("Resource " + intermediateFile("none.tga") + " loading fail.\n"), std::string::npos);
    ASSERT_NE(tex, nullptr);
    EXPECT_EQ(tex->getTexture(), nullptr);
    EXPECT_TRUE(tex->getPath().empty());
    EXPECT_TRUE(ResourceSystem::getInstance()->getResources().empty());
    tex->release();
}

TEST_F(ResourceTest, NewResourcesTakeTheFirstFreeNewfileName)
{
    std::string const native = restest::root() + "native/";
    restest::writeFile(native + "newfile.tex", "x");
    restest::writeFile(native + "newfile0.tex", "x");
    ResourceSystem* system = ResourceSystem::getInstance();

    ResourceBase* first = system->createResource(nullptr, texType());
    ResourceBase* second = system->createResource(nullptr, texType());
    ResourceBase* tga = system->createResource(nullptr, TextureResourceTGA::getStaticTypeInfo());
    EXPECT_STREQ(first->getPath().c_str(), "native/newfile1.tex");
    EXPECT_STREQ(second->getPath().c_str(), "native/newfile2.tex"); // the map holds newfile1
    EXPECT_STREQ(tga->getPath().c_str(), "intermediate/newfile.tga");
    EXPECT_EQ(system->getResources().size(), 3u);
    first->release();
    second->release();
    tga->release();
    EXPECT_TRUE(system->getResources().empty());
    std::filesystem::remove(native + "newfile.tex");
    std::filesystem::remove(native + "newfile0.tex");
}

TEST_F(ResourceTest, AsynchronousLoadsCallBackOnceEachAndLeaveNothingBehind)
{
    u32 const heapBefore = restest::getResourceHeap()->getUsedSize();
    int const count = 100;
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i) {
        restest::sImage image{2, 1 + static_cast<u32>(i % 3), {}};
        image.mPixels.assign(image.mWidth * image.mHeight * 4, static_cast<u8>(i));
        std::string const name = "t" + std::to_string(i);
        // Half convert from a TGA on the load thread, half find their native file.
        if (i % 2 == 0) {
            restest::writeFile(intermediateFile((name + ".tga").c_str()), restest::encodeTga(image, true));
        } else {
            restest::writeFile(nativeFile((name + ".tex").c_str()), restest::encodeTex(image));
        }
        paths.push_back(local(name.c_str()));
    }
    ResourceSystem* system = ResourceSystem::getInstance();
    Collector collector;
    for (std::string const& path : paths) {
        system->createResourceAsync(path.c_str(), texType(), collector.make());
    }
    ASSERT_TRUE(waitFor(collector, count));

    EXPECT_EQ(collector.mCalls.size(), static_cast<size_t>(count));
    EXPECT_EQ(collector.mCalls.count(nullptr), 0u);
    for (auto const& entry : collector.mCalls) {
        EXPECT_EQ(entry.second, 1);
        TextureResource* texture = static_cast<TextureResource*>(entry.first);
        // Made on this thread by the update pass.
        ASSERT_NE(texture->getTexture(), nullptr);
        EXPECT_EQ(texture->getTexture()->getHeight(), texture->getHeight());
        texture->release();
    }
    EXPECT_TRUE(system->getResources().empty());
    EXPECT_EQ(restest::getResourceHeap()->getUsedSize(), heapBefore);
}

TEST_F(ResourceTest, CancelledRequestsNeverCallBack)
{
    for (char const* name : {"a.tga", "b.tga", "c.tga"}) {
        restest::writeFile(intermediateFile(name), restest::readSample("tga32_top.tga"));
    }
    std::string const a = local("a"), b = local("b"), c = local("c");
    ResourceSystem* system = ResourceSystem::getInstance();
    Collector collector;
    // Held, so that the load thread cannot take a request in between.
    system->lock();
    system->createResourceAsync(a.c_str(), texType(), collector.make());
    system->createResourceAsync(b.c_str(), texType(), collector.make());
    system->createResourceAsync(b.c_str(), TextureResourceTGA::getStaticTypeInfo(), collector.make());
    system->createResourceAsync(c.c_str(), texType(), collector.make());
    system->cancel(b.c_str(), texType());
    system->cancel(b.c_str(), texType()); // passes over the cancelled entry
    system->cancel(c.c_str(), texType());
    system->unlock();

    ASSERT_TRUE(waitFor(collector, 2));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(collector.total(), 2); // a, and b as TGA: another class
    for (auto const& entry : collector.mCalls) {
        ASSERT_NE(entry.first, nullptr);
        entry.first->release();
    }

    system->lock();
    system->createResourceAsync(a.c_str(), texType(), collector.make());
    system->cancelAll();
    system->unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(collector.total(), 2);
}

TEST_F(ResourceTest, ResourcesStillHeldAtExitAreReported)
{
    restest::writeFile(nativeFile("kept.tex"), restest::encodeTex(restest::makeTgaSample()));
    TextureResource* kept = createTexture(local("kept"));
    ASSERT_NE(kept, nullptr);
    testing::internal::CaptureStderr();
    ResourceSystem::getInstance()->destroy();
    std::string const traces = testing::internal::GetCapturedStderr();
    EXPECT_NE(traces.find("Resource leak.(native/" + local("kept.tex") + ")\n"), std::string::npos);
    kept->release(); // reported, not deleted: its holder may still let go
}

namespace {

class TextureHolder : public ObjectBase {
public:
    ~TextureHolder() override
    {
        if (mpTexture != nullptr) {
            mpTexture->release();
        }
    }
    void makePropertyList(PropertyList& list) override
    {
        list.add(new ResourceProperty("Texture", TextureResource::getStaticTypeInfo(), &mpTexture));
    }
    ResourceBase* mpTexture = nullptr;
};

} // namespace

TEST_F(ResourceTest, ResourcePropertiesResolveThroughTheSystem)
{
    restest::writeFile(nativeFile("held.tex"), restest::encodeTex(restest::makeTgaSample()));
    std::string const file = restest::root() + "native/" + mName + "/holder.xml";
    TextureHolder saved;
    saved.mpTexture = createTexture(local("held"));
    ASSERT_NE(saved.mpTexture, nullptr);
    {
        TextFileStream stream(file.c_str(), Stream::eMode_Write);
        XmlWriter writer("Holder");
        saved.serialize(&writer, true, 0);
        writer.write(&stream);
    }
    EXPECT_NE(restest::readFile(file).find("path=\"" + local("held") + "\""), std::string::npos);

    TextureHolder loaded;
    {
        TextFileStream stream(file.c_str(), Stream::eMode_Read);
        XmlReader reader;
        reader.parse(&stream);
        reader.read(&loaded, "Holder");
    }
    EXPECT_EQ(loaded.mpTexture, saved.mpTexture);
    EXPECT_EQ(saved.mpTexture->getRefCount(), 2);
}
