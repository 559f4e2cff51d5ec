// ToolSystem's drawing: the font bitmap's layout, the glyph loop and its
// clip, the deferred records and their full buffer, and the immediate forms
// with their frame window.
#include <cstring>
#include <string>

#include "renderfixture.h"

using namespace rendertest;

namespace {

using ToolSystemTest = RenderTest;
using ToolSystemDeathTest = RenderTest;

typedef sOutputTexturedVertex sOut;

// The bit of sheet pixel (x, y), with y from the top; the array is bottom-up.
bool fontBit(u32 x, u32 y)
{
    u8 const byte = ToolSystem::mFontData[(127 - y) * 16 + x / 8];
    return (byte & (0x80u >> (x % 8))) != 0;
}

// The five-column pattern of a glyph's cell row, as the font script draws it.
std::string glyphRow(char character, u32 row)
{
    u32 const index = static_cast<u32>(character) - 32;
    u32 const left = (index % 16) * 6;
    u32 const top = (index / 16) * 12;
    std::string pattern;
    for (u32 x = 0; x < 5; ++x) {
        pattern += fontBit(left + x, top + row) ? '#' : '.';
    }
    return pattern;
}

class SecondToolSystem : public ToolSystem {
};

} // namespace

TEST(ToolSystemFont, GlyphsSitInSixByTwelveCellsFromTheSpace)
{
    EXPECT_EQ(glyphRow('H', 2), "#...#") << "cap line on cell row 2";
    EXPECT_EQ(glyphRow('H', 5), "#####");
    EXPECT_EQ(glyphRow('H', 8), "#...#") << "baseline on cell row 8";
    EXPECT_EQ(glyphRow('g', 10), ".###.") << "descenders to cell row 10";
    EXPECT_EQ(glyphRow('0', 4), "#..##");
    for (char character = ' '; character <= '~'; ++character) {
        u32 const index = static_cast<u32>(character) - 32;
        u32 const left = (index % 16) * 6;
        u32 const top = (index / 16) * 12;
        bool inked = false;
        for (u32 y = 0; y < 12; ++y) {
            EXPECT_FALSE(fontBit(left + 5, top + y)) << "the sixth column is spacing: '" << character << "'";
            for (u32 x = 0; x < 5; ++x) {
                inked = inked || fontBit(left + x, top + y);
            }
        }
        EXPECT_FALSE(glyphRow(character, 0) != "....." || glyphRow(character, 11) != ".....") << character;
        EXPECT_EQ(inked, character != ' ') << "'" << character << "'";
    }
}

TEST_F(ToolSystemTest, GlyphLoopWritesOneQuadPerCharacterWithItsCell)
{
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setVertexDecl(eVertexDecl_Textured);
        mpTools->drawString(context, sPoint(10, 20), "A~", 6, sColor::Yellow, sRect::Max);
        context->setDrawLevel(0, 1);
        mpTools->drawString(context, sPoint(100, 20), "!", 12, sColor::Yellow, sRect::Max);
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0]->mpTexture, mpTools->getFontTexture());
    EXPECT_EQ(draws[0]->getPrimitiveType(), static_cast<u32>(ePrimitiveType_Quad));
    ASSERT_EQ(draws[0]->getVertexCount(), 8u);
    sOut const* v = static_cast<sOut const*>(draws[0]->mpVertices);
    // 'A' is cell 33: column 1, row 2. Left top, right top, left bottom, right bottom.
    EXPECT_EQ(v[0].x, 10.0f);
    EXPECT_EQ(v[0].y, 20.0f);
    EXPECT_EQ(v[0].u, 6);
    EXPECT_EQ(v[0].v, 24);
    EXPECT_EQ(v[1].x, 16.0f);
    EXPECT_EQ(v[1].u, 12);
    EXPECT_EQ(v[2].y, 32.0f);
    EXPECT_EQ(v[2].v, 36);
    EXPECT_EQ(v[3].u, 12);
    EXPECT_EQ(v[3].v, 36);
    EXPECT_EQ(v[0].mColor, static_cast<unsigned int>(sColor::Yellow));
    // '~' is cell 94: column 14, row 5, one cell to the right.
    EXPECT_EQ(v[4].x, 16.0f);
    EXPECT_EQ(v[4].u, 84);
    EXPECT_EQ(v[4].v, 60);
    // Size 12: a cell of 12 by 24 pixels over the same 6 by 12 texels.
    sOut const* big = static_cast<sOut const*>(draws[1]->mpVertices);
    EXPECT_EQ(big[3].x - big[0].x, 12.0f);
    EXPECT_EQ(big[3].y - big[0].y, 24.0f);
    EXPECT_EQ(big[3].u - big[0].u, 6);
    EXPECT_EQ(big[3].v - big[0].v, 12);
}

