// Buttons and scroll bars driven by the scripted mouse through UISystem: a
// click fires on the release over the button only, a held button fires once,
// and the scroll bar's clamping, thumb geometry, half-page, wheel and drag
// rules.
#include "ui/uibutton.h"
#include "ui/uimessage.h"
#include "ui/uiscrollbar.h"
#include "uitest.h"

using namespace uitest;

namespace {

struct Counter {
    void count(UIButton* button)
    {
        ++mFired;
        mpLast = button;
    }
    int mFired = 0;
    UIButton* mpLast = nullptr;
};

} // namespace

class ButtonTest : public UITest {
protected:
    template <typename W>
    W* open(W* widget, sSize size)
    {
        Probe* window = openWindow("w", sRect(100, 100, 300, 300));
        widget->setPosition(sPoint(10, 10));
        widget->setSize(size);
        window->add(widget);
        frame();
        return widget;
    }
    // A press a second after the last click.
    void hold(int x, int y)
    {
        advance(1000);
        press(x, y);
    }
};

TEST_F(ButtonTest, AButtonFiresOnReleaseOverItselfOnceAndOnlyForThePrimaryButton)
{
    Counter counter;
    UIButton* button = open(new UIButton(&counter, &Counter::count, "Ok"), sSize(40, 16));
    // The button spans view (110, 110) to (150, 126).
    tap(120, 115);
    EXPECT_EQ(counter.mFired, 1);
    EXPECT_EQ(counter.mpLast, button);

    // Held for many frames: pressed look, still one firing at the release.
    hold(120, 115);
    for (int i = 0; i < 30; ++i) {
        frame();
    }
    EXPECT_EQ(button->getBorderStyle(), eBorderStyle_Concave);
    EXPECT_EQ(counter.mFired, 1);
    release(120, 115);
    frame();
    EXPECT_EQ(counter.mFired, 2);

    // Pressed, slid off and released outside: nothing, and it looks up again.
    hold(120, 115);
    frame();
    move(200, 200);
    frame();
    release(200, 200);
    frame();
    EXPECT_EQ(counter.mFired, 2);
    EXPECT_EQ(button->getBorderStyle(), eBorderStyle_Convex);
    EXPECT_FALSE(button->isPressed());

    tap(120, 115, 3); // tertiary
    tap(120, 115, 2); // secondary
    EXPECT_EQ(counter.mFired, 2);
}

TEST_F(ButtonTest, ScrollBarRangesClampAndShapeTheThumb)
{
    UIScrollBar bar(eBarDirection_Vertical);
    bar.setSize(sSize(12, 124)); // a track of 100 pixels
    struct sCase {
        int mMinimum, mMaximum;
        unsigned int mRange;
        int mPosition;
        int mExpectedPosition;
        sRect mThumb;
    } const cases[] = {
        // The maximum itself is the upper limit of the position.
        {0, 100, 10, 500, 100, sRect(0, 112, 12, 122)},
        {0, 100, 10, -5, 0, sRect(0, 12, 12, 22)},
        {0, 100, 50, 25, 25, sRect(0, 37, 12, 87)},
        // The whole span visible, or a span under 5: no thumb.
        {0, 100, 100, 0, 0, sRect::Zero},
        {0, 4, 1, 2, 2, sRect::Zero},
        // A thumb is never under 4 pixels.
        {0, 1000, 1, 0, 0, sRect(0, 12, 12, 16)},
        {0, 1000, 1, 1000, 1000, sRect(0, 112, 12, 116)},
        {-50, 50, 10, 0, 0, sRect(0, 62, 12, 72)},
    };
    for (sCase const& c : cases) {
        bar.setMinimum(c.mMinimum);
        bar.setMaximum(c.mMaximum);
        bar.setBarPosition(c.mPosition);
        // setBarRange last would pull the position back inside; set it first.
        bar.setBarRange(0);
        bar.setBarPosition(c.mPosition);
        bar.setBarRange(c.mRange);
        bar.setBarPosition(c.mPosition);
        EXPECT_EQ(bar.getBarPosition(), c.mExpectedPosition) << c.mMinimum << ".." << c.mMaximum << " at " << c.mPosition;
        EXPECT_EQ(bar.getBarRegion(), c.mThumb) << c.mMinimum << ".." << c.mMaximum << " at " << c.mPosition;
    }
    // setBarRange keeps the range inside, never below the minimum.
    bar.setMinimum(0);
    bar.setMaximum(100);
    bar.setBarPosition(95);
    bar.setBarRange(20);
    EXPECT_EQ(bar.getBarPosition(), 80);
    bar.setBarRange(500);
    EXPECT_EQ(bar.getBarPosition(), 0);
}

TEST_F(ButtonTest, ScrollBarStepsPagesWheelsAndDragsWithTheMouse)
{
    UIScrollBar* bar = open(new UIScrollBar(eBarDirection_Vertical), sSize(12, 124));
    bar->setMaximum(100);
    bar->setBarRange(10);
    bar->setBarPosition(50);
    frame();
    // The bar spans view (110, 110) to (122, 234); spin buttons at both ends.
    tap(115, 115);
    EXPECT_EQ(bar->getBarPosition(), 49);
    tap(115, 230);
    EXPECT_EQ(bar->getBarPosition(), 50);
    // Held on a spin button: one step only.
    hold(115, 230);
    for (int i = 0; i < 40; ++i) {
        frame();
    }
    release(115, 230);
    frame();
    EXPECT_EQ(bar->getBarPosition(), 51);
    // Beside the thumb (at 63 to 73 in the bar): half a page, (10 + 1) / 2.
    tap(115, 110 + 100);
    EXPECT_EQ(bar->getBarPosition(), 56);
    tap(115, 110 + 20);
    EXPECT_EQ(bar->getBarPosition(), 51);
    // The wheel: up one unit is one step back, clamped at the ends.
    bar->sendMessage(UIMouseWheelMessage(sPoint(0, 3)));
    EXPECT_EQ(bar->getBarPosition(), 48);
    bar->sendMessage(UIMouseWheelMessage(sPoint(0, -500)));
    EXPECT_EQ(bar->getBarPosition(), 100);
    // Dragging the thumb 20 pixels maps onto a fifth of the span.
    bar->setBarPosition(40);
    frame();
    sRect const thumb = bar->getBarRegion();
    int const y = 110 + (thumb.top + thumb.bottom) / 2;
    hold(115, y);
    frame();
    move(115, y + 20);
    frame();
    EXPECT_EQ(bar->getBarPosition(), 60);
    move(115, y + 1000);
    frame();
    EXPECT_EQ(bar->getBarPosition(), 100);
    release(115, y + 1000);
    frame();
    // A disabled bar takes no clicks.
    bar->disable();
    tap(115, 110 + 20);
    EXPECT_EQ(bar->getBarPosition(), 100);
}
