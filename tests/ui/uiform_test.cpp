// Forms, groups and splitters: rows with 2-pixel gaps, scroll bars that
// appear only when content overflows and take 14 pixels, keys typed in a
// client widget reaching the window, the group's rows under its caption, and
// the splitter's sizes, limits and drag.
#include "ui/uiform.h"
#include "ui/uimessage.h"
#include "ui/uiscrollbar.h"
#include "uitest.h"

using namespace uitest;

namespace {

// A plain widget of a given size.
UIBase* box(unsigned int width, unsigned int height, unsigned int attribute = 0)
{
    UIBase* widget = new UIBase(attribute);
    widget->setSize(sSize(width, height));
    return widget;
}

} // namespace

class FormTest : public UITest {};

TEST_F(FormTest, ClientWidgetsWrapInRowsAndOverflowTakesScrollBars)
{
    struct sCase {
        char const* mName;
        unsigned int mCount; // boxes of 40 by 20
        sPoint mThird;       // where the third box goes
        unsigned int mStatus;
        sRect mHolder;
    } const cases[] = {
        // 100 wide: two boxes a row (40 + 2 + 40 + 2 <= 100), all fits.
        {"fits", 4, sPoint(0, 22), 0, sRect(0, 0, 100, 100)},
        // Ten rows overflow 100: a vertical bar and 14 pixels less width.
        {"higher", 10, sPoint(0, 22), UIForm::eFormStatus_VerticalBar, sRect(0, 0, 86, 100)},
    };
    for (sCase const& c : cases) {
        UIForm form(UIForm::eFormAttribute_ScrollBar | UIForm::eFormAttribute_AutoAlign);
        form.setSize(sSize(100, 100));
        form.setClientRegion(sRect(0, 0, 100, 100));
        std::vector<UIBase*> boxes;
        for (unsigned int i = 0; i < c.mCount; ++i) {
            boxes.push_back(box(40, 20));
            form.addClient(boxes.back());
        }
        form.update(0.0f);
        EXPECT_EQ(boxes[1]->getPosition(), sPoint(42, 0)) << c.mName;
        EXPECT_EQ(boxes[2]->getPosition(), c.mThird) << c.mName;
        EXPECT_EQ(form.getFormStatus(), c.mStatus) << c.mName;
        EXPECT_EQ(form.getClientHolder()->getRelRegion(), c.mHolder) << c.mName;
        EXPECT_EQ(form.getVerticalScrollBar()->isVisible(), c.mStatus != 0) << c.mName;
        EXPECT_EQ(form.getClientPosition(), sPoint(0, 0)) << c.mName;
    }
    // Scrolling the bar moves the client widgets up by as much.
    UIForm form(UIForm::eFormAttribute_ScrollBar | UIForm::eFormAttribute_AutoAlign);
    form.setSize(sSize(100, 100));
    form.setClientRegion(sRect(0, 0, 100, 100));
    UIBase* row = box(10, 300, UIBase::eAttribute_RowItem);
    form.addClient(row);
    form.update(0.0f);
    EXPECT_EQ(row->getSize(), sSize(86, 300)) << "a row item takes the whole width";
    EXPECT_EQ(form.getVerticalScrollBar()->getRelRegion(), sRect(88, 0, 100, 100));
    form.setScrollBarPosition(sPoint(0, 50));
    form.update(0.0f);
    EXPECT_EQ(form.getClientPosition(), sPoint(0, -50));
}

TEST_F(FormTest, KeysInAClientWidgetReachTheWindowThroughTheHolder)
{
    Probe* window = openWindow("W", sRect(100, 100, 300, 300));
    Probe* field = new Probe("F", &mLog, sRect(0, 0, 20, 20));
    field->mDelegateKeys = true; // a control that has no use for the key
    window->addClient(field);
    field->sendMessage(UIKeyDownMessage('A', 0));
    EXPECT_EQ(take("KeyDown"), "F:KeyDown(65/0) W:KeyDown(65/0)");
}

TEST_F(FormTest, GroupsWrapUnderTheirCaptionAndSplittersKeepTheirLimits)
{
    UIGroup group("Group");
    group.setSize(sSize(100, 0));
    UIBase* a = box(60, 10);
    UIBase* b = box(60, 10);
    UIBase* c = box(30, 10);
    group.add(a);
    group.add(b);
    group.add(c);
    group.align(100);
    EXPECT_EQ(a->getPosition(), sPoint(0, 16));
    EXPECT_EQ(b->getPosition(), sPoint(0, 28));
    EXPECT_EQ(c->getPosition(), sPoint(60, 28)) << "a new row starts its x without the gap";
    EXPECT_EQ(group.getSize(), sSize(100, 38));

    struct sCase {
        UISplitter::eSplitBase mBase;
        unsigned int mSize;
        int mDragTo; // pointer x in the splitter, or none
        unsigned int mExpected;
        sRect mFirst;
    } const cases[] = {
        {UISplitter::eSplitBase_First, 3, -1000, 8, sRect(0, 0, 10, 50)},     // raised to 8
        {UISplitter::eSplitBase_First, 50, 1000, 200, sRect(0, 0, 196, 50)},  // beyond the end: the total
        {UISplitter::eSplitBase_First, 50, -5, 14, sRect(0, 0, 10, 50)},      // left of it: the limit
        {UISplitter::eSplitBase_Second, 50, 120, 80, sRect(0, 0, 120, 50)},   // measured from the right
    };
    for (sCase const& k : cases) {
        UIBase* first = box(0, 0);
        first->setMinimumSize(sSize(10, 0));
        UIBase* second = box(0, 0);
        second->setMinimumSize(sSize(10, 0));
        UISplitter splitter(first, second, UISplitter::eSplitDirection_LeftRight, k.mSize, k.mBase);
        EXPECT_EQ(splitter.getCursor(), eCursor_SplitLeftRight);
        splitter.setSize(sSize(200, 50));
        if (k.mDragTo != -1000) {
            splitter.sendMessage(UIMouseDownMessage(sPoint(50, 10), 1));
            splitter.sendMessage(UIMouseMoveMessage(sPoint(k.mDragTo, 10)));
            splitter.sendMessage(UIMouseUpMessage(sPoint(k.mDragTo, 10), 1));
        }
        splitter.update(0.0f);
        EXPECT_EQ(splitter.getSplitSize(), k.mExpected) << k.mSize << " to " << k.mDragTo;
        EXPECT_EQ(first->getRelRegion(), k.mFirst) << k.mSize << " to " << k.mDragTo;
    }
}
