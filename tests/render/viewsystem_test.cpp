// ViewSystem: the seven views as they start, the game views' pass with its
// grid and the tools' recorded drawing, and the window's bounds event.
#include "app/application.h"
#include "platform/window.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "renderfixture.h"

using namespace rendertest;

namespace {

using ViewSystemTest = RenderTest;
using ViewSystemDeathTest = RenderTest;

u32 const kLastLevelKey = 4095u << 16;

sColor const kRed = sColor::Red;

class SecondViewSystem : public ViewSystem {
};

} // namespace

TEST_F(ViewSystemTest, GameViewsShowTheWorldOriginAtTheirCentre)
{
    sRect const window(0, 0, kWindowWidth, kWindowHeight);
    for (u32 view = 0; view < ViewSystem::kViewNum; ++view) {
        SCOPED_TRACE(testing::Message() << "view " << view);
        EXPECT_EQ(mpViews->getViewport(view), window);
        bool const game = view >= 1 && view <= 4;
        EXPECT_EQ(mpViews->getProjection(view), game ? sRect(-160, -120, 160, 120) : window);
        EXPECT_EQ(mpViews->getEnable(view), view == 0 || view == 1 || view == 5 || view == 6);
        EXPECT_FALSE(mpViews->getGrid(view));
        EXPECT_EQ(mpViews->getView(view).getIndex(), view);
    }
    EXPECT_STREQ(mpViews->getView(1).getName().c_str(), "GAME0");
    EXPECT_STREQ(mpViews->getView(4).getName().c_str(), "GAME3");
    EXPECT_TRUE(mpViews->getView(5).getName().empty());
}

TEST_F(ViewSystemTest, AViewPublishesItsFiveProperties)
{
    ViewSystem::View& view = mpViews->getView(2);
    EXPECT_STREQ(view.getTypeInfo()->getName(), "ViewSystem::View");
    PropertyList list;
    view.makePropertyList(list);
    ASSERT_EQ(list.size(), 5u);
    char const* const names[] = {"Name", "Enable", "Grid", "Viewport", "Projection"};
    unsigned int const types[] = {ePropertyType_String, ePropertyType_Bool, ePropertyType_Bool, ePropertyType_Rect,
                                  ePropertyType_Rect};
    u32 i = 0;
    for (PropertyList::Iterator it = list.begin(); it != list.end(); ++it, ++i) {
        EXPECT_STREQ((*it)->getName(), names[i]);
        EXPECT_EQ((*it)->getType(), types[i]) << names[i];
    }
    *list.find("Grid", ePropertyType_Bool) = true;
    *list.find("Viewport", ePropertyType_Rect) = sRect(1, 2, 30, 40);
    EXPECT_TRUE(mpViews->getGrid(2));
    EXPECT_EQ(mpViews->getViewport(2), sRect(1, 2, 30, 40));
    EXPECT_STREQ(static_cast<AutoString>(*list.find("Name", ePropertyType_String)).c_str(), "GAME1");
}

TEST_F(ViewSystemTest, GridOverA1024By768ProjectionIsOneBatchOf108Vertices)
{
    mpViews->setProjection(1, sRect(-512, -384, 512, 384));
    mpViews->setGrid(1, true);
    runFrame([](DrawContext*) {});
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 1u);
    sDrawCommand const* grid = draws[0];
    EXPECT_EQ(grid->getVertexCount(), (31u + 23u) * 2u);
    EXPECT_EQ(grid->mKey, (1u << 28) | kLastLevelKey);
    EXPECT_EQ(grid->getPrimitiveType(), static_cast<u32>(ePrimitiveType_Line));
    EXPECT_EQ(grid->getBlendMode(), static_cast<u32>(eBlendMode_Opaque));
    EXPECT_EQ(grid->mProjection, sRect(-512, -384, 512, 384));
    sOutputVertex const* vertex = static_cast<sOutputVertex const*>(grid->mpVertices);
    // The first vertical line, top to bottom, and the last horizontal one.
    EXPECT_EQ(vertex[0].x, -480.0f + 0.5f);
    EXPECT_EQ(vertex[0].y, -384.0f + 0.5f);
    EXPECT_EQ(vertex[1].y, 384.0f + 0.5f);
    EXPECT_EQ(vertex[107].x, 512.0f + 0.5f);
    EXPECT_EQ(vertex[107].y, 352.0f + 0.5f);
    EXPECT_EQ(vertex[0].mColor, static_cast<unsigned int>(sColor::Black));
}

