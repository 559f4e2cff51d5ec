// DrawContext: batching by state, the sort key, the vertex formats at flush,
// the hand-over of entries, clears, duplicate, and the recording from several
// job threads at once. Checked on the recorded commands, with or without GL.
#include <cstring>
#include <random>

#include "renderfixture.h"
#include "scene.h"

using namespace rendertest;

namespace {

typedef DrawContext::sVertex sVertex;
typedef DrawContext::sTexturedVertex sTexturedVertex;

class DrawContextTest : public RenderTest {
protected:
    // count plain vertices of the given primitive at (x, y).
    static void plain(DrawContext* context, ePrimitiveType type, u32 count, int x, int y)
    {
        sVertex* vertex = static_cast<sVertex*>(context->allocateVertices(type, count));
        for (u32 i = 0; i < count; ++i) {
            vertex[i].mPosition = sVector(sFixed(x, 16), sFixed(y, 16));
            vertex[i].mColor = sColor::White;
        }
    }
};

using DrawContextDeathTest = DrawContextTest;

// Key, state bits and vertex bytes of every draw command, in replay order.
std::vector<std::vector<u8>> fingerprint(std::vector<sDrawCommand const*> const& draws)
{
    std::vector<std::vector<u8>> result;
    for (sDrawCommand const* draw : draws) {
        u32 const stride = draw->isTextured() ? sizeof(sOutputTexturedVertex) : sizeof(sOutputVertex);
        std::vector<u8> bytes(8 + draw->getVertexCount() * stride);
        memcpy(bytes.data(), &draw->mKey, 4);
        memcpy(bytes.data() + 4, &draw->mBits, 4);
        memcpy(bytes.data() + 8, draw->mpVertices, bytes.size() - 8);
        result.push_back(bytes);
    }
    return result;
}

} // namespace

TEST_F(DrawContextTest, EqualStateMakesOneBatchAndRepeatedSettersDoNotBreakIt)
{
    runFrame([&](DrawContext* context) {
        windowState(context, 1);
        context->setBlendMode(eBlendMode_Alpha);
        plain(context, ePrimitiveType_Quad, 4, 1, 1);
        context->setBlendMode(eBlendMode_Alpha);
        context->setDrawLevel(1, 0);
        plain(context, ePrimitiveType_Quad, 8, 2, 2);
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0]->getVertexCount(), 12u) << "the sum of both allocations";
    EXPECT_EQ(draws[0]->getBlendMode(), static_cast<u32>(eBlendMode_Alpha));
}

TEST_F(DrawContextTest, AChangeBetweenAllocationsSplitsTheBatchWithTheStateOfEachHalf)
{
    Texture* first = new Texture(4, 4, false, nullptr);
    Texture* second = new Texture(4, 4, false, nullptr);
    runFrame([&](DrawContext* context) {
        windowState(context, 1);
        context->setVertexDecl(eVertexDecl_Textured);
        context->setTexture(first);
        context->allocateVertices(ePrimitiveType_Quad, 4);
        context->setTexture(second);
        context->setTextureFiltering(eTextureFiltering_Nearest);
        context->allocateVertices(ePrimitiveType_Quad, 4);
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0]->mpTexture, first) << "the first batch keeps the state it was made with";
    EXPECT_EQ(draws[0]->getTextureFiltering(), static_cast<u32>(eTextureFiltering_Linear));
    EXPECT_EQ(draws[1]->mpTexture, second);
    EXPECT_EQ(draws[1]->getTextureFiltering(), static_cast<u32>(eTextureFiltering_Nearest));
    EXPECT_TRUE(draws[0]->isTextured());
    first->release();
    second->release();
}

TEST_F(DrawContextTest, KeyHoldsViewLevelAndSubLevel)
{
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setView(3);
        context->setDrawLevel(0x1234, 0x56789);
        plain(context, ePrimitiveType_Point, 1, 0, 0);
        context->setView(5); // the view changes, level and sub-level stay
        plain(context, ePrimitiveType_Point, 1, 0, 0);
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0]->mKey, 0x32346789u);
    EXPECT_EQ(draws[1]->mKey, 0x52346789u);
}

