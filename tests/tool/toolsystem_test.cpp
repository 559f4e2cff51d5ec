// ToolSystem's drawing: the font bitmap's layout, the glyph loop and its
// clip, the deferred records and their full buffer, and the immediate forms
// with their frame window.
#include <string>

#include "../render/renderfixture.h"

using namespace rendertest;

namespace {

using ToolSystemTest = RenderTest;
using ToolSystemDeathTest = RenderTest;

typedef sOutputTexturedVertex sOut;

// The five-column pattern of a glyph's cell row (six with the spacing column),
// as the font script draws it; the bitmap is stored bottom-up.
std::string glyphRow(char character, u32 row, u32 columns = 5)
{
    u32 const index = static_cast<u32>(character) - 32;
    u32 const y = (index / 16) * 12 + row;
    std::string pattern;
    for (u32 x = (index % 16) * 6; pattern.size() < columns; ++x) {
        pattern += (ToolSystem::mFontData[(127 - y) * 16 + x / 8] & (0x80u >> (x % 8))) != 0 ? '#' : '.';
    }
    return pattern;
}

// Vertices as "x,y/u,v" joined by spaces.
std::string vertices(sOut const* v, u32 count)
{
    std::string text;
    for (u32 i = 0; i < count; ++i) {
        text += (i ? " " : "") + std::to_string(static_cast<int>(v[i].x)) + "," + std::to_string(static_cast<int>(v[i].y)) +
                "/" + std::to_string(v[i].u) + "," + std::to_string(v[i].v);
    }
    return text;
}

class SecondToolSystem : public ToolSystem {
};

} // namespace

TEST(ToolSystemFont, GlyphsSitInSixByTwelveCellsFromTheSpace)
{
    EXPECT_EQ(glyphRow('H', 2) + glyphRow('H', 5) + glyphRow('H', 8), "#...#######...#") << "cap line 2, baseline 8";
    EXPECT_EQ(glyphRow('g', 10), ".###.") << "descenders to cell row 10";
    EXPECT_EQ(glyphRow('0', 4), "#..##");
    for (char character = ' '; character <= '~'; ++character) {
        std::string cell;
        for (u32 row = 0; row < 12; ++row) {
            cell += glyphRow(character, row, 6);
            EXPECT_EQ(cell.back(), '.') << "the sixth column is spacing: '" << character << "'";
        }
        EXPECT_EQ(cell.substr(0, 6) + cell.substr(66), "............") << "rows 0 and 11 blank: " << character;
        EXPECT_EQ(cell.find('#') != std::string::npos, character != ' ') << "'" << character << "'";
    }
}

