// Handles in a game view and the texture widget, driven through UISystem: a
// control is hit and drawn in its view's coordinates; the position handle's
// centre square moves freely and wins over the arrows, an arrow moves along
// its axis by the view's scale; the direction handle turns with 0 up and
// clockwise; the texture widget's zoom stops at 4096 pixels and at its
// minimum size, and its menu checks follow the modes.
#include <cmath>

#include "reflection/property.h"
#include "render/renderobject.h"
#include "render/viewsystem.h"
#include "ui/uigameviewcontrol.h"
#include "ui/uimenu.h"
#include "ui/uimessage.h"
#include "ui/uitexture.h"
#include "unit/coordinateunit.h"
#include "uitest.h"

using namespace uitest;

namespace {

sVector sEdited;

// A 20 by 20 handle around its position, in its view's coordinates.
class GameControl : public UIGameViewControl {
public:
    explicit GameControl(std::vector<std::string>* log)
        : UIGameViewControl(new ReferenceProperty<sVector>("Position", &sEdited)), mpLog(log)
    {
    }
    UIBase* intersect(sPoint const& point, sRect const&) override
    {
        sRect const box(getPosition().x - 10, getPosition().y - 10, getPosition().x + 10, getPosition().y + 10);
        return box.intersect(point) ? this : nullptr;
    }
    void eventMouseDown(sPoint const& p, unsigned int button) override { note("MouseDown", p, button); }
    void eventMouseUp(sPoint const& p, unsigned int button) override { note("MouseUp", p, button); }
    void draw(UIPainter*) override { ++mDrawn; }
    void note(char const* event, sPoint const& p, unsigned int button)
    {
        mpLog->push_back(std::string("G:") + event + "(" + std::to_string(p.x) + "," + std::to_string(p.y) + "/" +
                         std::to_string(button) + ")");
    }
    std::vector<std::string>* mpLog;
    int mDrawn = 0;
};

} // namespace

class GameViewControlTest : public UITest {
protected:
    // View 1 shows twice the world around the origin in the window's top
    // left 512 by 256 pixels: world (0, 0) is at window (256, 128).
    void SetUp() override
    {
        UITest::SetUp();
        ViewSystem* views = ViewSystem::getInstance();
        mViewport = views->getViewport(1);
        mProjection = views->getProjection(1);
        views->setViewport(1, sRect(0, 0, 512, 256));
        views->setProjection(1, sRect(-512, -256, 512, 256));
    }
    void TearDown() override
    {
        ViewSystem::getInstance()->setViewport(1, mViewport);
        ViewSystem::getInstance()->setProjection(1, mProjection);
        UITest::TearDown();
    }
    // Press at window (x, y), move by (dx, dy) window pixels, release.
    void drag(int x, int y, int dx, int dy)
    {
        advance(1000);
        press(x, y);
        frame();
        move(x + dx, y + dy);
        frame();
        release(x + dx, y + dy);
        frame();
    }
    sRect mViewport;
    sRect mProjection;
};

TEST_F(GameViewControlTest, AControlIsHitAndDrawnInItsViewsCoordinates)
{
    GameControl* control = new GameControl(&mLog);
    mpUI->addGameViewControl(control);
    click(261, 133); // world (10, 10)
    EXPECT_EQ(take("MouseDown MouseUp"), "G:MouseDown(10,10/1) G:MouseUp(10,10/1)");
    EXPECT_GT(control->mDrawn, 0) << "drawn in the game view's pass";
    control->setView(1u << 2); // another view only
    int const drawn = control->mDrawn;
    frame();
    EXPECT_EQ(control->mDrawn, drawn);
    mpUI->removeGameViewControl(control);
}

TEST_F(GameViewControlTest, ThePositionHandleMovesFreelyByItsSquareAndAlongAnAxisByAnArrow)
{
    sVector position(sFixed(0, 16), sFixed(0, 16));
    UIPositionControl* control = new UIPositionControl(new ReferenceProperty<sVector>("Position", &position));
    control->setView(1u << 1);
    mpUI->addGameViewControl(control);
    struct {
        char const* what;
        int relX, relY; // the press, in world units from the handle
        int dx, dy;     // the drag, in window pixels
        int worldX, worldY;
    } const cases[] = {
        // (2, -4) lies in the square and in the up arrow: the square wins.
        {"square over the arrow", 2, -4, 20, 10, 40, 20},
        {"right arrow", 30, 0, 20, 10, 80, 20},
        {"up arrow", 0, -30, 20, -10, 80, 0},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.what);
        int const x = static_cast<int>(position.x), y = static_cast<int>(position.y);
        control->setPosition(sPoint(x, y));
        frame();
        drag((x + c.relX + 512) / 2, (y + c.relY + 256) / 2, c.dx, c.dy);
        EXPECT_EQ(static_cast<int>(position.x), c.worldX);
        EXPECT_EQ(static_cast<int>(position.y), c.worldY);
        EXPECT_EQ(control->getDragMode(), UIPositionControl::eDragMode_None);
    }
    // Beside every handle: nothing is hit, nothing moves.
    drag(256 + 100, 128 + 50, 20, 20);
    EXPECT_EQ(static_cast<int>(position.x), 80);
    mpUI->removeGameViewControl(control);
    mpUI->removeGameViewControl(nullptr);
}

