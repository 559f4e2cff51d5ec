#include "host/harborapp.h"

#include "app/systemmanager.h"
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
    // Its constructor adds MouseSystem and KeyboardSystem first, so it stands behind them.
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
