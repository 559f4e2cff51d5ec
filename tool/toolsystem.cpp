#include "tool/toolsystem.h"

#include <cstring>

#include "app/application.h"
#include "foundation/debug.h"
#include "render/drawcontext.h"
#include "render/renderobject.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "reflection/property.h"
#include "ui/uicontrolcomposite.h"
#include "tool/toolbase.h"
#include "tool/viewerwindow.h"

IMPLEMENT_TYPEINFO(ToolSystem, "System", TypeInfo::eAttribute_Singleton);
ToolSystem* ToolSystem::mpInstance = nullptr;

// The records hold their vertices inline; those with a texture pointer are
// 52, 60, 40, 52 and 28 bytes.
static_assert(sizeof(ToolSystem::sDrawLineFCommand) == 24, "record size");
static_assert(sizeof(ToolSystem::sDrawLineGCommand) == 28, "record size");
static_assert(sizeof(ToolSystem::sDrawTriangleFCommand) == 32, "record size");
static_assert(sizeof(ToolSystem::sDrawTriangleGCommand) == 40, "record size");
static_assert(sizeof(ToolSystem::sDrawTexturedTriangleFCommand) == 48 + sizeof(void*) - 4, "record size");
static_assert(sizeof(ToolSystem::sDrawTexturedTriangleGCommand) == 56 + sizeof(void*) - 4, "record size");
static_assert(sizeof(ToolSystem::sDrawRectFCommand) == 24, "record size");
static_assert(sizeof(ToolSystem::sDrawRectGCommand) == 36, "record size");
static_assert(sizeof(ToolSystem::sDrawTexturedRectFCommand) == 36 + sizeof(void*) - 4, "record size");
static_assert(sizeof(ToolSystem::sDrawTexturedRectGCommand) == 48 + sizeof(void*) - 4, "record size");
static_assert(sizeof(ToolSystem::sDrawStringCommand) == 24 + sizeof(void*) - 4, "record size");

namespace {

typedef DrawContext::sVertex sVertex;
typedef DrawContext::sTexturedVertex sTexturedVertex;

inline sVector toVector(sPoint const& point)
{
    return sVector(sFixed(point.x, 16), sFixed(point.y, 16));
}

inline sFixed rawFixed(s64 value)
{
    return sFixed::raw(static_cast<u32>(value));
}

inline void setVertex(sVertex& vertex, sVector const& position, sColor color)
{
    vertex.mPosition = position;
    vertex.mColor = color;
}

inline void setVertex(sTexturedVertex& vertex, sVector const& position, sColor color, sTexcoord const& texcoord)
{
    vertex.mPosition = position;
    vertex.mColor = color;
    vertex.mTexcoord = texcoord;
}

// The quad's corners in strip order: left top, right top, left bottom, right bottom.
inline void quadCorners(sVector const& leftTop, sVector const& rightBottom, sVector corners[4])
{
    corners[0] = leftTop;
    corners[1] = sVector(rightBottom.x, leftTop.y);
    corners[2] = sVector(leftTop.x, rightBottom.y);
    corners[3] = rightBottom;
}

inline u32 glyphIndex(char character)
{
    u32 const code = static_cast<unsigned char>(character);
    u32 const index = code - ToolSystem::kGlyphFirst;
    return index < ToolSystem::kGlyphNum ? index : 0; // outside the font: a blank cell
}

// Longest run of characters in one vertex allocation: 16 KiB of input.
u32 const kStringRun = DrawContext::kVertexHeapSize / (4 * sizeof(sTexturedVertex));

// The flat and the shaded textured records differ only in their colours.
template <typename Command>
void replayTexturedTriangle(ToolSystem const* tools, DrawContext* context, Command const* c, sColor const colors[3])
{
    sVector const positions[3] = {c->mPosition[0], c->mPosition[1], c->mPosition[2]};
    sTexcoord const texels[3] = {c->mTexcoord[0], c->mTexcoord[1], c->mTexcoord[2]};
    context->setVertexDecl(eVertexDecl_Textured);
    context->setTexture(c->mpTexture);
    tools->drawTriangle(context, positions, colors, texels);
}

} // namespace

