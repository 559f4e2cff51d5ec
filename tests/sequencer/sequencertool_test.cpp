// The timeline editor over live sequences: commands without their selection,
// keys added, typed into and moved in both forms, tracks removed and rows
// rebuilt, the names of new markers, scrubbing, wheel and target markers, and
// damaged files opened without harm.
#include <cstring>
#include <string>

#include "foundation/utils.h"
#include "reflection/property.h"
#include "resource/resourcesystem.h"
#include "sequencer/sequencertool.h"
#include "sequencertest.h"
#include "serial/stream.h"
#include "ui/uicontrol.h"
#include "ui/uimessage.h"
#include "ui/uiscrollbar.h"
#include "ui/uishortcut.h"
#include "ui/uisystem.h"

namespace {

class SequencerToolTest : public SequencerTest {
protected:
    void SetUp() override
    {
        SequencerTest::SetUp();
        mpUI = UISystem::create();
    }
    void TearDown() override
    {
        mpUI->removeAllWindow();
        mpUI->destroy();
        SequencerTest::TearDown();
    }
    // A tool on the screen over the resource (none for null), laid out.
    SequencerTool* open(SequencerResourceIntermediate* resource)
    {
        SequencerTool* tool = new SequencerTool();
        tool->setManagedResource(resource);
        mpUI->addWindow(tool);
        mpUI->preprocess();
        // The first update sizes the forms, the second lays their rows out.
        tool->update(0.0f);
        tool->update(0.0f);
        return tool;
    }
    // A sequence with the Probe track "p" and its lanes "U32" and "Fire".
    SequencerResourceIntermediate* makeLanes(u32 end = 300)
    {
        SequencerResourceIntermediate* sequence = makeSequence(end);
        addLane(sequence, "U32");
        addLane(sequence, "Fire");
        return sequence;
    }
    static SequencerLane* lane(SequencerResourceIntermediate* sequence, char const* name)
    {
        return sequence->findLane("p", name);
    }
    static u32 nativeFrame(SequencerResourceIntermediate* sequence, char const* name, u32 frame)
    {
        u8 const* key = sequence->findNativeKey("p", name, frame);
        return key != nullptr ? SequencerResource::getKeyFrame(key) : 0xFFFFu;
    }
    // The widget of the group whose property has the name.
    static UIControl* findControl(UIGroup* group, char const* name)
    {
        for (List<UIBase>::Iterator it = group->getChildrenBegin(); it != group->getChildrenEnd(); ++it) {
            UIControl* control = static_cast<UIControl*>(*it);
            if (control->getProperty() != nullptr && control->getProperty()->getName() != nullptr &&
                std::string(control->getProperty()->getName()) == name) {
                return control;
            }
        }
        return nullptr;
    }
    // Types a frame into the selected key's "frame" field, between the two
    // messages that bracket an edit.
    static void typeKeyFrame(SequencerTool* tool, u16 frame)
    {
        UIControl* control = findControl(tool->getControlForm()->getKeyGroup(), "frame");
        ASSERT_NE(control, nullptr);
        UINumericControl* field =
            static_cast<UINumericControl*>(static_cast<UIParameterControl*>(control)->getValueControl());
        uNumeric typed;
        typed.mU64 = 0;
        typed.mU16 = frame;
        field->sendMessage(UIBeginEditMessage());
        field->setNumeric(typed);
        field->sendMessage(UIEndEditMessage());
    }
    unsigned int shownGroups(SequencerTool* tool) const
    {
        return tool->getControlForm()->getClientHolder()->getChildCount();
    }

