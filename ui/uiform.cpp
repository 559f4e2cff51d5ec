#include "ui/uiform.h"

#include <initializer_list>

#include "ui/uimessage.h"
#include "ui/uipainter.h"
#include "ui/uiscrollbar.h"
#include "ui/uisystem.h"

namespace {

unsigned int const kPrimary = 1;

} // namespace

// ---------------------------------------------------------------------------
// [SECTION] UIClientHolder

// Scrolling only translates the children; the holder's own draw region
// clips them.
void UIForm::UIClientHolder::updateRegion(sRect const& parentRegion, sRect const& parentDrawRegion)
{
    updateOwnRegion(parentRegion, parentDrawRegion);
    sRect moved = getAbsRegion();
    moved.translateRel(mClientPosition);
    updateChildrenRegion(moved, getDrawRegion());
}

void UIForm::UIClientHolder::eventMouseWheel(sPoint const& amount)
{
    if ((mpForm->getFormAttribute() & eFormAttribute_ScrollBar) == 0) {
        delegate();
        return;
    }
    if (amount.x != 0) {
        mpForm->getHorizontalScrollBar()->sendMessage(UIMouseWheelMessage(sPoint(amount.x, 0)));
    }
    if (amount.y != 0) {
        mpForm->getVerticalScrollBar()->sendMessage(UIMouseWheelMessage(sPoint(0, amount.y)));
    }
}

// ---------------------------------------------------------------------------
// [SECTION] UIForm

UIForm::UIForm(unsigned int formAttribute)
    : mpClientHolder(nullptr), mClientRegion(sRect::Zero), mOldSize(0, 0), mFormAttribute(formAttribute),
      mFormStatus(0), mpHorizontalScrollBar(nullptr), mpVerticalScrollBar(nullptr)
{
    if ((formAttribute & eFormAttribute_ScrollBar) != 0) {
        mpHorizontalScrollBar = new UIScrollBar(eBarDirection_Horizontal);
        mpVerticalScrollBar = new UIScrollBar(eBarDirection_Vertical);
        for (UIScrollBar* bar : {mpHorizontalScrollBar, mpVerticalScrollBar}) {
            bar->hide();
            add(bar);
        }
    }
    mpClientHolder = new UIClientHolder(this);
    add(mpClientHolder);
}

void UIForm::addClient(UIBase* widget)
{
    mpClientHolder->add(widget);
}

void UIForm::removeClient()
{
    mpClientHolder->removeChildren();
}

sRect UIForm::getClientExistRegion() const
{
    sRect region = mpClientHolder->getChildrenRegion();
    region.translateRel(mpClientHolder->getPosition());
    return region;
}

void UIForm::setScrollBarPosition(sPoint const& position)
{
    if (mpHorizontalScrollBar != nullptr) {
        mpHorizontalScrollBar->setBarPosition(position.x);
        mpVerticalScrollBar->setBarPosition(position.y);
    }
}

sPoint UIForm::getScrollBarPosition() const
{
    return mpHorizontalScrollBar != nullptr
               ? sPoint(mpHorizontalScrollBar->getBarPosition(), mpVerticalScrollBar->getBarPosition())
               : sPoint(0, 0);
}

sSize UIForm::getScrollBarRange() const
{
    return mpHorizontalScrollBar != nullptr
               ? sSize(mpHorizontalScrollBar->getBarRange(), mpVerticalScrollBar->getBarRange())
               : sSize(0, 0);
}

sSize UIForm::alignClient(unsigned int width)
{
    int const limit = static_cast<int>(width);
    sRect united = sRect::Zero;
    sPoint at(0, 0);
    for (List<UIBase>::Iterator it = mpClientHolder->getChildrenBegin(); it != mpClientHolder->getChildrenEnd(); ++it) {
        UIBase* widget = *it;
        int const w = static_cast<int>(widget->getSize().width);
        if ((widget->getAttribute() & eAttribute_RowItem) != 0) {
            widget->setPosition(sPoint(0, united.bottom));
            widget->setSize(sSize(width, widget->getSize().height));
            united |= widget->getRelRegion();
            at = sPoint(0, united.bottom + kRowGap);
        } else if (at.x + w + kRowGap <= limit) {
            widget->setPosition(at);
            united |= widget->getRelRegion();
            at.x += w + kRowGap;
        } else {
            at = sPoint(0, united.bottom + kRowGap);
            widget->setPosition(at);
            united |= widget->getRelRegion();
            at.x = w + kRowGap;
        }
    }
    return united.getSize();
}