// ---------------------------------------------------------------------------
// Life

ToolSystem* ToolSystem::create()
{
    if (mpInstance == nullptr) {
        ToolSystem* instance = new ToolSystem();
        mpInstance = instance;
    }
    return mpInstance;
}

void ToolSystem::destroy()
{
    delete this;
    mpInstance = nullptr;
}

ToolSystem::ToolSystem() : mToolTypeInfoList(), mpFontTexture(nullptr), mpDrawContext(nullptr), mpCommandBuffer(nullptr), mCommandReserved(0)
{
    DEV_ASSERT(mpInstance == nullptr, "ToolSystem already instanced.");
    createFontTexture();
    setProcessEnable(true, false, true);
    // Every tool class of the type database, counted first so that the list
    // is sized once.
    u32 const records = TypeInfo::getDataBaseSize();
    u32 tools = 0;
    for (u32 i = 0; i < records; ++i) {
        tools += TypeInfo::getTypeInfo(i)->isDerivedFrom("ToolBase") ? 1 : 0;
    }
    mToolTypeInfoList.reserve(tools);
    for (u32 i = 0; i < records; ++i) {
        TypeInfo const* type = TypeInfo::getTypeInfo(i);
        if (type->isDerivedFrom("ToolBase")) {
            mToolTypeInfoList.addLast(type);
        }
    }
    mpCommandBuffer = new InstantAllocator(kCommandBufferSize, "CommandBuffer", System::getAllocator(), true);
    DEV_TRACE("ToolSystem : start.\n");
}

ToolSystem::~ToolSystem()
{
    if (ViewSystem* views = ViewSystem::getInstance()) {
        views->removeDrawer(this);
    }
    if (mpFontTexture != nullptr) {
        mpFontTexture->release();
        mpFontTexture = nullptr;
    }
    delete mpCommandBuffer;
    mpCommandBuffer = nullptr;
    DEV_TRACE("ToolSystem : end.\n");
}

void ToolSystem::setup()
{
    addPreprocessDependency(RenderSystem::getInstance());
    // The recorded drawing is replayed last in each game view's pass.
    if (ViewSystem* views = ViewSystem::getInstance()) {
        views->addGameViewDrawer(ViewSystem::eDrawStage_Overlay,
                                 &ViewSystem::DrawerList::member<ToolSystem, &ToolSystem::draw>, this);
    }
}

// Every texel white; the bit decides the alpha. Bitmap row y goes to texel
// row 127 - y, which puts the top of the glyph sheet at texel row 0.
void ToolSystem::makeUIList(List<UIBase>& list)
{
    UITextureControl* control =
        new UITextureControl(new ObjectProperty("FontTexture", &mpFontTexture, true), UIControl::NoIndex);
    control->setDefaultSize();
    list.addLast(control);
}

void ToolSystem::createFontTexture()
{
    u32 const bytes = kFontSize * kFontSize * 4;
    Application* application = Application::getInstance();
    AllocatorBase* temp = application != nullptr ? application->getTempAllocator() : nullptr;
    u8* pixels = temp != nullptr ? static_cast<u8*>(temp->allocate(static_cast<int>(bytes), 4)) : new u8[bytes];
    for (u32 y = 0; y < kFontSize; ++y) {
        u8 const* row = mFontData + y * (kFontSize / 8);
        u8* texel = pixels + (kFontSize - 1 - y) * kFontSize * 4;
        for (u32 x = 0; x < kFontSize; ++x) {
            bool const set = (row[x / 8] & (0x80u >> (x % 8))) != 0;
            texel[0] = 255;
            texel[1] = 255;
            texel[2] = 255;
            texel[3] = set ? 255 : 0;
            texel += 4;
        }
    }
    mpFontTexture = new Texture(kFontSize, kFontSize, false, pixels);
    if (temp != nullptr) {
        temp->deallocate(pixels);
    } else {
        delete[] pixels;
    }
}

// ---------------------------------------------------------------------------
// Frame

void ToolSystem::preprocess()
{
    mpDrawContext = RenderSystem::getInstance()->popContext();
    mpCommandBuffer->clear();
    mCommandReserved.set(0);
}

