// Menus driven through UISystem with the scripted mouse and keyboard: the
// secondary button opens a widget's menu at the pointer, rows select on
// hover and fire on release, check and radio items, the keyboard rules, the
// sizes, sub-menus that flip at the view's edges, and the menu bar.
#include "ui/uimenu.h"
#include "uitest.h"

using namespace uitest;

namespace {

struct Actions {
    void a() { mFired += "a"; }
    void b() { mFired += "b"; }
    void c() { mFired += "c"; }
    std::string mFired;
};

} // namespace

class MenuTest : public UITest {
protected:
    // The row of an open menu at the view's point for row index.
    static sPoint row(UIMenu const* menu, int index)
    {
        return menu->getPosition() + sPoint(20, UIMenu::kTopMargin + index * UIMenu::kRowHeight + 7);
    }

    // A window whose menu holds: "Plain" (a), separator, "Check" (b, check
    // item), "Radio1" and "Radio2" (radio, the first checked), "Off" (c,
    // disabled), and "More" with a sub-menu.
    UIMenu* openMenuWindow(Actions* actions)
    {
        Probe* window = openWindow("w", sRect(100, 100, 400, 400));
        UIMenu* menu = new UIMenu();
        menu->addItem("Plain", actions, &Actions::a);
        menu->addSeparator();
        menu->addItem("Check", actions, &Actions::b, UIMenu::eItemAttribute_Check);
        menu->addItem("Radio1", nullptr, nullptr, UIMenu::eItemAttribute_Radio, true, true);
        menu->addItem("Radio2", nullptr, nullptr, UIMenu::eItemAttribute_Radio);
        menu->addItem("Off", actions, &Actions::c, UIMenu::eItemAttribute_Normal, false);
        UIMenu* sub = new UIMenu();
        sub->addItem("Inner", actions, &Actions::a);
        menu->addItem("More", nullptr, sub);
        window->setMenu(menu);
        frame();
        return menu;
    }
};

TEST_F(MenuTest, SizesAndSubMenusFlipAtTheViewEdges)
{
    UIMenu menu;
    menu.addItem("Alpha");
    menu.addSeparator();
    menu.addItem("Be");
    EXPECT_EQ(menu.getSize(), sSize(5 * 6 + 24, 3 * 14 + 8));

    UIMenu* sub = new UIMenu();
    sub->addItem("Sub item"); // 72 by 22
    menu.addItem("Open", nullptr, sub);
    sRect const view = mpUI->getUIViewRect();
    struct sCase {
        sPoint mAt;
        sPoint mExpected;
    } const cases[] = {
        {sPoint(100, 100), sPoint(100 + 54 - 4, 100 + 3 * 14 + 4)},
        // No room on the right: to the left, overlapping by 4.
        {sPoint(view.right - 60, 100), sPoint(view.right - 60 - 72 + 4, 100 + 46)},
        // No room below: from the parent's top, not the row.
        {sPoint(100, view.bottom - 50), sPoint(150, view.bottom - 50 - 22 + 14)},
    };
    for (sCase const& c : cases) {
        menu.setPosition(c.mAt);
        menu.openSubMenu(menu.getItem(3));
        EXPECT_EQ(sub->getPosition(), c.mExpected) << c.mAt.x << "," << c.mAt.y;
        EXPECT_EQ(menu.getSubMenu(), sub);
    }
    // A disabled item's sub-menu is not part of the chain.
    menu.setItemEnable("Open", false);
    EXPECT_EQ(menu.getSubMenu(), nullptr);
}

