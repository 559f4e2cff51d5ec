// Shared fixture of the input tests: a headless Application (so the mouse state
// comes from its event handler) and the scripted HID source of headless mode.
#pragma once

#include <gtest/gtest.h>

#include "app/application.h"
#include "app/systemmanager.h"
#include "input/hidsystem.h"
#include "input/keyboardsystem.h"
#include "input/mousesystem.h"
#include "platform/hid.h"

class InputTestApp : public Application {
public:
    explicit InputTestApp(sInitializer const* initializer) : Application(initializer) {}
    void setup() override {}
    void update(float) override {}
};

class InputTest : public testing::Test {
protected:
    void SetUp() override
    {
        platform::setHeadless(true);
        platform::hidResetScripted();
        mInitializer = Application::sInitializer{"Input", 1024, 768, 60, 20, 240};
        mpApp = new InputTestApp(&mInitializer);  // content at 100,100
    }
    void TearDown() override
    {
        delete mpApp;  // destroys the Systems in their order
        platform::hidResetScripted();
    }
    // What the host does: the HIDSystem brings the two others along.
    void startSystems()
    {
        SystemManager* manager = SystemManager::getInstance();
        manager->addSystem(HIDSystem::create());
        manager->setup();
        manager->order();
    }
    void frame() { SystemManager::getInstance()->update(); }
    void key(u32 usage, bool down, u32 device = 0) { platform::hidSetScriptedKeyState(usage, down, device); }
    void mouse(u32 kind, int globalX, int globalY, u16 button = 0, u16 axis = 0, s32 delta = 0)
    {
        platform::sEvent event = {};
        event.mClass = platform::eEventClassMouse;
        event.mKind = kind;
        event.mGlobalX = static_cast<s16>(globalX);
        event.mGlobalY = static_cast<s16>(globalY);
        event.mButton = button;
        event.mWheelAxis = axis;
        event.mWheelDelta = delta;
        Application::eventHandler(nullptr, &event, mpApp);
    }

    Application::sInitializer mInitializer;
    InputTestApp* mpApp = nullptr;
};
