// The HID utility layer on its headless, scripted source: enumeration with
// filters, walking devices and elements by type mask, polled values, and what
// a released list leaves valid.
#include <gtest/gtest.h>

#include "platform/hid.h"
#include "platform/window.h"

namespace {

class HIDTest : public testing::Test {
protected:
    void SetUp() override
    {
        platform::setHeadless(true);
        platform::hidResetScripted();
    }
    void TearDown() override
    {
        HIDReleaseDeviceList();
        platform::hidResetScripted();
    }
};

platform::sHIDScriptedDevice const kDevices[] = {{1, 6}, {1, 2}, {1, 6}};

u32 countDevices()
{
    u32 count = 0;
    for (recDevice* device = HIDGetFirstDevice(); device != nullptr; device = HIDGetNextDevice(device)) {
        ++count;
    }
    return count;
}

} // namespace

TEST_F(HIDTest, BuildEnumeratesAllOrFiltersByPageAndUsage)
{
    EXPECT_FALSE(HIDHaveDeviceList());
    EXPECT_EQ(HIDGetFirstDevice(), nullptr);

    platform::hidSetScriptedDevices(kDevices, 3);
    EXPECT_TRUE(HIDBuildDeviceList(0, 0));
    EXPECT_TRUE(HIDHaveDeviceList());
    EXPECT_EQ(countDevices(), 3u);
    recDevice* second = HIDGetNextDevice(HIDGetFirstDevice());
    EXPECT_EQ(second->mUsagePage, 1u);
    EXPECT_EQ(second->mUsage, 2u);

    EXPECT_TRUE(HIDBuildDeviceList(1, 6));
    EXPECT_EQ(countDevices(), 2u) << "a new build replaces the list";
    EXPECT_TRUE(HIDBuildDeviceList(0, 2));
    EXPECT_EQ(countDevices(), 1u) << "usage page 0 means any page";
    EXPECT_FALSE(HIDBuildDeviceList(12, 0));
    EXPECT_FALSE(HIDHaveDeviceList());

    platform::hidSetScriptedDevices(nullptr, 0);
    EXPECT_FALSE(HIDBuildDeviceList(0, 0));
}

TEST_F(HIDTest, KeyboardHasOneInputElementPerUsageUpTo255)
{
    ASSERT_TRUE(HIDBuildDeviceList(0, 0));
    recDevice* keyboard = HIDGetFirstDevice();
    ASSERT_NE(keyboard, nullptr);
    EXPECT_EQ(keyboard->mUsagePage, 1u);
    EXPECT_EQ(keyboard->mUsage, 6u);
    EXPECT_EQ(HIDGetNextDevice(keyboard), nullptr) << "one keyboard by default";

    u32 expected = 0;
    for (recElement* element = HIDGetFirstDeviceElement(keyboard, eHIDElementTypeIO); element != nullptr;
         element = HIDGetNextDeviceElement(element, eHIDElementTypeIO)) {
        ASSERT_EQ(element->mUsage, expected);
        ++expected;
    }
    EXPECT_EQ(expected, 256u);
    EXPECT_NE(HIDGetFirstDeviceElement(keyboard, eHIDElementTypeInput), nullptr);
    EXPECT_EQ(HIDGetFirstDeviceElement(keyboard, eHIDElementTypeOutput | eHIDElementTypeFeature), nullptr);
    EXPECT_EQ(HIDGetFirstDeviceElement(keyboard, eHIDElementTypeCollection), nullptr);
}

TEST_F(HIDTest, ValuesArePolledFromTheScriptedStateOfEachDevice)
{
    platform::hidSetScriptedDevices(kDevices, 3);
    ASSERT_TRUE(HIDBuildDeviceList(0, 0));
    recDevice* first = HIDGetFirstDevice();
    recDevice* third = HIDGetNextDevice(HIDGetNextDevice(first));
    recElement* firstA = HIDGetFirstDeviceElement(first, eHIDElementTypeIO) + 4;
    recElement* thirdA = HIDGetFirstDeviceElement(third, eHIDElementTypeIO) + 4;
    ASSERT_EQ(firstA->mUsage, 4u);

    EXPECT_EQ(HIDGetElementValue(first, firstA), 0);
    platform::hidSetScriptedKeyState(4, true, 2);
    EXPECT_EQ(HIDGetElementValue(first, firstA), 0);
    EXPECT_EQ(HIDGetElementValue(third, thirdA), 1) << "read live, with no rebuild";
    EXPECT_EQ(HIDGetElementValue(first, thirdA), 0) << "an element of another device";
    platform::hidSetScriptedKeyState(4, false, 2);
    EXPECT_EQ(HIDGetElementValue(third, thirdA), 0);
}

TEST_F(HIDTest, ReleasedListLeavesNoValidDevice)
{
    ASSERT_TRUE(HIDBuildDeviceList(0, 0));
    recDevice* keyboard = HIDGetFirstDevice();
    recElement* element = HIDGetFirstDeviceElement(keyboard, eHIDElementTypeIO);
    platform::hidSetScriptedKeyState(0, true);
    EXPECT_TRUE(HIDIsValidDevice(keyboard));
    EXPECT_EQ(HIDGetElementValue(keyboard, element), 1);

    HIDReleaseDeviceList();
    EXPECT_FALSE(HIDHaveDeviceList());
    EXPECT_FALSE(HIDIsValidDevice(keyboard));
    EXPECT_EQ(HIDGetElementValue(keyboard, element), 0);
    EXPECT_EQ(HIDGetFirstDevice(), nullptr);
    EXPECT_FALSE(HIDIsValidDevice(nullptr));
}
