// Animation units through the unit system: choosing and restarting
// animations, the draw and collision trees over the played objects (nested
// animations included), what is drawn without a texture or when the view
// misses the origin, particles as quads, and, with a display, the walk
// sample's frames on screen with one job thread and with all of them.
#include <cstring>
#include <string>
#include <vector>

#include "../render/renderfixture.h"
#include "animtest.h"
#include "foundation/utils.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "resource/textureresource.h"

namespace {

std::vector<sBBTreeElement const*> elements(sBBTreeNode const& node)
{
    std::vector<sBBTreeElement const*> list;
    for (sBBTreeElement const* element = node.mpFirstElement; element != nullptr; element = element->mpNext) {
        list.push_back(element);
    }
    return list;
}

std::vector<sBBTreeNode const*> children(sBBTreeNode const& node)
{
    std::vector<sBBTreeNode const*> list;
    for (sBBTreeNode const* child = node.mpFirstNode; child != nullptr; child = child->mpNext) {
        list.push_back(child);
    }
    return list;
}

sVector at(int x, int y)
{
    return sVector(sFixed(x, 16), sFixed(y, 16));
}

} // namespace

TEST_F(AnimTest, AUnitChoosesAnimationsByIndexAndPlaysTheCurrentOne)
{
    AnimationListIntermediate* list = load<AnimationListIntermediate>("anim/character");
    ASSERT_NE(list, nullptr);
    AnimationUnit* unit = addUnit(list);
    EXPECT_EQ(unit->getCurrentAnimation(), 0xFFFFFFFFu);
    runFrame();
    EXPECT_EQ(unit->getCurrentFrame(), 65535u);
    EXPECT_TRUE(recordedQuads().empty()); // nothing chosen, nothing drawn

    unit->setCurrentAnimation(1); // an empty index
    unit->setCurrentAnimation(64);
    EXPECT_EQ(unit->getCurrentAnimation(), 0xFFFFFFFFu);
    unit->setCurrentAnimation(3);
    EXPECT_EQ(unit->getCurrentFrame(), 0u);
    for (int i = 0; i < 5; ++i) {
        runFrame();
    }
    EXPECT_EQ(unit->getCurrentFrame(), 5u);
    unit->setCurrentAnimation(3); // the current one: not restarted
    EXPECT_EQ(unit->getCurrentFrame(), 5u);

    // Through its property, as a timeline or a form would.
    {
        PropertyList properties;
        unit->makePropertyList(properties);
        properties.find(Utils::hash("CurrentAnimation"), ePropertyType_U32)->setByType<u32>(0, 0);
    }
    EXPECT_EQ(unit->getCurrentAnimation(), 0u);
    EXPECT_EQ(unit->getCurrentFrame(), 0u);
    unit->setCurrentAnimation(3); // back: from its first frame again
    EXPECT_EQ(unit->getCurrentFrame(), 0u);
    for (int i = 0; i < 50; ++i) {
        runFrame();
    }
    EXPECT_EQ(unit->getCurrentFrame(), 39u); // the end frame stays
    unit->setCurrentFrame(20);
    runFrame();
    EXPECT_EQ(unit->getCurrentFrame(), 21u);
}

