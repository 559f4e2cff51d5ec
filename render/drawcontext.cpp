#include "render/drawcontext.h"

#include "app/system.h"
#include "foundation/debug.h"
#include "render/renderobject.h"

namespace {

inline f32 toFloat(sFixed value)
{
    return static_cast<f32>(value.mValue) * (1.0f / 65536.0f);
}

inline u32 colorBits(sColor color)
{
    return static_cast<unsigned int>(color);
}

} // namespace

DrawContext::DrawContext()
    : mpCommandBuffer(nullptr),
      mpCommandBufferEnd(nullptr),
      mpCommandPtr(nullptr),
      mContext(),
      mFlushedContext(),
      mVertexCount(0),
      mDirty(true),
      mpVertexAllocator(&mVertexHeap),
      mpCommandEntryAllocator(&mCommandEntryHeap),
      mVertexHeap(kVertexHeapSize, "Context vertices allocator", System::getAllocator(), false),
      mCommandEntryHeap(kEntryHeapSize, "Temporary command entry buffer allocator", System::getAllocator(), false),
      mPad()
{
}

DrawContext::~DrawContext() {}

void* DrawContext::operator new[](std::size_t size) noexcept
{
    return System::allocate(static_cast<u32>(size));
}

void DrawContext::operator delete[](void* pointer)
{
    System::deallocate(pointer);
}

// ---------------------------------------------------------------------------
// State

void DrawContext::setView(unsigned int view)
{
    if (view > 6) {
        dev_assert("Invalid view.", __FILE__, __LINE__);
    }
    if (view != mContext.mView) {
        mContext.mView = view;
        mContext.mDrawKey = (mContext.mDrawKey & 0x0FFFFFFFu) | (view << 28);
        mDirty = true;
    }
}

void DrawContext::setDrawLevel(unsigned int level, unsigned int subLevel)
{
    u32 const key = (mContext.mView << 28) | ((level & 0xFFFu) << 16) | (subLevel & 0xFFFFu);
    if (key != mContext.mDrawKey) {
        mContext.mDrawKey = key;
        mDirty = true;
    }
}

void DrawContext::setBlendMode(eBlendMode mode)
{
    if (static_cast<u32>(mode) != mContext.mBlendMode) {
        mContext.mBlendMode = mode;
        mDirty = true;
    }
}

void DrawContext::setVertexDecl(eVertexDecl decl)
{
    if (static_cast<u32>(decl) != mContext.mVertexDecl) {
        mContext.mVertexDecl = decl;
        mDirty = true;
    }
}

void DrawContext::setTextureFiltering(eTextureFiltering filtering)
{
    if (static_cast<u32>(filtering) != mContext.mTextureFiltering) {
        mContext.mTextureFiltering = filtering;
        mDirty = true;
    }
}

void DrawContext::setTextureCombineMode(eTextureCombineMode mode)
{
    if (static_cast<u32>(mode) != mContext.mTextureCombineMode) {
        mContext.mTextureCombineMode = mode;
        mDirty = true;
    }
}

void DrawContext::setTexture(Texture* texture)
{
    if (texture != nullptr) {
        texture->protect(RenderSystem::getInstance()->getBuildFrame());
    }
    if (texture != mContext.mpTexture) {
        mContext.mpTexture = texture;
        mDirty = true;
    }
}

void DrawContext::setRenderTarget(Texture* target)
{
    if (target != nullptr) {
        target->protect(RenderSystem::getInstance()->getBuildFrame());
    }
    if (target != mContext.mpRenderTarget) {
        mContext.mpRenderTarget = target;
        mDirty = true;
    }
}

void DrawContext::setViewport(sRect const& rect)
{
    if (rect != mContext.mViewport) {
        mContext.mViewport = rect;
        mDirty = true;
    }
}

void DrawContext::setScissorRect(sRect const& rect)
{
    if (rect != mContext.mScissorRect) {
        mContext.mScissorRect = rect;
        mDirty = true;
    }
}

void DrawContext::setProjectionRect(sRect const& rect)
{
    if (rect != mContext.mProjectionRect) {
        mContext.mProjectionRect = rect;
        mDirty = true;
    }
}

// ---------------------------------------------------------------------------
// Vertices and commands

