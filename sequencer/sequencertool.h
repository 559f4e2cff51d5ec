// SequencerTool: the timeline editor. A tool window that plays the edited
// SequencerResourceIntermediate in a Sequencer of its own and shows a timeline
// of markers, tracks and lanes beside the controls of the selected thing.
// Every command goes through the resource's edit operations, which rewrite
// the native arrays at once, so the sequencer rebuilds at its next update and
// editing is live. The animation editor derives from it. Main thread only.
#pragma once

#include "foundation/autostring.h"
#include "foundation/vector.h"
#include "tool/toolbase.h"
#include "ui/uiform.h"

class ResourceBase;
class Sequencer;
class SequencerKey;
class SequencerLane;
class SequencerMarker;
class SequencerResourceIntermediate;
class SequencerTrack;
class UIDialog;
class UIGroup;
class UIScrollBar;
class UITextControl;

class SequencerTool : public ToolBase {
public:
    class TrackForm;
    class HeaderForm;
    class SequenceForm;
    class UIMarker;
    class UITrack;
    class UILane;
    class ControlForm;

    static constexpr int kTopFormHeight = 32;
    static constexpr unsigned int kSplitSize = 128;
    static constexpr unsigned int kMaxFrame = 4095;

    SequencerTool();
    // Releases the resource; the sequencer goes first, since it reads it.
    ~SequencerTool() override;

    DECLARE_TYPEINFO(UniqueTypeInfo<SequencerTool>)

    // -- Virtual operations of the tool, in slot order.
    // The class of the player to make: Sequencer or one derived from it.
    virtual TypeInfo const* getSequencerTypeInfo() const;
    // The root of the class dialog of "Add Track".
    virtual TypeInfo const* getRootTypeInfo() const;
    virtual void eventAddTrack();
    // Lays the top form and the content out over the window's client area.
    virtual void updateLayout();

    // Makes the sequencer of getSequencerTypeInfo.
    void eventCreate() override;
    void update(float deltaTime) override;
    UIShortcutBase const* findShortcut(unsigned int keyCode, unsigned int combinationKey) const override;
    // Snapshots of the selected key or marker around an edit in the control
    // form; the differences go into the native arrays at the end.
    void eventBeginEdit() override;
    void eventEndEdit() override;

    // -- The edited resource.
    SequencerResourceIntermediate* getResource() const { return mpResource; }
    // Takes a reference, rebuilds the rows, hands it to the sequencer and
    // seeks to the start.
    void setResource(SequencerResourceIntermediate* resource);
    Sequencer* getSequencer() const { return mpSequencer; }

    // -- The top form's values; 0 and no effect without a resource.
    u32 getStartFrame() const;
    void setStartFrame(u32 frame);
    u32 getEndFrame() const;
    void setEndFrame(u32 frame);
    // The whole frame of the sequencer; setting it seeks.
    u32 getCurrentFrame() const;
    void setCurrentFrame(u32 frame);
    u32 getFPS() const;
    void setFPS(u32 fps);

    // -- Selection: nothing, a marker, a track, a track and lane, or a track,
    // lane and key.
    SequencerMarker* getSelectMarker() const { return mpSelectMarker; }
    SequencerTrack* getSelectTrack() const { return mpSelectTrack; }
    SequencerLane* getSelectLane() const { return mpSelectLane; }
    SequencerKey* getSelectKey() const { return mpSelectKey; }
    bool isMarkerTrackSelected() const { return mMarkerTrackSelected; }
    void setSelectMarker(SequencerMarker* marker);
    void setSelectTrack(SequencerTrack* track);
    // Also selects the lane's track, and the lane's key at the current frame.
    void setSelectLane(SequencerLane* lane);
    void setSelectKey(SequencerKey* key);
    // The marker row, and its marker at the current frame.
    void selectMarkerTrack();
    // The track that owns the lane, or null.
    SequencerTrack* findLaneOwner(SequencerLane const* lane) const;

    // -- Names of new tracks and markers.
    AutoString getNewTrackName();
    AutoString getNewMarkerName();

    // -- Commands. Without their selection they do nothing.
    void eventAddMarker();
    void eventRemoveMarker();
    void eventRemoveAllMarker();
    void eventResetMarkerCount();
    void eventAddSequencerTrack();
    void eventRemoveTrack();
    void eventAddLane();
    void eventRemoveLane();
    void eventAddAllLane();
    void eventRemoveAllLane();
    void eventAddKey();
    void eventRemoveKey();
    void eventRemoveAllKey();
    void eventAddKeyAllLane();
    void togglePlay();
    void seekStart();
    void seekEnd();
    void seekPreviousTargetMarker();
    void seekNextTargetMarker();
    void notifySelectObject(UIDialog* dialog);
    void notifySelectControl(UIDialog* dialog);

