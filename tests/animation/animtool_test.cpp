// The animation editor: its views (dragging primitives in the animation
// view, picking rectangles on the texture, the context menus and the path of
// a "Position" lane), driven through their messages over an animation played
// by a real AnimSequencer with a stand-in host for the tool's selection; and
// the tool itself, made for an animation, dragging a cell.
#include <gtest/gtest.h>

#include "animation/animtool.h"
#include "animation/animtoolview.h"
#include "animtest.h"
#include "resource/textureresource.h"
#include "sequencer/sequencerresource.h"
#include "tool/toolsystem.h"
#include "ui/uimenu.h"
#include "ui/uimessage.h"
#include "ui/uisystem.h"

namespace {

class StandInHost : public AnimViewHost {
public:
    AnimSequencer* getViewSequencer() const override { return mpSequencer; }
    AnimResource* getViewResource() const override { return mpResource; }
    SequencerTrack* getViewSelectTrack() const override { return mpTrack; }
    SequencerKey* getViewSelectKey() const override { return mpKey; }

    AnimSequencer* mpSequencer = nullptr;
    AnimResource* mpResource = nullptr;
    SequencerTrack* mpTrack = nullptr;
    SequencerKey* mpKey = nullptr;
};

void drag(UIBase* view, sPoint const& from, sPoint const& to)
{
    view->sendMessage(UIMouseDownMessage(from, 1));
    view->sendMessage(UIMouseMoveMessage(to));
    view->sendMessage(UIMouseUpMessage(to, 1));
}

void press(UIBase* view, unsigned int key, unsigned int combination = 0)
{
    view->sendMessage(UIKeyDownMessage(key, combination));
    view->sendMessage(UIKeyUpMessage(key, combination));
}

bool menuChecked(UIBase* view, char const* row)
{
    return view->getMenu()->isItemChecked(row);
}

void choose(UIBase* view, char const* row)
{
    UIMenu* menu = view->getMenu();
    for (unsigned int i = 0; i < menu->getItemCount(); ++i) {
        char const* name = menu->getItem(i)->getName();
        if (name != nullptr && std::string(name) == row) {
            menu->getItem(i)->occurEvent();
            return;
        }
    }
    ADD_FAILURE() << "no menu row " << row;
}

} // namespace

class AnimToolViewTest : public AnimTest {
protected:
    void SetUp() override
    {
        AnimTest::SetUp();
        mpSheet = load<TextureResource>("anim/walk_sheet");
        mpAnimation = makeAnimation();
        mpAnimation->setTexture(mpSheet);
        addTrack(mpAnimation, "cell", AnimCell::getStaticTypeInfo(), {"Position", "Size"});
        addKey(mpAnimation, "cell", "Size", 0, sSize(10, 10));
        addTrack(mpAnimation, "box", AnimCollision::getStaticTypeInfo(), {"Position", "Size"});
        addTrack(mpAnimation, "gen", AnimGenerator::getStaticTypeInfo(), {"Position"});
        runFrame(); // the sheet is loaded
        mpSequencer = new AnimSequencer();
        mpSequencer->setResource(mpAnimation);
        mHost.mpSequencer = mpSequencer;
        mHost.mpResource = mpAnimation;
        mpAnimationForm = new AnimationForm(&mHost);
        mpAnimationForm->setSize(sSize(256, 256));
        mpAnimationForm->update(0.0f);
        mpTextureForm = new TextureForm(&mHost);
        mpTextureForm->setSize(sSize(256, 256));
        mpTextureForm->update(0.0f);
    }

    void TearDown() override
    {
        delete mpAnimationForm;
        delete mpTextureForm;
        delete mpSequencer;
        AnimTest::TearDown();
    }

