// The two views of the animation editor. AnimationView draws the animation
// that the editor plays and moves the primitive of the selected track with
// the mouse and the arrow keys; TextureView shows the animation's texture and
// picks a cell's or generator's rectangle on it. Both change the objects of
// the played AnimSequencer, never the resource: a change enters the sequence
// when the user adds a key. They keep nothing but a word of flags and read
// the selection from their host at every event and paint. Main thread for
// events; update and paint in the window's job.
#pragma once

#include "foundation/fixedmath.h"
#include "foundation/types.h"
#include "ui/uiform.h"

class AnimResource;
class AnimSequencer;
class ObjectBase;
class SequencerKey;
class SequencerLane;
class SequencerTrack;
class TextureResource;
class UIPainter;
class UIParameterControl;
class UIResourceControl;

// What the views ask of the editor that holds them: the played sequencer,
// the edited animation and the timeline's selection. Any of them may be null.
class AnimViewHost {
public:
    virtual ~AnimViewHost() {}

    virtual AnimSequencer* getViewSequencer() const = 0;
    virtual AnimResource* getViewResource() const = 0;
    virtual SequencerTrack* getViewSelectTrack() const = 0;
    virtual SequencerKey* getViewSelectKey() const = 0;

    // The sequencer's object of the selected track, or null without a
    // selection or when the sequencer has not built that track yet.
    ObjectBase* getSelectObject() const;
};

// Key codes both views answer.
enum eAnimViewKey {
    eAnimViewKey_Space = 32,
    eAnimViewKey_ZoomIn = 43,  // "+"
    eAnimViewKey_ZoomOut = 45, // "-"
    eAnimViewKey_Focus = 70,   // "F"
    eAnimViewKey_Left = 160,
    eAnimViewKey_Up = 161,
    eAnimViewKey_Right = 162,
    eAnimViewKey_Down = 163,
    eAnimViewKey_Home = 166,
};

// ---------------------------------------------------------------------------
// Both views

// What both views share: the host and the scrolled form, the background,
// a remembered point and a word of flags holding the drag mode, the Space
// key, the grid and the zoom. The bits sit differently in each view, so each
// tells its own layout; Space, "+", "-", the release of the mouse and the
// "Grid" row, first in the context menu, behave the same in both.
class AnimViewBase : public UIBase {
public:
    static constexpr int kMaxZoom = 8;
    static constexpr int kGridStep = 16;

    u32 getFlags() const { return mFlags; }
    u32 getDragMode() const { return mFlags & mDragModeMask; }
    bool isGrid() const { return (mFlags & mGridBit) != 0; }
    int getZoom() const { return static_cast<int>((mFlags >> mZoomShift) & kZoomBits); }
    // 1 to 8; resizes the canvas and keeps the centre of the shown part.
    void setZoom(int zoom);
    sColor getBackground() const { return mBackground; }

    // The context menu's row.
    void evGrid();

    void eventMouseUp(sPoint const& position, unsigned int button) override;
    void eventKeyUp(unsigned int key, unsigned int combination) override;

protected:
    // dragModeMask: the low bits of the drag mode; spaceBit and gridBit: one
    // bit each; zoomShift: where the four bits of the zoom start. flags: the
    // start value, the zoom included.
    AnimViewBase(AnimViewHost* host, UIForm* form, u32 dragModeMask, u32 spaceBit, u32 gridBit, u32 zoomShift,
                 u32 flags);

    void setDragMode(u32 mode) { mFlags = (mFlags & ~mDragModeMask) | mode; }
    // Space, "+" and "-"; false for any other key.
    bool keyView(unsigned int key);
    // With Space held, a primary press starts scrolling in the given mode;
    // false without Space.
    bool beginScroll(u32 scrollMode);
    // Follows a scrolling drag.
    void scrollByDrag();
    // The canvas at the zoom.
    virtual void resizeCanvas() = 0;

    AnimViewHost* mpHost;
    UIForm* mpForm;
    sColor mBackground;
    sPoint mRemember;
    u32 mFlags;

private:
    static constexpr u32 kZoomBits = 0xF;

    u32 const mDragModeMask;
    u32 const mSpaceBit;
    u32 const mGridBit;
    u32 const mZoomShift;
};

// ---------------------------------------------------------------------------
// Texture side

// mRemember: picking, the press; scrolling, the scroll position.
class TextureView : public AnimViewBase {
public:
    enum eDragMode {
        eDragMode_None = 0,
        eDragMode_Pick = 1,
        eDragMode_Scroll = 2,
    };
    static constexpr u32 kDragModeMask = 3;
    static constexpr u32 kSpaceBit = 4;
    static constexpr u32 kGridBit = 8;
    static constexpr u32 kZoomShift = 4;

    // form: the scrolled form that holds the view.
    TextureView(AnimViewHost* host, UIForm* form);
    // Releases the texture.
    ~TextureView() override;

    TextureResource* getTexture() const { return mpTexture; }

