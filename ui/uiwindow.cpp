#include "ui/uiwindow.h"

#include <initializer_list>

#include "ui/uimenu.h"
#include "ui/uimessage.h"
#include "ui/uipainter.h"
#include "ui/uishortcut.h"
#include "ui/uisystem.h"

IMPLEMENT_TYPEINFO(UIWindow, "ObjectBase", TypeInfo::eAttribute_Abstract);

namespace {

unsigned int const kPrimary = 1;
int const kDefaultPlace = 16;
unsigned int const kMinimumSide = 64;
int const kFrame = 2;
int const kButtonTop = 3;
int const kButtonsFromRight = 44;
unsigned int const kKeyF4 = 131;

UIShortcut<UIWindow> const kShortcutTable[] = {
    UIShortcut<UIWindow>(kKeyF4, UISystem::eCombinationKey_Option, &UIWindow::close),
};

} // namespace

// ---------------------------------------------------------------------------
// [SECTION] UISystemButton

UISystemButton::UISystemButton(eButtonType type) : mButtonType(type)
{
    setMinimumSize(sSize(kSide, kSide));
    setSize(sSize(kSide, kSide));
}

void UISystemButton::eventPaint(UIPainter* painter)
{
    UIButton::eventPaint(painter);
    sRect const r(getSize());
    sColor const color = UISystem::getInstance()->mFontColor;
    switch (mButtonType) {
    case eButtonType_Maximize:
        painter->drawLine(sPoint(r.left + 2, r.top + 2), sPoint(r.right - 3, r.top + 2), color);
        painter->drawLine(sPoint(r.left + 2, r.top + 3), sPoint(r.right - 3, r.top + 3), color);
        painter->drawLine(sPoint(r.left + 2, r.top + 4), sPoint(r.left + 2, r.bottom - 3), color);
        painter->drawLine(sPoint(r.right - 3, r.top + 2), sPoint(r.right - 3, r.bottom - 3), color);
        painter->drawLine(sPoint(r.left + 2, r.bottom - 3), sPoint(r.right - 2, r.bottom - 3), color);
        break;
    case eButtonType_Minimize:
        painter->drawLine(sPoint(r.left + 2, r.bottom - 3), sPoint(r.right - 2, r.bottom - 3), color);
        break;
    case eButtonType_Normalize: {
        int const middle = (r.top + r.bottom) / 2;
        painter->drawLine(sPoint(r.left + 2, middle), sPoint(r.right - 2, middle), color);
        break;
    }
    case eButtonType_Close:
        painter->drawLine(sPoint(r.left + 4, r.top + 4), sPoint(r.right - 3, r.bottom - 3), color);
        painter->drawLine(sPoint(r.left + 4, r.bottom - 4), sPoint(r.right - 3, r.top + 3), color);
        break;
    }
}

// ---------------------------------------------------------------------------
// [SECTION] Life

UIWindow::UIWindow(UIWindow* owner)
    : UIForm(0), mPriority(0), mStyle(eStyle_Convex), mWindowAttribute(0), mWindowStatus(0),
      mMoveBeginPosition(0, 0), mSizeBeginSize(0, 0), mpMinimizeButton(nullptr), mpMaximizeButton(nullptr),
      mpNormalizeButton(nullptr), mpCloseButton(nullptr), mpMainMenu(nullptr), mpOwnerWindow(owner)
{
    setBorderStyle(eBorderStyle_Convex);
    construct();
}

UIWindow::UIWindow(eStyle style, unsigned int windowAttribute, bool closeButton, bool minimizeButton,
                   bool maximizeButton, unsigned int formAttribute, UIWindow* owner)
    : UIForm(formAttribute), mPriority(0), mStyle(style), mWindowAttribute(windowAttribute), mWindowStatus(0),
      mMoveBeginPosition(0, 0), mSizeBeginSize(0, 0), mpMinimizeButton(nullptr), mpMaximizeButton(nullptr),
      mpNormalizeButton(nullptr), mpCloseButton(nullptr), mpMainMenu(nullptr), mpOwnerWindow(owner)
{
    if (closeButton) {
        mpCloseButton = addSystemButton(UISystemButton::eButtonType_Close);
    }
    if (minimizeButton) {
        mpMinimizeButton = addSystemButton(UISystemButton::eButtonType_Minimize);
    }
    if (maximizeButton) {
        mpMaximizeButton = addSystemButton(UISystemButton::eButtonType_Maximize);
    }
    if (minimizeButton || maximizeButton) {
        mpNormalizeButton = addSystemButton(UISystemButton::eButtonType_Normalize);
        mpNormalizeButton->sendMessage(UIHideMessage());
    }
    if (style == eStyle_Convex) {
        setBorderStyle(eBorderStyle_Convex);
    }
    construct();
}