TEST_F(MenuTest, TheMouseOpensHoversAndFiresRowsAsTheMenuRulesSay)
{
    Actions actions;
    UIMenu* menu = openMenuWindow(&actions);
    tap(200, 150, 2);
    ASSERT_EQ(mpUI->getMenu(), menu);
    EXPECT_EQ(menu->getPosition(), sPoint(200, 150));

    move(row(menu, 2).x, row(menu, 2).y);
    frame();
    EXPECT_EQ(menu->getSelectItem(), menu->getItem(2));
    // A check item toggles before its action runs, and the chain closes.
    tap(row(menu, 2).x, row(menu, 2).y);
    EXPECT_TRUE(menu->isItemChecked("Check"));
    EXPECT_EQ(actions.mFired, "b");
    EXPECT_EQ(mpUI->getMenu(), nullptr);

    // A radio item cannot be turned off; another one moves the check.
    for (int index : {3, 3, 4}) {
        tap(200, 150, 2);
        tap(row(menu, index).x, row(menu, index).y);
    }
    EXPECT_FALSE(menu->isItemChecked("Radio1"));
    EXPECT_TRUE(menu->isItemChecked("Radio2"));
    // Checking a radio item clears every check of its menu, "Check" too.
    EXPECT_FALSE(menu->isItemChecked("Check"));
    // The mouse fires a disabled item that has an action.
    tap(200, 150, 2);
    tap(row(menu, 5).x, row(menu, 5).y);
    EXPECT_EQ(actions.mFired, "bc");
    // A sub-menu opens on the release and joins the chain.
    tap(200, 150, 2);
    tap(row(menu, 6).x, row(menu, 6).y);
    ASSERT_EQ(mpUI->getMenu(), menu);
    UIMenu* sub = menu->findSubMenu("More");
    ASSERT_EQ(menu->getSubMenu(), sub);
    tap(row(sub, 0).x, row(sub, 0).y);
    EXPECT_EQ(actions.mFired, "bca");
    EXPECT_EQ(mpUI->getMenu(), nullptr);
}

TEST_F(MenuTest, TheKeyboardSkipsSeparatorsStopsAtTheEndsAndHonoursDisabledItems)
{
    Actions actions;
    UIMenu* menu = openMenuWindow(&actions);
    tap(200, 150, 2);
    struct sStep {
        u32 mUsage;
        int mSelected; // -1: none
    } const steps[] = {
        {kUsageDown, 0}, {kUsageDown, 2}, {kUsageUp, 0}, {kUsageUp, 0}, // over the separator, stop at the top
        {kUsageDown, 2}, {kUsageDown, 3}, {kUsageDown, 4}, {kUsageDown, 5}, {kUsageDown, 6}, {kUsageDown, 6},
    };
    for (sStep const& step : steps) {
        type(step.mUsage);
        ASSERT_NE(menu->getSelectItem(), nullptr);
        EXPECT_EQ(static_cast<int>(menu->getSelectItem()->getIndex()), step.mSelected);
    }
    // Return on a disabled item closes without firing.
    type(kUsageUp);
    type(kUsageReturn);
    EXPECT_EQ(actions.mFired, "");
    EXPECT_EQ(mpUI->getMenu(), nullptr);
    // Up with nothing selected takes the last row; Return fires the first.
    tap(200, 150, 2);
    type(kUsageUp);
    EXPECT_EQ(menu->getSelectItem(), menu->getItem(6));
    type(kUsageEscape);
    EXPECT_EQ(mpUI->getMenu(), nullptr);
    tap(200, 150, 2);
    type(kUsageDown);
    type(kUsageReturn);
    EXPECT_EQ(actions.mFired, "a");
    EXPECT_EQ(mpUI->getMenu(), nullptr);
}

TEST_F(MenuTest, TheActiveWindowsBarOpensItsMenusAndDropsItsHighlightWhenTheChainCloses)
{
    Actions actions;
    Probe* window = openWindow("w", sRect(100, 100, 400, 400));
    UIMenu* file = new UIMenu();
    file->addItem("Open", &actions, &Actions::a);
    UIMainMenu* bar = new UIMainMenu();
    bar->addItem("File", file);
    bar->addItem("Edit", new UIMenu());
    window->setMainMenu(bar);
    mpUI->setActiveWindow(nullptr);
    tap(200, 200); // activating the window makes its bar current
    ASSERT_EQ(mpUI->getMainMenu(), bar);
    EXPECT_EQ(bar->getItem(0)->getRegion(), sRect(0, 0, 4 * 6 + 16, 16));
    EXPECT_EQ(bar->getItem(1)->getRegion(), sRect(40, 0, 80, 16));
    EXPECT_EQ(bar->getMenuIndex(sPoint(60, 8)), 1);
    EXPECT_EQ(bar->getMenuIndex(sPoint(200, 8)), -1);

    move(10, 8);
    frame();
    EXPECT_EQ(bar->getSelectItem(), bar->getItem(0));
    tap(10, 8);
    ASSERT_EQ(mpUI->getMenu(), file);
    EXPECT_EQ(file->getPosition(), sPoint(0, 16));
    tap(row(file, 0).x, row(file, 0).y);
    EXPECT_EQ(actions.mFired, "a");
    EXPECT_EQ(mpUI->getMenu(), nullptr);
    EXPECT_EQ(bar->getSelectItem(), nullptr) << "closing the chain drops the bar's highlight";
}
