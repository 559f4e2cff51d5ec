#include "reflectiontest.h"

#include <cstdio>
#include <map>
#include <new>
#include <random>
#include <vector>

#include "foundation/allocator.h"
#include "platform/filesystem.h"
#include "serial/stream.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"

IMPLEMENT_OBJECT_TYPEINFO(SampleLeaf, "ObjectBase");
IMPLEMENT_OBJECT_TYPEINFO(SampleObject, "ObjectBase");
// Their parent arrives only at run time (see below): they wait for it.
IMPLEMENT_OBJECT_TYPEINFO(SampleResource, "ResourceBase");
IMPLEMENT_OBJECT_TYPEINFO(OtherResource, "ResourceBase");

namespace {

// ---------------------------------------------------------------------------
// The resource link, over ReferenceObject-based stand-ins

std::map<std::string, ReferenceObject*>& getResources()
{
    static std::map<std::string, ReferenceObject*> resources;
    return resources;
}

ReferenceObject* asObject(ResourceBase const* resource)
{
    return reinterpret_cast<ReferenceObject*>(const_cast<ResourceBase*>(resource));
}

TypeInfo const* linkGetTypeInfo(ResourceBase const* resource)
{
    return asObject(resource)->getTypeInfo();
}

void linkAddRef(ResourceBase* resource)
{
    asObject(resource)->addRef();
}

void linkRelease(ResourceBase* resource)
{
    asObject(resource)->release();
}

char const* linkGetPath(ResourceBase const* resource)
{
    ReferenceObject* object = asObject(resource);
    if (object->getTypeInfo() != SampleResource::getStaticTypeInfo()) {
        return "native/other.oth";
    }
    return static_cast<SampleResource*>(object)->mPath.c_str();
}

char const* linkGetExtension(ResourceBase const* resource)
{
    return (asObject(resource)->getTypeInfo() == SampleResource::getStaticTypeInfo()) ? "tex" : "oth";
}

ResourceBase* linkCreateResource(char const* path, TypeInfo const* type)
{
    auto found = getResources().find(path);
    if (found == getResources().end() || !found->second->getTypeInfo()->isDerivedFrom(type)) {
        return nullptr;
    }
    found->second->addRef();
    return asResource(found->second);
}

ResourcePropertyIntermediate::sResourceLink const sLink = {
    linkGetTypeInfo, linkAddRef, linkRelease, linkGetPath, linkGetExtension, linkCreateResource,
};

// ---------------------------------------------------------------------------
// Files

std::string const& getPrefix()
{
    static std::string const prefix = "harbor_reflection_" + std::to_string(std::random_device()()) + "_";
    return prefix;
}

void collectOwnFile(platform::sDirectoryEntry const& entry, void* user)
{
    if (std::string(entry.mName).compare(0, getPrefix().size(), getPrefix()) == 0) {
        static_cast<std::vector<std::string>*>(user)->push_back(testing::TempDir() + entry.mName);
    }
}

// Strings need their heap before any test runs. The resource layer is not
// part of this program, so its root record is made here, once, unless it is
// linked in after all; records of static storage are never destroyed.
class ReflectionTestEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        if (AutoString::getAllocator() == nullptr) {
            AutoString::setAllocator(new GPAllocator(0x4000000, "String", nullptr, 32, true));
        }
        GTEST_FLAG_SET(death_test_style, "fast");
        getPrefix();
        static bool made = false;
        if (!made && TypeInfo::find("ResourceBase") == nullptr) {
            alignas(TypeInfo) static unsigned char storage[sizeof(TypeInfo)];
            new (storage) TypeInfo("ResourceBase", "ObjectBase", TypeInfo::eAttribute_Abstract);
        }
        made = true;
        ResourcePropertyIntermediate::setResourceLink(&sLink);
    }
    void TearDown() override
    {
        clearSampleResources();
        std::vector<std::string> paths;
        platform::listDirectory(testing::TempDir().c_str(), collectOwnFile, &paths);
        for (std::string const& path : paths) {
            std::remove(path.c_str());
        }
    }
};

testing::Environment* const sEnvironment = testing::AddGlobalTestEnvironment(new ReflectionTestEnvironment);

} // namespace

