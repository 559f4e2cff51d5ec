// UIWindow: the top-level widget that UISystem manages: one list entry, one
// update job and one paint job per frame. A form with a title bar that moves
// it, system buttons and a system menu, a 16 by 16 size grip, an optional menu
// bar (shown at the top of the application window while active), modality
// and an owner that becomes active when it closes. UISystemButton is the
// small button class of the title bar.
#pragma once

#include "foundation/autostring.h"
#include "ui/uibutton.h"
#include "ui/uiform.h"

class UIMainMenu;

class UISystemButton : public UIButton {
public:
    enum eButtonType {
        eButtonType_Maximize,
        eButtonType_Minimize,
        eButtonType_Normalize,
        eButtonType_Close,
    };
    static constexpr unsigned int kSide = 14;

    explicit UISystemButton(eButtonType type);

    eButtonType getButtonType() const { return mButtonType; }
    void eventPaint(UIPainter* painter) override;

private:
    eButtonType mButtonType;
};

class UIWindow : public UIForm {
public:
    enum eStyle {
        eStyle_Plain,
        eStyle_Frame,
        eStyle_Convex,
    };
    // mWindowAttribute
    enum {
        eWindowAttribute_TitleBar = 1,
        eWindowAttribute_Movable = 2,
        eWindowAttribute_Sizable = 4,
        eWindowAttribute_Modal = 8,
    };
    // mWindowStatus
    enum {
        eWindowStatus_Active = 1,
        eWindowStatus_Moving = 32,
        eWindowStatus_Sizing = 64,
    };
    static constexpr int kTitleHeight = 18;
    static constexpr int kGripSide = 16;
    static constexpr int kGripRoom = 12;
    // No window's top goes above the menu bar's row.
    static constexpr int kTopLimit = 16;

    // A bare window at (16, 16), at least 64 by 64, without buttons, whose
    // system menu has every entry disabled. owner becomes active when this
    // window closes; not owned, may be null.
    explicit UIWindow(UIWindow* owner = nullptr);
    UIWindow(eStyle style, unsigned int windowAttribute, bool closeButton, bool minimizeButton, bool maximizeButton,
             unsigned int formAttribute, UIWindow* owner);
    // Deletes the menu bar.
    ~UIWindow() override;

    // The draw priority the last paint pass gave the window.
    unsigned int getPriority() const { return mPriority; }
    void setPriority(unsigned int priority) { mPriority = priority; }
    eStyle getStyle() const { return mStyle; }
    unsigned int getWindowAttribute() const { return mWindowAttribute; }
    unsigned int getWindowStatus() const { return mWindowStatus; }
    bool isModalWindow() const { return (mWindowAttribute & eWindowAttribute_Modal) != 0; }
    UIWindow* getOwnerWindow() const { return mpOwnerWindow; }
    void setTitle(AutoString const& title) { mTitle = title; }
    AutoString const& getTitle() const { return mTitle; }
    // Owned; an old bar is reported to UISystem and deleted.
    void setMainMenu(UIMainMenu* menu);
    UIMainMenu* getMainMenu() const { return mpMainMenu; }
    UISystemButton* getCloseButton() const { return mpCloseButton; }
    UISystemButton* getMinimizeButton() const { return mpMinimizeButton; }
    UISystemButton* getMaximizeButton() const { return mpMaximizeButton; }
    UISystemButton* getNormalizeButton() const { return mpNormalizeButton; }

    // System buttons at (width - 44, 3) and to its right; the client region
    // inside the frame, below the title bar and above the grip.
    void resetLayout();
    // Only the events: what minimising and maximising mean is the
    // subclass's business.
    void minimize() { eventMinimize(); }
    void maximize() { eventMaximize(); }
    void normalize() { eventNormalize(); }
    void close() { eventClose(); }
    void notifySystemButton(UIButton* button);

    UIShortcutBase const* findShortcut(unsigned int keyCode, unsigned int combinationKey) const override;
    void eventCreate() override;
    // Closing is deferred to the end of the frame, so a widget may close
    // its own window from inside a handler.
    void eventClose() override;
    void eventMove() override;
    void eventSize() override;
    void eventActive() override;
    void eventDeactive() override;
    void eventPaint(UIPainter* painter) override;
    void eventMouseMove(sPoint const& position) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventMouseUp(sPoint const& position, unsigned int button) override;

    DECLARE_TYPEINFO(TypeInfo)

private:
    void construct();
    UISystemButton* addSystemButton(UISystemButton::eButtonType type);
    sRect getTitleRect() const;
    sRect getGripRect() const;
    // The pointer in view coordinates, kept inside the UI view.
    sPoint getClampedPointer() const;
    void moveWindow();
    void sizeWindow();

    u32 mPriority;
    eStyle mStyle;
    u32 mWindowAttribute;
    u32 mWindowStatus;
    AutoString mTitle;
    sPoint mMoveBeginPosition;
    sSize mSizeBeginSize;
    UISystemButton* mpMinimizeButton;
    UISystemButton* mpMaximizeButton;
    UISystemButton* mpNormalizeButton;
    UISystemButton* mpCloseButton;
    UIMainMenu* mpMainMenu;
    UIWindow* mpOwnerWindow;
};