TEST_F(DrawContextTest, PointsAndLinesMoveHalfAPixelQuadsAndTexturedVerticesDoNot)
{
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setDrawLevel(0, 0);
        plain(context, ePrimitiveType_Line, 2, 10, 20);
        context->setDrawLevel(0, 1);
        plain(context, ePrimitiveType_Quad, 4, 10, 20);
        context->setDrawLevel(0, 2);
        plain(context, ePrimitiveType_Point, 1, 10, 20);
        context->setDrawLevel(0, 3);
        context->setVertexDecl(eVertexDecl_Textured);
        sTexturedVertex* vertex = static_cast<sTexturedVertex*>(context->allocateVertices(ePrimitiveType_Line, 2));
        for (int i = 0; i < 2; ++i) {
            vertex[i].mPosition = sVector(sFixed(10, 16), sFixed(0x8000, 0) + sFixed(20, 16));
            vertex[i].mColor = sColor(1, 2, 3, 4);
            vertex[i].mTexcoord = sTexcoord(7, 9);
        }
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 4u);
    sOutputVertex const* line = static_cast<sOutputVertex const*>(draws[0]->mpVertices);
    EXPECT_EQ(line->x, 10.5f);
    EXPECT_EQ(line->y, 20.5f);
    EXPECT_EQ(line->z, 0.0f);
    sOutputVertex const* quadVertex = static_cast<sOutputVertex const*>(draws[1]->mpVertices);
    EXPECT_EQ(quadVertex->x, 10.0f);
    EXPECT_EQ(quadVertex->y, 20.0f);
    sOutputVertex const* point = static_cast<sOutputVertex const*>(draws[2]->mpVertices);
    EXPECT_EQ(point->x, 10.5f);
    sOutputTexturedVertex const* textured = static_cast<sOutputTexturedVertex const*>(draws[3]->mpVertices);
    EXPECT_EQ(textured->x, 10.0f);
    EXPECT_EQ(textured->y, 20.5f) << "16.16 turns into float exactly";
    EXPECT_EQ(textured->u, 7);
    EXPECT_EQ(textured->v, 9);
    EXPECT_EQ(textured->mColor, static_cast<unsigned int>(sColor(1, 2, 3, 4)));
}

TEST_F(DrawContextTest, ABatchEndsWhenTheVertexHeapIsFull)
{
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setVertexDecl(eVertexDecl_Textured);
        context->allocateVertices(ePrimitiveType_Quad, 1024); // 16 KiB: exactly one batch
        context->allocateVertices(ePrimitiveType_Quad, 4);
        context->setDrawLevel(0, 1);
        context->setVertexDecl(eVertexDecl_Plain);
        context->allocateVertices(ePrimitiveType_Triangle, 1365); // 16,380 bytes
        context->allocateVertices(ePrimitiveType_Triangle, 3);
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 4u);
    EXPECT_EQ(draws[0]->getVertexCount(), 1024u);
    EXPECT_EQ(draws[1]->getVertexCount(), 4u);
    EXPECT_EQ(draws[2]->getVertexCount(), 1365u);
    EXPECT_EQ(draws[3]->getVertexCount(), 3u);
}

TEST_F(DrawContextTest, FlushWithoutVerticesAndUnpushedBatchesMakeNoCommand)
{
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->flushVertices();
        context->flushVertices();
        // A context that is not given back loses its open batch.
        DrawContext* forgotten = mpRender->popContext();
        windowState(forgotten, 2);
        plain(forgotten, ePrimitiveType_Quad, 4, 0, 0);
    });
    EXPECT_TRUE(sortedDraws().empty());
}

