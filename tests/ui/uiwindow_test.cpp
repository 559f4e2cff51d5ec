// Windows and the desktop through the scripted mouse and keyboard: the user
// story of two windows brought to the front, dragged by the title bar, sized
// by the grip, closed by the close button, Alt+F4 and the system menu; and
// the desktop's start menu and its layout.
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
    void drag(sPoint from, sPoint to)
    {
        advance(1000);
        move(from.x, from.y);
        press(from.x, from.y);
        frame();
        move(to.x, to.y);
        frame();
    }
    void drop(sPoint at)
    {
        release(at.x, at.y);
        frame();
    }
    bool isOpen(UIWindow const* window) const
    {
        for (ObjectBase* object : mpUI->getWindowList()) {
            if (object == window) {
                return true;
            }
        }
        return false;
    }
};

TEST_F(WindowTest, WindowsComeToTheFrontMoveSizeAndCloseAsTheUserDrivesThem)
{
    UIWindow* back = open(sRect(100, 100, 300, 300));
    UIWindow* front = open(sRect(200, 150, 400, 350));
    EXPECT_EQ(mpUI->getActiveWindow(), front);
    // The buttons sit at (w - 44 | w - 30 | w - 16, 3); the client region
    // inside the frame, under the title and above the grip.
    EXPECT_EQ(front->getMinimizeButton()->getPosition(), sPoint(156, 3));
    EXPECT_EQ(front->getMaximizeButton()->getPosition(), sPoint(170, 3));
    EXPECT_EQ(front->getCloseButton()->getPosition(), sPoint(184, 3));
    EXPECT_FALSE(front->getNormalizeButton()->isVisible());
    EXPECT_EQ(front->getClientRegion(), sRect(2, 20, 198, 186));

    tap(120, 200);
    EXPECT_EQ(mpUI->getActiveWindow(), back);
    EXPECT_NE(back->getWindowStatus() & UIWindow::eWindowStatus_Active, 0u);
    EXPECT_EQ(front->getWindowStatus() & UIWindow::eWindowStatus_Active, 0u);

    // Dragged by the title bar to the top: the top stays at 16.
    drag(sPoint(150, 110), sPoint(150, 0));
    EXPECT_EQ(back->getPosition(), sPoint(100, 16));
    drop(sPoint(150, 0));
    // Sized below 64 by 64 it stops there; back out, it follows again.
    sPoint const grip(100 + 195, 16 + 195);
    drag(grip, sPoint(110, 30));
    EXPECT_EQ(back->getSize(), sSize(64, 64));
    move(grip.x + 10, grip.y + 20);
    frame();
    EXPECT_EQ(back->getSize(), sSize(210, 220));
    drop(sPoint(grip.x + 10, grip.y + 20));
    EXPECT_EQ(back->getCloseButton()->getPosition(), sPoint(210 - 16, 3));

    // The close button: pressed, slid off, released: nothing; clicked: gone.
    sPoint const close = back->getPosition() + back->getCloseButton()->getPosition() + sPoint(7, 7);
    drag(close, sPoint(close.x - 100, close.y + 100));
    drop(sPoint(close.x - 100, close.y + 100));
    EXPECT_TRUE(isOpen(back));
    tap(close.x, close.y);
    frame();
    EXPECT_FALSE(isOpen(back));

    // A right click on the title bar: the system menu, 72 by 64.
    tap(300, 160, 2);
    ASSERT_EQ(mpUI->getMenu(), front->getMenu());
    EXPECT_EQ(front->getMenu()->getSize(), sSize(72, 64));
    EXPECT_TRUE(front->getMenu()->isItemEnabled("Close"));
    mpUI->notifyMenuEnd();
    // Alt+F4 closes the active window.
    type(kUsageF4, kUsageLeftAlt);
    EXPECT_FALSE(isOpen(front));
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