void ToolSystem::postprocess()
{
    RenderSystem::getInstance()->pushContext(mpDrawContext);
    mpDrawContext = nullptr;
}

// ---------------------------------------------------------------------------
// Context builders

void ToolSystem::drawLine(DrawContext* context, sPoint const& from, sPoint const& to, sColor fromColor,
                          sColor toColor) const
{
    drawLine(context, toVector(from), toVector(to), fromColor, toColor);
}

void ToolSystem::drawLine(DrawContext* context, sVector const& from, sVector const& to, sColor fromColor,
                          sColor toColor) const
{
    sVertex* vertex = static_cast<sVertex*>(context->allocateVertices(ePrimitiveType_Line, 2));
    setVertex(vertex[0], from, fromColor);
    setVertex(vertex[1], to, toColor);
}

void ToolSystem::drawTriangle(DrawContext* context, sPoint const positions[3], sColor const colors[3]) const
{
    sVector const points[3] = {toVector(positions[0]), toVector(positions[1]), toVector(positions[2])};
    drawTriangle(context, points, colors);
}

void ToolSystem::drawTriangle(DrawContext* context, sVector const positions[3], sColor const colors[3]) const
{
    sVertex* vertex = static_cast<sVertex*>(context->allocateVertices(ePrimitiveType_Triangle, 3));
    for (u32 i = 0; i < 3; ++i) {
        setVertex(vertex[i], positions[i], colors[i]);
    }
}

void ToolSystem::drawRect(DrawContext* context, sRect const& rect, sColor const colors[4]) const
{
    drawRect(context, toVector(sPoint(rect.left, rect.top)), toVector(sPoint(rect.right, rect.bottom)), colors);
}

void ToolSystem::drawRect(DrawContext* context, sVector const& leftTop, sVector const& rightBottom,
                          sColor const colors[4]) const
{
    sVector corners[4];
    quadCorners(leftTop, rightBottom, corners);
    sVertex* vertex = static_cast<sVertex*>(context->allocateVertices(ePrimitiveType_Quad, 4));
    for (u32 i = 0; i < 4; ++i) {
        setVertex(vertex[i], corners[i], colors[i]);
    }
}

void ToolSystem::drawTriangle(DrawContext* context, sPoint const positions[3], sColor const colors[3],
                              sTexcoord const texcoords[3]) const
{
    sVector const points[3] = {toVector(positions[0]), toVector(positions[1]), toVector(positions[2])};
    drawTriangle(context, points, colors, texcoords);
}

void ToolSystem::drawTriangle(DrawContext* context, sVector const positions[3], sColor const colors[3],
                              sTexcoord const texcoords[3]) const
{
    sTexturedVertex* vertex = static_cast<sTexturedVertex*>(context->allocateVertices(ePrimitiveType_Triangle, 3));
    for (u32 i = 0; i < 3; ++i) {
        setVertex(vertex[i], positions[i], colors[i], texcoords[i]);
    }
}

void ToolSystem::drawRect(DrawContext* context, sRect const& rect, sColor const colors[4], sTexcoord const& leftTop,
                          sTexcoord const& rightBottom) const
{
    drawRect(context, toVector(sPoint(rect.left, rect.top)), toVector(sPoint(rect.right, rect.bottom)), colors, leftTop,
             rightBottom);
}

void ToolSystem::drawRect(DrawContext* context, sVector const& leftTop, sVector const& rightBottom,
                          sColor const colors[4], sTexcoord const& texLeftTop, sTexcoord const& texRightBottom) const
{
    sVector corners[4];
    quadCorners(leftTop, rightBottom, corners);
    sTexcoord const texels[4] = {texLeftTop, sTexcoord(texRightBottom.x, texLeftTop.y),
                                 sTexcoord(texLeftTop.x, texRightBottom.y), texRightBottom};
    sTexturedVertex* vertex = static_cast<sTexturedVertex*>(context->allocateVertices(ePrimitiveType_Quad, 4));
    for (u32 i = 0; i < 4; ++i) {
        setVertex(vertex[i], corners[i], colors[i], texels[i]);
    }
}

