// Playback: values between and outside keys for each interpolation mode and
// value type, trigger firing, markers with counts and reset, seek, the end of
// the sequence, nested sequencers and live edits.
#include <gtest/gtest.h>

#include <filesystem>

#include "app/application.h"
#include "reflection/control.h"
#include "resource/resourcesystem.h"
#include "sequencertest.h"
#include "serial/stream.h"

namespace {

typedef SequencerResource::eInterpolateType eMode;
eMode const kConstant = SequencerResource::eInterpolateType_Constant;
eMode const kLinear = SequencerResource::eInterpolateType_Linear;
eMode const kHermite = SequencerResource::eInterpolateType_Hermite;
eMode const kTrigger = SequencerResource::eInterpolateType_Trigger;

} // namespace

class PlaybackTest : public SequencerTest {
protected:
    // Keys on lane at the given frames, all of one mode; the value after
    // seeking to frame.
    template <typename T>
    T valueAt(char const* lane, T Probe::*field, eMode mode, std::vector<std::pair<u32, T>> const& keys, u32 frame)
    {
        SequencerResourceIntermediate* sequence = makeSequence();
        addLane(sequence, lane);
        for (auto const& key : keys) {
            addKey(sequence, lane, key.first, mode, key.second);
        }
        Sequencer sequencer;
        sequencer.setResource(sequence);
        sequencer.seek(frame);
        return probe(sequencer)->*field;
    }

    // Plays in steps of step frames and notes the whole frame after each.
    // The resource's edit mark lasts one update, as in the frame loop.
    static std::vector<int> play(Sequencer& sequencer, u32 steps, float step = 1.0f)
    {
        std::vector<int> frames;
        sequencer.play();
        for (u32 i = 0; i < steps; ++i) {
            sequencer.update(sFixed(step));
            sequencer.getResource()->clearUpdate();
            frames.push_back(static_cast<int>(sequencer.getCurrentFrame()));
        }
        return frames;
    }
};

