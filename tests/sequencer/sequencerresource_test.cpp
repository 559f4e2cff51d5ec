// The native ".seq" file (layout, refusals, damaged files), the edit
// operations of the intermediate resource with its native mirror, and the
// ".seq.xml" form.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "foundation/utils.h"
#include "resource/resourcesystem.h"
#include "sequencertest.h"
#include "serial/stream.h"

namespace {

using restest::le16;
using restest::le32;

std::string header(u32 tracks, u32 markers, std::string const& data, u32 version = 0)
{
    return "SEQ " + le32(version) + le32(1) + le32(5) + le32(300) + le32(30) + le32(tracks) + le32(markers) +
           le32(static_cast<u32>(data.size())) + data;
}

std::string key(u32 frame, u32 mode, std::string const& parameter)
{
    return le16(frame | (mode << 12)) + parameter;
}

// Two tracks: a Probe with an S32 lane of two keys and a "Fire" lane of one,
// and a Sequencer without lanes; one marker.
std::string sampleFile()
{
    std::string bytes = header(2, 1, std::string("tex\0", 4));
    bytes += le16(0xFFFF) + le16(0x1010) + le16(3) + "\x82\x07"; // JUMP FRAME, reset, count 7
    bytes += le32(Probe::getStaticTypeInfo()->getID()) + le32(2);
    bytes += le32(0) + le32(Utils::hash("S32")) + le16(2) + "\x08\x01";
    bytes += key(10, 1, le16(0) + le32(0xFFFFFF9C)) + key(20, 2, le16(0) + le32(400));
    bytes += le32(1) + le32(Utils::hash("Fire")) + le16(1) + std::string("\x04\x00", 2);
    bytes += key(15, 0, le16(0));
    bytes += le32(Sequencer::getStaticTypeInfo()->getID()) + le32(0);
    return bytes;
}

SequencerResource* loadBytes(std::string const& path, std::string const& bytes)
{
    restest::writeFile(path, bytes);
    SequencerResource* resource = new SequencerResource();
    BinaryFileStream stream(path.c_str(), Stream::eMode_Read);
    if (resource->load(stream)) {
        return resource;
    }
    resource->release();
    return nullptr;
}

std::string saveBytes(SequencerResource* resource, std::string const& path)
{
    {
        BinaryFileStream stream(path.c_str(), Stream::eMode_Write);
        EXPECT_TRUE(resource->save(stream));
    }
    return restest::readFile(path);
}

} // namespace

class NativeFileTest : public SequencerTest {};

TEST_F(NativeFileTest, AWrittenFileReadsBackAsTheSameArrays)
{
    std::string const file = sampleFile();
    SequencerResource* resource = loadBytes(nativeFile("sample.seq"), file);
    ASSERT_NE(resource, nullptr);
    mResources.push_back(resource);
    // Type, start, end, fps.
    EXPECT_EQ((std::vector<u32>{resource->getSequenceType(), resource->getStartFrame(), resource->getEndFrame(),
                                resource->getFPS()}),
              (std::vector<u32>{1, 5, 300, 30}));
    ASSERT_EQ(resource->getTypeDependentDataSize(), 4u);
    EXPECT_STREQ(reinterpret_cast<char const*>(resource->getTypeDependentData()), "tex");
    // Frames are 12 bits wide.
    ASSERT_EQ(resource->getMarkerNum(), 1u);
    sNativeMarker const m = resource->getMarkerArray()[0];
    EXPECT_EQ((std::vector<u32>{m.mFrame, m.mTargetFrame, m.mTargetIndex, m.mType, m.mReset, m.mCount}),
              (std::vector<u32>{4095, 0x010, 3, 2, 1, 7}));
    ASSERT_EQ(resource->getTrackNum(), 2u);
    sNativeTrack const* tracks = resource->getTrackArray();
    EXPECT_EQ(tracks[0].mObjectTypeID, Probe::getStaticTypeInfo()->getID());
    ASSERT_EQ(tracks[0].mLaneNum, 2u);
    EXPECT_EQ(tracks[1].mLaneNum, 0u);
    EXPECT_EQ(tracks[1].mpLaneArray, nullptr);
    sNativeLane const& lane = tracks[0].mpLaneArray[0];
    EXPECT_EQ((std::vector<u32>{lane.mNameHash, lane.mKeyNum, lane.mKeyStride, lane.mKeyInterpolateNum}),
              (std::vector<u32>{Utils::hash("S32"), 2, 8, 1}));
    EXPECT_EQ(std::string(reinterpret_cast<char const*>(lane.mpKeyArray), 16), file.substr(68, 16));
    EXPECT_EQ(tracks[0].mpLaneArray[1].mControlType, 1u);

    // save emits no header and leaves the stride byte of lane records as the
    // record buffer held it.
    std::string expected = file.substr(36);
    expected.replace(4, 4, le16(0xFFF) + le16(0x010)); // the frames as the resource holds them
    expected[66 - 36] = 0;
    expected[94 - 36] = 0;
    EXPECT_EQ(saveBytes(resource, nativeFile("saved.seq")), expected);

    // It plays: the S32 lane binds, the Fire lane fires on its frame.
    Sequencer sequencer;
    Probe::spWatched = &sequencer;
    sequencer.setResource(resource);
    sequencer.seek(15);
    EXPECT_EQ(probe(sequencer)->mS32, 150);
    ASSERT_FALSE(Probe::sFirings.empty());
    EXPECT_EQ(Probe::sFirings.back().mFrame, 15);
    Probe::spWatched = nullptr;
}