TEST_F(ToolSystemTest, GlyphLoopWritesOneQuadPerCharacterWithItsCellWithinTheClip)
{
    sRect const clip(10, 20, 25, 32);
    std::string const longText(600, 'x');
    runFrame([&](DrawContext* context) {
        windowState(context, 0);
        context->setVertexDecl(eVertexDecl_Textured);
        mpTools->drawString(context, sPoint(10, 20), "A~", 6, sColor::Yellow, sRect::Max);
        context->setDrawLevel(0, 1);
        mpTools->drawString(context, sPoint(100, 20), "!", 12, sColor::Yellow, sRect::Max);
        context->setDrawLevel(0, 2);
        mpTools->drawString(context, sPoint(9, 20), "A", 6, sColor::White, clip);  // left of the clip
        mpTools->drawString(context, sPoint(10, 21), "A", 6, sColor::White, clip); // 12 high does not fit
        mpTools->drawString(context, sPoint(20, 20), "A", 6, sColor::White, clip); // 26 is past the right
        mpTools->drawString(context, sPoint(10, 20), "", 6, sColor::White, clip);
        mpTools->drawString(context, sPoint(10, 20), nullptr, 6, sColor::White, clip);
        mpTools->drawString(context, sPoint(10, 20), "ABCD", 6, sColor::White, clip);
        context->setDrawLevel(0, 3);
        mpTools->drawString(context, sPoint(0, 0), "\x01\xC8", 6, sColor::White, sRect::Max); // outside the font
        context->setDrawLevel(0, 4);
        mpTools->drawString(context, sPoint(0, 0), longText.c_str(), 1, sColor::White, sRect::Max);
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_GE(draws.size(), 5u);
    EXPECT_EQ(draws[0]->mpTexture, mpTools->getFontTexture());
    ASSERT_EQ(draws[0]->getVertexCount(), 8u);
    // 'A' is cell 33 (column 1, row 2), '~' cell 94 (column 14, row 5), one cell
    // to the right. Left top, right top, left bottom, right bottom.
    EXPECT_EQ(vertices(static_cast<sOut const*>(draws[0]->mpVertices), 8),
              "10,20/6,24 16,20/12,24 10,32/6,36 16,32/12,36 16,20/84,60 22,20/90,60 16,32/84,72 22,32/90,72");
    EXPECT_EQ(colorText(static_cast<sOut const*>(draws[0]->mpVertices)->mColor), "(255,255,0,255)");
    // Size 12: a cell of 12 by 24 pixels over the same 6 by 12 texels.
    EXPECT_EQ(vertices(static_cast<sOut const*>(draws[1]->mpVertices), 4),
              "100,20/6,0 112,20/12,0 100,44/6,12 112,44/12,12");
    // The first cell must fit the clip; the rest stop at its right edge.
    ASSERT_EQ(draws[2]->getVertexCount(), 16u) << "only \"ABCD\" allocated, all four characters";
    sOut const* v = static_cast<sOut const*>(draws[2]->mpVertices);
    EXPECT_EQ(v[7].x, 22.0f) << "the second cell ends at 22, inside";
    for (u32 i = 8; i < 16; ++i) {
        // The third cell would end at 28: it and the fourth collapse, unseen.
        EXPECT_EQ(v[i].x, v[8].x) << i;
        EXPECT_EQ(v[i].y, v[8].y) << i;
        EXPECT_EQ(v[i].mColor >> 24, 0u) << "alpha 0: " << colorText(v[i].mColor);
    }
    v = static_cast<sOut const*>(draws[3]->mpVertices);
    EXPECT_EQ(vertices(v, 1) + " " + vertices(v + 4, 1), "0,0/0,0 6,0/0,0") << "blank cells";
    u32 count = 0;
    for (size_t i = 4; i < draws.size(); ++i) {
        count += draws[i]->getVertexCount();
    }
    EXPECT_EQ(count, 600u * 4u) << "a long text splits over batches";
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
    EXPECT_EQ(drawSummary(), "v1 lfff s0 L4 b1, v1 lfff s0 T6 b1, v1 lfff s0 T6t b1, v1 lfff s0 Q8 b1, "
                             "v1 lfff s0 Q8t b1, v1 lfff s0 Q8t b1");
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 6u);
    EXPECT_EQ(draws[2]->mpTexture, texture);
    EXPECT_EQ(draws[5]->mpTexture, mpTools->getFontTexture());
    EXPECT_EQ(colorText(static_cast<sOutputVertex const*>(draws[0]->mpVertices)[3].mColor), "(0,255,0,255)");
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
    runFrame([&](DrawContext*) { EXPECT_EQ(mpTools->getCommandBufferUsedSize(), 0u) << "emptied at the frame's start"; });
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
    // The overlay: view 6, level 0, alpha blending, nearest texels of the font.
    EXPECT_EQ(drawSummary(), "v5 l3 s2 Q4 b1, v5 l3 s4 Q8t b1 n, v6 l0 s0 Q28t b1 n");
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 3u);
    EXPECT_EQ(draws[0]->mScissor, sRect(10, 10, 50, 50)) << "the view's viewport cut with the clip";
    EXPECT_EQ(draws[1]->mpTexture, mpTools->getFontTexture());
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