void ToolSystem::drawString(DrawContext* context, sPoint const& point, char const* text, unsigned int size,
                            sColor color, sRect const& clip) const
{
    drawString(context, toVector(point), text, size, color, clip);
}

// The glyph loop. Wide integers keep sRect::Max as a clip from overflowing.
void ToolSystem::drawString(DrawContext* context, sVector const& point, char const* text, unsigned int size,
                            sColor color, sRect const& clip) const
{
    if (text == nullptr || text[0] == '\0') {
        return;
    }
    s64 const x = point.x.mValue;
    s64 const y = point.y.mValue;
    s64 const width = static_cast<s64>(size) * 65536;
    s64 const clipRight = static_cast<s64>(clip.right) * 65536;
    if (x < static_cast<s64>(clip.left) * 65536 || y < static_cast<s64>(clip.top) * 65536 || x + width > clipRight ||
        y + 2 * width > static_cast<s64>(clip.bottom) * 65536) {
        return;
    }
    context->setTexture(mpFontTexture);
    u32 length = static_cast<u32>(strlen(text));
    s64 left = x;
    // One vertex allocation per call, unless the text is longer than a batch holds.
    while (length != 0) {
        u32 const run = length < kStringRun ? length : kStringRun;
        drawStringRun(context, left, y, text, run, size, color, clipRight);
        left += width * run;
        text += run;
        length -= run;
    }
}

void ToolSystem::drawStringRun(DrawContext* context, s64 x, s64 y, char const* text, u32 length, unsigned int size,
                               sColor color, s64 clipRight) const
{
    s64 const width = static_cast<s64>(size) * 65536;
    sTexturedVertex* vertex =
        static_cast<sTexturedVertex*>(context->allocateVertices(ePrimitiveType_Quad, length * 4));
    sTexturedVertex* const end = vertex + length * 4;
    sFixed const top = rawFixed(y);
    sFixed const bottom = rawFixed(y + 2 * width);
    for (u32 i = 0; i < length && x + width <= clipRight; ++i) {
        u32 const index = glyphIndex(text[i]);
        u16 const u = static_cast<u16>((index % kGlyphColumns) * kGlyphWidth);
        u16 const v = static_cast<u16>((index / kGlyphColumns) * kGlyphHeight);
        sFixed const left = rawFixed(x);
        sFixed const right = rawFixed(x + width);
        setVertex(vertex[0], sVector(left, top), color, sTexcoord(u, v));
        setVertex(vertex[1], sVector(right, top), color, sTexcoord(static_cast<u16>(u + kGlyphWidth), v));
        setVertex(vertex[2], sVector(left, bottom), color, sTexcoord(u, static_cast<u16>(v + kGlyphHeight)));
        setVertex(vertex[3], sVector(right, bottom), color,
                  sTexcoord(static_cast<u16>(u + kGlyphWidth), static_cast<u16>(v + kGlyphHeight)));
        vertex += 4;
        x += width;
    }
    // Cells past the clip were allocated too: they collapse to a point.
    while (vertex != end) {
        setVertex(*vertex, sVector(rawFixed(x), top), sColor(0, 0, 0, 0), sTexcoord(0, 0));
        ++vertex;
    }
}

// ---------------------------------------------------------------------------
// Deferred recording

void* ToolSystem::allocateCommandBuffer(unsigned int size)
{
    int const bytes = static_cast<int>(AllocatorBase::align(size, 4));
    if (mCommandReserved.add(bytes) + bytes > static_cast<int>(kCommandBufferSize)) {
        mCommandReserved.sub(bytes);
        return nullptr;
    }
    return mpCommandBuffer->allocate(bytes, 4);
}

u32 ToolSystem::getCommandBufferUsedSize() const
{
    return mpCommandBuffer->getUsedSizeFw();
}

void ToolSystem::drawLine(unsigned int viewMask, sVector const& from, sVector const& to, sColor color)
{
    sDrawLineFCommand* record = allocateCommandBuffer<sDrawLineFCommand>(eCommand_DrawLineF, viewMask);
    if (record != nullptr) {
        record->mPosition[0] = from;
        record->mPosition[1] = to;
        record->mColor = color;
    }
}

