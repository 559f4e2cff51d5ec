// Game-view controls: widgets that live in no window but in UISystem's list
// of in-scene controls, hit-tested and drawn in the coordinates of the game
// views their mask names, over the scene, and clipped by nothing. They are
// handles that edit a property of a unit: UIPositionControl drags a
// fixed-point vector (free by the centre square, along one axis by an
// arrow), UIDirectionControl turns an angle in degrees (0 up, clockwise).
// Their owner moves them to the unit's place each frame. Events on the main
// thread; draw runs in the view pass with that pass's context.
#pragma once

#include "foundation/fixedmath.h"
#include "ui/uicontrol.h"

class UIGameViewControl : public UIControl {
public:
    // Read-write, a single value, no widget attribute; in every view.
    explicit UIGameViewControl(PropertyBase* property);

    // Bit n: the control belongs to view n.
    unsigned int getView() const { return mView; }
    void setView(unsigned int view) { mView = view; }

    virtual void draw(UIPainter* painter) = 0;

private:
    u32 mView;
};

class UIPositionControl : public UIGameViewControl {
public:
    enum eDragMode {
        eDragMode_None,
        eDragMode_Free,
        eDragMode_X,
        eDragMode_Y,
    };
    // Relative to the control's position; tested in this order.
    static sRect const mCenterCube;
    static sRect const mUpArrow;
    static sRect const mRightArrow;
    static constexpr int kHeadLength = 8;

    // "Invalid property type." for anything but a vector.
    explicit UIPositionControl(PropertyBase* property);

    unsigned int getDragMode() const { return mDragMode; }

    UIBase* intersect(sPoint const& point, sRect const& clip) override;
    void eventMouseMove(sPoint const& position) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventMouseUp(sPoint const& position, unsigned int button) override;
    void draw(UIPainter* painter) override;

private:
    sVector mBeginPosition;
    u32 mDragMode;
};

class UIDirectionControl : public UIGameViewControl {
public:
    // The handle's box, in the control's turned frame: 48 units along the
    // direction, half extents 96 by 4.
    static constexpr int kBoxCenter = 48;
    static constexpr int kBoxHalfLength = 96;
    static constexpr int kBoxHalfWidth = 4;
    static constexpr int kTip = 96;

    // "Invalid property type." for anything but a fixed-point angle.
    explicit UIDirectionControl(PropertyBase* property);

    bool isTurning() const { return mTurning; }

    UIBase* intersect(sPoint const& point, sRect const& clip) override;
    void eventMouseMove(sPoint const& position) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventMouseUp(sPoint const& position, unsigned int button) override;
    void draw(UIPainter* painter) override;

private:
    // Turns the tip's frame, (-96, 0) pointing the way, by the angle and
    // moves it to the control's place.
    sMatrix getMatrix() const;

    bool mTurning;
};
