// UIScrollBar: a range [minimum, maximum] of which [position, position +
// range) is visible, shown as a track with a thumb between two spin buttons.
// One spin click or one wheel unit is one step; a click beside the thumb
// moves half a page; dragging the thumb maps pixels onto the whole span.
#pragma once

#include "ui/uibase.h"

class UIButton;
class UISpinButton;

enum eBarDirection {
    eBarDirection_Horizontal,
    eBarDirection_Vertical,
};

class UIScrollBar : public UIBase {
public:
    explicit UIScrollBar(eBarDirection direction);

    int getBarPosition() const { return mBarPosition; }
    unsigned int getBarRange() const { return mBarRange; }
    int getMinimum() const { return mMinimum; }
    int getMaximum() const { return mMaximum; }
    eBarDirection getDirection() const { return mDirection; }
    // Clamped to [minimum, maximum]: the maximum itself, not the maximum less
    // the range, is the upper limit here; setBarRange alone keeps the range
    // inside.
    void setBarPosition(int position);
    void setMinimum(int minimum);
    void setMaximum(int maximum);
    void setBarRange(unsigned int range);
    void decrement();
    void increment();
    // The thumb, relative to the bar; the zero rectangle when the whole span
    // is visible or the span is under 5.
    sRect getBarRegion() const;
    // The spin buttons' callback.
    void notifySpinButton(UIButton* button);
    UISpinButton* getDecrementButton() const { return mpDecrementButton; }
    UISpinButton* getIncrementButton() const { return mpIncrementButton; }

    void update(float deltaTime) override;
    void eventPaint(UIPainter* painter) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventMouseMove(sPoint const& position) override;
    void eventMouseUp(sPoint const& position, unsigned int button) override;
    void eventMouseWheel(sPoint const& amount) override;

private:
    int getLength() const;
    int getThickness() const;

    eBarDirection mDirection;
    s32 mBarPosition;
    u32 mBarRange;
    s32 mMinimum;
    s32 mMaximum;
    bool mThumbDragging;
    s32 mDragBeginBarPosition;
    UISpinButton* mpDecrementButton;
    UISpinButton* mpIncrementButton;
};
