// HarborApp: the concrete program. Creates the named heaps and the Systems,
// orders them, and runs the frame: the manager's three phases around the text
// overlay and the UI draw, then the replay of all recorded drawing.
#pragma once

#include "app/application.h"

class HarborApp : public Application {
public:
    explicit HarborApp(sInitializer const* initializer);
    ~HarborApp() override;

    void setup() override;
    void update(float delta) override;

    // Registered under "System": the record names the settings file's top
    // element, not the class's place in the object tree.
    TypeInfo const* getTypeInfo() const override { return &mUniqueTypeInfo; }
    static TypeInfo const* getStaticTypeInfo() { return &mUniqueTypeInfo; }
    static TypeInfo mUniqueTypeInfo;
};
