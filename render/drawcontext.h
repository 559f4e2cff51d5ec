// DrawContext: a recording object. A caller takes one from
// RenderSystem::popContext, sets state, writes vertices into the memory that
// allocateVertices answers, and gives it back with pushContext. Vertices with
// equal state are batched; each batch becomes one draw command with the sort
// key of the state. One thread at a time owns a context, so nothing here
// locks; the shared buffer is reached only through RenderSystem.
#pragma once

#include <cstddef>

#include "foundation/allocator.h"
#include "foundation/types.h"
#include "render/rendersystem.h"

class Texture;

enum eBlendMode {
    eBlendMode_Opaque,      // no blending
    eBlendMode_Alpha,       // source over destination by source alpha
    eBlendMode_AlphaOnly,   // source scaled by its alpha replaces the destination
    eBlendMode_Subtract,    // destination less source, both by source alpha
    eBlendMode_Num
};

enum ePrimitiveType {
    ePrimitiveType_Point,
    ePrimitiveType_Line,
    ePrimitiveType_Triangle,
    // Four vertices each, in strip order: left top, right top, left bottom,
    // right bottom; drawn as the triangles (0, 1, 2) and (1, 2, 3).
    ePrimitiveType_Quad,
    ePrimitiveType_Num
};

enum eVertexDecl {
    eVertexDecl_Plain,     // sVertex
    eVertexDecl_Textured,  // sTexturedVertex
    eVertexDecl_Num
};

enum eTextureFiltering {
    eTextureFiltering_Nearest,
    eTextureFiltering_Linear,
    eTextureFiltering_Num
};

enum eTextureCombineMode {
    eTextureCombineMode_Modulate,
    eTextureCombineMode_Add,
    eTextureCombineMode_Num
};

class DrawContext {
public:
    // Input vertices, as callers write them: 16.16 positions in the units of
    // the projection rectangle, texels for rectangle textures.
    struct sVertex {
        sVector mPosition;
        sColor mColor;
    };
    struct sTexturedVertex {
        sVector mPosition;
        sColor mColor;
        sTexcoord mTexcoord;
    };

    // The state vector; a batch holds vertices of one state.
    struct Context {
        u32 mView;                // 0 to 6
        u32 mDrawKey;             // view in bits 28-31, level 16-27, sub-level 0-15
        u32 mBlendMode;           // eBlendMode
        u32 mPrimitiveType;       // ePrimitiveType
        u32 mVertexDecl;          // eVertexDecl
        Texture* mpTexture;
        Texture* mpRenderTarget;  // null: the window
        u32 mTextureFiltering;    // eTextureFiltering
        u32 mTextureCombineMode;  // eTextureCombineMode
        sRect mViewport;
        sRect mScissorRect;
        sRect mProjectionRect;
    };

    static constexpr u32 kVertexHeapSize = 16384;
    // Room for 1,024 entry pointers.
    static constexpr u32 kEntryHeapSize = 1024 * sizeof(sCommand*);

    DrawContext();
    ~DrawContext();

    // The array of RenderSystem comes from the Systems' budget.
    static void* operator new[](std::size_t size) noexcept;
    static void operator delete[](void* pointer);

    // Setters store a changed value and mark the state dirty; the batch
    // breaks at the next allocation, not here.
    void setView(unsigned int view);
    void setDrawLevel(unsigned int level, unsigned int subLevel);
    void setBlendMode(eBlendMode mode);
    void setVertexDecl(eVertexDecl decl);
    void setTextureFiltering(eTextureFiltering filtering);
    void setTextureCombineMode(eTextureCombineMode mode);
    void setTexture(Texture* texture);
    void setRenderTarget(Texture* target);
    void setViewport(sRect const& rect);
    void setScissorRect(sRect const& rect);
    void setProjectionRect(sRect const& rect);

    unsigned int getView() const { return mContext.mView; }
    u32 getDrawKey() const { return mContext.mDrawKey; }
    eBlendMode getBlendMode() const { return static_cast<eBlendMode>(mContext.mBlendMode); }
    eVertexDecl getVertexDecl() const { return static_cast<eVertexDecl>(mContext.mVertexDecl); }
    Texture* getTexture() const { return mContext.mpTexture; }
    Texture* getRenderTarget() const { return mContext.mpRenderTarget; }
    sRect const& getViewport() const { return mContext.mViewport; }
    sRect const& getScissorRect() const { return mContext.mScissorRect; }
    sRect const& getProjectionRect() const { return mContext.mProjectionRect; }
    Context const& getContext() const { return mContext; }

    // Memory for count vertices of the current declaration (sVertex or
    // sTexturedVertex). At most 16,384 bytes at once.
    void* allocateVertices(ePrimitiveType type, unsigned int count);
    void flushVertices();
    // Clears rect (pixels of the current target) with the current key.
    void clear(sRect const& rect, sColor color);
    // Takes over the other context's state; a job drawing for its parent
    // starts from the parent's state this way.
    void duplicate(DrawContext const* other);

    // Per frame, by RenderSystem only.
    void init();
    void setup();
    void final();

private:
    DrawContext(DrawContext const&) = delete;
    DrawContext& operator=(DrawContext const&) = delete;

    void* allocateCommandBuffer(u32 size);
    void initCommandBuffer();
    void entryCommand(sCommand* command);
    void flushCommand();
    static void formatVertex(void* out, void const* in, u32 count, Context const& context);

    u8* mpCommandBuffer;     // current chunk of the shared buffer
    u8* mpCommandBufferEnd;
    u8* mpCommandPtr;
    Context mContext;        // the state the caller sets
    Context mFlushedContext; // the state of the vertices in the batch
    u32 mVertexCount;
    bool mDirty;
    InstantAllocator* mpVertexAllocator;
    InstantAllocator* mpCommandEntryAllocator;
    // The contexts stand side by side in one array, and threads write theirs
    // at the same time: the allocators live inside the context, and a cache
    // line of padding ends it, so that no two contexts share a line.
    InstantAllocator mVertexHeap;
    InstantAllocator mCommandEntryHeap;
    [[maybe_unused]] u8 mPad[64];
};
