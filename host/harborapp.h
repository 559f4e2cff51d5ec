// HarborApp: the concrete program. Creates the named heaps and the Systems,
// orders them, and runs the frame: the manager's three phases around the text
// overlay and the UI draw, then the replay of all recorded drawing. It keeps
// the properties of all Systems in harbor.xml: read after ordering, written
// (whole or not at all) while every System still lives.
#pragma once

#include "app/application.h"

class HarborApp : public Application {
public:
    explicit HarborApp(sInitializer const* initializer);
    ~HarborApp() override;

    void setup() override;
    void update(float delta) override;

    // The settings file's top element holds one object property per System.
    void makePropertyList(PropertyList& list) override;

    // Registered under "System": the record names the settings file's top
    // element, not the class's place in the object tree.
    DECLARE_TYPEINFO(TypeInfo)

private:
    void wireSystems();
    void readSettings();
    void writeSettings();
};

// Runs a host class as the program does: the window 1024 by 768, nominal rate
// 60 between 20 and 240, the host on the stack, set up, run until the window
// closes. Returns the exit status.
template <typename Host>
int runHost(char const* title)
{
    Application::sInitializer initializer;
    initializer.mpTitle = title;
    initializer.mWindowWidth = 1024;
    initializer.mWindowHeight = 768;
    initializer.mFrameRate = 60;
    initializer.mMinFrameRate = 20;
    initializer.mMaxFrameRate = 240;

    u32 result = 0;
    {
        Host application(&initializer);
        application.setup();
        result = application.execute();
    }
    return static_cast<int>(result);
}