TEST_F(DrawContextTest, ManyCommandsFromOneContextAllArrive)
{
    // Alternating levels make a command per quad: more than one block of entries.
    u32 const quads = 2500;
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        for (u32 i = 0; i < quads; ++i) {
            context->setDrawLevel(i % 2, i);
            plain(context, ePrimitiveType_Quad, 4, 0, 0);
        }
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), quads);
    EXPECT_EQ(draws[0]->mKey, 0u);
    EXPECT_EQ(draws[quads - 1]->mKey, (1u << 16) | (quads - 1));
}

TEST_F(DrawContextTest, ClearGoesStraightToTheTableWithTheCurrentKeyAndTarget)
{
    Texture* target = new Texture(16, 16, true, nullptr);
    runFrame([&](DrawContext* context) {
        windowState(context, 7, 3);
        plain(context, ePrimitiveType_Quad, 4, 0, 0); // pending, flushed by the clear
        context->setRenderTarget(target);
        context->clear(sRect(0, 0, 16, 16), sColor::Blue);
        context->setRenderTarget(nullptr);
        context->clear(sRect::Zero, sColor::Black); // back to the window's clip
    });
    std::vector<sCommand const*> commands = sortedCommands();
    ASSERT_EQ(commands.size(), 3u);
    // The clears entered the table first; the quad came with the context's block.
    sClearCommand const* clear = static_cast<sClearCommand const*>(commands[0]);
    ASSERT_EQ(clear->mType, static_cast<u32>(sCommand::eType_Clear));
    EXPECT_EQ(clear->mKey, (7u << 16) | 3u);
    EXPECT_EQ(clear->mpTarget, target);
    EXPECT_EQ(clear->mRect, sRect(0, 0, 16, 16));
    EXPECT_EQ(commands[2]->mType, static_cast<u32>(sCommand::eType_Draw));
    target->release();
}

TEST_F(DrawContextTest, DuplicateTakesOverTheWholeState)
{
    runFrame([&](DrawContext* context) {
        windowState(context, 9, 4);
        context->setView(2);
        context->setBlendMode(eBlendMode_Subtract);
        context->setScissorRect(sRect(1, 2, 3, 4));
        DrawContext* child = mpRender->popContext();
        child->duplicate(context);
        EXPECT_EQ(child->getDrawKey(), context->getDrawKey());
        EXPECT_EQ(child->getScissorRect(), sRect(1, 2, 3, 4));
        plain(child, ePrimitiveType_Quad, 4, 0, 0);
        mpRender->pushContext(child);
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0]->mKey, (2u << 28) | (9u << 16) | 4u);
    EXPECT_EQ(draws[0]->getBlendMode(), static_cast<u32>(eBlendMode_Subtract));
    EXPECT_EQ(draws[0]->mScissor, sRect(1, 2, 3, 4));
}

TEST_F(DrawContextTest, RecordingFromEveryJobThreadGivesTheSameCommandsAsOneThread)
{
    Scene* scene = new Scene(mpTools);
    runFrame([&](DrawContext* context) { scene->record(context, 0, Scene::kShapes); });
    std::vector<std::vector<u8>> const serial = fingerprint(sortedDraws());
    ASSERT_EQ(serial.size(), Scene::kShapes);
    for (u32 slices : {4u, 13u}) {
        runFrame([&](DrawContext* context) { scene->recordInParallel(mpRender, mpJobs, context, slices); });
        EXPECT_TRUE(fingerprint(sortedDraws()) == serial) << slices << " slices";
    }
    delete scene;
}

TEST_F(DrawContextDeathTest, ViewsAboveSixAndUnknownDeclarationsAreFatal)
{
    mpRender->preprocess();
    DrawContext* context = mpRender->popContext();
    context->setView(6);
    EXPECT_DEATH(context->setView(7), "Invalid view\\.");
    context->setVertexDecl(static_cast<eVertexDecl>(2));
    EXPECT_DEATH(context->allocateVertices(ePrimitiveType_Quad, 4), "Undefined vertex declaration\\.");
    context->setVertexDecl(eVertexDecl_Plain);
    mpRender->pushContext(context);
    mpRender->postprocess();
}
