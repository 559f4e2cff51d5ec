#include "ui/uidesktop.h"

#include "ui/uimenu.h"

UIDesktop::UIDesktop() : mpMainMenu(nullptr) {}

UIDesktop::~UIDesktop()
{
    delete mpMainMenu;
}
