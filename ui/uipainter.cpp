#include "ui/uipainter.h"

#include <cmath>
#include <cstring>

#include "foundation/debug.h"
#include "foundation/fixedmath.h"
#include "render/viewsystem.h"
#include "tool/toolsystem.h"
#include "ui/uisystem.h"

namespace {

// The pie slice's angles turn into radians with this value, not pi itself.
float const kArcPi = 3.1415925f;
// The longest run of visible characters drawString copies, with its end.
unsigned int const kStringBuffer = 256;

ToolSystem const* tools()
{
    return ToolSystem::getInstance();
}

} // namespace

UIPainter::UIPainter(DrawContext* context, unsigned int priority)
    : mpDrawContext(context), mpTexture(nullptr), mBlendMode(eBlendMode_Opaque),
      mTextureFiltering(eTextureFiltering_Linear), mPriority(priority)
{
    unsigned int const view = ViewSystem::kInterfaceView;
    context->setView(view);
    if (ViewSystem* views = ViewSystem::getInstance()) {
        context->setViewport(views->getViewport(view));
        context->setScissorRect(views->getViewport(view));
        context->setProjectionRect(views->getProjection(view));
    }
    context->setDrawLevel(0, priority);
}

UIPainter::UIPainter(DrawContext* context)
    : mpDrawContext(context), mpTexture(nullptr), mBlendMode(eBlendMode_Opaque),
      mTextureFiltering(eTextureFiltering_Linear), mPriority(0)
{
    context->setDrawLevel(kGameViewLevel, 0);
}

void UIPainter::setPriority(unsigned int priority)
{
    mPriority = priority;
    mpDrawContext->setDrawLevel(0, priority);
}

void UIPainter::setRegion(sRect const& clip, sPoint const& origin)
{
    mpDrawContext->setScissorRect(clip);
    mOrigin = origin;
}

void UIPainter::setBlendMode(eBlendMode mode)
{
    if (static_cast<unsigned int>(mode) >= eBlendMode_Num) {
        dev_assert("Invalid blend mode.", __FILE__, __LINE__);
    }
    mBlendMode = mode;
    mpDrawContext->setBlendMode(mode);
}

void UIPainter::setTextureFiltering(eTextureFiltering filtering)
{
    if (static_cast<unsigned int>(filtering) >= eTextureFiltering_Num) {
        dev_assert("Invalid texture filtering.", __FILE__, __LINE__);
    }
    mTextureFiltering = filtering;
}

void UIPainter::plain()
{
    mpDrawContext->setVertexDecl(eVertexDecl_Plain);
}

void UIPainter::textured()
{
    mpDrawContext->setVertexDecl(eVertexDecl_Textured);
    mpDrawContext->setTexture(mpTexture);
    mpDrawContext->setTextureFiltering(mTextureFiltering);
}

void UIPainter::drawRect(sRect const& rect, sColor color)
{
    sColor const colors[4] = {color, color, color, color};
    drawRect(rect, colors);
}

void UIPainter::drawRect(sRect const& rect, sColor const colors[4])
{
    plain();
    tools()->drawRect(mpDrawContext, at(rect), colors);
}

void UIPainter::drawRect(sRect const& rect, sColor color, sTexel const& leftTop, sTexel const& rightBottom)
{
    sColor const colors[4] = {color, color, color, color};
    drawRect(rect, colors, leftTop, rightBottom);
}

void UIPainter::drawRect(sRect const& rect, sColor const colors[4], sTexel const& leftTop, sTexel const& rightBottom)
{
    textured();
    tools()->drawRect(mpDrawContext, at(rect), colors, leftTop, rightBottom);
}

void UIPainter::drawTriangle(sPoint const& a, sPoint const& b, sPoint const& c, sColor color)
{
    sColor const colors[3] = {color, color, color};
    drawTriangle(a, b, c, colors);
}

void UIPainter::drawTriangle(sPoint const& a, sPoint const& b, sPoint const& c, sColor const colors[3])
{
    plain();
    sPoint const points[3] = {at(a), at(b), at(c)};
    tools()->drawTriangle(mpDrawContext, points, colors);
}