    // Clears counters and selection and rebuilds every row from the resource.
    void resetTrack();
    // Fills a new key and its native record from what the track's object
    // shows now.
    void initializeKeyParameter(SequencerTrack* track, SequencerLane* lane, SequencerKey* key);

    // -- Edits of the selected key and marker, each through the resource.
    void moveSelectKey(u32 frame);
    void copySelectKeyInterpolateTypeToNative();
    void copySelectKeyParameterToNative();
    void setSelectMarkerName(AutoString const& name);
    void setSelectMarkerType(u8 type);
    void setSelectMarkerCount(u8 count);
    void setSelectMarkerFrame(u32 frame);
    void setSelectMarkerTargetFrame(u32 frame);
    void setSelectMarkerReset(bool reset);
    void setSelectMarkerTargetName(AutoString const& name);

    // -- The control form: the track, its lanes' controls and the key; or
    // the marker.
    void setupControlList(u32 trackIndex, SequencerKey* key);
    void setupControlList(SequencerMarker* marker);

    UIForm* getTopForm() const { return mpTopForm; }
    TrackForm* getTrackForm() const { return mpTrackForm; }
    ControlForm* getControlForm() const { return mpControlForm; }
    UISplitter* getSplitter() const { return mpSplitter; }

protected:
    // The top form at the top of the client area and content below it.
    void layoutContent(UIBase* content);
    // The control form over whatever is selected now.
    void rebuildControlForm();
    // Adds the lane of the named control of the track's object, if the track
    // has no lane of that name; false when nothing was added.
    bool addLaneOfControl(SequencerTrack* track, AutoString const& name, unsigned int type);
    // The sequencer's object of the track, or null.
    ObjectBase* getTrackObject(SequencerTrack const* track) const;
    void addKeyAt(SequencerTrack* track, SequencerLane* lane, bool select);

private:
    // What an edit of the control form may change.
    struct sSnapshot {
        // What the snapshot was taken of: an edit that ends on something
        // else selected compares nothing.
        SequencerKey* mpKey;
        SequencerMarker* mpMarker;
        u16 mFrame;
        u8 mInterpolateType;
        u8 mParameter[16];
        ResourceBase* mpResource; // referenced while the edit lasts
        u8 mMarkerType;
        u8 mCount;
        u16 mTargetFrame;
        bool mReset;
        AutoString mName;
        AutoString mTargetName;
    };
    void releaseSnapshot();
    void endKeyEdit();
    void endMarkerEdit();

    SequencerResourceIntermediate* mpResource;
    UIForm* mpTopForm;
    TrackForm* mpTrackForm;
    ControlForm* mpControlForm;
    UISplitter* mpSplitter;
    u32 mNewTrackNumber;
    u32 mNewMarkerNumber;
    Sequencer* mpSequencer;
    SequencerMarker* mpSelectMarker;
    SequencerTrack* mpSelectTrack;
    SequencerLane* mpSelectLane;
    SequencerKey* mpSelectKey;
    bool mMarkerTrackSelected;
    sSnapshot mSnapshot;
};

// ---------------------------------------------------------------------------
// The timeline: names on the left, rows of frames on the right, one pixel a
// frame, under a ruler of 32 pixels.

class SequencerTool::HeaderForm : public UIForm {
public:
    explicit HeaderForm(TrackForm* form);

    // Rows below the ruler's band, moved by the vertical scroll position.
    void update(float deltaTime) override;
    void eventPaint(UIPainter* painter) override;
    void eventKeyDown(unsigned int, unsigned int) override { delegate(); }
    // The splitter above would stop it: straight to the track form.
    void eventMouseWheel(sPoint const& amount) override;

protected:
    TrackForm* mpTrackForm;
};

class SequencerTool::SequenceForm : public HeaderForm {
public:
    explicit SequenceForm(TrackForm* form);

    // Follows a scrub with the last known pointer place.
    void update(float deltaTime) override;
    // The ruler.
    void eventPaint(UIPainter* painter) override;
    void eventMouseDown(sPoint const& position, unsigned int button) override;
    void eventMouseMove(sPoint const& position) override;
    void eventMouseUp(sPoint const& position, unsigned int button) override;
    void eventKeyDown(unsigned int, unsigned int) override { delegate(); }

    bool isScrubbing() const { return mScrubbing; }
    // The pointer relative to the form, as the scrub reads it.
    void setPointer(sPoint const& position) { mPointer = position; }

private:
    sPoint mPointer;
    bool mScrubbing;
};

