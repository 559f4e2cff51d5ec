// AnimSequencer: the Sequencer that plays a 2D animation. Besides playing, it
// holds the animation's texture, knows what each track's object is (cell,
// collision, generator or nested animation), counts them over all levels so
// that a unit can size its trees once, and steps every generator once per
// applied step. A nested AnimSequencer is a track object of its parent and is
// stepped with it. One thread: its owner's.
#pragma once

#include "foundation/types.h"
#include "sequencer/sequencer.h"

class TextureResource;

class AnimSequencer : public Sequencer {
public:
    enum eTrackType {
        eTrackType_Other = 0,
        eTrackType_Cell = 1,
        eTrackType_Collision = 2,
        eTrackType_Generator = 3,
        eTrackType_Sequencer = 4,
    };

    explicit AnimSequencer(AllocatorBase* allocator = nullptr);
    ~AnimSequencer() override;

    // A generator is updated by the step; anything else as the base does.
    void applyObjectDependedTask(sTrackData* track, sFixed step) override;
    // "Resource", "Position", "Orientation", "Color".
    void makePropertyList(PropertyList& list) override;
    // "Resource" (animations only), "Seek", "Play", "Stop", "Position",
    // "Orientation", "Color": a parent can switch, start, stop, place, turn
    // and tint a nested animation.
    void makeControlList(List<ControlBase>& list) override;

    // Refuses, without a word, a resource that is not an animation (and
    // null). Otherwise builds as Sequencer::setResource does, takes the
    // texture the resource names, and sorts the tracks into their kinds.
    // Over 255 of a kind directly, or a nested total past 127 sequencers or
    // generators or 255 cells or collisions, is fatal.
    void setResource(SequencerResource* resource);
    SequencerResource* getResource() const { return Sequencer::getResource(); }
    // An edit may have named another texture or added and removed tracks:
    // both are taken again, as setResource takes them.
    void notifyRebuild() override;

    // Offset inside the parent, in pixels.
    sPoint const& getPosition() const { return mPosition; }
    void setPosition(sPoint const& position) { mPosition = position; }
    sColor getColor() const { return mColor; }
    void setColor(sColor color) { mColor = color; }
    // Degrees inside the parent.
    sFixed getOrientation() const { return mOrientation; }
    void setOrientation(sFixed orientation) { mOrientation = orientation; }

    // Totals over this animation and all it nests.
    u32 getAnimSequencerNum() const { return mSequencerNum; }
    u32 getAnimCellNum() const { return mCellNum; }
    u32 getAnimCollisionNum() const { return mCollisionNum; }
    u32 getAnimGeneratorNum() const { return mGeneratorNum; }
    // Null when the resource names none.
    TextureResource* getTexture() const { return mpTexture; }
    // eTrackType of the track; 0 past the tracks sorted at the last build.
    u32 getTrackType(u32 index) const { return (index < mTrackTypeNum) ? mpTrackTypes[index] : 0u; }

    DECLARE_TYPEINFO(UniqueTypeInfo<AnimSequencer>)

private:
    void seekTrigger(u32 frame) { seek(frame); }
    void releaseTexture();
    // The texture the resource names, or an unnamed one when it names none.
    void takeTexture();
    void releaseTrackTypes();
    void classifyTracks();

    sPoint mPosition;
    sColor mColor;
    sFixed mOrientation;
    TextureResource* mpTexture;
    u8* mpTrackTypes;
    u32 mTrackTypeNum; // tracks when they were sorted
    u8 mSequencerNum;
    u8 mCellNum;
    u8 mCollisionNum;
    u8 mGeneratorNum;
};
