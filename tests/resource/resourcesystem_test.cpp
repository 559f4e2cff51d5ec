// ResourceSystem: one instance per file, the native cache made on first use,
// new-file names, the load thread with its callbacks and cancelling, the
// leak report, and resource properties resolving through the system.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <mutex>
#include <thread>

#include "app/application.h"
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

TypeInfo const* const kTex = TextureResource::getStaticTypeInfo();
TypeInfo const* const kTga = TextureResourceTGA::getStaticTypeInfo();

TextureResource* create(std::string const& path, TypeInfo const* type = kTex)
{
    return static_cast<TextureResource*>(ResourceSystem::getInstance()->createResource(path.c_str(), type));
}

// Counts callbacks by resource; they come from the load thread.
struct Collector {
    void loaded(ResourceBase* resource)
    {
        std::lock_guard<std::mutex> guard(mMutex);
        ++mCalls[resource];
        ++mTotal;
    }
    ResourceSystem::Callback* make() { return new Functor<Collector, ResourceBase*, void>(this, &Collector::loaded); }
    // Waits as a frame loop would, with the update pass running meanwhile.
    int waitFor(int count, int milliseconds = 30000)
    {
        for (int waited = 0; waited < milliseconds && mTotal.load() < count; waited += 5) {
            ResourceSystem::getInstance()->update();
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        ResourceSystem::getInstance()->update();
        return mTotal.load();
    }

    std::mutex mMutex;
    std::map<ResourceBase*, int> mCalls;
    std::atomic<int> mTotal{0};
};

} // namespace

TEST_F(ResourceTest, OneFileIsOneInstanceAndAMissingNativeFileIsMadeFromTheTga)
{
    restest::writeFile(intermediateFile("pic.tga"), restest::readSample("tga32_bottom.tga"));
    TextureResource* first = create(local("pic"));
    TextureResource* second = create(local("pic"));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_EQ(first->getRefCount(), 2);
    EXPECT_EQ(first->getPath(), ("native/" + local("pic.tex")).c_str());
    ASSERT_NE(first->getTexture(), nullptr);
    EXPECT_EQ(first->getTexture()->getHeight(), 8u);
    // Header, then the picture top row first in RGBA; the intermediate is gone.
    EXPECT_EQ(restest::readFile(nativeFile("pic.tex")), restest::encodeTex(restest::makeTgaSample()));
    EXPECT_EQ(ResourceSystem::getInstance()->getResources().size(), 1u);
    first->release();
    second->release();
    EXPECT_TRUE(ResourceSystem::getInstance()->getResources().empty());

    // The native file alone serves now.
    std::filesystem::remove(intermediateFile("pic.tga"));
    TextureResource* again = create(local("pic"));
    EXPECT_EQ(again->getWidth(), 16u);
    again->release();

    // Neither file: the intermediate class answers null, the native class
    // its object as it stands, unloaded and outside the map.
    testing::internal::CaptureStderr();
    EXPECT_EQ(create(local("none"), kTga), nullptr);
    TextureResource* unloaded = create(local("none"));
    EXPECT_NE(testing::internal::GetCapturedStderr().find(intermediateFile("none.tga") + " loading fail.\n"), std::string::npos);
    EXPECT_EQ(unloaded->getTexture(), nullptr);
    EXPECT_TRUE(ResourceSystem::getInstance()->getResources().empty());
    unloaded->release();
    EXPECT_EQ(ResourceSystem::getInstance()->getTypeInfoByExtension("tga"), kTga);
    EXPECT_EQ(ResourceSystem::getInstance()->getTypeInfoByExtension("xyz"), nullptr);
}

TEST_F(ResourceTest, NewResourcesTakeTheFirstFreeNewfileName)
{
    std::string const native = Application::getInstance()->getNativePath();
    restest::writeFile(native + "newfile.tex", "x");
    restest::writeFile(native + "newfile0.tex", "x");
    ResourceSystem* system = ResourceSystem::getInstance();
    ResourceBase* made[] = {system->createResource(nullptr, kTex), system->createResource(nullptr, kTex),
                            system->createResource(nullptr, kTga)};
    EXPECT_EQ(made[0]->getPath(), "native/newfile1.tex");
    EXPECT_EQ(made[1]->getPath(), "native/newfile2.tex"); // newfile1 is in the map
    EXPECT_EQ(made[2]->getPath(), "intermediate/newfile.tga");
    for (ResourceBase* resource : made) {
        resource->release();
    }
    EXPECT_TRUE(system->getResources().empty());
    std::filesystem::remove(native + "newfile.tex");
    std::filesystem::remove(native + "newfile0.tex");
}

TEST_F(ResourceTest, AsynchronousLoadsCallBackOnceEachAndLeaveNothingBehind)
{
    u32 const heapBefore = restest::getResourceHeap()->getUsedSize();
    std::vector<std::string> paths;
    for (int i = 0; i < 100; ++i) {
        // Half are converted on the load thread, half found as native files.
        std::string const name = "t" + std::to_string(i);
        restest::writeFile(i % 2 == 0 ? intermediateFile(name + ".tga") : nativeFile(name + ".tex"),
                           i % 2 == 0 ? restest::readSample("tga32_top.tga") : restest::encodeTex(restest::makeBmpSample(8)));
        paths.push_back(local(name));
    }
    Collector collector;
    for (std::string const& path : paths) {
        ResourceSystem::getInstance()->createResourceAsync(path.c_str(), kTex, collector.make());
    }
    ASSERT_EQ(collector.waitFor(100), 100);
    EXPECT_EQ(collector.mCalls.size(), 100u);
    for (auto const& entry : collector.mCalls) {
        EXPECT_EQ(entry.second, 1);
        TextureResource* resource = static_cast<TextureResource*>(entry.first);
        ASSERT_NE(resource->getTexture(), nullptr); // made on this thread by the update pass
        EXPECT_EQ(resource->getTexture()->getWidth(), resource->getWidth());
        resource->release();
    }
    EXPECT_TRUE(ResourceSystem::getInstance()->getResources().empty());
    EXPECT_EQ(restest::getResourceHeap()->getUsedSize(), heapBefore);
}

