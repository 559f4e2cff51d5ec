// Control descriptors: default and given ranges, masks and enumerations with
// their own tables, object classes, triggers with argument codes, and copies
// that outlive their source.
#include <gtest/gtest.h>

#include <cfloat>

#include "foundation/allocator.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflectiontest.h"

namespace {

template <typename T>
PropertyControl* controlOf(T* value)
{
    return new PropertyControl(new ReferenceProperty<T>("Value", value));
}

class Target : public ObjectBase {
public:
    void add(u32 amount) { mTotal += amount; }
    void reset() { mTotal = 0; }
    void makeControlList(List<ControlBase>& list) override
    {
        list.addLast(new PropertyControl(new ReferenceProperty<u32>("Total", &mTotal)));
        list.addLast(new TriggerControl<void>("Reset", this, &Target::reset));
    }
    u32 mTotal = 0;
};

} // namespace

TEST(PropertyControl, TakesTheFullRangeOfTheType)
{
    s8 v8 = 0;
    s16 v16 = 0;
    s32 v32 = 0;
    s64 v64 = 0;
    u8 w8 = 0;
    u16 w16 = 0;
    u32 w32 = 0;
    u64 w64 = 0;
    f32 f = 0.0f;
    f64 d = 0.0;
    sFixed x(0, 0);
    sSize size(0, 0);

    PropertyControl* control = controlOf(&v8);
    EXPECT_EQ(-128, control->getMinimum().mS8);
    EXPECT_EQ(127, control->getMaximum().mS8);
    delete control;
    control = controlOf(&v16);
    EXPECT_EQ(-32768, control->getMinimum().mS16);
    EXPECT_EQ(32767, control->getMaximum().mS16);
    delete control;
    // Reversed on purpose: no limit.
    control = controlOf(&v32);
    EXPECT_EQ(0x7FFFFFFF, control->getMinimum().mS32);
    EXPECT_EQ(static_cast<s32>(0x80000000u), control->getMaximum().mS32);
    delete control;
    control = controlOf(&v64);
    EXPECT_EQ(0x7FFFFFFFFFFFFFFFll, control->getMinimum().mS64);
    EXPECT_EQ(static_cast<s64>(0x8000000000000000ull), control->getMaximum().mS64);
    delete control;
    control = controlOf(&w8);
    EXPECT_EQ(0u, control->getMinimum().mU64);
    EXPECT_EQ(255u, control->getMaximum().mU8);
    delete control;
    control = controlOf(&w16);
    EXPECT_EQ(65535u, control->getMaximum().mU16);
    delete control;
    control = controlOf(&w32);
    EXPECT_EQ(0xFFFFFFFFu, control->getMaximum().mU32);
    delete control;
    control = controlOf(&w64);
    EXPECT_EQ(~0ull, control->getMaximum().mU64);
    delete control;
    control = controlOf(&f);
    EXPECT_EQ(-FLT_MAX, control->getMinimum().mF32);
    EXPECT_EQ(FLT_MAX, control->getMaximum().mF32);
    delete control;
    control = controlOf(&d);
    EXPECT_EQ(-DBL_MAX, control->getMinimum().mF64);
    EXPECT_EQ(DBL_MAX, control->getMaximum().mF64);
    delete control;
    control = controlOf(&x);
    EXPECT_EQ(sFixed::Min, control->getMinimum().mFixed);
    EXPECT_EQ(sFixed::Max, control->getMaximum().mFixed);
    delete control;
    control = controlOf(&size);
    EXPECT_EQ(0x7FFFFFFFFFFFFFFFll, control->getMinimum().mS64);
    EXPECT_EQ(0u, control->getKind());
    EXPECT_EQ(eControlType_Property, control->getType());
    EXPECT_EQ(nullptr, control->getMaskInfo());
    EXPECT_EQ(nullptr, control->getEnumInfo());
    EXPECT_EQ(nullptr, control->getObjectTypeInfo());
    delete control;
}

