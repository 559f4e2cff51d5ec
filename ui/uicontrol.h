// Property controls: widgets that edit one reflected property (or call one
// trigger). A control owns no value: every read and write goes through the
// property with the control's array index, so it stays right when something
// else changes the value; each frame update redoes the layout and painting
// reads the property anew. An edit begins with the focus or a press and ends
// with the loss of the focus or a release; both boundaries travel up the tree
// as messages, so a tool can record them as undo steps. Text is committed on
// Return or when the focus goes, never while it is typed. Main thread for
// events; update and paint run in the window's job.
// This file: the base, text and numeric fields, parameters, flags, the
// enumeration, arrays and triggers. Compound values, objects, resources and
// textures are in uicontrolcomposite.h.
#pragma once

#include "foundation/autostring.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "ui/uibase.h"
#include "ui/uibutton.h"

class UIForm;
class UIPulldownList;

class UIControl : public UIBase {
public:
    // As an index: a single value, not an array element.
    static constexpr unsigned int NoIndex = 0xFFFFFFFFu;
    // Height of the name row above the value of the labelled controls.
    static constexpr int kNameHeight = 16;

    enum eMode {
        eMode_Decimal = 0,
        eMode_Hexadecimal = 1,
    };

    // Takes a reference to the property. A read-only control is disabled, so
    // it never takes the focus.
    UIControl(PropertyBase* property, bool readOnly, unsigned int index, unsigned int attribute);
    ~UIControl() override;

    // Lays the children out; update calls it after the children's update.
    virtual void align() {}

    PropertyBase* getProperty() const { return mpProperty; }
    unsigned int getIndex() const { return mIndex; }
    // Empty without a name, "[%d]" for an array element, else the name.
    AutoString getName() const;
    bool isEditing() const { return mEditing; }
    // The minimum size, widened to (name length + 2) * 6 with a name.
    void setDefaultSize();

    void update(float deltaTime) override;
    void eventBeginEdit() override;
    void eventEndEdit() override;
    // Keys a control has no use for go on up, to the window in the end.
    void eventKeyDown(unsigned int, unsigned int) override { delegate(); }
    void eventKeyUp(unsigned int, unsigned int) override { delegate(); }

protected:
    PropertyBase* mpProperty;
    u32 mIndex;
    bool mEditing;
};

// ---------------------------------------------------------------------------
// Text field. It holds the text only while editing; otherwise it paints the
// property's own text form.

class UITextControl : public UIControl {
public:
    static constexpr int kMinimumWidth = 16;
    static constexpr int kMinimumHeight = 16;

    UITextControl(PropertyBase* property, bool readOnly, unsigned int index, eMode mode,
                  unsigned int attribute = 0);

    // The property's text into the whole selection, cursor at the end.
    void selectAll();
    // Parses the text into the property; nothing with an empty text.
    virtual void apply();
    // Hexadecimal for the integer types in mode 1, else the property's form.
    char const* getPropertyString(char* buffer) const;

    AutoString const& getText() const { return mText; }
    unsigned int getCursor() const { return mCursor; }
    unsigned int getScroll() const { return mScroll; }
    unsigned int getSelectBegin() const { return mSelectBegin; }
    unsigned int getSelectEnd() const { return mSelectEnd; }
    eMode getMode() const { return static_cast<eMode>(mMode); }

    void eventFocus() override;
    void eventDefocus() override;
    void eventBeginEdit() override;
    void eventKeyDown(unsigned int keyCode, unsigned int combinationKey) override;
    void eventPaint(UIPainter* painter) override;

protected:
    static constexpr unsigned int kNone = 0xFFFFFFFFu;

    bool hasSelection() const { return mSelectBegin != kNone; }
    void clearSelection() { mSelectBegin = mSelectEnd = kNone; }
    // Whole characters the field shows.
    unsigned int getVisibleCount() const;
    void keepCursorInView();
    // Removes the selection, if any, and puts the cursor at its start.
    void deleteSelection();
    void replaceSelection(char character);
    void moveCursor(unsigned int position, bool extend);

    u32 mCursor;
    u32 mScroll;
    u32 mSelectBegin;
    u32 mSelectEnd;
    AutoString mText;
    u32 mMode;
};

// ---------------------------------------------------------------------------
// Numeric field: a text field of an integer, float or fixed property, with a
// slide button at its right edge. Values are clamped to the limits; limits
// with the minimum above the maximum mean no limit.

class UINumericControl : public UITextControl {
public:
    // Drag factors per pixel, by the held combination key.
    static constexpr float kSlideFactorShift = 1.0f;
    static constexpr float kSlideFactorCommand = 0.01f;
    static constexpr float kSlideFactorPlain = 0.1f;

    // The full range of the property's type.
    UINumericControl(PropertyBase* property, bool readOnly, unsigned int index, eMode mode,
                     unsigned int attribute = 0);
    UINumericControl(PropertyBase* property, uNumeric minimum, uNumeric maximum, bool readOnly, unsigned int index,
                     eMode mode, unsigned int attribute = 0);

    uNumeric getNumeric() const;
    // Clamps, writes, and replaces the text by the new value's.
    void setNumeric(uNumeric value);
    // Adds, saturating at the type's ends; integers truncate delta first.
    void addNumeric(float delta);
    UISlideButton* getSlideButton() const { return mpSlideButton; }
    uNumeric getMinimum() const { return mMinimum; }
    uNumeric getMaximum() const { return mMaximum; }

    // Parses the text and goes through setNumeric, so a typed value is clamped.
    void apply() override;
    void notifySlideButton(UIButton* button);

    void eventSize() override;
    void eventBeginEdit() override;
    void eventKeyDown(unsigned int keyCode, unsigned int combinationKey) override;