void UIForm::updateClientRegion()
{
    sRect region = mClientRegion & sRect(getSize());
    bool const bars = (mFormAttribute & eFormAttribute_ScrollBar) != 0;
    if ((mFormAttribute & eFormAttribute_AutoAlign) != 0) {
        unsigned int const width = region.getWidth();
        sSize content = alignClient(width);
        if (bars) {
            if (width < content.width) {
                content = alignClient(width);
            } else if (region.getHeight() < content.height && width >= static_cast<unsigned int>(kBarRoom)) {
                unsigned int const narrower = width - kBarRoom;
                content = alignClient(narrower);
                if (narrower < content.width) {
                    alignClient(narrower);
                }
            }
        }
    }
    if (bars) {
        sRect content = mpClientHolder->getChildrenRegion();
        content.translateRel(region.getTranslate());
        if (content.bottom > region.bottom) {
            region.right -= kBarRoom;
            mFormStatus |= eFormStatus_VerticalBar;
        } else {
            mFormStatus &= ~static_cast<u32>(eFormStatus_VerticalBar);
        }
        if (content.right > region.right) {
            region.bottom -= kBarRoom;
            mFormStatus |= eFormStatus_HorizontalBar;
        } else {
            mFormStatus &= ~static_cast<u32>(eFormStatus_HorizontalBar);
        }
        sPoint offset(0, 0);
        if ((mFormStatus & eFormStatus_HorizontalBar) != 0) {
            mpHorizontalScrollBar->setPosition(sPoint(region.left, region.bottom + kRowGap));
            mpHorizontalScrollBar->setSize(sSize(region.getWidth(), kBarThickness));
            mpHorizontalScrollBar->setMinimum(0);
            mpHorizontalScrollBar->setMaximum(content.right - region.left);
            mpHorizontalScrollBar->setBarRange(region.getWidth());
            mpHorizontalScrollBar->show();
            offset.x = -mpHorizontalScrollBar->getBarPosition();
        } else {
            mpHorizontalScrollBar->hide();
        }
        if ((mFormStatus & eFormStatus_VerticalBar) != 0) {
            mpVerticalScrollBar->setPosition(sPoint(region.right + kRowGap, region.top));
            mpVerticalScrollBar->setSize(sSize(kBarThickness, region.getHeight()));
            mpVerticalScrollBar->setMinimum(0);
            mpVerticalScrollBar->setMaximum(content.bottom - region.top);
            mpVerticalScrollBar->setBarRange(region.getHeight());
            mpVerticalScrollBar->show();
            offset.y = -mpVerticalScrollBar->getBarPosition();
        } else {
            mpVerticalScrollBar->hide();
        }
        mpClientHolder->setClientPosition(offset);
    }
    mpClientHolder->setPosition(region.getTranslate());
    mpClientHolder->setSize(region.getSize());
}

void UIForm::update(float deltaTime)
{
    updateClientRegion();
    UIBase::update(deltaTime);
}

void UIForm::eventSize()
{
    if ((mFormAttribute & eFormAttribute_FollowSize) != 0 && (getStatus() & eStatus_Created) != 0) {
        mClientRegion.right += static_cast<int>(getSize().width) - static_cast<int>(mOldSize.width);
        mClientRegion.bottom += static_cast<int>(getSize().height) - static_cast<int>(mOldSize.height);
    }
    mOldSize = getSize();
}

void UIForm::eventPaint(UIPainter* painter)
{
    if ((mFormAttribute & eFormAttribute_PaintClient) != 0) {
        painter->drawRect(mClientRegion, UISystem::getInstance()->mClientRegionColor);
    }
}

// ---------------------------------------------------------------------------
// [SECTION] UIGroup

UIGroup::UIGroup(char const* caption) : mpCaption(caption) {}