void* DrawContext::allocateVertices(ePrimitiveType type, unsigned int count)
{
    u32 size = 0;
    if (mContext.mVertexDecl == eVertexDecl_Plain) {
        size = count * sizeof(sVertex);
    } else if (mContext.mVertexDecl == eVertexDecl_Textured) {
        size = count * sizeof(sTexturedVertex);
    } else {
        dev_assert("Undefined vertex declaration.", __FILE__, __LINE__);
    }
    if (static_cast<u32>(type) != mContext.mPrimitiveType) {
        mContext.mPrimitiveType = type;
        mDirty = true;
    }
    if (mDirty || mpVertexAllocator->getHeapSize() - mpVertexAllocator->getUsedSizeFw() < size) {
        flushVertices();
    }
    void* vertices = mpVertexAllocator->allocate(static_cast<int>(size), 4);
    mVertexCount += count;
    return vertices;
}

void DrawContext::flushVertices()
{
    if (mVertexCount != 0) {
        bool const textured = mFlushedContext.mVertexDecl == eVertexDecl_Textured;
        u32 const vertexBytes = mVertexCount * (textured ? sizeof(sOutputTexturedVertex) : sizeof(sOutputVertex));
        // The command and its output vertices in one piece of the chunk.
        u32 const commandBytes = AllocatorBase::align(static_cast<u32>(sizeof(sDrawCommand)), RenderSystem::kCommandAlignment);
        u8* memory = static_cast<u8*>(allocateCommandBuffer(commandBytes + vertexBytes));
        sDrawCommand* command = reinterpret_cast<sDrawCommand*>(memory);
        command->mType = sCommand::eType_Draw;
        command->mKey = mFlushedContext.mDrawKey;
        command->mBits = sDrawCommand::makeBits(mFlushedContext.mBlendMode, mFlushedContext.mPrimitiveType,
                                                mFlushedContext.mTextureFiltering, mFlushedContext.mTextureCombineMode,
                                                textured ? 1u : 0u, mVertexCount);
        command->mpVertices = memory + commandBytes;
        command->mpTexture = mFlushedContext.mpTexture;
        command->mpTarget = mFlushedContext.mpRenderTarget;
        command->mViewport = mFlushedContext.mViewport;
        command->mScissor = mFlushedContext.mScissorRect;
        command->mProjection = mFlushedContext.mProjectionRect;
        formatVertex(command->mpVertices, mpVertexAllocator->getHeap(), mVertexCount, mFlushedContext);
        entryCommand(command);
    }
    mFlushedContext = mContext;
    mpVertexAllocator->clear();
    mVertexCount = 0;
    mDirty = false;
}

// Fixed point becomes float here, once per vertex. Points and lines of plain
// vertices move by half a pixel so that they hit pixel centres.
void DrawContext::formatVertex(void* out, void const* in, u32 count, Context const& context)
{
    if (context.mVertexDecl == eVertexDecl_Textured) {
        sTexturedVertex const* source = static_cast<sTexturedVertex const*>(in);
        sOutputTexturedVertex* destination = static_cast<sOutputTexturedVertex*>(out);
        for (u32 i = 0; i < count; ++i) {
            destination[i].x = toFloat(source[i].mPosition.x);
            destination[i].y = toFloat(source[i].mPosition.y);
            destination[i].z = 0.0f;
            destination[i].mColor = colorBits(source[i].mColor);
            destination[i].u = static_cast<s16>(source[i].mTexcoord.x);
            destination[i].v = static_cast<s16>(source[i].mTexcoord.y);
        }
        return;
    }
    f32 const bias = context.mPrimitiveType <= ePrimitiveType_Line ? 0.5f : 0.0f;
    sVertex const* source = static_cast<sVertex const*>(in);
    sOutputVertex* destination = static_cast<sOutputVertex*>(out);
    for (u32 i = 0; i < count; ++i) {
        destination[i].x = toFloat(source[i].mPosition.x) + bias;
        destination[i].y = toFloat(source[i].mPosition.y) + bias;
        destination[i].z = 0.0f;
        destination[i].mColor = colorBits(source[i].mColor);
    }
}

