#include "reflectiontest.h"

#include <map>
#include <new>

#include "serial/stream.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"

IMPLEMENT_OBJECT_TYPEINFO(SampleLeaf, "ObjectBase");
IMPLEMENT_OBJECT_TYPEINFO(SampleObject, "ObjectBase");
// Their parent arrives only at run time (see below): they wait for it.
IMPLEMENT_OBJECT_TYPEINFO(SampleResource, "ResourceBase");
IMPLEMENT_OBJECT_TYPEINFO(OtherResource, "ResourceBase");

namespace {

// The resource link, over ReferenceObject-based stand-ins.
std::map<std::string, ReferenceObject*> gResources;

ReferenceObject* asObject(ResourceBase const* resource)
{
    return reinterpret_cast<ReferenceObject*>(const_cast<ResourceBase*>(resource));
}

bool isSample(ResourceBase const* resource) { return asObject(resource)->getTypeInfo() == SampleResource::getStaticTypeInfo(); }

ResourcePropertyIntermediate::sResourceLink const sLink = {
    [](ResourceBase const* resource) { return asObject(resource)->getTypeInfo(); },
    [](ResourceBase* resource) { asObject(resource)->addRef(); },
    [](ResourceBase* resource) { asObject(resource)->release(); },
    [](ResourceBase const* resource) {
        return isSample(resource) ? static_cast<SampleResource*>(asObject(resource))->mPath.c_str() : "native/other.oth";
    },
    [](ResourceBase const* resource) { return isSample(resource) ? "tex" : "oth"; },
    [](char const* path, TypeInfo const* type) -> ResourceBase* {
        auto found = gResources.find(path);
        bool const fits = found != gResources.end() && found->second->getTypeInfo()->isDerivedFrom(type);
        return fits ? (found->second->addRef(), asResource(found->second)) : nullptr;
    },
};

// The resource layer is not part of this program, so its root record is made
// here, once, unless it is linked in after all; records of static storage
// are never destroyed.
class ReflectionTestEnvironment : public TestEnvironment {
public:
    void SetUp() override
    {
        TestEnvironment::SetUp();
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
        TestEnvironment::TearDown();
    }
};

testing::Environment* const sEnvironment = testing::AddGlobalTestEnvironment(new ReflectionTestEnvironment);

template <typename T>
void setPair(T* array, T first, T second) { array[0] = first, array[1] = second; }

} // namespace

void registerSampleResource(char const* path, ReferenceObject* resource)
{
    resource->addRef();
    gResources[path] = resource;
}

void clearSampleResources()
{
    for (auto& entry : gResources) {
        entry.second->release();
    }
    gResources.clear();
}

void SampleLeaf::makePropertyList(PropertyList& list)
{
    list.add(new ReferenceProperty<s32>("Value", &mValue));
    list.add(new ReferenceProperty<AutoString>("Name", &mName));
}

SampleObject::SampleObject() : mString("default"), mpOwned(new SampleLeaf())
{
    mEmptyList.setContentStability(false), mGappedList.setContentStability(false);
}

SampleObject::~SampleObject()
{
    delete mpOwned;
    if (mpSharedB != mpSharedA) {
        delete mpSharedB;
    }
    delete mpSharedA;
    for (ResourceBase* resource : {mpResource, mpTexture}) {
        if (resource != nullptr) {
            asObject(resource)->release();
        }
    }
}

