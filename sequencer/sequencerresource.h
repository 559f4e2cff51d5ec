// Sequences: timelines of tracks (one reflected object each), lanes (one
// control of that object each), keys and markers. SequencerResource holds the
// compact native arrays that Sequencer plays and reads and writes the binary
// ".seq" file; SequencerResourceIntermediate is the editable form, with object
// lists for XML and edit operations that rewrite the native arrays in the same
// call, so that a playing Sequencer follows an edit at its next update.
// Native arrays come from the resource heap. One thread at a time: the owner's.
#pragma once

#include <cstring>

#include "foundation/autostring.h"
#include "foundation/types.h"
#include "reflection/objectlist.h"
#include "resource/resourcebase.h"

class ControlBase;

// ---------------------------------------------------------------------------
// Native form. A frame is 12 bits wide: a sequence lives in frames 0 to 4095.

// A key block is keyNum times stride bytes. Each key starts with a 16-bit word:
// frame in the low 12 bits, interpolation in the high 4. A one- or two-byte
// parameter follows at offset 2, any wider one at offset 4; a resource key
// holds its type id at 4, its path at 8 and its hash at 232.
struct sNativeLane {
    u32 mNameHash;        // hash of the control's name
    u16 mKeyNum;
    u8 mKeyStride;        // bytes from one key to the next
    u8 mControlType : 4;  // 0 property, otherwise trigger
    u8 mKeyInterpolateNum : 4; // scalar elements a key interpolates; 0 none
    u8* mpKeyArray;
};

struct sNativeTrack {
    u32 mObjectTypeID;
    u32 mLaneNum;
    sNativeLane* mpLaneArray;
};

struct sNativeMarker {
    u32 mType : 2;
    u32 mFrame : 12;
    u32 mCount : 8; // times the marker acts; 0 without limit
    u32 mReset : 1; // the counter returns to 0 once the count is used up
    u32 : 9;
    u32 mTargetFrame : 12;
    u32 mTargetIndex : 16; // all ones: the target name matched no marker
    u32 : 4;
};
static_assert(sizeof(sNativeMarker) == 8, "a native marker is two words");

// ---------------------------------------------------------------------------
// Editable objects

class SequencerKey : public ObjectBase {
public:
    SequencerKey() : mFrame(0), mInterpolateType(0), mTriggerOnly(0) {}

    virtual void setParameter(void const* value) = 0;
    virtual void* getParameter() = 0;
    virtual void copyParameter(void* target) const = 0;
    virtual unsigned int getParameterSize() const = 0;

    void makePropertyList(PropertyList& list) override;
    // "frame" (0 to 4095) and "interpolate_type", read-only for a key that
    // only triggers; the value's widget follows in the key classes.
    void makeUIList(List<UIBase>& list) override;

    u16 getFrame() const { return mFrame; }
    void setFrame(u16 frame) { mFrame = frame; }
    u8 getInterpolateType() const { return mInterpolateType; }
    void setInterpolateType(u8 type) { mInterpolateType = type; }
    u8 getTriggerOnly() const { return mTriggerOnly; }
    void setTriggerOnly(u8 triggerOnly) { mTriggerOnly = triggerOnly; }
    // The owning lane's control name, repeated here for the key's widgets.
    AutoString const& getControlName() const { return mControlName; }
    void setControlName(AutoString const& name) { mControlName = name; }

    DECLARE_TYPEINFO(TypeInfo)

private:
    u16 mFrame;
    u8 mInterpolateType;
    u8 mTriggerOnly;
    AutoString mControlName;
};

// One key class per value type. T is the parameter; the table of layouts
// (stride, interpolated elements, parameter offset) is sKeyLayout below.
template <typename T>
class SequencerUniqueKey : public SequencerKey {
public:
    SequencerUniqueKey() : mParameter() {}

    // Copied byte-wise: native key blocks hold parameters at 4-byte offsets.
    void setParameter(void const* value) override { memcpy(&mParameter, value, sizeof(T)); }
    void* getParameter() override { return &mParameter; }
    void copyParameter(void* target) const override { memcpy(target, &mParameter, sizeof(T)); }
    unsigned int getParameterSize() const override { return sizeof(T); }
    void makePropertyList(PropertyList& list) override;
    // The value, labelled with the lane's control name.
    void makeUIList(List<UIBase>& list) override;

