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

class SecondViewSystem : public ViewSystem {
};

} // namespace

TEST_F(ViewSystemTest, ViewsStartWithTheWindowAndPublishTheirProperties)
{
    sRect const window(0, 0, kWindowWidth, kWindowHeight);
    for (u32 view = 0; view < ViewSystem::kViewNum; ++view) {
        SCOPED_TRACE(testing::Message() << "view " << view);
        EXPECT_EQ(mpViews->getViewport(view), window);
        bool const game = view >= 1 && view <= 4;
        EXPECT_EQ(mpViews->getProjection(view), game ? sRect(-160, -120, 160, 120) : window);
        EXPECT_EQ(mpViews->getEnable(view), view == 0 || view == 1 || view == 5 || view == 6);
        EXPECT_FALSE(mpViews->getGrid(view));
        EXPECT_EQ(mpViews->getView(view).getName().empty(), !game);
    }
    ViewSystem::View& view = mpViews->getView(2);
    EXPECT_EQ(TypeInfo::find("ViewSystem::View"), nullptr) << "no record: class dialogs must not offer a view";
    PropertyList list;
    view.makePropertyList(list);
    std::string names;
    for (PropertyList::Iterator it = list.begin(); it != list.end(); ++it) {
        names += std::string((*it)->getName()) + " ";
    }
    EXPECT_EQ(names, "Name Enable Grid Viewport Projection ");
    *list.find("Grid", ePropertyType_Bool) = true;
    *list.find("Viewport", ePropertyType_Rect) = sRect(1, 2, 30, 40);
    EXPECT_TRUE(mpViews->getGrid(2));
    EXPECT_EQ(mpViews->getViewport(2), sRect(1, 2, 30, 40));
    EXPECT_STREQ(static_cast<AutoString>(*list.find("Name", ePropertyType_String)).c_str(), "GAME1");
}

TEST_F(ViewSystemTest, TheGridIsOneBatchOfLinesWithinItsCount)
{
    mpViews->setProjection(1, sRect(-512, -384, 512, 384));
    mpViews->setGrid(1, true);
    runFrame([](DrawContext*) {});
    EXPECT_EQ(drawSummary(), "v1 lfff s0 L108 b0");
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 1u);
    EXPECT_EQ(draws[0]->mProjection, sRect(-512, -384, 512, 384));
    sOutputVertex const* vertex = static_cast<sOutputVertex const*>(draws[0]->mpVertices);
    // The first vertical line, top to bottom, and the last horizontal one.
    EXPECT_EQ(vertex[0].x, -480.0f + 0.5f);
    EXPECT_EQ(vertex[0].y, -384.0f + 0.5f);
    EXPECT_EQ(vertex[1].y, 384.0f + 0.5f);
    EXPECT_EQ(vertex[107].x, 512.0f + 0.5f);
    EXPECT_EQ(vertex[107].y, 352.0f + 0.5f);
    EXPECT_EQ(colorText(vertex[0].mColor), "(0,0,0,255)");
    // 1000 wide: the count allows 30 columns although 31 would fit.
    mpViews->setProjection(1, sRect(0, 0, 1000, 64));
    runFrame([](DrawContext*) {});
    draws = sortedDraws();
    ASSERT_EQ(draws.size(), 1u);
    ASSERT_EQ(draws[0]->getVertexCount(), (30u + 1u) * 2u);
    vertex = static_cast<sOutputVertex const*>(draws[0]->mpVertices);
    EXPECT_EQ(vertex[58].x, 960.5f) << "the last of the 30 columns";
    EXPECT_EQ(vertex[60].y, 32.5f) << "and the one row";
}

TEST_F(ViewSystemTest, RecordedDrawingIsPlayedIntoEachEnabledGameViewOfItsMask)
{
    sVector const corner(sFixed(8, 16), sFixed(8, 16));
    mpViews->setGrid(1, true);
    mpViews->setGrid(2, true);
    mpViews->setEnable(1, false);
    runFrame([&](DrawContext*) { mpTools->drawRect(0xFFu, sVector::Zero, corner, sColor::Red); });
    EXPECT_TRUE(sortedDraws().empty()) << "disabled game views draw nothing";
    mpViews->setGrid(1, false);
    mpViews->setGrid(2, false);
    mpViews->setEnable(1, true);
    mpViews->setEnable(3, true);
    runFrame([&](DrawContext*) {
        mpTools->drawRect((1u << 1) | (1u << 3) | (1u << 5), sVector::Zero, corner, sColor::Red);
        mpTools->drawRect(0u, sVector::Zero, corner, sColor::Red);
        EXPECT_EQ(mpTools->getCommandBufferUsedSize(), 2u * sizeof(ToolSystem::sDrawRectFCommand))
            << "a record of mask 0 takes its room all the same";
    });
    // Views 1 and 3; view 5 is not a game view.
    EXPECT_EQ(drawSummary(), "v1 lfff s0 Q4 b1, v3 lfff s0 Q4 b1");
    std::vector<sDrawCommand const*> draws = sortedDraws();
    ASSERT_EQ(draws.size(), 2u);
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