TEST_F(PlaybackTest, ValuesBetweenAndOutsideKeysFollowTheModeAndType)
{
    typedef std::vector<std::pair<u32, s32>> S32Keys;
    S32Keys const rising = {{10, 0}, {20, 1000}};
    S32Keys const three = {{10, 100}, {20, 0}, {30, 50}};
    // Before the first key, the first key's value; after the last, the last's.
    EXPECT_EQ(valueAt("S32", &Probe::mS32, kLinear, rising, 5), 0);
    EXPECT_EQ(valueAt("S32", &Probe::mS32, kLinear, rising, 40), 1000);
    EXPECT_EQ(valueAt("S32", &Probe::mS32, kHermite, rising, 40), 1000);
    EXPECT_EQ(valueAt("S32", &Probe::mS32, kConstant, rising, 19), 0);
    EXPECT_EQ(valueAt("S32", &Probe::mS32, kLinear, rising, 12), 200);
    // Without neighbours both tangents are 0: 3t^2 - 2t^3 of the difference.
    EXPECT_EQ(valueAt("S32", &Probe::mS32, kHermite, rising, 12), 104);
    // Tangent from the following key: 0.5 * (50 - 100).
    EXPECT_EQ(valueAt("S32", &Probe::mS32, kHermite, three, 15), 53);
    EXPECT_EQ(valueAt("S32", &Probe::mS32, kLinear, {{10, 100}, {20, -100}}, 15), 0);

    // Unsigned differences of falling keys come out near 2^32.
    EXPECT_EQ(valueAt("U8", &Probe::mU8, kLinear, {{10, 100}, {20, 200}}, 15), 150);
    EXPECT_EQ(valueAt("U8", &Probe::mU8, kLinear, {{10, 200}, {20, 100}}, 15), 0);
    EXPECT_EQ(valueAt("U32", &Probe::mU32, kLinear, {{10, 200u}, {20, 100u}}, 15), 2147483904u);
    EXPECT_EQ(valueAt("U16", &Probe::mU16, kConstant, {{10, 7}, {20, 9}}, 15), 7);
    EXPECT_EQ(valueAt("S8", &Probe::mS8, kLinear, {{10, -100}, {20, 100}}, 15), 0);

    EXPECT_EQ(valueAt("Fixed", &Probe::mFixed, kLinear, {{10, sFixed(1.0f)}, {20, sFixed(3.0f)}}, 15), sFixed(2.0f));
    EXPECT_EQ(valueAt("F64", &Probe::mF64, kLinear, {{10, 1.0}, {20, 2.0}}, 15), 1.5);

    EXPECT_EQ(valueAt("Point", &Probe::mPoint, kLinear, {{10, sPoint(0, 0)}, {20, sPoint(10, -10)}}, 15), sPoint(5, -5));
    EXPECT_EQ(valueAt("Vector", &Probe::mVector, kLinear, {{10, sVector(sFixed(0.0f), sFixed(0.0f))}, {20, sVector(sFixed(1.0f), sFixed(2.0f))}}, 15),
              sVector(sFixed(0.5f), sFixed(1.0f)));
    EXPECT_EQ(valueAt("Rect", &Probe::mRect, kLinear, {{10, sRect(0, 0, 10, 10)}, {20, sRect(10, 20, 30, 40)}}, 15),
              sRect(5, 10, 20, 25));
    // Channels are truncated, not rounded: 255 - 127.5.
    EXPECT_EQ(valueAt("Color", &Probe::mColor, kLinear, {{10, sColor(0, 0, 0, 255)}, {20, sColor(200, 100, 50, 0)}}, 15),
              sColor(100, 50, 25, 127));
    // The following tangent of a compound type is an element difference:
    // signed for points, unsigned for sizes (which then fall below 0 to 0).
    EXPECT_EQ(valueAt("Point", &Probe::mPoint, kHermite, {{10, sPoint(100, 100)}, {20, sPoint(0, 0)}, {30, sPoint(50, 50)}}, 15),
              sPoint(53, 53));
    EXPECT_EQ(valueAt("Size", &Probe::mSize, kHermite, {{10, sSize(100, 100)}, {20, sSize(0, 0)}, {30, sSize(50, 50)}}, 15),
              sSize(0, 0));
}

TEST_F(PlaybackTest, FractionalPositionsInterpolateAndTriggerModeKeysWaitForTheirFrame)
{
    SequencerResourceIntermediate* sequence = makeSequence();
    addLane(sequence, "F32");
    addKey(sequence, "F32", 10, kLinear, 1.0f);
    addKey(sequence, "F32", 20, kLinear, 2.0f);
    addLane(sequence, "S32");
    addKey(sequence, "S32", 10, kConstant, 1);
    addKey(sequence, "S32", 20, kTrigger, 2);
    addKey(sequence, "S32", 30, kConstant, 3);
    Sequencer sequencer;
    sequencer.setResource(sequence);
    sequencer.seek(15);
    play(sequencer, 1, 0.5f);
    EXPECT_FLOAT_EQ(probe(sequencer)->mF32, 1.55f);

    // Steps of 3 from 10 skip frame 20: its value never shows before frame 30.
    sequencer.seek(10);
    std::vector<s32> values;
    for (int i = 0; i < 7; ++i) {
        play(sequencer, 1, 3.0f);
        values.push_back(probe(sequencer)->mS32);
    }
    EXPECT_EQ(values, (std::vector<s32>{1, 1, 1, 1, 1, 1, 3}));
    // Steps of 1 land on it.
    sequencer.seek(18);
    play(sequencer, 2);
    EXPECT_EQ(probe(sequencer)->mS32, 2);
}

