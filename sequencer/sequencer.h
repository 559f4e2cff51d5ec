// Sequencer: plays a SequencerResource. It makes one object per track, binds
// each lane to a control of that object by kind and name hash, and then moves
// a fixed-point frame position, writing property values and firing triggers
// as the position passes keys and markers. The objects it makes are its own.
// It reads the resource's key blocks in place and rebuilds when an edit marks
// the resource updated, so it must be updated in every frame in which the
// resource may change. One thread: its owner's.
#pragma once

#include "foundation/types.h"
#include "reflection/objectbase.h"

class AllocatorBase;
class ControlBase;
class PropertyBase;
class SequencerResource;
struct sNativeMarker;

class Sequencer : public ObjectBase {
public:
    // The six numbers of one interpolated element: the straight line and the
    // cubic in t, all in float whatever the key type.
    struct sInterpolateData {
        f32 mLinearStart;
        f32 mLinearDelta;
        f32 mCubic[4]; // t^3, t^2, t, 1
    };

    struct sLaneData {
        ControlBase* mpControl; // owned duplicate; null for an unbound lane
        // Read once at binding: playback touches neither the control nor
        // the property's type again on its way to the value.
        PropertyBase* mpProperty; // the control's property; null for triggers
        u32 mPropertyType;
        u32 mControlType;
        u8 const* mpKeys;       // the resource's key block
        u32 mKeyNum;
        u8 mKeyStride;
        u8 const* mpCurrentKey; // null: not looked up yet
        u32 mNextKeyFrame : 16;
        u32 mInterpolateType : 4; // mode of the span being played; 0 outside
        u32 mApplied : 1;         // the current key has been acted on
        f32 mReciprocal;          // 1 / span length in frames
        sInterpolateData* mpInterpolateData;
        u32 mInterpolateNum;
    };

    struct sTrackData {
        ObjectBase* mpObject; // owned
        sLaneData* mpLaneArray;
        u32 mLaneNum;
        bool mNested; // the object is a Sequencer, stepped with this one
    };

    // allocator null: plain array allocation.
    explicit Sequencer(AllocatorBase* allocator = nullptr);
    ~Sequencer() override;

    // Called once per track per applied step, after the track's lanes. The
    // base steps a nested Sequencer by the same number of frames.
    virtual void applyObjectDependedTask(sTrackData* track, sFixed step);
    // Called when update has remade the objects for an edit of the resource,
    // before the sequence is applied to them. The base does nothing.
    virtual void notifyRebuild();

    void makePropertyList(PropertyList& list) override;
    void makeControlList(List<ControlBase>& list) override;

    // Stops, makes the objects of the new resource and applies its start frame.
    void setResource(SequencerResource* resource);
    SequencerResource* getResource() const { return mpResource; }

    // Playing needs a resource.
    void play();
    void stop();
    bool isPlaying() const { return mPlaying; }
    void seek(unsigned int frame);
    sFixed getCurrentFrame() const { return mCurrentFrame; }

    // step in application frames: played at the resource's fps.
    void update(float step);
    // step in timeline frames.
    void update(sFixed step);

    // Neither seek nor play does this.
    void resetMarkerCount();

    u32 getTrackNum() const { return mTrackNum; }
    sTrackData* getTrackArray() const { return mpTrackArray; }

    DECLARE_TYPEINFO(UniqueTypeInfo<Sequencer>)

protected:
    void build();
    void deleteAllTrack();
    void applySequence(sFixed step);
    void applyTrackSequence(sFixed step);
    sFixed applyMarker(sFixed target);
    void updateCurrentMarker();
    void clearCurrentMarker();
    void seekWithoutApplySequence(unsigned int frame);

    bool checkKeyUpdate(sLaneData const* lane) const;
    u8 const* getCurrentKey(sLaneData const* lane) const;
    void updateLaneInterpolateData(sLaneData* lane, unsigned int propertyType);
    void applyPropertyControl(sLaneData* lane);
    void applyTriggerControl(sLaneData* lane);
    void applyTrigger(ControlBase* control, u8 const* key);
    void applyResourceKey(sLaneData* lane, u8 const* key);

    void* allocate(u32 size);
    void deallocate(void* pointer);

private:
    // Reached through the "Seek" trigger.
    void seekTrigger(u32 frame) { seek(frame); }

    AllocatorBase* mpAllocator;
    sTrackData* mpTrackArray;
    u8* mpMarkerCounts;
    u32 mTrackNum;
    u32 mMarkerNum;
    sFixed mCurrentFrame;
    sFixed mPreviousFrame;
    sNativeMarker const* mpCurrentMarker;
    sFixed mNextMarkerFrame;
    bool mPlaying;
    SequencerResource* mpResource;
};
