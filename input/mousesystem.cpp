#include "input/mousesystem.h"

#include "app/application.h"
#include "foundation/debug.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/property.h"

IMPLEMENT_TYPEINFO(MouseSystem, "System", TypeInfo::eAttribute_Singleton);
MouseSystem* MouseSystem::mpInstance = nullptr;

MouseSystem* MouseSystem::create(HIDSystem* hidSystem)
{
    if (mpInstance == nullptr) {
        MouseSystem* instance = new MouseSystem(hidSystem);
        mpInstance = instance;
    }
    return mpInstance;
}

void MouseSystem::destroy()
{
    delete this;
    mpInstance = nullptr;
}

// The mouse comes from Application, not from the device list: the HIDSystem
// is taken only so that both input Systems are made alike.
MouseSystem::MouseSystem(HIDSystem*)
    : mPosition(),
      mButtonOn(0),
      mButtonOff(~0u),
      mButtonTrgOn(0),
      mButtonTrgOff(0),
      mButtonPrevious(0),
      mWheelPrevious(),
      mWheel()
{
    setProcessEnable(false, true, false);
    DEV_TRACE("MouseSystem : start.\n");
}

MouseSystem::~MouseSystem()
{
    DEV_TRACE("MouseSystem : end.\n");
}

void MouseSystem::update()
{
    Application* application = Application::getInstance();
    mPosition = application->getCursorPosition();

    u32 const buttons = application->getMouseButton();
    mButtonOn = buttons;
    mButtonOff = ~buttons;
    mButtonTrgOn = (mButtonPrevious ^ buttons) & buttons;
    mButtonTrgOff = mButtonPrevious & ~buttons;
    mButtonPrevious = buttons;

    // Application only accumulates; the frame's change is the difference.
    mWheelPrevious = mWheel;
    mWheel = application->getWheelAmount();
}

namespace {

void addControl(List<UIBase>& list, PropertyBase* property)
{
    PropertyControl control(property);
    if (UIBase* widget = Utils::makeUIFromControl(&control)) {
        list.addLast(widget);
    }
}

} // namespace

// The wheel's field shows the accumulated amount, not this frame's change.
void MouseSystem::makeUIList(List<UIBase>& list)
{
    addControl(list, new ReferenceProperty<sPoint>("Position", &mPosition));
    addControl(list, new ReferenceProperty<u32>("ButtonOn", &mButtonOn));
    addControl(list, new ReferenceProperty<u32>("ButtonTrgOn", &mButtonTrgOn));
    addControl(list, new ReferenceProperty<sPoint>("WheelAmount", &mWheel));
}
