// Property controls of compound values (size, point, rect, colour, texture
// coordinates, vector), of objects and resources, and texture previews.
// A compound control shows one numeric field per component; each field sits
// on an IndirectProperty with the control's own getter and setter, which read
// the whole value through the control's property, change the component and
// write the whole value back. Nothing is cached: every read goes to the
// property. Main thread for events; update and paint in the window's job.
#pragma once

#include "ui/uicontrol.h"

class ResourceBase;
class UIDialog;

// The shared part of the compound controls: a name row, then one labelled
// numeric field per component in a column.
class UICompositeControl : public UIControl {
public:
    static constexpr unsigned int kFieldMax = 4;
    static constexpr int kFieldLeft = 24;
    static constexpr int kFieldTop = 16;
    static constexpr int kFieldStep = 18;
    static constexpr int kFieldHeight = 16;
    static constexpr int kLabelLeft = 4;

    UICompositeControl(PropertyBase* property, bool readOnly, unsigned int index);

    unsigned int getFieldCount() const { return mFieldCount; }
    UINumericControl* getField(unsigned int field) const { return mpFields[field]; }

    void align() override;
    void eventPaint(UIPainter* painter) override;

protected:
    // The field takes its own reference to the property; label is a literal.
    void addField(PropertyBase* property, char const* label, bool readOnly);
    // A column of fields of the given count under the name row.
    void setFieldMinimumSize(unsigned int count);
    // Fatal unless the property has this type.
    void checkType(unsigned int type) const;

    UINumericControl* mpFields[kFieldMax];
    char const* mpLabels[kFieldMax];
    u32 mFieldCount;
};

class UISizeControl : public UICompositeControl {
public:
    UISizeControl(PropertyBase* property, bool readOnly, unsigned int index);
    u32 getWidth() const;
    void setWidth(u32 value);
    u32 getHeight() const;
    void setHeight(u32 value);
};

class UIPointControl : public UICompositeControl {
public:
    UIPointControl(PropertyBase* property, bool readOnly, unsigned int index);
    s32 getX() const;
    void setX(s32 value);
    s32 getY() const;
    void setY(s32 value);
};

class UIRectControl : public UICompositeControl {
public:
    UIRectControl(PropertyBase* property, bool readOnly, unsigned int index);
    s32 getLeft() const { return getEdge(0); }
    void setLeft(s32 value) { setEdge(0, value); }
    s32 getTop() const { return getEdge(1); }
    void setTop(s32 value) { setEdge(1, value); }
    s32 getRight() const { return getEdge(2); }
    void setRight(s32 value) { setEdge(2, value); }
    s32 getBottom() const { return getEdge(3); }
    void setBottom(s32 value) { setEdge(3, value); }

private:
    s32 getEdge(int edge) const;
    void setEdge(int edge, s32 value);
};

class UITexcoordControl : public UICompositeControl {
public:
    UITexcoordControl(PropertyBase* property, bool readOnly, unsigned int index);
    u16 getU() const;
    void setU(u16 value);
    u16 getV() const;
    void setV(u16 value);
};

class UIVectorControl : public UICompositeControl {
public:
    UIVectorControl(PropertyBase* property, bool readOnly, unsigned int index);
    sFixed getX() const;
    void setX(sFixed value);
    sFixed getY() const;
    void setY(sFixed value);
};

// Four channel fields and a slider per channel, for sColor and sColorF.
class UIColorControl : public UICompositeControl {
public:
    enum eChannel {
        eChannel_Red,
        eChannel_Green,
        eChannel_Blue,
        eChannel_Alpha,
        eChannel_Num
    };

    // A channel from the x of the mouse. Deliberately 96 pixels wide for a
    // scale of 128 steps: the last quarter is reached only by dragging past
    // the end.
    class UIColorSliderControl : public UIControl {
    public:
        static constexpr int kWidth = 96;
        static constexpr int kHeight = 8;
        static constexpr int kScale = 127;

        UIColorSliderControl(PropertyBase* property, unsigned int channel, bool readOnly, unsigned int index);

        unsigned int getChannel() const { return mChannel; }
        // The channel of the property's colour, 0 to 255.
        u8 getValue() const;
        void setValue(u8 value);

