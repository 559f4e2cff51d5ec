// MouseSystem: what it makes each frame of the mouse state that Application
// gathered from window events: position, button level and edges, wheel change.
#include "inputtest.h"

namespace {

class MouseSystemTest : public InputTest {
protected:
    void SetUp() override
    {
        InputTest::SetUp();
        startSystems();
        mpMouse = MouseSystem::getInstance();
        ASSERT_NE(mpMouse, nullptr);
    }
    MouseSystem* mpMouse = nullptr;
};

u32 const kAllOnes = 0xFFFFFFFFu;

} // namespace

TEST_F(MouseSystemTest, NoButtonLeavesEveryOffBitSet)
{
    EXPECT_EQ(mpMouse->getButtonOff(), kAllOnes) << "before the first frame";
    frame();
    EXPECT_EQ(mpMouse->getButtonOn(), 0u);
    EXPECT_EQ(mpMouse->getButtonOff(), kAllOnes);
    EXPECT_EQ(mpMouse->getButtonTrgOn(), 0u);
    EXPECT_EQ(mpMouse->getButtonTrgOff(), 0u);
}

TEST_F(MouseSystemTest, ButtonEdgesLastOneFrameAndLevelsFollowApplication)
{
    mouse(platform::eEventMouseDown, 300, 250, 2);
    frame();
    EXPECT_EQ(mpMouse->getButtonOn(), 2u);
    EXPECT_EQ(mpMouse->getButtonOff(), ~2u);
    EXPECT_EQ(mpMouse->getButtonTrgOn(), 2u);
    EXPECT_EQ(mpMouse->getButtonTrgOff(), 0u);

    mouse(platform::eEventMouseDown, 300, 250, 1);
    frame();
    EXPECT_EQ(mpMouse->getButtonOn(), 3u);
    EXPECT_EQ(mpMouse->getButtonTrgOn(), 1u) << "only the new button";

    mouse(platform::eEventMouseUp, 300, 250, 2);
    frame();
    EXPECT_EQ(mpMouse->getButtonOn(), 1u);
    EXPECT_EQ(mpMouse->getButtonTrgOn(), 0u);
    EXPECT_EQ(mpMouse->getButtonTrgOff(), 2u);

    mouse(platform::eEventMouseUp, 300, 250, 1);
    frame();
    EXPECT_EQ(mpMouse->getButtonOff(), kAllOnes);
    EXPECT_EQ(mpMouse->getButtonTrgOff(), 1u);
    frame();
    EXPECT_EQ(mpMouse->getButtonTrgOff(), 0u);
}

TEST_F(MouseSystemTest, ClickBetweenTwoFramesCollapses)
{
    frame();
    mouse(platform::eEventMouseDown, 300, 250, 1);
    mouse(platform::eEventMouseUp, 300, 250, 1);
    frame();
    EXPECT_EQ(mpMouse->getButtonTrgOn(), 0u);
    EXPECT_EQ(mpMouse->getButtonTrgOff(), 0u);
}

TEST_F(MouseSystemTest, PositionIsTheCursorInContentCoordinatesAtTheFrame)
{
    mouse(platform::eEventMouseMoved, 350, 220);
    EXPECT_EQ(mpMouse->getPosition(), sPoint(0, 0)) << "not before the frame";
    frame();
    EXPECT_EQ(mpMouse->getPosition(), sPoint(250, 120));
    mouse(platform::eEventMouseDragged, 50, 90);
    frame();
    EXPECT_EQ(mpMouse->getPosition(), sPoint(-50, -10)) << "a drag may leave the window";
}

TEST_F(MouseSystemTest, WheelReadsTheChangeOfEachFrameAndZeroWhenStill)
{
    mouse(platform::eEventMouseWheelMoved, 300, 250, 0, 1, -2);
    mouse(platform::eEventMouseWheelMoved, 300, 250, 0, 1, -1);
    mouse(platform::eEventMouseWheelMoved, 300, 250, 0, 0, 4);
    frame();
    EXPECT_EQ(mpMouse->getWheelAmount(), sPoint(4, -3));

    frame();
    EXPECT_EQ(mpMouse->getWheelAmount(), sPoint(0, 0));
    EXPECT_EQ(mpApp->getWheelAmount(), sPoint(4, -3)) << "the accumulated amount does not fall back";

    mouse(platform::eEventMouseWheelMoved, 300, 250, 0, 1, 5);
    frame();
    EXPECT_EQ(mpMouse->getWheelAmount(), sPoint(0, 5));
}