    void select(char const* track)
    {
        mHost.mpTrack = (track != nullptr) ? mpAnimation->findTrack(track) : nullptr;
    }
    template <typename T>
    T* object(u32 track)
    {
        return trackObject<T>(*mpSequencer, track);
    }
    AnimationView* animationView() const { return mpAnimationForm->getView(); }
    TextureView* textureView() const { return mpTextureForm->getView(); }
    // The canvas point of an animation point at the view's zoom.
    sPoint at(int x, int y) const
    {
        int const zoom = animationView()->getZoom();
        sPoint const m = animationView()->getCenter();
        return sPoint(m.x + x * zoom, m.y + y * zoom);
    }

    TextureResource* mpSheet = nullptr;
    AnimResource* mpAnimation = nullptr;
    AnimSequencer* mpSequencer = nullptr;
    StandInHost mHost;
    AnimationForm* mpAnimationForm = nullptr;
    TextureForm* mpTextureForm = nullptr;
};

TEST_F(AnimToolViewTest, DraggingMovesOnlyTheSelectedPrimitiveAndHoldsItOnTheCanvas)
{
    AnimCell* cell = object<AnimCell>(0);
    AnimCollision* box = object<AnimCollision>(1);
    AnimGenerator* generator = object<AnimGenerator>(2);
    ASSERT_NE(cell, nullptr);
    ASSERT_NE(box, nullptr);
    ASSERT_NE(generator, nullptr);

    // No track selected: nothing moves, nothing starts.
    select(nullptr);
    drag(animationView(), at(0, 0), at(40, 30));
    EXPECT_EQ(cell->getPosition(), sPoint(0, 0));
    EXPECT_EQ(box->getSize(), sSize(0, 0));
    EXPECT_EQ(generator->getPosition(), sPoint(0, 0));
    EXPECT_EQ(animationView()->getDragMode(), 0u);

    // A press outside the cell does not take it; inside it does, by the
    // amount divided by the zoom.
    select("cell");
    animationView()->setZoom(2);
    drag(animationView(), at(20, 20), at(60, 60));
    EXPECT_EQ(cell->getPosition(), sPoint(0, 0));
    drag(animationView(), at(4, -4), at(4, -4) + sPoint(41, 21));
    EXPECT_EQ(cell->getPosition(), sPoint(20, 10));

    // Held between -512 and 511 while dragging, both ways.
    animationView()->setZoom(1);
    drag(animationView(), at(20, 10), at(20, 10) + sPoint(900, -900));
    EXPECT_EQ(cell->getPosition(), sPoint(511, -512));
    // The arrow keys go past the limit.
    press(animationView(), eAnimViewKey_Right);
    press(animationView(), eAnimViewKey_Up);
    EXPECT_EQ(cell->getPosition(), sPoint(512, -513));
    // With Command the arrows are left to the tool's marker shortcuts.
    press(animationView(), eAnimViewKey_Right, 4);
    EXPECT_EQ(cell->getPosition(), sPoint(512, -513));

    // A generator is taken by its handle, 16 pixels each way.
    select("gen");
    drag(animationView(), at(15, -15), at(15, -15) + sPoint(-30, 40));
    EXPECT_EQ(generator->getPosition(), sPoint(-30, 40));
    drag(animationView(), at(-30, 40) + sPoint(17, 0), at(0, 0));
    EXPECT_EQ(generator->getPosition(), sPoint(-30, 40));
    EXPECT_EQ(cell->getPosition(), sPoint(512, -513));
}

