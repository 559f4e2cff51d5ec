// Shared fixture of the input tests: a headless Application, whose event
// handler gathers the mouse state, and the scripted HID source of headless mode.
#pragma once

#include <gtest/gtest.h>

#include "app/systemmanager.h"
#include "input/hidsystem.h"
#include "input/keyboardsystem.h"
#include "input/mousesystem.h"
#include "testapp.h"

class InputTest : public testing::Test {
protected:
    void SetUp() override
    {
        platform::setHeadless(true);
        platform::hidResetScripted();
        Application::sInitializer const initializer = {"Input", 1024, 768, 60, 20, 240};
        mpApp = new TestApp(&initializer);
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
    void mouse(u32 kind, int x, int y, u16 button, u16 axis = 0, s32 delta = 0)
    {
        sendMouse(mpApp, kind, x, y, button, axis, delta);
    }

    TestApp* mpApp = nullptr;
};
