// UISystem's routing, one scenario per behaviour a user relies on: capture
// across a press and its release, double clicks by the 250 ms rule, modal
// windows, focus order, keys and shortcuts, closing from a handler, context
// menus at the edge of the view, the desktop as the last hit, resetLayout.
#include "uitest.h"

#include "input/keyboardsystem.h"
#include "platform/cursor.h"
#include "platform/window.h"
#include "ui/uidesktop.h"
#include "ui/uimenu.h"

using namespace uitest;

TEST_F(UITest, ACaptureLastsFromPressToReleaseWhereverThePointerGoes)
{
    Probe* window = openWindow("W", sRect(100, 100, 300, 300));
    take();
    // Down and up between two frames: the frame sees no button at all.
    press(150, 150);
    release(150, 150);
    frame();
    EXPECT_EQ(mpUI->getCapture(), nullptr);

    press(150, 150);
    frame();
    EXPECT_EQ(mpUI->getCapture(), window);
    move(400, 420); // outside the window: the capture still gets it
    frame();
    release(400, 420);
    frame();
    EXPECT_EQ(mpUI->getCapture(), nullptr);
    EXPECT_TRUE(window->mDragOnUp) << "a mouse-up handler still sees the drag";
    EXPECT_EQ(take("MouseMove MouseDown MouseUp"),
              "W:MouseMove(50,50) W:MouseDown(50,50/1) W:MouseMove(300,320) W:MouseUp(300,320/1)");
    EXPECT_EQ(window->getDragAmount(), sPoint(250, 270));

    // A window that loses the capture gets a release of every button.
    press(150, 150);
    frame();
    mpUI->setActiveWindow(nullptr);
    EXPECT_EQ(take("MouseUp"), "W:MouseUp(50,50/255)");
    release(150, 150);
    frame();
    EXPECT_EQ(take("MouseUp"), "");
}

TEST_F(UITest, PressesWithin250MillisecondsGiveDownDoubleClickDown)
{
    Probe* window = openWindow("W", sRect(100, 100, 300, 300));
    Probe* child = new Probe("C", &mLog, sRect(150, 0, 200, 50));
    window->add(child);
    frame();
    take();
    for (int i = 0; i < 3; ++i) {
        click(150, 150); // 34 ms each
    }
    EXPECT_EQ(take("MouseDown DoubleClick"), "W:MouseDown(50,50/1) W:DoubleClick(50,50/1) W:MouseDown(50,50/1)");

    advance(250);
    click(150, 150);
    click(260, 110); // another widget: no double click either
    click(150, 150, 3);
    EXPECT_EQ(take("MouseDown DoubleClick"), "W:MouseDown(50,50/1) C:MouseDown(10,10/1) W:MouseDown(50,50/4)");
    click(150, 150, 3);
    EXPECT_EQ(take("DoubleClick"), "W:DoubleClick(50,50/4)") << "the middle button counts as well";
}

TEST_F(UITest, AModalWindowSwallowsPressesElsewhereButNotMoves)
{
    Probe* plain = openWindow("P", sRect(0, 20, 200, 200));
    Probe* modal = openWindow("M", sRect(300, 100, 500, 300), UIWindow::eWindowAttribute_Modal);
    Probe* late = openWindow("L", sRect(250, 250, 350, 350));
    EXPECT_EQ(mpUI->getWindowList()[0], modal) << "a modal window stays in front of windows added after it";
    EXPECT_EQ(mpUI->getActiveWindow(), modal);
    UIBase* focus = mpUI->getFocus();
    take();

    move(50, 50);
    frame();
    click(50, 50);
    EXPECT_EQ(take(), "P:MouseMove(50,30)") << "moves arrive, the press vanishes";
    EXPECT_EQ(mpUI->getFocus(), focus);
    EXPECT_EQ(mpUI->getActiveWindow(), modal);
    click(5, 470); // the desktop is blocked as well
    EXPECT_EQ(mpUI->getActiveWindow(), modal);

    click(400, 200);
    EXPECT_EQ(take("MouseDown"), "M:MouseDown(100,100/1)");
    modal->close();
    frame();
    frame();
    EXPECT_EQ(mpUI->getActiveWindow(), late) << "the front window takes over";
    click(50, 50);
    EXPECT_EQ(take("MouseDown"), "P:MouseDown(50,30/1)");
    EXPECT_EQ(mpUI->getActiveWindow(), plain);
}

