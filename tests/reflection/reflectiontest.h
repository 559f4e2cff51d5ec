// Shared by the reflection tests: sample classes with one property of every
// kind, a stand-in resource class behind the resource link, files in the
// temporary folder, and whole-object writes and reads. The program runs no
// other threads, so its death tests only fork.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "foundation/referenceobject.h"
#include "reflection/objectlist.h"
#include "serial/serialtest.h"

// Two scalar properties: "Value" and "Name".
class SampleLeaf : public ObjectBase {
public:
    SampleLeaf(s32 value = 0, char const* name = "leaf") : mValue(value), mName(name) {}

    void makePropertyList(PropertyList& list) override;

    s32 mValue;
    AutoString mName;

    DECLARE_TYPEINFO(UniqueTypeInfo<SampleLeaf>)
};

// A resource as the resource layer will make them: counted, with a path
// from the data root. Registered under "ResourceBase".
class SampleResource : public ReferenceObject {
public:
    explicit SampleResource(char const* path = "native/ui/panel.tex") : mPath(path) {}

    AutoString mPath;

    DECLARE_TYPEINFO(UniqueTypeInfo<SampleResource>)
};

// Another resource class, not derived from SampleResource.
class OtherResource : public ReferenceObject {
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

// The value types with a text the reader takes back, in the order of the
// property type codes.
#define SAMPLE_VALUE_TYPES(X)                                                                           \
    X(bool, Bool) X(s8, S8) X(s16, S16) X(s32, S32) X(s64, S64) X(u8, U8) X(u16, U16) X(u32, U32)     \
    X(u64, U64) X(f32, F32) X(f64, F64) X(sSize, Size) X(sPoint, Point) X(sRect, Rect) X(sColor, Color) \
    X(sColorF, ColorF) X(sTexcoord, Texcoord) X(sFixed, Fixed) X(sVector, Vector) X(AutoString, String)

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

#define SAMPLE_FIELDS(T, Name) T m##Name = T(); T m##Name##Array[2] = {};
    SAMPLE_VALUE_TYPES(SAMPLE_FIELDS)
#undef SAMPLE_FIELDS
    char const* mpConstString = "constant";
    char const* mpConstStringArray[2] = {"one", "two"};
    s32 mIndirect = 0;
    AutoString mIndirectText = "indirect";
    // Whether the two const-string properties are published. Their type
    // name, "const string", holds a blank that no reader takes back, so a
    // file that is to be read leaves them out.
    bool mConstStrings = true;

    SampleLeaf mMember;
    SampleLeaf* mpOwned;             // stable: made here, filled by files
    SampleLeaf* mpSharedA = nullptr; // non-stable: made by files, shared
    SampleLeaf* mpSharedB = nullptr;
    ObjectList mEmptyList;
    ObjectList mGappedList;
    ResourceBase* mpResource = nullptr; // stays empty
    ResourceBase* mpTexture = nullptr;

    DECLARE_TYPEINFO(UniqueTypeInfo<SampleObject>)
};

// The whole file that the object gives under the root tag's name.
std::string writeObject(ObjectBase* object, char const* rootName, bool stable);
// Parses text and reads the root tag into object (made from "typeinfo" when
// null); answers what XmlReader::read answers.
ObjectBase* readObject(ObjectBase* object, char const* rootName, std::string const& text);
// Reads as readObject does and answers the traces.
std::string readTraces(ObjectBase* object, char const* rootName, std::string const& text);
// Every id="..." value replaced by ID1, ID2, ... in the order of first
// appearance, so that files compare whole across runs.
std::string normalizeIds(std::string const& text);
// Replaces the first occurrence; fails the test when there is none.
std::string replaceOnce(std::string text, std::string const& from, std::string const& to);