// The one row of markers.
class SequencerTool::UIMarker {
public:
    static void* operator new(std::size_t size) noexcept { return UIBase::allocate(static_cast<unsigned int>(size)); }
    static void operator delete(void* pointer) { UIBase::deallocate(pointer); }

    UIBase* mpInfo;
    UIBase* mpSequence;
};

// One row per lane, inside its track's row.
class SequencerTool::UILane {
public:
    static void* operator new(std::size_t size) noexcept { return UIBase::allocate(static_cast<unsigned int>(size)); }
    static void operator delete(void* pointer) { UIBase::deallocate(pointer); }

    static constexpr int kHeight = 24;

    SequencerLane* mpLane;
    UIBase* mpInfo;
    UIBase* mpSequence;
};

// One row per track: 24 high, or 25 plus its lanes when they are extended.
class SequencerTool::UITrack {
public:
    static void* operator new(std::size_t size) noexcept { return UIBase::allocate(static_cast<unsigned int>(size)); }
    static void operator delete(void* pointer) { UIBase::deallocate(pointer); }

    static constexpr int kHeight = 24;

    ~UITrack();
    unsigned int getHeight() const;

    SequencerTrack* mpTrack;
    UIBase* mpInfo;
    UIBase* mpSequence;
    Vector<UILane> mLanes;
    bool mExtractedLane;
};

class SequencerTool::TrackForm : public UIBase {
public:
    static constexpr unsigned int kHeaderWidth = 96;
    static constexpr int kRulerHeight = 32;

    explicit TrackForm(SequencerTool* tool);
    ~TrackForm() override;

    // The height of all rows below the ruler.
    unsigned int getRowsHeight() const;
    // Removes every row and remakes the marker row.
    void reset();
    UITrack* addTrack(SequencerTrack* track);
    UILane* addLane(SequencerTrack* track, SequencerLane* lane);
    UITrack* findTrack(SequencerTrack const* track) const;
    unsigned int getTrackCount() const { return mTracks.size(); }
    UITrack* getTrack(unsigned int index) const { return mTracks[index]; }
    UIMarker* getMarker() const { return mpMarker; }

    // The frame at the left edge of the rows.
    int getScrollPosition() const;
    void setScrollPosition(int frame);
    HeaderForm* getHeaderForm() const { return mpHeaderForm; }
    SequenceForm* getSequenceForm() const { return mpSequenceForm; }
    UIScrollBar* getHorizontalScrollBar() const { return mpHorizontalScrollBar; }
    UIScrollBar* getVerticalScrollBar() const { return mpVerticalScrollBar; }
    SequencerTool* getTool() const { return mpTool; }

    void update(float deltaTime) override;
    // 160 and 162: the marker or key before or after.
    void eventKeyDown(unsigned int keyCode, unsigned int combinationKey) override;
    void eventMouseWheel(sPoint const& amount) override;

private:
    void clearRows();

    SequencerTool* mpTool;
    HeaderForm* mpHeaderForm;
    SequenceForm* mpSequenceForm;
    UISplitter* mpSplitter;
    UIScrollBar* mpHorizontalScrollBar;
    UIScrollBar* mpVerticalScrollBar;
    UIMarker* mpMarker;
    Vector<UITrack> mTracks;
};

// The selected thing's controls, in the groups "Track", "Control", "Key" and
// "Marker". Edits in it reach the tool as begin and end of an edit.
class SequencerTool::ControlForm : public UIForm {
public:
    explicit ControlForm(SequencerTool* tool);
    // Deletes the groups that are not shown.
    ~ControlForm() override;

    // Empties the groups and hides them.
    void clear();
    UIGroup* getTrackGroup() const { return mpTrackGroup; }
    UIGroup* getControlGroup() const { return mpControlGroup; }
    UIGroup* getKeyGroup() const { return mpKeyGroup; }
    UIGroup* getMarkerGroup() const { return mpMarkerGroup; }
    // A widget of Utils::makeUIFromControl for each lane of the track in the
    // sequencer.
    void setControlList(u32 trackIndex);
    // The widgets into the group, which is shown; the list is emptied.
    void fill(UIGroup* group, List<UIBase>& widgets);

    // The groups over the whole form.
    void update(float deltaTime) override;
    void eventPaint(UIPainter* painter) override;
    void eventBeginEdit() override;
    void eventEndEdit() override;
    void eventKeyDown(unsigned int, unsigned int) override { delegate(); }

private:
    SequencerTool* mpTool;
    UIGroup* mpTrackGroup;
    UIGroup* mpControlGroup;
    UIGroup* mpKeyGroup;
    UIGroup* mpMarkerGroup;
};