TEST_F(AnimTest, TheTreesHoldTheBoxesOfTheCellsCollisionsAndNestedAnimations)
{
    AnimationListIntermediate* list = load<AnimationListIntermediate>("anim/character");
    ASSERT_NE(list, nullptr);
    AnimationUnit* unit = addUnit(list, 40, 30);
    unit->setCurrentAnimation(3);
    runFrame();

    // The walk: a collision, a cell and a generator.
    std::vector<sBBTreeElement const*> drawn = elements(unit->getDrawTree());
    std::vector<sBBTreeElement const*> hits = elements(unit->getCollisionTree());
    ASSERT_EQ(drawn.size(), 2u);
    ASSERT_EQ(hits.size(), 1u);
    AnimSequencer const* walk = unit->getCurrentSequencer();
    EXPECT_EQ(drawn[0]->mKind, 1u);
    EXPECT_EQ(drawn[0]->mpUserData, walk->getTrackArray()[1].mpObject);
    EXPECT_EQ(drawn[1]->mKind, 3u);
    EXPECT_EQ(hits[0]->mKind, 2u);
    EXPECT_EQ(hits[0]->mpUserData, walk->getTrackArray()[0].mpObject);
    // The collision's box went onto the first draw element, and the cell's
    // box, written after it, replaced it there.
    EXPECT_EQ(drawn[0]->mOBB.mCenter, at(40, 30));
    EXPECT_EQ(drawn[0]->mOBB.mExtent, at(8, 8));
    EXPECT_EQ(drawn[0]->mAABB, sAABB(at(32, 22), at(48, 38)));
    EXPECT_EQ(drawn[1]->mOBB.mCenter, at(40, 30)); // the generator's zero box, placed
    EXPECT_EQ(hits[0]->mOBB.mExtent, sVector::Zero); // never written
    EXPECT_EQ(unit->getDrawTree().mAABB, sAABB::Zero);

    // The unit moves: the cell's box follows at the next update.
    unit->setPosition(at(-10, 5));
    runFrame();
    EXPECT_EQ(drawn[0]->mOBB.mCenter, at(-10, 5));
    EXPECT_EQ(drawn[0]->mAABB, sAABB(at(-18, -3), at(-2, 13)));

    // Idle nests blink 3 pixels up: a child node in each tree.
    unit->setCurrentAnimation(0);
    runFrame();
    std::vector<sBBTreeNode const*> drawChildren = children(unit->getDrawTree());
    std::vector<sBBTreeNode const*> hitChildren = children(unit->getCollisionTree());
    ASSERT_EQ(drawChildren.size(), 1u);
    ASSERT_EQ(hitChildren.size(), 1u);
    AnimSequencer const* eyes = static_cast<AnimSequencer const*>(drawChildren[0]->mpUserData);
    EXPECT_EQ(drawChildren[0]->mKind, 4u);
    EXPECT_EQ(eyes, unit->getCurrentSequencer()->getTrackArray()[1].mpObject);
    ASSERT_EQ(elements(*drawChildren[0]).size(), 1u);
    ASSERT_EQ(elements(*hitChildren[0]).size(), 1u);
    EXPECT_EQ(elements(unit->getDrawTree()).size(), 1u);
    EXPECT_EQ(elements(*drawChildren[0])[0]->mOBB.mCenter, at(-10, 2));
    EXPECT_EQ(elements(*drawChildren[0])[0]->mOBB.mExtent, at(2, 2));

    // A cell before a collision: the collision's box lands on the cell.
    TextureResource* sheet = load<TextureResource>("anim/walk_sheet");
    AnimResource* animation = makeAnimation();
    animation->setTexture(sheet);
    addTrack(animation, "cell", AnimCell::getStaticTypeInfo(), {"Size"});
    addTrack(animation, "box", AnimCollision::getStaticTypeInfo(), {"Position", "Size"});
    addKey(animation, "cell", "Size", 0, sSize(16, 16));
    addKey(animation, "box", "Position", 0, sPoint(2, 0));
    addKey(animation, "box", "Size", 0, sSize(12, 6));
    AnimationUnit* second = addUnit(listOf(0, animation), 40, 30);
    second->setCurrentAnimation(0);
    runFrame();
    ASSERT_EQ(elements(second->getDrawTree()).size(), 1u);
    EXPECT_EQ(elements(second->getDrawTree())[0]->mOBB.mCenter, at(42, 30));
    EXPECT_EQ(elements(second->getDrawTree())[0]->mOBB.mExtent, at(6, 3));
    ASSERT_EQ(recordedQuads().size(), 3u); // idle's body and eye, and the cell in the box's place
}

TEST_F(AnimTest, WithoutATextureOnlyChildrenDrawAndAViewOffTheOriginDrawsNothing)
{
    AnimResource* blink = load<AnimResource>("anim/blink");
    ASSERT_NE(blink, nullptr);
    AnimResource* parent = makeAnimation();
    addTrack(parent, "cell", AnimCell::getStaticTypeInfo(), {"Size"});
    addKey(parent, "cell", "Size", 0, sSize(8, 8));
    addTrack(parent, "child", AnimSequencer::getStaticTypeInfo(), {"Resource", "Play"});
    parent->addKey("child", "Resource", 0, SequencerResource::eInterpolateType_Constant);
    static_cast<SequencerUniqueKey<ResourceBase>*>(parent->findKey("child", "Resource", 0))->setResource(blink);
    parent->setKeyParameter("child", "Resource", 0, nullptr);
    addTriggerKey(parent, "child", "Play", 0);
    AnimationUnit* unit = addUnit(listOf(0, parent), 20, 10);
    unit->setCurrentAnimation(0);
    runFrame();
    std::vector<animtest::sQuad> quads = recordedQuads();
    ASSERT_EQ(quads.size(), 1u); // the child's eye; the parent has no texture
    EXPECT_EQ(quads[0].mVertex[0].x, 18.0f);
    EXPECT_EQ(quads[0].mVertex[0].y, 8.0f);

    // The view box runs from the projection's corner to its width and
    // height: moved off the origin, it shows nothing wherever the unit is.
    sRect const projection = mpViews->getProjection(1);
    mpViews->setProjection(1, sRect(1, 1, 321, 241));
    unit->setPosition(at(100, 100));
    u32 const frame = unit->getCurrentFrame();
    runFrame();
    EXPECT_TRUE(recordedQuads().empty());
    EXPECT_EQ(unit->getCurrentFrame(), frame + 1); // still playing
    mpViews->setProjection(1, projection);
    runFrame();
    EXPECT_EQ(recordedQuads().size(), 1u);
}

