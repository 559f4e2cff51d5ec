// What reaches the window: pixels read back from the back buffer after the
// replay, in a real GL context (skipped without a display). Order by key,
// blending, texels, clipping, projections, render targets, line rasterising,
// text, and the same picture from any split of the recording over threads.
#include <GL/gl.h>

#include "renderfixture.h"
#include "scene.h"

using namespace rendertest;

namespace {

using PixelTest = RenderTest;

sColor const kGrey(77, 77, 77, 255); // the clear colour 0.3
sColor const kRed = sColor::Red;
sColor const kGreen = sColor::Green;
sColor const kWhite = sColor::White;

// A texture of 8 by 8 whose texel (x, y) is (30x, 30y, 100); row 0 first.
Texture* makeGradientTexture()
{
    u8 pixels[8 * 8 * 4];
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) {
            u8* texel = pixels + (y * 8 + x) * 4;
            texel[0] = static_cast<u8>(30 * x);
            texel[1] = static_cast<u8>(30 * y);
            texel[2] = 100;
            texel[3] = 255;
        }
    }
    return new Texture(8, 8, false, pixels);
}

void texturedQuad(ToolSystem const* tools, DrawContext* context, sRect const& rect, sColor color, sTexcoord leftTop,
                  sTexcoord rightBottom)
{
    sColor const colors[4] = {color, color, color, color};
    context->setVertexDecl(eVertexDecl_Textured);
    tools->drawRect(context, rect, colors, leftTop, rightBottom);
}

} // namespace

TEST_F(PixelTest, AnEmptyFrameIsTheGreyClear)
{
    REQUIRE_GL();
    runFrame([](DrawContext*) {});
    EXPECT_TRUE(nearColor(readPixel(0, 0), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(kWindowWidth - 1, kWindowHeight - 1), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(160, 120), kGrey, 1));
}

TEST_F(PixelTest, DrawLevelBeatsRecordingOrderAndEqualKeysKeepTheirOrder)
{
    REQUIRE_GL();
    runFrame([&](DrawContext* context) {
        // Recorded first, drawn last: the higher level wins.
        windowState(context, 2);
        quad(context, sRect(10, 10, 30, 30), kRed);
        windowState(context, 1);
        quad(context, sRect(20, 20, 40, 40), kGreen);
        // Equal keys in one context: the later batch covers the earlier one.
        windowState(context, 5);
        quad(context, sRect(60, 10, 80, 30), kRed);
        context->setBlendMode(eBlendMode_Alpha); // a new batch with the same key
        quad(context, sRect(70, 20, 90, 40), kGreen);
    });
    EXPECT_TRUE(nearColor(readPixel(25, 25), kRed));
    EXPECT_TRUE(nearColor(readPixel(35, 35), kGreen));
    EXPECT_TRUE(nearColor(readPixel(75, 25), kGreen));
    EXPECT_TRUE(nearColor(readPixel(65, 15), kRed));
    EXPECT_EQ(mpRender->getDrawCount(), 4u);
}

TEST_F(PixelTest, EachBlendModeGivesItsMix)
{
    REQUIRE_GL();
    sColor const destination(100, 150, 200, 255);
    sColor const source(200, 100, 50, 128);
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        quad(context, sRect(0, 0, 200, 40), destination);
        for (u32 mode = 0; mode < eBlendMode_Num; ++mode) {
            windowState(context, 1, mode);
            context->setBlendMode(static_cast<eBlendMode>(mode));
            int const left = 10 + 40 * static_cast<int>(mode);
            quad(context, sRect(left, 10, left + 20, 30), source);
        }
    });
    float const a = 128.0f / 255.0f;
    auto mix = [](float value) { return static_cast<u8>(value < 0.0f ? 0.0f : value + 0.5f); };
    sColor const expected[eBlendMode_Num] = {
        sColor(200, 100, 50, 255), // opaque: the source as it is
        sColor(mix(200 * a + 100 * (1 - a)), mix(100 * a + 150 * (1 - a)), mix(50 * a + 200 * (1 - a)), 255),
        sColor(mix(200 * a), mix(100 * a), mix(50 * a), 255), // the destination is dropped
        sColor(mix(100 * (1 - a) - 200 * a), mix(150 * (1 - a) - 100 * a), mix(200 * (1 - a) - 50 * a), 255),
    };
    for (u32 mode = 0; mode < eBlendMode_Num; ++mode) {
        EXPECT_TRUE(nearColor(readPixel(20 + 40 * static_cast<int>(mode), 20), expected[mode])) << "mode " << mode;
    }
    EXPECT_TRUE(nearColor(readPixel(5, 5), destination));
}