    UISystem* mpUI = nullptr;
};

TEST_F(SequencerToolTest, CommandsWithoutTheirSelectionDoNothing)
{
    void (SequencerTool::*const needSelection[])() = {
        &SequencerTool::eventRemoveMarker,   &SequencerTool::eventRemoveTrack,    &SequencerTool::eventAddLane,
        &SequencerTool::eventRemoveLane,     &SequencerTool::eventAddAllLane,     &SequencerTool::eventRemoveAllLane,
        &SequencerTool::eventAddKey,         &SequencerTool::eventRemoveKey,      &SequencerTool::eventRemoveAllKey,
        &SequencerTool::eventAddKeyAllLane,  &SequencerTool::seekNextTargetMarker,
        &SequencerTool::seekPreviousTargetMarker, &SequencerTool::eventResetMarkerCount,
    };
    // An empty resource: nothing is selected, so nothing changes and no
    // dialog opens.
    SequencerResourceIntermediate* empty = new SequencerResourceIntermediate();
    mResources.push_back(empty);
    SequencerTool* tool = open(empty);
    for (auto command : needSelection) {
        (tool->*command)();
        tool->update(0.0f);
    }
    tool->moveSelectKey(5);
    EXPECT_FALSE(empty->isModified());
    EXPECT_EQ(empty->getTrackNum(), 0u);
    EXPECT_EQ(empty->getMarkerNum(), 0u);
    EXPECT_EQ(mpUI->getWindowList().size(), 1u);
    EXPECT_EQ(tool->getTrackForm()->getTrackCount(), 0u);

    // Opened without a file, the tool starts a new sequence of its class.
    // Handed none afterwards, even the commands that need no selection do
    // nothing.
    SequencerTool* bare = open(nullptr);
    ASSERT_NE(bare->getResource(), nullptr);
    EXPECT_EQ(bare->getResource()->getTypeInfo(), SequencerResourceIntermediate::getStaticTypeInfo());
    EXPECT_FALSE(bare->getResource()->isModified());
    bare->setResource(nullptr);
    for (auto command : {&SequencerTool::eventAddMarker, &SequencerTool::eventAddTrack,
                         &SequencerTool::eventAddSequencerTrack, &SequencerTool::togglePlay,
                         &SequencerTool::seekStart, &SequencerTool::seekEnd, &SequencerTool::selectMarkerTrack}) {
        (bare->*command)();
    }
    for (auto command : needSelection) {
        (bare->*command)();
    }
    bare->update(0.0f);
    EXPECT_EQ(bare->getResource(), nullptr);
    EXPECT_EQ(bare->getCurrentFrame(), 0u);
}

// A key takes what the object shows; a second "Add Key" at the frame is
// refused; a frame typed into the key's control moves it in both forms.
TEST_F(SequencerToolTest, KeysAreAddedOnceAndMoveInBothFormsWhenTheirFrameIsTyped)
{
    SequencerResourceIntermediate* sequence = makeLanes();
    SequencerTool* tool = open(sequence);
    ASSERT_EQ(tool->getTrackForm()->getTrackCount(), 1u);
    EXPECT_EQ(tool->getTrackForm()->getTrack(0)->mLanes.size(), 2u);

    probe(*tool->getSequencer())->mU32 = 77;
    tool->setCurrentFrame(10);
    tool->setSelectLane(lane(sequence, "U32"));
    tool->eventAddKey();
    tool->eventAddKey();
    ASSERT_EQ(lane(sequence, "U32")->mKeyList.size(), 1u);
    SequencerKey* key = tool->getSelectKey();
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->getInterpolateType(), SequencerResource::eInterpolateType_Linear);
    EXPECT_EQ(*static_cast<u32*>(key->getParameter()), 77u);
    u8* native = sequence->findNativeKey("p", "U32", 10);
    EXPECT_EQ(*static_cast<u32*>(SequencerResource::getKeyParameter(native, ePropertyType_U32)), 77u);

    // A trigger lane's key triggers only; "Add Key All Lane" does not select.
    tool->update(0.0f);
    tool->setSelectLane(lane(sequence, "Fire"));
    tool->setCurrentFrame(30);
    tool->eventAddKeyAllLane();
    EXPECT_EQ(tool->getSelectKey(), nullptr);
    SequencerKey* fire = sequence->findKey("p", "Fire", 30);
    ASSERT_NE(fire, nullptr);
    EXPECT_EQ(fire->getInterpolateType(), SequencerResource::eInterpolateType_Trigger);
    EXPECT_EQ(fire->getTriggerOnly(), 1u);
    EXPECT_NE(sequence->findKey("p", "U32", 30), nullptr);

