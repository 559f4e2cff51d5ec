// Lists driven through UISystem: rows picked by the mouse and the keys,
// multiple selection with Control, the double click and Return that decide,
// the scroll bar and the wheel, header buttons cut at the edge, and the
// pull-down list that applies its highlight when anything takes the focus.
#include <utility>

#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "ui/uibutton.h"
#include "ui/uilist.h"
#include "ui/uimessage.h"
#include "ui/uiscrollbar.h"
#include "uitest.h"

using namespace uitest;

namespace {

class Item : public ObjectBase {
public:
    explicit Item(int value) : mValue(value) { mName.format("item%d", value); }
    void makePropertyList(PropertyList& list) override
    {
        list.add(new ReferenceProperty<AutoString>("Name", &mName));
        list.add(new ReferenceProperty<u32>("Value", &mValue));
    }
    AutoString mName;
    u32 mValue;
};

struct Calls {
    void select(unsigned int row) { mLog += "s" + std::to_string(row) + " "; }
    void decide(unsigned int row) { mLog += "d" + std::to_string(row) + " "; }
    void closed() { mLog += "closed "; }
    std::string take() { return std::exchange(mLog, std::string()); }
    std::string mLog;
};

} // namespace

class ListTest : public UITest {
protected:
    void SetUp() override
    {
        UITest::SetUp();
        mItems.setContentStability(false);
    }
    // A list at (10, 10) in a window at (100, 100): view (110, 110) is the
    // list's top left; row r spans view y 127 + 16r to 143 + 16r.
    UIList* open(bool multi, int rows, sSize size)
    {
        for (int i = 0; i < rows; ++i) {
            mItems.addLast(new Item(i));
        }
        mpWindow = openWindow("w", sRect(100, 100, 400, 400));
        UIList* list = new UIList(multi);
        list->addColumn("Name", 20, 60, eColumnAlignment_Left);
        list->addColumn("Value", 8, 40, eColumnAlignment_Right);
        list->setFunction(&mCalls, &Calls::select, &Calls::decide);
        list->setPosition(sPoint(10, 10));
        list->setSize(size);
        mpWindow->add(list);
        list->setObjectList(&mItems);
        frame();
        return list;
    }
    void ctrlTap(int x, int y)
    {
        key(kUsageLeftControl, true);
        frame();
        tap(x, y);
        key(kUsageLeftControl, false);
        frame();
    }

    ObjectList mItems;
    Calls mCalls;
    Probe* mpWindow = nullptr;
};

TEST_F(ListTest, RowsArePickedByMouseAndKeysAndDecidedByDoubleClickOrReturn)
{
    UIList* list = open(false, 5, sSize(200, 200));
    EXPECT_FALSE(list->getScrollBar()->isVisible()); // 5 rows fit in 182 pixels
    tap(150, 127 + 2 * 16 + 3);
    EXPECT_EQ(list->getSelectRow(), 2u);
    EXPECT_EQ(mCalls.take(), "s2 ");
    // The header row (right of the buttons) is no row; below the last row
    // the selection clears too.
    tap(260, 120);
    EXPECT_EQ(list->getSelectRow(), UIList::kNoRow);
    tap(150, 127 + 5 * 16 + 3);
    EXPECT_EQ(list->getSelectRow(), UIList::kNoRow);
    EXPECT_EQ(mCalls.take(), "");

    // Down from no selection takes row 0; Up stops at 0; Down stops at the end.
    type(kUsageDown);
    type(kUsageUp);
    EXPECT_EQ(list->getSelectRow(), 0u);
    for (int i = 0; i < 6; ++i) {
        type(kUsageDown);
    }
    EXPECT_EQ(list->getSelectRow(), 4u);
    EXPECT_EQ(mCalls.take(), "s0 s1 s2 s3 s4 ");
    type(kUsageReturn);
    EXPECT_EQ(mCalls.take(), "d4 ");

    // The second press within the double-click time decides.
    advance(1000);
    click(150, 127 + 16 + 3);
    click(150, 127 + 16 + 3);
    EXPECT_EQ(mCalls.take(), "s1 d1 ");
}

TEST_F(ListTest, ControlTogglesRowsInMultipleSelectionAndAPlainClickKeepsOne)
{
    UIList* list = open(true, 6, sSize(200, 200));
    tap(150, 127 + 3);
    ctrlTap(150, 127 + 2 * 16 + 3);
    ctrlTap(150, 127 + 4 * 16 + 3);
    EXPECT_TRUE(list->isSelected(0));
    EXPECT_TRUE(list->isSelected(2));
    EXPECT_TRUE(list->isSelected(4));
    ctrlTap(150, 127 + 2 * 16 + 3);
    EXPECT_FALSE(list->isSelected(2));
    EXPECT_EQ(mCalls.take(), "s0 s2 s4 s2 ");
    tap(150, 127 + 16 + 3);
    for (unsigned int row = 0; row < 6; ++row) {
        EXPECT_EQ(list->isSelected(row), row == 1) << row;
    }
    // A new object list starts with nothing selected.
    list->setObjectList(&mItems);
    EXPECT_FALSE(list->isSelected(1));
    EXPECT_EQ(list->getSelectRow(), UIList::kNoRow);
}

TEST_F(ListTest, AnEmptyListIgnoresClicksAndPassesTheWheelOn)
{
    UIList* list = open(false, 0, sSize(200, 100));
    EXPECT_FALSE(list->getScrollBar()->isVisible());
    tap(150, 127 + 3);
    list->selectRow(0);
    list->decideRow(0);
    EXPECT_EQ(list->getSelectRow(), UIList::kNoRow);
    EXPECT_EQ(mCalls.take(), "");
    take();
    list->sendMessage(UIMouseWheelMessage(sPoint(0, -2)));
    EXPECT_EQ(take("Wheel"), "w:Wheel(0,-2)");
}