TEST_F(PixelTest, TexturedQuadsSampleTexelsAndCombineWithTheVertexColour)
{
    REQUIRE_GL();
    Texture* texture = makeGradientTexture();
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setTexture(texture);
        context->setTextureFiltering(eTextureFiltering_Nearest);
        texturedQuad(mpTools, context, sRect(40, 40, 44, 44), kWhite, sTexcoord(2, 3), sTexcoord(6, 7));
        // Magnified four times: each texel covers 4 by 4 pixels.
        texturedQuad(mpTools, context, sRect(60, 40, 76, 56), kWhite, sTexcoord(0, 0), sTexcoord(4, 4));
        windowState(context, 1);
        context->setTextureCombineMode(eTextureCombineMode_Add);
        texturedQuad(mpTools, context, sRect(80, 40, 82, 42), sColor(10, 20, 30, 255), sTexcoord(1, 1), sTexcoord(3, 3));
        windowState(context, 2);
        context->setTextureCombineMode(eTextureCombineMode_Modulate);
        texturedQuad(mpTools, context, sRect(90, 40, 92, 42), sColor(128, 128, 128, 255), sTexcoord(5, 5),
                     sTexcoord(7, 7));
    });
    for (int j = 0; j < 4; ++j) {
        for (int i = 0; i < 4; ++i) {
            sColor const texel(static_cast<u8>(30 * (2 + i)), static_cast<u8>(30 * (3 + j)), 100, 255);
            EXPECT_TRUE(nearColor(readPixel(40 + i, 40 + j), texel, 0)) << i << ", " << j;
        }
    }
    EXPECT_TRUE(nearColor(readPixel(60 + 4 * 2 + 3, 40 + 4 * 1), sColor(60, 30, 100, 255), 0));
    EXPECT_TRUE(nearColor(readPixel(81, 40), sColor(30 * 2 + 10, 30 * 1 + 20, 100 + 30, 255), 1)) << "added";
    EXPECT_TRUE(nearColor(readPixel(90, 41), sColor(75, 90, 50, 255), 1)) << "modulated by one half";
    EXPECT_TRUE(nearColor(readPixel(44, 40), kGrey, 1)) << "nothing right of the quad";
    texture->release();
}

TEST_F(PixelTest, ScissorAndViewportClipTheDrawing)
{
    REQUIRE_GL();
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setScissorRect(sRect(10, 10, 50, 40));
        quad(context, sRect(0, 0, kWindowWidth, kWindowHeight), kRed);
        // A viewport of 64 by 64 showing 8 by 8 units: one unit is 8 pixels.
        windowState(context, 1);
        context->setViewport(sRect(100, 50, 164, 114));
        context->setScissorRect(sRect(100, 50, 164, 114));
        context->setProjectionRect(sRect(0, 0, 8, 8));
        quad(context, sRect(0, 0, 4, 4), kGreen);
        quad(context, sRect(6, 6, 20, 20), kGreen); // reaches past the viewport
    });
    EXPECT_TRUE(nearColor(readPixel(10, 10), kRed));
    EXPECT_TRUE(nearColor(readPixel(49, 39), kRed));
    EXPECT_TRUE(nearColor(readPixel(50, 39), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(9, 10), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(10, 40), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(100, 50), kGreen));
    EXPECT_TRUE(nearColor(readPixel(131, 81), kGreen));
    EXPECT_TRUE(nearColor(readPixel(132, 81), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(131, 82), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(163, 113), kGreen));
    EXPECT_TRUE(nearColor(readPixel(164, 113), kGrey, 1)) << "the viewport clips";
    EXPECT_TRUE(nearColor(readPixel(163, 114), kGrey, 1));
}

