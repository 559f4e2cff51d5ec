// Buttons: UIButton fires its callback on a release over itself; the spin,
// pull-down and slide variants add their drawings and, for the slide button,
// vertical drags reported while held. None of them repeats while held.
#pragma once

#include "foundation/functor.h"
#include "ui/uibase.h"

class UIButton : public UIBase {
public:
    typedef FunctorIntermediate<UIButton*, void> Function;

    UIButton();
    template <typename T>
    UIButton(T* target, void (T::*member)(UIButton*), char const* caption) : UIButton()
    {
        setFunction(target, member);
        mpCaption = caption;
    }
    ~UIButton() override;

    template <typename T>
    void setFunction(T* target, void (T::*member)(UIButton*))
    {
        setFunction(new Functor<T, UIButton*, void>(target, member));
    }
    // Owned; replaces and deletes the previous one.
    void setFunction(Function* function);
    // Not copied: the text must outlive the button.
    void setCaption(char const* caption) { mpCaption = caption; }
    char const* getCaption() const { return mpCaption; }
    bool isPressed() const { return mPressed; }

    void eventPaint(UIPainter* painter) override;
    void eventMouseMove(sPoint const& position) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventMouseUp(sPoint const& position, unsigned int button) override;

private:
    Function* mpFunction;
    bool mPressed;
    char const* mpCaption;
};

enum eDirection {
    eDirection_Left,
    eDirection_Right,
    eDirection_Up,
    eDirection_Down,
};

// A button with a triangle pointing its way. The repeat timings are kept
// for callers that read them; a held spin button steps once.
class UISpinButton : public UIButton {
public:
    explicit UISpinButton(eDirection direction);
    UISpinButton(eDirection direction, unsigned int repeatDelay, unsigned int repeatInterval);

    eDirection getDirection() const { return mDirection; }
    unsigned int getRepeatDelay() const { return mRepeatDelay; }
    unsigned int getRepeatInterval() const { return mRepeatInterval; }

    void eventPaint(UIPainter* painter) override;

private:
    eDirection mDirection;
    u32 mRepeatDelay;
    u32 mRepeatInterval;
};

class UIPulldownButton : public UIButton {
public:
    // The minimum size, 12 by 16.
    void init();
    void eventPaint(UIPainter* painter) override;
};

// The "~" handle of numeric fields: a vertical drag while held edits the
// target's value; the target is told when editing begins and ends.
class UISlideButton : public UIButton {
public:
    UISlideButton();
    ~UISlideButton() override;

    template <typename T>
    void setSlideFunction(T* target, void (T::*member)(UIButton*))
    {
        setSlideFunction(new Functor<T, UIButton*, void>(target, member));
    }
    void setSlideFunction(Function* function);
    void setEditTarget(UIBase* target) { mpEditTarget = target; }
    UIBase* getEditTarget() const { return mpEditTarget; }
    // The vertical drag while held, else 0.
    int getSlideAmount() const;

    void eventMouseMove(sPoint const& position) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventMouseUp(sPoint const& position, unsigned int button) override;

private:
    Function* mpSlideFunction;
    UIBase* mpEditTarget;
};