void UIPainter::drawTriangle(sPoint const& a, sPoint const& b, sPoint const& c, sColor color, sTexel const texels[3])
{
    sColor const colors[3] = {color, color, color};
    drawTriangle(a, b, c, colors, texels);
}

void UIPainter::drawTriangle(sPoint const& a, sPoint const& b, sPoint const& c, sColor const colors[3],
                             sTexel const texels[3])
{
    textured();
    sPoint const points[3] = {at(a), at(b), at(c)};
    tools()->drawTriangle(mpDrawContext, points, colors, texels);
}

void UIPainter::drawLine(sPoint const& from, sPoint const& to, sColor color)
{
    drawLine(from, to, color, color);
}

void UIPainter::drawLine(sPoint const& from, sPoint const& to, sColor fromColor, sColor toColor)
{
    plain();
    tools()->drawLine(mpDrawContext, at(from), at(to), fromColor, toColor);
}

void UIPainter::edges(sRect const& rect, sColor topLeft, sColor bottomRight)
{
    drawLine(sPoint(rect.left, rect.top), sPoint(rect.right, rect.top), topLeft);
    drawLine(sPoint(rect.left, rect.top), sPoint(rect.left, rect.bottom), topLeft);
    drawLine(sPoint(rect.left, rect.bottom - 1), sPoint(rect.right, rect.bottom - 1), bottomRight);
    drawLine(sPoint(rect.right - 1, rect.top), sPoint(rect.right - 1, rect.bottom), bottomRight);
}

void UIPainter::drawFrame(sRect const& rect, sColor color)
{
    edges(rect, color, color);
}

void UIPainter::drawConvexRect(sRect const& rect)
{
    UISystem const* system = UISystem::getInstance();
    edges(rect, system->mHighLightColor, system->mDarkLightColor);
}

void UIPainter::drawConcaveRect(sRect const& rect)
{
    UISystem const* system = UISystem::getInstance();
    edges(rect, system->mDarkLightColor, system->mHighLightColor);
}

void UIPainter::drawConcaveLine(sPoint const& from, sPoint const& to)
{
    UISystem const* system = UISystem::getInstance();
    drawLine(from, to, system->mDarkLightColor);
    int const dx = to.x > from.x ? to.x - from.x : from.x - to.x;
    int const dy = to.y > from.y ? to.y - from.y : from.y - to.y;
    sPoint const shift = (dx <= dy) ? sPoint(1, 0) : sPoint(0, 1);
    drawLine(from + shift, to + shift, system->mHighLightColor);
}

void UIPainter::drawCheck(sRect const& rect, sColor color)
{
    int const cx = (rect.left + rect.right) / 2;
    int const cy = (rect.top + rect.bottom) / 2;
    sPoint const middle(cx - 1, cy + 2);
    drawLine(sPoint(cx - 3, cy), middle, color);
    drawLine(middle, sPoint(cx + 2, cy - 4), color);
}

void UIPainter::drawCircle(sPoint const& center, int radius, sColor color, unsigned int segments)
{
    sPoint const start(center.x + radius, center.y);
    sPoint previous = start;
    sFixed const length(radius);
    for (unsigned int i = 1; i < segments; ++i) {
        int const degrees = static_cast<int>(i * 360 / segments);
        sPoint const point(center.x + static_cast<int>(TrigonometricalFunction::getCos(degrees) * length),
                           center.y + static_cast<int>(TrigonometricalFunction::getSin(degrees) * length));
        drawLine(previous, point, color);
        previous = point;
    }
    drawLine(previous, start, color);
}

void UIPainter::drawArc(sPoint const& center, int radius, float startDegree, float endDegree, sColor color,
                        unsigned int segments)
{
    if (segments == 0) {
        return;
    }
    float const start = startDegree * kArcPi / 180.0f;
    float const step = (endDegree * kArcPi / 180.0f - start) / static_cast<float>(segments);
    float const r = static_cast<float>(radius);
    auto pointAt = [&](float angle) {
        return sPoint(center.x + static_cast<int>(cosf(angle) * r), center.y + static_cast<int>(sinf(angle) * r));
    };
    sPoint previous = pointAt(start);
    drawLine(center, previous, color);
    for (unsigned int i = 1; i < segments; ++i) {
        sPoint const point = pointAt(start + step * static_cast<float>(i));
        drawLine(previous, point, color);
        previous = point;
    }
    drawLine(center, previous, color);
}

