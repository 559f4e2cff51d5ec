// UITexture: a viewer of one Texture, as large as the texture times its zoom,
// with a context menu for the filtering and for which channels show. The
// single-channel modes paint that channel opaque. It holds one reference to
// the texture. Main thread for events; paint in the window's job.
#pragma once

#include "ui/uibase.h"

class Texture;

class UITexture : public UIBase {
public:
    enum eFilteringMode {
        eFilteringMode_Point,
        eFilteringMode_Linear,
    };
    enum eColorMode {
        eColorMode_RGBA,
        eColorMode_RGB,
        eColorMode_Red,
        eColorMode_Green,
        eColorMode_Blue,
    };
    // No zoom step may make a side larger than this.
    static constexpr unsigned int kMaxZoomedSide = 4096;

    UITexture();
    // Releases the texture.
    ~UITexture() override;

    // Takes a reference, releases the old texture, resets the zoom and takes
    // the texture's size (zero without one).
    void setTexture(Texture* texture);
    Texture* getTexture() const { return mpTexture; }
    void setColor(sColor color) { mColor = color; }
    sColor getColor() const { return mColor; }
    // Also moves the radio check of the context menu.
    void setFilteringMode(unsigned int mode);
    unsigned int getFilteringMode() const { return mFilteringMode; }
    void setColorMode(unsigned int mode);
    unsigned int getColorMode() const { return mColorMode; }
    // 0 is 1:1; n above 0 magnifies by n + 1, n below 0 shrinks by -n.
    int getZoom() const { return mZoom; }

    void evPoint() { setFilteringMode(eFilteringMode_Point); }
    void evLinear() { setFilteringMode(eFilteringMode_Linear); }
    void evRGBA() { setColorMode(eColorMode_RGBA); }
    void evRGB() { setColorMode(eColorMode_RGB); }
    void evRed() { setColorMode(eColorMode_Red); }
    void evGreen() { setColorMode(eColorMode_Green); }
    void evBlue() { setColorMode(eColorMode_Blue); }

    void eventPaint(UIPainter* painter) override;
    void eventMouseWheel(sPoint const& amount) override;

private:
    void updateSize();

    sColor mColor;
    u32 mFilteringMode;
    u32 mColorMode;
    s32 mZoom;
    Texture* mpTexture;
};
