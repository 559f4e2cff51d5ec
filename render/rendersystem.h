// RenderSystem: the one place that draws with OpenGL. Anything may record
// into DrawContexts on any thread during the frame; postprocess sorts the
// recorded commands by their 32-bit key in parallel on the job system, and
// executeCommand replays them in key order on the main thread with the GL
// state cached in locals. Without a GL context (headless runs) recording and
// sorting work the same and the replay makes no GL calls.
#pragma once

#include "app/system.h"
#include "foundation/allocator.h"
#include "foundation/list.h"
#include "foundation/multithread.h"
#include "foundation/stack.h"
#include "foundation/types.h"

class DrawContext;
class RenderObject;
class Texture;

namespace platform {
struct GLContext;
}

// A recorded command: the common head of the three kinds below. Lives in the
// command buffer until the frame's replay.
struct sCommand {
    enum eType {
        eType_Clear,
        eType_Draw,
        eType_End, // key 0xFFFFFFFF, so that it sorts last
        eType_Num
    };

    u32 mType;
    u32 mKey;
};

struct sClearCommand : sCommand {
    sColor mColor;
    sRect mRect;        // pixels of the target, y down
    Texture* mpTarget;  // null: the window
};

struct sDrawCommand : sCommand {
    // Bit field, from bit 0: blend mode (2 bits), primitive type (2), texture
    // filtering (1), combine mode (1), textured flag (1), vertex count (16).
    enum {
        eShiftBlend = 0,
        eShiftPrimitive = 2,
        eShiftFiltering = 4,
        eShiftCombine = 5,
        eShiftTextured = 6,
        eShiftCount = 7,
    };

    static u32 makeBits(u32 blend, u32 primitive, u32 filtering, u32 combine, u32 textured, u32 count)
    {
        return (blend & 3u) << eShiftBlend | (primitive & 3u) << eShiftPrimitive | (filtering & 1u) << eShiftFiltering |
               (combine & 1u) << eShiftCombine | (textured & 1u) << eShiftTextured | (count & 0xFFFFu) << eShiftCount;
    }
    u32 getBlendMode() const { return (mBits >> eShiftBlend) & 3u; }
    u32 getPrimitiveType() const { return (mBits >> eShiftPrimitive) & 3u; }
    u32 getTextureFiltering() const { return (mBits >> eShiftFiltering) & 1u; }
    u32 getTextureCombineMode() const { return (mBits >> eShiftCombine) & 1u; }
    bool isTextured() const { return ((mBits >> eShiftTextured) & 1u) != 0; }
    u32 getVertexCount() const { return (mBits >> eShiftCount) & 0xFFFFu; }

    u32 mBits;
    void* mpVertices;   // sOutputVertex or sOutputTexturedVertex, in the command buffer
    Texture* mpTexture;
    Texture* mpTarget;
    sRect mViewport;
    sRect mScissor;
    sRect mProjection;
};

// Vertices as OpenGL reads them, made once when a batch is flushed.
struct sOutputVertex {
    f32 x;
    f32 y;
    f32 z;
    u32 mColor; // sColor's four bytes r, g, b, a
};
static_assert(sizeof(sOutputVertex) == 16, "plain stride");

struct sOutputTexturedVertex {
    f32 x;
    f32 y;
    f32 z;
    u32 mColor;
    s16 u; // texels
    s16 v;
};
static_assert(sizeof(sOutputTexturedVertex) == 20, "textured stride");

class RenderSystem : public System {
public:
    static constexpr u32 kDrawContextNum = 32;
    static constexpr u32 kCommandBufferSize = 0x400000;  // 4 MiB
    static constexpr u32 kCommandChunkSize = 0x10000;    // taken per 64 KiB by contexts
    static constexpr u32 kCommandEntryMax = 16384;
    static constexpr u32 kQuadMax = 4096;
    static constexpr u32 kViewNum = 7;
    // Fewer entries are sorted on the calling thread alone.
    static constexpr u32 kParallelSortMin = 4096;
    // The narrow passes run block by block, each block through all of them
    // while it is in the cache; the wide passes split their merges into
    // segments of this many entries.
    static constexpr u32 kSortBlock = 1024;
    // Commands hold pointers.
    static constexpr u32 kCommandAlignment = 8;

    // The size is the command buffer's; only benchmarks that record more than
    // a frame of the host ever does pass another.
    static RenderSystem* create(u32 commandBufferSize = kCommandBufferSize);
    static RenderSystem* getInstance() { return mpInstance; }
    void destroy() override;

    DECLARE_TYPEINFO(TypeInfo)

    // Opens the frame for recording: contexts reset and stacked, buffer emptied.
    void preprocess() override;
    // Closes the frame: hands over the contexts' entries, ends the list, sorts.
    void postprocess() override;
    // Main thread: shows the last picture and replays this frame's commands.
    void executeCommand();
    // After the window changed size: viewport to the window, cleared to black.
    void reset();
    void notifyResize(sRect const& window);

