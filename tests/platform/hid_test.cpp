// The HID utility layer on its headless, scripted source: enumeration with
// filters, walking elements by type mask, polled values, and a released list.
#include <gtest/gtest.h>

#include "platform/hid.h"
#include "platform/window.h"

TEST(HIDLayer, EnumeratesKeyboardsWithOneElementPerUsageAndPollsTheirValues)
{
    platform::setHeadless(true);
    platform::sHIDScriptedDevice const devices[] = {{1, 2}, {1, 6}};
    platform::hidSetScriptedDevices(devices, 2);
    ASSERT_TRUE(HIDBuildDeviceList(0, 0));
    EXPECT_EQ(HIDGetFirstDevice()->mUsage, 2u);
    ASSERT_TRUE(HIDBuildDeviceList(0, 6)) << "a new build replaces the list; 0 means any page";
    recDevice* keyboard = HIDGetFirstDevice();
    EXPECT_EQ(keyboard->mUsagePage, 1u);
    EXPECT_EQ(HIDGetNextDevice(keyboard), nullptr);

    u32 usage = 0;
    for (recElement* element = HIDGetFirstDeviceElement(keyboard, eHIDElementTypeIO); element != nullptr;
         element = HIDGetNextDeviceElement(element, eHIDElementTypeIO), ++usage) {
        ASSERT_EQ(element->mUsage, usage);
    }
    EXPECT_EQ(usage, 256u);
    EXPECT_EQ(HIDGetFirstDeviceElement(keyboard, eHIDElementTypeFeature | eHIDElementTypeCollection), nullptr);

    recElement* shift = HIDGetFirstDeviceElement(keyboard, eHIDElementTypeInput) + 225;
    EXPECT_EQ(HIDGetElementValue(keyboard, shift), 0);
    platform::hidSetScriptedKeyState(225, true, 1);
    EXPECT_EQ(HIDGetElementValue(keyboard, shift), 1) << "read live, without a rebuild";

    HIDReleaseDeviceList();
    EXPECT_FALSE(HIDHaveDeviceList());
    EXPECT_FALSE(HIDIsValidDevice(keyboard));
    EXPECT_EQ(HIDGetElementValue(keyboard, shift), 0) << "a device no longer in the list";
    EXPECT_FALSE(HIDBuildDeviceList(12, 0));
    platform::hidResetScripted();
}
