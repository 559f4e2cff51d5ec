// What reaches the window: pixels read back from the back buffer after the
// replay, in a real GL context (skipped without a display). Order by key,
// blending, texels, clipping, projections, render targets, line rasterising
// and text. (That any split of the recording over threads records the same
// commands, and so draws the same, is the draw context's test.)
#include <GL/gl.h>

#include <cstring>

#include "renderfixture.h"

using namespace rendertest;

namespace {

using PixelTest = RenderTest;

sColor const kGrey(77, 77, 77, 255); // the clear colour 0.3
sColor const kRed = sColor::Red;
sColor const kGreen = sColor::Green;
sColor const kBlue = sColor::Blue;
sColor const kWhite = sColor::White;

void texturedQuad(ToolSystem const* tools, DrawContext* context, sRect const& rect, sColor color, sTexcoord leftTop,
                  sTexcoord rightBottom)
{
    sColor const colors[4] = {color, color, color, color};
    context->setVertexDecl(eVertexDecl_Textured);
    tools->drawRect(context, rect, colors, leftTop, rightBottom);
}

// Into a 64 by 64 render target, at level 0, sub-level 1 after its clear.
void targetState(DrawContext* context, Texture* target, sColor clear)
{
    sRect const rect(0, 0, 64, 64);
    context->setRenderTarget(target);
    context->clear(rect, clear);
    context->setDrawLevel(0, 1);
    context->setViewport(rect);
    context->setScissorRect(rect);
    context->setProjectionRect(rect);
}

} // namespace

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
    expectPixels({{25, 25, kRed}, {35, 35, kGreen}, {75, 25, kGreen}, {65, 15, kRed}, {160, 120, kGrey, 1}});
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
    expectPixels({{5, 5, destination}});
}

TEST_F(PixelTest, TexturedQuadsSampleTexelsAndCombineWithTheVertexColour)
{
    REQUIRE_GL();
    // 8 by 8 texels, texel (x, y) is (30x, 30y, 100); row 0 first.
    u8 pixels[8 * 8 * 4];
    for (int i = 0; i < 64; ++i) {
        u8 const texel[4] = {static_cast<u8>(30 * (i % 8)), static_cast<u8>(30 * (i / 8)), 100, 255};
        memcpy(pixels + 4 * i, texel, 4);
    }
    Texture* texture = new Texture(8, 8, false, pixels);
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
    expectPixels({{60 + 4 * 2 + 3, 40 + 4 * 1, sColor(60, 30, 100, 255), 0},
                  {81, 40, sColor(30 * 2 + 10, 30 * 1 + 20, 100 + 30, 255), 1}, // added
                  {90, 41, sColor(75, 90, 50, 255), 1},                         // modulated by one half
                  {44, 40, kGrey, 1}});                                         // nothing right of the quad
    texture->release();
}

// Batches with the same key and state may reach GL as one draw: each must
// still show its own texture, and a batch that ends in a partial triangle
// must not shift the triangles of the batch behind it.
TEST_F(PixelTest, NeighbouringBatchesOfOneStateKeepTheirOwnTexturesAndPrimitives)
{
    REQUIRE_GL();
    u8 red[4 * 4] = {255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255};
    u8 blue[4 * 4] = {0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255};
    Texture* textures[2] = {new Texture(2, 2, false, red), new Texture(2, 2, false, blue)};
    auto triangle = [](DrawContext* context, int left, int top, u32 count) {
        DrawContext::sVertex* vertex =
            static_cast<DrawContext::sVertex*>(context->allocateVertices(ePrimitiveType_Triangle, count));
        sPoint const corners[3] = {sPoint(left, top), sPoint(left + 20, top), sPoint(left, top + 20)};
        for (u32 i = 0; i < count; ++i) {
            sPoint const corner = corners[i < 3 ? i : 0];
            vertex[i].mPosition = sVector(sFixed(corner.x, 16), sFixed(corner.y, 16));
            vertex[i].mColor = kGreen;
        }
    };
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setTextureFiltering(eTextureFiltering_Nearest);
        for (int i = 0; i < 4; ++i) {
            context->setTexture(textures[i % 2]);
            texturedQuad(mpTools, context, sRect(10 + 20 * i, 10, 20 + 20 * i, 20), kWhite, sTexcoord(0, 0),
                         sTexcoord(2, 2));
        }
        context->setTexture(nullptr);
        context->setVertexDecl(eVertexDecl_Plain);
        triangle(context, 10, 40, 4); // a whole triangle and one vertex left over
        context->flushVertices();
        triangle(context, 50, 40, 3);
        context->flushVertices();
        triangle(context, 90, 40, 3);
    });
    expectPixels({{12, 12, kRed}, {32, 12, kBlue}, {52, 12, kRed}, {72, 12, kBlue}, {13, 43, kGreen},
                  {53, 43, kGreen}, {93, 43, kGreen}, {68, 58, kGrey, 1}, {108, 58, kGrey, 1}});
    for (Texture* texture : textures) {
        texture->release();
    }
}

