#include "ui/uibase.h"

#include "foundation/allocator.h"
#include "ui/uimenu.h"
#include "ui/uimessage.h"
#include "ui/uipainter.h"
#include "ui/uisystem.h"

namespace {

// Never set: every widget comes from "Global", and a block of any other heap
// returned here is caught.
ClassHeap sWidgetHeap;

} // namespace

void* UIBase::allocate(unsigned int size)
{
    return sWidgetHeap.allocate(size);
}

void UIBase::deallocate(void* pointer)
{
    sWidgetHeap.deallocate(pointer);
}

UIBase::UIBase(unsigned int attribute)
    : mpParent(nullptr), mpMenu(nullptr), mCursor(eCursor_Normal), mAttribute(attribute),
      mStatus(eStatus_Visible | eStatus_Enabled), mBorderStyle(eBorderStyle_None), mBorderColor(sColor::Black),
      mDragging(false), mDragButton(0), mDelegate(false), mBroadcasting(false), mFindKey(this)
{
}

UIBase::~UIBase()
{
    if (UISystem* system = UISystem::getInstance()) {
        system->notifyInvalidate(this);
    }
    removeChildren();
    delete mpMenu;
}

void UIBase::update(float deltaTime)
{
    for (UIBase* child : mChildren) {
        child->update(deltaTime);
    }
}

void UIBase::updateRegion(sRect const& parentRegion, sRect const& parentDrawRegion)
{
    updateOwnRegion(parentRegion, parentDrawRegion);
    updateChildrenRegion(mAbsRegion, mDrawRegion);
}

void UIBase::updateOwnRegion(sRect const& parentRegion, sRect const& parentDrawRegion)
{
    setAbsRegion(parentRegion.getTranslate());
    if (isFloating()) {
        UISystem* system = UISystem::getInstance();
        setDrawRegion(system != nullptr ? system->getUIViewRect() : sRect::Max);
    } else {
        setDrawRegion(parentDrawRegion);
    }
}

void UIBase::updateChildrenRegion(sRect const& parentRegion, sRect const& parentDrawRegion)
{
    for (UIBase* child : mChildren) {
        child->updateRegion(parentRegion, parentDrawRegion);
    }
}

UIBase* UIBase::intersect(sPoint const& point, sRect const& clip)
{
    if (!isVisible()) {
        return nullptr;
    }
    sRect region = mAbsRegion;
    if (!isFloating()) {
        region &= clip;
    }
    UIBase* hit = region.intersect(point) ? this : nullptr;
    if (hit == nullptr && (mStatus & eStatus_HasFloating) == 0) {
        return nullptr;
    }
    // A floating hit anywhere below wins over the plain ones; among siblings
    // the last added wins.
    UIBase* floatingHit = nullptr;
    for (UIBase* child : mChildren) {
        UIBase* found = child->intersect(point, region);
        if (found == nullptr) {
            continue;
        }
        if (child->isFloating() || (child->mStatus & eStatus_HasFloating) != 0) {
            floatingHit = found;
        } else {
            hit = found;
        }
    }
    return floatingHit != nullptr ? floatingHit : hit;
}

UIShortcutBase const* UIBase::findShortcut(unsigned int, unsigned int) const
{
    return nullptr;
}

void UIBase::add(UIBase* child)
{
    mChildren.addLast(child);
    child->mpParent = this;
    updateFloatingStatus();
}

void UIBase::remove()
{
    if (mpParent == nullptr) {
        return;
    }
    UIBase* parent = mpParent;
    parent->mChildren.remove(this);
    mpParent = nullptr;
    parent->updateFloatingStatus();
}

void UIBase::removeChildren()
{
    while (!mChildren.empty()) {
        UIBase* child = *mChildren.begin();
        mChildren.remove(mChildren.begin());
        child->mpParent = nullptr;
        delete child;
    }
    updateFloatingStatus();
}

sRect UIBase::getChildrenRegion() const
{
    sRect region = sRect::Zero;
    for (UIBase* child : mChildren) {
        region |= child->getRelRegion();
    }
    return region;
}

UIBase* UIBase::find(UIBase const* widget)
{
    if (this == widget) {
        return this;
    }
    for (UIBase* child : mChildren) {
        if (UIBase* found = child->find(widget)) {
            return found;
        }
    }
    return nullptr;
}

