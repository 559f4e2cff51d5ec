#include "platform/hid.h"

#include <SDL2/SDL.h>

#include <cstring>

#include "platform/window.h"

namespace {

enum {
    eDeviceMax = platform::eHIDScriptedDeviceMax,
    eKeyUsageNum = 256,            // USB HID keyboard usages 0..255
    eUsagePageGenericDesktop = 1,
    eUsageKeyboard = 6,
    eUsagePageKeyboard = 7,
    eSourceSDLKeyboard = 0xFFFFFFFFu,
};

// The list lives in fixed storage: nothing is allocated while frames run.
recDevice sDevices[eDeviceMax];
recElement sElements[eDeviceMax][eKeyUsageNum];
recDevice* spFirstDevice = nullptr;

platform::sHIDScriptedDevice sScriptedDevices[eDeviceMax] = {{eUsagePageGenericDesktop, eUsageKeyboard}};
u32 sScriptedDeviceNum = 1;
u8 sScriptedKeys[eDeviceMax][eKeyUsageNum];

// A keyboard device: one input element per keyboard usage.
void makeKeyboard(u32 slot, u32 usagePage, u32 usage, u32 source)
{
    recDevice& device = sDevices[slot];
    device.mUsagePage = usagePage;
    device.mUsage = usage;
    device.mpElements = sElements[slot];
    device.mElementNum = eKeyUsageNum;
    device.mSource = source;
    device.mpNext = nullptr;
    for (u32 i = 0; i < eKeyUsageNum; ++i) {
        recElement& element = sElements[slot][i];
        element.mType = eHIDElementTypeInput;
        element.mUsagePage = eUsagePageKeyboard;
        element.mUsage = i;
        element.mpDevice = &device;
    }
}

bool matches(u32 usagePage, u32 usage, u32 wantedPage, u32 wantedUsage)
{
    return (wantedPage == 0 || wantedPage == usagePage) && (wantedUsage == 0 || wantedUsage == usage);
}

recElement* findElement(recDevice* device, u32 from, u32 typeMask)
{
    for (u32 i = from; i < device->mElementNum; ++i) {
        if ((device->mpElements[i].mType & typeMask) != 0) {
            return &device->mpElements[i];
        }
    }
    return nullptr;
}

} // namespace

bool HIDBuildDeviceList(u32 usagePage, u32 usage)
{
    HIDReleaseDeviceList();
    u32 count = 0;
    if (platform::isHeadless()) {
        // Every scripted device carries the keyboard's element table; only
        // its primary usage tells a keyboard from anything else.
        for (u32 i = 0; i < sScriptedDeviceNum; ++i) {
            platform::sHIDScriptedDevice const& scripted = sScriptedDevices[i];
            if (matches(scripted.mUsagePage, scripted.mUsage, usagePage, usage)) {
                makeKeyboard(count++, scripted.mUsagePage, scripted.mUsage, i);
            }
        }
    } else if (SDL_WasInit(SDL_INIT_VIDEO) != 0) {
        // SDL merges every physical keyboard into one state, indexed by
        // scancodes that are the USB HID usages; it exists with the window.
        if (matches(eUsagePageGenericDesktop, eUsageKeyboard, usagePage, usage)) {
            makeKeyboard(count++, eUsagePageGenericDesktop, eUsageKeyboard, eSourceSDLKeyboard);
        }
    }
    for (u32 i = 0; i + 1 < count; ++i) {
        sDevices[i].mpNext = &sDevices[i + 1];
    }
    spFirstDevice = count != 0 ? &sDevices[0] : nullptr;
    return HIDHaveDeviceList();
}

bool HIDHaveDeviceList()
{
    return spFirstDevice != nullptr;
}

void HIDReleaseDeviceList()
{
    spFirstDevice = nullptr;
}

recDevice* HIDGetFirstDevice()
{
    return spFirstDevice;
}

recDevice* HIDGetNextDevice(recDevice const* device)
{
    return device != nullptr ? device->mpNext : nullptr;
}

bool HIDIsValidDevice(recDevice const* device)
{
    for (recDevice const* it = spFirstDevice; it != nullptr; it = it->mpNext) {
        if (it == device) {
            return true;
        }
    }
    return false;
}

recElement* HIDGetFirstDeviceElement(recDevice* device, u32 typeMask)
{
    if (device == nullptr) {
        return nullptr;
    }
    return findElement(device, 0, typeMask);
}

recElement* HIDGetNextDeviceElement(recElement* element, u32 typeMask)
{
    if (element == nullptr) {
        return nullptr;
    }
    recDevice* device = element->mpDevice;
    return findElement(device, static_cast<u32>(element - device->mpElements) + 1, typeMask);
}

s32 HIDGetElementValue(recDevice const* device, recElement const* element)
{
    if (device == nullptr || element == nullptr || element->mpDevice != device || !HIDIsValidDevice(device)) {
        return 0;
    }
    u32 const usage = element->mUsage;
    if (device->mSource == eSourceSDLKeyboard) {
        int count = 0;
        u8 const* state = SDL_GetKeyboardState(&count);
        return usage < static_cast<u32>(count) ? state[usage] : 0;
    }
    return usage < eKeyUsageNum ? sScriptedKeys[device->mSource][usage] : 0;
}

namespace platform {

void hidSetScriptedDevices(sHIDScriptedDevice const* devices, u32 count)
{
    if (count > eDeviceMax) {
        count = eDeviceMax;
    }
    for (u32 i = 0; i < count; ++i) {
        sScriptedDevices[i] = devices[i];
    }
    sScriptedDeviceNum = count;
}

void hidSetScriptedKeyState(u32 usage, bool down, u32 device)
{
    if (usage < eKeyUsageNum && device < eDeviceMax) {
        sScriptedKeys[device][usage] = down ? 1 : 0;
    }
}

void hidResetScripted()
{
    sScriptedDevices[0] = sHIDScriptedDevice{eUsagePageGenericDesktop, eUsageKeyboard};
    sScriptedDeviceNum = 1;
    memset(sScriptedKeys, 0, sizeof(sScriptedKeys));
}

} // namespace platform
