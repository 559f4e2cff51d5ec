// UISystem: owns the desktop, the top-level windows, the in-scene controls,
// the theme colours and the keyboard mapping. Once a frame it reads
// MouseSystem and KeyboardSystem, picks the one widget that receives the
// frame's input and sends it the messages (it is their only producer), then
// updates, lays out and paints every widget, one job per top-level window.
// Routing and the lists belong to the main thread; jobs touch one window's
// subtree each, and the theme colours do not change while they run.
#pragma once

#include "app/system.h"
#include "foundation/autostring.h"
#include "foundation/list.h"
#include "foundation/vector.h"
#include "jobs/jobsystem.h"
#include "reflection/objectlist.h"
#include "ui/uibase.h"

class DrawContext;
class UIDesktop;
class UIGameViewControl;
class UIMainMenu;
class UIMenu;
class UIWindow;

class UISystem : public System {
public:
    // Combination key bits.
    enum {
        eCombinationKey_Shift = 1,
        eCombinationKey_Option = 2,
        eCombinationKey_Command = 4, // Control and Command share it
    };
    // UI key codes that are not characters.
    enum {
        eKey_BackSpace = 8,
        eKey_Tab = 9,
        eKey_Return = 13,
        eKey_Escape = 27,
        eKey_Delete = 127,
        eKey_F1 = 128,
        eKey_Left = 160,
        eKey_Up = 161,
        eKey_Right = 162,
        eKey_Down = 163,
        eKey_PageUp = 164,
        eKey_PageDown = 165,
        eKey_Home = 166,
        eKey_End = 167,
        eKey_Insert = 168,
    };

    // A second press of the same button on the same widget within this
    // many milliseconds is a double click; there is no distance test.
    static constexpr u64 kDoubleClickTime = 250;
    // Draw priorities: a window's step leaves room for its floating children.
    static constexpr unsigned int kWindowPriorityStep = 8;
    static constexpr unsigned int kMainMenuHeight = 16;
    static constexpr unsigned int kDrawContextReserve = 16;

    static UISystem* create();
    static UISystem* getInstance() { return mpInstance; }
    void destroy() override;

    DECLARE_TYPEINFO(TypeInfo)

    // Updates after MouseSystem and KeyboardSystem.
    void setup() override;
    // Admits the windows added during the last frame, brings the modal
    // windows to the front and activates the front window.
    void preprocess() override;
    // Input routing, then update and layout of every widget.
    void update() override;
    // Deletes the windows removed during the frame.
    void postprocess() override;
    // Paints every root widget, one job each; between update and postprocess.
    virtual void draw();
    // Paints the in-scene controls of the context's game view.
    virtual void draw(DrawContext* context);

    // A window is live from the next preprocess. Null is ignored.
    void addWindow(UIWindow* window);
    // Deleted at the end of the frame; a second request in the frame is ignored.
    void removeWindow(UIWindow* window);
    void removeAllWindow();
    void setActiveWindow(UIWindow* window);
    UIWindow* getActiveWindow() const { return mpActiveWindow; }
    ObjectList const& getWindowList() const { return mWindowList; }

    // Owned from here on.
    void addGameViewControl(UIGameViewControl* control);
    // Removes and deletes.
    void removeGameViewControl(UIGameViewControl* control);
    // Deletes all but leaves them listed: for the destructor only.
    void removeAllGameViewControl();

    void focus(UIBase* widget);
    void defocus();
    UIBase* getFocus() const { return mpFocus; }
    UIBase* getCapture() const { return mpCapture; }
    UIMenu* getMenu() const { return mpMenu; }
    UIMainMenu* getMainMenu() const { return mpMainMenu; }
    UIDesktop* getDesktop() const { return mpDesktop; }

    // The application window changed its bounds: no active window, and focus
    // and capture cleared without a message.
    void resetLayout();
    // The window's resize notification: the desktop takes the new size, then
    // resetLayout.
    void notifyResize(sRect const& rect);

    // Notifications from widgets, so that no pointer here outlives its widget.
    void notifyInvalidate(UIBase* widget);
    void notifyMenuChange(UIMenu* menu);
    void notifyMainMenuChange(UIMainMenu* oldMenu, UIMainMenu* newMenu);
    void notifyMainMenuSelect(UIMenu* menu);
    void notifyMenuEnd();

