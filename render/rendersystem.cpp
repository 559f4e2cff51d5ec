#include "render/rendersystem.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "app/application.h"
#include "foundation/debug.h"
#include "jobs/jobsystem.h"
#include "platform/glcontext.h"
#include "render/drawcontext.h"
#include "render/glfunctions.h"
#include "render/renderobject.h"

IMPLEMENT_TYPEINFO(RenderSystem, "System", TypeInfo::eAttribute_Singleton);
RenderSystem* RenderSystem::mpInstance = nullptr;

namespace {

// Blend factors and equations by mode. Mode 0 leaves blending disabled, so its
// factors never take effect; mode 2's destination factor of zero is
// deliberate: the source scaled by its alpha replaces what was there.
GLenum const glfactor[] = {GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ZERO};
GLenum const glblendeq[] = {GL_FUNC_ADD, GL_FUNC_REVERSE_SUBTRACT};

struct sBlend {
    u8 mSource;      // index into glfactor
    u8 mDestination; // index into glfactor
    u8 mEquation;    // index into glblendeq
};

sBlend const kBlendTable[] = {
    {3, 2, 0}, // opaque: zero, one, add
    {0, 1, 0}, // alpha: source alpha, one less source alpha, add
    {0, 3, 0}, // source alpha, zero, add
    {0, 1, 1}, // source alpha, one less source alpha, reverse subtract
};
static_assert(sizeof(kBlendTable) / sizeof(kBlendTable[0]) == eBlendMode_Num, "one row per blend mode");

GLenum const kPrimitive[] = {GL_POINTS, GL_LINES, GL_TRIANGLES, GL_TRIANGLES};
static_assert(sizeof(kPrimitive) / sizeof(kPrimitive[0]) == ePrimitiveType_Num, "one entry per primitive type");

} // namespace

// ---------------------------------------------------------------------------
// Life

RenderSystem* RenderSystem::create(u32 commandBufferSize)
{
    if (mpInstance == nullptr) {
        RenderSystem* instance = new RenderSystem(commandBufferSize);
        mpInstance = instance;
    }
    return mpInstance;
}

void RenderSystem::destroy()
{
    delete this;
    mpInstance = nullptr;
}

RenderSystem::RenderSystem(u32 commandBufferSize)
    : mContext(nullptr),
      mFrameBuffer(0),
      mpQuadIndices(nullptr),
      mpDrawContexts(nullptr),
      mDrawCount(0),
      mpCommandAllocator(nullptr),
      mpCommandEntry(),
      mpCommandKey(),
      mpSortedEntry(nullptr),
      mEntryCount(0),
      mBuildFrame(0),
      mExecuteFrame(0),
      mScissorTest(false),
      mTexcoordArray(false),
      mFlatShade(false),
      mVertexBuffer(0),
      mIndexBuffer(0),
      mVertexBufferSize(0),
      mpEntryFlat(nullptr),
      mSortSource(0),
      mSortCount(0),
      mSortWidth(0)
{
    mContextStack.reserve(kDrawContextNum);
    mRenderObjects.reserve(256);
    init(commandBufferSize);
    if (Application* application = Application::getInstance()) {
        application->addResizeListener(&Application::ResizeList::member<RenderSystem, &RenderSystem::notifyResize>,
                                       this);
    }
    DEV_TRACE("RenderSystem : start.\n");
}

RenderSystem::~RenderSystem()
{
    if (Application* application = Application::getInstance()) {
        application->removeResizeListener(this);
    }
    cleanUp();
}

