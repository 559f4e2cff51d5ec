// Animation primitives and the particle generator through their public
// interface: what cells, collisions and generators publish for lanes and
// files; the quad a unit draws for a cell (vertices and texels for sizes,
// positions, UVs, flips and blend modes); particle birth, bursts, fading by
// age and death; replays of a seed and a new seed wiping the pool.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "animtest.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "resource/textureresource.h"

namespace {

// "Name" per control, in order, and "Name:label,label" for a flag or an
// enumeration control.
std::vector<std::string> controlNames(ObjectBase& object)
{
    List<ControlBase> list;
    object.makeControlList(list);
    std::vector<std::string> names;
    for (LinkIterator<ControlBase> it = list.begin(); it != list.end(); ++it) {
        std::string name = it->getName();
        if (it->getType() == eControlType_Property) {
            PropertyControl const* control = static_cast<PropertyControl const*>(*it);
            for (u32 i = 0; i < control->getArrayNum(); ++i) {
                char const* label = (control->getMaskInfo() != nullptr) ? control->getMaskInfo()[i].mpName
                                    : (control->getEnumInfo() != nullptr) ? control->getEnumInfo()[i].mpName
                                                                          : "";
                name += (i == 0 ? ":" : ",") + std::string(label);
            }
        }
        names.push_back(name);
        delete *it;
    }
    return names;
}

// A generator that lives as long as the pool's particles are examined.
AnimGenerator* makeGenerator(u32 seed = AnimGenerator::kDefaultSeed)
{
    AnimGenerator* generator = new AnimGenerator();
    generator->setRandomSeed(seed);
    generator->setGenerateRate(sFixed::Zero);
    generator->setSize(sSize(4, 6));
    generator->mLifeDuration = 1000;
    return generator;
}

std::vector<u8> poolBytes(AnimGenerator const& generator)
{
    std::vector<u8> bytes(generator.getMaxParticleNum() * sizeof(AnimGenerator::sParticle));
    if (!bytes.empty()) {
        memcpy(bytes.data(), &generator.getParticle(0), bytes.size());
    }
    return bytes;
}

} // namespace

using animtest::aliveCount;

// Lanes bind to control names and files keep property names.
TEST(AnimPrimitiveTest, CellCollisionAndGeneratorPublishTheirValuesForLanesAndFiles)
{
    AnimCell cell;
    EXPECT_EQ(cell.getAttribute(), 1u); // visible
    cell.setAttribute(0xFF);
    EXPECT_EQ(cell.getAttribute(), 7u);
    EXPECT_EQ(controlNames(cell), (std::vector<std::string>{"Position", "UV", "Size", "Color",
                                                            "Attribute:Visible,HFlip,VFlip",
                                                            "BlendMode:MODULATE,ADD,SUBTRACT"}));
    AnimCollision collision;
    EXPECT_EQ(controlNames(collision), (std::vector<std::string>{"Position", "Size", "Attribute"}));

    // The rate is so spelt for lanes; files keep "GenerateRate".
    AnimGenerator generator;
    EXPECT_EQ(controlNames(generator),
              (std::vector<std::string>{"MaxParticleNum", "GenerataionRate", "RandomSeed", "Position",
                                        "PlacementMode:DISC,UNIFORMLY_DISC",
                                        "VelocityMode:RANDOM,POSITION_DEPENDENT,DIRECTIONAL",
                                        "BlendMode:MODULATE,ADD,SUBTRACT", "RandomFlip", "Color", "UV", "Size",
                                        "Direction", "DirectionRange", "Speed", "SpeedRange", "Gravity", "Scale",
                                        "ScaleRange", "InnerRadius", "OuterRadius", "LifeDuration", "AppearanceTime",
                                        "DisappearanceTime", "ScaleRate", "Generate", "Reset"}));
    PropertyList properties;
    generator.makePropertyList(properties);
    EXPECT_NE(properties.find("GenerateRate", ePropertyType_Fixed), nullptr);
}

// ---------------------------------------------------------------------------
// Cells as a unit draws them

namespace {

struct sCellCase {
    char const* mpName;
    sSize mSize;
    sPoint mPosition;
    sTexcoord mUV;
    u32 mAttribute;
    // Expected: corners in strip order (x, y) relative to the unit, texels.
    int mCorner[4][2];
    u16 mTexel[4][2];
};

} // namespace