TEST_F(ListTest, TheBarScrollsByThePixelAndTheRowsFollowIt)
{
    // 100 high: a view of 82 pixels over 20 rows of 16.
    UIList* list = open(false, 20, sSize(200, 100));
    UIScrollBar* bar = list->getScrollBar();
    ASSERT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->getPosition(), sPoint(200 - 12 - 1, 17));
    EXPECT_EQ(bar->getSize(), sSize(12, 82));
    EXPECT_EQ(bar->getMaximum(), 20 * 16 - 1);
    EXPECT_EQ(bar->getBarRange(), 81u);
    take();
    list->sendMessage(UIMouseWheelMessage(sPoint(0, -40)));
    EXPECT_EQ(bar->getBarPosition(), 40);
    EXPECT_EQ(take("Wheel"), ""); // used by the list, not passed on
    frame();
    // Row from y: (y - 17 + 40) / 16.
    tap(150, 110 + 17 + 3);
    EXPECT_EQ(list->getSelectRow(), 2u);
    // Keys keep the selected row in view.
    for (int i = 0; i < 10; ++i) {
        type(kUsageDown);
    }
    EXPECT_EQ(list->getSelectRow(), 12u);
    EXPECT_EQ(bar->getBarPosition(), 13 * 16 - 82);
    list->refresh();
    EXPECT_EQ(bar->getBarPosition(), 0);
    EXPECT_EQ(list->getSelectRow(), UIList::kNoRow);
}

TEST_F(ListTest, HeaderButtonsAreCutAtTheRightEdge)
{
    mpWindow = openWindow("w", sRect(100, 100, 400, 400));
    UIList* list = new UIList(false);
    struct {
        unsigned int width;
        sPoint place;
        sSize size;
    } const columns[] = {
        {50, sPoint(1, 1), sSize(50, 16)},
        {60, sPoint(51, 1), sSize(28, 16)}, // reaches width - 1 = 79: cut, x stays
        {30, sPoint(51, 1), sSize(28, 16)}, // the remainder again
    };
    for (auto const& column : columns) {
        list->addColumn("Name", 8, column.width, eColumnAlignment_Left);
    }
    list->setSize(sSize(80, 60));
    mpWindow->add(list);
    frame();
    for (unsigned int i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(list->getColumnButton(i)->getPosition(), columns[i].place);
        EXPECT_EQ(list->getColumnButton(i)->getSize(), columns[i].size);
    }
    // A list narrower than the first column: later buttons have no size.
    list->setSize(sSize(40, 60));
    frame();
    EXPECT_EQ(list->getColumnButton(0)->getSize(), sSize(38, 16));
    EXPECT_EQ(list->getColumnButton(1)->getSize(), sSize(38, 16));
    EXPECT_EQ(list->getColumnButton(2)->getSize(), sSize(30, 16)); // fits from x 1

    list->setSize(sSize(16, 60));
    list->addColumn("Value", 8, 10, eColumnAlignment_Left);
    frame();
    EXPECT_EQ(list->getColumnButton(0)->getSize(), sSize(14, 16));
}

TEST_F(ListTest, APulldownListAppliesItsHighlightWhenAnythingTakesTheFocus)
{
    mpWindow = openWindow("w", sRect(100, 100, 400, 400));
    UIPulldownList* pulldown = new UIPulldownList();
    for (char const* name : {"zero", "one", "two", "three", "four", "five"}) {
        pulldown->addItem(name);
    }
    pulldown->removeItem(0);
    EXPECT_STREQ(pulldown->getItemName(0), "one");
    EXPECT_EQ(pulldown->getItemName(5), nullptr);
    pulldown->setFunction(&mCalls, &Calls::closed);
    pulldown->setPosition(sPoint(10, 10));
    pulldown->setSize(sSize(80, 16 * 3 + 2)); // three rows: the bar shows
    mpWindow->add(pulldown);
    frame();
    EXPECT_TRUE(pulldown->getScrollBar()->isVisible());
    EXPECT_EQ(pulldown->getScrollBar()->getMaximum(), 5 * 16 - 1);

    mpUI->focus(pulldown);
    // Hovering highlights; Down past the view scrolls it.
    move(130, 111 + 16 + 4);
    frame();
    EXPECT_EQ(pulldown->getSelectItem(), 1u);
    pulldown->setSelectItem(4);
    EXPECT_EQ(pulldown->getScrollBar()->getBarPosition(), 5 * 16 - 48);
    pulldown->setSelectItem(9); // not an item: ignored
    EXPECT_EQ(pulldown->getSelectItem(), 4u);
    // A click elsewhere in the window takes the focus: the highlight stays
    // as the choice and the list closes.
    tap(300, 300);
    EXPECT_EQ(mCalls.take(), "closed ");
    EXPECT_FALSE(pulldown->isVisible());
    EXPECT_EQ(pulldown->getSelectItem(), 4u);

    // A click on a row chooses it; a click below the rows leaves it open.
    pulldown->show();
    pulldown->getScrollBar()->setBarPosition(0);
    mpUI->focus(pulldown);
    frame();
    pulldown->selectItem(7);
    EXPECT_TRUE(pulldown->isVisible());
    tap(130, 111 + 2 * 16 + 4);
    EXPECT_EQ(pulldown->getSelectItem(), 2u);
    EXPECT_FALSE(pulldown->isVisible());
    EXPECT_EQ(mCalls.take(), "closed ");
}
