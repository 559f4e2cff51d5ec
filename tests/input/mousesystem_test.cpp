// MouseSystem: what it makes each frame of the mouse state that Application
// gathered from window events: position, button level and edges, wheel change.
#include "inputtest.h"

TEST_F(InputTest, MouseButtonsGiveLevelsAndOneFrameEdgesAtTheCursor)
{
    startSystems();
    MouseSystem* mouseSystem = MouseSystem::getInstance();
    frame();
    EXPECT_EQ(mouseSystem->getButtonOff(), 0xFFFFFFFFu) << "no button: every bit, of no button too";
    EXPECT_EQ(mouseSystem->getButtonTrgOn(), 0u);
    EXPECT_EQ(mouseSystem->getButtonTrgOff(), 0u);

    mouse(platform::eEventMouseDown, 200, 150, 2);
    frame();
    EXPECT_EQ(mouseSystem->getPosition(), sPoint(200, 150));
    EXPECT_EQ(mouseSystem->getButtonOn(), 2u);
    EXPECT_EQ(mouseSystem->getButtonOff(), ~2u);
    EXPECT_EQ(mouseSystem->getButtonTrgOn(), 2u);
    mouse(platform::eEventMouseDown, 200, 150, 1);
    mouse(platform::eEventMouseDragged, -30, 900, 0);
    frame();
    EXPECT_EQ(mouseSystem->getPosition(), sPoint(-30, 900));
    EXPECT_EQ(mouseSystem->getButtonOn(), 3u);
    EXPECT_EQ(mouseSystem->getButtonTrgOn(), 1u) << "only the new button";
    mouse(platform::eEventMouseUp, 10, 10, 2);
    frame();
    EXPECT_EQ(mouseSystem->getButtonTrgOn(), 0u);
    EXPECT_EQ(mouseSystem->getButtonTrgOff(), 2u);
    frame();
    EXPECT_EQ(mouseSystem->getButtonTrgOff(), 0u);
}

TEST_F(InputTest, MouseWheelReadsEachFramesChangeAndZeroWhenStill)
{
    startSystems();
    MouseSystem* mouseSystem = MouseSystem::getInstance();
    mouse(platform::eEventMouseWheelMoved, 10, 10, 0, 1, -2);
    mouse(platform::eEventMouseWheelMoved, 10, 10, 0, 1, -1);
    mouse(platform::eEventMouseWheelMoved, 10, 10, 0, 0, 4);
    frame();
    EXPECT_EQ(mouseSystem->getWheelAmount(), sPoint(4, -3));
    frame();
    EXPECT_EQ(mouseSystem->getWheelAmount(), sPoint(0, 0));
    EXPECT_EQ(mpApp->getWheelAmount(), sPoint(4, -3)) << "the accumulated amount does not fall back";
    mouse(platform::eEventMouseWheelMoved, 10, 10, 0, 1, 5);
    frame();
    EXPECT_EQ(mouseSystem->getWheelAmount(), sPoint(0, 5));
}