TEST_F(AnimTest, CellQuadsFollowSizePositionUVAndFlips)
{
    TextureResource* sheet = load<TextureResource>("anim/walk_sheet");
    ASSERT_NE(sheet, nullptr);
    sCellCase const cases[] = {
        {"plain", {16, 16}, {0, 0}, {0, 0}, 1, {{-8, -8}, {8, -8}, {-8, 8}, {8, 8}}, {{0, 0}, {16, 0}, {0, 16}, {16, 16}}},
        // An odd side loses half a pixel each way while the texels span all of it.
        {"odd", {5, 3}, {3, -2}, {10, 4}, 1, {{1, -3}, {5, -3}, {1, -1}, {5, -1}}, {{10, 4}, {15, 4}, {10, 7}, {15, 7}}},
        // A flip turns the X axis and keeps the texels.
        {"hflip", {16, 8}, {0, 0}, {16, 0}, 3, {{8, -4}, {-8, -4}, {8, 4}, {-8, 4}}, {{16, 0}, {32, 0}, {16, 8}, {32, 8}}},
        // Deliberately without effect.
        {"vflip", {16, 8}, {0, 0}, {16, 0}, 5, {{-8, -4}, {8, -4}, {-8, 4}, {8, 4}}, {{16, 0}, {32, 0}, {16, 8}, {32, 8}}},
        {"empty", {0, 0}, {2, 2}, {7, 9}, 1, {{2, 2}, {2, 2}, {2, 2}, {2, 2}}, {{7, 9}, {7, 9}, {7, 9}, {7, 9}}},
        // Texels are 16 bits wide and wrap.
        {"wrap", {16, 4}, {0, 0}, {65530, 65534}, 1, {{-8, -2}, {8, -2}, {-8, 2}, {8, 2}},
         {{65530, 65534}, {10, 65534}, {65530, 2}, {10, 2}}},
    };
    int const unitX = 30;
    int const unitY = -20;
    for (sCellCase const& c : cases) {
        SCOPED_TRACE(c.mpName);
        AnimResource* animation = makeAnimation();
        animation->setTexture(sheet);
        addTrack(animation, "cell", AnimCell::getStaticTypeInfo(), {"Position", "UV", "Size", "Attribute", "Color"});
        addKey(animation, "cell", "Position", 0, c.mPosition);
        addKey(animation, "cell", "UV", 0, c.mUV);
        addKey(animation, "cell", "Size", 0, c.mSize);
        addKey(animation, "cell", "Attribute", 0, c.mAttribute);
        addKey(animation, "cell", "Color", 0, sColor(255, 0, 255, 255));
        AnimationUnit* unit = addUnit(listOf(2, animation), unitX, unitY);
        unit->setCurrentAnimation(2);
        runFrame();
        std::vector<animtest::sQuad> const quads = recordedQuads();
        ASSERT_EQ(quads.size(), 1u);
        animtest::sQuad const& quad = quads[0];
        EXPECT_EQ(quad.mBlendMode, 1u); // MODULATE draws with alpha blending
        for (int v = 0; v < 4; ++v) {
            EXPECT_EQ(quad.mVertex[v].x, static_cast<f32>(unitX + c.mCorner[v][0])) << "vertex " << v;
            EXPECT_EQ(quad.mVertex[v].y, static_cast<f32>(unitY + c.mCorner[v][1])) << "vertex " << v;
            EXPECT_EQ(static_cast<u16>(quad.mVertex[v].u), c.mTexel[v][0]) << "vertex " << v;
            EXPECT_EQ(static_cast<u16>(quad.mVertex[v].v), c.mTexel[v][1]) << "vertex " << v;
            sColor color;
            memcpy(&color, &quad.mVertex[v].mColor, sizeof(color));
            EXPECT_EQ(color, sColor(255, 0, 255, 255));
        }
        unit->kill();
        runFrame();
    }
}

TEST_F(AnimTest, CellVisibilityAndBlendModesChooseWhatAndHowItDraws)
{
    TextureResource* sheet = load<TextureResource>("anim/walk_sheet");
    AnimResource* animation = makeAnimation();
    animation->setTexture(sheet);
    // Attribute, blend mode per cell: hidden, HFlip without Visible, then the
    // three modes, then mode 3, which keeps the mode before it.
    u32 const attributes[] = {0, 2, 1, 1, 1, 1};
    u32 const modes[] = {0, 0, 2, 1, 0, 3};
    for (u32 i = 0; i < 6; ++i) {
        std::string const name = "cell" + std::to_string(i);
        addTrack(animation, name.c_str(), AnimCell::getStaticTypeInfo(), {"Size", "Attribute", "BlendMode"});
        addKey(animation, name.c_str(), "Size", 0, sSize(2, 2));
        addKey(animation, name.c_str(), "Attribute", 0, attributes[i]);
        addKey(animation, name.c_str(), "BlendMode", 0, modes[i]);
    }
    AnimationListIntermediate* list = listOf(0, animation);
    EXPECT_FALSE(list->isModified()); // setAnimation does not mark the list
    AnimationUnit* unit = addUnit(list);
    unit->setCurrentAnimation(0);
    runFrame();
    std::vector<u32> blends;
    for (animtest::sQuad const& quad : recordedQuads()) {
        blends.push_back(quad.mBlendMode);
    }
    // Sorted by state: the blend mode is part of a batch's state. Mode 3
    // follows the MODULATE cell and keeps its blending.
    std::sort(blends.begin(), blends.end());
    EXPECT_EQ(blends, (std::vector<u32>{1, 1, 2, 3}));
}

