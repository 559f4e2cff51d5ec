// Textures as render objects: the size limit, deletion deferred to the end of
// the next replay, and the leak check when the render system ends.
#include "renderfixture.h"

using namespace rendertest;

namespace {

using TextureTest = RenderTest;
using TextureDeathTest = RenderTest;

} // namespace

TEST_F(TextureTest, LastReleaseDefersDeletionToTheEndOfTheNextReplay)
{
    u32 const before = mpRender->getRenderObjectNum(); // the font is one
    Texture* texture = new Texture(8, 8, false, nullptr);
    EXPECT_EQ(mpRender->getRenderObjectNum(), before + 1);
    texture->addRef();
    texture->release();
    EXPECT_TRUE(texture->isValid()) << "a reference is left";
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setVertexDecl(eVertexDecl_Textured);
        context->setTexture(texture);
        EXPECT_EQ(texture->getProtectFrame(), mpRender->getBuildFrame());
        context->allocateVertices(ePrimitiveType_Quad, 4);
        texture->release(); // while the frame still refers to it
        EXPECT_FALSE(texture->isValid());
        EXPECT_EQ(mpRender->getRenderObjectNum(), before + 1) << "marked, not deleted";
    });
    // The replay used it, then deleted it.
    EXPECT_EQ(mpRender->getDrawCount(), 1u);
    EXPECT_EQ(mpRender->getRenderObjectNum(), before);
}

TEST_F(TextureTest, TheLargestSizeAndTheEmptyTextureAreAccepted)
{
    Texture* largest = new Texture(Texture::kMaxSize, Texture::kMaxSize, true, nullptr);
    EXPECT_EQ(largest->getWidth(), 1024u);
    EXPECT_EQ(largest->getHandle() != 0u, mpRender->hasContext());
    largest->release();
    Texture* empty = new Texture();
    EXPECT_EQ(empty->getHandle(), 0u) << "the default texture makes no GL object";
    empty->release();
    runFrame([](DrawContext*) {});
    EXPECT_EQ(mpRender->getRenderObjectNum(), 1u) << "both went with the replay; the font stays";
}

TEST_F(TextureDeathTest, OversizeAndLeakedTexturesAreFatal)
{
    EXPECT_DEATH(new Texture(1025, 16, false, nullptr), "Requesed texture size is greater than 1024\\.");
    EXPECT_DEATH(new Texture(16, 1025, false, nullptr), "Requesed texture size is greater than 1024\\.");
    EXPECT_DEATH(
        {
            new Texture(4, 4, false, nullptr);
            mpTools->destroy();
            mpRender->destroy();
        },
        "Texture leak\\.");
}

TEST_F(TextureTest, EndedTexturesStillListedAtShutdownAreDeletedThere)
{
    (new Texture(4, 4, false, nullptr))->release();
    // No replay in between: the render system's end deletes it, without a leak.
    mpTools->destroy();
    mpRender->destroy();
    mpRender = RenderSystem::create();
    mpTools = ToolSystem::create();
    EXPECT_EQ(mpRender->getRenderObjectNum(), 1u) << "only the new font";
}
