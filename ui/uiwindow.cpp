#include "ui/uiwindow.h"

#include "ui/uimenu.h"
#include "ui/uisystem.h"

IMPLEMENT_TYPEINFO(UIWindow, "ObjectBase", TypeInfo::eAttribute_Abstract);

namespace {

int const kDefaultPlace = 16;
unsigned int const kMinimumSide = 64;

} // namespace

UIWindow::UIWindow(UIWindow* owner, unsigned int windowAttribute)
    : mPriority(0), mWindowAttribute(windowAttribute), mWindowStatus(0), mpMainMenu(nullptr), mpOwnerWindow(owner)
{
    setMinimumSize(sSize(kMinimumSide, kMinimumSide));
    setPosition(sPoint(kDefaultPlace, kDefaultPlace));
}

UIWindow::~UIWindow()
{
    delete mpMainMenu;
}

void UIWindow::setMainMenu(UIMainMenu* menu)
{
    UIMainMenu* old = mpMainMenu;
    mpMainMenu = menu;
    if (old != nullptr) {
        if (UISystem* system = UISystem::getInstance()) {
            system->notifyMainMenuChange(old, menu);
        }
        delete old;
    }
}

void UIWindow::eventClose()
{
    UISystem::getInstance()->removeWindow(this);
}

void UIWindow::eventActive()
{
    mWindowStatus |= eWindowStatus_Active;
}

void UIWindow::eventDeactive()
{
    mWindowStatus &= ~static_cast<u32>(eWindowStatus_Active);
}