    // The key's controls: the frame typed between the edit's two messages.
    tool->update(0.0f);
    tool->setCurrentFrame(10);
    tool->setSelectLane(lane(sequence, "U32"));
    ASSERT_EQ(tool->getSelectKey(), key);
    EXPECT_EQ(shownGroups(tool), 3u); // Track, Control, Key
    typeKeyFrame(tool, 20);
    EXPECT_EQ(key->getFrame(), 20u);
    EXPECT_EQ(sequence->findKey("p", "U32", 20), key);
    EXPECT_EQ(sequence->findKey("p", "U32", 10), nullptr);
    EXPECT_EQ(nativeFrame(sequence, "U32", 20), 20u);
    EXPECT_TRUE(sequence->isModified());
    // The player follows: at frame 20 the object shows the key's value.
    tool->update(0.0f);
    probe(*tool->getSequencer())->mU32 = 0;
    tool->setCurrentFrame(20);
    EXPECT_EQ(probe(*tool->getSequencer())->mU32, 77u);

    // Typing the frame of the other key is refused: one key a frame.
    tool->update(0.0f);
    typeKeyFrame(tool, 30);
    EXPECT_EQ(sequence->findKey("p", "U32", 20), key);
    EXPECT_EQ(lane(sequence, "U32")->mKeyList.size(), 2u);

    // The arrow keys walk the lane's keys; remove clears the selection.
    tool->getTrackForm()->sendMessage(UIKeyDownMessage(162, 0));
    EXPECT_EQ(tool->getSelectKey(), sequence->findKey("p", "U32", 30));
    tool->getTrackForm()->sendMessage(UIKeyDownMessage(162, 0));
    EXPECT_EQ(tool->getSelectKey(), sequence->findKey("p", "U32", 30));
    tool->getTrackForm()->sendMessage(UIKeyDownMessage(160, 0));
    EXPECT_EQ(tool->getSelectKey(), key);
    tool->eventRemoveKey();
    EXPECT_EQ(tool->getSelectKey(), nullptr);
    EXPECT_EQ(sequence->findNativeKey("p", "U32", 20), nullptr);
}

TEST_F(SequencerToolTest, TracksRebuildTheirRowsAndNewNamesSkipTakenOnes)
{
    SequencerResourceIntermediate* sequence = makeLanes();
    sequence->addTrack(Probe::getStaticTypeInfo(), "Track0");
    SequencerTool* tool = open(sequence);
    tool->eventAddSequencerTrack();
    tool->eventAddSequencerTrack();
    ASSERT_EQ(tool->getTrackForm()->getTrackCount(), 4u);
    EXPECT_NE(sequence->findTrack("Track1"), nullptr);
    EXPECT_NE(sequence->findTrack("Track2"), nullptr);
    tool->update(0.0f);
    EXPECT_TRUE(tool->getSequencer()->getTrackArray()[3].mNested);

    // Removing a track clears the selection and the control form and remakes
    // every row from the resource.
    tool->setSelectLane(lane(sequence, "U32"));
    EXPECT_GT(shownGroups(tool), 0u);
    tool->eventRemoveTrack();
    EXPECT_EQ(sequence->findTrack("p"), nullptr);
    EXPECT_EQ(tool->getSelectTrack(), nullptr);
    EXPECT_EQ(tool->getSelectLane(), nullptr);
    EXPECT_EQ(shownGroups(tool), 0u);
    ASSERT_EQ(tool->getTrackForm()->getTrackCount(), 3u);
    EXPECT_EQ(tool->getTrackForm()->getTrack(0)->mpTrack, sequence->findTrack("Track0"));
    tool->update(0.0f);

    // Markers: after a clash the retry is named "Track%d", as it always was.
    sequence->addMarker("Marker0", 50);
    tool->setCurrentFrame(0);
    tool->eventAddMarker();
    EXPECT_NE(sequence->findMarker("Track1"), nullptr);
    EXPECT_EQ(tool->getSelectMarker(), sequence->findMarker("Track1"));
    EXPECT_TRUE(tool->isMarkerTrackSelected());
    tool->eventAddMarker(); // a marker at the frame already
    EXPECT_EQ(sequence->getMarkerNum(), 2u);

    // Fields typed into the marker's controls reach both forms by name.
    UIGroup* group = tool->getControlForm()->getMarkerGroup();
    UIControl* name = findControl(group, "marker_name");
    UIControl* target = findControl(group, "target_frame");
    ASSERT_TRUE(name != nullptr && target != nullptr);
    name->sendMessage(UIBeginEditMessage());
    name->getProperty()->setString("Intro");
    target->getProperty()->setNumeric(70, UIControl::NoIndex);
    name->sendMessage(UIEndEditMessage());
    SequencerMarker* intro = sequence->findMarker("Intro");
    ASSERT_NE(intro, nullptr);
    EXPECT_EQ(intro, tool->getSelectMarker());
    EXPECT_EQ(sequence->findNativeMarker("Intro")->mTargetFrame, 70u);
    tool->eventRemoveMarker();
    EXPECT_EQ(sequence->findMarker("Intro"), nullptr);
    EXPECT_EQ(tool->getSelectMarker(), nullptr);
}