// Batches of one state run together into one draw: quads of one colour each
// and a shaded quad behind them. The one-coloured ones stay solid, and the
// shaded one keeps its blend from red to blue.
TEST_F(PixelTest, OneColouredAndShadedQuadsInOneDrawKeepTheirColours)
{
    REQUIRE_GL();
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        quad(context, sRect(10, 10, 30, 30), kRed);
        context->flushVertices();
        quad(context, sRect(40, 10, 60, 30), kGreen);
        context->flushVertices();
        sColor const shaded[4] = {kRed, kBlue, kRed, kBlue};
        mpTools->drawRect(context, sRect(70, 10, 134, 30), shaded);
        quad(context, sRect(140, 10, 160, 30), kWhite);
    });
    expectPixels({{20, 20, kRed, 0}, {50, 20, kGreen, 0}, {150, 20, kWhite, 0}, {70, 20, kRed, 4},
                  {133, 20, kBlue, 4}, {102, 20, sColor(127, 0, 127, 255), 6}});
}

// A frame longer than the replay hands to GL at once: 4,800 one-pixel quads
// of one state (a red half and a blue half) reach GL in parts, and a
// half-transparent green quad at the next level still blends over pixels
// of the first part as well as of the last.
TEST_F(PixelTest, ALongFrameHandedOverInPartsBlendsInKeyOrder)
{
    REQUIRE_GL();
    int const columns = 80;
    int const count = 4800;
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        for (int i = 0; i < count; ++i) {
            int const x = 10 + i % columns;
            int const y = 10 + i / columns;
            quad(context, sRect(x, y, x + 1, y + 1), i < count / 2 ? kRed : kBlue);
        }
        windowState(context, 1);
        context->setBlendMode(eBlendMode_Alpha);
        quad(context, sRect(10, 10, 10 + columns, 10 + count / columns), sColor(0, 255, 0, 128));
    });
    u8 const kept = static_cast<u8>(255 - 128);
    expectPixels({{10, 10, sColor(kept, 128, 0, 255)},                                          // first quad
                  {10 + 4500 % columns, 10 + 4500 / columns, sColor(0, 128, kept, 255)},        // a late one
                  {10 + (count - 1) % columns, 10 + (count - 1) / columns, sColor(0, 128, kept, 255)},
                  {10 + columns, 10, kGrey, 1}});
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
    expectPixels({{10, 10, kRed}, {49, 39, kRed}, {50, 39, kGrey, 1}, {9, 10, kGrey, 1}, {10, 40, kGrey, 1},
                  {100, 50, kGreen}, {131, 81, kGreen}, {132, 81, kGrey, 1}, {131, 82, kGrey, 1}, {163, 113, kGreen},
                  {164, 113, kGrey, 1}, {163, 114, kGrey, 1}});
}

