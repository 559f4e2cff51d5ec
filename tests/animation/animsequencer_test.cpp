// The animation resource and sequencer: the texture's path in the sequence's
// type-dependent data, the sorting of tracks into kinds with their limits
// (and again after an edit), nested animations set, started and stepped by
// their parent, generators stepped once per applied step, and the sample walk
// in its XML and native forms.
#include <cstring>
#include <string>
#include <vector>

#include "animtest.h"
#include "resource/textureresource.h"
#include "serial/stream.h"

namespace {

std::vector<u8> nativeLanes(SequencerResource const* resource)
{
    std::vector<u8> bytes;
    for (u32 t = 0; t < resource->getTrackNum(); ++t) {
        sNativeTrack const& track = resource->getTrackArray()[t];
        u8 const* id = reinterpret_cast<u8 const*>(&track.mObjectTypeID);
        bytes.insert(bytes.end(), id, id + 4);
        for (u32 l = 0; l < track.mLaneNum; ++l) {
            sNativeLane const& lane = track.mpLaneArray[l];
            u8 const* hash = reinterpret_cast<u8 const*>(&lane.mNameHash);
            bytes.insert(bytes.end(), hash, hash + 4);
            bytes.push_back(lane.mKeyStride);
            bytes.push_back(static_cast<u8>(lane.mKeyNum));
            if (lane.mpKeyArray != nullptr) {
                bytes.insert(bytes.end(), lane.mpKeyArray, lane.mpKeyArray + lane.mKeyNum * lane.mKeyStride);
            }
        }
    }
    return bytes;
}

} // namespace

TEST_F(AnimTest, TheTexturePathTravelsInTheTypeDependentData)
{
    TextureResource* sheet = load<TextureResource>("anim/walk_sheet");
    ASSERT_NE(sheet, nullptr);
    AnimResource* animation = makeAnimation();
    EXPECT_EQ(animation->getSequenceType(), 1u);
    animation->clearModify();
    animation->setTexture(sheet);
    EXPECT_TRUE(animation->isModified());
    ASSERT_EQ(animation->getTypeDependentDataSize(), 16u);
    EXPECT_STREQ(reinterpret_cast<char const*>(animation->getTypeDependentData()), "anim/walk_sheet");
    int const held = sheet->getRefCount();
    animation->setTexture(sheet); // the same texture again keeps one reference
    EXPECT_EQ(sheet->getRefCount(), held);
    // Null empties the block; a sequencer then asks for a path of null and
    // has no texture to draw cells with.
    animation->setTexture(nullptr);
    EXPECT_EQ(animation->getTypeDependentDataSize(), 0u);
    EXPECT_EQ(sheet->getRefCount(), held - 1);
    AnimSequencer bare;
    bare.setResource(animation);
    EXPECT_TRUE(bare.getTexture() == nullptr || bare.getTexture()->getTexture() == nullptr);
}

TEST_F(AnimTest, TheSequencerSortsTracksIntoKindsAndRefusesOtherSequences)
{
    AnimResource* animation = makeAnimation();
    addTrack(animation, "box", AnimCollision::getStaticTypeInfo(), {"Size"});
    addTrack(animation, "cell", AnimCell::getStaticTypeInfo(), {"Size"});
    addTrack(animation, "plain", Sequencer::getStaticTypeInfo(), {});
    addTrack(animation, "dust", AnimGenerator::getStaticTypeInfo(), {"Speed"});
    addTrack(animation, "child", AnimSequencer::getStaticTypeInfo(), {"Position"});
    addTrack(animation, "cell2", AnimCell::getStaticTypeInfo(), {"Size"});
    AnimSequencer sequencer;
    sequencer.setResource(animation);
    std::vector<u32> types;
    for (u32 t = 0; t < 7; ++t) {
        types.push_back(sequencer.getTrackType(t));
    }
    // A plain Sequencer is none of the kinds; a child without a resource
    // counts for nothing but itself; past the tracks is 0.
    EXPECT_EQ(types, (std::vector<u32>{2, 1, 0, 3, 4, 1, 0}));
    EXPECT_EQ(sequencer.getAnimCellNum(), 2u);
    EXPECT_EQ(sequencer.getAnimCollisionNum(), 1u);
    EXPECT_EQ(sequencer.getAnimGeneratorNum(), 1u);
    EXPECT_EQ(sequencer.getAnimSequencerNum(), 1u);

    // A sequence of type 0 is refused and changes nothing.
    SequencerResourceIntermediate* plain = new SequencerResourceIntermediate();
    sequencer.setResource(plain);
    EXPECT_EQ(sequencer.getResource(), animation);
    EXPECT_EQ(sequencer.getAnimCellNum(), 2u);
    plain->release();
    sequencer.setResource(nullptr);
    EXPECT_EQ(sequencer.getResource(), animation);
}