void UIWindow::construct()
{
    setMinimumSize(sSize(kMinimumSide, kMinimumSide));
    setPosition(sPoint(kDefaultPlace, kDefaultPlace));
    UIMenu* menu = new UIMenu();
    menu->addItem("Minimize", this, &UIWindow::minimize, UIMenu::eItemAttribute_Normal, mpMinimizeButton != nullptr);
    menu->addItem("Maximize", this, &UIWindow::maximize, UIMenu::eItemAttribute_Normal, mpMaximizeButton != nullptr);
    menu->addSeparator();
    menu->addItem("Close", this, &UIWindow::close, UIMenu::eItemAttribute_Normal, mpCloseButton != nullptr);
    setMenu(menu);
}

UISystemButton* UIWindow::addSystemButton(UISystemButton::eButtonType type)
{
    UISystemButton* button = new UISystemButton(type);
    button->setFunction(this, &UIWindow::notifySystemButton);
    add(button);
    return button;
}

UIWindow::~UIWindow()
{
    delete mpMainMenu;
}

void UIWindow::setMainMenu(UIMainMenu* menu)
{
    UIMainMenu* old = mpMainMenu;
    mpMainMenu = menu;
    if (old != nullptr) {
        if (UISystem* system = UISystem::getInstance()) {
            system->notifyMainMenuChange(old, menu);
        }
        delete old;
    }
}

// ---------------------------------------------------------------------------
// [SECTION] Layout and events

void UIWindow::resetLayout()
{
    sPoint const at(static_cast<int>(getSize().width) - kButtonsFromRight, kButtonTop);
    if (mpMinimizeButton != nullptr) {
        mpMinimizeButton->setPosition(at);
    }
    for (UISystemButton* button : {mpMaximizeButton, mpNormalizeButton}) {
        if (button != nullptr) {
            button->setPosition(at + sPoint(static_cast<int>(UISystemButton::kSide), 0));
        }
    }
    if (mpCloseButton != nullptr) {
        mpCloseButton->setPosition(at + sPoint(2 * static_cast<int>(UISystemButton::kSide), 0));
    }
    sRect region = sRect(getSize());
    region.left += kFrame;
    region.top += kFrame;
    region.right -= kFrame;
    region.bottom -= kFrame;
    if ((mWindowAttribute & eWindowAttribute_TitleBar) != 0) {
        region.top += kTitleHeight;
    }
    if ((mWindowAttribute & eWindowAttribute_Sizable) != 0) {
        region.bottom -= kGripRoom;
    }
    setClientRegion(region);
}

UIShortcutBase const* UIWindow::findShortcut(unsigned int keyCode, unsigned int combinationKey) const
{
    if (UIShortcutBase const* found = UIForm::findShortcut(keyCode, combinationKey)) {
        return found;
    }
    return UIShortcut<UIWindow>::find(kShortcutTable, keyCode, combinationKey);
}

void UIWindow::eventCreate()
{
    resetLayout();
}

void UIWindow::eventClose()
{
    UISystem::getInstance()->removeWindow(this);
}

// The row above belongs to the menu bar. setPosition's guard ends the
// recursion.
void UIWindow::eventMove()
{
    if (getPosition().y < kTopLimit) {
        setPosition(sPoint(getPosition().x, kTopLimit));
    }
}

void UIWindow::eventSize()
{
    UIForm::eventSize();
}

void UIWindow::eventActive()
{
    mWindowStatus |= eWindowStatus_Active;
}

void UIWindow::eventDeactive()
{
    mWindowStatus &= ~static_cast<u32>(eWindowStatus_Active);
}

void UIWindow::notifySystemButton(UIButton* button)
{
    if (button == mpMinimizeButton) {
        minimize();
    } else if (button == mpMaximizeButton) {
        maximize();
    } else if (button == mpNormalizeButton) {
        normalize();
    } else if (button == mpCloseButton) {
        close();
    }
}

sRect UIWindow::getTitleRect() const
{
    return sRect(kFrame, kFrame, static_cast<int>(getSize().width) - kFrame, kTitleHeight);
}