TEST_F(PixelTest, AClearFillsItsRectangleCutByTheScissor)
{
    REQUIRE_GL();
    runFrame([&](DrawContext* context) {
        windowState(context, 0, 0);
        context->clear(sRect(10, 10, 30, 30), kRed);
        windowState(context, 0, 1);
        context->setScissorRect(sRect(60, 0, kWindowWidth, kWindowHeight));
        quad(context, sRect(0, 0, 1, 1), kWhite); // a draw brings the scissor along
        windowState(context, 0, 2);
        context->setScissorRect(sRect(60, 0, kWindowWidth, kWindowHeight));
        context->clear(sRect(50, 10, 90, 30), kGreen);
    });
    expectPixels({{10, 10, kRed}, {29, 29, kRed}, {30, 29, kGrey, 1}, {29, 30, kGrey, 1}, {59, 20, kGrey, 1},
                  {60, 20, kGreen}, {89, 29, kGreen}, {90, 20, kGrey, 1}, {200, 200, kGrey, 1}});
}

TEST_F(PixelTest, AGameViewPutsTheWorldOriginAtTheWindowCentre)
{
    REQUIRE_GL();
    runFrame([&](DrawContext*) {
        mpTools->drawRect(1u << 1, sVector::Zero, sVector(sFixed(1, 16), sFixed(1, 16)), kRed);
        mpTools->drawRect(1u << 1, sVector(sFixed(-160, 16), sFixed(-120, 16)), sVector(sFixed(-159, 16), sFixed(-119, 16)),
                          kGreen);
    });
    // The projection's left top is the window's.
    expectPixels({{160, 120, kRed}, {159, 120, kGrey, 1}, {161, 120, kGrey, 1}, {160, 119, kGrey, 1},
                  {160, 121, kGrey, 1}, {0, 0, kGreen}});
}

TEST_F(PixelTest, ARenderTargetIsDrawnToAndThenSampled)
{
    REQUIRE_GL();
    Texture* target = new Texture(64, 64, true, nullptr);
    runFrame([&](DrawContext* context) {
        // Into the target: its clear comes first and sets the clip to its size.
        windowState(context, 0, 0);
        targetState(context, target, kBlue);
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
    // at the top, the target shows upside down; the window outside is untouched.
    expectPixels({{105, 160, kRed}, {115, 148, kRed}, {116, 148, kBlue}, {115, 147, kBlue}, {105, 105, kBlue},
                  {99, 105, kGrey, 1}, {10, 230, kGrey, 1}});
    target->release();
}

TEST_F(PixelTest, ATextureThatIsAlsoTheTargetIsDrawnToTheWindow)
{
    REQUIRE_GL();
    Texture* target = new Texture(64, 64, true, nullptr);
    runFrame([&](DrawContext* context) {
        windowState(context, 0, 0);
        targetState(context, target, kRed);
        context->setTexture(target);
        texturedQuad(mpTools, context, sRect(0, 0, 32, 32), kWhite, sTexcoord(0, 0), sTexcoord(32, 32));
    });
    // Reading the target unbinds it; the clip is still the target's, so the
    // quad lands in the window's bottom left 64 by 64 pixels.
    expectPixels({{10, kWindowHeight - 54, kRed}, {40, kWindowHeight - 54, kGrey, 1}});
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
    for (int i = 11; i < 29; ++i) {
        expectPixels({{i, 20, kWhite}, {i, 19, kGrey, 1}, {i, 21, kGrey, 1}});
        expectPixels({{50, i, kWhite}, {49, i, kGrey, 1}, {51, i, kGrey, 1}});
    }
    expectPixels({{9, 20, kGrey, 1}, {30, 20, kGrey, 1}, {50, 9, kGrey, 1}, {50, 30, kGrey, 1}, {70, 70, kWhite},
                  {71, 70, kGrey, 1}, {70, 71, kGrey, 1}});
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
            expectPixels({{100 + column, 100 + row, ink ? kWhite : kGrey, 1}});
        }
    }
    // Twice the size: each texel covers 2 by 2 pixels; (204, 110) is the bar.
    expectPixels({{200, 104, kWhite}, {201, 105, kWhite}, {202, 104, kGrey, 1}, {204, 110, kWhite}, {200, 103, kGrey, 1}});
}