    // The full range of a numeric property type, as PropertyControl gives it.
    static void getTypeRange(unsigned int type, uNumeric& minimum, uNumeric& maximum);

private:
    void init(bool readOnly);
    uNumeric clamp(uNumeric value) const;

    uNumeric mMinimum;
    uNumeric mMaximum;
    uNumeric mBeginValue;
    UISlideButton* mpSlideButton;
};

// ---------------------------------------------------------------------------
// A captioned value: above the field for a single value, beside it for an
// array element. Strings get a text field (read-only for a const string),
// the other types a numeric field.

class UIParameterControl : public UIControl {
public:
    static constexpr int kMinimumValueWidth = 48;

    UIParameterControl(PropertyBase* property, uNumeric minimum, uNumeric maximum, bool readOnly,
                       unsigned int index, eMode mode, unsigned int attribute = 0);

    UIControl* getValueControl() const { return mpValueControl; }
    unsigned int getCaptionWidth() const { return mCaptionWidth; }

    void align() override;
    void eventPaint(UIPainter* painter) override;

private:
    void init(uNumeric minimum, uNumeric maximum, bool readOnly, eMode mode);

    UIControl* mpValueControl;
    u32 mCaptionWidth;
};

// ---------------------------------------------------------------------------
// Check box of one mask of an integer or bool property (mask all ones for a
// bool), with the name beside it.

class UIFlagControl : public UIControl {
public:
    static constexpr int kBoxWidth = 12;
    static constexpr int kNameLeft = 14;

    UIFlagControl(PropertyBase* property, u32 mask, bool readOnly, unsigned int index, unsigned int attribute = 0);

    bool isChecked() const;
    u32 getMask() const { return mMask; }
    void toggle();

    void eventPaint(UIPainter* painter) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventKeyDown(unsigned int keyCode, unsigned int combinationKey) override;

private:
    u32 mMask;
};

// A group box with one flag per entry of a mask table.
class UIFlagGroupControl : public UIControl {
public:
    UIFlagGroupControl(PropertyBase* property, sMaskInfo const* masks, unsigned int count, bool readOnly,
                       unsigned int index);

    // The whole value, the inner flags' view of it.
    u32 getNumeric() const;
    void setNumeric(u32 value);
    UIForm* getForm() const { return mpForm; }

    void eventSize() override;
    void eventPaint(UIPainter* painter) override;

private:
    UIForm* mpForm;
};

// ---------------------------------------------------------------------------
// One of a table of named values, picked from a pull-down list.

class UIEnumControl : public UIControl {
public:
    typedef FunctorIntermediate<unsigned int, void> SelectFunction;

    // The table is copied; its names are not.
    UIEnumControl(PropertyBase* property, sEnumInfo const* enums, unsigned int count, bool readOnly,
                  unsigned int index, unsigned int attribute = 0);
    ~UIEnumControl() override;

    // Called with the index of a newly chosen entry; owned.
    template <typename T>
    void setSelectFunction(T* target, void (T::*member)(unsigned int))
    {
        delete mpSelectFunctor;
        mpSelectFunctor = new Functor<T, unsigned int, void>(target, member);
    }
    // The entry of the property's value, or NoIndex.
    unsigned int getCurrentItem() const;
    unsigned int getItemCount() const { return mCount; }
    char const* getItemName(unsigned int item) const;
    // The names come from the table; there is nothing to set.
    void setItemName(unsigned int, char const*) {}
    UIPulldownList* getPulldownList() const { return mpPulldownList; }
    UIPulldownButton* getPulldownButton() const { return mpPulldownButton; }

    void notifyPulldown(UIButton* button);
    void notifySelect();

    void eventSize() override;
    void eventPaint(UIPainter* painter) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventKeyDown(unsigned int keyCode, unsigned int combinationKey) override;

private:
    sRect getFieldRect() const;

    UIPulldownList* mpPulldownList;
    UIPulldownButton* mpPulldownButton;
    sEnumInfo* mpEnums;
    u32 mCount;
    SelectFunction* mpSelectFunctor;
};

// ---------------------------------------------------------------------------
// One control per element of an array property, in a group box. Rebuilt when
// the property's count changes.

class UIControlArray : public UIBase {
public:
    UIControlArray(PropertyBase* property, UIControl::eMode mode);
    ~UIControlArray() override;

    PropertyBase* getProperty() const { return mpProperty; }
    UIForm* getForm() const { return mpForm; }
    unsigned int getCount() const { return mCount; }

    void eventSize() override;
    void eventPaint(UIPainter* painter) override;
    void eventKeyDown(unsigned int, unsigned int) override { delegate(); }
    void eventKeyUp(unsigned int, unsigned int) override { delegate(); }
    void eventBeginEdit() override { delegate(); }
    void eventEndEdit() override { delegate(); }

private:
    void createArray();

    PropertyBase* mpProperty;
    UIForm* mpForm;
    u32 mCount;
    u32 mMode;
};

// ---------------------------------------------------------------------------
// A button that calls a trigger, with a field for its argument if it takes one.

class UITriggerControl : public UIBase {
public:
    // Keeps a duplicate of the descriptor.
    explicit UITriggerControl(TriggerControlBase const* trigger);
    ~UITriggerControl() override;

    UIButton* getButton() const { return mpButton; }
    UINumericControl* getField() const { return mpField; }

    // The button's functor: calls the trigger with the field's value.
    void apply(UIButton* button);

    void eventKeyDown(unsigned int, unsigned int) override { delegate(); }
    void eventKeyUp(unsigned int, unsigned int) override { delegate(); }
    void eventBeginEdit() override { delegate(); }
    void eventEndEdit() override { delegate(); }

private:
    TriggerControlBase* mpTrigger;
    UIButton* mpButton;
    UINumericControl* mpField;
    uNumeric mValue;
};