void UIPainter::drawGroup(sRect const& rect, AutoString const& caption, sColor color)
{
    drawGroup(rect, caption.c_str(), color);
}

void UIPainter::drawGroup(sRect const& rect, char const* caption, sColor color)
{
    sRect const frame(rect.left, rect.top + 6, rect.right - 1, rect.bottom - 1);
    bool const titled = caption != nullptr && caption[0] != '\0';
    sRect text;
    if (titled) {
        int const width = static_cast<int>(strlen(caption)) * kFontWidth;
        text = sRect(rect.left + 6, rect.top, minimum(rect.left + 6 + width, rect.right - 6), rect.top + kFontHeight);
    }
    drawConcaveLine(sPoint(frame.right - 1, frame.top), sPoint(frame.right - 1, frame.bottom + 1));
    drawConcaveLine(sPoint(frame.left, frame.bottom - 1), sPoint(frame.right, frame.bottom - 1));
    if (titled) {
        // The top side breaks around the caption.
        drawConcaveLine(sPoint(frame.left, frame.top), sPoint(text.left - 2, frame.top));
        drawConcaveLine(sPoint(text.right + 2, frame.top), sPoint(frame.right, frame.top));
    } else {
        drawConcaveLine(sPoint(frame.left, frame.top), sPoint(frame.right + 1, frame.top));
    }
    drawConcaveLine(sPoint(frame.left, frame.top + 1), sPoint(frame.left, frame.bottom + 1));
    if (titled) {
        drawString(text, caption, color, eAlignment_LeftMiddle);
    }
}

void UIPainter::drawString(sRect const& rect, AutoString const& text, sColor color, eAlignment alignment)
{
    drawString(rect, text.c_str(), color, alignment);
}

void UIPainter::drawString(sRect const& rect, char const* string, sColor color, eAlignment alignment)
{
    if (string == nullptr || string[0] == '\0' || rect.getHeight() < kFontHeight || rect.getWidth() < kFontWidth) {
        return;
    }
    unsigned int const length = static_cast<unsigned int>(strlen(string));
    unsigned int const visible = minimum(length, (rect.getWidth() + 5) / kFontWidth);
    if (visible >= kStringBuffer - 1) {
        dev_assert("Too long string.", __FILE__, __LINE__);
    }
    char buffer[kStringBuffer];
    buffer[0] = '\0';
    int x = rect.left;
    int y = rect.top;
    // An alignment out of range keeps left and top and shows nothing.
    if (static_cast<unsigned int>(alignment) < eAlignment_Num) {
        unsigned int first = 0;
        int const cells = static_cast<int>(visible) * kFontWidth;
        switch (alignment / 3) {
        case 1:
            first = (length - visible) / 2;
            x = (rect.left + rect.right - cells) / 2;
            break;
        case 2:
            first = length - visible;
            x = rect.right - cells;
            break;
        default:
            break;
        }
        switch (alignment % 3) {
        case 1:
            y = (rect.top + rect.bottom - kFontHeight) / 2;
            break;
        case 2:
            y = rect.bottom - kFontHeight;
            break;
        default:
            break;
        }
        memcpy(buffer, string + first, visible);
        buffer[visible] = '\0';
    }
    text(sPoint(x, y), buffer, color, at(rect));
}

void UIPainter::drawString(sPoint const& point, AutoString const& string, sColor color)
{
    drawString(point, string.c_str(), color);
}

void UIPainter::drawString(sPoint const& point, char const* string, sColor color)
{
    if (string == nullptr || string[0] == '\0') {
        return;
    }
    text(point, string, color, sRect::Max);
}

void UIPainter::text(sPoint const& point, char const* string, sColor color, sRect const& clip)
{
    mpDrawContext->setBlendMode(eBlendMode_Alpha);
    mpDrawContext->setVertexDecl(eVertexDecl_Textured);
    mpDrawContext->setTexture(tools()->getFontTexture());
    mpDrawContext->setTextureFiltering(eTextureFiltering_Nearest);
    tools()->drawString(mpDrawContext, at(point), string, kFontWidth, color, clip);
    mpDrawContext->setBlendMode(mBlendMode);
}
