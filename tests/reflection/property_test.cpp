// Properties: the index convention, the text and numeric forms (with the
// deliberate bool inversion), typed access, counting, the block heap, object
// and resource semantics, and copyProperties.
#include <gtest/gtest.h>

#include <cstdlib>

#include "foundation/allocator.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflectiontest.h"

namespace {

template <typename T>
std::string textOf(T value)
{
    ReferenceProperty<T> property("p", &value);
    char buffer[64];
    return property.getString(buffer, PropertyBase::CurrentIndex);
}

template <typename T>
T afterSetString(T value, char const* text)
{
    ReferenceProperty<T> property("p", &value);
    property.setString(text);
    return value;
}

// A setter that clamps, and a text getter that builds a fresh string.
class Guarded : public ObjectBase {
public:
    s32 getLevel() const { return mLevel; }
    void setLevel(s32 level) { mLevel = (level > 10) ? 10 : level; }
    AutoString getLabel() const { AutoString label; label.format("label_%d", ++mCalls); return label; }
    void setLabel(AutoString) {}

    s32 mLevel = 0;
    mutable s32 mCalls = 0;
};

} // namespace

TEST(Property, ASingleValueIgnoresTheIndexAndAnArrayGuardsIt)
{
    s32 single = 5;
    ReferenceProperty<s32> one("One", &single);
    one.setIndex(7);
    EXPECT_EQ(0u, one.getIndex());
    EXPECT_EQ(5, one.getByType<s32>(PropertyBase::CurrentIndex));

    s32 values[4] = {10, 11, 12, 13};
    ReferenceProperty<s32> array("Four", values, 4);
    array.setIndex(3);
    EXPECT_EQ(13, array.get(PropertyBase::CurrentIndex));
    EXPECT_EQ(11, array.get(1)) << "any other index is the element's own";
    array.setString("99");
    EXPECT_EQ(99, values[3]) << "setString sets the current element";
    array.setNumeric(7, 0);
    EXPECT_EQ(7, values[0]);
    EXPECT_DEATH(array.setIndex(4), "Invalid index\\.");
    EXPECT_DEATH(PropertyBase(1, "Huge", 4096), "Property count overflow\\.");
    PropertyBase base(0, "Base", 0);
    char buffer[64];
    EXPECT_EQ(nullptr, base.getString(buffer, 0));
}

// The scalar forms are checked whole in the sample file; these are the forms
// that files spread over several attributes.
TEST(Property, TextFormsAreExact)
{
    EXPECT_EQ("(640,480)", textOf(sSize(640, 480)));
    EXPECT_EQ("(-3,4)", textOf(sPoint(-3, 4)));
    EXPECT_EQ("(65535,7)", textOf(sTexcoord(65535, 7)));
    EXPECT_EQ("(0.500000,-1.000000)", textOf(sVector(sFixed(0.5f), sFixed(-1.0f))));
    EXPECT_EQ("(1,2,3,4)", textOf(sRect(1, 2, 3, 4)));
    EXPECT_EQ("(10,20,30,255)", textOf(sColor(10, 20, 30, 255)));
    EXPECT_EQ("(0.000000,0.500000,1.000000,0.250000)", textOf(sColorF(0.0f, 0.5f, 1.0f, 0.25f)));
    EXPECT_EQ("", textOf(AutoString()));
    EXPECT_EQ("literal", textOf<char const*>("literal"));
}

