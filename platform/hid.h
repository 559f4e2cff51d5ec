// HID device utilities over SDL2: a list of input devices and their elements,
// whose values are polled. The keyboard is one device (generic desktop page 1,
// usage 6) with one input element per USB HID keyboard usage 0..255; its values
// are SDL's key state, which changes only while the event loop pumps events.
// In headless mode the devices and their values are scripted (tests). Main thread only.
#pragma once

#include "foundation/types.h"

// Element types, as bits of a mask.
enum eHIDElementType {
    eHIDElementTypeInput = 1 << 1,
    eHIDElementTypeOutput = 1 << 2,
    eHIDElementTypeFeature = 1 << 3,
    eHIDElementTypeCollection = 1 << 4,
    eHIDElementTypeIO = eHIDElementTypeInput | eHIDElementTypeOutput | eHIDElementTypeFeature,  // 14
};

struct recDevice;

struct recElement {
    u32 mType;          // one eHIDElementType bit
    u32 mUsagePage;
    u32 mUsage;
    recDevice* mpDevice;  // the owner; the list's storage holds both
};

struct recDevice {
    u32 mUsagePage;     // primary usage page
    u32 mUsage;         // primary usage
    recElement* mpElements;
    u32 mElementNum;
    u32 mSource;        // where the values come from: scripted slot, or the SDL keyboard
    recDevice* mpNext;
};

// Enumerates the devices of the given primary usage page and usage, 0 meaning
// all, replacing any list built before. True if the list holds devices.
bool HIDBuildDeviceList(u32 usagePage, u32 usage);
bool HIDHaveDeviceList();
// After this no device or element of the old list is valid.
void HIDReleaseDeviceList();
recDevice* HIDGetFirstDevice();
recDevice* HIDGetNextDevice(recDevice const* device);
// True while the device is in the current list.
bool HIDIsValidDevice(recDevice const* device);
// Walk a device's elements whose type is in the mask; null at the end.
recElement* HIDGetFirstDeviceElement(recDevice* device, u32 typeMask);
recElement* HIDGetNextDeviceElement(recElement* element, u32 typeMask);
// The element's current value, polled; 0 for a device no longer in the list.
s32 HIDGetElementValue(recDevice const* device, recElement const* element);

namespace platform {

// Test hooks for headless mode, where the HID layer reads these instead of SDL.
// Until changed: one keyboard, no key down.
enum { eHIDScriptedDeviceMax = 4 };

struct sHIDScriptedDevice {
    u32 mUsagePage;
    u32 mUsage;
};

// Takes effect at the next HIDBuildDeviceList; at most eHIDScriptedDeviceMax,
// none for a machine without devices.
void hidSetScriptedDevices(sHIDScriptedDevice const* devices, u32 count);
// The value of element `usage` (0..255) of scripted device `device`; read live.
void hidSetScriptedKeyState(u32 usage, bool down, u32 device = 0);
// Back to one keyboard with no key down.
void hidResetScripted();

} // namespace platform