TEST_F(NativeFileTest, RefusedFilesLeaveTheResourceEmpty)
{
    // One marker record fills every marker.
    SequencerResource* two = loadBytes(nativeFile("two.seq"), header(0, 2, "") + le16(9) + le16(8) + le16(1) + "\x01\x02" +
                                                                  le16(700) + le16(0) + le16(0) + std::string(2, '\0'));
    ASSERT_NE(two, nullptr);
    mResources.push_back(two);
    EXPECT_EQ(two->getMarkerArray()[1].mFrame, 9u);
    EXPECT_EQ(two->getMarkerArray()[1].mType, 1u);

    struct sCase {
        char const* mName;
        std::string mBytes;
        char const* mTrace;
    } const cases[] = {
        {"magic", "SEQ!" + sampleFile().substr(4), ""},
        {"version", header(0, 0, "", 1), ""},
        {"unknown class", header(1, 0, "") + le32(0x12345678) + le32(0), "Object not found.\n"},
        {"short key block", sampleFile().substr(0, 90), "Sequence file is damaged.\n"},
        {"huge counts", header(0xFFFFFFFF, 0, ""), "Sequence file is damaged.\n"},
        {"end past frame 4095", header(0, 0, "").replace(16, 4, le32(4096)), "Sequence file is damaged.\n"},
        {"start past frame 4095", header(0, 0, "").replace(12, 4, le32(8197)), "Sequence file is damaged.\n"},
    };
    for (sCase const& c : cases) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(loadBytes(nativeFile("refused.seq"), c.mBytes), nullptr) << c.mName;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.mTrace) << c.mName;
    }
    SequencerResource* fresh = new SequencerResource();
    mResources.push_back(fresh);
    fresh->removeAll();
    EXPECT_EQ(fresh->getFPS(), 60u);
    EXPECT_EQ(fresh->getEndFrame(), 0u); // not back to 120
}

