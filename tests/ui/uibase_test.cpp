// UIBase: the dispatcher (each message to its event, broadcasts down,
// delegation up), hit testing with clipping and floating children, the
// geometry guards, and painting at absolute positions with the priorities
// of floating children, read back from the recorded draw commands.
#include <string>

#include "ui/uimessage.h"
#include "ui/uipainter.h"
#include "uitest.h"

using namespace uitest;

namespace {

// Fills its rectangle; the colour names the widget in the draw list.
class Fill : public Probe {
public:
    Fill(char const* name, std::vector<std::string>* log, sRect const& rect, sColor color, unsigned int attribute = 0)
        : Probe(name, log, rect, 0, attribute), mColor(color)
    {
    }
    void eventPaint(UIPainter* painter) override { painter->drawRect(sRect(getSize()), mColor); }
    // Corrects its own position once, as a window does at the menu bar.
    void eventMove() override
    {
        note("Move");
        if (getPosition().y < 0) {
            setPosition(sPoint(getPosition().x, 0));
        }
    }
    sColor mColor;
};

// The plain quads of the last frame as "R@sub:left,top-right,bottom", the
// colour's red channel standing for the widget, and the scissor behind "/".
std::string quads()
{
    std::string text;
    for (sDrawCommand const* draw : recordedDraws()) {
        if (draw->isTextured() || draw->getPrimitiveType() != ePrimitiveType_Quad) {
            continue;
        }
        sOutputVertex const* v = static_cast<sOutputVertex const*>(draw->mpVertices);
        for (u32 i = 0; i < draw->getVertexCount(); i += 4) {
            char item[128];
            snprintf(item, sizeof(item), "%s%u@%u:%d,%d-%d,%d/%d,%d-%d,%d", text.empty() ? "" : " ", v[i].mColor & 0xFF,
                     draw->mKey & 0xFFFF, static_cast<int>(v[i].x), static_cast<int>(v[i].y),
                     static_cast<int>(v[i + 3].x), static_cast<int>(v[i + 3].y), draw->mScissor.left,
                     draw->mScissor.top, draw->mScissor.right, draw->mScissor.bottom);
            text += item;
        }
    }
    return text;
}

} // namespace

TEST_F(UITest, EachMessageReachesItsEventAndBroadcastsReachTheSubtree)
{
    Probe parent("P", &mLog, sRect(0, 0, 100, 100));
    Probe* child = new Probe("C", &mLog, sRect(0, 0, 10, 10));
    parent.add(child);

    parent.sendMessage(UICreateMessage());
    parent.sendMessage(UICreateMessage()); // a second one changes nothing
    parent.sendMessage(UITimerMessage(1.0f));
    parent.sendMessage(UIDestroyMessage());
    EXPECT_EQ(take(), "P:Create C:Create P:Destroy C:Destroy");

    struct Case {
        UIMessage message;
        char const* log;
    };
    Case const cases[] = {
        {UIHideMessage(), ""},  {UIShowMessage(), ""}, {UIActiveMessage(), "P:Active"}, {UIActiveMessage(), ""},
        {UIFocusMessage(), "P:Focus"}, {UIDefocusMessage(), "P:Defocus"}, {UIDeactiveMessage(), "P:Deactive"},
        {UIMessage(6, false), "P:Custom(6)"}, {UIMessage(28, true), "P:Custom(28) C:Custom(28)"},
    };
    for (Case const& c : cases) {
        parent.sendMessage(c.message);
        EXPECT_EQ(take(), c.log) << c.message.getType();
    }
    parent.sendMessage(UIHideMessage());
    EXPECT_FALSE(parent.isVisible());
    parent.sendMessage(UIShowMessage());
    parent.sendMessage(UIDisableMessage());
    EXPECT_FALSE(parent.isEnabled());

    // Delegation: the same message goes up; the outer handler's own flag
    // is untouched by the inner one.
    Probe* grandchild = new Probe("G", &mLog, sRect(0, 0, 5, 5));
    child->add(grandchild);
    grandchild->mDelegateKeys = true;
    child->mDelegateKeys = true;
    grandchild->sendMessage(UIKeyDownMessage('A', 1));
    EXPECT_EQ(take(), "G:KeyDown(65/1) C:KeyDown(65/1) P:KeyDown(65/1)");
    child->mDelegateKeys = false;
    grandchild->sendMessage(UIKeyUpMessage('A', 0));
    EXPECT_EQ(take(), "G:KeyUp(65/0) C:KeyUp(65/0)");
    EXPECT_EQ(parent.findKey(grandchild), grandchild) << "the key of a widget is its own address";
    grandchild->setFindKey(&mLog);
    EXPECT_EQ(parent.findKey(&mLog), grandchild);
    EXPECT_TRUE(parent.validate());
    grandchild->remove();
    EXPECT_EQ(child->find(grandchild), nullptr);
    delete grandchild;
}

