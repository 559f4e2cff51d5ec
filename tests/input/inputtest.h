// Shared fixture of the input tests: a headless Application, whose event
// handler gathers the mouse state, and the scripted HID source of headless mode.
#pragma once

#include <gtest/gtest.h>

#include "app/application.h"
#include "app/systemmanager.h"
#include "input/hidsystem.h"
#include "input/keyboardsystem.h"
#include "input/mousesystem.h"

class InputTest : public testing::Test {
protected:
    class App : public Application {
    public:
        explicit App(sInitializer const* initializer) : Application(initializer) {}
        void setup() override {}
        void update(float) override {}
    };

    void SetUp() override
    {
        platform::setHeadless(true);
        platform::hidResetScripted();
        Application::sInitializer const initializer = {"Input", 1024, 768, 60, 20, 240};
        mpApp = new App(&initializer);  // content at 100,100
    }
    void TearDown() override
    {
        delete mpApp;  // destroys the Systems in their order
        platform::hidResetScripted();
    }
    // As the host does it: the HIDSystem brings the two others along.
    void startSystems()
    {
        SystemManager::getInstance()->addSystem(HIDSystem::create());
        SystemManager::getInstance()->setup();
        SystemManager::getInstance()->order();
    }
    void frame() { SystemManager::getInstance()->update(); }
    void key(u32 usage, bool down, u32 device = 0) { platform::hidSetScriptedKeyState(usage, down, device); }
    // A mouse event at content point (x, y).
    void mouse(u32 kind, int x, int y, u16 button, u16 axis = 0, s32 delta = 0)
    {
        platform::sEvent const event = {platform::eEventClassMouse, kind, static_cast<s16>(x + 100),
                                        static_cast<s16>(y + 100), button, axis, delta};
        Application::eventHandler(nullptr, &event, mpApp);
    }

    App* mpApp = nullptr;
};