// The editor plays the animation it edits: a texture chosen and a track
// added after the sequencer took the resource reach it at the rebuild.
TEST_F(AnimTest, AnEditedAnimationGivesItsPlayerTheNewTextureAndTrackKinds)
{
    TextureResource* sheet = load<TextureResource>("anim/walk_sheet");
    ASSERT_NE(sheet, nullptr);
    AnimResource* animation = makeAnimation();
    AnimSequencer sequencer;
    sequencer.setResource(animation);
    EXPECT_NE(sequencer.getTexture(), sheet);
    animation->setTexture(sheet);
    addTrack(animation, "cell", AnimCell::getStaticTypeInfo(), {"Size"});
    addTrack(animation, "box", AnimCollision::getStaticTypeInfo(), {"Size"});
    sequencer.update(sFixed::Zero);
    EXPECT_EQ(sequencer.getTexture(), sheet);
    EXPECT_EQ(sequencer.getTrackType(0), 1u);
    EXPECT_EQ(sequencer.getTrackType(1), 2u);
    EXPECT_EQ(sequencer.getAnimCellNum(), 1u);
    EXPECT_EQ(sequencer.getAnimCollisionNum(), 1u);
    // Counts start again at each rebuild rather than adding up.
    animation->setModify();
    sequencer.update(sFixed::Zero);
    EXPECT_EQ(sequencer.getAnimCellNum(), 1u);
}

using AnimDeathTest = AnimTest;

TEST_F(AnimDeathTest, MoreThan255CellsOrNestedTotalsPast255AreFatal)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    AnimResource* many = makeAnimation();
    for (int i = 0; i < 255; ++i) {
        many->addTrack(AnimCell::getStaticTypeInfo(), ("c" + std::to_string(i)).c_str());
    }
    {
        AnimSequencer sequencer;
        sequencer.setResource(many);
        EXPECT_EQ(sequencer.getAnimCellNum(), 255u);
    }
    many->addTrack(AnimCell::getStaticTypeInfo(), "c255");
    EXPECT_DEATH(AnimSequencer().setResource(many), "Too many cell\\.");

    // A child of 200 cells under a parent that has 60 of its own.
    AnimResource* child = makeAnimation();
    for (int i = 0; i < 200; ++i) {
        child->addTrack(AnimCell::getStaticTypeInfo(), ("c" + std::to_string(i)).c_str());
    }
    {
        TextFileStream stream(intermediateFile("anim/big.asq.xml").c_str(), Stream::eMode_Write);
        ASSERT_TRUE(child->save(stream));
    }
    AnimResource* loaded = load<AnimResource>("anim/big");
    ASSERT_NE(loaded, nullptr);
    AnimResource* parent = makeAnimation();
    for (int i = 0; i < 60; ++i) {
        parent->addTrack(AnimCell::getStaticTypeInfo(), ("c" + std::to_string(i)).c_str());
    }
    addTrack(parent, "child", AnimSequencer::getStaticTypeInfo(), {"Resource"});
    parent->addKey("child", "Resource", 0, SequencerResource::eInterpolateType_Constant);
    static_cast<SequencerUniqueKey<ResourceBase>*>(parent->findKey("child", "Resource", 0))->setResource(loaded);
    parent->setKeyParameter("child", "Resource", 0, nullptr);
    EXPECT_DEATH(AnimSequencer().setResource(parent), "Too many cell\\.");
}

TEST_F(AnimTest, NestedAnimationsAreSetStartedAndSteppedByTheirParent)
{
    AnimResource* idle = load<AnimResource>("anim/idle");
    ASSERT_NE(idle, nullptr);
    AnimSequencer sequencer;
    sequencer.setResource(idle);
    // Body, then the eyes: blink's collision and cell count into the totals.
    EXPECT_EQ(sequencer.getTrackType(0), 1u);
    EXPECT_EQ(sequencer.getTrackType(1), 4u);
    EXPECT_EQ(sequencer.getAnimSequencerNum(), 1u);
    EXPECT_EQ(sequencer.getAnimCellNum(), 2u);
    EXPECT_EQ(sequencer.getAnimCollisionNum(), 1u);
    AnimSequencer* eyes = trackObject<AnimSequencer>(sequencer, 1);
    ASSERT_NE(eyes, nullptr);
    ASSERT_NE(eyes->getResource(), nullptr);
    EXPECT_EQ(eyes->getResource()->getTypeInfo(), AnimResource::getStaticTypeInfo());
    EXPECT_EQ(eyes->getPosition(), sPoint(0, -3));
    EXPECT_TRUE(eyes->isPlaying()); // its "Play" key
    EXPECT_EQ(eyes->getTexture(), sequencer.getTexture());
    AnimCell* eye = trackObject<AnimCell>(*eyes, 1);
    ASSERT_NE(eye, nullptr);
    EXPECT_EQ(eye->getColor(), sColor::White);

    sequencer.play();
    for (int i = 0; i < 14; ++i) {
        sequencer.update(sFixed::One);
    }
    EXPECT_EQ(static_cast<int>(eyes->getCurrentFrame()), 14);
    EXPECT_EQ(eye->getColor(), sColor::White);
    sequencer.update(sFixed::One);
    EXPECT_EQ(static_cast<int>(eyes->getCurrentFrame()), 15);
    EXPECT_EQ(eye->getColor(), sColor(40, 40, 40, 255));
    // A stopped parent steps nothing.
    sequencer.stop();
    sequencer.update(sFixed::One);
    EXPECT_EQ(static_cast<int>(eyes->getCurrentFrame()), 15);
}