void registerSampleResource(char const* path, ReferenceObject* resource)
{
    resource->addRef();
    getResources()[path] = resource;
}

void clearSampleResources()
{
    for (auto& entry : getResources()) {
        entry.second->release();
    }
    getResources().clear();
}

// ---------------------------------------------------------------------------
// Sample classes

void SampleLeaf::makePropertyList(PropertyList& list)
{
    list.add(new ReferenceProperty<s32>("Value", &mValue));
    list.add(new ReferenceProperty<AutoString>("Name", &mName));
}

SampleObject::SampleObject()
    : mBool(false), mS8(0), mS16(0), mS32(0), mS64(0), mU8(0), mU16(0), mU32(0), mU64(0), mF32(0.0f), mF64(0.0),
      mSize(0, 0), mPoint(0, 0), mRect(0, 0, 0, 0), mColor(0, 0, 0, 0), mColorF(0.0f, 0.0f, 0.0f, 0.0f),
      mTexcoord(0, 0), mFixed(0, 0), mVector(sFixed(0, 0), sFixed(0, 0)), mString("default"),
      mpConstString("constant"), mBoolArray(), mS8Array(), mS16Array(), mS32Array(), mS64Array(), mU8Array(),
      mU16Array(), mU32Array(), mU64Array(), mF32Array(), mF64Array(), mSizeArray(), mPointArray(), mRectArray(),
      mColorArray(), mColorFArray(), mTexcoordArray(), mFixedArray(), mVectorArray(), mStringArray(), mpConstStringArray(), mIndirect(0),
      mIndirectText("indirect"), mConstStrings(true), mMember(), mpOwned(new SampleLeaf()), mpSharedA(nullptr), mpSharedB(nullptr),
      mpResource(nullptr), mpTexture(nullptr)
{
    mpConstStringArray[0] = "one";
    mpConstStringArray[1] = "two";
    mEmptyList.setContentStability(false);
    mGappedList.setContentStability(false);
}

SampleObject::~SampleObject()
{
    delete mpOwned;
    if (mpSharedB != mpSharedA) {
        delete mpSharedB;
    }
    delete mpSharedA;
    if (mpResource != nullptr) {
        linkRelease(mpResource);
    }
    if (mpTexture != nullptr) {
        linkRelease(mpTexture);
    }
}

void SampleObject::fill(ReferenceObject* texture)
{
    texture->addRef();
    mpTexture = asResource(texture);
    mBool = true;
    mS8 = -5;
    mS16 = -300;
    mS32 = -70000;
    mS64 = (1ll << 32) + 5;
    mU8 = 200;
    mU16 = 60000;
    mU32 = 4000000000u;
    mU64 = (1ull << 33) + 7;
    mF32 = 1.5f;
    mF64 = -2.25;
    mSize = sSize(640, 480);
    mPoint = sPoint(-3, 4);
    mRect = sRect(1, 2, 30, 40);
    mColor = sColor(10, 20, 30, 255);
    mColorF = sColorF(0.5f, 0.25f, 1.0f, 0.125f);
    mTexcoord = sTexcoord(16, 32);
    mFixed = sFixed(2.5f);
    mVector = sVector(sFixed(1.5f), sFixed(-0.5f));
    mString = "hello_world-1.5";

    mBoolArray[0] = true;
    mBoolArray[1] = false;
    mS8Array[0] = 1;
    mS8Array[1] = -1;
    mS16Array[0] = 2;
    mS16Array[1] = -2;
    mS32Array[0] = 3;
    mS32Array[1] = -3;
    mS64Array[0] = -(1ll << 33) - 3;
    mS64Array[1] = 4;
    mU8Array[0] = 5;
    mU8Array[1] = 255;
    mU16Array[0] = 6;
    mU16Array[1] = 65535;
    mU32Array[0] = 7;
    mU32Array[1] = 0xFFFFFFFFu;
    mU64Array[0] = 8;
    mU64Array[1] = ~0ull;
    mF32Array[0] = 0.75f;
    mF32Array[1] = -8.0f;
    mF64Array[0] = 0.5;
    mF64Array[1] = 1e6;
    mSizeArray[0] = sSize(1, 2);
    mSizeArray[1] = sSize(3, 4);
    mPointArray[0] = sPoint(5, 6);
    mPointArray[1] = sPoint(-7, -8);
    mRectArray[0] = sRect(1, 1, 2, 2);
    mRectArray[1] = sRect(-1, -1, 0, 0);
    mColorArray[0] = sColor(1, 2, 3, 4);
    mColorArray[1] = sColor(255, 254, 253, 252);
    mColorFArray[0] = sColorF(0.0f, 0.5f, 0.75f, 1.0f);
    mColorFArray[1] = sColorF(1.0f, 0.0f, 0.25f, 0.5f);
    mTexcoordArray[0] = sTexcoord(0, 1);
    mTexcoordArray[1] = sTexcoord(65535, 2);
    mFixedArray[0] = sFixed(-1.25f);
    mFixedArray[1] = sFixed(100.0f);
    mVectorArray[0] = sVector(sFixed(0.25f), sFixed(0.5f));
    mVectorArray[1] = sVector(sFixed(-3.0f), sFixed(4.0f));
    mStringArray[0] = "alpha";
    mStringArray[1] = "beta/gamma";

    mIndirect = 42;
    mIndirectText = "indirect_text";
    mMember.mValue = 11;
    mMember.mName = "member";
    mpOwned->mValue = 12;
    mpOwned->mName = "owned";
    mpSharedA = new SampleLeaf(13, "shared");
    mpSharedB = mpSharedA;
    mGappedList.addLast(new SampleLeaf(14, "first"));
    mGappedList.addLast(nullptr);
    mGappedList.addLast(new SampleLeaf(15, "third"));
}