TEST(Property, SetStringCutsIntegersAndInvertsBools)
{
    EXPECT_EQ(44, afterSetString<s8>(0, "300"));
    EXPECT_EQ(255, afterSetString<u8>(0, "-1"));
    EXPECT_EQ(-7, afterSetString<s32>(0, "-7xyz"));
    EXPECT_EQ(0, afterSetString<s32>(5, "text"));
    EXPECT_EQ(0x123456789ll, afterSetString<s64>(0, "4886718345"));
    // Deliberate: "true" gives false, anything else true.
    EXPECT_FALSE(afterSetString<bool>(true, "true"));
    EXPECT_TRUE(afterSetString<bool>(false, "false"));
    EXPECT_TRUE(afterSetString<bool>(false, nullptr));
    EXPECT_EQ(-1e100, afterSetString<f64>(0.0, "-1e100"));
    EXPECT_EQ(sFixed(2.75f), afterSetString(sFixed(0, 0), "2.75"));
    // The rest ignore text.
    EXPECT_EQ(sRect(1, 2, 3, 4), afterSetString(sRect(1, 2, 3, 4), "(0,0,0,0)"));
    EXPECT_STREQ("kept", afterSetString<char const*>("kept", "other"));
}

TEST(Property, NumericFormsCoverIntegersAndBoolsOnly)
{
    s16 small = -2;
    bool flag = true;
    f32 speed = 1.5f;
    ReferenceProperty<s16> integer("Small", &small);
    ReferenceProperty<bool> boolean("Flag", &flag);
    ReferenceProperty<f32> real("Speed", &speed);
    EXPECT_EQ(-2, integer.getNumeric(PropertyBase::CurrentIndex));
    EXPECT_EQ(-1, boolean.getNumeric(PropertyBase::CurrentIndex));
    EXPECT_EQ(0, real.getNumeric(PropertyBase::CurrentIndex));
    for (PropertyBase* property : {static_cast<PropertyBase*>(&integer), static_cast<PropertyBase*>(&boolean), static_cast<PropertyBase*>(&real)}) {
        property->setNumeric(0x12345, PropertyBase::CurrentIndex);
    }
    EXPECT_EQ(0x2345, small) << "cut to the type's width";
    EXPECT_TRUE(flag);
    EXPECT_EQ(1.5f, speed);
}

TEST(Property, TypedAccessDemandsTheExactType)
{
    s32 value = 3;
    ReferenceProperty<s32> property("Value", &value);
    PropertyBase& base = property;
    base = 5;
    EXPECT_EQ(5, static_cast<s32>(base));
    EXPECT_DEATH(base.getByType<u32>(PropertyBase::CurrentIndex), "Type missmatch\n");
    EXPECT_DEATH(base.setByType<u32>(1u, PropertyBase::CurrentIndex), "Type missmatch\\.\n");

    char const* text = "fixed";
    ReferenceProperty<char const*> constant("Text", &text);
    constant.setByType<char const*>("other", PropertyBase::CurrentIndex);
    EXPECT_STREQ("fixed", text) << "a const string is not set through the base";
}

TEST(Property, IndirectPropertiesGoThroughTheObject)
{
    Guarded object;
    IndirectProperty<s32> level("Level", &object, &Guarded::getLevel, &Guarded::setLevel);
    level.setString("25");
    EXPECT_EQ(10, object.mLevel) << "the setter may refuse or change the value";
    IndirectProperty<s32> readOnly("ReadOnly", &object, &Guarded::getLevel, static_cast<void (Guarded::*)(s32)>(nullptr));
    readOnly.setNumeric(3, PropertyBase::CurrentIndex);
    EXPECT_EQ(10, object.mLevel);

    IndirectProperty<AutoString> label("Label", &object, &Guarded::getLabel, &Guarded::setLabel);
    char buffer[64];
    EXPECT_STREQ("label_1", label.getString(buffer, PropertyBase::CurrentIndex))
        << "valid until the next call, though the getter's string is gone";
    EXPECT_STREQ("label_2", label.getString(buffer, PropertyBase::CurrentIndex));
}

TEST(PropertyList, HoldsAReferenceAndFindsByNameAndType)
{
    s32 value = 0;
    PropertyBase* kept = new ReferenceProperty<s32>("Value", &value);
    kept->addRef();
    {
        PropertyList list;
        list.add(kept);
        EXPECT_EQ(2u, kept->getRefCount());
        EXPECT_EQ(kept, list.find(Utils::hash("Value"), ePropertyType_S32));
        EXPECT_EQ(nullptr, list.find("Value", ePropertyType_U32)) << "the right name with a wrong type";
        EXPECT_EQ(nullptr, list.find("Missing", ePropertyType_S32));
    }
    EXPECT_EQ(1u, kept->getRefCount());
    kept->release();
}