void SampleObject::fill(ReferenceObject* texture)
{
    texture->addRef();
    mpTexture = asResource(texture);
    mBool = true, mS8 = -5, mS16 = -300, mS32 = -70000, mS64 = (1ll << 32) + 5;
    mU8 = 200, mU16 = 60000, mU32 = 4000000000u, mU64 = (1ull << 33) + 7, mF32 = 1.5f, mF64 = -2.25;
    mSize = sSize(640, 480), mPoint = sPoint(-3, 4), mRect = sRect(1, 2, 30, 40), mColor = sColor(10, 20, 30, 255);
    mColorF = sColorF(0.5f, 0.25f, 1.0f, 0.125f), mTexcoord = sTexcoord(16, 32), mFixed = sFixed(2.5f);
    mVector = sVector(sFixed(1.5f), sFixed(-0.5f)), mString = "hello_world-1.5";

    setPair(mBoolArray, true, false), setPair<s8>(mS8Array, 1, -1), setPair<s16>(mS16Array, 2, -2);
    setPair<s32>(mS32Array, 3, -3), setPair<s64>(mS64Array, -(1ll << 33) - 3, 4), setPair<u8>(mU8Array, 5, 255);
    setPair<u16>(mU16Array, 6, 65535), setPair<u32>(mU32Array, 7, 0xFFFFFFFFu), setPair<u64>(mU64Array, 8, ~0ull);
    setPair(mF32Array, 0.75f, -8.0f), setPair(mF64Array, 0.5, 1e6), setPair(mSizeArray, sSize(1, 2), sSize(3, 4));
    setPair(mPointArray, sPoint(5, 6), sPoint(-7, -8)), setPair(mRectArray, sRect(1, 1, 2, 2), sRect(-1, -1, 0, 0));
    setPair(mColorArray, sColor(1, 2, 3, 4), sColor(255, 254, 253, 252));
    setPair(mColorFArray, sColorF(0.0f, 0.5f, 0.75f, 1.0f), sColorF(1.0f, 0.0f, 0.25f, 0.5f));
    setPair(mTexcoordArray, sTexcoord(0, 1), sTexcoord(65535, 2)), setPair(mFixedArray, sFixed(-1.25f), sFixed(100.0f));
    setPair(mVectorArray, sVector(sFixed(0.25f), sFixed(0.5f)), sVector(sFixed(-3.0f), sFixed(4.0f)));
    setPair(mStringArray, AutoString("alpha"), AutoString("beta/gamma"));

    mIndirect = 42, mIndirectText = "indirect_text";
    mMember = SampleLeaf(11, "member");
    *mpOwned = SampleLeaf(12, "owned");
    mpSharedA = mpSharedB = new SampleLeaf(13, "shared");
    for (SampleLeaf* leaf : {new SampleLeaf(14, "first"), static_cast<SampleLeaf*>(nullptr), new SampleLeaf(15, "third")}) {
        mGappedList.addLast(leaf);
    }
}

void SampleObject::makePropertyList(PropertyList& list)
{
#define SAMPLE_SINGLE(T, Name) list.add(new ReferenceProperty<T>(#Name, &m##Name));
#define SAMPLE_ARRAY(T, Name) list.add(new ReferenceProperty<T>(#Name "Array", m##Name##Array, 2));
    SAMPLE_VALUE_TYPES(SAMPLE_SINGLE)
    if (mConstStrings) {
        list.add(new ReferenceProperty<char const*>("ConstString", &mpConstString));
    }
    SAMPLE_VALUE_TYPES(SAMPLE_ARRAY)
    if (mConstStrings) {
        list.add(new ReferenceProperty<char const*>("ConstStringArray", mpConstStringArray, 2));
    }
#undef SAMPLE_SINGLE
#undef SAMPLE_ARRAY
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

std::string readTraces(ObjectBase* object, char const* rootName, std::string const& text)
{
    testing::internal::CaptureStderr();
    readObject(object, rootName, text);
    return testing::internal::GetCapturedStderr();
}

std::string normalizeIds(std::string const& text)
{
    // Each distinct " id="..."" value becomes ID1, ID2, ... in order of first appearance.
    std::map<std::string, size_t> names;
    std::string result;
    std::string const key = " id=\"";
    size_t position = 0;
    for (size_t found; (found = text.find(key, position)) != std::string::npos;) {
        size_t const start = found + key.size();
        size_t const end = text.find('"', start);
        if (end == std::string::npos) {
            break;
        }
        size_t const number = names.emplace(text.substr(start, end - start), names.size() + 1).first->second;
        result += text.substr(position, found - position) + key + "ID" + std::to_string(number) + "\"";
        position = end + 1;
    }
    return result + text.substr(position);
}

std::string replaceOnce(std::string text, std::string const& from, std::string const& to)
{
    size_t const position = text.find(from);
    EXPECT_NE(std::string::npos, position) << "no '" << from << "' to replace";
    return (position == std::string::npos) ? text : text.replace(position, from.size(), to);
}
