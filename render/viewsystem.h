// ViewSystem: the fixed table of seven views. A view is a number, a viewport
// (where on the window) and a projection (which world rectangle it shows);
// the number is also the top four bits of every sort key, so views are drawn
// in the order of their numbers. Views 1 to 4 are the game views, drawn here
// each frame; 0, 5 (interface) and 6 (overlay) are addressed by others.
// What a view's pass draws is registered with it (units, widgets in the
// scene, the tools' recorded drawing), so that this layer calls none of them.
// Main thread; the views' rectangles are read by drawing jobs.
#pragma once

#include "app/system.h"
#include "reflection/objectlist.h"
#include "foundation/autostring.h"
#include "foundation/callbacklist.h"
#include "foundation/types.h"
#include "reflection/objectbase.h"

class DrawContext;

class ViewSystem : public System {
public:
    static constexpr u32 kViewNum = 7;
    static constexpr u32 kGameViewFirst = 1;
    static constexpr u32 kGameViewLast = 4;
    static constexpr u32 kInterfaceView = 5;
    static constexpr u32 kOverlayView = 6;
    static constexpr int kGridPitch = 32; // world units between grid lines
    static constexpr u32 kDrawerNum = 8;  // per view, the grid's included

    typedef CallbackList<DrawContext*, kDrawerNum> DrawerList;

    // Where in a view's pass a drawer runs; equal stages in the order of
    // registration.
    enum eDrawStage {
        eDrawStage_Scene,     // units
        eDrawStage_Interface, // widgets that live in the scene
        eDrawStage_Grid,      // the view's own grid
        eDrawStage_Overlay,   // the tools' recorded drawing
        eDrawStage_Num
    };

    // Publishes its properties under ObjectBase's record: a part of this
    // system, not a class anyone creates by name.
    class View : public ObjectBase {
    public:
        View();

        // One pass of this view: sets the view state, then calls the
        // drawers in the order of their stages, all through that state.
        void draw(DrawContext* context);

        u32 getIndex() const { return mIndex; }
        AutoString const& getName() const { return mName; }

        // Name, Enable, Grid, Viewport, Projection.
        void makePropertyList(PropertyList& list) override;

    private:
        friend class ViewSystem;

        void drawGrid(DrawContext* context);

        DrawerList mDrawers;
        AutoString mName;
        bool mEnable;
        bool mGrid;
        sRect mViewport;
        sRect mProjection;
        u32 mIndex;
    };

    static ViewSystem* create();
    static ViewSystem* getInstance() { return mpInstance; }
    void destroy() override;

    DECLARE_TYPEINFO(TypeInfo)

    void preprocess() override {}
    // Draws the enabled game views, 1 to 4 in order, through one context.
    void update() override;
    void postprocess() override {}

    bool getEnable(unsigned int view) const { return mViews[view].mEnable; }
    void setEnable(unsigned int view, bool enable) { mViews[view].mEnable = enable; }
    bool getGrid(unsigned int view) const { return mViews[view].mGrid; }
    void setGrid(unsigned int view, bool grid) { mViews[view].mGrid = grid; }
    sRect getViewport(unsigned int view) const { return mViews[view].mViewport; }
    sRect getProjection(unsigned int view) const { return mViews[view].mProjection; }
    // The window's bounds event sets views 0, 5 and 6 to the new size.
    void setViewport(unsigned int view, sRect const& rect) { mViews[view].mViewport = rect; }
    void setProjection(unsigned int view, sRect const& rect) { mViews[view].mProjection = rect; }
    View& getView(unsigned int view) { return mViews[view]; }

    // A drawer for one view's pass, or for each game view's; a full table is
    // fatal. removeDrawer takes every drawer of the object from every view.
    void addDrawer(unsigned int view, eDrawStage stage, DrawerList::Function function, void* object);
    void addGameViewDrawer(eDrawStage stage, DrawerList::Function function, void* object);
    void removeDrawer(void* object);

    // Views 0, 5 and 6 follow the window's size.
    void notifyResize(sRect const& window);

    // A table over the four game views, 354 by 82; a confirmed row opens the
    // dialog "GAME%d" on that view's Enable, Grid, Viewport and Projection.
    void makeUIList(List<UIBase>& list) override;
    void eventSelectList(unsigned int) {}
    void eventDecideList(unsigned int row);
    void eventViewEditEnd() {}

protected:
    ViewSystem();
    ~ViewSystem() override;

private:
    View mViews[kViewNum];
    ObjectList mGameViewList; // the game views, for the table; not owned

    static ViewSystem* mpInstance;
};
