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
    void readSettings();
    void writeSettings();
};