TEST_F(UITest, FocusMovesWithPressesAndLeavesBeforeTheNextWidgetGetsIt)
{
    Probe* back = openWindow("A", sRect(0, 20, 200, 200));
    Probe* first = new Probe("a1", &mLog, sRect(10, 10, 60, 60));
    Probe* second = new Probe("a2", &mLog, sRect(100, 10, 150, 60));
    back->add(first);
    back->add(second);
    openWindow("B", sRect(300, 20, 500, 200));
    Probe* disabled = new Probe("a3", &mLog, sRect(10, 100, 60, 150));
    back->add(disabled);
    disabled->disable();
    take();

    // Into a window behind: the press focuses, then the activation of the
    // window takes the focus away again.
    click(20, 40);
    EXPECT_EQ(take("Focus Defocus MouseDown Active Deactive"),
              "a1:Focus a1:MouseDown(10,10/1) a1:Defocus B:Deactive A:Active");
    advance(300); // no double clicks here
    click(20, 40);
    advance(300);
    click(110, 40);
    EXPECT_EQ(take("Focus Defocus MouseDown"), "a1:Focus a1:MouseDown(10,10/1) a1:Defocus a2:Focus a2:MouseDown(10,10/1)");
    click(20, 130);
    EXPECT_EQ(take("Focus Defocus MouseDown"), "a3:MouseDown(10,10/1)") << "a disabled widget takes no focus";
    EXPECT_EQ(mpUI->getFocus(), second);

    // The desktop: the focus goes, and no window stays active for the frame.
    click(600, 400);
    EXPECT_EQ(take("Focus Defocus Deactive"), "a2:Defocus A:Deactive");
    EXPECT_EQ(mpUI->getFocus(), nullptr);
    frame();
    EXPECT_EQ(mpUI->getActiveWindow(), back) << "the next frame activates the front window";
}

TEST_F(UITest, KeysReachTheFocusAsMessagesAndShortcutsFireInTheSameFrame)
{
    Probe* window = openWindow("W", sRect(0, 20, 300, 300));
    Probe* field = new Probe("F", &mLog, sRect(10, 10, 100, 30));
    window->add(field);
    frame();
    click(20, 40);
    take();

    key(kUsageLeftShift, true);
    key(kUsageS, true);
    frame();
    EXPECT_EQ(take("KeyDown KeyUp"), "F:KeyDown(83/1)");
    key(kUsageS, false);
    key(kUsageLeftShift, false);
    frame();
    EXPECT_EQ(take("KeyDown KeyUp"), "F:KeyUp(83/0)") << "the modifier itself never arrives";

    // The focus widget's own shortcut, then the window's when it has none.
    field->mShortcutKey = 'S';
    type(kUsageS);
    field->mShortcutKey = 0;
    window->mShortcutKey = 'S';
    type(kUsageS);
    EXPECT_EQ(take("KeyDown Shortcut"), "F:KeyDown(83/0) F:Shortcut F:KeyDown(83/0) W:Shortcut");

    // A delegated key goes on up unchanged.
    field->mDelegateKeys = true;
    key(kUsageLeftAlt, true);
    key(kUsageLeftGUI, true);
    frame();
    key(kUsageS, true);
    frame();
    EXPECT_EQ(take("KeyDown"), "F:KeyDown(83/6) W:KeyDown(83/6)");
}

TEST_F(UITest, KeyCodesAndNamesFollowTheKeyboardTable)
{
    struct Case {
        u32 usage;
        unsigned int code;
        char const* name;
    };
    Case const cases[] = {
        {4, 'A', "A"},       {29, 'Z', "Z"},         {30, '1', "1"},     {39, '0', "0"},
        {40, 13, "Return"},  {41, 27, "ESC"},        {42, 8, "BackSpace"}, {44, ' ', " "},
        {58, 128, "F1"},     {66, 136, "F9"},        {67, 137, "F10"},   {69, 139, "F12"},
        {104, 140, "F13"},   {106, 142, "F15"},      {76, 127, "Delete"}, {80, 160, "Left Arrow"},
        {75, 164, "Page Up"}, {99, ',', ","},        {100, ']', ""},    {85, '*', "*"},
        {57, 0, ""},         {225, 0, ""},           {231, 0, ""},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(mpUI->transferKeyCode(static_cast<int>(c.usage)), c.code) << "usage " << c.usage;
        key(c.usage, true);
        frame();
        EXPECT_STREQ(mpUI->getKeyDown().c_str() ? mpUI->getKeyDown().c_str() : "", c.name) << "usage " << c.usage;
        key(c.usage, false);
        frame();
    }
    EXPECT_EQ(mpUI->transferKeyCode(-1), 0u);
    EXPECT_DEATH(mpUI->transferKeyCode(256), "Invalid key code.");
}