TEST_F(AnimTest, GeneratorsStepOncePerAppliedStepAndTakeTheirTriggers)
{
    AnimResource* animation = makeAnimation(60);
    addTrack(animation, "dust", AnimGenerator::getStaticTypeInfo(),
             {"GenerataionRate", "Speed", "VelocityMode", "Generate"});
    addKey(animation, "dust", "GenerataionRate", 0, sFixed::Zero);
    addKey(animation, "dust", "Speed", 0, 1.0f);
    addKey(animation, "dust", "VelocityMode", 0, u32(AnimGenerator::eVelocityMode_Directional));
    addKey(animation, "dust", "GenerataionRate", 10, sFixed(0.5f));
    addKey(animation, "dust", "Generate", 0, u32(3));
    animation->clearUpdate(); // edits done: the sequencer plays without rebuilding
    AnimSequencer sequencer;
    sequencer.setResource(animation);
    AnimGenerator* dust = trackObject<AnimGenerator>(sequencer, 0);
    ASSERT_NE(dust, nullptr);
    EXPECT_EQ(animtest::aliveCount(*dust), 3u); // the burst at frame 0
    sequencer.play();
    // The start frame's application was an update of 0 frames, which moved
    // the particles once; one step of four frames ages them by four and
    // moves them once more.
    EXPECT_NEAR(static_cast<f32>(dust->getParticle(0).mPosition.x), 1.0f, 1e-3);
    sequencer.update(sFixed(4, 16));
    EXPECT_EQ(dust->getParticle(0).mAge, sFixed(4, 16));
    EXPECT_NEAR(static_cast<f32>(dust->getParticle(0).mPosition.x), 2.0f, 1e-3);
    EXPECT_EQ(animtest::aliveCount(*dust), 3u); // a burst key fires once
    // The rate lane takes over at frame 10: one more particle every 2 frames.
    for (int frame = 5; frame <= 14; ++frame) {
        sequencer.update(sFixed::One);
    }
    EXPECT_EQ(animtest::aliveCount(*dust), 5u);
}

TEST_F(AnimTest, TheWalkSampleIsTheSameInItsXmlAndNativeForms)
{
    AnimResource* xml = load<AnimResource>("anim/walk");
    SequencerResource* native = load<SequencerResource>("anim/walk");
    ASSERT_NE(xml, nullptr);
    ASSERT_NE(native, nullptr);
    EXPECT_EQ(native->getTypeInfo(), SequencerResource::getStaticTypeInfo());
    EXPECT_EQ(native->getSequenceType(), 1u);
    EXPECT_EQ(xml->getEndFrame(), native->getEndFrame());
    EXPECT_EQ(xml->getTrackNum(), 3u);
    EXPECT_EQ(nativeLanes(xml), nativeLanes(native));
    ASSERT_EQ(xml->getTypeDependentDataSize(), native->getTypeDependentDataSize());
    EXPECT_EQ(memcmp(xml->getTypeDependentData(), native->getTypeDependentData(), xml->getTypeDependentDataSize()), 0);

    AnimSequencer fromXml;
    AnimSequencer fromNative;
    fromXml.setResource(xml);
    fromNative.setResource(native);
    EXPECT_NE(fromXml.getTexture(), nullptr);
    EXPECT_EQ(fromXml.getTexture(), fromNative.getTexture());
    for (u32 t = 0; t < 3; ++t) {
        EXPECT_EQ(fromXml.getTrackType(t), fromNative.getTrackType(t));
    }
    EXPECT_EQ(fromXml.getTrackType(0), 2u);
    EXPECT_EQ(fromXml.getTrackType(2), 3u);

    // Saved and read again, the XML form keeps tracks, lanes, keys and texture.
    {
        TextFileStream stream(intermediateFile("anim/copy.asq.xml").c_str(), Stream::eMode_Write);
        ASSERT_TRUE(xml->save(stream));
    }
    AnimResource* copy = load<AnimResource>("anim/copy");
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->getTexture(), xml->getTexture());
    EXPECT_EQ(nativeLanes(copy), nativeLanes(xml));
}

TEST_F(AnimTest, AnAnimationThatNestsItselfLoadsOnceAndItsInnerNameStaysEmpty)
{
    // The idle sample with its nested animation renamed to itself.
    std::string text = animtest::readSample("idle.asq.xml");
    std::string const nested = "path=\"anim/blink\"";
    text.replace(text.find(nested), nested.size(), "path=\"anim/loop\"");
    animtest::writeFile(intermediateFile("anim/loop.asq.xml"), text);
    AnimResource* loop = load<AnimResource>("anim/loop");
    ASSERT_NE(loop, nullptr);
    AnimSequencer sequencer;
    sequencer.setResource(loop);
    EXPECT_EQ(sequencer.getAnimSequencerNum(), 1u);
    AnimSequencer* inner = trackObject<AnimSequencer>(sequencer, 1);
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->getResource(), nullptr); // the key could not name the file inside its own load
}