TEST_F(ToolSystemTest, TheFirstCellMustFitTheClipAndTheRestStopsAtItsRightEdge)
{
    sRect const clip(10, 20, 25, 32);
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setVertexDecl(eVertexDecl_Textured);
        mpTools->drawString(context, sPoint(9, 20), "A", 6, sColor::White, clip);   // left of the clip
        mpTools->drawString(context, sPoint(10, 21), "A", 6, sColor::White, clip);  // 12 high does not fit
        mpTools->drawString(context, sPoint(20, 20), "A", 6, sColor::White, clip);  // 26 is past the right
        mpTools->drawString(context, sPoint(10, 20), "", 6, sColor::White, clip);
        mpTools->drawString(context, sPoint(10, 20), nullptr, 6, sColor::White, clip);
        context->setDrawLevel(0, 1);
        mpTools->drawString(context, sPoint(10, 20), "ABCD", 6, sColor::White, clip);
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 1u);
    ASSERT_EQ(draws[0]->getVertexCount(), 16u) << "four characters allocated";
    sOut const* v = static_cast<sOut const*>(draws[0]->mpVertices);
    EXPECT_EQ(v[4].x, 16.0f) << "the second cell ends at 22, inside";
    EXPECT_EQ(v[7].x, 22.0f);
    for (u32 i = 8; i < 16; ++i) {
        // The third cell would end at 28: it and the fourth collapse, unseen.
        EXPECT_EQ(v[i].x, v[8].x);
        EXPECT_EQ(v[i].y, v[8].y);
        EXPECT_EQ(v[i].mColor >> 24, 0u) << "alpha 0";
    }
}

TEST_F(ToolSystemTest, CharactersOutsideTheFontAreBlankAndLongTextsSplit)
{
    std::string const longText(600, 'x');
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setVertexDecl(eVertexDecl_Textured);
        mpTools->drawString(context, sPoint(0, 0), "\x01\xC8", 6, sColor::White, sRect::Max);
        context->setDrawLevel(0, 1);
        mpTools->drawString(context, sPoint(0, 0), longText.c_str(), 1, sColor::White, sRect::Max);
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_GE(draws.size(), 2u);
    sOut const* v = static_cast<sOut const*>(draws[0]->mpVertices);
    EXPECT_EQ(v[0].u, 0);
    EXPECT_EQ(v[0].v, 0);
    EXPECT_EQ(v[4].u, 0);
    u32 vertices = 0;
    for (size_t i = 1; i < draws.size(); ++i) {
        vertices += draws[i]->getVertexCount();
    }
    EXPECT_EQ(vertices, 600u * 4u);
}

TEST_F(ToolSystemTest, EveryRecordKindIsReplayedWithItsDeclarationAndTexture)
{
    Texture* texture = new Texture(16, 16, false, nullptr);
    sVector const a(sFixed(1, 16), sFixed(2, 16));
    sVector const b(sFixed(5, 16), sFixed(9, 16));
    sVector const triangle[3] = {a, b, sVector(sFixed(3, 16), sFixed(7, 16))};
    sColor const colors[4] = {sColor::Red, sColor::Green, sColor::Blue, sColor::White};
    sTexcoord const texels[3] = {sTexcoord(0, 0), sTexcoord(16, 0), sTexcoord(0, 16)};
    u32 const mask = 1u << 1;
    runFrame([&](DrawContext*) {
        mpTools->drawLine(mask, a, b, sColor::Red);
        mpTools->drawLine(mask, a, b, sColor::Red, sColor::Green);
        mpTools->drawTriangle(mask, triangle, sColor::Red);
        mpTools->drawTriangle(mask, triangle, colors);
        mpTools->drawTriangle(mask, triangle, sColor::Red, texture, texels);
        mpTools->drawTriangle(mask, triangle, colors, texture, texels);
        mpTools->drawRect(mask, a, b, sColor::Red);
        mpTools->drawRect(mask, a, b, colors);
        mpTools->drawRect(mask, a, b, sColor::Red, texture, sTexcoord(0, 0), sTexcoord(16, 16));
        mpTools->drawRect(mask, a, b, colors, texture, sTexcoord(0, 0), sTexcoord(16, 16));
        mpTools->drawString(mask, a, "Hi", 6, sColor::White);
    });
    // Equal keys in one context: one batch per change of primitive, declaration or texture.
    std::vector<sDrawCommand const*> draws = sortedDraws();
    u32 const expected[][3] = {
        // primitive, textured, vertices
        {ePrimitiveType_Line, 0, 4},     {ePrimitiveType_Triangle, 0, 6}, {ePrimitiveType_Triangle, 1, 6},
        {ePrimitiveType_Quad, 0, 8},     {ePrimitiveType_Quad, 1, 8},     {ePrimitiveType_Quad, 1, 8},
    };
    ASSERT_EQ(draws.size(), 6u);
    for (size_t i = 0; i < 6; ++i) {
        SCOPED_TRACE(testing::Message() << "batch " << i);
        EXPECT_EQ(draws[i]->getPrimitiveType(), expected[i][0]);
        EXPECT_EQ(draws[i]->isTextured(), expected[i][1] != 0);
        EXPECT_EQ(draws[i]->getVertexCount(), expected[i][2]);
    }
    EXPECT_EQ(draws[2]->mpTexture, texture);
    EXPECT_EQ(draws[5]->mpTexture, mpTools->getFontTexture());
    sOutputVertex const* gradient = static_cast<sOutputVertex const*>(draws[0]->mpVertices);
    EXPECT_EQ(gradient[3].mColor, static_cast<unsigned int>(sColor::Green));
    texture->release();
}

