#include "ui/uiscrollbar.h"

#include <cstdint>
#include <initializer_list>

#include "ui/uibutton.h"
#include "ui/uipainter.h"
#include "ui/uisystem.h"

namespace {

unsigned int const kPrimary = 1;
int const kButtonSide = 12;
int const kMinimumLength = 24;
int const kMinimumThumb = 4;
// Spans under this show no thumb.
int const kMinimumSpan = 5;

// Positions are worked out in 64 bits so that spans near the 32-bit limits
// do not wrap.
int toInt(s64 value)
{
    return static_cast<int>(value < INT32_MIN ? INT32_MIN : (value > INT32_MAX ? INT32_MAX : value));
}

} // namespace

UIScrollBar::UIScrollBar(eBarDirection direction)
    : mDirection(direction), mBarPosition(0), mBarRange(0), mMinimum(0), mMaximum(0), mThumbDragging(false),
      mDragBeginBarPosition(0), mpDecrementButton(nullptr), mpIncrementButton(nullptr)
{
    bool const vertical = direction == eBarDirection_Vertical;
    setMinimumSize(vertical ? sSize(kButtonSide, kMinimumLength) : sSize(kMinimumLength, kButtonSide));
    mpDecrementButton = new UISpinButton(vertical ? eDirection_Up : eDirection_Left);
    mpIncrementButton = new UISpinButton(vertical ? eDirection_Down : eDirection_Right);
    for (UISpinButton* button : {mpDecrementButton, mpIncrementButton}) {
        button->setFunction(this, &UIScrollBar::notifySpinButton);
        button->setSize(sSize(kButtonSide, kButtonSide));
        add(button);
    }
}

void UIScrollBar::setBarPosition(int position)
{
    position = (position < mMinimum) ? mMinimum : position;
    mBarPosition = (position > mMaximum) ? mMaximum : position;
}

void UIScrollBar::setMinimum(int minimum)
{
    mMinimum = minimum;
    setBarPosition(mBarPosition);
}

void UIScrollBar::setMaximum(int maximum)
{
    mMaximum = maximum;
    setBarPosition(mBarPosition);
}

void UIScrollBar::setBarRange(unsigned int range)
{
    mBarRange = range;
    if (static_cast<s64>(mBarPosition) + range > mMaximum) {
        s64 const position = static_cast<s64>(mMaximum) - range;
        mBarPosition = (position < mMinimum) ? mMinimum : static_cast<s32>(position);
    }
}

void UIScrollBar::decrement()
{
    if (mBarPosition > mMinimum) {
        setBarPosition(mBarPosition - 1);
    }
}

void UIScrollBar::increment()
{
    if (mBarPosition < mMaximum) {
        setBarPosition(mBarPosition + 1);
    }
}

void UIScrollBar::notifySpinButton(UIButton* button)
{
    if (button == mpDecrementButton) {
        decrement();
    } else if (button == mpIncrementButton) {
        increment();
    }
}

int UIScrollBar::getLength() const
{
    return static_cast<int>(mDirection == eBarDirection_Vertical ? getSize().height : getSize().width);
}

int UIScrollBar::getThickness() const
{
    return static_cast<int>(mDirection == eBarDirection_Vertical ? getSize().width : getSize().height);
}

sRect UIScrollBar::getBarRegion() const
{
    s64 const full = static_cast<s64>(mMaximum) - mMinimum;
    if (static_cast<s64>(mBarRange) >= full || full < kMinimumSpan) {
        return sRect::Zero;
    }
    int const thickness = getThickness();
    s64 const track = getLength() - 2 * thickness;
    s64 const begin = static_cast<s64>(mBarPosition) - mMinimum;
    s64 const end = begin + mBarRange;
    int from = thickness + static_cast<int>(begin * track / full);
    int to = thickness + static_cast<int>(end * track / full);
    if (to - from < kMinimumThumb) {
        to = from + kMinimumThumb;
        int const limit = getLength();
        if (to > limit) {
            from -= to - limit;
            to = limit;
        }
    }
    return (mDirection == eBarDirection_Vertical) ? sRect(0, from, thickness, to) : sRect(from, 0, to, thickness);
}

void UIScrollBar::update(float deltaTime)
{
    int const thickness = getThickness();
    sSize const square(static_cast<unsigned int>(thickness), static_cast<unsigned int>(thickness));
    int const far = getLength() - thickness;
    mpDecrementButton->setPosition(sPoint(0, 0));
    mpDecrementButton->setSize(square);
    mpIncrementButton->setPosition(mDirection == eBarDirection_Vertical ? sPoint(0, far) : sPoint(far, 0));
    mpIncrementButton->setSize(square);
    UIBase::update(deltaTime);
}

void UIScrollBar::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    painter->drawRect(sRect(getSize()), system->mScrollBarBaseColor);
    sRect const thumb = getBarRegion();
    if (isEnabled() && thumb != sRect::Zero) {
        painter->drawRect(thumb, system->mWindowColor);
        painter->drawConvexRect(thumb);
    }
}

void UIScrollBar::eventMouseDown(sPoint const& position, unsigned int button)
{
    if (!isEnabled() || (button & kPrimary) == 0) {
        return;
    }
    sRect const thumb = getBarRegion();
    if (thumb != sRect::Zero && thumb.intersect(position)) {
        mThumbDragging = true;
        mDragBeginBarPosition = mBarPosition;
        return;
    }
    int const along = (mDirection == eBarDirection_Vertical) ? position.y : position.x;
    int const thumbStart = (mDirection == eBarDirection_Vertical) ? thumb.top : thumb.left;
    s64 const half = (static_cast<s64>(mBarRange) + 1) / 2;
    s64 const target = (along > thumbStart) ? mBarPosition + half : mBarPosition - half;
    setBarPosition(toInt(target));
}

void UIScrollBar::eventMouseMove(sPoint const&)
{
    if (!isDragging() || (getDragButton() & kPrimary) == 0 || !mThumbDragging) {
        return;
    }
    s64 const track = getLength() - 2 * getThickness();
    if (track <= 0) {
        return;
    }
    s64 const drag = (mDirection == eBarDirection_Vertical) ? getDragAmount().y : getDragAmount().x;
    s64 const target = mDragBeginBarPosition + (static_cast<s64>(mMaximum) - mMinimum) * drag / track;
    setBarPosition(toInt(target));
}

void UIScrollBar::eventMouseUp(sPoint const&, unsigned int button)
{
    if ((button & kPrimary) != 0) {
        mThumbDragging = false;
    }
}

void UIScrollBar::eventMouseWheel(sPoint const& amount)
{
    s64 const target =
        static_cast<s64>(mBarPosition) - (mDirection == eBarDirection_Vertical ? amount.y : amount.x);
    setBarPosition(toInt(target));
}