sRect UIWindow::getGripRect() const
{
    int const right = static_cast<int>(getSize().width);
    int const bottom = static_cast<int>(getSize().height);
    return sRect(right - kGripSide, bottom - kGripSide, right, bottom);
}

sPoint UIWindow::getClampedPointer() const
{
    sPoint pointer = getDragBeginPosition() + getDragAmount();
    sRect const view = UISystem::getInstance()->getUIViewRect();
    pointer.x = pointer.x < 0 ? 0 : (pointer.x > view.right - 1 ? view.right - 1 : pointer.x);
    pointer.y = pointer.y < 0 ? 0 : (pointer.y > view.bottom - 1 ? view.bottom - 1 : pointer.y);
    return pointer;
}

void UIWindow::moveWindow()
{
    setPosition(mMoveBeginPosition + (getClampedPointer() - getDragBeginPosition()));
}

// From the size at the start of the drag: below the minimum the window
// stops, and follows the pointer again as soon as it comes back.
void UIWindow::sizeWindow()
{
    sPoint const change = getClampedPointer() - getDragBeginPosition();
    int const width = static_cast<int>(mSizeBeginSize.width) + change.x;
    int const height = static_cast<int>(mSizeBeginSize.height) + change.y;
    setSize(sSize(static_cast<unsigned int>(width < 0 ? 0 : width), static_cast<unsigned int>(height < 0 ? 0 : height)));
    resetLayout();
}

void UIWindow::eventMouseDown(sPoint const& position, unsigned int button)
{
    if ((button & kPrimary) == 0) {
        return;
    }
    unsigned int const movable = eWindowAttribute_TitleBar | eWindowAttribute_Movable;
    if ((mWindowAttribute & movable) == movable && getTitleRect().intersect(position)) {
        mWindowStatus |= eWindowStatus_Moving;
        mMoveBeginPosition = getPosition();
    }
    if ((mWindowAttribute & eWindowAttribute_Sizable) != 0 && getGripRect().intersect(position)) {
        mWindowStatus |= eWindowStatus_Sizing;
        mSizeBeginSize = getSize();
    }
}

void UIWindow::eventMouseMove(sPoint const& position)
{
    if ((mWindowAttribute & eWindowAttribute_Sizable) != 0) {
        setCursor(getGripRect().intersect(position) ? eCursor_SizeGrip : eCursor_Normal);
    }
    if ((mWindowStatus & eWindowStatus_Moving) != 0) {
        moveWindow();
    }
    if ((mWindowStatus & eWindowStatus_Sizing) != 0) {
        sizeWindow();
    }
}

void UIWindow::eventMouseUp(sPoint const&, unsigned int)
{
    mWindowStatus &= ~static_cast<u32>(eWindowStatus_Moving | eWindowStatus_Sizing);
}

void UIWindow::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    bool const active = (mWindowStatus & eWindowStatus_Active) != 0;
    painter->drawRect(sRect(getSize()), system->mWindowColor);
    drawBorder(painter);
    if ((mWindowAttribute & eWindowAttribute_TitleBar) != 0) {
        sRect const title = getTitleRect();
        painter->drawRect(title, active ? system->mActiveTitleBarColor : system->mDeactiveTitleBarColor);
        sRect text(title.left + 2, title.top + 2, title.right - 2, title.bottom - 2);
        UISystemButton const* limit = mpMaximizeButton != nullptr   ? mpMaximizeButton
                                      : mpMinimizeButton != nullptr ? mpMinimizeButton
                                                                    : mpCloseButton;
        if (limit != nullptr) {
            text.right = limit->getPosition().x - 2;
        }
        if (!mTitle.empty()) {
            painter->drawString(text, mTitle, active ? system->mActiveTitleFontColor : system->mDeactiveTitleFontColor,
                                eAlignment_LeftMiddle);
        }
    }
    if ((mWindowAttribute & eWindowAttribute_Sizable) != 0) {
        int const x = static_cast<int>(getSize().width) - kGripSide;
        int const y = static_cast<int>(getSize().height) - kGripSide;
        for (int n : {2, 6, 10}) {
            painter->drawLine(sPoint(x + 14, y + n), sPoint(x + n, y + 14), system->mHighLightColor);
        }
        for (int n : {3, 7, 11}) {
            painter->drawLine(sPoint(x + 14, y + n), sPoint(x + n, y + 14), system->mDarkLightColor);
        }
    }
    UIForm::eventPaint(painter);
}