TEST_F(ResourceTest, CancelledRequestsNeverCallBack)
{
    ResourceSystem* system = ResourceSystem::getInstance();
    std::string const a = local("a"), b = local("b");
    restest::writeFile(intermediateFile("a.tga"), restest::readSample("tga32_top.tga"));
    restest::writeFile(intermediateFile("b.tga"), restest::readSample("tga32_top.tga"));
    Collector collector;
    system->lock(); // the load thread takes nothing meanwhile
    system->createResourceAsync(a.c_str(), kTex, collector.make());
    system->createResourceAsync(b.c_str(), kTex, collector.make());
    system->createResourceAsync(b.c_str(), kTga, collector.make()); // another class: stays
    system->cancel(b.c_str(), kTex);
    system->cancel(b.c_str(), kTex); // passes over the cancelled entry
    system->createResourceAsync(a.c_str(), kTex, collector.make());
    system->unlock();
    EXPECT_EQ(collector.waitFor(3), 3);
    system->lock();
    system->createResourceAsync(a.c_str(), kTex, collector.make());
    system->cancelAll();
    system->unlock();
    EXPECT_EQ(collector.waitFor(4, 200), 3);
    for (auto const& entry : collector.mCalls) {
        for (int i = 0; i < entry.second; ++i) {
            entry.first->release();
        }
    }
}

namespace {

class TextureHolder : public ObjectBase {
public:
    ~TextureHolder() override { mpTexture->release(); }
    void makePropertyList(PropertyList& list) override { list.add(new ResourceProperty("Texture", kTex, &mpTexture)); }
    ResourceBase* mpTexture = nullptr;
};

} // namespace

TEST_F(ResourceTest, PropertiesResolveThroughTheSystemAndHeldResourcesAreReportedAtExit)
{
    restest::writeFile(nativeFile("held.tex"), restest::encodeTex(restest::makeTgaSample()));
    std::string const file = nativeFile("holder.xml");
    TextureHolder saved, loaded;
    saved.mpTexture = create(local("held"));
    {
        TextFileStream stream(file.c_str(), Stream::eMode_Write);
        XmlWriter writer("Holder");
        saved.serialize(&writer, true, 0);
        writer.write(&stream);
    }
    EXPECT_NE(restest::readFile(file).find("path=\"" + local("held") + "\""), std::string::npos);
    {
        TextFileStream stream(file.c_str(), Stream::eMode_Read);
        XmlReader reader;
        reader.parse(&stream);
        reader.read(&loaded, "Holder");
    }
    EXPECT_EQ(loaded.mpTexture, saved.mpTexture);
    EXPECT_EQ(saved.mpTexture->getRefCount(), 2);

    testing::internal::CaptureStderr();
    ResourceSystem::getInstance()->destroy();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Resource leak.(native/" + local("held.tex") + ")\n"),
              std::string::npos);
} // reported, not deleted: the holders release them after the system

// Paths from files and users stay below the data root: escapes, control
// characters (a line feed forges trace lines) and names that would be cut
// are refused with a trace, and nothing outside is read or written.
TEST_F(ResourceTest, PathsThatWouldLeaveTheDataRootAreRefused)
{
    namespace fs = std::filesystem;
    std::string const root = fs::path(Application::getInstance()->getIntermediatePath()).parent_path().parent_path();
    std::string const outside = root + "/" + mName + "_outside";
    restest::writeFile(outside + ".tga", restest::readSample("tga32_bottom.tga"));
    restest::writeFile(intermediateFile("pic.tga"), restest::readSample("tga32_bottom.tga"));
    std::string longPart(300, 'n'), longPath;
    for (int i = 0; i < 9; ++i) {
        longPath += std::string(240, 'p') + "/";
    }
    std::string const refused[] = {"../" + mName + "_outside", local("../../../" + mName + "_outside"), outside,
                                   local("bad\nResource loading success."), local(longPart), longPath + "pic", ""};
    for (std::string const& path : refused) {
        for (TypeInfo const* type : {kTex, kTga}) {
            testing::internal::CaptureStderr();
            EXPECT_EQ(nullptr, create(path, type)) << path;
            std::string const traces = testing::internal::GetCapturedStderr();
            EXPECT_EQ(0u, traces.find("Path refused (")) << traces;
            EXPECT_EQ(traces.find('\n'), traces.size() - 1) << "one line: " << traces;
        }
    }
    EXPECT_FALSE(fs::exists(outside + ".tex"));
    EXPECT_TRUE(ResourceSystem::getInstance()->getResources().empty());
    fs::remove(outside + ".tga");

    TextureResource* inside = create(local("pic"));
    ASSERT_NE(nullptr, inside);
    EXPECT_EQ(16u, inside->getWidth());
    inside->release();
}
