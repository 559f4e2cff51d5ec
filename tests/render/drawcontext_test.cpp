// DrawContext: batching by state, the sort key, the vertex formats at flush,
// the hand-over of entries, clears, duplicate, and the recording from several
// job threads at once. Checked on the recorded commands, with or without GL.
#include <cstring>
#include <string>

#include "renderfixture.h"
#include "scene.h"

using namespace rendertest;

namespace {

class DrawContextTest : public RenderTest {
protected:
    // count plain vertices of the given primitive at (x, y).
    static void plain(DrawContext* context, ePrimitiveType type, u32 count, int x, int y)
    {
        DrawContext::sVertex* vertex = static_cast<DrawContext::sVertex*>(context->allocateVertices(type, count));
        for (u32 i = 0; i < count; ++i) {
            vertex[i].mPosition = sVector(sFixed(x, 16), sFixed(y, 16));
            vertex[i].mColor = sColor::White;
        }
    }
};

using DrawContextDeathTest = DrawContextTest;

// Key, state bits, textures, rectangles and vertex bytes of every draw
// command, in replay order: all that the replay draws from.
std::vector<std::vector<u8>> fingerprint(std::vector<sDrawCommand const*> const& draws)
{
    std::vector<std::vector<u8>> result;
    for (sDrawCommand const* draw : draws) {
        u32 const stride = draw->isTextured() ? sizeof(sOutputTexturedVertex) : sizeof(sOutputVertex);
        Texture* const textures[2] = {draw->mpTexture, draw->mpTarget};
        sRect const rects[3] = {draw->mViewport, draw->mScissor, draw->mProjection};
        std::vector<u8> bytes(8 + sizeof(textures) + sizeof(rects));
        memcpy(bytes.data(), &draw->mKey, 4);
        memcpy(bytes.data() + 4, &draw->mBits, 4);
        memcpy(bytes.data() + 8, textures, sizeof(textures));
        memcpy(bytes.data() + 8 + sizeof(textures), rects, sizeof(rects));
        u8 const* vertices = static_cast<u8 const*>(draw->mpVertices);
        bytes.insert(bytes.end(), vertices, vertices + draw->getVertexCount() * stride);
        result.push_back(bytes);
    }
    return result;
}

} // namespace

TEST_F(DrawContextTest, BatchesFollowTheStateAndEndWithAFullVertexHeap)
{
    Texture* first = new Texture(4, 4, false, nullptr);
    Texture* second = new Texture(4, 4, false, nullptr);
    runFrame([&](DrawContext* context) {
        // Equal state makes one batch, however often a setter repeats it.
        windowState(context, 1);
        context->setBlendMode(eBlendMode_Alpha);
        plain(context, ePrimitiveType_Quad, 4, 1, 1);
        context->setBlendMode(eBlendMode_Alpha);
        context->setDrawLevel(1, 0);
        plain(context, ePrimitiveType_Quad, 8, 2, 2);
        // A change between allocations splits, each half with its own state.
        context->setDrawLevel(2, 0);
        context->setVertexDecl(eVertexDecl_Textured);
        context->setTexture(first);
        context->allocateVertices(ePrimitiveType_Quad, 4);
        context->setTexture(second);
        context->setTextureFiltering(eTextureFiltering_Nearest);
        context->allocateVertices(ePrimitiveType_Quad, 4);
        // 16 KiB of vertices is exactly one batch.
        context->setDrawLevel(3, 0);
        context->allocateVertices(ePrimitiveType_Quad, 1024);
        context->allocateVertices(ePrimitiveType_Quad, 4);
        context->setDrawLevel(3, 1);
        context->setVertexDecl(eVertexDecl_Plain);
        context->allocateVertices(ePrimitiveType_Triangle, 1365); // 16,380 bytes
        context->allocateVertices(ePrimitiveType_Triangle, 3);
    });
    EXPECT_EQ(drawSummary(), "v0 l1 s0 Q12 b1, v0 l2 s0 Q4t b1, v0 l2 s0 Q4t b1 n, v0 l3 s0 Q1024t b1 n, "
                             "v0 l3 s0 Q4t b1 n, v0 l3 s1 T1365 b1 n, v0 l3 s1 T3 b1 n");
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 7u);
    EXPECT_EQ(draws[1]->mpTexture, first);
    EXPECT_EQ(draws[2]->mpTexture, second);
    first->release();
    second->release();
}

