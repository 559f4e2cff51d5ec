// UIWindow: the top-level widget that UISystem manages: one list entry, one
// update job and one paint job per frame. This is the part UISystem relies
// on: draw priority, modality, owner, menu bar, activation and closing.
// Title bar, system buttons, moving and sizing build on it.
#pragma once

#include "foundation/autostring.h"
#include "ui/uibase.h"

class UIMainMenu;

class UIWindow : public UIBase {
public:
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

    // A bare window at (16, 16), at least 64 by 64. owner becomes active
    // when this window closes; not owned, may be null.
    explicit UIWindow(UIWindow* owner = nullptr, unsigned int windowAttribute = 0);
    // Deletes the menu bar.
    ~UIWindow() override;

    // The draw priority the last paint pass gave the window.
    unsigned int getPriority() const { return mPriority; }
    void setPriority(unsigned int priority) { mPriority = priority; }
    unsigned int getWindowAttribute() const { return mWindowAttribute; }
    unsigned int getWindowStatus() const { return mWindowStatus; }
    bool isModalWindow() const { return (mWindowAttribute & eWindowAttribute_Modal) != 0; }
    UIWindow* getOwnerWindow() const { return mpOwnerWindow; }
    void setTitle(AutoString const& title) { mTitle = title; }
    AutoString const& getTitle() const { return mTitle; }
    // Owned; an old bar is reported to UISystem and deleted.
    void setMainMenu(UIMainMenu* menu);
    UIMainMenu* getMainMenu() const { return mpMainMenu; }

    void minimize() { eventMinimize(); }
    void maximize() { eventMaximize(); }
    void normalize() { eventNormalize(); }
    void close() { eventClose(); }

    // Closing is deferred to the end of the frame, so a widget may close
    // its own window from inside a handler.
    void eventClose() override;
    void eventActive() override;
    void eventDeactive() override;

    DECLARE_TYPEINFO(TypeInfo)

private:
    u32 mPriority;
    u32 mWindowAttribute;
    u32 mWindowStatus;
    AutoString mTitle;
    UIMainMenu* mpMainMenu;
    UIWindow* mpOwnerWindow;
};
