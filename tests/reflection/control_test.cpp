// Control descriptors: given ranges, masks and enumerations with
// their own tables, object classes, triggers with argument codes, and copies
// that outlive their source.
#include <gtest/gtest.h>

#include "reflection/control.h"
#include "reflectiontest.h"

namespace {

class Target : public ObjectBase {
public:
    void add(u32 amount) { mTotal += amount; }
    void reset() { mTotal = 0; }
    u32 mTotal = 0;
};

} // namespace

TEST(PropertyControl, GivenRangesAcceptNumericPropertiesAndHoldOneReference)
{
    s32 value = 0;
    PropertyBase* property = new ReferenceProperty<s32>("Speed", &value);
    property->addRef();
    PropertyControl* control = new PropertyControl(property, -5, 5);
    EXPECT_EQ(2u, property->getRefCount());
    delete control;
    EXPECT_EQ(1u, property->getRefCount());
    property->release();

    bool flag = false;
    f32 real = 0.0f;
    sFixed fixed(0, 0);
    // Bools, reals and fixed values take ranges too (the refusals are below).
    PropertyControl onBool(new ReferenceProperty<bool>("Flag", &flag), static_cast<u8>(0), static_cast<u8>(1));
    PropertyControl onReal(new ReferenceProperty<f32>("Real", &real), -10, 10);
    PropertyControl onFixed(new ReferenceProperty<sFixed>("Fixed", &fixed), sFixed(-1, 16), sFixed(1, 16));
    EXPECT_EQ(sFixed(1, 16), onFixed.getMaximum().mFixed);
}

TEST(PropertyControl, MasksEnumerationsAndClassesKeepTheirOwnTablesInCopies)
{
    u32 flags = 0;
    sMaskInfo masks[] = {{"VISIBLE", 1}, {"LOCKED", 2}};
    PropertyControl* mask = new PropertyControl(new ReferenceProperty<u32>("Flags", &flags), masks, 2);
    masks[0].mValue = 99;
    EXPECT_EQ(1u, mask->getKind());
    EXPECT_EQ(nullptr, mask->getEnumInfo());
    EXPECT_EQ(0xFFFFFFFFull, mask->getMaximum().mU64);
    ControlBase* copy = mask->duplicate();
    delete mask;
    PropertyControl* duplicate = static_cast<PropertyControl*>(copy);
    EXPECT_EQ(1u, duplicate->getMaskInfo()[0].mValue) << "the copy outlives its source";
    EXPECT_STREQ("LOCKED", duplicate->getMaskInfo()[1].mpName);
    EXPECT_EQ(2u, duplicate->getArrayNum());
    delete duplicate;

    u8 mode = 0;
    sEnumInfo const modes[] = {{"DISC", 0}, {"UNIFORMLY_DISC", 1}};
    PropertyControl enumeration(new ReferenceProperty<u8>("Mode", &mode), modes, 2);
    EXPECT_EQ(2u, enumeration.getKind());
    EXPECT_EQ(nullptr, enumeration.getMaskInfo()) << "an enumeration has no mask table";
    EXPECT_STREQ("UNIFORMLY_DISC", enumeration.getEnumInfo()[1].mpName);

    SampleLeaf leaf;
    PropertyControl* object = new PropertyControl(new ObjectProperty("Leaf", &leaf), SampleLeaf::getStaticTypeInfo());
    EXPECT_EQ(3u, object->getKind());
    copy = object->duplicate();
    delete object;
    EXPECT_EQ(SampleLeaf::getStaticTypeInfo(), static_cast<PropertyControl*>(copy)->getObjectTypeInfo());
    delete copy;
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

TEST(TriggerControl, CallsItsFunctionWithTheArgumentTypeItNames)
{
    Target target;
    TriggerControl<u32>* add = new TriggerControl<u32>("Add", &target, &Target::add);
    EXPECT_EQ(133u, add->getArgumentType());
    add->trigger(5);
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
}
