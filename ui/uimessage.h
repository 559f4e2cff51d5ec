// UIMessage and its family: plain values built on the stack where they are
// sent and handed to UIBase::sendMessage, never queued or allocated. Each
// class fixes its type number and whether it is broadcast down the tree;
// types without a class of their own reach UIBase::eventCustom.
#pragma once

#include "foundation/types.h"

class UIPainter;

class UIMessage {
public:
    enum eType {
        eType_Create = 1,
        eType_Destroy = 2,
        eType_Close = 3,
        eType_Show = 4,
        eType_Hide = 5,
        // 6 to 10 are unassigned.
        eType_Timer = 11,
        eType_Paint = 12,
        eType_Active = 13,
        eType_Deactive = 14,
        eType_Focus = 15,
        eType_Defocus = 16,
        eType_Enable = 17,
        eType_Disable = 18,
        eType_KeyDown = 19,
        eType_KeyUp = 20,
        eType_MouseMove = 21,
        eType_MouseDown = 22,
        eType_MouseUp = 23,
        eType_MouseWheel = 24,
        eType_MouseDoubleClick = 25,
        eType_BeginEdit = 26,
        eType_EndEdit = 27,
        eType_Custom = 28, // the first number free for widget classes
    };

    // The button value of the forced release when a window loses the capture.
    static constexpr unsigned int kAllButtons = 255;

    UIMessage(unsigned int type, bool broadcast) : mType(type), mBroadcast(broadcast) {}

    unsigned int getType() const { return mType; }
    bool isBroadcast() const { return mBroadcast; }

private:
    u32 mType;
    bool mBroadcast;
};

// A message that carries nothing but its type.
template <unsigned int Type, bool Broadcast>
class UIPlainMessage : public UIMessage {
public:
    UIPlainMessage() : UIMessage(Type, Broadcast) {}
};

typedef UIPlainMessage<UIMessage::eType_Create, true> UICreateMessage;
typedef UIPlainMessage<UIMessage::eType_Destroy, true> UIDestroyMessage;
typedef UIPlainMessage<UIMessage::eType_Show, false> UIShowMessage;
typedef UIPlainMessage<UIMessage::eType_Hide, false> UIHideMessage;
typedef UIPlainMessage<UIMessage::eType_Active, false> UIActiveMessage;
typedef UIPlainMessage<UIMessage::eType_Deactive, false> UIDeactiveMessage;
typedef UIPlainMessage<UIMessage::eType_Focus, false> UIFocusMessage;
typedef UIPlainMessage<UIMessage::eType_Defocus, false> UIDefocusMessage;
typedef UIPlainMessage<UIMessage::eType_Enable, false> UIEnableMessage;
typedef UIPlainMessage<UIMessage::eType_Disable, false> UIDisableMessage;
typedef UIPlainMessage<UIMessage::eType_BeginEdit, false> UIBeginEditMessage;
typedef UIPlainMessage<UIMessage::eType_EndEdit, false> UIEndEditMessage;

// Delta time in nominal frames, as Application::getDeltaTime gives it.
class UITimerMessage : public UIMessage {
public:
    explicit UITimerMessage(float deltaTime) : UIMessage(eType_Timer, true), mDeltaTime(deltaTime) {}
    float getDeltaTime() const { return mDeltaTime; }

private:
    float mDeltaTime;
};

class UIPaintMessage : public UIMessage {
public:
    explicit UIPaintMessage(UIPainter* painter) : UIMessage(eType_Paint, true), mpPainter(painter) {}
    UIPainter* getPainter() const { return mpPainter; }

private:
    UIPainter* mpPainter;
};

// UI key code and combination bits of UISystem.
template <unsigned int Type>
class UIKeyMessage : public UIMessage {
public:
    UIKeyMessage(unsigned int keyCode, unsigned int combinationKey)
        : UIMessage(Type, false), mKeyCode(keyCode), mCombinationKey(combinationKey)
    {
    }
    unsigned int getKeyCode() const { return mKeyCode; }
    unsigned int getCombinationKey() const { return mCombinationKey; }

private:
    u32 mKeyCode;
    u32 mCombinationKey;
};

typedef UIKeyMessage<UIMessage::eType_KeyDown> UIKeyDownMessage;
typedef UIKeyMessage<UIMessage::eType_KeyUp> UIKeyUpMessage;

// Positions are relative to the top left of the widget that first receives
// the message, also when a handler delegates it to the parent.
class UIMouseMoveMessage : public UIMessage {
public:
    explicit UIMouseMoveMessage(sPoint const& position) : UIMessage(eType_MouseMove, false), mPosition(position) {}
    sPoint const& getPosition() const { return mPosition; }

private:
    sPoint mPosition;
};

// Button masks: 1 primary, 2 secondary, 4 tertiary; kAllButtons when forced.
template <unsigned int Type>
class UIMouseButtonMessage : public UIMessage {
public:
    UIMouseButtonMessage(sPoint const& position, unsigned int button)
        : UIMessage(Type, false), mPosition(position), mButton(button)
    {
    }
    sPoint const& getPosition() const { return mPosition; }
    unsigned int getButton() const { return mButton; }

private:
    sPoint mPosition;
    u32 mButton;
};

typedef UIMouseButtonMessage<UIMessage::eType_MouseDown> UIMouseDownMessage;
typedef UIMouseButtonMessage<UIMessage::eType_MouseUp> UIMouseUpMessage;
typedef UIMouseButtonMessage<UIMessage::eType_MouseDoubleClick> UIMouseDoubleClickMessage;

// The wheel's change in this frame, x then y, in notches.
class UIMouseWheelMessage : public UIMessage {
public:
    explicit UIMouseWheelMessage(sPoint const& amount) : UIMessage(eType_MouseWheel, false), mAmount(amount) {}
    sPoint const& getAmount() const { return mAmount; }

private:
    sPoint mAmount;
};
