// UIPainter: what a widget draws with in eventPaint. It lives on the stack of
// one paint job, wraps that job's DrawContext, adds the painted widget's
// origin to every coordinate and records vertices through ToolSystem's
// builders; RenderSystem replays them later. Nothing is kept between frames.
// One job, one thread: it is never shared and takes no lock.
#pragma once

#include "foundation/autostring.h"
#include "foundation/types.h"
#include "render/drawcontext.h"

class Texture;

// Three times the horizontal place (left, centre, right) plus the vertical
// place (top, middle, bottom).
enum eAlignment {
    eAlignment_LeftTop,
    eAlignment_LeftMiddle,
    eAlignment_LeftBottom,
    eAlignment_CenterTop,
    eAlignment_CenterMiddle,
    eAlignment_CenterBottom,
    eAlignment_RightTop,
    eAlignment_RightMiddle,
    eAlignment_RightBottom,
    eAlignment_Num
};

class UIPainter {
public:
    typedef sTexcoord sTexel;

    // The fixed font cell: all toolkit layout is counted in these.
    static constexpr int kFontWidth = 6;
    static constexpr int kFontHeight = 12;
    // Draw level of controls painted over a game view.
    static constexpr unsigned int kGameViewLevel = 16383;

    // For the UI: view 5's viewport, scissor and projection, level 0 with
    // the priority as sub-level.
    UIPainter(DrawContext* context, unsigned int priority);
    // For a game view: the context's view stays; level 16383, sub-level 0.
    explicit UIPainter(DrawContext* context);

    void setPriority(unsigned int priority);
    void increasePriority() { setPriority(mPriority + 1); }
    void decreasePriority() { setPriority(mPriority - 1); }
    unsigned int getPriority() const { return mPriority; }
    // Scissor in view coordinates; origin added to all later coordinates.
    void setRegion(sRect const& clip, sPoint const& origin);
    void setBlendMode(eBlendMode mode);
    eBlendMode getBlendMode() const { return mBlendMode; }
    void setTexture(Texture* texture) { mpTexture = texture; }
    void setTextureFiltering(eTextureFiltering filtering);
    static sSize getFontSize() { return sSize(kFontWidth, kFontHeight); }
    DrawContext* getDrawContext() const { return mpDrawContext; }
    sPoint const& getOrigin() const { return mOrigin; }

    // Colours of left top, right top, left bottom, right bottom.
    void drawRect(sRect const& rect, sColor color);
    void drawRect(sRect const& rect, sColor const colors[4]);
    // Texels at left top and right bottom; the other corners mix them.
    void drawRect(sRect const& rect, sColor color, sTexel const& leftTop, sTexel const& rightBottom);
    void drawRect(sRect const& rect, sColor const colors[4], sTexel const& leftTop, sTexel const& rightBottom);
    void drawTriangle(sPoint const& a, sPoint const& b, sPoint const& c, sColor color);
    void drawTriangle(sPoint const& a, sPoint const& b, sPoint const& c, sColor const colors[3]);
    void drawTriangle(sPoint const& a, sPoint const& b, sPoint const& c, sColor color, sTexel const texels[3]);
    void drawTriangle(sPoint const& a, sPoint const& b, sPoint const& c, sColor const colors[3],
                      sTexel const texels[3]);
    void drawLine(sPoint const& from, sPoint const& to, sColor color);
    void drawLine(sPoint const& from, sPoint const& to, sColor fromColor, sColor toColor);
    // Top and left on the edge, bottom and right one pixel inside: the line
    // rasteriser leaves out the last pixel.
    void drawFrame(sRect const& rect, sColor color);
    void drawConvexRect(sRect const& rect);
    void drawConcaveRect(sRect const& rect);
    void drawConcaveLine(sPoint const& from, sPoint const& to);
    void drawCheck(sRect const& rect, sColor color);
    void drawCircle(sPoint const& center, int radius, sColor color, unsigned int segments);
    // A closed pie slice; the last step stops one segment short of the end.
    void drawArc(sPoint const& center, int radius, float startDegree, float endDegree, sColor color,
                 unsigned int segments);
    void drawGroup(sRect const& rect, AutoString const& caption, sColor color);
    void drawGroup(sRect const& rect, char const* caption, sColor color);
    // Cut to the cells that fit the rectangle, then placed by the alignment.
    void drawString(sRect const& rect, AutoString const& text, sColor color, eAlignment alignment);
    void drawString(sRect const& rect, char const* text, sColor color, eAlignment alignment);
    // From the point, not clipped.
    void drawString(sPoint const& point, AutoString const& text, sColor color);
    void drawString(sPoint const& point, char const* text, sColor color);

private:
    void plain();
    void textured();
    void edges(sRect const& rect, sColor topLeft, sColor bottomRight);
    void text(sPoint const& point, char const* text, sColor color, sRect const& clip);
    sPoint at(sPoint const& point) const { return point + mOrigin; }
    sRect at(sRect const& rect) const
    {
        return sRect(rect.left + mOrigin.x, rect.top + mOrigin.y, rect.right + mOrigin.x, rect.bottom + mOrigin.y);
    }

    DrawContext* mpDrawContext;
    Texture* mpTexture;
    eBlendMode mBlendMode;
    eTextureFiltering mTextureFiltering;
    sPoint mOrigin;
    u32 mPriority;
};