TEST_F(SequencerToolTest, ScrubbingWheelAndTargetMarkersMoveTheCurrentFrame)
{
    SequencerResourceIntermediate* sequence = makeLanes(400);
    SequencerTool* tool = open(sequence);
    SequencerTool::TrackForm* form = tool->getTrackForm();
    SequencerTool::SequenceForm* timeline = form->getSequenceForm();
    ASSERT_GT(timeline->getSize().width, 64u);
    int const width = static_cast<int>(timeline->getSize().width);
    SequencerTool::UITrack const* row = form->getTrack(0);

    // A press on the ruler seeks; the pointer left of the form steps back by
    // 1, by 5 beyond 32 pixels, and stops at frame 0.
    timeline->sendMessage(UIMouseDownMessage(sPoint(12, 4), 1));
    EXPECT_TRUE(timeline->isScrubbing());
    EXPECT_EQ(tool->getCurrentFrame(), 12u);
    struct {
        int x;
        u32 frames[3];
    } const left[] = {{-8, {11, 10, 9}}, {-40, {4, 0, 0}}};
    for (auto const& step : left) {
        timeline->sendMessage(UIMouseMoveMessage(sPoint(step.x, 4)));
        for (u32 frame : step.frames) {
            tool->update(0.0f);
            EXPECT_EQ(tool->getCurrentFrame(), frame) << step.x;
            EXPECT_EQ(form->getScrollPosition(), static_cast<int>(frame));
        }
    }
    // Beyond the right edge: forward, and the frame stays at the edge.
    timeline->sendMessage(UIMouseMoveMessage(sPoint(width + 40, 4)));
    tool->update(0.0f);
    tool->update(0.0f);
    EXPECT_EQ(tool->getCurrentFrame(), 10u);
    EXPECT_EQ(form->getScrollPosition(), 0);
    timeline->sendMessage(UIMouseUpMessage(sPoint(width + 40, 4), 1));
    EXPECT_FALSE(timeline->isScrubbing());

    // The wheel's amounts come off the scroll position, over a row as well.
    row->mLanes[0]->mpSequence->sendMessage(UIMouseWheelMessage(sPoint(-30, 0)));
    EXPECT_EQ(form->getScrollPosition(), 30);
    form->sendMessage(UIMouseWheelMessage(sPoint(100, 0)));
    EXPECT_EQ(form->getScrollPosition(), 0);

    // Target markers only; the shortcuts of the class.
    sequence->addMarker("a", 40);
    sequence->addMarker("jump", 60);
    sequence->setMarkerType("jump", SequencerResource::eMarkerType_JumpFrame);
    sequence->addMarker("b", 90);
    tool->update(0.0f);
    tool->setCurrentFrame(41);
    UIShortcutBase const* next = tool->findShortcut(162, 4);
    ASSERT_NE(next, nullptr);
    next->shortcut(tool);
    EXPECT_EQ(tool->getCurrentFrame(), 90u);
    EXPECT_EQ(tool->getSelectMarker(), sequence->findMarker("b"));
    tool->findShortcut(160, 4)->shortcut(tool);
    EXPECT_EQ(tool->getCurrentFrame(), 40u);
    tool->findShortcut(160, 4)->shortcut(tool);
    EXPECT_EQ(tool->getCurrentFrame(), 40u);
    form->sendMessage(UIKeyDownMessage(162, 0));
    EXPECT_EQ(tool->getSelectMarker(), sequence->findMarker("jump"));
    tool->findShortcut(132, 0)->shortcut(tool);
    EXPECT_TRUE(tool->getSequencer()->isPlaying());
    tool->findShortcut(167, 4)->shortcut(tool);
    EXPECT_FALSE(tool->getSequencer()->isPlaying());
    EXPECT_EQ(tool->getCurrentFrame(), 400u);

    // A rectangle dragged over the marker row selects the first marker in
    // its span, or none; a press clears the selection.
    UIBase* markers = form->getMarker()->mpSequence;
    markers->sendMessage(UIMouseDownMessage(sPoint(30, 5), 1));
    EXPECT_EQ(tool->getSelectMarker(), nullptr);
    EXPECT_TRUE(tool->isMarkerTrackSelected());
    struct {
        int x;
        char const* marker;
    } const drags[] = {{70, "a"}, {35, nullptr}, {10, nullptr}, {100, "a"}};
    for (auto const& drag : drags) {
        markers->sendMessage(UIMouseMoveMessage(sPoint(drag.x, 9)));
        EXPECT_EQ(tool->getSelectMarker(), drag.marker ? sequence->findMarker(drag.marker) : nullptr) << drag.x;
    }
    markers->sendMessage(UIMouseUpMessage(sPoint(100, 9), 1));

    // The box at the left of a track's name folds its lanes away.
    row->mpInfo->sendMessage(UIMouseDownMessage(sPoint(4, 20), 1));
    EXPECT_FALSE(row->mExtractedLane);
    EXPECT_EQ(row->getHeight(), 24u);
    row->mpInfo->sendMessage(UIMouseDownMessage(sPoint(40, 20), 1));
    EXPECT_EQ(tool->getSelectTrack(), sequence->findTrack("p"));
    EXPECT_FALSE(tool->isMarkerTrackSelected());
}