void RenderSystem::init(u32 commandBufferSize)
{
    DEV_TRACE("RenderSystem : initializing...\n");
    Application* application = Application::getInstance();
    mContext = platform::createGLContext(application != nullptr ? application->getWindowHandle() : nullptr);
    // Without a context (no screen) the checks and the GL set-up are left
    // out; recording and sorting are built all the same.
    if (mContext != nullptr) {
        char const* version = reinterpret_cast<char const*>(glGetString(GL_VERSION));
        DEV_TRACE("RenderSystem : GL_VERSION %s.\n", version != nullptr ? version : "");
        float number = 0.0f;
        if (version == nullptr || sscanf(version, "%f", &number) != 1 || number < 2.0f) {
            DEV_ERROR("This application recommanded OpenGL2.0.\n");
        }
        char const* extensions = reinterpret_cast<char const*>(glGetString(GL_EXTENSIONS));
        if (!checkExtention(extensions, "GL_EXT_texture_rectangle")) {
            DEV_ERROR("This application recommanded GL_EXT_texture_rectangle.\n");
        }
        if (!checkExtention(extensions, "GL_EXT_framebuffer_object")) {
            DEV_ERROR("This application recommanded GL_EXT_framebuffer_object.\n");
        }
        if (!gl::loadFunctions()) {
            DEV_ERROR("This application recommanded GL_EXT_framebuffer_object.\n");
        }

        glTexImage2D(GL_PROXY_TEXTURE_RECTANGLE_ARB, 0, GL_RGBA8, Texture::kMaxSize, Texture::kMaxSize, 0, GL_RGBA,
                     GL_UNSIGNED_BYTE, nullptr);
        GLint width = 0;
        glGetTexLevelParameteriv(GL_PROXY_TEXTURE_RECTANGLE_ARB, 0, GL_TEXTURE_WIDTH, &width);
        if (width != static_cast<GLint>(Texture::kMaxSize)) {
            DEV_ERROR("This application recommanded texture size greater equal 1024.\n");
        }

        // The one framebuffer object that render targets are attached to.
        gl::GenFramebuffersEXT(1, &mFrameBuffer);

        sRect const window = getWindowRect();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glViewport(0, 0, static_cast<GLsizei>(window.getWidth()), static_cast<GLsizei>(window.getHeight()));
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClear(GL_COLOR_BUFFER_BIT);
    }

    // Quad q is the triangles (4q, 4q+1, 4q+2) and (4q+1, 4q+2, 4q+3).
    mpQuadIndices = static_cast<u16*>(System::allocate(kQuadMax * 6 * sizeof(u16)));
    for (u32 quad = 0; quad < kQuadMax; ++quad) {
        u16* index = mpQuadIndices + quad * 6;
        u16 const base = static_cast<u16>(quad * 4);
        index[0] = base;
        index[1] = static_cast<u16>(base + 1);
        index[2] = static_cast<u16>(base + 2);
        index[3] = static_cast<u16>(base + 1);
        index[4] = static_cast<u16>(base + 2);
        index[5] = static_cast<u16>(base + 3);
    }
    if (mContext != nullptr) {
        // Vertices never take more than the command memory that holds them.
        mVertexBufferSize = commandBufferSize;
        gl::GenBuffers(1, &mVertexBuffer);
        gl::BindBuffer(GL_ARRAY_BUFFER, mVertexBuffer);
        gl::BufferData(GL_ARRAY_BUFFER, mVertexBufferSize, nullptr, GL_STREAM_DRAW);
        gl::BindBuffer(GL_ARRAY_BUFFER, 0);
        gl::GenBuffers(1, &mIndexBuffer);
        gl::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, mIndexBuffer);
        gl::BufferData(GL_ELEMENT_ARRAY_BUFFER, kQuadMax * 6 * sizeof(u16), mpQuadIndices, GL_STATIC_DRAW);
        gl::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    }
    mpCommandAllocator = new InstantAllocator(commandBufferSize, "CommandBuffer", System::getAllocator(), true);
    for (u32 i = 0; i < 2; ++i) {
        mpCommandEntry[i] = static_cast<sCommand**>(System::allocate(kCommandEntryMax * sizeof(sCommand*)));
        mpCommandKey[i] = static_cast<u32*>(System::allocate(kCommandEntryMax * sizeof(u32)));
    }
    mpEntryFlat = static_cast<u8*>(System::allocate(kCommandEntryMax));
    mpSortedEntry = nullptr;

    mpDrawContexts = new DrawContext[kDrawContextNum];
    mBuildFrame = 0;
    mExecuteFrame = 0;
    DEV_TRACE("RenderSystem : initializing end.\n");
}

void RenderSystem::cleanUp()
{
    // Whatever has ended is past every use now.
    mExecuteFrame = mBuildFrame + 1;
    if (mContext != nullptr) {
        platform::makeCurrent(mContext);
    }
    deleteInvalidObjects();
    if (!mRenderObjects.empty()) {
        dev_assert("Texture leak.", __FILE__, __LINE__);
    }
    if (mContext != nullptr) {
        gl::DeleteFramebuffersEXT(1, &mFrameBuffer);
        gl::DeleteBuffers(1, &mVertexBuffer);
        gl::DeleteBuffers(1, &mIndexBuffer);
        platform::destroyGLContext(mContext);
        mContext = nullptr;
    }
    delete[] mpDrawContexts;
    mpDrawContexts = nullptr;
    for (u32 i = 0; i < 2; ++i) {
        System::deallocate(mpCommandEntry[i]);
        mpCommandEntry[i] = nullptr;
        System::deallocate(mpCommandKey[i]);
        mpCommandKey[i] = nullptr;
    }
    System::deallocate(mpEntryFlat);
    mpEntryFlat = nullptr;
    delete mpCommandAllocator;
    mpCommandAllocator = nullptr;
    System::deallocate(mpQuadIndices);
    mpQuadIndices = nullptr;
    DEV_TRACE("RenderSystem : end.\n");
}

sRect RenderSystem::getWindowRect() const
{
    Application const* application = Application::getInstance();
    if (application == nullptr) {
        return sRect::Zero;
    }
    return sRect(0, 0, static_cast<int>(application->getWindowWidth()), static_cast<int>(application->getWindowHeight()));
}