TEST_F(UITest, GeometryGuardsAndHitTestsFollowClipsAndFloatingChildren)
{
    Fill window("W", &mLog, sRect(100, 100, 300, 300), sColor::Red);
    window.setPosition(sPoint(100, -5));
    EXPECT_EQ(take(), "W:Move") << "the correction raises no second move";
    EXPECT_EQ(window.getPosition(), sPoint(100, 0));
    window.setMinimumSize(sSize(64, 64));
    window.setSize(sSize(10, 300));
    EXPECT_EQ(window.getSize(), sSize(64, 300));
    window.setSize(sSize(200, 200));

    Probe* inner = new Probe("I", &mLog, sRect(150, 150, 250, 250)); // reaches out of the window
    Probe* over = new Probe("O", &mLog, sRect(140, 140, 190, 190));  // overlaps it
    Probe* holder = new Probe("H", &mLog, sRect(0, 0, 0, 0));
    Probe* floating = new Probe("F", &mLog, sRect(-80, -60, -40, -20), 0, UIBase::eAttribute_Floating);
    window.add(inner);
    window.add(over);
    window.add(holder);
    holder->add(floating);
    EXPECT_NE(window.getStatus() & UIBase::eStatus_HasFloating, 0u);
    sRect const view(640u, 480u);
    window.updateRegion(view, view);
    EXPECT_EQ(floating->getAbsRegion(), sRect(20, -60, 60, -20));

    struct Case {
        sPoint point;
        UIBase* hit;
    };
    Case const cases[] = {
        {sPoint(100, 0), &window}, {sPoint(300, 100), &window}, // both edges belong to it
        {sPoint(301, 100), nullptr}, {sPoint(255, 195), inner},
        {sPoint(260, 160), over},    // overlapping siblings: the last added
        {sPoint(320, 220), nullptr}, // the child's part outside its parent
        {sPoint(10, -50), nullptr},  {sPoint(30, -30), floating}, {sPoint(60, -20), floating},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(window.intersect(c.point, sRect::Max), c.hit) << c.point.x << "," << c.point.y;
    }
    holder->remove();
    EXPECT_EQ(window.getStatus() & UIBase::eStatus_HasFloating, 0u);
    delete holder;
    window.hide();
    EXPECT_EQ(window.intersect(sPoint(120, 20), sRect::Max), nullptr);
    EXPECT_EQ(window.getChildrenRegion(), sRect(0, 0, 250, 250));
}

TEST_F(UITest, WidgetsPaintAtTheirAbsolutePlacesFloatingOnePriorityUp)
{
    Fill* back = new Fill("B", &mLog, sRect(10, 20, 110, 120), sColor(10, 0, 0, 255));
    Fill* front = new Fill("W", &mLog, sRect(100, 100, 300, 300), sColor(20, 0, 0, 255));
    front->add(new Fill("A", &mLog, sRect(10, 10, 60, 60), sColor(30, 0, 0, 255)));
    Fill* empty = new Fill("E", &mLog, sRect(0, 0, 0, 0), sColor(40, 0, 0, 255));
    front->add(empty);
    empty->add(new Fill("F", &mLog, sRect(-50, -50, -20, -20), sColor(50, 0, 0, 255), UIBase::eAttribute_Floating));
    Fill* hidden = new Fill("H", &mLog, sRect(0, 0, 10, 10), sColor(60, 0, 0, 255));
    front->add(hidden);
    hidden->hide();
    mpUI->addWindow(back);
    mpUI->addWindow(front);
    frame();
    frame();
    // The desktop takes priority 0; windows from the back in steps of 8.
    EXPECT_EQ(back->getPriority(), 1u);
    EXPECT_EQ(front->getPriority(), 9u);
    // The same picture on any number of job threads is checked on screen by
    // the widget pixel window scenario.
    EXPECT_EQ(quads(), "10@1:10,20-110,120/10,20-110,120 20@9:100,100-300,300/100,100-300,300 "
                       "30@9:110,110-160,160/110,110-160,160 50@10:50,50-80,80/50,50-80,80");
}