TEST_F(AnimTest, LiveParticlesDrawAsQuadsFromTheirFirstUpdateWithTheirOpacity)
{
    TextureResource* sheet = load<TextureResource>("anim/walk_sheet");
    AnimResource* animation = makeAnimation();
    animation->setTexture(sheet);
    addTrack(animation, "dust", AnimGenerator::getStaticTypeInfo(),
             {"Position", "Size", "UV", "GenerataionRate", "AppearanceTime", "Color", "Generate"});
    addKey(animation, "dust", "Position", 0, sPoint(5, 0));
    addKey(animation, "dust", "Size", 0, sSize(4, 4));
    addKey(animation, "dust", "UV", 0, sTexcoord(0, 16));
    addKey(animation, "dust", "GenerataionRate", 0, sFixed::Zero);
    addKey(animation, "dust", "AppearanceTime", 0, u16(4));
    addKey(animation, "dust", "Color", 0, sColor(255, 255, 255, 255));
    addKey(animation, "dust", "Generate", 0, u32(2));
    AnimationUnit* unit = addUnit(listOf(0, animation), -30, 12);
    unit->setCurrentAnimation(0);
    for (int frame = 0; frame < 3; ++frame) {
        runFrame();
        AnimGenerator const* dust = trackObject<AnimGenerator>(*unit->getCurrentSequencer(), 0);
        std::vector<animtest::sQuad> const quads = recordedQuads();
        size_t q = 0;
        for (u32 i = 0; i < dust->getMaxParticleNum(); ++i) {
            AnimGenerator::sParticle const& particle = dust->getParticle(i);
            if (!particle.isAlive() || particle.getPhase() == 0) {
                continue;
            }
            ASSERT_LT(q, quads.size());
            animtest::sQuad const& quad = quads[q++];
            // Radius 0 and speed 0: every particle sits on the emitter, a
            // quad of twice its half extent (scale 0.5 times size 4).
            EXPECT_EQ(quad.mVertex[0].x, -30.0f + 5.0f - 2.0f);
            EXPECT_EQ(quad.mVertex[3].x, -30.0f + 5.0f + 2.0f);
            EXPECT_EQ(quad.mVertex[0].y, 12.0f - 2.0f);
            EXPECT_EQ(quad.mVertex[3].y, 12.0f + 2.0f);
            EXPECT_EQ(quad.mVertex[3].u, 4);
            EXPECT_EQ(quad.mVertex[3].v, 20);
            sColor color;
            memcpy(&color, &quad.mVertex[0].mColor, sizeof(color));
            EXPECT_EQ(color.a, static_cast<u8>(particle.mOpacity * 255.0f));
            EXPECT_EQ(color.r, 255);
        }
        EXPECT_EQ(q, quads.size());
        EXPECT_GT(q, 0u);
    }
}

// ---------------------------------------------------------------------------
// Pixels

namespace {

using rendertest::kWindowHeight;
using rendertest::kWindowWidth;
using rendertest::readWindow;

// World (x, y) of game view 1 is window pixel (x + 160, y + 120); GL's rows run upwards.
sColor worldPixel(std::vector<sColor> const& pixels, int x, int y)
{
    return pixels[static_cast<size_t>((kWindowHeight - 121 - y) * kWindowWidth + x + 160)];
}

bool near(sColor a, u8 r, u8 g, u8 b)
{
    return std::abs(a.r - r) <= 2 && std::abs(a.g - g) <= 2 && std::abs(a.b - b) <= 2;
}

} // namespace