bool RenderSystem::checkExtention(char const* extensions, char const* name)
{
    bool found = false;
    if (extensions != nullptr && name != nullptr && name[0] != '\0') {
        size_t const length = strlen(name);
        for (char const* hit = strstr(extensions, name); hit != nullptr; hit = strstr(hit + length, name)) {
            // A hit counts only as a whole word: "GL_EXT_texture_rectangle"
            // must not match a longer name that merely begins with it.
            bool const startsWord = hit == extensions || hit[-1] == ' ';
            char const after = hit[length];
            if (startsWord && (after == ' ' || after == '\0')) {
                found = true;
                break;
            }
        }
    }
    DEV_TRACE(found ? "RenderSystem : OpenGL support %s.\n" : "RenderSystem : OpenGL unsupport %s.\n", name);
    return found;
}

// ---------------------------------------------------------------------------
// Recording

void RenderSystem::preprocess()
{
    mContextStack.clear();
    // Emptied first: each context takes its first chunk from it in init.
    mpCommandAllocator->clear();
    for (u32 i = 0; i < kDrawContextNum; ++i) {
        DrawContext* context = &mpDrawContexts[i];
        context->init();
        context->setup();
        mContextStack.push(context);
    }
    mEntryCount.set(0);
}

void RenderSystem::postprocess()
{
    for (u32 i = 0; i < kDrawContextNum; ++i) {
        mpDrawContexts[i].final();
    }
    sCommand* end = allocateCommandBuffer(sizeof(sCommand));
    end->mType = sCommand::eType_End;
    end->mKey = 0xFFFFFFFFu;
    entryCommand(end);
    sortCommandBuffer();
    ++mBuildFrame;
}

DrawContext* RenderSystem::popContext()
{
    return mContextStack.pop();
}

void RenderSystem::pushContext(DrawContext* context)
{
    context->flushVertices();
    mContextStack.push(context);
}

sCommand* RenderSystem::allocateCommandBuffer(unsigned int size)
{
    return static_cast<sCommand*>(mpCommandAllocator->allocate(static_cast<int>(size), kCommandAlignment));
}

void RenderSystem::entryCommand(sCommand* command)
{
    u32 const index = static_cast<u32>(mEntryCount.increment());
    if (index >= kCommandEntryMax) {
        dev_assert("Command entry buffer overflow.\n", __FILE__, __LINE__);
    }
    mpCommandEntry[0][index] = command;
    mpCommandKey[0][index] = command->mKey;
}

void RenderSystem::entryCommand(sCommand** commands, unsigned int count)
{
    u32 const start = static_cast<u32>(mEntryCount.add(static_cast<int>(count)));
    // The whole block must fit, not only its first slot.
    if (start >= kCommandEntryMax || count > kCommandEntryMax - start) {
        dev_assert("Command entry buffer overflow.\n", __FILE__, __LINE__);
    }
    memcpy(mpCommandEntry[0] + start, commands, count * sizeof(sCommand*));
    u32* key = mpCommandKey[0] + start;
    for (u32 i = 0; i < count; ++i) {
        key[i] = commands[i]->mKey;
    }
}

void RenderSystem::registTexture(Texture* texture)
{
    // Textures may come from any thread (the resource loader's, for one);
    // the replay's walk over the list takes the same lock.
    lock();
    mRenderObjects.addLast(texture);
    unlock();
}

void RenderSystem::deleteInvalidObjects()
{
    lock();
    List<RenderObject>::Iterator it = mRenderObjects.begin();
    while (it != mRenderObjects.end()) {
        RenderObject* object = *it;
        object->unprotect(mExecuteFrame);
        if (!object->isValid()) {
            it = mRenderObjects.remove(it);
            delete object;
        } else {
            ++it;
        }
    }
    unlock();
}

// ---------------------------------------------------------------------------
// Sorting: a merge sort on the keys over the two entry arrays, runs of 4
// first, then widths 8, 16, ... until one run holds all; each pass reads one
// array and writes the other. The passes up to the block size run inside one
// batch, a block per loop iteration, each block through all of them while it
// is hot; each wider pass is one batch whose iterations each write a segment
// of the output, starting at the split of the two runs that a binary search
// finds. The result is the stable merge sort's in either case.

void RenderSystem::sortCommandBuffer()
{
    u32 const count = static_cast<u32>(mEntryCount.get());
    if (count <= 4) {
        sortCommandEach4(mpCommandEntry[1], mpCommandKey[1], mpCommandEntry[0], mpCommandKey[0], count);
        mpSortedEntry = mpCommandEntry[1];
        return;
    }

    // A pass over a few thousand entries takes microseconds, less than waking
    // the workers; only a longer table is worth its fork and join per batch.
    JobSystem* jobs = count >= kParallelSortMin ? JobSystem::getInstance() : nullptr;
    auto run = [this, jobs](void (RenderSystem::*job)(u32, void*), u32 iterations) {
        if (jobs != nullptr) {
            jobs->executeLoopJob(this, job, 0u, iterations, nullptr);
        } else {
            for (u32 i = 0; i < iterations; ++i) {
                (this->*job)(i, nullptr);
            }
        }
    };
    mSortCount = count;
    run(&RenderSystem::sortCommandBlockJob, (count + kSortBlock - 1) / kSortBlock);
    // Where the block passes left the entries: one pass of 4, then one per
    // width up to the block size or the last width needed.
    mSortSource = 1;
    u32 width = 8;
    for (; width <= kSortBlock && width / 2 < count; width *= 2) {
        mSortSource ^= 1;
    }
    for (; width / 2 < count; width *= 2) {
        mSortWidth = width;
        run(&RenderSystem::sortCommandSegmentJob, (count + kSortBlock - 1) / kSortBlock);
        mSortSource ^= 1;
    }
    mpSortedEntry = mpCommandEntry[mSortSource];
}

