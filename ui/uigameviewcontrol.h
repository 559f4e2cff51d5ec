// UIGameViewControl: a widget that lives in no window but in UISystem's list
// of in-scene controls, hit-tested and drawn in the coordinates of the game
// views its mask names, over the scene. It edits its property as any control
// does. Events on the main thread; draw runs in the view pass with that
// pass's context.
#pragma once

#include "ui/uicontrol.h"

class UIGameViewControl : public UIControl {
public:
    // Read-write, a single value; a handle without a property may pass null.
    explicit UIGameViewControl(PropertyBase* property = nullptr)
        : UIControl(property, false, NoIndex, 0), mView(0xFF)
    {
    }

    // Bit n: the control belongs to view n.
    unsigned int getView() const { return mView; }
    void setView(unsigned int view) { mView = view; }

    virtual void draw(UIPainter* painter) = 0;

private:
    u32 mView;
};
