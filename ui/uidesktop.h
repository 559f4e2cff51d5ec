// UIDesktop: the root widget behind all windows, as large as the application
// window. Input that hits nothing else lands here, so a press on it closes
// menus and takes the focus away. Owned by UISystem; main thread, painted in
// a job of its own. Wallpaper, start menu and shortcuts build on it.
#pragma once

#include "ui/uibase.h"

class UIMainMenu;

class UIDesktop : public UIBase {
public:
    UIDesktop();
    ~UIDesktop() override;

    // Always null: nothing sets it.
    UIMainMenu* getMainMenu() const { return mpMainMenu; }

private:
    UIMainMenu* mpMainMenu;
};