TEST_F(PlaybackTest, TriggersFireOnLandingAndWhileApproachingTheirKeys)
{
    struct sCase {
        std::vector<u32> mKeys;
        std::vector<int> mFired;
    } const cases[] = {
        {{10, 20, 30}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 15, 17, 19, 20, 21, 23, 25, 27, 29}},
        {{10}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
        {{0}, {0}}, // once, at the zero step of setResource
    };
    for (sCase const& c : cases) {
        SequencerResourceIntermediate* sequence = makeSequence();
        addLane(sequence, "Fire");
        for (u32 frame : c.mKeys) {
            addTriggerKey(sequence, "Fire", frame);
        }
        Probe::sFirings.clear();
        Sequencer sequencer;
        Probe::spWatched = &sequencer;
        sequencer.setResource(sequence);
        play(sequencer, 40);
        EXPECT_EQ(firedFrames(), c.mFired) << c.mKeys.size() << " keys";
        Probe::spWatched = nullptr;
    }
    // The argument of a u32 trigger is the key's parameter.
    SequencerResourceIntermediate* sequence = makeSequence();
    addLane(sequence, "Count");
    addTriggerKey(sequence, "Count", 3, 77);
    Probe::sFirings.clear();
    Sequencer sequencer;
    sequencer.setResource(sequence);
    ASSERT_FALSE(Probe::sFirings.empty());
    EXPECT_EQ(Probe::sFirings[0].mArgument, 77u);
}

TEST_F(PlaybackTest, MarkersJumpByTypeCountAndReset)
{
    // Which marker sent playback back, by its destination, over 130 steps.
    auto jumps = [&](u8 count, bool reset) {
        SequencerResourceIntermediate* sequence = makeSequence(200);
        sequence->addMarker("A", 20);
        sequence->setMarkerType("A", SequencerResource::eMarkerType_JumpFrame);
        sequence->setMarkerTargetFrame("A", 10);
        sequence->setMarkerCount("A", count);
        sequence->setMarkerReset("A", reset);
        sequence->addMarker("B", 40);
        sequence->setMarkerType("B", SequencerResource::eMarkerType_JumpFrame);
        Sequencer sequencer;
        sequencer.setResource(sequence);
        std::string order;
        int previous = 0;
        for (int frame : play(sequencer, 130)) {
            if (frame < previous) {
                order += (frame == 10) ? 'A' : 'B';
            }
            previous = frame;
        }
        return order;
    };
    EXPECT_EQ(jumps(2, false), "AABB");
    EXPECT_EQ(jumps(2, true), "AABAAB");
    EXPECT_EQ(jumps(0, false), std::string(12, 'A'));

    SequencerResourceIntermediate* sequence = makeSequence(200);
    sequence->addMarker("T", 5);
    sequence->addMarker("J", 30);
    sequence->setMarkerTargetName("J", "T");
    sequence->setMarkerType("J", SequencerResource::eMarkerType_JumpTarget);
    sequence->addMarker("F", 50);
    sequence->setMarkerType("F", SequencerResource::eMarkerType_JumpFrame);
    sequence->setMarkerTargetFrame("F", 10);
    sequence->setMarkerCount("J", 1);
    Sequencer sequencer;
    sequencer.setResource(sequence);
    // The overshoot carries across the jump: 48 + 2.5 is 10.5.
    sequencer.seek(48);
    play(sequencer, 1, 2.5f);
    EXPECT_EQ(sequencer.getCurrentFrame(), sFixed(10.5f));
    // A JUMP TARGET goes to its marker's frame, once with a count of 1.
    sequencer.seek(29);
    EXPECT_EQ(play(sequencer, 2), (std::vector<int>{5, 6}));
    sequencer.seek(29);
    EXPECT_EQ(play(sequencer, 2), (std::vector<int>{30, 31}));
    // resetMarkerCount lets it act again; a target name that names no marker
    // makes the jump impossible.
    sequencer.resetMarkerCount();
    sequencer.seek(29);
    EXPECT_EQ(play(sequencer, 1), (std::vector<int>{5}));
    sequence->setMarkerTargetName("J", "nowhere");
    sequencer.update(sFixed::Zero);
    sequencer.resetMarkerCount();
    sequencer.seek(29);
    EXPECT_EQ(play(sequencer, 1), (std::vector<int>{30}));
    // Seeking onto a jump marker never jumps.
    sequencer.seek(50);
    EXPECT_EQ(static_cast<int>(sequencer.getCurrentFrame()), 50);
}

