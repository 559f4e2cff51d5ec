#include "input/keyboardsystem.h"

#include "foundation/debug.h"
#include "input/hidsystem.h"
#include "reflection/control.h"
#include "reflection/property.h"

IMPLEMENT_TYPEINFO(KeyboardSystem, "System", TypeInfo::eAttribute_Singleton);
KeyboardSystem* KeyboardSystem::mpInstance = nullptr;

namespace {

enum {
    eUsagePageGenericDesktop = 1,
    eUsageKeyboard = 6,
};

} // namespace

KeyboardSystem* KeyboardSystem::create(HIDSystem* hidSystem)
{
    if (mpInstance == nullptr) {
        KeyboardSystem* instance = new KeyboardSystem(hidSystem);
        mpInstance = instance;
    }
    return mpInstance;
}

void KeyboardSystem::destroy()
{
    delete this;
    mpInstance = nullptr;
}

KeyboardSystem::KeyboardSystem(HIDSystem* hidSystem)
    : mDeviceList(4), mKeyPrevious(), mKeyOn(), mKeyTrgOn(), mKeyTrgOff()
{
    if (!hidSystem->getDeviceList(mDeviceList, eUsagePageGenericDesktop, eUsageKeyboard)) {
        dev_assert("Keyboard device not found.", __FILE__, __LINE__);
    }
    setProcessEnable(false, true, false);
    DEV_TRACE("KeyboardSystem : start.\n");
}

KeyboardSystem::~KeyboardSystem()
{
    DEV_TRACE("KeyboardSystem : end.\n");
}

void KeyboardSystem::update()
{
    for (u32 w = 0; w < eKeyWordNum; ++w) {
        mKeyPrevious[w] = mKeyOn[w];
        mKeyOn[w] = 0;
    }
    for (u32 i = 0; i < mDeviceList.size(); ++i) {
        recDevice* device = mDeviceList[i];
        for (recElement* element = HIDGetFirstDeviceElement(device, eHIDElementTypeIO); element != nullptr;
             element = HIDGetNextDeviceElement(element, eHIDElementTypeIO)) {
            // The usage page is deliberately not looked at: any usage below
            // 256 of any page on a keyboard lands in the same table.
            u32 const usage = element->mUsage;
            if (usage < eKeyCodeNum && HIDGetElementValue(device, element) != 0) {
                mKeyOn[usage >> 5] |= 1u << (usage & 31);
            }
        }
    }
    for (u32 w = 0; w < eKeyWordNum; ++w) {
        u32 const changed = mKeyOn[w] ^ mKeyPrevious[w];
        mKeyTrgOn[w] = changed & mKeyOn[w];
        mKeyTrgOff[w] = changed & mKeyPrevious[w];
    }
}

void KeyboardSystem::makeUIList(List<UIBase>& list)
{
    list.addLast(makeControlArrayUI(new ReferenceProperty<u32>("KeyOn", mKeyOn, eKeyWordNum)));
    list.addLast(makeControlArrayUI(new ReferenceProperty<u32>("KeyTrgOn", mKeyTrgOn, eKeyWordNum)));
    list.addLast(makeControlArrayUI(new ReferenceProperty<u32>("KeyTrgOff", mKeyTrgOff, eKeyWordNum)));
}

u32 KeyboardSystem::word(eKeyCode code)
{
    u32 const index = static_cast<u32>(code) >> 5;
    DEV_ASSERT(index < eKeyWordNum, "Key code out of range.");
    return index;
}

int KeyboardSystem::lowestCode(u32 const* keys)
{
    for (u32 w = 0; w < eKeyWordNum; ++w) {
        if (keys[w] != 0) {
            return static_cast<int>(w * 32 + static_cast<u32>(__builtin_ctz(keys[w])));
        }
    }
    return -1;
}
