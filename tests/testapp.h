// A headless application for the tests, with no set-up and no frame work of
// its own, and mouse events sent as its window would deliver them.
#pragma once

#include "app/application.h"
#include "platform/window.h"

class TestApp : public Application {
public:
    explicit TestApp(sInitializer const* initializer, Clock* clock = nullptr) : Application(initializer, clock) {}
    void setup() override {}
    void update(float) override {}
};

// A mouse event at content point (x, y): headless windows put their content
// at (100, 100) of the screen.
inline void sendMouse(Application* app, u32 kind, int x, int y, u16 button = 0, u16 axis = 0, s32 delta = 0)
{
    platform::sEvent const event = {platform::eEventClassMouse, kind, static_cast<s16>(x + 100),
                                    static_cast<s16>(y + 100), button, axis, delta};
    Application::eventHandler(nullptr, &event, app);
}