// Every truncation and thousands of mutations: each is refused or read and
// played without a read out of bounds (checked under the address sanitizer)
// and without a hang.
TEST_F(NativeFileTest, DamagedFilesAreNeverReadOutOfBounds)
{
    std::string const file = sampleFile();
    std::vector<std::string> variants;
    for (size_t length = 0; length < file.size(); ++length) {
        variants.push_back(file.substr(0, length));
    }
    std::mt19937 random(18);
    for (int i = 0; i < 4000; ++i) {
        std::string variant = file;
        for (int changes = 1 + static_cast<int>(random() % 4); changes > 0; --changes) {
            size_t const at = random() % variant.size();
            variant[at] = static_cast<char>((i % 3 == 0) ? (variant[at] ^ (1 << (random() % 8))) : random());
        }
        variants.push_back(variant);
    }
    u32 loaded = 0;
    testing::internal::CaptureStderr();
    for (std::string const& variant : variants) {
        if (SequencerResource* resource = loadBytes(nativeFile("variant.seq"), variant)) {
            ++loaded;
            Sequencer sequencer;
            sequencer.setResource(resource);
            sequencer.play();
            for (int step = 0; step < 40; ++step) {
                sequencer.update(sFixed(7.5f));
            }
            sequencer.setResource(nullptr);
            resource->release();
        }
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GT(loaded, 100u);
}

class IntermediateTest : public SequencerTest {
protected:
    // The native arrays against the object lists.
    static void expectMirror(SequencerResourceIntermediate const* sequence)
    {
        ObjectList const& tracks = sequence->getTrackList();
        ASSERT_EQ(sequence->getTrackNum(), tracks.size());
        for (u32 t = 0; t < tracks.size(); ++t) {
            SequencerTrack const* track = static_cast<SequencerTrack const*>(tracks[t]);
            sNativeTrack const& native = sequence->getTrackArray()[t];
            EXPECT_EQ(native.mObjectTypeID, track->mObjectTypeID);
            ASSERT_EQ(native.mLaneNum, track->mLaneList.size());
            for (u32 l = 0; l < native.mLaneNum; ++l) {
                SequencerLane const* lane = static_cast<SequencerLane const*>(track->mLaneList[l]);
                sNativeLane const& nativeLane = native.mpLaneArray[l];
                EXPECT_EQ(nativeLane.mNameHash, lane->mControlName.hash());
                EXPECT_EQ(nativeLane.mKeyStride, lane->mKeyStride);
                ASSERT_EQ(nativeLane.mKeyNum, lane->mKeyList.size());
                for (u32 k = 0; k < nativeLane.mKeyNum; ++k) {
                    SequencerKey* key = static_cast<SequencerKey*>(lane->mKeyList[k]);
                    u8 const* bytes = nativeLane.mpKeyArray + k * nativeLane.mKeyStride;
                    EXPECT_EQ(SequencerResource::getKeyFrame(bytes), key->getFrame() & 0xFFFu);
                    EXPECT_EQ(SequencerResource::getKeyInterpolateType(bytes), key->getInterpolateType());
                    if (key->getParameterSize() >= 4) {
                        EXPECT_EQ(memcmp(bytes + 4, key->getParameter(), key->getParameterSize()), 0);
                    }
                }
            }
        }
        List<SequencerMarker> const& markers = sequence->getMarkerList();
        ASSERT_EQ(sequence->getMarkerNum(), markers.size());
    }

    static std::vector<std::string> trackNames(SequencerResourceIntermediate const* sequence)
    {
        std::vector<std::string> names;
        for (ObjectList::Iterator it = sequence->getTrackList().begin(); it != sequence->getTrackList().end(); ++it) {
            names.push_back(static_cast<SequencerTrack*>(*it)->mTrackName.c_str());
        }
        return names;
    }

    static std::vector<u32> keyFrames(SequencerResourceIntermediate const* sequence, char const* lane)
    {
        std::vector<u32> frames;
        sNativeLane const* native = sequence->findNativeLane("p", lane);
        for (u32 k = 0; native != nullptr && k < native->mKeyNum; ++k) {
            frames.push_back(SequencerResource::getKeyFrame(native->mpKeyArray + k * native->mKeyStride));
        }
        return frames;
    }
};

TEST_F(IntermediateTest, EditsKeepTheNativeArraysInStep)
{
    SequencerResourceIntermediate* sequence = makeSequence();
    for (char const* name : {"a", "b", "c"}) {
        sequence->addTrack(Probe::getStaticTypeInfo(), name);
    }
    sequence->addTrack(Probe::getStaticTypeInfo(), ""); // no name, no track
    sequence->moveTrackToFirst("c");
    sequence->moveTrackBackward("p");
    sequence->moveTrackForward("c"); // already first
    sequence->moveTrackToLast("a");
    EXPECT_EQ(trackNames(sequence), (std::vector<std::string>{"c", "p", "b", "a"}));
    sequence->removeTrack("b");
    expectMirror(sequence);

    for (char const* lane : {"S32", "Bool", "U8", "Rect", "Fire", "S32"}) {
        addLane(sequence, lane);
    }
    sequence->moveLaneToFirst("p", "Rect");
    sequence->moveLaneBackward("p", "Rect");
    EXPECT_EQ(sequence->findLane("p", "Rect"), static_cast<SequencerTrack*>(sequence->getTrackList()[1])->mLaneList[1]);
    for (u32 frame : {30u, 10u, 20u, 5000u}) { // 5000 keeps its low 12 bits natively
        addKey(sequence, "S32", frame, SequencerResource::eInterpolateType_Linear, static_cast<s32>(frame));
        addKey(sequence, "Rect", frame, SequencerResource::eInterpolateType_Hermite, sRect(1, 2, 3, static_cast<int>(frame)));
    }
    EXPECT_EQ(keyFrames(sequence, "S32"), (std::vector<u32>{10, 20, 30, 5000 & 0xFFF}));
    sequence->clearModify();
    sequence->addKey("p", "S32", 20, SequencerResource::eInterpolateType_Constant);
    EXPECT_FALSE(sequence->isModified()) << "a second key on a frame is refused before any change";
    sequence->moveKey("p", "S32", 30, 15);
    sequence->moveKey("p", "Rect", 10, 40);
    sequence->removeKey("p", "S32", 5000);
    sequence->setKeyInterpolateType("p", "S32", 15, SequencerResource::eInterpolateType_Trigger);
    EXPECT_EQ(keyFrames(sequence, "S32"), (std::vector<u32>{10, 15, 20}));
    EXPECT_EQ(keyFrames(sequence, "Rect"), (std::vector<u32>{20, 30, 40, 5000 & 0xFFF}));
    expectMirror(sequence);

    // One-byte keys sit at offset 2; bool stores 1 only for 1.
    u8 const two = 2;
    sequence->addKey("p", "Bool", 0, SequencerResource::eInterpolateType_Constant);
    sequence->setKeyParameter("p", "Bool", 0, &two);
    EXPECT_EQ(sequence->findNativeKey("p", "Bool", 0)[2], 0);
    addKey(sequence, "U8", 0, SequencerResource::eInterpolateType_Constant, u8(200));
    EXPECT_EQ(sequence->findNativeKey("p", "U8", 0)[2], 200);
    EXPECT_EQ(SequencerResource::getKeyParameter(sequence->findNativeKey("p", "U8", 0), ePropertyType_U8), nullptr);
    EXPECT_EQ(SequencerResource::getKeyParameter(sequence->findNativeKey("p", "Bool", 0), ePropertyType_Bool), nullptr);

    sequence->removeLane("p", "Bool");
    sequence->removeAllKey("p", "Rect");
    expectMirror(sequence);
    sequence->removeAllLane("p");
    expectMirror(sequence);
    EXPECT_EQ(sequence->findNativeTrack("p")->mpLaneArray, nullptr);
}

TEST_F(IntermediateTest, MarkerEditsKeepNamesAndIndicesAsPlaybackSeesThem)
{
    SequencerResourceIntermediate* sequence = makeSequence();
    sequence->addMarker("loop", 40);
    sequence->addMarker("start", 10);
    sequence->addMarker("jump", 30);
    sequence->setMarkerType("jump", SequencerResource::eMarkerType_JumpTarget);
    sequence->setMarkerTargetName("jump", "loop");
    EXPECT_EQ(sequence->findNativeMarker("jump")->mTargetIndex, 2u);
    sequence->setMarkerName("loop", "again");
    EXPECT_EQ(sequence->findMarker("jump")->mTargetMarkerName, "again");
    sequence->setMarkerName("again", "start"); // taken: nothing happens
    EXPECT_NE(sequence->findMarker("again"), nullptr);
    // The list shows a moved marker's new frame; the record keeps its old one.
    sequence->moveMarker("again", 5);
    EXPECT_EQ(sequence->findMarkerBlock(7), sequence->findMarker("again"));
    EXPECT_EQ(sequence->findNativeMarker("again")->mFrame, 40u);
    EXPECT_EQ(sequence->findNativeMarker("jump")->mTargetIndex, 0u);
    sequence->setMarkerTargetName("jump", "nowhere");
    EXPECT_EQ(sequence->findNativeMarker("jump")->mTargetIndex, 0xFFFFu);
    sequence->removeMarker("start");
    expectMirror(sequence);
    sequence->removeAllMarker();
    EXPECT_EQ(sequence->getMarkerArray(), nullptr);
    expectMirror(sequence);
}

// The user story of the sequence file: edit, save, open again, play the same.
TEST_F(IntermediateTest, ASavedSequencePlaysTheSameAfterLoadingWithoutMarkers)
{
    SequencerResourceIntermediate* sequence = makeSequence(60);
    sequence->setFPS(24);
    for (char const* lane : {"S32", "Color", "Vector", "Fixed", "Bool", "U16", "Fire"}) {
        addLane(sequence, lane);
    }
    addKey(sequence, "S32", 0, SequencerResource::eInterpolateType_Hermite, -40);
    addKey(sequence, "S32", 20, SequencerResource::eInterpolateType_Hermite, 400);
    addKey(sequence, "S32", 45, SequencerResource::eInterpolateType_Linear, 7);
    addKey(sequence, "Color", 5, SequencerResource::eInterpolateType_Linear, sColor(0, 50, 100, 255));
    addKey(sequence, "Color", 50, SequencerResource::eInterpolateType_Linear, sColor(255, 0, 10, 0));
    addKey(sequence, "Vector", 0, SequencerResource::eInterpolateType_Hermite, sVector(sFixed(1.5f), sFixed(-2.0f)));
    addKey(sequence, "Vector", 60, SequencerResource::eInterpolateType_Hermite, sVector(sFixed(-8.0f), sFixed(3.25f)));
    addKey(sequence, "Fixed", 12, SequencerResource::eInterpolateType_Trigger, sFixed(2.0f));
    addKey(sequence, "Bool", 30, SequencerResource::eInterpolateType_Constant, true);
    addKey(sequence, "U16", 10, SequencerResource::eInterpolateType_Linear, u16(1000));
    addKey(sequence, "U16", 30, SequencerResource::eInterpolateType_Linear, u16(3));
    addTriggerKey(sequence, "Fire", 33);
    sequence->addTrack(Probe::getStaticTypeInfo(), "empty");
    sequence->addMarker("m", 25);
    {
        restest::writeFile(intermediateFile("story.seq.xml"), "");
        TextFileStream file(intermediateFile("story.seq.xml").c_str(), Stream::eMode_Write);
        ASSERT_TRUE(sequence->save(file));
    }
    ResourceBase* resource =
        ResourceSystem::getInstance()->createResource(local("story").c_str(), SequencerResourceIntermediate::getStaticTypeInfo());
    ASSERT_NE(resource, nullptr);
    SequencerResourceIntermediate* loaded = static_cast<SequencerResourceIntermediate*>(resource);
    mResources.push_back(loaded);
    EXPECT_EQ(loaded->getMarkerNum(), 0u);
    EXPECT_EQ(loaded->getFPS(), 24u);
    EXPECT_FALSE(loaded->isModified());
    expectMirror(loaded);

    sequence->removeAllMarker();
    Sequencer original;
    Sequencer reloaded;
    original.setResource(sequence);
    reloaded.setResource(loaded);
    for (u32 frame = 0; frame <= 60; ++frame) {
        original.seek(frame);
        reloaded.seek(frame);
        Probe const* a = probe(original);
        Probe const* b = probe(reloaded);
        EXPECT_EQ(a->mS32, b->mS32) << frame;
        EXPECT_EQ(static_cast<unsigned int>(a->mColor), static_cast<unsigned int>(b->mColor)) << frame;
        EXPECT_EQ(a->mVector, b->mVector) << frame;
        EXPECT_EQ(a->mFixed, b->mFixed) << frame;
        // The object form reads a saved bool back inverted, and a bool key with it.
        EXPECT_NE(a->mBool, b->mBool) << frame;
        EXPECT_EQ(a->mU16, b->mU16) << frame;
    }
}

TEST_F(IntermediateTest, DamagedXmlEntriesAreDroppedWithTraces)
{
    SequencerResourceIntermediate* sequence = makeSequence();
    addLane(sequence, "S32");
    addKey(sequence, "S32", 3, SequencerResource::eInterpolateType_Linear, 5);
    addKey(sequence, "S32", 9, SequencerResource::eInterpolateType_Linear, 6);
    sequence->addTrack(Sequencer::getStaticTypeInfo(), "gone");
    std::string text;
    {
        restest::writeFile(intermediateFile("good.seq.xml"), "");
        TextFileStream file(intermediateFile("good.seq.xml").c_str(), Stream::eMode_Write);
        sequence->save(file);
    }
    text = restest::readFile(intermediateFile("good.seq.xml"));
    auto replace = [&](std::string from, std::string to) {
        size_t const at = text.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        text.replace(at, from.size(), to);
    };
    // An unknown class for the second track, a key of another class.
    size_t const gone = text.find("object_type_id", text.find("\"gone\""));
    size_t const quote = text.find("value=\"", gone) + 7;
    text.replace(quote, text.find('"', quote) - quote, "12345");
    replace("SequencerUniqueKey<s32>", "SequencerUniqueKey<u8>");
    restest::writeFile(intermediateFile("bad.seq.xml"), text);
    testing::internal::CaptureStderr();
    ResourceBase* resource =
        ResourceSystem::getInstance()->createResource(local("bad").c_str(), SequencerResourceIntermediate::getStaticTypeInfo());
    std::string const traces = testing::internal::GetCapturedStderr();
    ASSERT_NE(resource, nullptr);
    SequencerResourceIntermediate* loaded = static_cast<SequencerResourceIntermediate*>(resource);
    mResources.push_back(loaded);
    EXPECT_NE(traces.find("Invalid typeinfo detected.\n"), std::string::npos) << traces;
    EXPECT_EQ(loaded->getTrackNum(), 1u);
    EXPECT_EQ(loaded->findNativeLane("p", "S32")->mKeyNum, 1u);
    expectMirror(loaded);
}
