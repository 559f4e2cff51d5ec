// UIPainter: text cut and placed by the rectangle and the alignment, the
// blend mode restored behind text, frames drawn on the edge and one pixel
// inside, all moved to the widget's place; read back from the recorded draws.
#include <functional>
#include <string>

#include "tool/toolsystem.h"
#include "ui/uipainter.h"
#include "uitest.h"

using namespace uitest;

namespace {

// A window at (100, 50) that paints what the test gives it.
class Canvas : public UIWindow {
public:
    explicit Canvas(std::function<void(UIPainter*)> paint) : mPaint(paint)
    {
        setPosition(sPoint(100, 50));
        setSize(sSize(500, 400));
    }
    void eventPaint(UIPainter* painter) override { mPaint(painter); }
    std::function<void(UIPainter*)> mPaint;
};

// The characters the font quads show, and where the first one stands:
// "x,y:TEXT"; collapsed cells past the clip (alpha 0) are left out.
std::string shownText()
{
    std::string text;
    sPoint first(-1, -1);
    for (sDrawCommand const* draw : recordedDraws()) {
        if (!draw->isTextured()) {
            continue;
        }
        sOutputTexturedVertex const* v = static_cast<sOutputTexturedVertex const*>(draw->mpVertices);
        for (u32 i = 0; i < draw->getVertexCount(); i += 4) {
            if ((v[i].mColor >> 24) == 0) {
                continue;
            }
            if (text.empty()) {
                first = sPoint(static_cast<int>(v[i].x), static_cast<int>(v[i].y));
            }
            text += static_cast<char>(32 + (v[i].v / 12) * 16 + v[i].u / 6);
        }
    }
    return text.empty() ? "" : std::to_string(first.x) + "," + std::to_string(first.y) + ":" + text;
}

} // namespace

TEST_F(UITest, TextIsCutToTheCellsThatFitAndPlacedByTheAlignment)
{
    std::string const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123";
    std::string const longText(300, 'x');
    struct Case {
        sRect rect;
        char const* text;
        int alignment;
        char const* shown;
    };
    Case const cases[] = {
        {sRect(0, 0, 60, 11), "ABC", eAlignment_LeftTop, ""}, // one pixel too low
        {sRect(0, 0, 5, 12), "ABC", eAlignment_LeftTop, ""},  // too narrow
        {sRect(0, 0, 7, 12), "ABC", eAlignment_LeftTop, "100,50:A"}, // two cells counted, one fits
        {sRect(10, 0, 70, 40), alphabet.c_str(), eAlignment_LeftTop, "110,50:ABCDEFGHIJ"},
        {sRect(10, 0, 70, 40), alphabet.c_str(), eAlignment_CenterMiddle, "110,64:KLMNOPQRST"},
        {sRect(10, 0, 70, 40), alphabet.c_str(), eAlignment_RightBottom, "110,78:UVWXYZ0123"},
        {sRect(10, 0, 100, 40), "AB", eAlignment_CenterTop, "149,50:AB"},
        {sRect(10, 0, 100, 40), "AB", eAlignment_RightMiddle, "188,64:AB"},
        {sRect(0, 0, 120, 12), longText.c_str(), eAlignment_LeftTop, nullptr}, // 20 of 300, no assertion
        {sRect(0, 0, 60, 40), "AB", 9, ""}, // out of range: nothing to show
    };
    for (Case const& c : cases) {
        Canvas* canvas = new Canvas([&c](UIPainter* painter) {
            painter->drawString(c.rect, c.text, sColor::White, static_cast<eAlignment>(c.alignment));
        });
        mpUI->addWindow(canvas);
        frame();
        frame();
        std::string const shown = shownText();
        if (c.shown != nullptr) {
            EXPECT_EQ(shown, c.shown) << c.text << " in " << c.rect.getWidth() << "x" << c.rect.getHeight();
        } else {
            EXPECT_EQ(shown, "100,50:" + std::string(20, 'x'));
        }
        canvas->close();
        frame();
    }
    // 300 characters with room for 267 cells: more than the text buffer holds.
    EXPECT_DEATH(
        {
            mpUI->addWindow(new Canvas([&longText](UIPainter* painter) {
                painter->drawString(sRect(0, 0, 1600, 12), longText.c_str(), sColor::White, eAlignment_LeftTop);
            }));
            frame();
            frame();
        },
        "Too long string.");
}

TEST_F(UITest, TextLeavesTheBlendModeAndFramesSitOnTheEdgeAndInside)
{
    mpUI->addWindow(new Canvas([](UIPainter* painter) {
        painter->setBlendMode(eBlendMode_Opaque);
        painter->drawString(sPoint(0, 0), "A", sColor::White);
        painter->drawRect(sRect(0, 20, 10, 30), sColor::Red);
        painter->drawFrame(sRect(10, 20, 50, 60), sColor::Green);
        painter->drawConvexRect(sRect(0, 0, 8, 8));
    }));
    frame();
    frame();
    std::string summary;
    for (sDrawCommand const* draw : recordedDraws()) {
        char item[32];
        snprintf(item, sizeof(item), "%s%c%u b%u", summary.empty() ? "" : " ", "PLTQ"[draw->getPrimitiveType()],
                 draw->getVertexCount(), draw->getBlendMode());
        summary += item;
    }
    EXPECT_EQ(summary, "Q4 b1 Q4 b0 L16 b0") << "text blends, the rest keeps the widget's mode";
    std::string lines;
    UISystem const* ui = UISystem::getInstance();
    for (sDrawCommand const* draw : recordedDraws()) {
        if (draw->getPrimitiveType() != ePrimitiveType_Line) {
            continue;
        }
        sOutputVertex const* v = static_cast<sOutputVertex const*>(draw->mpVertices);
        for (u32 i = 0; i < draw->getVertexCount(); i += 2) {
            char item[64];
            char const shade = v[i].mColor == static_cast<unsigned int>(ui->mHighLightColor)  ? 'h'
                               : v[i].mColor == static_cast<unsigned int>(ui->mDarkLightColor) ? 'd'
                                                                                                : 'g';
            snprintf(item, sizeof(item), "%s%c%d,%d-%d,%d", lines.empty() ? "" : " ", shade, static_cast<int>(v[i].x),
                     static_cast<int>(v[i].y), static_cast<int>(v[i + 1].x), static_cast<int>(v[i + 1].y));
            lines += item;
        }
    }
    EXPECT_EQ(lines, "g110,70-150,70 g110,70-110,110 g110,109-150,109 g149,70-149,110 "
                     "h100,50-108,50 h100,50-100,58 d100,57-108,57 d107,50-107,58");
}