// One block through the pass of 4 and every pass up to the block's width.
void RenderSystem::sortCommandBlockJob(u32 index, void*)
{
    u32 const start = index * kSortBlock;
    u32 const size = mSortCount - start < kSortBlock ? mSortCount - start : kSortBlock;
    for (u32 group = 0; group < size; group += 4) {
        u32 const rest = size - group;
        sortCommandEach4(mpCommandEntry[1] + start + group, mpCommandKey[1] + start + group,
                         mpCommandEntry[0] + start + group, mpCommandKey[0] + start + group, rest < 4 ? rest : 4);
    }
    u32 from = 1;
    for (u32 width = 8; width <= kSortBlock && width / 2 < mSortCount; width *= 2) {
        u32 const to = from ^ 1;
        for (u32 run = 0; run < size; run += width) {
            sortCommandEach(mpCommandEntry[to] + start + run, mpCommandKey[to] + start + run,
                            mpCommandEntry[from] + start + run, mpCommandKey[from] + start + run, width, size - run);
        }
        from = to;
    }
}

// One segment of a wide pass's output. The segment lies inside one merge (the
// width is a multiple of the segment); it begins where the first `offset`
// outputs of that merge end: after i entries of the left run and offset - i
// of the right one, with i the least count for which the next left entry
// would not come before the last right one taken.
void RenderSystem::sortCommandSegmentJob(u32 index, void*)
{
    u32 const from = mSortSource;
    u32 const to = from ^ 1;
    u32 const width = mSortWidth;
    u32 const half = width / 2;
    u32 const position = index * kSortBlock;
    u32 const size = mSortCount - position < kSortBlock ? mSortCount - position : kSortBlock;
    u32 const start = position - position % width;
    u32 const remaining = mSortCount - start;
    sCommand** const destination = mpCommandEntry[to] + position;
    u32* const destinationKey = mpCommandKey[to] + position;
    if (remaining <= half) {
        memcpy(destination, mpCommandEntry[from] + position, size * sizeof(sCommand*));
        memcpy(destinationKey, mpCommandKey[from] + position, size * sizeof(u32));
        return;
    }
    sCommand* const* const left = mpCommandEntry[from] + start;
    u32 const* const leftKey = mpCommandKey[from] + start;
    u32 const rightCount = (remaining < width ? remaining : width) - half;
    sCommand* const* const right = left + half;
    u32 const* const rightKey = leftKey + half;
    u32 const offset = position - start;
    u32 low = offset > rightCount ? offset - rightCount : 0;
    u32 high = offset < half ? offset : half;
    while (low < high) {
        u32 const i = low + (high - low) / 2;
        // The left entry i is taken before the right entry offset - i - 1
        // (a tie goes left): more of the left run lies before the segment.
        if (leftKey[i] <= rightKey[offset - i - 1]) {
            low = i + 1;
        } else {
            high = i;
        }
    }
    mergeCommandRuns(destination, destinationKey, left + low, leftKey + low, half - low, right + (offset - low),
                     rightKey + (offset - low), rightCount - (offset - low), size);
}

// A fixed network of neighbour exchanges, each swapping only on a strictly
// greater key, so that equal keys keep their order.
void RenderSystem::sortCommandEach4(sCommand** destination, u32* destinationKey, sCommand* const* source,
                                    u32 const* sourceKey, u32 remaining)
{
    sCommand* entry[4];
    u32 key[4];
    for (u32 i = 0; i < remaining; ++i) {
        entry[i] = source[i];
        key[i] = sourceKey[i];
    }
    auto exchange = [&](u32 a, u32 b) {
        if (key[a] > key[b]) {
            u32 const k = key[a];
            key[a] = key[b];
            key[b] = k;
            sCommand* const e = entry[a];
            entry[a] = entry[b];
            entry[b] = e;
        }
    };
    switch (remaining) {
    case 4:
        exchange(0, 1);
        exchange(2, 3);
        exchange(1, 2);
        exchange(0, 1);
        exchange(2, 3);
        exchange(1, 2);
        break;
    case 3:
        exchange(0, 1);
        exchange(1, 2);
        exchange(0, 1);
        break;
    case 2:
        exchange(0, 1);
        break;
    default:
        break;
    }
    for (u32 i = 0; i < remaining; ++i) {
        destination[i] = entry[i];
        destinationKey[i] = key[i];
    }
}