TEST_F(PlaybackTest, AStepAcrossMarkersAppliesLanesAtEachMarkerFrame)
{
    SequencerResourceIntermediate* sequence = makeSequence();
    addLane(sequence, "Count");
    for (u32 frame : {10u, 20u, 30u}) {
        addTriggerKey(sequence, "Count", frame, frame);
        sequence->addMarker(AutoString(std::to_string(frame).c_str()), frame);
    }
    Sequencer sequencer;
    Probe::spWatched = &sequencer;
    sequencer.setResource(sequence);
    Probe::sFirings.clear();
    play(sequencer, 1, 35.0f);
    EXPECT_EQ(firedFrames(), (std::vector<int>{10, 20, 30}));

    // Two markers on one frame: the search lands on the last, so only the
    // second acts.
    sequence = makeSequence();
    sequence->addMarker("first", 20);
    sequence->setMarkerType("first", SequencerResource::eMarkerType_JumpFrame);
    sequence->setMarkerTargetFrame("first", 5);
    sequence->addMarker("second", 20);
    sequence->setMarkerType("second", SequencerResource::eMarkerType_JumpFrame);
    sequence->setMarkerTargetFrame("second", 15);
    Sequencer twice;
    twice.setResource(sequence);
    twice.seek(19);
    EXPECT_EQ(play(twice, 1), (std::vector<int>{15}));
}

TEST_F(PlaybackTest, TheEndFrameStopsPlaybackAfterLanesWentPastIt)
{
    SequencerResourceIntermediate* sequence = makeSequence(100);
    addLane(sequence, "S32");
    addKey(sequence, "S32", 0, kLinear, 0);
    addKey(sequence, "S32", 200, kLinear, 200);
    Sequencer sequencer;
    sequencer.setResource(sequence);
    sequencer.seek(99);
    EXPECT_EQ(play(sequencer, 1), (std::vector<int>{100}));
    EXPECT_TRUE(sequencer.isPlaying());
    EXPECT_EQ(play(sequencer, 1), (std::vector<int>{100}));
    EXPECT_FALSE(sequencer.isPlaying());
    EXPECT_EQ(probe(sequencer)->mS32, 101);
    // Without a resource nothing plays.
    Sequencer empty;
    empty.play();
    EXPECT_FALSE(empty.isPlaying());
}

