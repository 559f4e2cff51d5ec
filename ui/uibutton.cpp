#include "ui/uibutton.h"

#include "ui/uimessage.h"
#include "ui/uipainter.h"
#include "ui/uisystem.h"

namespace {

unsigned int const kPrimary = 1;
int const kTriangleInset = 3;
int const kPulldownWidth = 12;
int const kPulldownHeight = 16;

} // namespace

UIButton::UIButton() : mpFunction(nullptr), mPressed(false), mpCaption(nullptr)
{
    setBorderStyle(eBorderStyle_Convex);
}

UIButton::~UIButton()
{
    delete mpFunction;
}

void UIButton::setFunction(Function* function)
{
    delete mpFunction;
    mpFunction = function;
}

void UIButton::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    painter->drawRect(sRect(getSize()), system->mWindowColor);
    drawBorder(painter);
    if (mpCaption != nullptr) {
        painter->drawString(sRect(getSize()), mpCaption, system->mFontColor, eAlignment_CenterMiddle);
    }
}

// Deliberately the local position against the absolute region: the pressed
// look hangs on the border alone, which only press and release change.
void UIButton::eventMouseMove(sPoint const& position)
{
    if (isDragging() && (getDragButton() & kPrimary) != 0) {
        mPressed = getAbsRegion().intersect(position);
    }
}

void UIButton::eventMouseDown(sPoint const&, unsigned int button)
{
    if ((button & kPrimary) != 0) {
        mPressed = true;
        setBorderStyle(eBorderStyle_Concave);
    }
}

void UIButton::eventMouseUp(sPoint const& position, unsigned int button)
{
    if (mpFunction != nullptr && (button & kPrimary) != 0 && sRect(getSize()).intersect(position)) {
        (*mpFunction)(this);
    }
    mPressed = false;
    setBorderStyle(eBorderStyle_Convex);
}

UISpinButton::UISpinButton(eDirection direction) : UISpinButton(direction, 500, 100)
{
}

UISpinButton::UISpinButton(eDirection direction, unsigned int repeatDelay, unsigned int repeatInterval)
    : mDirection(direction), mRepeatDelay(repeatDelay), mRepeatInterval(repeatInterval)
{
}

void UISpinButton::eventPaint(UIPainter* painter)
{
    UIButton::eventPaint(painter);
    sRect const r(getSize());
    int const left = r.left + kTriangleInset;
    int const right = r.right - kTriangleInset;
    int const top = r.top + kTriangleInset;
    int const bottom = r.bottom - kTriangleInset;
    int const middleX = (r.left + r.right) / 2;
    int const middleY = (r.top + r.bottom) / 2;
    sColor const color = UISystem::getInstance()->mFontColor;
    switch (mDirection) {
    case eDirection_Left:
        painter->drawTriangle(sPoint(left, middleY), sPoint(right, top), sPoint(right, bottom), color);
        break;
    case eDirection_Right:
        painter->drawTriangle(sPoint(right, middleY), sPoint(left, bottom), sPoint(left, top), color);
        break;
    case eDirection_Up:
        painter->drawTriangle(sPoint(middleX, top), sPoint(right, bottom), sPoint(left, bottom), color);
        break;
    case eDirection_Down:
        painter->drawTriangle(sPoint(middleX, bottom), sPoint(left, top), sPoint(right, top), color);
        break;
    }
}

void UIPulldownButton::init()
{
    setMinimumSize(sSize(kPulldownWidth, kPulldownHeight));
}

void UIPulldownButton::eventPaint(UIPainter* painter)
{
    UIButton::eventPaint(painter);
    sRect const r(getSize());
    painter->drawTriangle(sPoint(r.left + r.getWidth() / 2, r.bottom - kTriangleInset),
                          sPoint(r.left + kTriangleInset, r.top + kTriangleInset),
                          sPoint(r.right - kTriangleInset, r.top + kTriangleInset), UISystem::getInstance()->mFontColor);
}

UISlideButton::UISlideButton() : mpSlideFunction(nullptr), mpEditTarget(nullptr)
{
    setCaption("~");
}

UISlideButton::~UISlideButton()
{
    delete mpSlideFunction;
}

void UISlideButton::setSlideFunction(Function* function)
{
    delete mpSlideFunction;
    mpSlideFunction = function;
}

int UISlideButton::getSlideAmount() const
{
    return isDragging() ? getDragAmount().y : 0;
}

void UISlideButton::eventMouseMove(sPoint const& position)
{
    UIButton::eventMouseMove(position);
    if (mpSlideFunction != nullptr) {
        (*mpSlideFunction)(this);
    }
}

void UISlideButton::eventMouseDown(sPoint const& position, unsigned int button)
{
    UIButton::eventMouseDown(position, button);
    if (mpEditTarget != nullptr) {
        mpEditTarget->sendMessage(UIBeginEditMessage());
    }
}

void UISlideButton::eventMouseUp(sPoint const& position, unsigned int button)
{
    UIButton::eventMouseUp(position, button);
    if (mpEditTarget != nullptr) {
        mpEditTarget->sendMessage(UIEndEditMessage());
    }
}