    // Follows the animation's texture and keeps the canvas at its size
    // times the zoom.
    void update(float deltaTime) override;
    void eventPaint(UIPainter* painter) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventMouseMove(sPoint const& position) override;
    void eventKeyDown(unsigned int key, unsigned int combination) override;

protected:
    void resizeCanvas() override;

private:
    void takeTexture();
    // The selected track's object when it is exactly a cell or a generator.
    ObjectBase* getPickObject() const;

    TextureResource* mpTexture;
};

// The texture's resource field, its size and the scrolled TextureView.
class TextureForm : public UIForm {
public:
    static constexpr int kFieldHeight = 32;
    static constexpr int kResourceWidth = 160;
    static constexpr int kSizeWidth = 48;

    explicit TextureForm(AnimViewHost* host);

    // The animation's texture; set goes on to AnimResource::setTexture.
    TextureResource* getTexture() const;
    void setTexture(TextureResource* texture);
    // Zero without a texture or before it is loaded.
    u32 getTextureWidth() const;
    u32 getTextureHeight() const;
    void setTextureSize(u32) {}

    TextureView* getView() const { return mpView; }
    UIForm* getViewForm() const { return mpViewForm; }
    UIResourceControl* getTextureControl() const { return mpTextureControl; }

    // Fields along the top, the view's form in the rest.
    void update(float deltaTime) override;

private:
    AnimViewHost* mpHost;
    UIResourceControl* mpTextureControl;
    UIParameterControl* mpWidthControl;
    UIParameterControl* mpHeightControl;
    UIForm* mpViewForm;
    TextureView* mpView;
};

// ---------------------------------------------------------------------------
// Animation side

// mRemember: dragging, the object's start; scrolling, the scroll position.
class AnimationView : public AnimViewBase {
public:
    enum eDragMode {
        eDragMode_None = 0,
        eDragMode_Cell = 1,
        eDragMode_Collision = 2,
        eDragMode_Generator = 3,
        eDragMode_Sequencer = 4,
        eDragMode_Scroll = 5,
    };
    enum eBackground {
        eBackground_Black,
        eBackground_Red,
        eBackground_Green,
        eBackground_Blue,
        eBackground_White,
        eBackground_Num
    };
    static constexpr u32 kDragModeMask = 7;
    static constexpr u32 kSpaceBit = 8;
    static constexpr u32 kGridBit = 16;
    static constexpr u32 kCurveBit = 32;
    static constexpr u32 kZoomShift = 6;
    // The canvas at zoom 1; positions are kept within half of it each way.
    static constexpr int kCanvasSide = 1024;
    static constexpr int kPositionMin = -512;
    static constexpr int kPositionMax = 511;
    // Handle of a generator or a nested animation: this many pixels each way.
    static constexpr int kHandleHalf = 16;
    static constexpr int kKeyCrossHalf = 4;
    static constexpr int kHermiteSteps = 10;
    static constexpr int kArcRadius = 128;
    static constexpr int kDirectionLength = 160;
    static constexpr unsigned int kCircleSegments = 16;

    AnimationView(AnimViewHost* host, UIForm* form);

    bool isCurve() const { return (mFlags & kCurveBit) != 0; }
    // The canvas point of the animation's origin.
    sPoint getCenter() const;

    // The context menu's rows besides "Grid".
    void evCurve();
    void evBGBlack() { setBackground(eBackground_Black); }
    void evBGRed() { setBackground(eBackground_Red); }
    void evBGGreen() { setBackground(eBackground_Green); }
    void evBGBlue() { setBackground(eBackground_Blue); }
    void evBGWhite() { setBackground(eBackground_White); }

    // The eleven canvas points of the Hermite span from key index to the
    // next key of a "Position" lane: the start and ten steps.
    static void makeHermitePoints(SequencerLane const* lane, u32 index, sPoint const& center, int zoom,
                                  sPoint (&points)[kHermiteSteps + 1]);

    void update(float deltaTime) override;
    void eventPaint(UIPainter* painter) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventMouseMove(sPoint const& position) override;
    void eventKeyDown(unsigned int key, unsigned int combination) override;

protected:
    void resizeCanvas() override;

private:
    void setBackground(unsigned int background);
    void scrollTo(sPoint const& canvasPoint);

    // texture: the root's, null to take the sequencer's.
    void drawAnimation(UIPainter* painter, AnimSequencer const* sequencer, TextureResource const* texture,
                       sMatrix const& matrix, sColorF const& parent) const;
    void drawGrid(UIPainter* painter) const;
    void drawCurve(UIPainter* painter, SequencerTrack const* track) const;
    void drawHermiteCurve(UIPainter* painter, SequencerLane const* lane, u32 index, sColor color) const;
    void drawFrame(UIPainter* painter, ObjectBase const* object, sColor color) const;
};

// The scrolled AnimationView, filling the form.
class AnimationForm : public UIForm {
public:
    explicit AnimationForm(AnimViewHost* host);

    AnimationView* getView() const { return mpView; }

    // Fills the form; at the first layout that shows the bars, scrolls the
    // animation's origin into the middle.
    void update(float deltaTime) override;

private:
    AnimationView* mpView;
    bool mCentred;
};