    T const& get() const { return mParameter; }

    DECLARE_TYPEINFO(UniqueTypeInfo<SequencerUniqueKey<T>>)

private:
    T mParameter;
};

template <>
class SequencerUniqueKey<void> : public SequencerKey {
public:
    void setParameter(void const*) override {}
    void* getParameter() override { return nullptr; }
    void copyParameter(void*) const override {}
    unsigned int getParameterSize() const override { return 0; }

    DECLARE_TYPEINFO(UniqueTypeInfo<SequencerUniqueKey<void>>)
};

// Holds one reference to its resource. The parameter doors do nothing: the
// resource goes in and out through getResource and setResource.
template <>
class SequencerUniqueKey<ResourceBase> : public SequencerKey {
public:
    SequencerUniqueKey() : mpResource(nullptr), mResourceTypeID(0xFFFFFFFFu) {}
    ~SequencerUniqueKey() override;

    void setParameter(void const*) override {}
    void* getParameter() override { return nullptr; }
    void copyParameter(void*) const override {}
    unsigned int getParameterSize() const override { return 0; }
    void makePropertyList(PropertyList& list) override;
    void makeUIList(List<UIBase>& list) override;

    ResourceBase* getResource() const { return mpResource; }
    void setResource(ResourceBase* resource);
    u32 getResourceTypeID() const { return mResourceTypeID; }
    void setResourceTypeID(u32 id) { mResourceTypeID = id; }

    DECLARE_TYPEINFO(UniqueTypeInfo<SequencerUniqueKey<ResourceBase>>)

private:
    ResourceBase* mpResource;
    u32 mResourceTypeID;
};

class SequencerLane : public ObjectBase {
public:
    SequencerLane();

    void makePropertyList(PropertyList& list) override;

    // The key of exactly that frame, or null.
    SequencerKey* findKey(unsigned int frame) const;
    // The last key whose frame is not above frame, or null.
    SequencerKey* findKeyBlock(unsigned int frame) const;

    u32 mControlType;
    AutoString mControlName;
    u32 mKeyType;  // property type, or trigger argument type
    u32 mKeyStride;
    u32 mKeyTypeID;
    u32 mKeyInterpolateNum;
    ObjectList mKeyList; // ascending frames; owns its keys

    DECLARE_TYPEINFO(UniqueTypeInfo<SequencerLane>)
};

class SequencerTrack : public ObjectBase {
public:
    SequencerTrack();

    void makePropertyList(PropertyList& list) override;
    // By control name; null for an empty name.
    SequencerLane* findLane(AutoString const& name) const;

    AutoString mTrackName;
    u32 mObjectTypeID;
    ObjectList mLaneList; // owns its lanes

    DECLARE_TYPEINFO(UniqueTypeInfo<SequencerTrack>)
};

class SequencerMarker : public ObjectBase {
public:
    SequencerMarker() : mMarkerType(0), mInitialCount(0), mFrame(0), mTargetFrame(0), mReset(false) {}

    void makePropertyList(PropertyList& list) override;
    void makeControlList(List<ControlBase>& list) override;

    AutoString mMarkerName;
    AutoString mTargetMarkerName;
    u8 mMarkerType;
    u8 mInitialCount;
    u16 mFrame;
    u16 mTargetFrame;
    bool mReset;

    DECLARE_TYPEINFO(UniqueTypeInfo<SequencerMarker>)
};

// ---------------------------------------------------------------------------
// The native resource

class SequencerResource : public ResourceBase {
public:
    enum eSequenceType {
        eSequenceType_Normal = 0,
        eSequenceType_Animation = 1,
    };
    enum eInterpolateType {
        eInterpolateType_Constant = 0,
        eInterpolateType_Linear = 1,
        eInterpolateType_Hermite = 2,
        eInterpolateType_Trigger = 3,
        eInterpolateType_Num
    };
    enum eMarkerType {
        eMarkerType_Target = 0,
        eMarkerType_JumpTarget = 1,
        eMarkerType_JumpFrame = 2,
        eMarkerType_Num
    };