TEST_F(ViewSystemTest, AGridOfAnOddSizeStaysWithinItsCount)
{
    // 1000 wide: the count allows 30 columns although 31 would fit.
    mpViews->setProjection(1, sRect(0, 0, 1000, 64));
    mpViews->setGrid(1, true);
    runFrame([](DrawContext*) {});
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 1u);
    ASSERT_EQ(draws[0]->getVertexCount(), (30u + 1u) * 2u);
    sOutputVertex const* vertex = static_cast<sOutputVertex const*>(draws[0]->mpVertices);
    EXPECT_EQ(vertex[58].x, 960.5f) << "the last of the 30 columns";
    EXPECT_EQ(vertex[60].y, 32.5f) << "and the one row";
}

TEST_F(ViewSystemTest, DisabledGameViewsDrawNothing)
{
    mpViews->setGrid(1, true);
    mpViews->setGrid(2, true);
    mpViews->setEnable(1, false);
    runFrame([&](DrawContext*) { mpTools->drawRect(0xFFu, sVector::Zero, sVector(sFixed(4, 16), sFixed(4, 16)), kRed); });
    EXPECT_TRUE(sortedDraws().empty());
    mpViews->setEnable(2, true);
    runFrame([](DrawContext*) {});
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0]->mKey >> 28, 2u);
}

TEST_F(ViewSystemTest, RecordedDrawingIsPlayedIntoEachViewOfItsMask)
{
    mpViews->setEnable(3, true);
    runFrame([&](DrawContext*) {
        mpTools->drawRect((1u << 1) | (1u << 3) | (1u << 5), sVector::Zero, sVector(sFixed(8, 16), sFixed(8, 16)), kRed);
        mpTools->drawRect(0u, sVector::Zero, sVector(sFixed(8, 16), sFixed(8, 16)), kRed);
        EXPECT_EQ(mpTools->getCommandBufferUsedSize(), 2u * sizeof(ToolSystem::sDrawRectFCommand))
            << "a record of mask 0 takes its room all the same";
    });
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 2u) << "views 1 and 3; view 5 is not a game view";
    EXPECT_EQ(draws[0]->mKey, (1u << 28) | kLastLevelKey);
    EXPECT_EQ(draws[1]->mKey, (3u << 28) | kLastLevelKey);
    EXPECT_EQ(draws[0]->getBlendMode(), static_cast<u32>(eBlendMode_Alpha));
    EXPECT_EQ(draws[0]->mProjection, mpViews->getProjection(1));
    EXPECT_EQ(draws[1]->mViewport, mpViews->getViewport(3));
}

TEST_F(ViewSystemTest, BoundsEventResizesTheInterfaceAndOverlayViews)
{
    if (hasWindow()) {
        GTEST_SKIP() << "the window is real: its size follows the window manager";
    }
    Application* application = Application::getInstance();
    platform::Window* window = application->getWindowHandle();
    ASSERT_TRUE(platform::installEventHandler(window, &Application::eventHandler, application));
    mpViews->setProjection(2, sRect(1, 2, 3, 4));
    platform::resizeHeadlessWindow(window, 400, 300);
    EXPECT_EQ(application->getWindowWidth(), 400u);
    for (u32 view : {0u, 5u, 6u}) {
        EXPECT_EQ(mpViews->getViewport(view), sRect(0, 0, 400, 300)) << "view " << view;
        EXPECT_EQ(mpViews->getProjection(view), sRect(0, 0, 400, 300)) << "view " << view;
    }
    EXPECT_EQ(mpViews->getProjection(2), sRect(1, 2, 3, 4)) << "game views keep theirs";
    EXPECT_EQ(mpRender->getWindowRect(), sRect(0, 0, 400, 300));
    platform::resizeHeadlessWindow(window, kWindowWidth, kWindowHeight);
}

TEST_F(ViewSystemDeathTest, ASecondInstanceIsFatalWithTheJobSystemText)
{
    EXPECT_EQ(ViewSystem::create(), mpViews);
    EXPECT_DEATH(new SecondViewSystem(), "JobSystem already instanced\\.");
}
