// UIMenu and UIMainMenu: a pop-up menu and a menu bar. Neither lies in a
// window's tree: UISystem holds the open pop-up menus as a chain from its
// mpMenu through getSubMenu(), and the active window's bar as its main menu,
// and hit-tests, updates and paints them itself. This is the part UISystem
// relies on; items, rows and their painting build on it.
#pragma once

#include "ui/uibase.h"

class UIMenu : public UIBase {
public:
    UIMenu();
    ~UIMenu() override;

    // Every time the menu opens: nothing open, nothing selected.
    void initialize();
    // The next menu of the open chain, or null.
    UIMenu* getSubMenu() const { return mpOpenMenu; }

protected:
    // The sub-menu now open below this one; not owned here.
    void setOpenMenu(UIMenu* menu) { mpOpenMenu = menu; }

private:
    UIMenu* mpOpenMenu;
};

class UIMainMenu : public UIBase {
public:
    UIMainMenu();
    ~UIMainMenu() override;

    // When the bar becomes current and when a menu chain closes.
    void initialize();
    // The pull-down opened from the bar, or null.
    UIMenu* getSubMenu() const { return mpOpenMenu; }

protected:
    void setOpenMenu(UIMenu* menu) { mpOpenMenu = menu; }

private:
    UIMenu* mpOpenMenu;
};