void ToolSystem::drawLine(unsigned int viewMask, sVector const& from, sVector const& to, sColor fromColor,
                          sColor toColor)
{
    sDrawLineGCommand* record = allocateCommandBuffer<sDrawLineGCommand>(eCommand_DrawLineG, viewMask);
    if (record != nullptr) {
        record->mPosition[0] = from;
        record->mPosition[1] = to;
        record->mColor[0] = fromColor;
        record->mColor[1] = toColor;
    }
}

void ToolSystem::drawTriangle(unsigned int viewMask, sVector const positions[3], sColor color)
{
    sDrawTriangleFCommand* record = allocateCommandBuffer<sDrawTriangleFCommand>(eCommand_DrawTriangleF, viewMask);
    if (record != nullptr) {
        for (u32 i = 0; i < 3; ++i) {
            record->mPosition[i] = positions[i];
        }
        record->mColor = color;
    }
}

void ToolSystem::drawTriangle(unsigned int viewMask, sVector const positions[3], sColor const colors[3])
{
    sDrawTriangleGCommand* record = allocateCommandBuffer<sDrawTriangleGCommand>(eCommand_DrawTriangleG, viewMask);
    if (record != nullptr) {
        for (u32 i = 0; i < 3; ++i) {
            record->mPosition[i] = positions[i];
            record->mColor[i] = colors[i];
        }
    }
}

void ToolSystem::drawTriangle(unsigned int viewMask, sVector const positions[3], sColor color, Texture* texture,
                              sTexcoord const texcoords[3])
{
    sDrawTexturedTriangleFCommand* record =
        allocateCommandBuffer<sDrawTexturedTriangleFCommand>(eCommand_DrawTexturedTriangleF, viewMask);
    if (record != nullptr) {
        for (u32 i = 0; i < 3; ++i) {
            record->mPosition[i] = positions[i];
            record->mTexcoord[i] = texcoords[i];
        }
        record->mColor = color;
        record->mpTexture = texture;
    }
}

void ToolSystem::drawTriangle(unsigned int viewMask, sVector const positions[3], sColor const colors[3],
                              Texture* texture, sTexcoord const texcoords[3])
{
    sDrawTexturedTriangleGCommand* record =
        allocateCommandBuffer<sDrawTexturedTriangleGCommand>(eCommand_DrawTexturedTriangleG, viewMask);
    if (record != nullptr) {
        for (u32 i = 0; i < 3; ++i) {
            record->mPosition[i] = positions[i];
            record->mColor[i] = colors[i];
            record->mTexcoord[i] = texcoords[i];
        }
        record->mpTexture = texture;
    }
}

void ToolSystem::drawRect(unsigned int viewMask, sVector const& leftTop, sVector const& rightBottom, sColor color)
{
    sDrawRectFCommand* record = allocateCommandBuffer<sDrawRectFCommand>(eCommand_DrawRectF, viewMask);
    if (record != nullptr) {
        record->mPosition[0] = leftTop;
        record->mPosition[1] = rightBottom;
        record->mColor = color;
    }
}

void ToolSystem::drawRect(unsigned int viewMask, sVector const& leftTop, sVector const& rightBottom,
                          sColor const colors[4])
{
    sDrawRectGCommand* record = allocateCommandBuffer<sDrawRectGCommand>(eCommand_DrawRectG, viewMask);
    if (record != nullptr) {
        record->mPosition[0] = leftTop;
        record->mPosition[1] = rightBottom;
        for (u32 i = 0; i < 4; ++i) {
            record->mColor[i] = colors[i];
        }
    }
}

void ToolSystem::drawRect(unsigned int viewMask, sVector const& leftTop, sVector const& rightBottom, sColor color,
                          Texture* texture, sTexcoord const& texLeftTop, sTexcoord const& texRightBottom)
{
    sDrawTexturedRectFCommand* record =
        allocateCommandBuffer<sDrawTexturedRectFCommand>(eCommand_DrawTexturedRectF, viewMask);
    if (record != nullptr) {
        record->mPosition[0] = leftTop;
        record->mPosition[1] = rightBottom;
        record->mColor = color;
        record->mpTexture = texture;
        record->mTexcoord[0] = texLeftTop;
        record->mTexcoord[1] = texRightBottom;
    }
}

