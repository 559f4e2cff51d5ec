#include "ui/uimenu.h"

#include "ui/uisystem.h"

UIMenu::UIMenu() : mpOpenMenu(nullptr) {}

// A menu that goes away must not stay in UISystem's chain.
UIMenu::~UIMenu()
{
    if (UISystem* system = UISystem::getInstance()) {
        system->notifyMenuChange(this);
    }
}

void UIMenu::initialize()
{
    mpOpenMenu = nullptr;
    setBorderStyle(eBorderStyle_Frame);
}

UIMainMenu::UIMainMenu() : mpOpenMenu(nullptr) {}

UIMainMenu::~UIMainMenu() {}

void UIMainMenu::initialize()
{
    mpOpenMenu = nullptr;
    setBorderStyle(eBorderStyle_Frame);
}