    static constexpr u32 FrameMask = 0xFFF;
    // "No further frame", above any 12-bit frame.
    static constexpr u32 NoFrame = 8192;
    static constexpr u32 HeaderSize = 36;
    static constexpr u32 MarkerRecordSize = 8;
    static constexpr u32 TrackRecordSize = 8;
    static constexpr u32 LaneRecordSize = 12;
    static constexpr u32 ResourceKeySize = 236;
    static constexpr u32 ResourcePathSize = 224;
    // A target index of all ones names no marker, so fewer markers than that.
    static constexpr u32 MaxMarkerNum = 0xFFFF;

    SequencerResource();

    // The ".seq" file. The writer emits no header and one record per marker,
    // while the reader expects a header and reads one marker record for all
    // markers: files come from a writer of the format, not from save().
    bool load(Stream& stream) override;
    bool save(Stream& stream) override;
    virtual void removeAll();

    char const* getExtension() const override { return "seq"; }
    char const* getFilter() const override { return "seq|Sequence"; }
    TypeInfo const* getIntermediateType() const override;
    TypeInfo const* getExtraIntermediateType(unsigned int index) const override;

    u32 getSequenceType() const { return mSequenceType; }
    void setSequenceType(eSequenceType type) { mSequenceType = type; }
    u8 const* getTypeDependentData() const { return mpTypeDependentData; }
    u32 getTypeDependentDataSize() const { return mTypeDependentDataSize; }
    u32 getFPS() const { return mFPS; }
    u32 getStartFrame() const { return mStartFrame; }
    u32 getEndFrame() const { return mEndFrame; }
    sNativeMarker* getMarkerArray() const { return mpMarkerArray; }
    u32 getMarkerNum() const { return mMarkerNum; }
    sNativeTrack* getTrackArray() const { return mpTrackArray; }
    u32 getTrackNum() const { return mTrackNum; }

    // Address of a native key's parameter for the 32-bit and wider key types;
    // null for one- and two-byte types, bool, void and resources.
    static void* getKeyParameter(void* key, unsigned int type);

    // The layout of keys of a key type (property type or trigger argument
    // type); null for a type no key class serves.
    struct sKeyLayout {
        u32 mType;
        char const* mpClassName;
        u32 mStride;
        u32 mInterpolateNum;
        u32 mParameterOffset; // 0: no parameter
    };
    static sKeyLayout const* findKeyLayout(unsigned int type);

    // Key words.
    static u32 getKeyFrame(u8 const* key) { return readKeyWord(key) & FrameMask; }
    static u32 getKeyInterpolateType(u8 const* key) { return readKeyWord(key) >> 12; }
    static u16 readKeyWord(u8 const* key) { return static_cast<u16>(key[0] | (key[1] << 8)); }
    static void writeKeyWord(u8* key, u16 word)
    {
        key[0] = static_cast<u8>(word & 0xFF);
        key[1] = static_cast<u8>(word >> 8);
    }

    DECLARE_TYPEINFO(UniqueTypeInfo<SequencerResource>)

protected:
    explicit SequencerResource(u16 attribute);
    ~SequencerResource() override;

    // The failure path of load: releases tracks up to trackIndex (laneNum of
    // its lanes), the track and marker arrays; the type-dependent block stays.
    void destructData(u32 trackIndex, u32 laneNum);
    static void releaseLanes(sNativeLane* lanes, u32 laneNum);

    u32 mSequenceType;
    u32 mTrackNum;
    u32 mMarkerNum;
    u32 mStartFrame;
    u32 mEndFrame;
    u32 mFPS;
    u32 mTypeDependentDataSize;
    u8* mpTypeDependentData;
    sNativeTrack* mpTrackArray;
    sNativeMarker* mpMarkerArray;
};

// ---------------------------------------------------------------------------
// The editable resource, ".seq.xml". Markers are not part of the file.

class SequencerResourceIntermediate : public SequencerResource {
public:
    SequencerResourceIntermediate();

    bool load(Stream& stream) override;
    bool save(Stream& stream) override;
    void removeAll() override;
    char const* getExtension() const override { return "seq.xml"; }
    char const* getFilter() const override { return "seq.xml|Intermediate Sequence"; }
    TypeInfo const* getNativeType() const override;
    void makePropertyList(PropertyList& list) override;