void ToolSystem::drawRect(unsigned int viewMask, sVector const& leftTop, sVector const& rightBottom,
                          sColor const colors[4], Texture* texture, sTexcoord const& texLeftTop,
                          sTexcoord const& texRightBottom)
{
    sDrawTexturedRectGCommand* record =
        allocateCommandBuffer<sDrawTexturedRectGCommand>(eCommand_DrawTexturedRectG, viewMask);
    if (record != nullptr) {
        record->mPosition[0] = leftTop;
        record->mPosition[1] = rightBottom;
        for (u32 i = 0; i < 4; ++i) {
            record->mColor[i] = colors[i];
        }
        record->mpTexture = texture;
        record->mTexcoord[0] = texLeftTop;
        record->mTexcoord[1] = texRightBottom;
    }
}

void ToolSystem::drawString(unsigned int viewMask, sVector const& point, char const* text, unsigned int size,
                            sColor color)
{
    if (text == nullptr) {
        return;
    }
    u32 const length = static_cast<u32>(strlen(text)) + 1;
    // Both or neither: the text from the back end, the record from the front.
    int const textBytes = static_cast<int>(AllocatorBase::align(length, 4));
    if (mCommandReserved.add(textBytes) + textBytes > static_cast<int>(kCommandBufferSize)) {
        mCommandReserved.sub(textBytes);
        return;
    }
    sDrawStringCommand* record = allocateCommandBuffer<sDrawStringCommand>(eCommand_DrawString, viewMask);
    if (record == nullptr) {
        mCommandReserved.sub(textBytes);
        return;
    }
    // The walk over the records covers the front end only, so the copy of the
    // text lives at the back.
    char* copy = static_cast<char*>(mpCommandBuffer->allocate(-textBytes, 4));
    memcpy(copy, text, length);
    record->mPosition = point;
    record->mpText = copy;
    record->mTextSize = size;
    record->mColor = color;
}

// ---------------------------------------------------------------------------
// Immediate forms

void ToolSystem::pushCommonContext(Context const& context, bool textured)
{
    if (mpDrawContext == nullptr) {
        dev_assert("Can't draw this period.", __FILE__, __LINE__);
    }
    ViewSystem* views = ViewSystem::getInstance();
    sRect const window = RenderSystem::getInstance()->getWindowRect();
    sRect const viewport = views != nullptr ? views->getViewport(context.mView) : window;
    sRect const projection = views != nullptr ? views->getProjection(context.mView) : window;
    mpDrawContext->setView(context.mView);
    mpDrawContext->setDrawLevel(context.mDrawLevel, context.mDrawSubLevel);
    mpDrawContext->setRenderTarget(nullptr);
    mpDrawContext->setBlendMode(static_cast<eBlendMode>(context.mBlendMode));
    mpDrawContext->setViewport(viewport);
    mpDrawContext->setProjectionRect(projection);
    mpDrawContext->setScissorRect(viewport & context.mClip);
    if (textured) {
        mpDrawContext->setVertexDecl(eVertexDecl_Textured);
        mpDrawContext->setTextureFiltering(static_cast<eTextureFiltering>(context.mTextureFiltering));
        mpDrawContext->setTexture(context.mpTexture);
    } else {
        mpDrawContext->setVertexDecl(eVertexDecl_Plain);
    }
}

void ToolSystem::drawLine(Context const& context, sVector const& from, sVector const& to, sColor fromColor,
                          sColor toColor)
{
    lock();
    pushCommonContext(context, false);
    drawLine(mpDrawContext, from, to, fromColor, toColor);
    unlock();
}

void ToolSystem::drawTriangle(Context const& context, sVector const positions[3], sColor const colors[3],
                              sTexcoord const* texcoords)
{
    lock();
    bool const textured = texcoords != nullptr && context.mpTexture != nullptr;
    pushCommonContext(context, textured);
    if (textured) {
        drawTriangle(mpDrawContext, positions, colors, texcoords);
    } else {
        drawTriangle(mpDrawContext, positions, colors);
    }
    unlock();
}