TEST_F(AnimToolViewTest, ACollisionDrawnEitherWayIsOneRectangleAndShiftArrowsMoveOneEdge)
{
    AnimCollision* box = object<AnimCollision>(1);
    ASSERT_NE(box, nullptr);
    select("box");
    struct sCase {
        sPoint mFrom, mTo;
        sPoint mPosition;
        sSize mSize;
    };
    sCase const cases[] = {
        {sPoint(10, 10), sPoint(30, 50), sPoint(20, 30), sSize(20, 40)},
        {sPoint(-5, -7), sPoint(0, 0), sPoint(-3, -4), sSize(5, 7)}, // the middle rounded down
        {sPoint(-500, -2), sPoint(500, 3), sPoint(0, 0), sSize(1000, 5)},
    };
    for (sCase const& c : cases) {
        drag(animationView(), at(c.mFrom.x, c.mFrom.y), at(c.mTo.x, c.mTo.y));
        sPoint const forward = box->getPosition();
        sSize const forwardSize = box->getSize();
        drag(animationView(), at(c.mTo.x, c.mTo.y), at(c.mFrom.x, c.mFrom.y));
        EXPECT_EQ(box->getPosition(), forward);
        EXPECT_EQ(box->getSize(), forwardSize);
        EXPECT_EQ(forward, c.mPosition) << c.mFrom.x << "," << c.mFrom.y;
        EXPECT_EQ(forwardSize, c.mSize) << c.mFrom.x << "," << c.mFrom.y;
    }

    // With Shift the width and height change by their far edge; the near
    // edge, position - size / 2, stays where it was.
    box->setPosition(sPoint(0, 0));
    box->setSize(sSize(4, 4));
    press(animationView(), eAnimViewKey_Left, 1);
    EXPECT_EQ(box->getSize(), sSize(3, 4));
    EXPECT_EQ(box->getPosition(), sPoint(-1, 0));
    press(animationView(), eAnimViewKey_Right, 1);
    press(animationView(), eAnimViewKey_Right, 1);
    press(animationView(), eAnimViewKey_Down, 1);
    EXPECT_EQ(box->getSize(), sSize(5, 5));
    EXPECT_EQ(box->getPosition(), sPoint(0, 0));
    // Without Shift a collision moves.
    press(animationView(), eAnimViewKey_Down);
    EXPECT_EQ(box->getPosition(), sPoint(0, 1));
    EXPECT_EQ(box->getSize(), sSize(5, 5));
}

TEST_F(AnimToolViewTest, PickingIsTrueToTheTextureAtZoomOneOnlyAndArrowsNudgeTheRectangle)
{
    TextureView* view = textureView();
    mpTextureForm->update(0.0f);
    ASSERT_EQ(view->getTexture(), mpSheet);
    ASSERT_NE(mpSheet->getTexture(), nullptr);
    AnimCell* cell = object<AnimCell>(0);
    AnimGenerator* generator = object<AnimGenerator>(2);

    // Nothing is picked for a collision.
    select("box");
    drag(view, sPoint(8, 8), sPoint(24, 16));
    EXPECT_EQ(view->getDragMode(), 0u);
    EXPECT_EQ(object<AnimCollision>(1)->getSize(), sSize(0, 0));

    // The texels (8, 4) to (24, 12), picked from either corner.
    select("cell");
    drag(view, sPoint(24, 12), sPoint(8, 4));
    EXPECT_EQ(cell->getUV(), sTexcoord(8, 4));
    EXPECT_EQ(cell->getSize(), sSize(16, 8));
    // The same texels at zoom 2 give twice the values.
    press(view, eAnimViewKey_ZoomIn);
    EXPECT_EQ(view->getZoom(), 2);
    drag(view, sPoint(16, 8), sPoint(48, 24));
    EXPECT_EQ(cell->getUV(), sTexcoord(16, 8));
    EXPECT_EQ(cell->getSize(), sSize(32, 16));

    // A generator takes the pick too.
    select("gen");
    drag(view, sPoint(2, 2), sPoint(6, 10));
    EXPECT_EQ(generator->mUV, sTexcoord(2, 2));
    EXPECT_EQ(generator->getSize(), sSize(4, 8));

    // Arrows move the corner, with Shift the size; neither below 0.
    select("cell");
    struct sCase {
        unsigned int mKey, mShift;
        sTexcoord mUV;
        sSize mSize;
    };
    sCase const cases[] = {
        {eAnimViewKey_Left, 0, sTexcoord(15, 8), sSize(32, 16)},
        {eAnimViewKey_Down, 0, sTexcoord(15, 9), sSize(32, 16)},
        {eAnimViewKey_Right, 1, sTexcoord(15, 9), sSize(33, 16)},
        {eAnimViewKey_Up, 1, sTexcoord(15, 9), sSize(33, 15)},
    };
    for (sCase const& c : cases) {
        press(view, c.mKey, c.mShift);
        EXPECT_EQ(cell->getUV(), c.mUV) << c.mKey << " " << c.mShift;
        EXPECT_EQ(cell->getSize(), c.mSize) << c.mKey << " " << c.mShift;
    }
    cell->setUV(sTexcoord(0, 0));
    press(view, eAnimViewKey_Left);
    EXPECT_EQ(cell->getUV(), sTexcoord(0, 0));

    // Zoom stays within 1 to 8.
    for (int i = 0; i < 10; ++i) {
        press(view, eAnimViewKey_ZoomIn);
    }
    EXPECT_EQ(view->getZoom(), 8);
    for (int i = 0; i < 10; ++i) {
        press(view, eAnimViewKey_ZoomOut);
    }
    EXPECT_EQ(view->getZoom(), 1);
}