// ---------------------------------------------------------------------------
// The generator

TEST(AnimGeneratorTest, ParticlesAreBornAgedFadedAndFreedInTheirSlots)
{
    AnimGenerator* generator = makeGenerator();
    generator->mLifeDuration = 10;
    generator->mAppearanceTime = 4;
    generator->mDisappearanceTime = 3;
    generator->mSpeed = 2.0f;
    generator->setVelocityMode(AnimGenerator::eVelocityMode_Directional);
    generator->mDirection = 0.0f;
    generator->generate(1);
    AnimGenerator::sParticle const& particle = generator->getParticle(0);
    ASSERT_TRUE(particle.isAlive());
    EXPECT_EQ(particle.getPhase(), 0u); // newborn until its first update
    EXPECT_EQ(particle.mAge, sFixed::Zero);
    EXPECT_EQ(particle.mSize, sSize(4, 6));
    EXPECT_EQ(particle.mFlags & (AnimGenerator::eParticle_HFlip | AnimGenerator::eParticle_VFlip), 0u);
    EXPECT_EQ(aliveCount(*generator), 1u);
    sVector const start = particle.mPosition;

    // age: phase, opacity. Disappearing rises from 0: a particle blinks out
    // and then fades up before it dies.
    struct sStep {
        u32 mPhase;
        f32 mOpacity;
    };
    sStep const steps[] = {{1, 0.25f}, {1, 0.5f}, {1, 0.75f}, {2, 1.0f}, {2, 1.0f}, {2, 1.0f},
                           {3, 0.0f},  {3, 1.0f / 3.0f}, {3, 2.0f / 3.0f}};
    for (u32 age = 1; age <= 9; ++age) {
        generator->update(sFixed::One);
        SCOPED_TRACE(age);
        ASSERT_TRUE(particle.isAlive());
        EXPECT_EQ(particle.getPhase(), steps[age - 1].mPhase);
        EXPECT_NEAR(particle.mOpacity, steps[age - 1].mOpacity, 1e-6);
        EXPECT_NEAR(static_cast<f32>(particle.mPosition.x - start.x), 2.0f * static_cast<f32>(age), 1e-3);
    }
    generator->update(sFixed::One);
    EXPECT_FALSE(particle.isAlive());
    EXPECT_EQ(aliveCount(*generator), 0u);

    // Several frames in one update age by all of them and move once.
    generator->generate(1);
    sVector const born = particle.mPosition;
    generator->update(sFixed(3, 16));
    EXPECT_EQ(particle.mAge, sFixed(3, 16));
    EXPECT_NEAR(static_cast<f32>(particle.mPosition.x - born.x), 2.0f, 1e-3);
    EXPECT_EQ(particle.getPhase(), 1u);
    EXPECT_NEAR(particle.mOpacity, 0.75f, 1e-6);

    // The box stays zero; the centre offset is minus the position.
    generator->setPosition(sPoint(5, -7));
    generator->update(sFixed::One);
    EXPECT_EQ(generator->getBoundingBox(), sAABB::Zero);
    EXPECT_EQ(generator->getCenterOffset(), sVector(sFixed(-5, 16), sFixed(7, 16)));
    delete generator;
}

TEST(AnimGeneratorTest, RatesBurstsAndTheGenerateTriggerFillFreeSlotsOnly)
{
    AnimGenerator* generator = makeGenerator();
    generator->setGenerateRate(sFixed(2.5f));
    // Born in an update, first moved in the next: counts 2, 5, 7, 10.
    u32 const expected[] = {2, 5, 7, 10};
    for (u32 expect : expected) {
        generator->update(sFixed::One);
        EXPECT_EQ(aliveCount(*generator), expect);
    }
    for (u32 i = 0; i < 10; ++i) {
        EXPECT_TRUE(generator->getParticle(i).isAlive()) << "slot " << i; // in pool order
    }
    generator->generate(0); // all free slots
    EXPECT_EQ(aliveCount(*generator), 16u);
    generator->update(sFixed::One); // a full pool loses the accumulator's whole part
    EXPECT_EQ(aliveCount(*generator), 16u);

    generator->setMaxParticleNum(255);
    EXPECT_EQ(aliveCount(*generator), 0u); // a new size is a new pool
    generator->generate(300);
    EXPECT_EQ(aliveCount(*generator), 255u);
    generator->reset();
    EXPECT_EQ(aliveCount(*generator), 0u);
    generator->setMaxParticleNum(0);
    generator->generate(0);
    generator->update(sFixed::One);
    EXPECT_EQ(aliveCount(*generator), 0u);
    delete generator;
}

