// Shared by the reflection tests: sample classes with one property of every
// kind, a stand-in resource class behind the resource link, files in the
// temporary folder, and whole-object writes and reads. The program runs no
// other threads, so its death tests only fork.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "foundation/referenceobject.h"
#include "reflection/objectlist.h"

// Two scalar properties: "Value" and "Name".
class SampleLeaf : public ObjectBase {
public:
    SampleLeaf() : mValue(0), mName("leaf") {}
    SampleLeaf(s32 value, char const* name) : mValue(value), mName(name) {}

    void makePropertyList(PropertyList& list) override;

    s32 mValue;
    AutoString mName;

    DECLARE_TYPEINFO(UniqueTypeInfo<SampleLeaf>)
};

// A resource as the resource layer will make them: counted, with a path
// from the data root. Registered under "ResourceBase".
class SampleResource : public ReferenceObject {
public:
    SampleResource() : mPath("native/ui/panel.tex") {}
    explicit SampleResource(char const* path) : mPath(path) {}

    AutoString mPath;

    DECLARE_TYPEINFO(UniqueTypeInfo<SampleResource>)
};

// Another resource class, not derived from SampleResource.
class OtherResource : public ReferenceObject {
public:
    DECLARE_TYPEINFO(UniqueTypeInfo<OtherResource>)
};

inline ResourceBase* asResource(ReferenceObject* resource)
{
    return reinterpret_cast<ResourceBase*>(resource);
}

// Resources that the stand-in createResource finds by path (without root and
// extension, as files name them). Each holds one reference of the test's.
void registerSampleResource(char const* path, ReferenceObject* resource);
void clearSampleResources();

// One property of each of the 21 value types, single and as an array, an
// indirect pair, stable and non-stable objects (one shared by two pointers),
// an empty list, a list with a null entry, an empty and a full resource.
class SampleObject : public ObjectBase {
public:
    SampleObject();
    ~SampleObject() override;

    // Values that differ from the defaults everywhere; texture becomes the
    // "Texture" resource (one more reference).
    void fill(ReferenceObject* texture);

    s32 getIndirect() const { return mIndirect; }
    void setIndirect(s32 value) { mIndirect = value; }
    AutoString getIndirectText() const { return mIndirectText; }
    void setIndirectText(AutoString text) { mIndirectText = text; }

    void makePropertyList(PropertyList& list) override;

    bool mBool;
    s8 mS8;
    s16 mS16;
    s32 mS32;
    s64 mS64;
    u8 mU8;
    u16 mU16;
    u32 mU32;
    u64 mU64;
    f32 mF32;
    f64 mF64;
    sSize mSize;
    sPoint mPoint;
    sRect mRect;
    sColor mColor;
    sColorF mColorF;
    sTexcoord mTexcoord;
    sFixed mFixed;
    sVector mVector;
    AutoString mString;
    char const* mpConstString;

    bool mBoolArray[2];
    s8 mS8Array[2];
    s16 mS16Array[2];
    s32 mS32Array[2];
    s64 mS64Array[2];
    u8 mU8Array[2];
    u16 mU16Array[2];
    u32 mU32Array[2];
    u64 mU64Array[2];
    f32 mF32Array[2];
    f64 mF64Array[2];
    sSize mSizeArray[2];
    sPoint mPointArray[2];
    sRect mRectArray[2];
    sColor mColorArray[2];
    sColorF mColorFArray[2];
    sTexcoord mTexcoordArray[2];
    sFixed mFixedArray[2];
    sVector mVectorArray[2];
    AutoString mStringArray[2];
    char const* mpConstStringArray[2];

    s32 mIndirect;
    AutoString mIndirectText;
    // Whether the two const-string properties are published. Their type
    // name, "const string", holds a blank that no reader takes back, so a
    // file that is to be read leaves them out.
    bool mConstStrings;

    SampleLeaf mMember;
    SampleLeaf* mpOwned;   // stable: made by the constructor, filled by files
    SampleLeaf* mpSharedA; // non-stable: made by files, shared
    SampleLeaf* mpSharedB;
    ObjectList mEmptyList;
    ObjectList mGappedList;
    ResourceBase* mpResource; // stays empty
    ResourceBase* mpTexture;

    DECLARE_TYPEINFO(UniqueTypeInfo<SampleObject>)
};

std::string makeTempPath(char const* name);
std::string readFile(std::string const& path);
void writeFile(std::string const& path, std::string const& text);

// The whole file that the object gives under the root tag's name.
std::string writeObject(ObjectBase* object, char const* rootName, bool stable);
// Parses text and reads the root tag into object (made from "typeinfo" when
// null); answers what XmlReader::read answers.
ObjectBase* readObject(ObjectBase* object, char const* rootName, std::string const& text);
// Every id="..." value replaced by ID1, ID2, ... in the order of first
// appearance, so that files compare whole across runs.
std::string normalizeIds(std::string const& text);
// Replaces the first occurrence; fails the test when there is none.
std::string replaceOnce(std::string text, std::string const& from, std::string const& to);