TEST(PropertyControl, HoldsOneReferenceAndNamesItselfAfterItsProperty)
{
    s32 value = 0;
    PropertyBase* property = new ReferenceProperty<s32>("Speed", &value);
    property->addRef();
    PropertyControl* control = new PropertyControl(property, -5, 5);
    EXPECT_EQ(2u, property->getRefCount());
    EXPECT_STREQ("Speed", control->getName());
    EXPECT_EQ(Utils::hash("Speed"), control->getNameHash());
    EXPECT_EQ(property, control->getProperty());
    EXPECT_EQ(-5, control->getMinimum().mS32);
    EXPECT_EQ(5, control->getMaximum().mS32);
    delete control;
    EXPECT_EQ(1u, property->getRefCount());
    property->release();
}

TEST(PropertyControl, MasksAndEnumerationsKeepTheirOwnTables)
{
    u32 flags = 0;
    sMaskInfo masks[] = {{"VISIBLE", 1}, {"LOCKED", 2}};
    PropertyControl* mask = new PropertyControl(new ReferenceProperty<u32>("Flags", &flags), masks, 2);
    masks[0].mValue = 99;
    EXPECT_EQ(1u, mask->getKind());
    EXPECT_EQ(2u, mask->getArrayNum());
    ASSERT_NE(nullptr, mask->getMaskInfo());
    EXPECT_EQ(1u, mask->getMaskInfo()[0].mValue);
    EXPECT_STREQ("LOCKED", mask->getMaskInfo()[1].mpName);
    EXPECT_EQ(nullptr, mask->getEnumInfo());
    EXPECT_EQ(0u, mask->getMinimum().mU64);
    EXPECT_EQ(0xFFFFFFFFull, mask->getMaximum().mU64);

    u8 mode = 0;
    sEnumInfo const modes[] = {{"DISC", 0}, {"UNIFORMLY_DISC", 1}};
    PropertyControl* enumeration = new PropertyControl(new ReferenceProperty<u8>("Mode", &mode), modes, 2);
    EXPECT_EQ(2u, enumeration->getKind());
    EXPECT_EQ(nullptr, enumeration->getMaskInfo()) << "an enumeration has no mask table";
    ASSERT_NE(nullptr, enumeration->getEnumInfo());
    EXPECT_STREQ("UNIFORMLY_DISC", enumeration->getEnumInfo()[1].mpName);

    ControlBase* copy = mask->duplicate();
    delete mask;
    PropertyControl* duplicate = static_cast<PropertyControl*>(copy);
    EXPECT_EQ(1u, duplicate->getMaskInfo()[0].mValue) << "the copy outlives its source";
    EXPECT_STREQ("Flags", duplicate->getName());
    EXPECT_EQ(2u, duplicate->getArrayNum());
    delete duplicate;
    delete enumeration;
}

TEST(PropertyControl, ObjectAndResourceControlsNameTheClassToOffer)
{
    SampleLeaf leaf;
    PropertyControl* object = new PropertyControl(new ObjectProperty("Leaf", &leaf), SampleLeaf::getStaticTypeInfo());
    EXPECT_EQ(3u, object->getKind());
    EXPECT_EQ(SampleLeaf::getStaticTypeInfo(), object->getObjectTypeInfo());
    ControlBase* copy = object->duplicate();
    delete object;
    EXPECT_EQ(SampleLeaf::getStaticTypeInfo(), static_cast<PropertyControl*>(copy)->getObjectTypeInfo());
    delete copy;

    ResourceBase* texture = nullptr;
    PropertyControl* resource = new PropertyControl(
        new ResourceProperty("Texture", SampleResource::getStaticTypeInfo(), &texture), SampleResource::getStaticTypeInfo());
    EXPECT_EQ(SampleResource::getStaticTypeInfo(), resource->getObjectTypeInfo());
    delete resource;
}

TEST(PropertyControlDeathTest, RefusesPropertiesThatDoNotFit)
{
    f32 real = 0.0f;
    s32 value = 0;
    sSize size(0, 0);
    sMaskInfo const masks[] = {{"A", 1}};
    EXPECT_DEATH(PropertyControl(new PropertyBase(0, "None", 0)), "Invalid property type\\.");
    EXPECT_DEATH(PropertyControl(new ReferenceProperty<f32>("Real", &real), masks, 1), "Invalid property type\\.");
    EXPECT_DEATH(PropertyControl(new ReferenceProperty<s32>("Value", &value), SampleLeaf::getStaticTypeInfo()),
                 "Invalid property type\\.");
    EXPECT_DEATH(PropertyControl(new ReferenceProperty<s32>("Value", &value), sFixed(0, 0), sFixed(1, 16)),
                 "Invalid property type\\.");
    EXPECT_DEATH(PropertyControl(new ReferenceProperty<sSize>("Size", &size), 0u, 10u), "Invalid property type\\.");
}