TEST_F(GameViewControlTest, TheDirectionHandlePointsUpAtZeroAndTurnsClockwise)
{
    sFixed angle(0, 16);
    UIDirectionControl* control = new UIDirectionControl(new ReferenceProperty<sFixed>("Direction", &angle));
    mpUI->addGameViewControl(control);
    frame();
    // At 0 the handle runs up from the origin: world (0, -60) is on it,
    // (60, 0) is not.
    drag(256 + 60 / 2, 128, 0, 0);
    EXPECT_FALSE(control->isTurning());
    EXPECT_EQ(static_cast<int>(angle), 0);
    struct {
        int dx, dy; // where the pointer goes, from the origin, in window pixels
        int degrees;
    } const turns[] = {{40, 0, 90}, {0, 40, 180}, {-40, 0, 270}, {0, -40, 0}, {30, -30, 45}};
    for (auto const& turn : turns) {
        SCOPED_TRACE(turn.degrees);
        advance(1000);
        // Grab the handle wherever it points now.
        float const radians = (static_cast<float>(angle) - 90.0f) * 3.1415925f / 180.0f;
        int const x = 256 + static_cast<int>(30.0f * cosf(radians));
        int const y = 128 + static_cast<int>(30.0f * sinf(radians));
        press(x, y);
        frame();
        EXPECT_TRUE(control->isTurning());
        move(256 + turn.dx, 128 + turn.dy);
        frame();
        release(256 + turn.dx, 128 + turn.dy);
        frame();
        EXPECT_NEAR(static_cast<float>(angle), static_cast<float>(turn.degrees), 0.01f);
    }
    mpUI->removeGameViewControl(control);
}

TEST_F(UITest, TheTextureZoomStopsAt4096AndAtItsMinimumSize)
{
    struct {
        unsigned int side;
        int ups, downs;
        unsigned int largest, smallest;
    } const cases[] = {
        {16, 300, 10, 4096, 16},   // 16 by 16 never shrinks below 1:1
        {1024, 10, 100, 4096, 16}, // three steps up; down to a 64th
        {1000, 10, 100, 4000, 16}, // a fifth step would pass 4096
    };
    Probe* window = openWindow("w", sRect(10, 10, 200, 200));
    for (auto const& c : cases) {
        SCOPED_TRACE(c.side);
        UITexture* widget = new UITexture();
        window->add(widget);
        Texture* texture = new Texture(c.side, c.side, false, nullptr);
        widget->setTexture(texture);
        texture->release();
        EXPECT_EQ(widget->getSize(), sSize(c.side, c.side));
        for (int i = 0; i < c.ups; ++i) {
            widget->sendMessage(UIMouseWheelMessage(sPoint(0, 1)));
        }
        EXPECT_EQ(widget->getSize().width, c.largest);
        widget->setTexture(texture);
        for (int i = 0; i < c.downs; ++i) {
            widget->sendMessage(UIMouseWheelMessage(sPoint(0, -1)));
        }
        EXPECT_EQ(widget->getSize().width, c.smallest);
        widget->remove();
        delete widget;
    }
    // The menu's radio checks follow the modes; the default is Linear, RGBA.
    UITexture widget;
    UIMenu* filtering = widget.getMenu()->findSubMenu("Filtering");
    UIMenu* colors = widget.getMenu()->findSubMenu("ColorMode");
    EXPECT_TRUE(filtering->isItemChecked("Linear"));
    EXPECT_TRUE(colors->isItemChecked("RGBA"));
    widget.evPoint();
    widget.evRed();
    EXPECT_EQ(widget.getFilteringMode(), UITexture::eFilteringMode_Point);
    EXPECT_TRUE(filtering->isItemChecked("Point"));
    EXPECT_FALSE(filtering->isItemChecked("Linear"));
    EXPECT_TRUE(colors->isItemChecked("Red"));
    EXPECT_FALSE(colors->isItemChecked("RGBA"));
}

TEST_F(GameViewControlTest, ASelectedCoordinateUnitShowsItsHandlesAndDeselectionLeavesTheDirectionHandle)
{
    CoordinateUnit* unit = new CoordinateUnit();
    unit->setPosition(sVector(sFixed(10.75f), sFixed(3.5f)));
    unit->update(1.0f);
    EXPECT_EQ(unit->getPositionControl(), nullptr);

    // Selected: both handles at the next update, once, cut to whole pixels.
    unit->setSelect(true);
    unit->update(1.0f);
    UIPositionControl* position = unit->getPositionControl();
    UIDirectionControl* direction = unit->getDirectionControl();
    ASSERT_NE(position, nullptr);
    ASSERT_NE(direction, nullptr);
    unit->update(1.0f);
    EXPECT_EQ(unit->getPositionControl(), position);
    EXPECT_EQ(unit->getDirectionControl(), direction);
    EXPECT_EQ(position->getPosition(), sPoint(10, 3));
    EXPECT_EQ(direction->getPosition(), sPoint(10, 3));
    EXPECT_EQ(position->getView(), unit->getView());

    // Deselected: the position handle goes; the direction handle stays in
    // the view and still turns the unit.
    unit->setSelect(false);
    unit->update(1.0f);
    EXPECT_EQ(unit->getPositionControl(), nullptr);
    EXPECT_EQ(unit->getDirectionControl(), nullptr);
    frame();
    drag((10 + 512) / 2, (3 - 60 + 256) / 2, 40, 30);
    EXPECT_NEAR(static_cast<float>(unit->getOrientation()), 90.0f, 1.0f);
    // A unit that dies takes the handle it left behind with it.
    delete unit;
    drag((10 + 512) / 2, (3 - 60 + 256) / 2, 40, 30);
    EXPECT_TRUE(mpUI->validate());
}
