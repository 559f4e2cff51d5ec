// The XML reader and the object reader behind it: each input is parsed as a
// file and read into an object with a property of every kind the persistence
// layer handles, objects made from "typeinfo" and shared by id included.
// Objects that a file makes for the plain (non-owning) pointers are left to
// the end of the program, as they would be to their owner's; the target runs
// without leak detection for that reason.
#include "fuzzharness.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "serial/stream.h"
#include "serial/xmlreader.h"

namespace {

class FuzzLeaf : public ObjectBase {
public:
    void makePropertyList(PropertyList& list) override
    {
        list.add(new ReferenceProperty<s32>("Value", &mValue));
        list.add(new ReferenceProperty<AutoString>("Name", &mName));
    }

    s32 mValue = 0;
    AutoString mName;

    DECLARE_TYPEINFO(UniqueTypeInfo<FuzzLeaf>)
};

class FuzzRoot : public ObjectBase {
public:
    FuzzRoot()
    {
        mList.setContentStability(false);
        mFixedList.addLast(&mFixedA);
        mFixedList.addLast(&mFixedB);
    }

    void makePropertyList(PropertyList& list) override
    {
        list.add(new ReferenceProperty<bool>("Flag", &mFlag));
        list.add(new ReferenceProperty<s64>("Wide", &mWide));
        list.add(new ReferenceProperty<f32>("Float", &mFloat));
        list.add(new ReferenceProperty<sFixed>("Fixed", &mFixed));
        list.add(new ReferenceProperty<sRect>("Rect", &mRect));
        list.add(new ReferenceProperty<sColorF>("Color", &mColor));
        list.add(new ReferenceProperty<AutoString>("Texts", mTexts, 3));
        list.add(new ReferenceProperty<u16>("Shorts", mShorts, 4));
        list.add(new ObjectProperty("Member", &mMember));
        list.add(new ObjectProperty("Owned", &mpOwned, true));
        list.add(new ObjectProperty("SharedA", &mpSharedA, false));
        list.add(new ObjectProperty("SharedB", &mpSharedB, false));
        list.add(new ObjectProperty("List", &mList));
        list.add(new ObjectProperty("FixedList", &mFixedList));
    }

    bool mFlag = false;
    s64 mWide = 0;
    f32 mFloat = 0.0f;
    sFixed mFixed = sFixed(0, 0);
    sRect mRect = sRect();
    sColorF mColor = sColorF();
    AutoString mTexts[3];
    u16 mShorts[4] = {};
    FuzzLeaf mMember;
    FuzzLeaf mOwnedLeaf;
    FuzzLeaf* mpOwned = &mOwnedLeaf;
    FuzzLeaf* mpSharedA = nullptr;
    FuzzLeaf* mpSharedB = nullptr;
    ObjectList mList;
    FuzzLeaf mFixedA;
    FuzzLeaf mFixedB;
    ObjectList mFixedList;

    DECLARE_TYPEINFO(UniqueTypeInfo<FuzzRoot>)
};

IMPLEMENT_OBJECT_TYPEINFO(FuzzLeaf, "ObjectBase");
IMPLEMENT_OBJECT_TYPEINFO(FuzzRoot, "ObjectBase");

} // namespace

extern "C" int LLVMFuzzerTestOneInput(u8 const* data, size_t size)
{
    fuzz::setup();
    TextFileStream stream(fuzz::writeInput(data, size, "xml"), Stream::eMode_Read);
    XmlReader reader;
    FuzzRoot root;
    fuzz::runGuarded([&] {
        reader.parse(&stream);
        reader.read(&root, "FuzzRoot");
    });
    return 0;
}