void SampleObject::makePropertyList(PropertyList& list)
{
    list.add(new ReferenceProperty<bool>("Bool", &mBool));
    list.add(new ReferenceProperty<s8>("S8", &mS8));
    list.add(new ReferenceProperty<s16>("S16", &mS16));
    list.add(new ReferenceProperty<s32>("S32", &mS32));
    list.add(new ReferenceProperty<s64>("S64", &mS64));
    list.add(new ReferenceProperty<u8>("U8", &mU8));
    list.add(new ReferenceProperty<u16>("U16", &mU16));
    list.add(new ReferenceProperty<u32>("U32", &mU32));
    list.add(new ReferenceProperty<u64>("U64", &mU64));
    list.add(new ReferenceProperty<f32>("F32", &mF32));
    list.add(new ReferenceProperty<f64>("F64", &mF64));
    list.add(new ReferenceProperty<sSize>("Size", &mSize));
    list.add(new ReferenceProperty<sPoint>("Point", &mPoint));
    list.add(new ReferenceProperty<sRect>("Rect", &mRect));
    list.add(new ReferenceProperty<sColor>("Color", &mColor));
    list.add(new ReferenceProperty<sColorF>("ColorF", &mColorF));
    list.add(new ReferenceProperty<sTexcoord>("Texcoord", &mTexcoord));
    list.add(new ReferenceProperty<sFixed>("Fixed", &mFixed));
    list.add(new ReferenceProperty<sVector>("Vector", &mVector));
    list.add(new ReferenceProperty<AutoString>("String", &mString));
    if (mConstStrings) {
        list.add(new ReferenceProperty<char const*>("ConstString", &mpConstString));
    }

    list.add(new ReferenceProperty<bool>("BoolArray", mBoolArray, 2));
    list.add(new ReferenceProperty<s8>("S8Array", mS8Array, 2));
    list.add(new ReferenceProperty<s16>("S16Array", mS16Array, 2));
    list.add(new ReferenceProperty<s32>("S32Array", mS32Array, 2));
    list.add(new ReferenceProperty<s64>("S64Array", mS64Array, 2));
    list.add(new ReferenceProperty<u8>("U8Array", mU8Array, 2));
    list.add(new ReferenceProperty<u16>("U16Array", mU16Array, 2));
    list.add(new ReferenceProperty<u32>("U32Array", mU32Array, 2));
    list.add(new ReferenceProperty<u64>("U64Array", mU64Array, 2));
    list.add(new ReferenceProperty<f32>("F32Array", mF32Array, 2));
    list.add(new ReferenceProperty<f64>("F64Array", mF64Array, 2));
    list.add(new ReferenceProperty<sSize>("SizeArray", mSizeArray, 2));
    list.add(new ReferenceProperty<sPoint>("PointArray", mPointArray, 2));
    list.add(new ReferenceProperty<sRect>("RectArray", mRectArray, 2));
    list.add(new ReferenceProperty<sColor>("ColorArray", mColorArray, 2));
    list.add(new ReferenceProperty<sColorF>("ColorFArray", mColorFArray, 2));
    list.add(new ReferenceProperty<sTexcoord>("TexcoordArray", mTexcoordArray, 2));
    list.add(new ReferenceProperty<sFixed>("FixedArray", mFixedArray, 2));
    list.add(new ReferenceProperty<sVector>("VectorArray", mVectorArray, 2));
    list.add(new ReferenceProperty<AutoString>("StringArray", mStringArray, 2));
    if (mConstStrings) {
        list.add(new ReferenceProperty<char const*>("ConstStringArray", mpConstStringArray, 2));
    }

    list.add(new IndirectProperty<s32>("Indirect", this, &SampleObject::getIndirect, &SampleObject::setIndirect));
    list.add(new IndirectProperty<AutoString>("IndirectText", this, &SampleObject::getIndirectText,
                                              &SampleObject::setIndirectText));

    list.add(new ObjectProperty("Member", &mMember));
    list.add(new ObjectProperty("Owned", &mpOwned, true));
    list.add(new ObjectProperty("SharedA", &mpSharedA, false));
    list.add(new ObjectProperty("SharedB", &mpSharedB, false));
    list.add(new ObjectProperty("EmptyList", &mEmptyList));
    list.add(new ObjectProperty("GappedList", &mGappedList));
    list.add(new ResourceProperty("Resource", SampleResource::getStaticTypeInfo(), &mpResource));
    list.add(new ResourceProperty("Texture", SampleResource::getStaticTypeInfo(), &mpTexture));
}

