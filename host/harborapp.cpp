#include "host/harborapp.h"

#include "app/systemmanager.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "jobs/jobsystem.h"
#include "input/hidsystem.h"

TypeInfo HarborApp::mUniqueTypeInfo("HarborApp", "System", 2);

HarborApp::HarborApp(sInitializer const* initializer) : Application(initializer)
{
    DEV_TRACE("HarborApp start.\n");
}

HarborApp::~HarborApp()
{
    DEV_TRACE("HarborApp end.\n");
}

void HarborApp::setup()
{
    SystemManager* manager = SystemManager::getInstance();
    if (manager == nullptr) {
        return; // no window could be made: nothing to run
    }

    // The named heaps, all carved from "Global", in the order the overlay lists them.
    MemoryManager* memory = MemoryManager::getInstance();
    AutoString::setAllocator(memory->createAllocator(0x200000, "String"));
    setTempAllocator(memory->createAllocator(0x1000000, "Temp"));
    // Property objects take this heap once they exist.
    memory->createBlockAllocator(48, 0x10000, "Property");
    System::setAllocator(memory->createAllocator(0x1000000, "System"));
    // Resources and units take theirs once they exist.
    memory->createAllocator(0x2000000, "Resource");
    memory->createAllocator(0x1000000, "Unit");

    // Its constructor adds MouseSystem and KeyboardSystem first, so it stands behind them.
    // The Systems, each at its fixed place in the manager.
    manager->addSystem(JobSystem::create(0x10000, getProcessorNum()));
    manager->addSystem(HIDSystem::create());
    manager->setup();
    manager->order();
}

void HarborApp::update(float delta)
{
    (void)delta;
    SystemManager* manager = SystemManager::getInstance();
    manager->preprocess();
    manager->update();
    manager->postprocess();
}