TEST_F(AnimToolViewTest, EachContextMenuChangesOnlyItsOwnView)
{
    AnimationView* animation = animationView();
    TextureView* texture = textureView();
    EXPECT_TRUE(animation->isGrid());
    EXPECT_TRUE(animation->isCurve());
    EXPECT_TRUE(texture->isGrid());
    EXPECT_TRUE(menuChecked(animation, "BGBlack"));

    choose(animation, "Grid");
    EXPECT_FALSE(animation->isGrid());
    EXPECT_TRUE(animation->isCurve());
    EXPECT_TRUE(texture->isGrid());
    EXPECT_TRUE(menuChecked(texture, "Grid"));

    choose(texture, "Grid");
    EXPECT_FALSE(texture->isGrid());
    EXPECT_FALSE(animation->isGrid());

    choose(animation, "Curve");
    EXPECT_FALSE(animation->isCurve());

    // The backgrounds are one radio group.
    choose(animation, "BGBlue");
    EXPECT_EQ(animation->getBackground(), sColor::Blue);
    EXPECT_TRUE(menuChecked(animation, "BGBlue"));
    EXPECT_FALSE(menuChecked(animation, "BGBlack"));
    choose(animation, "BGWhite");
    EXPECT_EQ(animation->getBackground(), sColor::White);
    EXPECT_FALSE(menuChecked(animation, "BGBlue"));
    EXPECT_EQ(texture->getBackground(), sColor::Black);
}

TEST_F(AnimToolViewTest, TheHermitePathStartsAndEndsOnItsKeysAndBendsByTheKeyBefore)
{
    typedef SequencerResource::eInterpolateType Mode;
    Mode const hermite = SequencerResource::eInterpolateType_Hermite;
    Mode const linear = SequencerResource::eInterpolateType_Linear;
    addKey(mpAnimation, "cell", "Position", 0, sPoint(0, 0), hermite);
    addKey(mpAnimation, "cell", "Position", 10, sPoint(100, 50), hermite);
    SequencerLane const* lane = mpAnimation->findLane("cell", "Position");
    ASSERT_NE(lane, nullptr);
    sPoint points[AnimationView::kHermiteSteps + 1];

    // Two keys: no tangents, the ease in and out of 3 d t^2 - 2 d t^3. The
    // last point falls a pixel short of the key: t, summed from 0.1 ten
    // times, ends a little past 1, where the ease has turned back.
    AnimationView::makeHermitePoints(lane, 0, sPoint(512, 512), 1, points);
    sPoint const alone[] = {sPoint(512, 512), sPoint(514, 513), sPoint(522, 517), sPoint(533, 522),
                            sPoint(547, 529), sPoint(562, 537), sPoint(576, 544), sPoint(590, 551),
                            sPoint(601, 556), sPoint(609, 560), sPoint(611, 561)};
    for (int i = 0; i <= AnimationView::kHermiteSteps; ++i) {
        EXPECT_EQ(points[i], alone[i]) << i;
    }
    // Zoom scales the offsets, which are cut to whole pixels first.
    AnimationView::makeHermitePoints(lane, 0, sPoint(100, 0), 2, points);
    EXPECT_EQ(points[0], sPoint(100, 0));
    EXPECT_EQ(points[1], sPoint(104, 2));
    EXPECT_EQ(points[10], sPoint(298, 98));

    // A linear key before the span gives it the start tangent p(k0) - p(k-):
    // along x, d = 10 and t0 = 10, so offset = -10 t^3 + 10 t^2 + 10 t.
    AnimResource* line = makeAnimation();
    addTrack(line, "cell", AnimCell::getStaticTypeInfo(), {"Position"});
    addKey(line, "cell", "Position", 0, sPoint(-10, 0), linear);
    addKey(line, "cell", "Position", 5, sPoint(0, 0), hermite);
    addKey(line, "cell", "Position", 10, sPoint(10, 0), hermite);
    SequencerLane const* bent = line->findLane("cell", "Position");
    AnimationView::makeHermitePoints(bent, 1, sPoint(0, 0), 1, points);
    int const x[] = {0, 1, 2, 3, 4, 6, 7, 8, 9, 9, 10};
    for (int i = 0; i <= AnimationView::kHermiteSteps; ++i) {
        EXPECT_EQ(points[i], sPoint(x[i], 0)) << i;
    }
}