TEST_F(PixelTest, AGameViewPutsTheWorldOriginAtTheWindowCentre)
{
    REQUIRE_GL();
    runFrame([&](DrawContext*) {
        mpTools->drawRect(1u << 1, sVector::Zero, sVector(sFixed(1, 16), sFixed(1, 16)), kRed);
        mpTools->drawRect(1u << 1, sVector(sFixed(-160, 16), sFixed(-120, 16)), sVector(sFixed(-159, 16), sFixed(-119, 16)),
                          kGreen);
    });
    EXPECT_TRUE(nearColor(readPixel(160, 120), kRed));
    EXPECT_TRUE(nearColor(readPixel(159, 120), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(161, 120), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(160, 119), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(160, 121), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(0, 0), kGreen)) << "the projection's left top is the window's";
}

TEST_F(PixelTest, ARenderTargetIsDrawnToAndThenSampled)
{
    REQUIRE_GL();
    Texture* target = new Texture(64, 64, true, nullptr);
    sRect const targetRect(0, 0, 64, 64);
    runFrame([&](DrawContext* context) {
        // Into the target: its clear comes first and sets the clip to its size.
        windowState(context, 0, 0);
        context->setRenderTarget(target);
        context->clear(targetRect, sColor::Blue);
        context->setDrawLevel(0, 1);
        context->setViewport(targetRect);
        context->setScissorRect(targetRect);
        context->setProjectionRect(targetRect);
        quad(context, sRect(0, 0, 16, 16), kRed);
        // Back to the window, whose clip an empty clear restores.
        windowState(context, 1, 0);
        context->clear(sRect::Zero, sColor::Black);
        context->setDrawLevel(1, 1);
        context->setTexture(target);
        context->setTextureFiltering(eTextureFiltering_Nearest);
        texturedQuad(mpTools, context, sRect(100, 100, 164, 164), kWhite, sTexcoord(0, 0), sTexcoord(64, 64));
    });
    // Texel row 0 is the target's bottom row: drawn with texels from (0, 0)
    // at the top, the target shows upside down.
    EXPECT_TRUE(nearColor(readPixel(105, 160), kRed));
    EXPECT_TRUE(nearColor(readPixel(115, 148), kRed));
    EXPECT_TRUE(nearColor(readPixel(116, 148), sColor::Blue));
    EXPECT_TRUE(nearColor(readPixel(115, 147), sColor::Blue));
    EXPECT_TRUE(nearColor(readPixel(105, 105), sColor::Blue));
    EXPECT_TRUE(nearColor(readPixel(99, 105), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(10, 230), kGrey, 1)) << "the window outside is untouched";
    target->release();
}

TEST_F(PixelTest, ATextureThatIsAlsoTheTargetIsDrawnToTheWindow)
{
    REQUIRE_GL();
    Texture* target = new Texture(64, 64, true, nullptr);
    runFrame([&](DrawContext* context) {
        windowState(context, 0, 0);
        context->setRenderTarget(target);
        context->clear(sRect(0, 0, 64, 64), kRed);
        context->setDrawLevel(0, 1);
        context->setViewport(sRect(0, 0, 64, 64));
        context->setScissorRect(sRect(0, 0, 64, 64));
        context->setProjectionRect(sRect(0, 0, 64, 64));
        context->setTexture(target);
        texturedQuad(mpTools, context, sRect(0, 0, 32, 32), kWhite, sTexcoord(0, 0), sTexcoord(32, 32));
    });
    // Reading the target unbinds it; the clip is still the target's, so the
    // quad lands in the window's bottom left 64 by 64 pixels.
    int const bottom = kWindowHeight - 64;
    EXPECT_TRUE(nearColor(readPixel(10, bottom + 10), kRed));
    EXPECT_TRUE(nearColor(readPixel(40, bottom + 10), kGrey, 1));
    target->release();
}