TEST_F(SequencerToolTest, ADamagedSequenceOpensWithATraceAndTheToolStaysUsable)
{
    SequencerResourceIntermediate* sequence = makeLanes();
    restest::writeFile(intermediateFile("good.seq.xml"), "");
    {
        TextFileStream file(intermediateFile("good.seq.xml").c_str(), Stream::eMode_Write);
        ASSERT_TRUE(sequence->save(file));
    }
    std::string const good = restest::readFile(intermediateFile("good.seq.xml"));
    // A track of another class, and a lane of a key type no key class serves.
    struct {
        char const* name;
        char const* from;
        char const* to;
        unsigned int lanes;
    } const damaged[] = {{"wrong", "typeinfo=\"SequencerTrack\"", "typeinfo=\"SequencerMarker\"", 0},
                         {"keytype", "<key_type type=\"u32\" count=\"0\" index=\"0\" value=\"8\"",
                          "<key_type type=\"u32\" count=\"0\" index=\"0\" value=\"99\"", 1}};
    for (auto const& file : damaged) {
        SCOPED_TRACE(file.name);
        std::string bytes = good;
        ASSERT_NE(bytes.find(file.from), std::string::npos);
        bytes.replace(bytes.find(file.from), strlen(file.from), file.to);
        restest::writeFile(intermediateFile(std::string(file.name) + ".seq.xml"), bytes);
        SequencerTool* tool = open(nullptr);
        testing::internal::CaptureStderr();
        tool->load(local(file.name).c_str());
        std::string const trace = testing::internal::GetCapturedStderr();
        EXPECT_FALSE(trace.empty());
        tool->update(0.0f);
        SequencerResourceIntermediate* loaded = tool->getResource();
        ASSERT_NE(loaded, nullptr);
        SequencerTool::TrackForm* form = tool->getTrackForm();
        EXPECT_EQ(form->getTrackCount(), loaded->getTrackList().size());
        if (form->getTrackCount() != 0) {
            EXPECT_EQ(form->getTrack(0)->mLanes.size(), file.lanes);
            tool->setSelectLane(form->getTrack(0)->mLanes.size() != 0 ? form->getTrack(0)->mLanes[0]->mpLane : nullptr);
            tool->eventAddKey();
        }
        tool->eventAddSequencerTrack();
        tool->selectMarkerTrack();
        tool->eventAddMarker();
        tool->update(0.0f);
        EXPECT_EQ(form->getTrackCount(), loaded->getTrackList().size());
        EXPECT_EQ(loaded->getMarkerNum(), 1u);
        // Changed: closing asks first.
        tool->close();
        mpUI->preprocess();
        ASSERT_NE(static_cast<UIWindow*>(mpUI->getWindowList()[0]), static_cast<UIWindow*>(tool));
        EXPECT_STREQ(static_cast<UIWindow*>(mpUI->getWindowList()[0])->getTitle().c_str(), "Causion");
        mpUI->removeAllWindow();
        mpUI->postprocess();
    }
}

} // namespace