class AnimToolTest : public AnimTest {
protected:
    void SetUp() override
    {
        AnimTest::SetUp();
        mpTools = ToolSystem::create();
        mpUI = UISystem::create();
    }
    void TearDown() override
    {
        mpUI->removeAllWindow();
        mpUI->destroy();
        mpTools->destroy();
        AnimTest::TearDown();
    }

    ToolSystem* mpTools = nullptr;
    UISystem* mpUI = nullptr;
};

// Keying the dragged cell, playing it and seeing it on screen are driven
// through the real program by the animation tool window scenario.
TEST_F(AnimToolTest, AnAnimationOpensInTheAnimToolWhoseDragKeysNothing)
{
    TextureResource* sheet = load<TextureResource>("anim/walk_sheet");
    AnimResource* animation = makeAnimation(60);
    animation->setTexture(sheet);
    addTrack(animation, "cell", AnimCell::getStaticTypeInfo(), {"Position", "Size"});
    addKey(animation, "cell", "Position", 0, sPoint(0, 0), SequencerResource::eInterpolateType_Linear);
    addKey(animation, "cell", "Size", 0, sSize(16, 16));
    runFrame();

    // The editor that the resource window opens for an animation.
    ToolBase* made = mpTools->createTool(AnimResource::getStaticTypeInfo());
    ASSERT_NE(made, nullptr);
    ASSERT_EQ(made->getTypeInfo(), AnimTool::getStaticTypeInfo());
    AnimTool* tool = static_cast<AnimTool*>(made);
    tool->setManagedResource(animation);
    mpUI->addWindow(tool);
    mpUI->preprocess();
    tool->update(0.0f);
    tool->update(0.0f);
    AnimSequencer* sequencer = tool->getAnimSequencer();
    ASSERT_NE(sequencer, nullptr);
    EXPECT_EQ(sequencer->getTexture(), sheet);

    // At frame 10, select the lane and drag the cell by (30, -20).
    tool->setCurrentFrame(10);
    tool->setSelectLane(animation->findLane("cell", "Position"));
    ASSERT_EQ(tool->getSelectTrack(), animation->findTrack("cell"));
    AnimationView* view = tool->getAnimationForm()->getView();
    sPoint const m = view->getCenter();
    drag(view, m, m + sPoint(30, -20));
    AnimCell* cell = trackObject<AnimCell>(*sequencer, 0);
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(cell->getPosition(), sPoint(30, -20));
    EXPECT_EQ(animation->findKey("cell", "Position", 10), nullptr); // the drag keyed nothing
}
