// HIDSystem: opens the HID device list for the program's lifetime and creates
// the two input Systems that read it, MouseSystem and KeyboardSystem. It has no
// phase of its own. Main thread only.
#pragma once

#include "app/system.h"
#include "foundation/vector.h"
#include "platform/hid.h"

class HIDSystem : public System {
public:
    // Adds MouseSystem and KeyboardSystem to the manager inside its constructor,
    // so that they stand before it; the caller adds the HIDSystem itself.
    static HIDSystem* create();
    static HIDSystem* getInstance() { return mpInstance; }
    void destroy() override;
    void setup() override;

    // Appends every valid device whose primary usage page and usage match;
    // true if it added any.
    bool getDeviceList(Vector<recDevice>& list, int usagePage, int usage);

    DECLARE_TYPEINFO(TypeInfo)

protected:
    HIDSystem();
    ~HIDSystem() override;

private:
    static HIDSystem* mpInstance;
};