TEST_F(AnimTest, TheWalkSampleShowsItsFramesAtTheUnitOnEveryNumberOfThreads)
{
    REQUIRE_GL();
    AnimationListIntermediate* list = load<AnimationListIntermediate>("anim/character");
    ASSERT_NE(list, nullptr);
    // Frame colours of the sheet (scripts/make_animations.py), shown from
    // the keys at 0, 10, 20 and 30; the sequence ends at 39.
    u8 const colors[4][3] = {{230, 40, 40}, {40, 200, 40}, {40, 60, 230}, {230, 210, 40}};
    int const checks[] = {5, 15, 25, 35, 45};
    int const expected[] = {0, 1, 2, 3, 3};
    std::vector<std::vector<sColor>> runs[2];
    u32 const threads[2] = {1, JobSystem::kJobThreadMax};
    for (int run = 0; run < 2; ++run) {
        mpJobs->setJobThreadNum(threads[run]);
        // A fresh unit per run, so that particles start alike.
        std::vector<AnimationUnit*> units;
        for (int i = 0; i < 6; ++i) {
            units.push_back(addUnit(list, -100 + 40 * i, -50 + 20 * i));
            units.back()->setCurrentAnimation(3);
        }
        int frame = 0;
        for (int c = 0; c < 5; ++c) {
            while (frame < checks[c]) {
                runFrame();
                ++frame;
            }
            std::vector<sColor> const pixels = readWindow();
            for (AnimationUnit const* unit : units) {
                int const x = static_cast<int>(unit->getPosition().x);
                int const y = static_cast<int>(unit->getPosition().y);
                u8 const* rgb = colors[expected[c]];
                // The middle and near the corners of the 16 by 16 cell.
                for (int dx : {-5, 0, 5}) {
                    for (int dy : {-5, 0, 5}) {
                        sColor const pixel = worldPixel(pixels, x + dx, y + dy);
                        EXPECT_TRUE(near(pixel, rgb[0], rgb[1], rgb[2]))
                            << "frame " << frame << " unit at (" << x << ", " << y << ") offset (" << dx << ", " << dy
                            << "): " << int(pixel.r) << " " << int(pixel.g) << " " << int(pixel.b);
                    }
                }
                // Outside the cell the clear colour stays, left and right.
                EXPECT_FALSE(near(worldPixel(pixels, x - 12, y), rgb[0], rgb[1], rgb[2]));
            }
            runs[run].push_back(pixels);
        }
        for (AnimationUnit* unit : units) {
            unit->kill();
        }
        runFrame();
    }
    for (int c = 0; c < 5; ++c) {
        EXPECT_TRUE(runs[0][c] == runs[1][c]) << "all threads show another picture at check " << c;
    }
}

TEST_F(AnimTest, AnEditOfThePlayedAnimationsRemakesTheTreesOverTheNewObjects)
{
    TextureResource* sheet = load<TextureResource>("anim/walk_sheet");
    AnimResource* animation = makeAnimation();
    animation->setTexture(sheet);
    addTrack(animation, "cell", AnimCell::getStaticTypeInfo(), {"Size", "Position"});
    addKey(animation, "cell", "Size", 0, sSize(8, 8));
    AnimationUnit* unit = addUnit(listOf(0, animation), 10, 10);
    unit->setCurrentAnimation(0);
    for (int i = 0; i < 3; ++i) {
        runFrame();
    }
    EXPECT_EQ(unit->getCurrentFrame(), 3u);
    // An edit, as the animation tool makes one: the sequencer builds new
    // objects at its next update, and the unit's trees follow them.
    addKey(animation, "cell", "Position", 0, sPoint(5, 0));
    addTrack(animation, "box", AnimCollision::getStaticTypeInfo(), {"Size"});
    animation->moveTrackToFirst("box"); // before the cell, whose box then stays on its element
    runFrame();
    AnimSequencer const* sequencer = unit->getCurrentSequencer();
    std::vector<sBBTreeElement const*> const drawn = elements(unit->getDrawTree());
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_EQ(drawn[0]->mpUserData, sequencer->getTrackArray()[1].mpObject);
    ASSERT_EQ(elements(unit->getCollisionTree()).size(), 1u);
    EXPECT_EQ(elements(unit->getCollisionTree())[0]->mpUserData, sequencer->getTrackArray()[0].mpObject);
    EXPECT_EQ(drawn[0]->mOBB.mCenter, at(15, 10));
    EXPECT_EQ(unit->getCurrentFrame(), 4u); // played on from where it was
    std::vector<animtest::sQuad> const quads = recordedQuads();
    ASSERT_EQ(quads.size(), 1u);
    EXPECT_EQ(quads[0].mVertex[0].x, 11.0f);
    animation->clearUpdate(); // the resource system's pass
    runFrame();
    EXPECT_EQ(unit->getCurrentFrame(), 5u);
    EXPECT_EQ(recordedQuads().size(), 1u);
}
