// What units put on the screen: quads drawn by units in GAME0 land at their
// world positions through the view's projection, and the picture is the same
// whatever the number of job threads. Needs a window with GL; skips without.
#include <GL/gl.h>

#include <cstring>
#include <vector>

#include "render/drawcontext.h"
#include "unit/unitbase.h"
#include "unitfixture.h"

using namespace unittest;

namespace {

int const kHalf = 6; // half the side of a quad, in world units

class QuadUnit : public UnitBase {
public:
    QuadUnit(int x, int y, sColor color) : mX(x), mY(y), mColor(color) {}
    void draw(DrawContext* context) const override
    {
        context->setDrawLevel(1, 0);
        context->setVertexDecl(eVertexDecl_Plain);
        context->setBlendMode(eBlendMode_Opaque);
        DrawContext::sVertex* vertex = static_cast<DrawContext::sVertex*>(context->allocateVertices(ePrimitiveType_Quad, 4));
        int const xs[4] = {mX - kHalf, mX + kHalf, mX - kHalf, mX + kHalf};
        int const ys[4] = {mY - kHalf, mY - kHalf, mY + kHalf, mY + kHalf};
        for (int i = 0; i < 4; ++i) {
            vertex[i].mPosition = sVector(sFixed(xs[i], 16), sFixed(ys[i], 16));
            vertex[i].mColor = mColor;
        }
    }

    int mX;
    int mY;
    sColor mColor;
};

using UnitPixelTest = UnitTest;

std::vector<sColor> readWindow()
{
    std::vector<sColor> pixels(static_cast<size_t>(kWindowWidth * kWindowHeight));
    glReadBuffer(GL_BACK);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, kWindowWidth, kWindowHeight, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

} // namespace

TEST_F(UnitPixelTest, QuadsAppearAtTheirWorldPositionsWithAnyNumberOfThreads)
{
    if (!hasWindow()) {
        GTEST_SKIP() << "no display: pixel tests need a window";
    }
    ASSERT_TRUE(mpRender->hasContext());
    // A grid of 15 by 11 quads over the world rectangle (-160, -120)-(160, 120).
    std::vector<QuadUnit*> units;
    for (int row = 0; row < 11; ++row) {
        for (int column = 0; column < 15; ++column) {
            sColor const color(static_cast<u8>(40 + 12 * column), static_cast<u8>(40 + 18 * row), 200, 255);
            units.push_back(new QuadUnit(-140 + 20 * column, -100 + 20 * row, color));
            mpUnits->addUnit(units.back());
        }
    }
    std::vector<sColor> pictures[3];
    u32 const threads[3] = {1, 4, JobSystem::kJobThreadMax};
    for (int i = 0; i < 3; ++i) {
        mpJobs->setJobThreadNum(threads[i]);
        runFrame();
        pictures[i] = readWindow();
    }
    for (QuadUnit const* unit : units) {
        // World (x, y) is window pixel (x + 160, y + 120); GL's rows run upwards.
        for (int dy : {-kHalf, kHalf - 1}) {
            for (int dx : {-kHalf, kHalf - 1}) {
                int const x = unit->mX + dx + kWindowWidth / 2;
                int const y = unit->mY + dy + kWindowHeight / 2;
                sColor const pixel = pictures[0][static_cast<size_t>((kWindowHeight - 1 - y) * kWindowWidth + x)];
                ASSERT_TRUE(pixel.r == unit->mColor.r && pixel.g == unit->mColor.g && pixel.b == unit->mColor.b)
                    << "at (" << x << ", " << y << ")";
            }
        }
    }
    // The gaps between quads keep the clear colour.
    sColor const gap = pictures[0][static_cast<size_t>((kWindowHeight - 1 - 30) * kWindowWidth + 30)];
    EXPECT_NE(gap.b, 200);
    size_t const bytes = pictures[0].size() * sizeof(sColor);
    EXPECT_TRUE(memcmp(pictures[0].data(), pictures[1].data(), bytes) == 0 &&
                memcmp(pictures[0].data(), pictures[2].data(), bytes) == 0)
        << "the picture depends on the threads";
}
