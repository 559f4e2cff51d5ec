// ToolSystem: the built-in font, the builders that turn lines, triangles,
// rectangles and strings into vertices of a DrawContext, and a deferred
// drawing buffer that any code may record into during the frame and that is
// played into every view. The context builders take no lock (each caller
// brings its own context); the immediate forms share one context and lock.
#pragma once

#include "app/system.h"
#include "foundation/allocator.h"
#include "foundation/multithread.h"
#include "foundation/types.h"
#include "foundation/vector.h"

class DrawContext;
class Texture;
class ToolBase;

class ToolSystem : public System {
public:
    // Parameter block of the immediate forms.
    struct Context {
        u32 mView;
        u32 mDrawLevel;
        u32 mDrawSubLevel;
        sRect mClip;              // view coordinates; cut with the view's viewport
        u32 mBlendMode;           // eBlendMode
        u32 mTextureFiltering;    // eTextureFiltering
        Texture* mpTexture;
    };

    // Records of the deferred buffer; F is one colour for all vertices, G one
    // per vertex. Positions are 16.16, texels unsigned 16-bit pairs.
    enum eCommand {
        eCommand_DrawLineF,
        eCommand_DrawLineG,
        eCommand_DrawTriangleF,
        eCommand_DrawTriangleG,
        eCommand_DrawTexturedTriangleF,
        eCommand_DrawTexturedTriangleG,
        eCommand_DrawRectF,
        eCommand_DrawRectG,
        eCommand_DrawTexturedRectF,
        eCommand_DrawTexturedRectG,
        eCommand_DrawString,
        eCommand_Num
    };

// Records are packed to 4 bytes, as the buffer hands out memory.
#pragma pack(push, 4)
    struct sCommandHeader {
        u8 mCode;      // eCommand
        u8 mSize;      // bytes of the whole record
        u16 mViewMask; // bit n: drawn in view n
    };
    struct sDrawLineFCommand : sCommandHeader {
        sVector mPosition[2];
        sColor mColor;
    };
    struct sDrawLineGCommand : sCommandHeader {
        sVector mPosition[2];
        sColor mColor[2];
    };
    struct sDrawTriangleFCommand : sCommandHeader {
        sVector mPosition[3];
        sColor mColor;
    };
    struct sDrawTriangleGCommand : sCommandHeader {
        sVector mPosition[3];
        sColor mColor[3];
    };
    struct sDrawTexturedTriangleFCommand : sCommandHeader {
        sVector mPosition[3];
        sColor mColor;
        Texture* mpTexture;
        sTexcoord mTexcoord[3];
    };
    struct sDrawTexturedTriangleGCommand : sCommandHeader {
        sVector mPosition[3];
        sColor mColor[3];
        Texture* mpTexture;
        sTexcoord mTexcoord[3];
    };
    struct sDrawRectFCommand : sCommandHeader {
        sVector mPosition[2]; // left top, right bottom
        sColor mColor;
    };
    struct sDrawRectGCommand : sCommandHeader {
        sVector mPosition[2];
        sColor mColor[4]; // left top, right top, left bottom, right bottom
    };
    struct sDrawTexturedRectFCommand : sCommandHeader {
        sVector mPosition[2];
        sColor mColor;
        Texture* mpTexture;
        sTexcoord mTexcoord[2]; // at left top, at right bottom
    };
    struct sDrawTexturedRectGCommand : sCommandHeader {
        sVector mPosition[2];
        sColor mColor[4];
        Texture* mpTexture;
        sTexcoord mTexcoord[2];
    };
    struct sDrawStringCommand : sCommandHeader {
        sVector mPosition;
        char const* mpText; // a copy in the buffer's back end
        u32 mTextSize;      // cell width in pixels
        sColor mColor;
    };
#pragma pack(pop)

    static constexpr u32 kCommandBufferSize = 0x48000;
    static constexpr u32 kFontSize = 128;       // the font bitmap is 128 by 128
    static constexpr u32 kGlyphWidth = 6;
    static constexpr u32 kGlyphHeight = 12;
    static constexpr u32 kGlyphColumns = 16;
    static constexpr u32 kGlyphFirst = 32;      // the character in the first cell
    static constexpr u32 kGlyphNum = 160;       // ten full rows of cells

    // One bit per pixel, 16 bytes per row, most significant bit leftmost,
    // rows stored bottom-up (the last row of the array is the top row of the
    // glyph sheet), cells of 6 by 12 in 16 columns from the character 32.
    static u8 const mFontData[kFontSize * kFontSize / 8];

    static ToolSystem* create();
    static ToolSystem* getInstance() { return mpInstance; }
    void destroy() override;

    DECLARE_TYPEINFO(TypeInfo)

    // Preprocess after RenderSystem's.
    void setup() override;
    // Holds a context from here to postprocess, and empties the buffer.
    void preprocess() override;
    void postprocess() override;

    Texture* getFontTexture() const { return mpFontTexture; }
    // "FontTexture": a preview of the font, for inspection.
    void makeUIList(List<UIBase>& list) override;
    // The type records derived from ToolBase, in database order.
    Vector<TypeInfo const> const& getToolTypeInfoList() const { return mToolTypeInfoList; }
    // The tool whose managed class is exactly resourceType, found by making
    // one of each tool class in turn (so a tool's constructor must be cheap
    // and harmless); a ResourceViewerWindow when none claims it; null for
    // null. The caller shows it with UISystem::addWindow.
    ToolBase* createTool(TypeInfo const* resourceType) const;