void RenderSystem::sortCommandEach(sCommand** destination, u32* destinationKey, sCommand* const* source,
                                   u32 const* sourceKey, u32 width, u32 remaining)
{
    u32 const half = width / 2;
    if (remaining <= half) {
        memcpy(destination, source, remaining * sizeof(sCommand*));
        memcpy(destinationKey, sourceKey, remaining * sizeof(u32));
        return;
    }
    u32 const rightCount = (remaining < width ? remaining : width) - half;
    mergeCommandRuns(destination, destinationKey, source, sourceKey, half, source + half, sourceKey + half, rightCount,
                     half + rightCount);
}

void RenderSystem::mergeCommandRuns(sCommand** destination, u32* destinationKey, sCommand* const* left,
                                    u32 const* leftKey, u32 leftCount, sCommand* const* right, u32 const* rightKey,
                                    u32 rightCount, u32 outputCount)
{
    u32 i = 0;
    u32 j = 0;
    // Without branches on the keys, which are as good as random: the left run
    // wins a tie, the right one is taken only on a strictly smaller key. The
    // selection is by mask, so that no compiler turns it into a jump.
    while (i < leftCount && j < rightCount && outputCount != 0) {
        // Steps that cannot run either run dry, nor past the output, need no
        // test of their own.
        u32 steps = leftCount - i < rightCount - j ? leftCount - i : rightCount - j;
        steps = steps < outputCount ? steps : outputCount;
        outputCount -= steps;
        do {
            u32 const a = leftKey[i];
            u32 const b = rightKey[j];
            u32 const takeRight = b < a ? 1u : 0u;
            std::uintptr_t const mask = 0u - static_cast<std::uintptr_t>(takeRight);
            std::uintptr_t const l = reinterpret_cast<std::uintptr_t>(left[i]);
            std::uintptr_t const r = reinterpret_cast<std::uintptr_t>(right[j]);
            *destination++ = reinterpret_cast<sCommand*>((l & ~mask) | (r & mask));
            *destinationKey++ = (a & ~static_cast<u32>(mask)) | (b & static_cast<u32>(mask));
            j += takeRight;
            i += 1u - takeRight;
        } while (--steps != 0);
    }
    u32 const leftRest = leftCount - i < outputCount ? leftCount - i : outputCount;
    memcpy(destination, left + i, leftRest * sizeof(sCommand*));
    memcpy(destinationKey, leftKey + i, leftRest * sizeof(u32));
    destination += leftRest;
    destinationKey += leftRest;
    outputCount -= leftRest;
    u32 const rightRest = rightCount - j < outputCount ? rightCount - j : outputCount;
    memcpy(destination, right + j, rightRest * sizeof(sCommand*));
    memcpy(destinationKey, rightKey + j, rightRest * sizeof(u32));
}

// ---------------------------------------------------------------------------
// Replay

namespace {

u32 const kCountMask = 0xFFFFu << sDrawCommand::eShiftCount;

// The replay flushes GL after about this many vertices, so that a driver
// that draws on the processor (its own threads) starts on what it has while
// this thread hands it the rest.
u32 const kFlushVertices = 16384;

// Vertices a primitive uses whole: a batch whose count is a multiple may be
// followed in the same draw call by the next one.
u32 const kPrimitiveUnit[4] = {1, 2, 3, 4};

u32 getVertexStride(sDrawCommand const* draw)
{
    return draw->isTextured() ? sizeof(sOutputTexturedVertex) : sizeof(sOutputVertex);
}

// True when draw can go into the same draw call as the run that begins with
// first and holds count vertices: the same state in every field, and the
// primitives of the run all whole. Such a draw would change no state.
bool canJoinRun(sDrawCommand const* first, u32 count, sDrawCommand const* draw, u32 quadMax)
{
    if (((first->mBits ^ draw->mBits) & ~kCountMask) != 0 || first->mpTexture != draw->mpTexture ||
        first->mpTarget != draw->mpTarget || first->mViewport != draw->mViewport || first->mScissor != draw->mScissor ||
        first->mProjection != draw->mProjection) {
        return false;
    }
    u32 const primitive = first->getPrimitiveType();
    if (count % kPrimitiveUnit[primitive] != 0) {
        return false;
    }
    return primitive != ePrimitiveType_Quad || count + draw->getVertexCount() <= quadMax * 4;
}

// True when each whole primitive of the command has one colour on all its
// vertices. Flat shading then gives the same pixels as smooth shading, and
// spares a software rasteriser the colour's interpolation in every pixel.
bool hasFlatColours(sDrawCommand const* draw)
{
    u32 const unit = kPrimitiveUnit[draw->getPrimitiveType()];
    u32 const stride = getVertexStride(draw);
    u32 const primitives = unit > 1 ? draw->getVertexCount() / unit : 0;
    u8 const* vertex = static_cast<u8 const*>(draw->mpVertices) + offsetof(sOutputVertex, mColor);
    for (u32 primitive = 0; primitive < primitives; ++primitive) {
        u32 const color = *reinterpret_cast<u32 const*>(vertex);
        for (u32 i = 1; i < unit; ++i) {
            if (*reinterpret_cast<u32 const*>(vertex + i * stride) != color) {
                return false;
            }
        }
        vertex += unit * stride;
    }
    return true;
}

} // namespace