    // Recording side. Contexts are popped and pushed by the thread that
    // drives a pass, which hands each to one job at a time.
    DrawContext* popContext();
    // Flushes the context's vertices and stacks it again.
    void pushContext(DrawContext* context);
    // Any thread.
    sCommand* allocateCommandBuffer(unsigned int size);
    // Any thread; the 16,385th entry of a frame is fatal.
    void entryCommand(sCommand* command);
    void entryCommand(sCommand** commands, unsigned int count);
    u32 getBuildFrame() const { return mBuildFrame; }
    u32 getExecuteFrame() const { return mExecuteFrame; }
    // Any thread; Texture's constructor enters itself here.
    void registTexture(Texture* texture);

    // What the last frame did: draw commands replayed, entries sorted
    // (the end command included) and their sorted order.
    u32 getDrawCount() const { return mDrawCount; }
    u32 getEntryCount() const { return static_cast<u32>(mEntryCount.get()); }
    sCommand* const* getSortedEntry() const { return mpSortedEntry; }
    u32 getRenderObjectNum() const { return mRenderObjects.size(); }
    bool hasContext() const { return mContext != nullptr; }
    sRect getWindowRect() const;

    // True when name stands in the blank-separated list as a whole word.
    static bool checkExtention(char const* extensions, char const* name);

protected:
    explicit RenderSystem(u32 commandBufferSize);
    ~RenderSystem() override;

private:
    void init(u32 commandBufferSize);
    void cleanUp();
    void deleteInvalidObjects();

    void sortCommandBuffer();
    void sortCommandBlockJob(u32 index, void* user);
    void sortCommandSegmentJob(u32 index, void* user);
    // Entries and their keys move together; destination and source are the
    // same position in the other pair of arrays.
    static void sortCommandEach4(sCommand** destination, u32* destinationKey, sCommand* const* source,
                                 u32 const* sourceKey, u32 remaining);
    static void sortCommandEach(sCommand** destination, u32* destinationKey, sCommand* const* source,
                                u32 const* sourceKey, u32 width, u32 remaining);
    // Writes the first outputCount entries of the stable merge of two runs.
    static void mergeCommandRuns(sCommand** destination, u32* destinationKey, sCommand* const* left, u32 const* leftKey,
                                 u32 leftCount, sCommand* const* right, u32 const* rightKey, u32 rightCount,
                                 u32 outputCount);

    void beginScene();
    void endScene();
    void setBlendMode(u32 mode, u32 previous);
    void setTexture(Texture* texture, Texture* target);
    void setRenderTarget(Texture* texture);
    void setTextureFiltering(u32 mode);
    void setTextureCombineMode(u32 mode);
    void setViewport(sRect const& rect, sRect const& clip);
    void setScissor(sRect const& rect, sRect const& clip);
    void setProjection(sRect const& rect);
    void clear(sColor color, sRect const& rect, sRect const& clip);
    // Copies the vertices of every draw command, in replay order, into the
    // vertex buffer: one upload per frame, and notes which commands may be
    // drawn flat shaded. False when the buffer could not be had; the replay
    // then reads each command's vertices where they are.
    bool uploadVertices();
    // vertices: an address, or an offset into the vertex buffer while it is bound.
    void drawVertices(u32 primitive, u32 count, bool textured, void const* vertices);

    // The window's context: one SDL object holds the context and its pixel
    // format; no p-buffer format is kept.
    platform::GLContext* mContext;
    unsigned int mFrameBuffer; // bound by setRenderTarget; made at start-up
    u16* mpQuadIndices;
    DrawContext* mpDrawContexts;
    Stack<DrawContext> mContextStack;
    SpinLock mSpinLock; // taken by no operation
    u32 mDrawCount;
    InstantAllocator* mpCommandAllocator;
    sCommand** mpCommandEntry[2];
    // The key of each entry beside it, so that the sort reads keys in order
    // instead of through the scattered commands.
    u32* mpCommandKey[2];
    sCommand** mpSortedEntry;
    Atomic mEntryCount;
    List<RenderObject> mRenderObjects;
    u32 mBuildFrame;
    u32 mExecuteFrame;

    bool mScissorTest; // GL_SCISSOR_TEST as the replay left it
    bool mTexcoordArray; // the texture coordinate array as the replay left it
    bool mFlatShade;     // GL_FLAT as the replay left it
    // The frame's vertices in replay order, and the quad index table, as GL
    // buffer objects; 0 without a context.
    unsigned int mVertexBuffer;
    unsigned int mIndexBuffer;
    u32 mVertexBufferSize;
    // Per sorted entry, filled by the upload: 1 when each of the command's
    // primitives has one colour on all its vertices.
    u8* mpEntryFlat;

    // The pass that the sort jobs work on: which pair of arrays is read.
    u32 mSortSource;
    u32 mSortCount;
    u32 mSortWidth;

    static RenderSystem* mpInstance;
};