    unsigned int getCombinationKey() const { return mCombinationKey; }
    // This frame's pressed key as text ("A", "F10", "Return"), or empty.
    AutoString getKeyDown() const;
    // For binding the value to a property; does nothing.
    void setKeyDown(AutoString) {}
    // The UI key code of a keyboard usage, 0 for none and for modifiers.
    unsigned int transferKeyCode(int usage) const;
    // From the origin to the application window's size.
    sRect getUIViewRect() const;
    // A position in view 5 into the coordinates of another view.
    sPoint transformView(sPoint const& position, unsigned int view) const;

    // The named theme colours, then the desktop's properties.
    void makePropertyList(PropertyList& list) override;

    // Lists, focus, capture, menu and last click target point at live
    // widgets, and every tree is sound; false at the first fault.
    bool validate() const;

    // Theme colours; widgets read them directly.
    sColor mFontColor;
    sColor mClientFontColor;
    sColor mClientSelectFontColor;
    sColor mDisableFontColor;
    sColor mWindowColor;
    sColor mHighLightColor;
    sColor mDarkLightColor;
    sColor mClientRegionColor;
    sColor mClientRegionSelectColor;
    sColor mActiveTitleBarColor;
    sColor mDeactiveTitleBarColor;
    sColor mActiveTitleFontColor;
    sColor mDeactiveTitleFontColor;
    sColor mScrollBarBaseColor;
    sColor mMenuColor;
    sColor mMenuSelectColor;
    sColor mMenuFontColor;
    sColor mMenuDisableFontColor;
    sColor mMenuSelectFontColor;

    static sColor const mDefaultFontColor;
    static sColor const mDefaultClientFontColor;
    static sColor const mDefaultClientSelectFontColor;
    static sColor const mDefaultDisableFontColor;
    static sColor const mDefaultWindowColor;
    static sColor const mDefaultHighLightColor;
    static sColor const mDefaultDarkLightColor;
    static sColor const mDefaultClientRegionColor;
    static sColor const mDefaultClientRegionSelectColor;
    static sColor const mDefaultActiveTitleBarColor;
    static sColor const mDefaultDeactiveTitleBarColor;
    static sColor const mDefaultActiveTitleFontColor;
    static sColor const mDefaultDeactiveTitleFontColor;
    static sColor const mDefaultScrollBarBaseColor;
    static sColor const mDefaultMenuColor;
    static sColor const mDefaultMenuSelectColor;
    static sColor const mDefaultMenuFontColor;
    static sColor const mDefaultMenuDisableFontColor;
    static sColor const mDefaultMenuSelectFontColor;

protected:
    UISystem();
    ~UISystem() override;

private:
    // Paints one root widget with its priority, in a paint job.
    class DrawJob : public JobBase {
    public:
        DrawJob(UIBase* widget, unsigned int priority) : mpWidget(widget), mPriority(priority) {}
        void execute(void* threadData) override;

    private:
        UIBase* mpWidget;
        unsigned int mPriority;
    };

    void executeAdd();
    void executeRemove();
    void makeKeyCodeTable();
    void updateKeyInput();
    void routeInput();
    void handleMouseEvent(UIWindow* window, UIBase* target, sPoint const& position);
    void handleKeyEvent(UIWindow* window, UIBase* target);
    void updateLayout();
    void updateJob(void* window);
    void setCursor(eCursor cursor);
    static void drawJob(UIBase* widget, unsigned int priority, DrawContext* context);

    ObjectList mWindowList;        // front-most first
    ObjectList mAddWindowList;
    ObjectList mRemoveWindowList;
    sPoint mMousePosition;
    UIWindow* mpActiveWindow;
    UIBase* mpFocus;
    UIBase* mpCapture;
    UIMenu* mpMenu;
    UIMainMenu* mpMainMenu;
    UIDesktop* mpDesktop;
    u32 mMouseView;
    Vector<DrawContext> mDrawContexts;
    List<UIWindow> mModalWindowList;
    List<UIGameViewControl> mGameViewControlList;
    u8 mKeyCodeTable[256];
    u32 mKeyDown;
    u32 mKeyUp;
    u32 mCombinationKey;
    u32 mLastClickButton;
    u64 mLastClickTime;
    UIBase* mpLastClickTarget;
    eCursor mCurrentCursor;

    static UISystem* mpInstance;
};