TEST(PropertyControl, GivenRangesAcceptNumericProperties)
{
    bool flag = false;
    f32 real = 0.0f;
    sFixed fixed(0, 0);
    PropertyControl onBool(new ReferenceProperty<bool>("Flag", &flag), static_cast<u8>(0), static_cast<u8>(1));
    EXPECT_EQ(1u, onBool.getMaximum().mU8);
    PropertyControl onReal(new ReferenceProperty<f32>("Real", &real), -10, 10);
    EXPECT_EQ(-10, onReal.getMinimum().mS32);
    PropertyControl onFixed(new ReferenceProperty<sFixed>("Fixed", &fixed), sFixed(-1, 16), sFixed(1, 16));
    EXPECT_EQ(sFixed(1, 16), onFixed.getMaximum().mFixed);
    uNumeric low;
    uNumeric high;
    low.mF32 = -0.5f;
    high.mF32 = 0.5f;
    PropertyControl onNumeric(new ReferenceProperty<f32>("Real", &real), low, high);
    EXPECT_EQ(0.5f, onNumeric.getMaximum().mF32);
}

TEST(TriggerControl, CallsItsFunctionWithTheArgumentTypeItNames)
{
    Target target;
    TriggerControl<u32>* add = new TriggerControl<u32>("Add", &target, &Target::add);
    EXPECT_EQ(eControlType_Trigger, add->getType());
    EXPECT_EQ(133u, add->getArgumentType());
    EXPECT_STREQ("Add", add->getName());
    EXPECT_EQ(Utils::hash("Add"), add->getNameHash());
    add->trigger(5);
    EXPECT_EQ(5u, target.mTotal);

    ControlBase* copy = add->duplicate();
    delete add;
    static_cast<TriggerControl<u32>*>(copy)->trigger(2);
    EXPECT_EQ(7u, target.mTotal) << "the duplicate has a functor of its own";
    copy->invalidate();
    EXPECT_EQ(eControlType_Invalid, copy->getType());
    delete copy;

    TriggerControl<void> reset("Reset", &target, &Target::reset);
    EXPECT_EQ(129u, reset.getArgumentType());
    reset.trigger();
    EXPECT_EQ(0u, target.mTotal);

    EXPECT_EQ(131u, sTriggerArgumentOf<u8>::Value);
    EXPECT_EQ(135u, sTriggerArgumentOf<s8>::Value);
    EXPECT_EQ(138u, sTriggerArgumentOf<s64>::Value);
    EXPECT_EQ(140u, sTriggerArgumentOf<f64>::Value);
    EXPECT_EQ(141u, sTriggerArgumentOf<sFixed>::Value);
}

TEST(ObjectBase, MakeUIListTurnsControlsIntoWidgetsAndDeletesThem)
{
    Target target;
    List<UIBase> widgets;
    target.makeUIList(widgets);
    // No control widget exists yet: every control gives none.
    EXPECT_TRUE(widgets.empty());
    s32 value = 0;
    PropertyControl control(new ReferenceProperty<s32>("Value", &value));
    EXPECT_EQ(nullptr, Utils::makeUIFromControl(&control));
}

TEST(ControlDeathTest, ControlsShareTheBlockHeapOfProperties)
{
    EXPECT_EXIT(
        {
            BlockAllocator heap(48, 64, "Property", nullptr, false);
            PropertyBase::setAllocator(&heap);
            u32 value = 0;
            ControlBase* control = new PropertyControl(new ReferenceProperty<u32>("Value", &value));
            bool const placed = heap.getUsedSize() == 96;
            delete control;
            std::_Exit((placed && heap.getUsedSize() == 0) ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}