// Draw commands that follow each other with the same state are drawn as one
// run: their vertices lie one behind the other in the vertex buffer, so the
// run is one draw call, and the state cache sees only its first command. A
// run whose primitives are each of one colour is drawn flat shaded.
void RenderSystem::executeCommand()
{
    sRect const window = getWindowRect();
    sRect viewport = window;
    sRect scissor = window;
    sRect projection = window;
    sRect clip = window;
    Texture* target = nullptr;
    Texture* texture = nullptr;
    u32 blend = 0;
    u32 filtering = 2; // unknown
    u32 combine = 2;   // unknown
    bool const gl = mContext != nullptr;
    bool streamed = false;

    if (gl) {
        beginScene();
        setViewport(viewport, clip);
        setScissor(scissor, clip);
        setProjection(projection);
        streamed = uploadVertices();
    }
    mDrawCount = 0;

    sDrawCommand const* run = nullptr; // first command of the run not yet drawn
    u32 runCount = 0;                  // its vertices
    std::uintptr_t runOffset = 0;      // where they start in the vertex buffer
    std::uintptr_t streamOffset = 0;   // where the next command's vertices are
    bool runFlat = false;              // every primitive of the run of one colour
    u32 unflushed = 0;                 // vertices drawn since the last flush
    auto drawRun = [&]() {
        if (gl && run != nullptr) {
            void const* vertices = streamed ? reinterpret_cast<void const*>(runOffset) : run->mpVertices;
            if (runFlat != mFlatShade) {
                mFlatShade = runFlat;
                glShadeModel(runFlat ? GL_FLAT : GL_SMOOTH);
            }
            drawVertices(run->getPrimitiveType(), runCount, run->isTextured(), vertices);
            unflushed += runCount;
            if (unflushed >= kFlushVertices) {
                glFlush();
                unflushed = 0;
            }
        }
        run = nullptr;
    };

    for (sCommand* const* entry = mpSortedEntry; entry != nullptr && (*entry)->mType != sCommand::eType_End; ++entry) {
        sCommand* const command = *entry;
        if (command->mType == sCommand::eType_Clear) {
            drawRun();
            sClearCommand const* clearCommand = static_cast<sClearCommand const*>(command);
            if (clearCommand->mpTarget != target) {
                target = clearCommand->mpTarget;
                clip = target != nullptr
                           ? sRect(0, 0, static_cast<int>(target->getWidth()), static_cast<int>(target->getHeight()))
                           : window;
                if (gl) {
                    setRenderTarget(target);
                    setViewport(viewport, clip);
                    setScissor(scissor, clip);
                }
            }
            if (gl) {
                clear(clearCommand->mColor, clearCommand->mRect, clip);
            }
            continue;
        }

        sDrawCommand const* draw = static_cast<sDrawCommand const*>(command);
        u32 const count = draw->getVertexCount();
        u32 const bytes = count * getVertexStride(draw);
        ++mDrawCount;
        bool const flat = streamed && mpEntryFlat[entry - mpSortedEntry] != 0;
        if (run != nullptr && streamed && canJoinRun(run, runCount, draw, kQuadMax)) {
            runCount += count;
            streamOffset += bytes;
            runFlat = runFlat && flat;
            continue;
        }
        drawRun();

        // A draw changes the target without the clip: the first command
        // into a target is expected to be its clear.
        if (draw->mpTarget != target) {
            target = draw->mpTarget;
            if (target != nullptr && !target->isRenderTarget()) {
                dev_assert("Invalid texture.", __FILE__, __LINE__);
            }
            if (gl) {
                setRenderTarget(target);
            }
        }
        u32 const blendMode = draw->getBlendMode();
        if (blendMode != blend) {
            if (gl) {
                setBlendMode(blendMode, blend);
            }
            blend = blendMode;
        }
        if (draw->isTextured()) {
            bool changed = false;
            if (draw->mpTexture != texture) {
                texture = draw->mpTexture;
                changed = true;
                if (gl) {
                    setTexture(texture, target);
                }
            }
            if (texture != nullptr) {
                u32 const textureFiltering = draw->getTextureFiltering();
                if (changed || textureFiltering != filtering) {
                    filtering = textureFiltering;
                    if (gl) {
                        setTextureFiltering(filtering);
                    }
                }
                u32 const combineMode = draw->getTextureCombineMode();
                if (changed || combineMode != combine) {
                    combine = combineMode;
                    if (gl) {
                        setTextureCombineMode(combine);
                    }
                }
            }
        } else if (texture != nullptr) {
            texture = nullptr;
            if (gl) {
                setTexture(nullptr, target);
            }
        }
        if (draw->mViewport != viewport) {
            viewport = draw->mViewport;
            if (gl) {
                setViewport(viewport, clip);
            }
        }
        if (draw->mScissor != scissor) {
            scissor = draw->mScissor;
            if (gl) {
                setScissor(scissor, clip);
            }
        }
        if (draw->mProjection != projection) {
            projection = draw->mProjection;
            if (gl) {
                setProjection(projection);
            }
        }
        run = draw;
        runFlat = flat;
        runCount = count;
        runOffset = streamOffset;
        streamOffset += bytes;
    }
    drawRun();

    if (gl) {
        endScene();
    }
    deleteInvalidObjects();
    ++mExecuteFrame;
}

