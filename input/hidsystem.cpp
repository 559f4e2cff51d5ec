#include "input/hidsystem.h"

#include "app/systemmanager.h"
#include "foundation/debug.h"
#include "input/keyboardsystem.h"
#include "input/mousesystem.h"

IMPLEMENT_TYPEINFO(HIDSystem, "System", TypeInfo::eAttribute_Singleton);
HIDSystem* HIDSystem::mpInstance = nullptr;

HIDSystem* HIDSystem::create()
{
    if (mpInstance == nullptr) {
        // Stored only after the constructor returns: getInstance() is null inside it.
        HIDSystem* instance = new HIDSystem();
        mpInstance = instance;
    }
    return mpInstance;
}

void HIDSystem::destroy()
{
    delete this;
    mpInstance = nullptr;
}

HIDSystem::HIDSystem()
{
    HIDBuildDeviceList(0, 0);
    if (!HIDHaveDeviceList()) {
        dev_assert("", __FILE__, __LINE__);
    }
    SystemManager* manager = SystemManager::getInstance();
    manager->addSystem(MouseSystem::create(this));
    manager->addSystem(KeyboardSystem::create(this));
    setProcessEnable(false, false, false);
    DEV_TRACE("HIDSystem : start.\n");
}

HIDSystem::~HIDSystem()
{
    HIDReleaseDeviceList();
    DEV_TRACE("HIDSystem : end.\n");
}

void HIDSystem::setup()
{
    // The device list must outlive both readers.
    addDestroyDependency(MouseSystem::getInstance());
    addDestroyDependency(KeyboardSystem::getInstance());
}

bool HIDSystem::getDeviceList(Vector<recDevice>& list, int usagePage, int usage)
{
    bool added = false;
    for (recDevice* device = HIDGetFirstDevice(); device != nullptr; device = HIDGetNextDevice(device)) {
        if (HIDIsValidDevice(device) && static_cast<int>(device->mUsagePage) == usagePage &&
            static_cast<int>(device->mUsage) == usage) {
            list.addLast(device);
            added = true;
        }
    }
    return added;
}