TEST_F(PixelTest, LinesAndPointsLandOnPixelCentres)
{
    REQUIRE_GL();
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setVertexDecl(eVertexDecl_Plain);
        mpTools->drawLine(context, sPoint(10, 20), sPoint(30, 20), kWhite, kWhite);
        mpTools->drawLine(context, sPoint(50, 10), sPoint(50, 30), kWhite, kWhite);
        DrawContext::sVertex* point = static_cast<DrawContext::sVertex*>(context->allocateVertices(ePrimitiveType_Point, 1));
        point->mPosition = sVector(sFixed(70, 16), sFixed(70, 16));
        point->mColor = kWhite;
    });
    // One pixel wide on the row and column of the given coordinates. Which
    // end pixel a rasteriser leaves out is its own affair; nothing lies beyond.
    for (int x = 11; x < 29; ++x) {
        EXPECT_TRUE(nearColor(readPixel(x, 20), kWhite)) << "x " << x;
        EXPECT_TRUE(nearColor(readPixel(x, 19), kGrey, 1)) << "x " << x;
        EXPECT_TRUE(nearColor(readPixel(x, 21), kGrey, 1)) << "x " << x;
    }
    EXPECT_TRUE(nearColor(readPixel(9, 20), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(30, 20), kGrey, 1));
    for (int y = 11; y < 29; ++y) {
        EXPECT_TRUE(nearColor(readPixel(50, y), kWhite)) << "y " << y;
        EXPECT_TRUE(nearColor(readPixel(49, y), kGrey, 1)) << "y " << y;
        EXPECT_TRUE(nearColor(readPixel(51, y), kGrey, 1)) << "y " << y;
    }
    EXPECT_TRUE(nearColor(readPixel(50, 9), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(50, 30), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(70, 70), kWhite));
    EXPECT_TRUE(nearColor(readPixel(71, 70), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(70, 71), kGrey, 1));
}

TEST_F(PixelTest, TextShowsTheFontsGlyphsAtAnySize)
{
    REQUIRE_GL();
    runFrame([&](DrawContext*) {
        mpTools->drawString(sPoint(100, 100), "H", 6, kWhite);
        mpTools->drawString(sPoint(200, 100), "H", 12, kWhite);
    });
    // 'H' from cell row 2: "#...#" three times, "#####", "#...#" three times.
    for (int row = 0; row < 12; ++row) {
        for (int column = 0; column < 6; ++column) {
            bool const ink = row >= 2 && row <= 8 && column < 5 && (column == 0 || column == 4 || row == 5);
            EXPECT_TRUE(nearColor(readPixel(100 + column, 100 + row), ink ? kWhite : kGrey, 1))
                << "column " << column << ", row " << row;
        }
    }
    // Twice the size: each texel covers 2 by 2 pixels.
    EXPECT_TRUE(nearColor(readPixel(200, 104), kWhite));
    EXPECT_TRUE(nearColor(readPixel(201, 105), kWhite));
    EXPECT_TRUE(nearColor(readPixel(202, 104), kGrey, 1));
    EXPECT_TRUE(nearColor(readPixel(204, 110), kWhite)) << "the bar of the H";
    EXPECT_TRUE(nearColor(readPixel(200, 103), kGrey, 1));
}

TEST_F(PixelTest, EveryJobThreadRecordingGivesTheSamePixelsAsOneThread)
{
    REQUIRE_GL();
    Scene* scene = new Scene(mpTools);
    runFrame([&](DrawContext* context) { scene->record(context, 0, Scene::kShapes); });
    std::vector<sColor> const serial = readWindow();
    runFrame([&](DrawContext* context) { scene->recordInParallel(mpRender, mpJobs, context, 4); });
    std::vector<sColor> const parallel = readWindow();
    size_t differing = 0;
    for (size_t i = 0; i < serial.size(); ++i) {
        differing += static_cast<unsigned int>(serial[i]) != static_cast<unsigned int>(parallel[i]) ? 1 : 0;
    }
    EXPECT_EQ(differing, 0u);
    size_t grey = 0;
    for (sColor pixel : serial) {
        grey += nearColor(pixel, kGrey, 0) ? 1 : 0;
    }
    EXPECT_LT(grey, serial.size() / 2) << "the scene covers the window";
    delete scene;
}