TEST_F(ToolSystemTest, AFullRecordBufferDropsRecordsWithoutAWord)
{
    u32 const capacity = ToolSystem::kCommandBufferSize / sizeof(ToolSystem::sDrawRectFCommand);
    runFrame([&](DrawContext*) {
        for (u32 i = 0; i < capacity + 100; ++i) {
            mpTools->drawRect(0u, sVector::Zero, sVector::Zero, sColor::Red);
        }
        EXPECT_EQ(mpTools->getCommandBufferUsedSize(), capacity * sizeof(ToolSystem::sDrawRectFCommand));
        mpTools->drawString(2u, sVector::Zero, "lost", 6, sColor::White);
    });
    EXPECT_TRUE(sortedDraws().empty());
    runFrame([&](DrawContext*) {
        EXPECT_EQ(mpTools->getCommandBufferUsedSize(), 0u) << "emptied at the frame's start";
    });
}

TEST_F(ToolSystemTest, ImmediateFormsDrawInTheViewOfTheirBlock)
{
    mpRender->preprocess();
    mpTools->preprocess();
    ToolSystem::Context block = {5, 3, 2, sRect(10, 10, 50, 50), eBlendMode_Alpha, eTextureFiltering_Nearest, nullptr};
    sColor const colors[4] = {sColor::Red, sColor::Red, sColor::Red, sColor::Red};
    mpTools->drawRect(block, sVector::Zero, sVector(sFixed(4, 16), sFixed(4, 16)), colors);
    block.mDrawSubLevel = 4;
    mpTools->drawString(block, sVector::Zero, "ok", 6, sColor::White);
    mpTools->drawString(sPoint(0, 0), "Frame 1", 6, sColor::White);
    mpTools->postprocess();
    mpRender->postprocess();
    mpRender->executeCommand();
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 3u);
    EXPECT_EQ(draws[0]->mKey, (5u << 28) | (3u << 16) | 2u);
    EXPECT_FALSE(draws[0]->isTextured());
    EXPECT_EQ(draws[0]->mScissor, sRect(10, 10, 50, 50)) << "the view's viewport cut with the clip";
    EXPECT_EQ(draws[1]->mKey, (5u << 28) | (3u << 16) | 4u);
    EXPECT_EQ(draws[1]->mpTexture, mpTools->getFontTexture());
    EXPECT_EQ(draws[1]->getTextureFiltering(), static_cast<u32>(eTextureFiltering_Nearest));
    // The overlay: view 6, level 0, alpha blending, nearest texels of the font.
    EXPECT_EQ(draws[2]->mKey, 6u << 28);
    EXPECT_EQ(draws[2]->getBlendMode(), static_cast<u32>(eBlendMode_Alpha));
    EXPECT_EQ(draws[2]->getTextureFiltering(), static_cast<u32>(eTextureFiltering_Nearest));
    EXPECT_EQ(draws[2]->getVertexCount(), 7u * 4u);
}

TEST_F(ToolSystemDeathTest, DrawingOutsideTheFrameAndASecondInstanceAreFatal)
{
    EXPECT_DEATH(mpTools->drawString(sPoint(0, 0), "x", 6, sColor::White), "Can't draw this period\\.");
    ToolSystem::Context block = {0, 0, 0, sRect::Max, eBlendMode_Alpha, eTextureFiltering_Linear, nullptr};
    EXPECT_DEATH(mpTools->drawLine(block, sVector::Zero, sVector::Zero, sColor::Red, sColor::Red),
                 "Can't draw this period\\.");
    EXPECT_EQ(ToolSystem::create(), mpTools);
    EXPECT_DEATH(new SecondToolSystem(), "ToolSystem already instanced\\.");
}
