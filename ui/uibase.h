// UIBase: the root of every widget the program draws itself. A node in a
// tree (the parent owns its children and its pop-up menu), with a position
// relative to the parent, a size, an absolute region and a clipped draw
// region rewritten every frame, state bits, drag tracking and the event
// operations. Everything reaches a widget through sendMessage; nothing calls
// the event operations directly. The tree changes on the main thread only;
// timer, update, layout and paint of one top-level window run in one job.
#pragma once

#include <cstddef>

#include "foundation/list.h"
#include "foundation/types.h"
#include "reflection/objectbase.h"

class UIMenu;
class UIMessage;
class UIPainter;
class UIShortcutBase;

// The cursor shown while the pointer is over a widget.
enum eCursor {
    eCursor_Normal,
    eCursor_SizeGrip,      // shows the normal arrow on purpose
    eCursor_SplitUpDown,   // horizontal splitter bar
    eCursor_SplitLeftRight,// vertical splitter bar
    eCursor_PointingHand,
    eCursor_OpenHand,
    eCursor_ClosedHand,
    eCursor_Num
};

enum eBorderStyle {
    eBorderStyle_None,
    eBorderStyle_Frame,    // plain frame in the border colour
    eBorderStyle_Convex,
    eBorderStyle_Concave,
    eBorderStyle_Num
};

class UIBase : public ObjectBase {
public:
    // mAttribute: constant, given to the constructor.
    enum {
        eAttribute_RowItem = 1,   // takes the whole row in an aligned client area
        eAttribute_Floating = 2,  // not clipped by the parent; paints one priority up
    };
    // mStatus: run-time state.
    enum {
        eStatus_Created = 1,
        eStatus_Active = 2,
        eStatus_Focused = 4,
        eStatus_Visible = 8,
        eStatus_Enabled = 16,
        eStatus_HasFloating = 32, // a child floats or holds such a child
        eStatus_InMove = 64,      // guard of setPosition's eventMove
        eStatus_InSize = 128,     // guard of setSize's eventSize
    };

    explicit UIBase(unsigned int attribute = 0);
    // Forgets itself in UISystem first, then deletes the children and the menu.
    ~UIBase() override;

    // Every widget class lives in the global heap through these.
    static void* operator new(std::size_t size) noexcept { return allocate(static_cast<unsigned int>(size)); }
    static void operator delete(void* pointer) { deallocate(pointer); }
    static void* allocate(unsigned int size);
    static void deallocate(void* pointer);

    // -- Virtual operations, in slot order.
    // The base updates the children in list order.
    virtual void update(float deltaTime);
    virtual void updateRegion(sRect const& parentRegion, sRect const& parentDrawRegion);
    // The widget under point (view coordinates) within clip, or null.
    virtual UIBase* intersect(sPoint const& point, sRect const& clip);
    virtual UIShortcutBase const* findShortcut(unsigned int keyCode, unsigned int combinationKey) const;
    virtual void eventCreate() {}
    virtual void eventDestroy() {}
    virtual void eventClose() {}
    virtual void eventShow() {}
    virtual void eventHide() {}
    virtual void eventMove() {}
    virtual void eventSize() {}
    virtual void eventMaximize() {}
    virtual void eventMinimize() {}
    virtual void eventNormalize() {}
    virtual void eventActive() {}
    virtual void eventDeactive() {}
    virtual void eventFocus() {}
    virtual void eventDefocus() {}
    virtual void eventEnable() {}
    virtual void eventDisable() {}
    virtual void eventTimer(float) {}
    virtual void eventPaint(UIPainter*) {}
    // Mouse positions are relative to this widget's top left.
    virtual void eventMouseMove(sPoint const&) {}
    virtual void eventMouseDown(sPoint const&, unsigned int) {}
    virtual void eventMouseUp(sPoint const&, unsigned int) {}
    virtual void eventMouseWheel(sPoint const&) {}
    virtual void eventMouseDoubleClick(sPoint const&, unsigned int) {}
    virtual void eventKeyDown(unsigned int, unsigned int) {}
    virtual void eventKeyUp(unsigned int, unsigned int) {}
    virtual void eventBeginEdit() {}
    virtual void eventEndEdit() {}
    // Every message type without an operation of its own (6 to 10, 28 up).
    virtual void eventCustom(UIMessage const&) {}