void* DrawContext::allocateCommandBuffer(u32 size)
{
    size = AllocatorBase::align(size, RenderSystem::kCommandAlignment);
    if (static_cast<u32>(mpCommandBufferEnd - mpCommandPtr) < size) {
        // The rest of the old chunk is abandoned.
        initCommandBuffer();
    }
    void* memory = mpCommandPtr;
    mpCommandPtr += size;
    return memory;
}

void DrawContext::initCommandBuffer()
{
    mpCommandBuffer = reinterpret_cast<u8*>(RenderSystem::getInstance()->allocateCommandBuffer(RenderSystem::kCommandChunkSize));
    mpCommandBufferEnd = mpCommandBuffer + RenderSystem::kCommandChunkSize;
    mpCommandPtr = mpCommandBuffer;
}

// Entries gather here and reach the shared array in blocks, so threads touch
// it once per 1,024 commands or once per frame.
void DrawContext::entryCommand(sCommand* command)
{
    if (mpCommandEntryAllocator->getHeapSize() - mpCommandEntryAllocator->getUsedSizeFw() < sizeof(sCommand*)) {
        flushCommand();
    }
    sCommand** slot = static_cast<sCommand**>(mpCommandEntryAllocator->allocate(sizeof(sCommand*), sizeof(sCommand*)));
    *slot = command;
}

void DrawContext::flushCommand()
{
    u32 const count = mpCommandEntryAllocator->getUsedSizeFw() / sizeof(sCommand*);
    if (count != 0) {
        RenderSystem::getInstance()->entryCommand(static_cast<sCommand**>(mpCommandEntryAllocator->getHeap()), count);
        mpCommandEntryAllocator->clear();
    }
}

void DrawContext::clear(sRect const& rect, sColor color)
{
    flushVertices();
    sClearCommand* command = static_cast<sClearCommand*>(allocateCommandBuffer(sizeof(sClearCommand)));
    command->mType = sCommand::eType_Clear;
    command->mKey = mContext.mDrawKey;
    command->mColor = color;
    command->mRect = rect;
    command->mpTarget = mContext.mpRenderTarget;
    // Straight to the render system, past this context's entry list.
    RenderSystem::getInstance()->entryCommand(command);
}

void DrawContext::duplicate(DrawContext const* other)
{
    flushVertices();
    mContext = other->mContext;
    mDirty = true;
}

// ---------------------------------------------------------------------------
// Frame

void DrawContext::init()
{
    mpVertexAllocator->clear();
    mpCommandEntryAllocator->clear();
    initCommandBuffer();
}

void DrawContext::setup()
{
    sRect const window = RenderSystem::getInstance()->getWindowRect();
    mContext.mView = 0;
    mContext.mDrawKey = 0;
    mContext.mBlendMode = eBlendMode_Opaque;
    mContext.mPrimitiveType = ePrimitiveType_Quad;
    mContext.mVertexDecl = eVertexDecl_Plain;
    mContext.mpTexture = nullptr;
    mContext.mpRenderTarget = nullptr;
    mContext.mTextureFiltering = eTextureFiltering_Linear;
    mContext.mTextureCombineMode = eTextureCombineMode_Modulate;
    mContext.mViewport = window;
    mContext.mScissorRect = window;
    mContext.mProjectionRect = window;

    // Values that match nothing, so that the first batch starts clean.
    mFlushedContext.mView = 7;
    mFlushedContext.mDrawKey = 0xFFFFFFFFu;
    mFlushedContext.mBlendMode = 4;
    mFlushedContext.mPrimitiveType = 4;
    mFlushedContext.mVertexDecl = 2;
    mFlushedContext.mpTexture = nullptr;
    mFlushedContext.mpRenderTarget = nullptr;
    mFlushedContext.mTextureFiltering = 2;
    mFlushedContext.mTextureCombineMode = 2;
    mFlushedContext.mViewport = sRect::Zero;
    mFlushedContext.mScissorRect = sRect::Zero;
    mFlushedContext.mProjectionRect = sRect::Zero;

    mVertexCount = 0;
    mDirty = true;
}

// A context that was not pushed back loses its last batch here: only the
// entry list is handed over, not the vertices.
void DrawContext::final()
{
    flushCommand();
}