// ---------------------------------------------------------------------------
// Files and whole objects

std::string makeTempPath(char const* name)
{
    return testing::TempDir() + getPrefix() + name;
}

std::string readFile(std::string const& path)
{
    std::string text;
    FILE* file = fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return text;
    }
    char buffer[4096];
    size_t count;
    while ((count = fread(buffer, 1, sizeof(buffer), file)) != 0) {
        text.append(buffer, count);
    }
    fclose(file);
    return text;
}

void writeFile(std::string const& path, std::string const& text)
{
    FILE* file = fopen(path.c_str(), "wb");
    fwrite(text.data(), 1, text.size(), file);
    fclose(file);
}

std::string writeObject(ObjectBase* object, char const* rootName, bool stable)
{
    std::string const path = makeTempPath("object.xml");
    {
        TextFileStream stream(path.c_str(), Stream::eMode_Write);
        XmlWriter writer(rootName);
        object->serialize(&writer, stable, 0);
        writer.write(&stream);
    }
    return readFile(path);
}

ObjectBase* readObject(ObjectBase* object, char const* rootName, std::string const& text)
{
    std::string const path = makeTempPath("object.xml");
    writeFile(path, text);
    TextFileStream stream(path.c_str(), Stream::eMode_Read);
    XmlReader reader;
    reader.parse(&stream);
    return reader.read(object, rootName);
}

std::string normalizeIds(std::string const& text)
{
    std::map<std::string, int> names;
    std::string result;
    size_t position = 0;
    for (;;) {
        size_t const found = text.find(" id=\"", position);
        if (found == std::string::npos) {
            break;
        }
        size_t const start = found + 5;
        size_t const end = text.find('"', start);
        std::string const id = text.substr(start, end - start);
        if (names.find(id) == names.end()) {
            int const number = static_cast<int>(names.size()) + 1;
            names[id] = number;
        }
        result.append(text, position, start - position);
        result += "ID" + std::to_string(names[id]);
        position = end;
    }
    result.append(text, position, std::string::npos);
    return result;
}

std::string replaceOnce(std::string text, std::string const& from, std::string const& to)
{
    size_t const position = text.find(from);
    EXPECT_NE(std::string::npos, position) << "no '" << from << "' to replace";
    if (position != std::string::npos) {
        text.replace(position, from.size(), to);
    }
    return text;
}