TEST_F(UITest, AWidgetClosesItsOwnWindowFromItsHandler)
{
    Probe* window = openWindow("W", sRect(0, 20, 300, 300));
    Probe* button = new Probe("B", &mLog, sRect(10, 10, 60, 30));
    window->add(button);
    frame();
    button->mCloseOnDown = true;
    take();
    press(20, 40);
    frame(); // the handler closes; postprocess deletes
    EXPECT_EQ(take("MouseDown Destroy"), "B:MouseDown(10,10/1) W:Destroy B:Destroy");
    EXPECT_TRUE(mpUI->getWindowList().empty());
    EXPECT_EQ(mpUI->getCapture(), nullptr);
    EXPECT_EQ(mpUI->getFocus(), nullptr);
    release(20, 40);
    frame();
    EXPECT_EQ(take("MouseUp"), "") << "the release goes nowhere";
}

TEST_F(UITest, AContextMenuOpensAtThePointerAndTurnsAtTheViewsEdges)
{
    Probe* window = openWindow("W", sRect(0, 20, 640, 480));
    UIMenu* menu = new UIMenu();
    menu->setSize(sSize(100, 60));
    window->setMenu(menu);
    struct Case {
        sPoint pointer;
        sPoint place;
    };
    Case const cases[] = {
        {sPoint(100, 100), sPoint(100, 100)},
        {sPoint(630, 100), sPoint(530, 100)}, // turns left
        {sPoint(100, 470), sPoint(100, 410)}, // turns up
        {sPoint(630, 470), sPoint(530, 410)}, // up and to the left
    };
    for (Case const& c : cases) {
        click(c.pointer.x, c.pointer.y, 2);
        EXPECT_EQ(mpUI->getMenu(), menu);
        EXPECT_EQ(menu->getPosition(), c.place) << c.pointer.x << "," << c.pointer.y;
        click(10, 10); // the main thread's press elsewhere closes it
        EXPECT_EQ(mpUI->getMenu(), nullptr);
    }
    click(630, 470, 2);
    window->setMenu(nullptr);
    EXPECT_EQ(mpUI->getMenu(), nullptr) << "a menu that goes leaves the chain";
    frame();
}

TEST_F(UITest, TheDesktopIsTheLastHitAndAPressOnItLeavesNoActiveWindow)
{
    click(300, 300, 2);
    EXPECT_EQ(mpUI->getCapture(), nullptr);
    EXPECT_EQ(mpUI->getActiveWindow(), nullptr);
    EXPECT_EQ(mpUI->getMenu(), mpUI->getDesktop()->getMenu()) << "the start menu";
    mpUI->notifyMenuEnd();
    Probe* window = openWindow("W", sRect(100, 100, 200, 200));
    EXPECT_EQ(mpUI->getActiveWindow(), window);
    press(300, 300);
    frame();
    EXPECT_EQ(mpUI->getCapture(), mpUI->getDesktop());
    EXPECT_EQ(mpUI->getActiveWindow(), nullptr);
    release(300, 300);
    frame();
    // Edges of a window hit: right and bottom are inside.
    click(200, 200);
    EXPECT_EQ(take("MouseDown"), "W:MouseDown(100,100/1)");

    // The cursor follows the widget under the pointer in the same frame.
    struct Case {
        eCursor cursor;
        sPoint pointer;
        platform::eThemeCursor shown;
    };
    Case const cases[] = {
        {eCursor_SplitLeftRight, sPoint(150, 150), platform::eThemeCursor_ResizeLeftRight},
        {eCursor_SplitLeftRight, sPoint(300, 300), platform::eThemeCursor_Arrow}, // the desktop's
        {eCursor_ClosedHand, sPoint(150, 150), platform::eThemeCursor_ClosedHand},
        {eCursor_SizeGrip, sPoint(150, 151), platform::eThemeCursor_Arrow}, // no shape of its own
    };
    for (Case const& c : cases) {
        window->setCursor(c.cursor);
        move(c.pointer.x, c.pointer.y);
        frame();
        EXPECT_EQ(platform::getThemeCursor(), c.shown) << c.cursor;
    }
}

TEST_F(UITest, ResetLayoutSendsOnlyTheDeactivation)
{
    Probe* window = openWindow("W", sRect(0, 20, 300, 300));
    Probe* field = new Probe("F", &mLog, sRect(10, 10, 100, 30));
    window->add(field);
    frame();
    click(20, 40);
    press(20, 40);
    frame();
    ASSERT_EQ(mpUI->getFocus(), field);
    ASSERT_EQ(mpUI->getCapture(), field);
    take();
    // The window's size changes as a window manager would change it.
    platform::resizeHeadlessWindow(mpApp->getWindowHandle(), 800, 600);
    EXPECT_EQ(take(), "W:Deactive");
    EXPECT_EQ(mpUI->getDesktop()->getSize(), sSize(800, 600));
    EXPECT_EQ(mpUI->getFocus(), nullptr);
    EXPECT_EQ(mpUI->getCapture(), nullptr);
    EXPECT_EQ(mpUI->getActiveWindow(), nullptr);
    release(20, 40);
    frame();
    platform::resizeHeadlessWindow(mpApp->getWindowHandle(), 640, 480);
}