TEST(AnimGeneratorTest, TheSameSeedReplaysTheSameParticlesAndANewSeedWipesThePool)
{
    auto configure = [](AnimGenerator* generator) {
        generator->setVelocityMode(AnimGenerator::eVelocityMode_Directional);
        generator->mDirection = 45.0f;
        generator->mDirectionRange = 30.0f;
        generator->mSpeed = 1.5f;
        generator->mSpeedRange = 0.5f;
        generator->mScaleRange = 0.25f;
        generator->mInnerRadius = 2;
        generator->mOuterRadius = 9;
        generator->mGravity = sVector(sFixed::Zero, sFixed(0.125f));
        generator->mScaleRate = sFixed(0.01f);
        generator->mLifeDuration = 12;
        generator->setGenerateRate(sFixed(1.75f));
    };
    AnimGenerator* first = makeGenerator(77);
    AnimGenerator* second = makeGenerator(77);
    configure(first);
    configure(second);
    for (int i = 0; i < 40; ++i) {
        first->update(sFixed::One);
        second->update(sFixed::One);
    }
    EXPECT_GT(aliveCount(*first), 10u);
    EXPECT_EQ(poolBytes(*first), poolBytes(*second));

    first->setRandomSeed(77); // the same seed: nothing happens
    EXPECT_EQ(poolBytes(*first), poolBytes(*second));
    first->setRandomSeed(78); // a new one wipes the pool
    EXPECT_EQ(aliveCount(*first), 0u);
    second->setRandomSeed(78);
    for (int i = 0; i < 5; ++i) {
        first->update(sFixed::One);
        second->update(sFixed::One);
    }
    EXPECT_EQ(poolBytes(*first), poolBytes(*second));
    // Another seed gives other particles.
    AnimGenerator* third = makeGenerator(79);
    configure(third);
    for (int i = 0; i < 5; ++i) {
        third->update(sFixed::One);
    }
    EXPECT_NE(poolBytes(*first), poolBytes(*third));
    delete first;
    delete second;
    delete third;
}

TEST(AnimGeneratorTest, PlacementAndVelocityModesShapeBirthsAndTheFlipDrawIsTaken)
{
    // A ring where the radii are equal; the uniform disc lies in the unit
    // disc, between inner / outer and 1.
    AnimGenerator* ring = makeGenerator();
    ring->mInnerRadius = ring->mOuterRadius = 10;
    AnimGenerator* disc = makeGenerator();
    disc->setPlacementMode(AnimGenerator::ePlacementMode_UniformlyDisc);
    disc->mInnerRadius = 5;
    disc->mOuterRadius = 10;
    ring->generate(0);
    disc->generate(0);
    for (u32 i = 0; i < 16; ++i) {
        EXPECT_NEAR(ring->getParticle(i).mPosition.length(), 10.0f, 1e-3);
        EXPECT_GE(disc->getParticle(i).mPosition.length(), 0.5f - 1e-3f);
        EXPECT_LE(disc->getParticle(i).mPosition.length(), 1.0f + 1e-3f);
    }
    // Outer radius 0 places at the centre, where position-dependent velocity
    // has no direction.
    AnimGenerator* still = makeGenerator();
    still->setPlacementMode(AnimGenerator::ePlacementMode_UniformlyDisc);
    still->setVelocityMode(AnimGenerator::eVelocityMode_PositionDependent);
    still->mSpeed = 3.0f;
    still->generate(1);
    EXPECT_EQ(still->getParticle(0).mPosition, sVector::Zero);
    EXPECT_EQ(still->getParticle(0).mVelocity, sVector::Zero);
    // The flip draw never flips, but without it the stream moves one draw
    // less per birth.
    AnimGenerator* plain = makeGenerator();
    plain->setRandomFlip(false);
    ring->reset();
    ring->mSpeed = plain->mSpeed = 1.0f;
    ring->mInnerRadius = ring->mOuterRadius = 0;
    ring->generate(2);
    plain->generate(2);
    EXPECT_EQ(ring->getParticle(0).mVelocity, plain->getParticle(0).mVelocity);
    EXPECT_NE(ring->getParticle(1).mVelocity, plain->getParticle(1).mVelocity);
    EXPECT_EQ(ring->getParticle(1).mFlags & (AnimGenerator::eParticle_HFlip | AnimGenerator::eParticle_VFlip), 0u);
    for (AnimGenerator* generator : {ring, disc, still, plain}) {
        delete generator;
    }
}