TEST_F(DrawContextTest, KeyHoldsViewLevelAndSubLevelAndDuplicateTakesTheWholeState)
{
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setView(3);
        context->setDrawLevel(0x1234, 0x56789); // 12 bits of level, 16 of sub-level
        plain(context, ePrimitiveType_Point, 1, 0, 0);
        context->setView(5); // the view changes, level and sub-level stay
        plain(context, ePrimitiveType_Point, 1, 0, 0);
        windowState(context, 9, 4);
        context->setView(2);
        context->setBlendMode(eBlendMode_Subtract);
        context->setScissorRect(sRect(1, 2, 3, 4));
        DrawContext* child = mpRender->popContext();
        child->duplicate(context);
        plain(child, ePrimitiveType_Quad, 4, 0, 0);
        mpRender->pushContext(child);
    });
    EXPECT_EQ(drawSummary(), "v2 l9 s4 Q4 b3, v3 l234 s6789 P1 b0, v5 l234 s6789 P1 b0");
    ASSERT_FALSE(sortedDraws().empty());
    EXPECT_EQ(sortedDraws()[0]->mScissor, sRect(1, 2, 3, 4));
}

TEST_F(DrawContextTest, PointsAndLinesMoveHalfAPixelQuadsAndTexturedVerticesDoNot)
{
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        plain(context, ePrimitiveType_Line, 2, 10, 20);
        context->setDrawLevel(0, 1);
        plain(context, ePrimitiveType_Quad, 4, 10, 20);
        context->setDrawLevel(0, 2);
        plain(context, ePrimitiveType_Point, 1, 10, 20);
        context->setDrawLevel(0, 3);
        context->setVertexDecl(eVertexDecl_Textured);
        DrawContext::sTexturedVertex* vertex =
            static_cast<DrawContext::sTexturedVertex*>(context->allocateVertices(ePrimitiveType_Line, 2));
        vertex[0] = vertex[1] = {sVector(sFixed(10, 16), sFixed(0x8000, 0) + sFixed(20, 16)), sColor(1, 2, 3, 4),
                                 sTexcoord(7, 9)};
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 4u);
    std::string positions;
    for (u32 i = 0; i < 3; ++i) {
        sOutputVertex const* out = static_cast<sOutputVertex const*>(draws[i]->mpVertices);
        positions += std::to_string(out->x) + "," + std::to_string(out->y) + "," + std::to_string(out->z) + " ";
    }
    EXPECT_EQ(positions, "10.500000,20.500000,0.000000 10.000000,20.000000,0.000000 10.500000,20.500000,0.000000 ");
    sOutputTexturedVertex const* textured = static_cast<sOutputTexturedVertex const*>(draws[3]->mpVertices);
    EXPECT_EQ(textured->x, 10.0f) << "16.16 turns into float exactly";
    EXPECT_EQ(textured->y, 20.5f);
    EXPECT_EQ(textured->u, 7);
    EXPECT_EQ(textured->v, 9);
    EXPECT_EQ(colorText(textured->mColor), "(1,2,3,4)");
}

TEST_F(DrawContextTest, EmptyFlushesAndUnpushedContextsMakeNoCommandWhileManyCommandsAllArrive)
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
    EXPECT_EQ(keyText(draws[0]->mKey), "v0 l0 s0");
    EXPECT_EQ(keyText(draws[quads - 1]->mKey), "v0 l1 s9c3") << "sub-level 2499";
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
    EXPECT_EQ(keyText(clear->mKey), "v0 l7 s3");
    EXPECT_EQ(clear->mpTarget, target);
    EXPECT_EQ(clear->mRect, sRect(0, 0, 16, 16));
    EXPECT_EQ(commands[2]->mType, static_cast<u32>(sCommand::eType_Draw));
    target->release();
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