// The user story of the timeline: a sequence that drives a nested sequence
// from a file, edited while it plays.
TEST_F(PlaybackTest, NestedSequencesStepWithTheirParentAndEditsShowAtTheNextUpdate)
{
    SequencerResourceIntermediate* inner = makeSequence(300);
    addLane(inner, "S32");
    addKey(inner, "S32", 0, kLinear, 0);
    addKey(inner, "S32", 300, kLinear, 3000);
    inner->setFPS(30); // a nested sequence steps with its parent whatever its fps
    {
        restest::writeFile(intermediateFile("inner.seq.xml"), "");
        TextFileStream file(intermediateFile("inner.seq.xml").c_str(), Stream::eMode_Write);
        ASSERT_TRUE(inner->save(file));
    }
    ResourceSystem* system = ResourceSystem::getInstance();
    ResourceBase* loaded = system->createResource(local("inner").c_str(), SequencerResourceIntermediate::getStaticTypeInfo());
    ASSERT_NE(loaded, nullptr);
    mResources.push_back(static_cast<SequencerResource*>(loaded));

    SequencerResourceIntermediate* outer = makeSequence(300);
    outer->addTrack(Sequencer::getStaticTypeInfo(), "child");
    Sequencer lanes;
    List<ControlBase> controls;
    lanes.makeControlList(controls);
    for (LinkIterator<ControlBase> it = controls.begin(); it != controls.end(); ++it) {
        outer->addLane("child", *it);
        delete *it;
    }
    outer->addKey("child", "Resource", 0, kConstant);
    static_cast<SequencerUniqueKey<ResourceBase>*>(outer->findKey("child", "Resource", 0))->setResource(loaded);
    outer->setKeyParameter("child", "Resource", 0, nullptr);
    outer->addKey("child", "Play", 0, kConstant);
    addLane(outer, "S32");
    addKey(outer, "S32", 0, kLinear, 0);
    addKey(outer, "S32", 100, kLinear, 100);

    Sequencer sequencer;
    sequencer.setResource(outer);
    Sequencer* child = static_cast<Sequencer*>(sequencer.getTrackArray()[1].mpObject);
    ASSERT_EQ(child->getResource(), loaded);
    sequencer.play();
    for (int frame = 1; frame <= 20; ++frame) {
        outer->clearUpdate(); // as the frame loop does once a frame
        sequencer.update(sFixed(1.0f));
    }
    EXPECT_EQ(child->getResource(), loaded);
    EXPECT_EQ(static_cast<int>(child->getCurrentFrame()), 20);
    EXPECT_EQ(probe(*child)->mS32, 200);

    // An edit while playing shows in the next update, paused or not.
    s32 const moved = 1000;
    outer->setKeyParameter("p", "S32", 100, &moved);
    sequencer.update(sFixed(1.0f));
    EXPECT_EQ(probe(sequencer)->mS32, 210);
    outer->clearUpdate();
    sequencer.stop();
    outer->moveKey("p", "S32", 100, 21);
    sequencer.update(sFixed(1.0f));
    EXPECT_EQ(probe(sequencer)->mS32, 1000);
}

// The shipped samples (scripts/make_sequences.py): a parent that sets and
// starts a nested child, in the XML and the native form.
TEST_F(PlaybackTest, TheSampleSequencesDriveTheirNestedChild)
{
    std::string const samples = Application::getInstance()->getIntermediatePath() + std::string("samples/");
    for (char const* name : {"seq_child.seq.xml", "seq_nested.seq.xml"}) {
        restest::writeFile(samples + name, restest::readSample(name));
    }
    SequencerResource* native = new SequencerResource();
    mResources.push_back(native);
    {
        restest::writeFile(nativeFile("nested.seq"), restest::readSample("seq_nested.seq"));
        BinaryFileStream file(nativeFile("nested.seq").c_str(), Stream::eMode_Read);
        ASSERT_TRUE(native->load(file));
    }
    ResourceBase* xml =
        ResourceSystem::getInstance()->createResource("samples/seq_nested", SequencerResourceIntermediate::getStaticTypeInfo());
    ASSERT_NE(xml, nullptr);
    mResources.push_back(static_cast<SequencerResource*>(xml));
    for (SequencerResource* resource : {native, static_cast<SequencerResource*>(xml)}) {
        Sequencer sequencer;
        sequencer.setResource(resource);
        Sequencer const* child = static_cast<Sequencer*>(sequencer.getTrackArray()[0].mpObject);
        ASSERT_NE(child->getResource(), nullptr);
        EXPECT_STREQ(child->getResource()->getPath().c_str(), "intermediate/samples/seq_child.seq.xml");
        EXPECT_TRUE(child->isPlaying());
        play(sequencer, 59);
        EXPECT_EQ(static_cast<int>(child->getCurrentFrame()), 59);
        EXPECT_EQ(child, sequencer.getTrackArray()[0].mpObject);
    }
    std::filesystem::remove_all(samples);
}