void ToolSystem::drawRect(Context const& context, sVector const& leftTop, sVector const& rightBottom,
                          sColor const colors[4], sTexcoord const* texLeftTop, sTexcoord const* texRightBottom)
{
    lock();
    bool const textured = texLeftTop != nullptr && texRightBottom != nullptr && context.mpTexture != nullptr;
    pushCommonContext(context, textured);
    if (textured) {
        drawRect(mpDrawContext, leftTop, rightBottom, colors, *texLeftTop, *texRightBottom);
    } else {
        drawRect(mpDrawContext, leftTop, rightBottom, colors);
    }
    unlock();
}

void ToolSystem::drawString(Context const& context, sVector const& point, char const* text, unsigned int size,
                            sColor color)
{
    lock();
    Context font = context;
    font.mpTexture = mpFontTexture;
    pushCommonContext(font, true);
    drawString(mpDrawContext, point, text, size, color, sRect::Max);
    unlock();
}

void ToolSystem::drawString(sPoint const& point, char const* text, unsigned int size, sColor color)
{
    lock();
    if (mpDrawContext == nullptr) {
        dev_assert("Can't draw this period.", __FILE__, __LINE__);
    }
    u32 const view = ViewSystem::kOverlayView;
    ViewSystem* views = ViewSystem::getInstance();
    sRect const window = RenderSystem::getInstance()->getWindowRect();
    sRect const viewport = views != nullptr ? views->getViewport(view) : window;
    mpDrawContext->setView(view);
    mpDrawContext->setDrawLevel(0, 0);
    mpDrawContext->setRenderTarget(nullptr);
    mpDrawContext->setBlendMode(eBlendMode_Alpha);
    mpDrawContext->setViewport(viewport);
    mpDrawContext->setScissorRect(viewport);
    mpDrawContext->setProjectionRect(views != nullptr ? views->getProjection(view) : window);
    mpDrawContext->setVertexDecl(eVertexDecl_Textured);
    mpDrawContext->setTextureFiltering(eTextureFiltering_Nearest);
    mpDrawContext->setTexture(mpFontTexture);
    drawString(mpDrawContext, point, text, size, color, sRect::Max);
    unlock();
}

// ---------------------------------------------------------------------------
// Replay of the deferred buffer into one view