bool RenderSystem::uploadVertices()
{
    u32 total = 0;
    for (sCommand* const* entry = mpSortedEntry; entry != nullptr && (*entry)->mType != sCommand::eType_End; ++entry) {
        if ((*entry)->mType == sCommand::eType_Draw) {
            sDrawCommand const* draw = static_cast<sDrawCommand const*>(*entry);
            total += draw->getVertexCount() * getVertexStride(draw);
        }
    }
    gl::BindBuffer(GL_ARRAY_BUFFER, mVertexBuffer);
    u8* out = total <= mVertexBufferSize && total != 0 ? static_cast<u8*>(gl::MapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY))
                                                        : nullptr;
    if (out == nullptr) {
        gl::BindBuffer(GL_ARRAY_BUFFER, 0);
        return false;
    }
    for (sCommand* const* entry = mpSortedEntry; (*entry)->mType != sCommand::eType_End; ++entry) {
        if ((*entry)->mType == sCommand::eType_Draw) {
            sDrawCommand const* draw = static_cast<sDrawCommand const*>(*entry);
            u32 const bytes = draw->getVertexCount() * getVertexStride(draw);
            memcpy(out, draw->mpVertices, bytes);
            out += bytes;
            // Read while the command's vertices are still in the cache.
            mpEntryFlat[entry - mpSortedEntry] = hasFlatColours(draw) ? 1 : 0;
        }
    }
    if (gl::UnmapBuffer(GL_ARRAY_BUFFER) == GL_FALSE) {
        // The store was lost (a display change): the commands still hold theirs.
        gl::BindBuffer(GL_ARRAY_BUFFER, 0);
        return false;
    }
    return true;
}

void RenderSystem::notifyResize(sRect const&)
{
    reset();
}

void RenderSystem::reset()
{
    if (mContext == nullptr) {
        return;
    }
    platform::makeCurrent(mContext);
    platform::updateContext(mContext);
    sRect const window = getWindowRect();
    GLsizei const width = static_cast<GLsizei>(window.getWidth());
    GLsizei const height = static_cast<GLsizei>(window.getHeight());
    glViewport(0, 0, width, height);
    glScissor(0, 0, width, height);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT);
}

void RenderSystem::beginScene()
{
    // The picture finished last frame becomes visible now.
    platform::swapBuffers(mContext);
    platform::makeCurrent(mContext);
    // A frame may have ended with a render target bound.
    gl::BindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glEnable(GL_SCISSOR_TEST);
    mScissorTest = true;
    glDisable(GL_CULL_FACE);
    glDisable(GL_LIGHTING);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_TEXTURE_RECTANGLE_ARB);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    mTexcoordArray = false;
    glShadeModel(GL_SMOOTH);
    mFlatShade = false;
    gl::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, mIndexBuffer);
    glBlendFunc(GL_ONE, GL_ZERO);
    sRect const window = getWindowRect();
    glScissor(0, 0, static_cast<GLsizei>(window.getWidth()), static_cast<GLsizei>(window.getHeight()));
    glClearColor(0.3f, 0.3f, 0.3f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT);
}

void RenderSystem::endScene()
{
    gl::BindBuffer(GL_ARRAY_BUFFER, 0);
    gl::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glFlush();
}

void RenderSystem::setBlendMode(u32 mode, u32 previous)
{
    if (previous == 0) {
        glEnable(GL_BLEND);
    } else if (mode == 0) {
        glDisable(GL_BLEND);
    }
    sBlend const& blend = kBlendTable[mode];
    glBlendFunc(glfactor[blend.mSource], glfactor[blend.mDestination]);
    gl::BlendEquation(glblendeq[blend.mEquation]);
}

void RenderSystem::setTexture(Texture* texture, Texture* target)
{
    if (texture != nullptr) {
        // No texture is read while it is drawn to.
        if (texture == target) {
            gl::BindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
        }
        texture->bind();
    } else {
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_TEXTURE_RECTANGLE_ARB);
    }
}