    ObjectList const& getTrackList() const { return mTrackList; }
    List<SequencerMarker> const& getMarkerList() const { return mMarkerList; }

    // Timeline
    void setFPS(u32 fps);
    void setStartFrame(u32 frame);
    void setEndFrame(u32 frame);

    // Tracks
    void addTrack(TypeInfo const* type, AutoString name);
    SequencerTrack* findTrack(AutoString name) const;
    bool isExistTrack(AutoString name) const { return findTrack(name) != nullptr; }
    u32 getTrackIndex(SequencerTrack const* track) const;
    sNativeTrack* findNativeTrack(AutoString name) const;
    void moveTrackForward(AutoString name);
    void moveTrackBackward(AutoString name);
    void moveTrackToFirst(AutoString name);
    void moveTrackToLast(AutoString name);
    void removeTrack(AutoString name);

    // Lanes
    void addLane(AutoString track, ControlBase* control);
    SequencerLane* findLane(AutoString track, AutoString lane) const;
    sNativeLane* findNativeLane(AutoString track, AutoString lane) const;
    void moveLaneForward(AutoString track, AutoString lane);
    void moveLaneBackward(AutoString track, AutoString lane);
    void moveLaneToFirst(AutoString track, AutoString lane);
    void moveLaneToLast(AutoString track, AutoString lane);
    void removeLane(AutoString track, AutoString lane);
    void removeAllLane(AutoString track);

    // Keys
    void addKey(AutoString track, AutoString lane, u32 frame, eInterpolateType type);
    SequencerKey* findKey(AutoString track, AutoString lane, u32 frame) const;
    u8* findNativeKey(AutoString track, AutoString lane, u32 frame) const;
    void moveKey(AutoString track, AutoString lane, u32 from, u32 to);
    void removeKey(AutoString track, AutoString lane, u32 frame);
    void removeAllKey(AutoString track, AutoString lane);
    void setKeyParameter(AutoString track, AutoString lane, u32 frame, void const* value);
    void setKeyInterpolateType(AutoString track, AutoString lane, u32 frame, eInterpolateType type);
    static void makeKey(u8* native, SequencerKey const* key);
    static void copyKeyParameter(u8* native, SequencerKey* key, unsigned int keyType);

    // Markers
    void addMarker(AutoString name, u32 frame);
    SequencerMarker* findMarker(AutoString name) const;
    SequencerMarker* findMarker(u32 frame) const;
    SequencerMarker* findMarkerBlock(u32 frame) const;
    sNativeMarker* findNativeMarker(AutoString name) const;
    void moveMarker(AutoString name, u32 frame);
    void setMarkerName(AutoString name, AutoString newName);
    void setMarkerType(AutoString name, eMarkerType type);
    void setMarkerCount(AutoString name, u8 count);
    void setMarkerReset(AutoString name, bool reset);
    void setMarkerTargetFrame(AutoString name, u32 frame);
    void setMarkerTargetName(AutoString name, AutoString target);
    void removeMarker(AutoString name);
    void removeAllMarker();

    // Fills the native arrays from the object lists, which it assumes empty.
    // Leaves the native markers alone.
    void build();
    // Fills stride, key class and interpolated elements from the key layout
    // of the lane's key type; an unknown type leaves them as they were.
    static void setupLane(SequencerLane* lane);

    DECLARE_TYPEINFO(UniqueTypeInfo<SequencerResourceIntermediate>)

protected:
    ~SequencerResourceIntermediate() override;

private:
    // Both at once, or null.
    bool findTrackAt(AutoString const& name, SequencerTrack*& track, u32& index) const;
    bool findLaneAt(AutoString const& track, AutoString const& lane, SequencerLane*& object, sNativeLane*& native) const;
    u32 findMarkerIndex(AutoString const& name, SequencerMarker*& marker) const;
    void moveTrack(AutoString const& name, int where);
    void moveLane(AutoString const& track, AutoString const& lane, int where);

    ObjectList mTrackList;
    List<SequencerMarker> mMarkerList;
};