    // -- Context builders: allocate and fill vertices of the context's
    // current declaration; they set no state apart from drawString's texture.
    // Plain (declaration 0):
    void drawLine(DrawContext* context, sPoint const& from, sPoint const& to, sColor fromColor, sColor toColor) const;
    void drawLine(DrawContext* context, sVector const& from, sVector const& to, sColor fromColor, sColor toColor) const;
    void drawTriangle(DrawContext* context, sPoint const positions[3], sColor const colors[3]) const;
    void drawTriangle(DrawContext* context, sVector const positions[3], sColor const colors[3]) const;
    // Colours of left top, right top, left bottom, right bottom.
    void drawRect(DrawContext* context, sRect const& rect, sColor const colors[4]) const;
    void drawRect(DrawContext* context, sVector const& leftTop, sVector const& rightBottom, sColor const colors[4]) const;
    // Textured (declaration 1):
    void drawTriangle(DrawContext* context, sPoint const positions[3], sColor const colors[3],
                      sTexcoord const texcoords[3]) const;
    void drawTriangle(DrawContext* context, sVector const positions[3], sColor const colors[3],
                      sTexcoord const texcoords[3]) const;
    // Texels at left top and right bottom; the other corners mix them.
    void drawRect(DrawContext* context, sRect const& rect, sColor const colors[4], sTexcoord const& leftTop,
                  sTexcoord const& rightBottom) const;
    void drawRect(DrawContext* context, sVector const& leftTop, sVector const& rightBottom, sColor const colors[4],
                  sTexcoord const& texLeftTop, sTexcoord const& texRightBottom) const;
    // Cells size wide and 2 * size high from point; nothing when the first
    // cell is not wholly inside clip, and the text stops at clip's right.
    // Characters outside the font show as blanks.
    void drawString(DrawContext* context, sPoint const& point, char const* text, unsigned int size, sColor color,
                    sRect const& clip) const;
    void drawString(DrawContext* context, sVector const& point, char const* text, unsigned int size, sColor color,
                    sRect const& clip) const;

    // -- Deferred recording, any thread, during the frame. A full buffer
    // drops the primitive without a word.
    void drawLine(unsigned int viewMask, sVector const& from, sVector const& to, sColor color);
    void drawLine(unsigned int viewMask, sVector const& from, sVector const& to, sColor fromColor, sColor toColor);
    void drawTriangle(unsigned int viewMask, sVector const positions[3], sColor color);
    void drawTriangle(unsigned int viewMask, sVector const positions[3], sColor const colors[3]);
    void drawTriangle(unsigned int viewMask, sVector const positions[3], sColor color, Texture* texture,
                      sTexcoord const texcoords[3]);
    void drawTriangle(unsigned int viewMask, sVector const positions[3], sColor const colors[3], Texture* texture,
                      sTexcoord const texcoords[3]);
    void drawRect(unsigned int viewMask, sVector const& leftTop, sVector const& rightBottom, sColor color);
    void drawRect(unsigned int viewMask, sVector const& leftTop, sVector const& rightBottom, sColor const colors[4]);
    void drawRect(unsigned int viewMask, sVector const& leftTop, sVector const& rightBottom, sColor color,
                  Texture* texture, sTexcoord const& texLeftTop, sTexcoord const& texRightBottom);
    void drawRect(unsigned int viewMask, sVector const& leftTop, sVector const& rightBottom, sColor const colors[4],
                  Texture* texture, sTexcoord const& texLeftTop, sTexcoord const& texRightBottom);
    void drawString(unsigned int viewMask, sVector const& point, char const* text, unsigned int size, sColor color);

    // Null when full. Alignment 4.
    void* allocateCommandBuffer(unsigned int size);
    template <typename T>
    T* allocateCommandBuffer(eCommand code, unsigned int viewMask)
    {
        T* record = static_cast<T*>(allocateCommandBuffer(sizeof(T)));
        if (record != nullptr) {
            sCommandHeader* header = record;
            header->mCode = static_cast<u8>(code);
            header->mSize = static_cast<u8>(sizeof(T));
            header->mViewMask = static_cast<u16>(viewMask);
        }
        return record;
    }

    // -- Immediate forms, between preprocess and postprocess only; they
    // share one context and lock the system. Textured when the block names a
    // texture (triangles, rectangles); strings always use the font.
    void drawLine(Context const& context, sVector const& from, sVector const& to, sColor fromColor, sColor toColor);
    void drawTriangle(Context const& context, sVector const positions[3], sColor const colors[3],
                      sTexcoord const* texcoords = nullptr);
    void drawRect(Context const& context, sVector const& leftTop, sVector const& rightBottom, sColor const colors[4],
                  sTexcoord const* texLeftTop = nullptr, sTexcoord const* texRightBottom = nullptr);
    void drawString(Context const& context, sVector const& point, char const* text, unsigned int size, sColor color);
    // The application's overlay text, in view 6.
    void drawString(sPoint const& point, char const* text, unsigned int size, sColor color);
    void pushCommonContext(Context const& context, bool textured);

    // Plays the deferred buffer into the context's view.
    void draw(DrawContext* context);

    u32 getCommandBufferUsedSize() const;

protected:
    ToolSystem();
    ~ToolSystem() override;

private:
    void createFontTexture();
    void drawStringRun(DrawContext* context, s64 x, s64 y, char const* text, u32 length, unsigned int size,
                       sColor color, s64 clipRight) const;

    Vector<TypeInfo const> mToolTypeInfoList;
    Texture* mpFontTexture;
    DrawContext* mpDrawContext;
    InstantAllocator* mpCommandBuffer;
    // Bytes promised by the buffer, so that a full buffer can refuse a
    // record before the allocator itself would end the program.
    Atomic mCommandReserved;

    static ToolSystem* mpInstance;
};