UIBase* UIBase::findKey(void const* key)
{
    if (mFindKey == key) {
        return this;
    }
    for (UIBase* child : mChildren) {
        if (UIBase* found = child->findKey(key)) {
            return found;
        }
    }
    return nullptr;
}

bool UIBase::setStatusBit(unsigned int bit, bool on)
{
    bool const now = (mStatus & bit) != 0;
    if (now == on) {
        return false;
    }
    mStatus = on ? (mStatus | bit) : (mStatus & ~bit);
    return true;
}

void UIBase::create()
{
    if (setStatusBit(eStatus_Created, true)) {
        eventCreate();
    }
}

void UIBase::active()
{
    if (setStatusBit(eStatus_Active, true)) {
        eventActive();
    }
}

void UIBase::deactive()
{
    if (setStatusBit(eStatus_Active, false)) {
        eventDeactive();
    }
}

void UIBase::focus()
{
    if (setStatusBit(eStatus_Focused, true)) {
        eventFocus();
    }
}

void UIBase::defocus()
{
    if (setStatusBit(eStatus_Focused, false)) {
        eventDefocus();
    }
}

void UIBase::enable()
{
    if (setStatusBit(eStatus_Enabled, true)) {
        eventEnable();
    }
}

void UIBase::disable()
{
    if (setStatusBit(eStatus_Enabled, false)) {
        eventDisable();
    }
}

void UIBase::show()
{
    if (setStatusBit(eStatus_Visible, true)) {
        updateFloatingStatus();
        eventShow();
    }
}

void UIBase::hide()
{
    if (setStatusBit(eStatus_Visible, false)) {
        updateFloatingStatus();
        eventHide();
    }
}

void UIBase::setPosition(sPoint const& position)
{
    mPosition = position;
    if ((mStatus & eStatus_InMove) == 0) {
        mStatus |= eStatus_InMove;
        eventMove();
        mStatus &= ~static_cast<u32>(eStatus_InMove);
    }
}

void UIBase::setSize(sSize const& size)
{
    mSize.width = maximum(size.width, mMinimumSize.width);
    mSize.height = maximum(size.height, mMinimumSize.height);
    if ((mStatus & eStatus_InSize) == 0) {
        mStatus |= eStatus_InSize;
        eventSize();
        mStatus &= ~static_cast<u32>(eStatus_InSize);
    }
}

void UIBase::drawBorder(UIPainter* painter)
{
    sRect const rect(mSize);
    switch (mBorderStyle) {
    case eBorderStyle_Frame:
        painter->drawFrame(rect, mBorderColor);
        break;
    case eBorderStyle_Convex:
        painter->drawConvexRect(rect);
        break;
    case eBorderStyle_Concave:
        painter->drawConcaveRect(rect);
        break;
    default:
        break;
    }
}

void UIBase::setMenu(UIMenu* menu)
{
    if (mpMenu != nullptr) {
        if (UISystem* system = UISystem::getInstance()) {
            system->notifyMenuChange(mpMenu);
        }
        delete mpMenu;
    }
    mpMenu = menu;
}

void UIBase::paint(UIMessage const& message)
{
    UIPainter* painter = static_cast<UIPaintMessage const&>(message).getPainter();
    painter->setRegion(mDrawRegion, mAbsRegion.getTranslate());
    if (isFloating()) {
        painter->increasePriority();
        eventPaint(painter);
        painter->decreasePriority();
    } else {
        eventPaint(painter);
    }
}