        void eventPaint(UIPainter* painter) override;
        void eventMouseDown(sPoint const& position, unsigned int button) override;
        void eventMouseMove(sPoint const& position) override;
        void eventMouseUp(sPoint const& position, unsigned int button) override;

    private:
        void setFromPosition(sPoint const& position);

        u32 mChannel;
    };

    static constexpr int kSliderLeft = 20;
    static constexpr int kSliderTop = 20;
    static constexpr int kFieldWidth = 48;

    UIColorControl(PropertyBase* property, bool readOnly, unsigned int index);

    UIColorSliderControl* getSlider(unsigned int channel) const { return mpSliders[channel]; }

    u8 getRed() const { return getChannel(eChannel_Red); }
    void setRed(u8 value) { setChannel(eChannel_Red, value); }
    u8 getGreen() const { return getChannel(eChannel_Green); }
    void setGreen(u8 value) { setChannel(eChannel_Green, value); }
    u8 getBlue() const { return getChannel(eChannel_Blue); }
    void setBlue(u8 value) { setChannel(eChannel_Blue, value); }
    u8 getAlpha() const { return getChannel(eChannel_Alpha); }
    void setAlpha(u8 value) { setChannel(eChannel_Alpha, value); }
    float getRedF() const { return getChannelF(eChannel_Red); }
    void setRedF(float value) { setChannelF(eChannel_Red, value); }
    float getGreenF() const { return getChannelF(eChannel_Green); }
    void setGreenF(float value) { setChannelF(eChannel_Green, value); }
    float getBlueF() const { return getChannelF(eChannel_Blue); }
    void setBlueF(float value) { setChannelF(eChannel_Blue, value); }
    float getAlphaF() const { return getChannelF(eChannel_Alpha); }
    void setAlphaF(float value) { setChannelF(eChannel_Alpha, value); }

    void align() override;
    void eventPaint(UIPainter* painter) override;

private:
    u8 getChannel(int channel) const;
    void setChannel(int channel, u8 value);
    float getChannelF(int channel) const;
    void setChannelF(int channel, float value);

    UIColorSliderControl* mpSliders[eChannel_Num];
};

// ---------------------------------------------------------------------------
// Objects and resources: a field with the object's class name or the
// resource's file name ("null" for none), and a context menu "Empty".

class UIObjectControl : public UIControl {
public:
    UIObjectControl(PropertyBase* property, bool readOnly, unsigned int index);

    // Writes null to the property.
    void setEmpty();

    void eventPaint(UIPainter* painter) override;

protected:
    sRect getFieldRect() const;
};

class UIResourceControl : public UIControl {
public:
    static constexpr int kButtonWidth = 24;
    // Filters of one resource class: its own, its intermediate's and the
    // extra intermediates'.
    static constexpr unsigned int kFilterMax = 15;

    UIResourceControl(PropertyBase* property, bool readOnly, unsigned int index);

    void setEmpty();
    // The filters of the property's resource class, ending with null, and a
    // file dialog "Resource open" over them; its answer comes to
    // notifySelectFile.
    void openFile();
    char const* const* getFilters() const { return mpFilters; }
    // Swaps the resource for its other form: native for an intermediate one,
    // else intermediate, from the same path.
    void convert();
    void notifyOpenButton(UIButton* button);
    // Ok: the chosen file's resource goes into the property.
    void notifySelectFile(UIDialog* dialog);
    ResourceBase* getResource() const;

    void align() override;
    void eventPaint(UIPainter* painter) override;
    // Opens the resource's editor.
    void eventMouseDoubleClick(sPoint const& position, unsigned int button) override;

protected:
    sRect getFieldRect() const;

    UIButton* mpOpenButton;
    char const* mpFilters[kFilterMax + 1];
};

// A resource control with a preview of the texture.
class UITextureResourceControl : public UIResourceControl {
public:
    static constexpr int kPreviewSize = 64;

    UITextureResourceControl(PropertyBase* property, bool readOnly, unsigned int index);

    void eventPaint(UIPainter* painter) override;
};

// A preview of the Texture an object property holds.
class UITextureControl : public UIControl {
public:
    UITextureControl(PropertyBase* property, unsigned int index);

    void eventPaint(UIPainter* painter) override;
    // A double click opens the texture in a TextureViewerWindow.
    void eventMouseDoubleClick(sPoint const& position, unsigned int button) override;
};