    // -- Tree. add does not check for a second add of the same widget.
    void add(UIBase* child);
    // Leaves the parent, not deleted; nothing without a parent.
    void remove();
    void removeChildren();
    unsigned int getChildCount() const { return mChildren.size(); }
    List<UIBase>::Iterator getChildrenBegin() const { return mChildren.begin(); }
    List<UIBase>::Iterator getChildrenEnd() const { return mChildren.end(); }
    UIBase* getParent() const { return mpParent; }
    // Union of the children's relative regions, from the zero rectangle.
    sRect getChildrenRegion() const;
    // Depth first, this widget first; null when absent.
    UIBase* find(UIBase const* widget);
    UIBase* findKey(void const* key);
    void setFindKey(void* key) { mFindKey = key; }
    void* getFindKey() const { return mFindKey; }

    // -- State: each changes its bit and raises its event only on a change.
    void create();
    void active();
    void deactive();
    void focus();
    void defocus();
    void enable();
    void disable();
    void show();
    void hide();
    unsigned int getStatus() const { return mStatus; }
    bool isVisible() const { return (mStatus & eStatus_Visible) != 0; }
    bool isEnabled() const { return (mStatus & eStatus_Enabled) != 0; }
    unsigned int getAttribute() const { return mAttribute; }
    void setAttribute(unsigned int attribute) { mAttribute = attribute; }
    bool isFloating() const { return (mAttribute & eAttribute_Floating) != 0; }

    // -- Geometry. setPosition and setSize raise eventMove and eventSize
    // once: a handler that corrects the value does not recurse.
    void setPosition(sPoint const& position);
    void setSize(sSize const& size);
    // Only stores the bound; the next setSize applies it.
    void setMinimumSize(sSize const& size) { mMinimumSize = size; }
    sPoint const& getPosition() const { return mPosition; }
    sSize const& getSize() const { return mSize; }
    sSize const& getMinimumSize() const { return mMinimumSize; }
    sRect const& getAbsRegion() const { return mAbsRegion; }
    sPoint getAbsPosition() const { return mAbsRegion.getTranslate(); }
    sRect const& getDrawRegion() const { return mDrawRegion; }
    sRect getRelRegion() const { return sRect(mPosition, mSize); }
    void setAbsRegion(sPoint const& parentOrigin) { mAbsRegion = sRect(parentOrigin + mPosition, mSize); }
    void setDrawRegion(sRect const& clip) { mDrawRegion = mAbsRegion & clip; }

    // -- Decoration: drawBorder frames (0, 0) to the size by the style.
    void setBorderStyle(eBorderStyle style) { mBorderStyle = style; }
    eBorderStyle getBorderStyle() const { return mBorderStyle; }
    void setBorderColor(sColor color) { mBorderColor = color; }
    sColor getBorderColor() const { return mBorderColor; }
    void drawBorder(UIPainter* painter);

    // -- Drag tracking, in view coordinates.
    bool isDragging() const { return mDragging; }
    unsigned int getDragButton() const { return mDragButton; }
    sPoint const& getDragBeginPosition() const { return mDragBeginPosition; }
    sPoint const& getDragAmount() const { return mDragAmount; }

    // -- Menu (owned; a replaced menu leaves UISystem's chain and is deleted)
    // and cursor.
    UIMenu* getMenu() const { return mpMenu; }
    void setMenu(UIMenu* menu);
    eCursor getCursor() const { return mCursor; }
    void setCursor(eCursor cursor) { mCursor = cursor; }

    // Called by a handler: the message is not for this widget and goes on
    // to the parent, unchanged.
    void delegate() { mDelegate = true; }
    // The one dispatcher. sender is only passed on in the recursive calls.
    void sendMessage(UIMessage const& message, UIBase* sender = nullptr);

    // Helpers of updateRegion, for classes that override it.
    void updateFloatingStatus();
    void updateOwnRegion(sRect const& parentRegion, sRect const& parentDrawRegion);
    void updateChildrenRegion(sRect const& parentRegion, sRect const& parentDrawRegion);

    // Parent and child links agree throughout the subtree, and the floating
    // bits match the attributes; false at the first fault.
    bool validate() const;

private:
    bool setStatusBit(unsigned int bit, bool on);
    void paint(UIMessage const& message);

    UIBase* mpParent;
    List<UIBase> mChildren;
    UIMenu* mpMenu;
    eCursor mCursor;
    sPoint mPosition;
    sSize mSize;
    sRect mAbsRegion;
    sRect mDrawRegion;
    u32 mAttribute;
    u32 mStatus;
    eBorderStyle mBorderStyle;
    sColor mBorderColor;
    bool mDragging;
    u32 mDragButton;
    sPoint mDragBeginPosition;
    sPoint mDragAmount;
    sSize mMinimumSize;
    bool mDelegate;
    bool mBroadcasting; // walking a broadcast down to the children
    void* mFindKey;
};