void UIGroup::align(unsigned int width)
{
    int const limit = static_cast<int>(width);
    sRect united(0, 0, 0, kCaptionHeight);
    sPoint at(0, kCaptionHeight);
    for (List<UIBase>::Iterator it = getChildrenBegin(); it != getChildrenEnd(); ++it) {
        UIBase* widget = *it;
        int const w = static_cast<int>(widget->getSize().width);
        if ((widget->getAttribute() & eAttribute_RowItem) != 0) {
            widget->setPosition(sPoint(0, united.bottom));
            widget->setSize(sSize(width, widget->getSize().height));
            united |= widget->getRelRegion();
            at = sPoint(0, united.bottom + UIForm::kRowGap);
        } else if (at.x + w + UIForm::kRowGap <= limit) {
            widget->setPosition(at);
            united |= widget->getRelRegion();
            at.x += w + UIForm::kRowGap;
        } else {
            // Deliberately without the gap after the first widget of a row.
            at = sPoint(0, united.bottom + UIForm::kRowGap);
            widget->setPosition(at);
            united |= widget->getRelRegion();
            at.x = w;
        }
    }
    sSize const content = united.getSize();
    setSize(content.width > width ? content : sSize(width, content.height));
}

void UIGroup::update(float deltaTime)
{
    align(getSize().width);
    UIBase::update(deltaTime);
}

void UIGroup::eventCreate()
{
    align(getSize().width);
}

void UIGroup::eventSize()
{
    align(getSize().width);
}

void UIGroup::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    sRect const band(2, 2, static_cast<int>(getSize().width) - 2, kCaptionHeight);
    painter->drawRect(band, system->mActiveTitleBarColor);
    if (mpCaption != nullptr) {
        painter->drawString(band, mpCaption, system->mActiveTitleFontColor, eAlignment_LeftMiddle);
    }
}

// ---------------------------------------------------------------------------
// [SECTION] UISplitter

UISplitter::UISplitter(UIBase* first, UIBase* second, eSplitDirection direction, unsigned int splitSize,
                       eSplitBase base)
    : mDirection(direction), mBase(base), mSplitSize(splitSize < kMinimumSplitSize ? kMinimumSplitSize : splitSize),
      mpFirst(first), mpSecond(second)
{
    setCursor(direction == eSplitDirection_LeftRight ? eCursor_SplitLeftRight : eCursor_SplitUpDown);
    add(first);
    add(second);
}

int UISplitter::getTotal() const
{
    return static_cast<int>(mDirection == eSplitDirection_LeftRight ? getSize().width : getSize().height);
}

void UISplitter::update(float deltaTime)
{
    int const total = getTotal();
    int const split = static_cast<int>(mSplitSize);
    int firstLength;
    int secondStart;
    int secondLength;
    if (mBase == eSplitBase_First) {
        firstLength = split - kGap;
        secondStart = split;
        secondLength = total - split;
    } else {
        firstLength = total - split;
        secondStart = total - split + kGap;
        secondLength = split - kGap;
    }
    firstLength = firstLength < 0 ? 0 : firstLength;
    secondLength = secondLength < 0 ? 0 : secondLength;
    mpFirst->setPosition(sPoint(0, 0));
    if (mDirection == eSplitDirection_LeftRight) {
        mpFirst->setSize(sSize(static_cast<unsigned int>(firstLength), getSize().height));
        mpSecond->setPosition(sPoint(secondStart, 0));
        mpSecond->setSize(sSize(static_cast<unsigned int>(secondLength), getSize().height));
    } else {
        mpFirst->setSize(sSize(getSize().width, static_cast<unsigned int>(firstLength)));
        mpSecond->setPosition(sPoint(0, secondStart));
        mpSecond->setSize(sSize(getSize().width, static_cast<unsigned int>(secondLength)));
    }
    UIBase::update(deltaTime);
}

void UISplitter::eventMouseMove(sPoint const& position)
{
    if (!isDragging() || (getDragButton() & kPrimary) == 0) {
        delegate();
        return;
    }
    bool const across = mDirection == eSplitDirection_LeftRight;
    int const offset = across ? position.x : position.y;
    int const total = getTotal();
    UIBase const* baseWidget = (mBase == eSplitBase_First) ? mpFirst : mpSecond;
    int const limit =
        static_cast<int>(across ? baseWidget->getMinimumSize().width : baseWidget->getMinimumSize().height) + kGap;
    int size;
    if (offset < 0) {
        size = limit;
    } else if (offset >= total) {
        size = total;
    } else {
        size = (mBase == eSplitBase_First) ? offset : total - offset;
        size = size < limit ? limit : size;
    }
    mSplitSize = static_cast<u32>(size);
}