void UIBase::sendMessage(UIMessage const& message, UIBase* sender)
{
    bool const savedDelegate = mDelegate;
    mDelegate = false;
    bool goesDown = message.isBroadcast();

    switch (message.getType()) {
    case UIMessage::eType_Create:
        create();
        break;
    case UIMessage::eType_Destroy:
        eventDestroy();
        break;
    case UIMessage::eType_Close:
        eventClose();
        break;
    case UIMessage::eType_Show:
        show();
        break;
    case UIMessage::eType_Hide:
        hide();
        break;
    case UIMessage::eType_Timer:
        eventTimer(static_cast<UITimerMessage const&>(message).getDeltaTime());
        break;
    case UIMessage::eType_Paint:
        // An invisible widget hides its subtree; an empty draw region still
        // lets floating descendants paint outside it.
        if (!isVisible()) {
            goesDown = false;
        } else if (mDrawRegion.getWidth() != 0 && mDrawRegion.getHeight() != 0) {
            paint(message);
        } else {
            goesDown = goesDown && (mStatus & eStatus_HasFloating) != 0;
        }
        break;
    case UIMessage::eType_Active:
        active();
        break;
    case UIMessage::eType_Deactive:
        deactive();
        break;
    case UIMessage::eType_Focus:
        focus();
        break;
    case UIMessage::eType_Defocus:
        defocus();
        break;
    case UIMessage::eType_Enable:
        enable();
        break;
    case UIMessage::eType_Disable:
        disable();
        break;
    case UIMessage::eType_KeyDown: {
        UIKeyDownMessage const& key = static_cast<UIKeyDownMessage const&>(message);
        eventKeyDown(key.getKeyCode(), key.getCombinationKey());
        break;
    }
    case UIMessage::eType_KeyUp: {
        UIKeyUpMessage const& key = static_cast<UIKeyUpMessage const&>(message);
        eventKeyUp(key.getKeyCode(), key.getCombinationKey());
        break;
    }
    case UIMessage::eType_MouseMove: {
        sPoint const& position = static_cast<UIMouseMoveMessage const&>(message).getPosition();
        if (mDragging) {
            mDragAmount = position + getAbsPosition() - mDragBeginPosition;
        }
        eventMouseMove(position);
        break;
    }
    case UIMessage::eType_MouseDown:
    case UIMessage::eType_MouseDoubleClick: {
        // Both messages share the layout of UIMouseDownMessage. The drag
        // amount keeps the last drag's value until the first move.
        UIMouseDownMessage const& press = static_cast<UIMouseDownMessage const&>(message);
        mDragging = true;
        mDragButton = press.getButton();
        mDragBeginPosition = press.getPosition() + getAbsPosition();
        if (message.getType() == UIMessage::eType_MouseDown) {
            eventMouseDown(press.getPosition(), press.getButton());
        } else {
            eventMouseDoubleClick(press.getPosition(), press.getButton());
        }
        break;
    }
    case UIMessage::eType_MouseUp: {
        // The handler still sees the drag; it ends behind it.
        UIMouseUpMessage const& release = static_cast<UIMouseUpMessage const&>(message);
        eventMouseUp(release.getPosition(), release.getButton());
        mDragging = false;
        break;
    }
    case UIMessage::eType_MouseWheel:
        eventMouseWheel(static_cast<UIMouseWheelMessage const&>(message).getAmount());
        break;
    case UIMessage::eType_BeginEdit:
        eventBeginEdit();
        break;
    case UIMessage::eType_EndEdit:
        eventEndEdit();
        break;
    default:
        eventCustom(message);
        break;
    }

    if (goesDown) {
        mBroadcasting = true;
        for (UIBase* child : mChildren) {
            child->sendMessage(message, sender);
        }
        mBroadcasting = false;
    }
    // A child that delegates a broadcast would hand it back to the parent
    // that is walking it down: the parent has seen it already.
    bool const fromParent = message.isBroadcast() && mpParent != nullptr && mpParent->mBroadcasting;
    if (mDelegate && mpParent != nullptr && !fromParent) {
        mpParent->sendMessage(message, sender);
    }
    mDelegate = savedDelegate;
}

void UIBase::updateFloatingStatus()
{
    for (UIBase* widget = this; widget != nullptr; widget = widget->mpParent) {
        bool floating = false;
        for (UIBase* child : widget->mChildren) {
            if (child->isFloating() || (child->mStatus & eStatus_HasFloating) != 0) {
                floating = true;
                break;
            }
        }
        widget->setStatusBit(eStatus_HasFloating, floating);
    }
}

bool UIBase::validate() const
{
    bool floating = false;
    for (UIBase* child : mChildren) {
        if (child == nullptr || child->mpParent != this || !child->validate()) {
            return false;
        }
        floating = floating || child->isFloating() || (child->mStatus & eStatus_HasFloating) != 0;
    }
    return floating == ((mStatus & eStatus_HasFloating) != 0);
}
