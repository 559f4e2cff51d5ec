// UIGameViewControl: a widget that lives in no window but in UISystem's list
// of in-scene controls, hit-tested and drawn in the coordinates of the game
// views its mask names, over the scene. Events on the main thread; draw runs
// in the view pass with that pass's context.
#pragma once

#include "ui/uibase.h"

class UIGameViewControl : public UIBase {
public:
    UIGameViewControl() : mView(0xFF) {}

    // Bit n: the control belongs to view n.
    unsigned int getView() const { return mView; }
    void setView(unsigned int view) { mView = view; }

    virtual void draw(UIPainter* painter) = 0;

private:
    u32 mView;
};