void RenderSystem::setRenderTarget(Texture* texture)
{
    if (texture != nullptr) {
        if (!texture->isRenderTarget()) {
            dev_assert("Invalid texture.", __FILE__, __LINE__);
        }
        gl::BindFramebufferEXT(GL_FRAMEBUFFER_EXT, mFrameBuffer);
        // Targets are rectangle textures, and are attached as such.
        gl::FramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_RECTANGLE_ARB,
                                    texture->getHandle(), 0);
    } else {
        gl::BindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    }
}

void RenderSystem::setTextureFiltering(u32 mode)
{
    GLint const filter = mode != 0 ? GL_LINEAR : GL_NEAREST;
    glTexParameteri(GL_TEXTURE_RECTANGLE_ARB, GL_TEXTURE_MAG_FILTER, filter);
    glTexParameteri(GL_TEXTURE_RECTANGLE_ARB, GL_TEXTURE_MIN_FILTER, filter);
}

void RenderSystem::setTextureCombineMode(u32 mode)
{
    glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, mode != 0 ? GL_ADD : GL_MODULATE);
}

// Rectangles are y down from the top; GL counts y up from the bottom of the
// clip (the window or the target texture).
void RenderSystem::setViewport(sRect const& rect, sRect const& clip)
{
    sRect const area = rect & clip;
    glViewport(area.left, static_cast<GLint>(clip.getHeight()) - area.bottom, static_cast<GLsizei>(area.getWidth()),
               static_cast<GLsizei>(area.getHeight()));
}

// The box is always kept; the test itself is off while the box covers the
// whole target, where it would pass everywhere (a software rasteriser still
// pays for it per pixel).
void RenderSystem::setScissor(sRect const& rect, sRect const& clip)
{
    sRect const area = rect & clip;
    glScissor(area.left, static_cast<GLint>(clip.getHeight()) - area.bottom, static_cast<GLsizei>(area.getWidth()),
              static_cast<GLsizei>(area.getHeight()));
    bool const whole = area == clip;
    if (whole == mScissorTest) {
        mScissorTest = !whole;
        if (mScissorTest) {
            glEnable(GL_SCISSOR_TEST);
        } else {
            glDisable(GL_SCISSOR_TEST);
        }
    }
}

void RenderSystem::setProjection(sRect const& rect)
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // Bottom and top swapped against GL's habit: y grows downward.
    glOrtho(rect.left, rect.right, rect.bottom, rect.top, 0.0, 1.0);
}

void RenderSystem::clear(sColor color, sRect const& rect, sRect const& clip)
{
    sColorF const value(color);
    glClearColor(value.r, value.g, value.b, value.a);
    GLint box[4];
    glGetIntegerv(GL_SCISSOR_BOX, box);
    GLint const x = rect.left;
    GLint const y = static_cast<GLint>(clip.getHeight()) - rect.bottom;
    GLint const width = static_cast<GLint>(rect.getWidth());
    GLint const height = static_cast<GLint>(rect.getHeight());
    if (box[0] == x && box[1] == y && box[2] == width && box[3] == height) {
        glClear(GL_COLOR_BUFFER_BIT);
        return;
    }
    // Clear only where the rectangle and the current scissor box overlap.
    GLint const left = x > box[0] ? x : box[0];
    GLint const bottom = y > box[1] ? y : box[1];
    GLint const right = (x + width) < (box[0] + box[2]) ? (x + width) : (box[0] + box[2]);
    GLint const top = (y + height) < (box[1] + box[3]) ? (y + height) : (box[1] + box[3]);
    if (left < right && bottom < top) {
        glScissor(left, bottom, right - left, top - bottom);
        if (!mScissorTest) {
            glEnable(GL_SCISSOR_TEST);
        }
        glClear(GL_COLOR_BUFFER_BIT);
        if (!mScissorTest) {
            glDisable(GL_SCISSOR_TEST);
        }
    }
    glScissor(box[0], box[1], box[2], box[3]);
}

void RenderSystem::drawVertices(u32 primitive, u32 count, bool textured, void const* vertices)
{
    u8 const* base = static_cast<u8 const*>(vertices);
    GLsizei const stride = textured ? sizeof(sOutputTexturedVertex) : sizeof(sOutputVertex);
    glVertexPointer(3, GL_FLOAT, stride, base);
    glColorPointer(4, GL_UNSIGNED_BYTE, stride, base + 12);
    if (textured) {
        glTexCoordPointer(2, GL_SHORT, stride, base + 16);
    }
    if (textured != mTexcoordArray) {
        mTexcoordArray = textured;
        if (textured) {
            glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        } else {
            glDisableClientState(GL_TEXTURE_COORD_ARRAY);
        }
    }
    if (primitive == ePrimitiveType_Quad) {
        // Indices from the quad table's buffer; the range spares the driver
        // a scan of them.
        gl::DrawRangeElements(GL_TRIANGLES, 0, count - 1, static_cast<GLsizei>((count / 4) * 6), GL_UNSIGNED_SHORT,
                              nullptr);
    } else {
        glDrawArrays(kPrimitive[primitive], 0, static_cast<GLsizei>(count));
    }
}