// Controls share the heap: a control and its property take a block each.
TEST(PropertyDeathTest, PropertiesAndControlsLiveInTheBlockHeapOnceItIsSet)
{
    EXPECT_EXIT(
        {
            s32 value = 0;
            PropertyBase* early = new ReferenceProperty<s32>("Early", &value);
            BlockAllocator heap(48, 64, "Property", nullptr, false);
            PropertyBase::setAllocator(&heap);
            PropertyBase* inside = new ObjectProperty("Inside", static_cast<ObjectBase*>(nullptr));
            bool const placed = heap.getUsedSize() == 48;
            delete inside;
            delete early; // made before the heap: goes back where it came from
            ControlBase* control = new PropertyControl(new ReferenceProperty<s32>("Value", &value));
            bool const controlPlaced = heap.getUsedSize() == 96;
            delete control;
            std::_Exit((placed && controlPlaced && heap.getUsedSize() == 0) ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_DEATH(
        {
            BlockAllocator heap(48, 4, "Property", nullptr, false);
            PropertyBase::setAllocator(&heap);
            PropertyBase::setAllocator(&heap);
        },
        "Allocator already set\\.");
}

// A fixed member takes over values, a non-stable pointer is replaced (the old
// object untouched), a stable pointer's object takes over values.
TEST(ObjectProperty, SetReplacesOnlyNonStablePointers)
{
    SampleLeaf first(1, "first");
    SampleLeaf second(2, "second");
    ObjectProperty member("Member", &first);
    member.setByType<ObjectBase*>(&second, PropertyBase::CurrentIndex);
    EXPECT_EQ(2, first.mValue);
    EXPECT_STREQ("first", first.mName.c_str()) << "strings are not copied";
    char buffer[64];
    EXPECT_STREQ("SampleLeaf", member.getString(buffer, PropertyBase::CurrentIndex));

    first.mValue = 1;
    SampleLeaf* pointer = &first;
    ObjectProperty reference("Reference", &pointer, false);
    reference.setByType<ObjectBase*>(&second, PropertyBase::CurrentIndex);
    EXPECT_EQ(&second, pointer);
    EXPECT_EQ(1, first.mValue);
    reference.setByType<ObjectBase*>(nullptr, PropertyBase::CurrentIndex);
    EXPECT_STREQ("null", reference.getString(buffer, PropertyBase::CurrentIndex));

    pointer = &first;
    ObjectProperty stable("Stable", &pointer, true);
    stable.setByType<ObjectBase*>(&second, PropertyBase::CurrentIndex);
    EXPECT_EQ(&first, pointer);
    EXPECT_EQ(2, first.mValue);
}

namespace {

// The stand-in resources are no ResourceBase in C++, so the functions use
// the base pointer type; the resource layer's classes use their own.
class TextureUser : public ObjectBase {
public:
    ResourceBase* getTexture() const { return mpTexture; }
    void setTexture(ResourceBase* texture) { ++mSets, mpTexture = texture; }
    ResourceBase* mpTexture = nullptr;
    int mSets = 0;
};

} // namespace

TEST(ResourceProperty, CountsWhatItHoldsAndRefusesOtherClasses)
{
    SampleResource* first = new SampleResource("native/a.tex");
    SampleResource* second = new SampleResource("native/b.tex");
    OtherResource* other = new OtherResource();
    ResourceBase* slot = nullptr;
    {
        ResourceProperty property("Texture", SampleResource::getStaticTypeInfo(), &slot);
        char buffer[64];
        EXPECT_STREQ("null", property.getString(buffer, PropertyBase::CurrentIndex));
        property.setByType<ResourceBase*>(asResource(first), PropertyBase::CurrentIndex);
        property.setByType<ResourceBase*>(asResource(first), PropertyBase::CurrentIndex);
        EXPECT_EQ(2, first->getRefCount()) << "the value it holds: no change";
        EXPECT_STREQ("native/a.tex", property.getString(buffer, PropertyBase::CurrentIndex));
        property.setByType<ResourceBase*>(asResource(other), PropertyBase::CurrentIndex);
        EXPECT_EQ(asResource(first), slot) << "refused in silence";
        EXPECT_EQ(1, other->getRefCount());
        property.setByType<ResourceBase*>(asResource(second), PropertyBase::CurrentIndex);
        EXPECT_EQ(1, first->getRefCount());
        EXPECT_EQ(2, second->getRefCount());
        property.setByType<ResourceBase*>(nullptr, PropertyBase::CurrentIndex);
        EXPECT_EQ(1, second->getRefCount());
    }

    // An indirect one leaves counting to the setter.
    TextureUser user;
    IndirectResourceProperty indirect("Texture", SampleResource::getStaticTypeInfo(), &user, &TextureUser::getTexture,
                                      &TextureUser::setTexture);
    indirect.setByType<ResourceBase*>(asResource(first), PropertyBase::CurrentIndex);
    indirect.setByType<ResourceBase*>(asResource(first), PropertyBase::CurrentIndex);
    indirect.setByType<ResourceBase*>(asResource(other), PropertyBase::CurrentIndex);
    EXPECT_EQ(asResource(first), user.mpTexture);
    EXPECT_EQ(1, first->getRefCount());
    EXPECT_EQ(1, user.mSets) << "the same value and a wrong class never reach the setter";
    first->release(), second->release(), other->release();

    EXPECT_DEATH(ResourceProperty("Texture", SampleLeaf::getStaticTypeInfo(), &slot), "Invalid TypeInfo\\.");
    EXPECT_DEATH(ResourceProperty("Texture", nullptr, &slot), "Invalid TypeInfo\\.");
}

namespace {

class CopyTarget : public ObjectBase {
public:
    void makePropertyList(PropertyList& list) override
    {
        list.add(new ReferenceProperty<u16>("Count", &mCount));
        list.add(new ReferenceProperty<f32>("Ratio", &mRatio));
        list.add(new ReferenceProperty<bool>("Flag", &mFlag));
        list.add(new ReferenceProperty<AutoString>("Name", &mName));
        list.add(new ObjectProperty("Child", &mpChild, false));
        list.add(new ReferenceProperty<sSize>("Size", &mSize));
        list.add(new ReferenceProperty<s16>("Value", &mValue));
    }
    u16 mCount = 0;
    f32 mRatio = 0.0f;
    bool mFlag = false;
    AutoString mName = "target";
    SampleLeaf* mpChild = nullptr;
    sSize mSize = sSize(0, 0);
    s16 mValue = 9;
};

} // namespace

TEST(ObjectBase, CopyPropertiesTakesIntegersAndObjectsOnly)
{
    SampleLeaf child(1, "child");
    CopyTarget source;
    source.mCount = 7, source.mRatio = 0.5f, source.mFlag = true, source.mName = "source";
    source.mpChild = &child, source.mSize = sSize(3, 4);
    CopyTarget target;
    target.copyProperties(&source);
    EXPECT_EQ(7, target.mCount);
    EXPECT_EQ(&child, target.mpChild);
    EXPECT_EQ(0.0f, target.mRatio) << "a float of the same name is deliberately not copied";
    EXPECT_FALSE(target.mFlag);
    EXPECT_STREQ("target", target.mName.c_str());
    EXPECT_EQ(sSize(0, 0), target.mSize);

    // A same-named property of another type is not the same property.
    SampleLeaf leaf(5, "leaf");
    leaf.copyProperties(&source);
    EXPECT_EQ(5, leaf.mValue);
}
