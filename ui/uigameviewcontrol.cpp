#include "ui/uigameviewcontrol.h"

#include <cmath>
#include <initializer_list>

#include "foundation/boundingbox.h"
#include "foundation/debug.h"
#include "reflection/property.h"
#include "ui/uimessage.h"
#include "ui/uipainter.h"

namespace {

unsigned int const kPrimary = 1;

sPoint toPoint(sVector const& vector)
{
    return sPoint(static_cast<int>(vector.x), static_cast<int>(vector.y));
}

sVector toVector(sPoint const& point)
{
    return sVector(sFixed(point.x, 16), sFixed(point.y, 16));
}

// A line from the centre to the tip with a triangle head 8 pixels long.
void drawArrow(UIPainter* painter, sPoint const& from, sPoint const& tip, sPoint const& back, sPoint const& side,
               sColor color)
{
    painter->drawLine(from, tip, color);
    painter->drawTriangle(tip, back + side, back - side, color);
}

} // namespace

UIGameViewControl::UIGameViewControl(PropertyBase* property)
    : UIControl(property, false, NoIndex, 0), mView(0xFF)
{
}

// ---------------------------------------------------------------------------
// UIPositionControl

sRect const UIPositionControl::mCenterCube(-8, -8, 8, 8);
sRect const UIPositionControl::mUpArrow(-3, -64, 3, 0);
sRect const UIPositionControl::mRightArrow(0, -3, 64, 3);

UIPositionControl::UIPositionControl(PropertyBase* property)
    : UIGameViewControl(property), mBeginPosition(), mDragMode(eDragMode_None)
{
    if (property->getType() != ePropertyType_Vector) {
        dev_assert("Invalid property type.", __FILE__, __LINE__);
    }
}

UIBase* UIPositionControl::intersect(sPoint const& point, sRect const&)
{
    if (!isVisible()) {
        return nullptr;
    }
    sPoint const relative = point - getPosition();
    for (sRect const* rect : {&mCenterCube, &mUpArrow, &mRightArrow}) {
        if (rect->intersect(relative)) {
            return this;
        }
    }
    return nullptr;
}

void UIPositionControl::eventMouseDown(sPoint const& position, unsigned int button)
{
    if ((button & kPrimary) == 0) {
        mDragMode = eDragMode_None;
        return;
    }
    sendMessage(UIBeginEditMessage());
    mBeginPosition = mpProperty->getByType<sVector>(PropertyBase::CurrentIndex);
    // Game-view controls are laid out by nobody: their own position is the
    // place in the view, and events arrive in view coordinates.
    sPoint const relative = position - getPosition();
    mDragMode = mCenterCube.intersect(relative) ? eDragMode_Free
                : mUpArrow.intersect(relative)  ? eDragMode_Y
                                                : eDragMode_X;
}

void UIPositionControl::eventMouseMove(sPoint const&)
{
    if (mDragMode == eDragMode_None || !isDragging()) {
        return;
    }
    sVector position = mBeginPosition;
    sVector const amount = toVector(getDragAmount());
    if (mDragMode != eDragMode_Y) {
        position.x += amount.x;
    }
    if (mDragMode != eDragMode_X) {
        position.y += amount.y;
    }
    mpProperty->setByType<sVector>(position, PropertyBase::CurrentIndex);
}

void UIPositionControl::eventMouseUp(sPoint const&, unsigned int)
{
    if (mDragMode != eDragMode_None) {
        sendMessage(UIEndEditMessage());
    }
    mDragMode = eDragMode_None;
}

void UIPositionControl::draw(UIPainter* painter)
{
    sPoint const at = getPosition();
    sColor const up = mDragMode == eDragMode_Y ? sColor(255, 128, 128, 255) : sColor::Red;
    sColor const right = mDragMode == eDragMode_X ? sColor(128, 255, 128, 255) : sColor::Green;
    drawArrow(painter, at, at + sPoint(0, mUpArrow.top), at + sPoint(0, mUpArrow.top + kHeadLength), sPoint(3, 0), up);
    drawArrow(painter, at, at + sPoint(mRightArrow.right, 0), at + sPoint(mRightArrow.right - kHeadLength, 0),
              sPoint(0, 3), right);
    painter->drawRect(sRect(at.x + mCenterCube.left, at.y + mCenterCube.top, at.x + mCenterCube.right,
                            at.y + mCenterCube.bottom),
                      mDragMode == eDragMode_Free ? sColor::White : sColor::Gray);
}

// ---------------------------------------------------------------------------
// UIDirectionControl

UIDirectionControl::UIDirectionControl(PropertyBase* property) : UIGameViewControl(property), mTurning(false)
{
    if (property->getType() != ePropertyType_Fixed) {
        dev_assert("Invalid property type.", __FILE__, __LINE__);
    }
}

// The tip at (-96, 0) points up at angle 0: the frame turns by the angle
// and a quarter.
sMatrix UIDirectionControl::getMatrix() const
{
    sFixed const angle = mpProperty->getByType<sFixed>(PropertyBase::CurrentIndex);
    return sMatrix(sVector(sFixed::One, sFixed::One), angle + sFixed(90, 16), toVector(getPosition()));
}

UIBase* UIDirectionControl::intersect(sPoint const& point, sRect const&)
{
    if (!isVisible()) {
        return nullptr;
    }
    sMatrix const matrix = getMatrix();
    sOBB const box(matrix.transform(sVector(sFixed(-kBoxCenter, 16), sFixed::Zero)),
                   matrix.transformNormal(sVector(sFixed::One, sFixed::Zero)),
                   matrix.transformNormal(sVector(sFixed::Zero, sFixed::One)),
                   sVector(sFixed(kBoxHalfLength, 16), sFixed(kBoxHalfWidth, 16)));
    return box.intersect(toVector(point)) ? this : nullptr;
}

void UIDirectionControl::eventMouseDown(sPoint const&, unsigned int button)
{
    if ((button & kPrimary) != 0) {
        mTurning = true;
        sendMessage(UIBeginEditMessage());
    }
}

void UIDirectionControl::eventMouseMove(sPoint const& position)
{
    if (!mTurning || !isDragging()) {
        return;
    }
    sPoint const vector = position - getPosition();
    float degrees;
    if (vector.x != 0) {
        float const angle = atan2f(static_cast<float>(vector.y), static_cast<float>(vector.x));
        degrees = fmodf(90.0f + angle * 180.0f / 3.1415925f, 360.0f);
    } else {
        degrees = vector.y >= 0 ? 180.0f : 0.0f;
    }
    mpProperty->setByType<sFixed>(sFixed(degrees), PropertyBase::CurrentIndex);
}

void UIDirectionControl::eventMouseUp(sPoint const&, unsigned int)
{
    if (mTurning) {
        sendMessage(UIEndEditMessage());
    }
    mTurning = false;
}

void UIDirectionControl::draw(UIPainter* painter)
{
    sMatrix const matrix = getMatrix();
    sPoint const tip = toPoint(matrix.transform(sVector(sFixed(-kTip, 16), sFixed::Zero)));
    sPoint const left = toPoint(matrix.transform(sVector(sFixed(-88, 16), sFixed(-4, 16))));
    sPoint const right = toPoint(matrix.transform(sVector(sFixed(-88, 16), sFixed(4, 16))));
    sColor const color = mTurning ? sColor(255, 255, 128, 255) : sColor::Yellow;
    painter->drawLine(getPosition(), tip, color);
    painter->drawTriangle(tip, left, right, color);
}