void ToolSystem::draw(DrawContext* context)
{
    context->setDrawLevel(16383, 0); // masked to 4095: above the scene
    context->setBlendMode(eBlendMode_Alpha);
    context->setTextureFiltering(eTextureFiltering_Linear);
    context->setTextureCombineMode(eTextureCombineMode_Modulate);
    u32 const viewBit = 1u << context->getView();

    u8 const* record = static_cast<u8 const*>(mpCommandBuffer->getHeap());
    u8 const* const end = record + mpCommandBuffer->getUsedSizeFw();
    while (record < end) {
        sCommandHeader const* header = reinterpret_cast<sCommandHeader const*>(record);
        if (header->mSize == 0) {
            break; // nothing valid can follow a record without size
        }
        record += header->mSize;
        if ((header->mViewMask & viewBit) == 0 || header->mCode >= eCommand_Num) {
            continue;
        }
        switch (header->mCode) {
        case eCommand_DrawLineF: {
            sDrawLineFCommand const* c = static_cast<sDrawLineFCommand const*>(header);
            context->setVertexDecl(eVertexDecl_Plain);
            drawLine(context, c->mPosition[0], c->mPosition[1], c->mColor, c->mColor);
            break;
        }
        case eCommand_DrawLineG: {
            sDrawLineGCommand const* c = static_cast<sDrawLineGCommand const*>(header);
            context->setVertexDecl(eVertexDecl_Plain);
            drawLine(context, c->mPosition[0], c->mPosition[1], c->mColor[0], c->mColor[1]);
            break;
        }
        case eCommand_DrawTriangleF: {
            sDrawTriangleFCommand const* c = static_cast<sDrawTriangleFCommand const*>(header);
            sColor const colors[3] = {c->mColor, c->mColor, c->mColor};
            sVector const positions[3] = {c->mPosition[0], c->mPosition[1], c->mPosition[2]};
            context->setVertexDecl(eVertexDecl_Plain);
            drawTriangle(context, positions, colors);
            break;
        }
        case eCommand_DrawTriangleG: {
            sDrawTriangleGCommand const* c = static_cast<sDrawTriangleGCommand const*>(header);
            sColor const colors[3] = {c->mColor[0], c->mColor[1], c->mColor[2]};
            sVector const positions[3] = {c->mPosition[0], c->mPosition[1], c->mPosition[2]};
            context->setVertexDecl(eVertexDecl_Plain);
            drawTriangle(context, positions, colors);
            break;
        }
        case eCommand_DrawTexturedTriangleF: {
            sDrawTexturedTriangleFCommand const* c = static_cast<sDrawTexturedTriangleFCommand const*>(header);
            sColor const colors[3] = {c->mColor, c->mColor, c->mColor};
            replayTexturedTriangle(this, context, c, colors);
            break;
        }
        case eCommand_DrawTexturedTriangleG: {
            sDrawTexturedTriangleGCommand const* c = static_cast<sDrawTexturedTriangleGCommand const*>(header);
            sColor const colors[3] = {c->mColor[0], c->mColor[1], c->mColor[2]};
            replayTexturedTriangle(this, context, c, colors);
            break;
        }
        case eCommand_DrawRectF: {
            sDrawRectFCommand const* c = static_cast<sDrawRectFCommand const*>(header);
            sColor const colors[4] = {c->mColor, c->mColor, c->mColor, c->mColor};
            context->setVertexDecl(eVertexDecl_Plain);
            drawRect(context, c->mPosition[0], c->mPosition[1], colors);
            break;
        }
        case eCommand_DrawRectG: {
            sDrawRectGCommand const* c = static_cast<sDrawRectGCommand const*>(header);
            sColor const colors[4] = {c->mColor[0], c->mColor[1], c->mColor[2], c->mColor[3]};
            context->setVertexDecl(eVertexDecl_Plain);
            drawRect(context, c->mPosition[0], c->mPosition[1], colors);
            break;
        }
        case eCommand_DrawTexturedRectF: {
            sDrawTexturedRectFCommand const* c = static_cast<sDrawTexturedRectFCommand const*>(header);
            sColor const colors[4] = {c->mColor, c->mColor, c->mColor, c->mColor};
            context->setVertexDecl(eVertexDecl_Textured);
            context->setTexture(c->mpTexture);
            drawRect(context, c->mPosition[0], c->mPosition[1], colors, c->mTexcoord[0], c->mTexcoord[1]);
            break;
        }
        case eCommand_DrawTexturedRectG: {
            sDrawTexturedRectGCommand const* c = static_cast<sDrawTexturedRectGCommand const*>(header);
            sColor const colors[4] = {c->mColor[0], c->mColor[1], c->mColor[2], c->mColor[3]};
            context->setVertexDecl(eVertexDecl_Textured);
            context->setTexture(c->mpTexture);
            drawRect(context, c->mPosition[0], c->mPosition[1], colors, c->mTexcoord[0], c->mTexcoord[1]);
            break;
        }
        case eCommand_DrawString: {
            sDrawStringCommand const* c = static_cast<sDrawStringCommand const*>(header);
            context->setVertexDecl(eVertexDecl_Textured);
            drawString(context, c->mPosition, c->mpText, c->mTextSize, c->mColor, sRect::Max);
            break;
        }
        default:
            break;
        }
    }
}

// ---------------------------------------------------------------------------
// Tools

ToolBase* ToolSystem::createTool(TypeInfo const* resourceType) const
{
    if (resourceType == nullptr) {
        return nullptr;
    }
    for (TypeInfo const* type : mToolTypeInfoList) {
        ToolBase* tool = static_cast<ToolBase*>(type->newInstance());
        if (tool == nullptr) {
            continue;
        }
        if (tool->getResourceTypeInfo() == resourceType) {
            return tool;
        }
        delete tool;
    }
    return new ResourceViewerWindow();
}
