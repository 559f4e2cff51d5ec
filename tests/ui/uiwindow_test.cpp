// Windows and the desktop: the frame's buttons, client region and system
// menu, and the desktop's start menu and its layout.
#include "ui/uidesktop.h"
#include "ui/uimenu.h"
#include "ui/uiwindow.h"
#include "uitest.h"

using namespace uitest;

namespace {

unsigned int const kEveryAttribute =
    UIWindow::eWindowAttribute_TitleBar | UIWindow::eWindowAttribute_Movable | UIWindow::eWindowAttribute_Sizable;

} // namespace

class WindowTest : public UITest {
protected:
    UIWindow* open(sRect const& rect)
    {
        UIWindow* window = new UIWindow(UIWindow::eStyle_Convex, kEveryAttribute, true, true, true, 0, nullptr);
        window->setPosition(rect.getTranslate());
        window->setSize(rect.getSize());
        mpUI->addWindow(window);
        frame();
        return window;
    }
};

// Activation, moving, sizing, the close button and Alt+F4 are driven through
// the real program by the desktop window scenario; here the layout it relies on.
TEST_F(WindowTest, TheFrameLaysOutItsButtonsAndClientRegionAndTheTitleBarOpensTheSystemMenu)
{
    UIWindow* window = open(sRect(200, 150, 400, 350));
    // The buttons sit at (w - 44 | w - 30 | w - 16, 3); the client region
    // inside the frame, under the title and above the grip.
    EXPECT_EQ(window->getMinimizeButton()->getPosition(), sPoint(156, 3));
    EXPECT_EQ(window->getMaximizeButton()->getPosition(), sPoint(170, 3));
    EXPECT_EQ(window->getCloseButton()->getPosition(), sPoint(184, 3));
    EXPECT_FALSE(window->getNormalizeButton()->isVisible());
    EXPECT_EQ(window->getClientRegion(), sRect(2, 20, 198, 186));

    // A right click on the title bar: the system menu, 72 by 64.
    tap(300, 160, 2);
    ASSERT_EQ(mpUI->getMenu(), window->getMenu());
    EXPECT_EQ(window->getMenu()->getSize(), sSize(72, 64));
    EXPECT_TRUE(window->getMenu()->isItemEnabled("Close"));
    mpUI->notifyMenuEnd();
}

TEST_F(WindowTest, TheDesktopMenuListsItsRowsInOrderAndABareWindowHasADisabledSystemMenu)
{
    UIMenu const* menu = mpUI->getDesktop()->getMenu();
    ASSERT_NE(menu, nullptr);
    std::string rows;
    for (unsigned int i = 0; i < menu->getItemCount(); ++i) {
        char const* name = menu->getItem(i)->getName();
        rows += std::string(name != nullptr ? name : "-") + "|";
    }
    EXPECT_EQ(rows, "SystemManager|ResourceManager|UnitManager|TextureManager|-|Tool|-|Change Wallpaper|");
    EXPECT_EQ(menu->getSize(), sSize(120, 120));

    UIWindow bare;
    for (char const* name : {"Minimize", "Maximize", "Close"}) {
        EXPECT_FALSE(bare.getMenu()->isItemEnabled(name)) << name;
    }
}
