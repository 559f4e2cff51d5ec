// Index
//   [SECTION] Key layouts and array helpers
//   [SECTION] Editable objects
//   [SECTION] SequencerResource: the ".seq" file
//   [SECTION] SequencerResourceIntermediate: XML, build
//   [SECTION] Track and lane edits
//   [SECTION] Key edits
//   [SECTION] Marker edits
#include "sequencer/sequencerresource.h"

#include <cstring>

#include "app/application.h"
#include "foundation/debug.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "serial/stream.h"
#include "ui/uicontrol.h"

IMPLEMENT_TYPEINFO(SequencerKey, "ObjectBase", TypeInfo::eAttribute_Abstract);
IMPLEMENT_OBJECT_TYPEINFO(SequencerLane, "ObjectBase");
IMPLEMENT_OBJECT_TYPEINFO(SequencerTrack, "ObjectBase");
IMPLEMENT_OBJECT_TYPEINFO(SequencerMarker, "ObjectBase");
IMPLEMENT_OBJECT_TYPEINFO(SequencerResource, "ResourceBase");
IMPLEMENT_OBJECT_TYPEINFO(SequencerResourceIntermediate, "SequencerResource");

#define HARBOR_KEY_CLASS(T, name) IMPLEMENT_TEMPLATE_OBJECT_TYPEINFO(SequencerUniqueKey<T>, name, "SequencerKey")
HARBOR_KEY_CLASS(bool, "SequencerUniqueKey<bool>");
HARBOR_KEY_CLASS(u8, "SequencerUniqueKey<u8>");
HARBOR_KEY_CLASS(u16, "SequencerUniqueKey<u16>");
HARBOR_KEY_CLASS(u32, "SequencerUniqueKey<u32>");
HARBOR_KEY_CLASS(u64, "SequencerUniqueKey<u64>");
HARBOR_KEY_CLASS(s8, "SequencerUniqueKey<s8>");
HARBOR_KEY_CLASS(s16, "SequencerUniqueKey<s16>");
HARBOR_KEY_CLASS(s32, "SequencerUniqueKey<s32>");
HARBOR_KEY_CLASS(s64, "SequencerUniqueKey<s64>");
HARBOR_KEY_CLASS(f32, "SequencerUniqueKey<f32>");
HARBOR_KEY_CLASS(f64, "SequencerUniqueKey<f64>");
HARBOR_KEY_CLASS(sFixed, "SequencerUniqueKey<sFixed>");
HARBOR_KEY_CLASS(sPoint, "SequencerUniqueKey<sPoint>");
HARBOR_KEY_CLASS(sSize, "SequencerUniqueKey<sSize>");
HARBOR_KEY_CLASS(sRect, "SequencerUniqueKey<sRect>");
HARBOR_KEY_CLASS(sColor, "SequencerUniqueKey<sColor>");
HARBOR_KEY_CLASS(sColorF, "SequencerUniqueKey<sColorF>");
HARBOR_KEY_CLASS(sTexcoord, "SequencerUniqueKey<sTexcoord>");
HARBOR_KEY_CLASS(sVector, "SequencerUniqueKey<sVector>");
#undef HARBOR_KEY_CLASS
// Full specialisations of the class: their records are plain members.
UniqueTypeInfo<SequencerUniqueKey<void>> SequencerUniqueKey<void>::mUniqueTypeInfo("SequencerUniqueKey<void>",
                                                                                  "SequencerKey");
UniqueTypeInfo<SequencerUniqueKey<ResourceBase>>
    SequencerUniqueKey<ResourceBase>::mUniqueTypeInfo("SequencerUniqueKey<ResourceBase>", "SequencerKey");

// ---------------------------------------------------------------------------
// [SECTION] Key layouts and array helpers

namespace {

// Every key type, property types first, then trigger argument types.
SequencerResource::sKeyLayout const kKeyLayouts[] = {
    {1, "SequencerUniqueKey<bool>", 4, 0, 2},      {2, "SequencerUniqueKey<s8>", 4, 1, 2},
    {3, "SequencerUniqueKey<s16>", 4, 1, 2},       {4, "SequencerUniqueKey<s32>", 8, 1, 4},
    {5, "SequencerUniqueKey<s64>", 12, 1, 4},      {6, "SequencerUniqueKey<u8>", 4, 1, 2},
    {7, "SequencerUniqueKey<u16>", 4, 1, 2},       {8, "SequencerUniqueKey<u32>", 8, 1, 4},
    {9, "SequencerUniqueKey<u64>", 12, 1, 4},      {10, "SequencerUniqueKey<f32>", 8, 1, 4},
    {11, "SequencerUniqueKey<f64>", 12, 1, 4},     {12, "SequencerUniqueKey<sSize>", 12, 2, 4},
    {13, "SequencerUniqueKey<sPoint>", 12, 2, 4},  {14, "SequencerUniqueKey<sRect>", 20, 4, 4},
    {15, "SequencerUniqueKey<sColor>", 8, 4, 4},   {16, "SequencerUniqueKey<sColorF>", 20, 4, 4},
    {17, "SequencerUniqueKey<sTexcoord>", 8, 2, 4}, {18, "SequencerUniqueKey<sFixed>", 8, 1, 4},
    {19, "SequencerUniqueKey<sVector>", 12, 2, 4}, {23, "SequencerUniqueKey<ResourceBase>", 236, 0, 0},
    {129, "SequencerUniqueKey<void>", 4, 0, 0},    {130, "SequencerUniqueKey<bool>", 4, 0, 2},
    {131, "SequencerUniqueKey<u8>", 4, 1, 2},      {132, "SequencerUniqueKey<u16>", 4, 1, 2},
    {133, "SequencerUniqueKey<u32>", 8, 1, 4},     {134, "SequencerUniqueKey<u64>", 12, 1, 4},
    {135, "SequencerUniqueKey<s8>", 4, 1, 2},      {136, "SequencerUniqueKey<s16>", 4, 1, 2},
    {137, "SequencerUniqueKey<s32>", 8, 1, 4},     {138, "SequencerUniqueKey<s64>", 12, 1, 4},
    {139, "SequencerUniqueKey<f32>", 8, 1, 4},     {140, "SequencerUniqueKey<f64>", 12, 1, 4},
    {141, "SequencerUniqueKey<sFixed>", 8, 1, 4},
};

// From the resource heap, whose blocks suit the pointers of the native track
// and lane arrays. Zeroed, so that a load that stops half-way releases only
// what it made.
void* allocateArray(u32 size)
{
    void* block = ResourceBase::allocate(size);
    if (block == nullptr) {
        dev_assert("Sequence allocation failed.", __FILE__, __LINE__);
    }
    memset(block, 0, size);
    return block;
}

template <typename T>
T* allocateEntries(u32 count)
{
    return static_cast<T*>(allocateArray(count * static_cast<u32>(sizeof(T))));
}

void releaseBlock(void* pointer)
{
    if (pointer != nullptr) {
        ResourceBase::deallocate(pointer);
    }
}

// A copy of the array with a zeroed gap of one entry of size bytes at index.
void insertEntry(void*& array, u32 count, u32 index, u32 size)
{
    u8* fresh = static_cast<u8*>(allocateArray((count + 1) * size));
    u8 const* old = static_cast<u8 const*>(array);
    if (old != nullptr) {
        memcpy(fresh, old, index * size);
        memcpy(fresh + (index + 1) * size, old + index * size, (count - index) * size);
    }
    releaseBlock(array);
    array = fresh;
}

// A copy without the entry at index; null when it was the only one.
void removeEntry(void*& array, u32 count, u32 index, u32 size)
{
    u8* fresh = nullptr;
    if (count > 1) {
        fresh = static_cast<u8*>(allocateArray((count - 1) * size));
        u8 const* old = static_cast<u8 const*>(array);
        memcpy(fresh, old, index * size);
        memcpy(fresh + index * size, old + (index + 1) * size, (count - index - 1) * size);
    }
    releaseBlock(array);
    array = fresh;
}

// Takes the entry at from out and puts it in at to, sliding those between.
void moveEntry(void* array, u32 from, u32 to, u32 size)
{
    if (from == to) {
        return;
    }
    u8* base = static_cast<u8*>(array);
    u8 saved[SequencerResource::ResourceKeySize];
    memcpy(saved, base + from * size, size);
    if (from < to) {
        memmove(base + from * size, base + (from + 1) * size, (to - from) * size);
    } else {
        memmove(base + (to + 1) * size, base + to * size, (from - to) * size);
    }
    memcpy(base + to * size, saved, size);
}

template <typename T>
void insertEntry(T*& array, u32 count, u32 index)
{
    void* pointer = array;
    insertEntry(pointer, count, index, sizeof(T));
    array = static_cast<T*>(pointer);
}

template <typename T>
void removeEntry(T*& array, u32 count, u32 index)
{
    void* pointer = array;
    removeEntry(pointer, count, index, sizeof(T));
    array = static_cast<T*>(pointer);
}

void insertAt(ObjectList& list, u32 index, ObjectBase* object)
{
    if (index < list.size()) {
        list.insertFront(list.begin() + static_cast<int>(index), object);
    } else {
        list.addLast(object);
    }
}

u32 indexOf(ObjectList const& list, ObjectBase const* object)
{
    ObjectList::Iterator it = list.find(object);
    return (it == list.end()) ? 0xFFFFFFFFu : list.getIndex(it);
}

void putU16(u8* at, u32 value)
{
    at[0] = static_cast<u8>(value & 0xFF);
    at[1] = static_cast<u8>((value >> 8) & 0xFF);
}

void putU32(u8* at, u32 value)
{
    putU16(at, value & 0xFFFF);
    putU16(at + 2, value >> 16);
}

u32 getU16(u8 const* at)
{
    return static_cast<u32>(at[0] | (at[1] << 8));
}

u32 getU32(u8 const* at)
{
    return getU16(at) | (getU16(at + 2) << 16);
}

// Reads through the binary accessor and counts what is left, so that no
// count in the file makes the reader allocate more than the file can fill.
class FileReader {
public:
    FileReader(BinaryStreamAccessor* accessor, u32 length) : mpAccessor(accessor), mLeft(length) {}
    bool read(void* buffer, u32 size)
    {
        if (size > mLeft || mpAccessor->read(buffer, size) != size) {
            return false;
        }
        mLeft -= size;
        return true;
    }
    // Whether count records of size bytes can still be in the file.
    bool fits(u64 count, u64 size) const { return count * size <= mLeft; }

private:
    BinaryStreamAccessor* mpAccessor;
    u32 mLeft;
};

} // namespace

SequencerResource::sKeyLayout const* SequencerResource::findKeyLayout(unsigned int type)
{
    for (sKeyLayout const& layout : kKeyLayouts) {
        if (layout.mType == type) {
            return &layout;
        }
    }
    return nullptr;
}

void* SequencerResource::getKeyParameter(void* key, unsigned int type)
{
    sKeyLayout const* layout = findKeyLayout(type);
    if (layout == nullptr || layout->mParameterOffset != 4) {
        return nullptr;
    }
    return static_cast<u8*>(key) + 4;
}

// ---------------------------------------------------------------------------
// [SECTION] Editable objects

void SequencerKey::makePropertyList(PropertyList& list)
{
    ObjectBase::makePropertyList(list);
    list.add(new ReferenceProperty<u16>("frame", &mFrame));
    list.add(new ReferenceProperty<u8>("interpolate_type", &mInterpolateType));
    list.add(new ReferenceProperty<u8>("trigger_only", &mTriggerOnly));
}

template <typename T>
void SequencerUniqueKey<T>::makePropertyList(PropertyList& list)
{
    SequencerKey::makePropertyList(list);
    list.add(new ReferenceProperty<T>("parameter", &mParameter));
}

namespace {

sEnumInfo const kInterpolateTypeNames[] = {{"CONSTANT", 0}, {"LINEAR", 1}, {"HERMITE", 2}, {"TRIGGER", 3}};
sEnumInfo const kMarkerTypeNames[] = {{"TARGET", 0}, {"JUMP TARGET", 1}, {"JUMP FRAME", 2}};

void addWidget(List<UIBase>& list, ControlBase* control)
{
    if (UIBase* widget = Utils::makeUIFromControl(control)) {
        list.addLast(widget);
    }
}

} // namespace

void SequencerKey::makeUIList(List<UIBase>& list)
{
    ObjectBase::makeUIList(list);
    uNumeric minimum;
    uNumeric maximum;
    minimum.mU64 = 0;
    maximum.mU64 = 0;
    maximum.mU16 = static_cast<u16>(SequencerResource::FrameMask);
    UIControl* frame = new UIParameterControl(new ReferenceProperty<u16>("frame", &mFrame), minimum, maximum, false,
                                              UIControl::NoIndex, UIControl::eMode_Decimal);
    frame->setDefaultSize();
    list.addLast(frame);
    UIControl* type = new UIEnumControl(new ReferenceProperty<u8>("interpolate_type", &mInterpolateType),
                                        kInterpolateTypeNames, 4, mTriggerOnly != 0, UIControl::NoIndex);
    type->setDefaultSize();
    list.addLast(type);
}

template <typename T>
void SequencerUniqueKey<T>::makeUIList(List<UIBase>& list)
{
    SequencerKey::makeUIList(list);
    PropertyControl control(new ReferenceProperty<T>(getControlName().c_str(), &mParameter));
    addWidget(list, &control);
}

SequencerUniqueKey<ResourceBase>::~SequencerUniqueKey()
{
    setResource(nullptr);
}

void SequencerUniqueKey<ResourceBase>::setResource(ResourceBase* resource)
{
    if (resource == mpResource) {
        return;
    }
    if (resource != nullptr) {
        resource->addRef();
    }
    if (mpResource != nullptr) {
        mpResource->release();
    }
    mpResource = resource;
}

void SequencerUniqueKey<ResourceBase>::makeUIList(List<UIBase>& list)
{
    SequencerKey::makeUIList(list);
    TypeInfo const* type = TypeInfo::find(mResourceTypeID);
    if (type == nullptr || !type->isDerivedFrom(ResourceBase::getStaticTypeInfo())) {
        type = ResourceBase::getStaticTypeInfo();
    }
    PropertyControl control(new ResourceProperty(getControlName().c_str(), type, &mpResource), type);
    addWidget(list, &control);
}

void SequencerUniqueKey<ResourceBase>::makePropertyList(PropertyList& list)
{
    SequencerKey::makePropertyList(list);
    list.add(new ResourceProperty("resource", ResourceBase::getStaticTypeInfo(), &mpResource));
    list.add(new ReferenceProperty<u32>("resource_typeid", &mResourceTypeID));
}

template class SequencerUniqueKey<bool>;
template class SequencerUniqueKey<u8>;
template class SequencerUniqueKey<u16>;
template class SequencerUniqueKey<u32>;
template class SequencerUniqueKey<u64>;
template class SequencerUniqueKey<s8>;
template class SequencerUniqueKey<s16>;
template class SequencerUniqueKey<s32>;
template class SequencerUniqueKey<s64>;
template class SequencerUniqueKey<f32>;
template class SequencerUniqueKey<f64>;
template class SequencerUniqueKey<sFixed>;
template class SequencerUniqueKey<sPoint>;
template class SequencerUniqueKey<sSize>;
template class SequencerUniqueKey<sRect>;
template class SequencerUniqueKey<sColor>;
template class SequencerUniqueKey<sColorF>;
template class SequencerUniqueKey<sTexcoord>;
template class SequencerUniqueKey<sVector>;

SequencerLane::SequencerLane()
    : mControlType(0), mKeyType(0), mKeyStride(0), mKeyTypeID(0), mKeyInterpolateNum(0)
{
    mKeyList.setContentStability(false);
}

void SequencerLane::makePropertyList(PropertyList& list)
{
    ObjectBase::makePropertyList(list);
    list.add(new ReferenceProperty<u32>("control_type", &mControlType));
    list.add(new ReferenceProperty<AutoString>("control_name", &mControlName));
    list.add(new ReferenceProperty<u32>("key_type", &mKeyType));
    list.add(new ReferenceProperty<u32>("key_stride", &mKeyStride));
    list.add(new ReferenceProperty<u32>("key_typeid", &mKeyTypeID));
    list.add(new ReferenceProperty<u32>("key_interpolate_num", &mKeyInterpolateNum));
    list.add(new ObjectProperty("key_list", &mKeyList));
}

SequencerKey* SequencerLane::findKey(unsigned int frame) const
{
    for (ObjectList::Iterator it = mKeyList.begin(); it != mKeyList.end(); ++it) {
        SequencerKey* key = static_cast<SequencerKey*>(*it);
        if (key->getFrame() == frame) {
            return key;
        }
    }
    return nullptr;
}

SequencerKey* SequencerLane::findKeyBlock(unsigned int frame) const
{
    SequencerKey* found = nullptr;
    for (ObjectList::Iterator it = mKeyList.begin(); it != mKeyList.end(); ++it) {
        SequencerKey* key = static_cast<SequencerKey*>(*it);
        if (key->getFrame() > frame) {
            break;
        }
        found = key;
    }
    return found;
}

SequencerTrack::SequencerTrack() : mObjectTypeID(31)
{
    mLaneList.setContentStability(false);
}

void SequencerTrack::makePropertyList(PropertyList& list)
{
    ObjectBase::makePropertyList(list);
    list.add(new ReferenceProperty<AutoString>("track_name", &mTrackName));
    list.add(new ReferenceProperty<u32>("object_type_id", &mObjectTypeID));
    list.add(new ObjectProperty("lane_list", &mLaneList));
}

SequencerLane* SequencerTrack::findLane(AutoString const& name) const
{
    if (name.empty() || name.size() == 0) {
        return nullptr;
    }
    for (ObjectList::Iterator it = mLaneList.begin(); it != mLaneList.end(); ++it) {
        SequencerLane* lane = static_cast<SequencerLane*>(*it);
        if (lane->mControlName == name) {
            return lane;
        }
    }
    return nullptr;
}

void SequencerMarker::makePropertyList(PropertyList& list)
{
    ObjectBase::makePropertyList(list);
    list.add(new ReferenceProperty<AutoString>("marker_name", &mMarkerName));
    list.add(new ReferenceProperty<u16>("frame", &mFrame));
    list.add(new ReferenceProperty<u8>("marker_type", &mMarkerType));
    list.add(new ReferenceProperty<u8>("initial_count", &mInitialCount));
    list.add(new ReferenceProperty<bool>("reset", &mReset));
    list.add(new ReferenceProperty<u16>("target_frame", &mTargetFrame));
    list.add(new ReferenceProperty<AutoString>("target_marker_name", &mTargetMarkerName));
}

void SequencerMarker::makeControlList(List<ControlBase>& list)
{
    ObjectBase::makeControlList(list);
    u16 const last = static_cast<u16>(SequencerResource::FrameMask);
    list.addLast(new PropertyControl(new ReferenceProperty<AutoString>("marker_name", &mMarkerName)));
    list.addLast(new PropertyControl(new ReferenceProperty<u16>("frame", &mFrame), u16(0), last));
    list.addLast(new PropertyControl(new ReferenceProperty<u8>("marker_type", &mMarkerType), kMarkerTypeNames, 3));
    list.addLast(new PropertyControl(new ReferenceProperty<u8>("initial_count", &mInitialCount)));
    list.addLast(new PropertyControl(new ReferenceProperty<bool>("reset", &mReset)));
    list.addLast(new PropertyControl(new ReferenceProperty<u16>("target_frame", &mTargetFrame), u16(0), last));
    list.addLast(new PropertyControl(new ReferenceProperty<AutoString>("target_marker_name", &mTargetMarkerName)));
}

// ---------------------------------------------------------------------------
// [SECTION] SequencerResource: the ".seq" file

SequencerResource::SequencerResource() : SequencerResource(eAttribute_Native)
{
}

SequencerResource::SequencerResource(u16 attribute)
    : ResourceBase(attribute), mSequenceType(0), mTrackNum(0), mMarkerNum(0), mStartFrame(0), mEndFrame(120),
      mFPS(60), mTypeDependentDataSize(0), mpTypeDependentData(nullptr), mpTrackArray(nullptr),
      mpMarkerArray(nullptr)
{
}

SequencerResource::~SequencerResource()
{
    // Not the virtual: a derived part is gone by now.
    SequencerResource::removeAll();
}

TypeInfo const* SequencerResource::getIntermediateType() const
{
    return SequencerResourceIntermediate::getStaticTypeInfo();
}

TypeInfo const* SequencerResource::getExtraIntermediateType(unsigned int index) const
{
    // The animation resource registers later in the program's type tree.
    return (index == 0) ? TypeInfo::find("AnimResource") : nullptr;
}

void SequencerResource::releaseLanes(sNativeLane* lanes, u32 laneNum)
{
    if (lanes == nullptr) {
        return;
    }
    for (u32 i = 0; i < laneNum; ++i) {
        releaseBlock(lanes[i].mpKeyArray);
    }
    releaseBlock(lanes);
}

void SequencerResource::removeAll()
{
    if (mpTrackArray != nullptr) {
        for (u32 i = 0; i < mTrackNum; ++i) {
            releaseLanes(mpTrackArray[i].mpLaneArray, mpTrackArray[i].mLaneNum);
        }
    }
    releaseBlock(mpTypeDependentData);
    releaseBlock(mpTrackArray);
    releaseBlock(mpMarkerArray);
    // The end frame deliberately goes to 0, not back to the constructor's 120.
    mStartFrame = 0;
    mEndFrame = 0;
    mFPS = 60;
    mTrackNum = 0;
    mMarkerNum = 0;
    mTypeDependentDataSize = 0;
    mpTypeDependentData = nullptr;
    mpTrackArray = nullptr;
    mpMarkerArray = nullptr;
}

void SequencerResource::destructData(u32 trackIndex, u32 laneNum)
{
    if (mpTrackArray != nullptr) {
        for (u32 i = 0; i <= trackIndex && i < mTrackNum; ++i) {
            releaseLanes(mpTrackArray[i].mpLaneArray, (i == trackIndex) ? laneNum : mpTrackArray[i].mLaneNum);
        }
    }
    releaseBlock(mpTrackArray);
    releaseBlock(mpMarkerArray);
    mpTrackArray = nullptr;
    mpMarkerArray = nullptr;
    mStartFrame = 0;
    mEndFrame = 0;
    mFPS = 60;
    mTrackNum = 0;
    mMarkerNum = 0;
}

bool SequencerResource::load(Stream& stream)
{
    removeAll();
    BinaryStreamAccessor* accessor = stream.getBinaryAccessor();
    if (accessor == nullptr) {
        return false;
    }
    FileReader reader(accessor, stream.getLength());
    u8 header[HeaderSize];
    if (!reader.read(header, HeaderSize) || getU32(header) != 0x20514553u || getU32(header + 4) != 0) {
        return false;
    }
    mSequenceType = getU32(header + 8);
    mStartFrame = getU32(header + 12);
    mEndFrame = getU32(header + 16);
    mFPS = getU32(header + 20);
    u32 const trackNum = getU32(header + 24);
    u32 const markerNum = getU32(header + 28);
    u32 const dataSize = getU32(header + 32);

    // Counts the rest of the file cannot hold, and a timeline outside the
    // 12-bit frames, mark a damaged file.
    bool intact = markerNum <= MaxMarkerNum && reader.fits(dataSize, 1) && mStartFrame <= FrameMask &&
        mEndFrame <= FrameMask;
    if (intact && dataSize != 0) {
        mTypeDependentDataSize = dataSize;
        mpTypeDependentData = static_cast<u8*>(allocateArray(dataSize));
        intact = reader.read(mpTypeDependentData, dataSize);
    }
    if (intact && markerNum != 0) {
        // Deliberately one record for all markers: the reader of this format
        // fills every entry from the first record.
        u8 record[MarkerRecordSize];
        intact = reader.read(record, MarkerRecordSize);
        mpMarkerArray = allocateEntries<sNativeMarker>(markerNum);
        mMarkerNum = markerNum;
        for (u32 i = 0; intact && i < markerNum; ++i) {
            sNativeMarker& marker = mpMarkerArray[i];
            marker.mType = record[6] & 3;
            marker.mFrame = getU16(record) & FrameMask;
            marker.mCount = record[7];
            marker.mReset = (record[6] & 0x80) != 0;
            marker.mTargetFrame = getU16(record + 2) & FrameMask;
            marker.mTargetIndex = getU16(record + 4);
        }
    }
    intact = intact && reader.fits(trackNum, TrackRecordSize);
    if (intact && trackNum != 0) {
        mpTrackArray = allocateEntries<sNativeTrack>(trackNum);
        mTrackNum = trackNum;
    }
    for (u32 t = 0; intact && t < trackNum; ++t) {
        u8 record[TrackRecordSize];
        if (!(intact = reader.read(record, TrackRecordSize))) {
            break;
        }
        if (TypeInfo::find(getU32(record)) == nullptr) {
            DEV_TRACE("Object not found.\n");
            destructData(t, 0);
            return false;
        }
        sNativeTrack& track = mpTrackArray[t];
        track.mObjectTypeID = getU32(record);
        u32 const laneNum = getU32(record + 4);
        if (!(intact = reader.fits(laneNum, LaneRecordSize))) {
            break;
        }
        track.mLaneNum = laneNum;
        if (laneNum != 0) {
            track.mpLaneArray = allocateEntries<sNativeLane>(laneNum);
        }
        for (u32 l = 0; intact && l < laneNum; ++l) {
            u8 laneRecord[LaneRecordSize];
            if (!(intact = reader.read(laneRecord, LaneRecordSize))) {
                break;
            }
            sNativeLane& lane = track.mpLaneArray[l];
            lane.mControlType = getU32(laneRecord) & 0xF;
            lane.mNameHash = getU32(laneRecord + 4);
            lane.mKeyNum = static_cast<u16>(getU16(laneRecord + 8));
            // The stride comes from the record: a freshly allocated entry
            // holds nothing that could stand for it.
            lane.mKeyStride = laneRecord[10];
            lane.mKeyInterpolateNum = laneRecord[11] & 0xF;
            u32 const blockSize = lane.mKeyNum * lane.mKeyStride;
            if (blockSize != 0 && (intact = reader.fits(blockSize, 1))) {
                lane.mpKeyArray = static_cast<u8*>(allocateArray(blockSize));
                intact = reader.read(lane.mpKeyArray, blockSize);
            }
        }
    }
    if (!intact) {
        DEV_TRACE("Sequence file is damaged.\n");
        removeAll();
        return false;
    }
    takePathFrom(stream);
    return true;
}

bool SequencerResource::save(Stream& stream)
{
    BinaryStreamAccessor* accessor = stream.getBinaryAccessor();
    if (accessor == nullptr) {
        return false;
    }
    bool written = true;
    auto put = [&](void const* data, u32 size) { written = (accessor->write(data, size) == size) && written; };
    // The header image is filled but, as in every writer of this format,
    // not emitted: the file begins with the type-dependent data.
    u8 header[HeaderSize] = {};
    putU32(header, 0x20514553u);
    putU32(header + 12, mStartFrame);
    putU32(header + 16, mEndFrame);
    putU32(header + 20, mFPS);
    putU32(header + 24, mTrackNum);
    putU32(header + 28, mMarkerNum);
    putU32(header + 32, mTypeDependentDataSize);
    if (mTypeDependentDataSize != 0) {
        put(mpTypeDependentData, mTypeDependentDataSize);
    }
    for (u32 i = 0; i < mMarkerNum; ++i) {
        sNativeMarker const& marker = mpMarkerArray[i];
        u8 record[MarkerRecordSize];
        putU16(record, marker.mFrame);
        putU16(record + 2, marker.mTargetFrame);
        putU16(record + 4, marker.mTargetIndex);
        record[6] = static_cast<u8>(marker.mType | (marker.mReset << 7));
        record[7] = static_cast<u8>(marker.mCount);
        put(record, MarkerRecordSize);
    }
    // One lane record buffer for the whole file: its stride byte is never
    // filled in and keeps what the buffer held.
    u8 laneRecord[LaneRecordSize] = {};
    for (u32 t = 0; t < mTrackNum; ++t) {
        sNativeTrack const& track = mpTrackArray[t];
        u8 record[TrackRecordSize];
        putU32(record, track.mObjectTypeID);
        putU32(record + 4, track.mLaneNum);
        put(record, TrackRecordSize);
        for (u32 l = 0; l < track.mLaneNum; ++l) {
            sNativeLane const& lane = track.mpLaneArray[l];
            putU32(laneRecord, lane.mControlType);
            putU32(laneRecord + 4, lane.mNameHash);
            putU16(laneRecord + 8, lane.mKeyNum);
            laneRecord[11] = lane.mKeyInterpolateNum;
            put(laneRecord, LaneRecordSize);
            if (lane.mKeyNum != 0) {
                put(lane.mpKeyArray, lane.mKeyNum * lane.mKeyStride);
            }
        }
    }
    return written;
}

// ---------------------------------------------------------------------------
// [SECTION] SequencerResourceIntermediate: XML, build

SequencerResourceIntermediate::SequencerResourceIntermediate()
    : SequencerResource(eAttribute_Intermediate | eAttribute_Creatable)
{
    mTrackList.setContentStability(false);
}

SequencerResourceIntermediate::~SequencerResourceIntermediate()
{
    removeAll();
}

TypeInfo const* SequencerResourceIntermediate::getNativeType() const
{
    return SequencerResource::getStaticTypeInfo();
}

void SequencerResourceIntermediate::makePropertyList(PropertyList& list)
{
    SequencerResource::makePropertyList(list);
    list.add(new ReferenceProperty<u32>("start_frame", &mStartFrame));
    list.add(new ReferenceProperty<u32>("end_frame", &mEndFrame));
    list.add(new ReferenceProperty<u32>("fps", &mFPS));
    list.add(new ObjectProperty("track_list", &mTrackList));
}

void SequencerResourceIntermediate::removeAll()
{
    for (LinkIterator<SequencerMarker> it = mMarkerList.begin(); it != mMarkerList.end(); ++it) {
        delete *it;
    }
    // Cleared as well: the list must not keep the deleted markers.
    mMarkerList.clear();
    for (ObjectList::Iterator it = mTrackList.begin(); it != mTrackList.end(); ++it) {
        delete *it;
    }
    mTrackList.clear();
    SequencerResource::removeAll();
    setModify();
}

namespace {

// Whether the entry is an object of that class or one derived from it.
bool isOf(ObjectBase const* object, TypeInfo const* type)
{
    return object != nullptr && object->getTypeInfo()->isDerivedFrom(type);
}

// Drops an entry that a damaged file put into a list: null entries and those
// of another class, with their trace. Answers the next position.
ObjectList::Iterator dropEntry(ObjectList& list, ObjectList::Iterator it, char const* nullTrace)
{
    if (*it == nullptr) {
        DEV_TRACE("%s", nullTrace);
    } else {
        DEV_TRACE("Invalid typeinfo detected.\n");
        delete *it;
    }
    return list.remove(it);
}

} // namespace

bool SequencerResourceIntermediate::load(Stream& stream)
{
    removeAll();
    clearModify();
    clearUpdate();
    readXml(stream);
    // Every entry is checked, so that nothing a damaged file left in the
    // lists reaches build.
    for (ObjectList::Iterator t = mTrackList.begin(); t != mTrackList.end();) {
        SequencerTrack* track = static_cast<SequencerTrack*>(*t);
        if (!isOf(track, SequencerTrack::getStaticTypeInfo())) {
            t = dropEntry(mTrackList, t, "Null SequencerTrack detected.\n");
            continue;
        }
        if (TypeInfo::find(track->mObjectTypeID) == nullptr) {
            DEV_TRACE("Invalid typeinfo detected.\n");
            delete track;
            t = mTrackList.remove(t);
            continue;
        }
        for (ObjectList::Iterator l = track->mLaneList.begin(); l != track->mLaneList.end();) {
            SequencerLane* lane = static_cast<SequencerLane*>(*l);
            if (!isOf(lane, SequencerLane::getStaticTypeInfo()) || findKeyLayout(lane->mKeyType) == nullptr) {
                l = dropEntry(track->mLaneList, l, "Null SequencerLane detected.\n");
                continue;
            }
            // The layout follows from the key type alone; a file cannot change it.
            setupLane(lane);
            for (ObjectList::Iterator k = lane->mKeyList.begin(); k != lane->mKeyList.end();) {
                SequencerKey* key = static_cast<SequencerKey*>(*k);
                if (key == nullptr || key->getTypeInfo()->getID() != lane->mKeyTypeID) {
                    k = dropEntry(lane->mKeyList, k, "Null SequencerKey detected.\n");
                    continue;
                }
                key->setControlName(lane->mControlName);
                ++k;
            }
            ++l;
        }
        ++t;
    }
    build();
    return true;
}

bool SequencerResourceIntermediate::save(Stream& stream)
{
    return writeXml(stream);
}

void SequencerResourceIntermediate::build()
{
    mTrackNum = mTrackList.size();
    if (mTrackNum != 0) {
        mpTrackArray = allocateEntries<sNativeTrack>(mTrackNum);
    }
    u32 t = 0;
    for (ObjectList::Iterator it = mTrackList.begin(); it != mTrackList.end(); ++it, ++t) {
        SequencerTrack* track = static_cast<SequencerTrack*>(*it);
        sNativeTrack& native = mpTrackArray[t];
        native.mObjectTypeID = track->mObjectTypeID;
        native.mLaneNum = track->mLaneList.size();
        native.mpLaneArray = (native.mLaneNum != 0) ? allocateEntries<sNativeLane>(native.mLaneNum) : nullptr;
        u32 l = 0;
        for (ObjectList::Iterator lt = track->mLaneList.begin(); lt != track->mLaneList.end(); ++lt, ++l) {
            SequencerLane* lane = static_cast<SequencerLane*>(*lt);
            sNativeLane& nativeLane = native.mpLaneArray[l];
            nativeLane.mControlType = lane->mControlType & 0xF;
            nativeLane.mNameHash = lane->mControlName.hash();
            nativeLane.mKeyNum = static_cast<u16>(lane->mKeyList.size());
            nativeLane.mKeyStride = static_cast<u8>(lane->mKeyStride);
            nativeLane.mKeyInterpolateNum = lane->mKeyInterpolateNum & 0xF;
            nativeLane.mpKeyArray = nullptr;
            if (nativeLane.mKeyNum == 0) {
                continue;
            }
            nativeLane.mpKeyArray = static_cast<u8*>(allocateArray(nativeLane.mKeyNum * nativeLane.mKeyStride));
            u8* key = nativeLane.mpKeyArray;
            for (ObjectList::Iterator kt = lane->mKeyList.begin(); kt != lane->mKeyList.end(); ++kt) {
                SequencerKey* object = static_cast<SequencerKey*>(*kt);
                makeKey(key, object);
                copyKeyParameter(key, object, lane->mKeyType);
                key += nativeLane.mKeyStride;
            }
        }
    }
}

void SequencerResourceIntermediate::setupLane(SequencerLane* lane)
{
    sKeyLayout const* layout = findKeyLayout(lane->mKeyType);
    if (layout == nullptr) {
        return;
    }
    TypeInfo const* type = TypeInfo::find(layout->mpClassName);
    lane->mKeyStride = layout->mStride;
    lane->mKeyTypeID = (type != nullptr) ? type->getID() : 0;
    lane->mKeyInterpolateNum = layout->mInterpolateNum;
}

void SequencerResourceIntermediate::makeKey(u8* native, SequencerKey const* key)
{
    writeKeyWord(native, static_cast<u16>((key->getFrame() & FrameMask) | ((key->getInterpolateType() & 0xF) << 12)));
}

void SequencerResourceIntermediate::copyKeyParameter(u8* native, SequencerKey* key, unsigned int keyType)
{
    switch (keyType) {
    case ePropertyType_Resource: {
        SequencerUniqueKey<ResourceBase>* resourceKey = static_cast<SequencerUniqueKey<ResourceBase>*>(key);
        ResourceBase* resource = resourceKey->getResource();
        memset(native + 8, 0, ResourcePathSize);
        if (resource == nullptr) {
            putU32(native + 4, 0xFFFFFFFFu);
            putU32(native + 232, 0xFFFFFFFFu);
            return;
        }
        AutoString const path = Utils::getResourcePath(resource->getPath().c_str());
        u32 const length = path.empty() ? 0 : path.size();
        if (length > ResourcePathSize - 1) {
            dev_assert("Too long path.", __FILE__, __LINE__);
        }
        putU32(native + 4, resource->getTypeInfo()->getID());
        if (length != 0) {
            memcpy(native + 8, path.c_str(), length);
        }
        putU32(native + 232, resource->getHash());
        return;
    }
    case ePropertyType_Bool:
    case 130:
        native[2] = (*static_cast<u8*>(key->getParameter()) == 1) ? 1 : 0;
        return;
    case ePropertyType_S8:
    case ePropertyType_U8:
    case 131:
    case 135:
        native[2] = *static_cast<u8*>(key->getParameter());
        return;
    case ePropertyType_S16:
    case ePropertyType_U16:
    case 132:
    case 136:
        memcpy(native + 2, key->getParameter(), 2);
        return;
    case 129:
        return;
    default:
        if (void* parameter = getKeyParameter(native, keyType)) {
            key->copyParameter(parameter);
        }
        return;
    }
}

void SequencerResourceIntermediate::setFPS(u32 fps)
{
    if (fps != mFPS) {
        mFPS = fps;
        setModify();
    }
}

void SequencerResourceIntermediate::setStartFrame(u32 frame)
{
    if (frame != mStartFrame) {
        mStartFrame = frame;
        setModify();
    }
}

void SequencerResourceIntermediate::setEndFrame(u32 frame)
{
    if (frame != mEndFrame) {
        mEndFrame = frame;
        setModify();
    }
}

// ---------------------------------------------------------------------------
// [SECTION] Track and lane edits

bool SequencerResourceIntermediate::findTrackAt(AutoString const& name, SequencerTrack*& track, u32& index) const
{
    track = findTrack(name);
    index = getTrackIndex(track);
    return track != nullptr;
}

void SequencerResourceIntermediate::addTrack(TypeInfo const* type, AutoString name)
{
    if (name.empty() || name.size() == 0 || type == nullptr) {
        return;
    }
    SequencerTrack* track = new SequencerTrack();
    track->mTrackName = name;
    track->mObjectTypeID = type->getID();
    mTrackList.addLast(track);
    insertEntry(mpTrackArray, mTrackNum, mTrackNum);
    mpTrackArray[mTrackNum].mObjectTypeID = track->mObjectTypeID;
    ++mTrackNum;
    setModify();
}

SequencerTrack* SequencerResourceIntermediate::findTrack(AutoString name) const
{
    for (ObjectList::Iterator it = mTrackList.begin(); it != mTrackList.end(); ++it) {
        SequencerTrack* track = static_cast<SequencerTrack*>(*it);
        if (track->mTrackName == name) {
            return track;
        }
    }
    return nullptr;
}

u32 SequencerResourceIntermediate::getTrackIndex(SequencerTrack const* track) const
{
    return (track == nullptr) ? 0xFFFFFFFFu : indexOf(mTrackList, track);
}

sNativeTrack* SequencerResourceIntermediate::findNativeTrack(AutoString name) const
{
    u32 const index = getTrackIndex(findTrack(name));
    return (index < mTrackNum) ? &mpTrackArray[index] : nullptr;
}

namespace {

// Where an entry at index of count goes: -1 forward, +1 backward, -2 to the
// first place, +2 to the last. Answers index when it stays.
u32 moveTarget(u32 index, u32 count, int where)
{
    switch (where) {
    case -1:
        return (index == 0) ? index : index - 1;
    case 1:
        return (index + 1 >= count) ? index : index + 1;
    case -2:
        return 0;
    default:
        return count - 1;
    }
}

void moveInList(ObjectList& list, u32 from, u32 to)
{
    ObjectBase* object = list[from];
    list.remove(object);
    insertAt(list, to, object);
}

} // namespace

void SequencerResourceIntermediate::moveTrack(AutoString const& name, int where)
{
    SequencerTrack* track;
    u32 index;
    if (!findTrackAt(name, track, index)) {
        return;
    }
    u32 const to = moveTarget(index, mTrackNum, where);
    if (to == index) {
        return;
    }
    moveInList(mTrackList, index, to);
    moveEntry(mpTrackArray, index, to, sizeof(sNativeTrack));
    setModify();
}

void SequencerResourceIntermediate::moveTrackForward(AutoString name)
{
    moveTrack(name, -1);
}

void SequencerResourceIntermediate::moveTrackBackward(AutoString name)
{
    moveTrack(name, 1);
}

void SequencerResourceIntermediate::moveTrackToFirst(AutoString name)
{
    moveTrack(name, -2);
}

void SequencerResourceIntermediate::moveTrackToLast(AutoString name)
{
    moveTrack(name, 2);
}

void SequencerResourceIntermediate::removeTrack(AutoString name)
{
    SequencerTrack* track;
    u32 index;
    if (!findTrackAt(name, track, index)) {
        return;
    }
    mTrackList.remove(track);
    delete track;
    releaseLanes(mpTrackArray[index].mpLaneArray, mpTrackArray[index].mLaneNum);
    removeEntry(mpTrackArray, mTrackNum, index);
    --mTrackNum;
    setModify();
}

bool SequencerResourceIntermediate::findLaneAt(AutoString const& track, AutoString const& lane,
                                               SequencerLane*& object, sNativeLane*& native) const
{
    SequencerTrack* owner = findTrack(track);
    object = (owner != nullptr) ? owner->findLane(lane) : nullptr;
    if (object == nullptr) {
        native = nullptr;
        return false;
    }
    native = &mpTrackArray[getTrackIndex(owner)].mpLaneArray[indexOf(owner->mLaneList, object)];
    return true;
}

void SequencerResourceIntermediate::addLane(AutoString trackName, ControlBase* control)
{
    SequencerTrack* track;
    u32 index;
    if (control == nullptr || !findTrackAt(trackName, track, index) || control->getName() == nullptr ||
        track->findLane(AutoString(control->getName())) != nullptr) {
        return;
    }
    SequencerLane* lane = new SequencerLane();
    lane->mControlType = control->getType();
    lane->mControlName = AutoString(control->getName());
    if (control->getType() != eControlType_Property) {
        lane->mKeyType = static_cast<TriggerControlBase*>(control)->getArgumentType();
    } else {
        lane->mKeyType = static_cast<PropertyControl*>(control)->getProperty()->getType();
    }
    setupLane(lane);
    track->mLaneList.addLast(lane);

    sNativeTrack& native = mpTrackArray[index];
    insertEntry(native.mpLaneArray, native.mLaneNum, native.mLaneNum);
    sNativeLane& entry = native.mpLaneArray[native.mLaneNum];
    entry.mControlType = lane->mControlType & 0xF;
    entry.mNameHash = lane->mControlName.hash();
    entry.mKeyStride = static_cast<u8>(lane->mKeyStride);
    entry.mKeyInterpolateNum = lane->mKeyInterpolateNum & 0xF;
    ++native.mLaneNum;
    setModify();
}

SequencerLane* SequencerResourceIntermediate::findLane(AutoString track, AutoString lane) const
{
    SequencerTrack* owner = findTrack(track);
    return (owner != nullptr) ? owner->findLane(lane) : nullptr;
}

sNativeLane* SequencerResourceIntermediate::findNativeLane(AutoString track, AutoString lane) const
{
    sNativeTrack* native = findNativeTrack(track);
    if (native == nullptr || lane.empty()) {
        return nullptr;
    }
    u32 const hash = lane.hash();
    for (u32 i = 0; i < native->mLaneNum; ++i) {
        if (native->mpLaneArray[i].mNameHash == hash) {
            return &native->mpLaneArray[i];
        }
    }
    return nullptr;
}

void SequencerResourceIntermediate::moveLane(AutoString const& trackName, AutoString const& laneName, int where)
{
    SequencerTrack* track = findTrack(trackName);
    SequencerLane* lane = (track != nullptr) ? track->findLane(laneName) : nullptr;
    if (lane == nullptr) {
        return;
    }
    u32 const index = indexOf(track->mLaneList, lane);
    u32 const to = moveTarget(index, track->mLaneList.size(), where);
    if (to == index) {
        return;
    }
    moveInList(track->mLaneList, index, to);
    moveEntry(mpTrackArray[getTrackIndex(track)].mpLaneArray, index, to, sizeof(sNativeLane));
    setModify();
}

void SequencerResourceIntermediate::moveLaneForward(AutoString track, AutoString lane)
{
    moveLane(track, lane, -1);
}

void SequencerResourceIntermediate::moveLaneBackward(AutoString track, AutoString lane)
{
    moveLane(track, lane, 1);
}

void SequencerResourceIntermediate::moveLaneToFirst(AutoString track, AutoString lane)
{
    moveLane(track, lane, -2);
}

void SequencerResourceIntermediate::moveLaneToLast(AutoString track, AutoString lane)
{
    moveLane(track, lane, 2);
}

void SequencerResourceIntermediate::removeLane(AutoString trackName, AutoString laneName)
{
    SequencerTrack* track = findTrack(trackName);
    SequencerLane* lane = (track != nullptr) ? track->findLane(laneName) : nullptr;
    if (lane == nullptr) {
        return;
    }
    u32 const index = indexOf(track->mLaneList, lane);
    track->mLaneList.remove(lane);
    delete lane;
    sNativeTrack& native = mpTrackArray[getTrackIndex(track)];
    releaseBlock(native.mpLaneArray[index].mpKeyArray);
    removeEntry(native.mpLaneArray, native.mLaneNum, index);
    --native.mLaneNum;
    setModify();
}

void SequencerResourceIntermediate::removeAllLane(AutoString trackName)
{
    SequencerTrack* track;
    u32 index;
    if (!findTrackAt(trackName, track, index)) {
        return;
    }
    for (ObjectList::Iterator it = track->mLaneList.begin(); it != track->mLaneList.end(); ++it) {
        delete *it;
    }
    track->mLaneList.clear();
    releaseLanes(mpTrackArray[index].mpLaneArray, mpTrackArray[index].mLaneNum);
    mpTrackArray[index].mpLaneArray = nullptr;
    mpTrackArray[index].mLaneNum = 0;
    setModify();
}

// ---------------------------------------------------------------------------
// [SECTION] Key edits

void SequencerResourceIntermediate::addKey(AutoString trackName, AutoString laneName, u32 frame, eInterpolateType type)
{
    SequencerLane* lane;
    sNativeLane* native;
    if (!findLaneAt(trackName, laneName, lane, native) || lane->findKey(frame) != nullptr) {
        return;
    }
    TypeInfo const* keyType = TypeInfo::find(lane->mKeyTypeID);
    if (keyType == nullptr || !keyType->isDerivedFrom(SequencerKey::getStaticTypeInfo())) {
        return;
    }
    SequencerKey* key = static_cast<SequencerKey*>(keyType->newInstance());
    key->setFrame(static_cast<u16>(frame));
    key->setInterpolateType(static_cast<u8>(type));
    key->setControlName(lane->mControlName);

    u32 index = 0;
    ObjectList::Iterator it = lane->mKeyList.begin();
    for (; it != lane->mKeyList.end(); ++it, ++index) {
        if (static_cast<SequencerKey*>(*it)->getFrame() > frame) {
            break;
        }
    }
    lane->mKeyList.insertFront(it, key);
    void* block = native->mpKeyArray;
    insertEntry(block, native->mKeyNum, index, native->mKeyStride);
    native->mpKeyArray = static_cast<u8*>(block);
    makeKey(native->mpKeyArray + index * native->mKeyStride, key);
    ++native->mKeyNum;
    setModify();
}

SequencerKey* SequencerResourceIntermediate::findKey(AutoString track, AutoString lane, u32 frame) const
{
    SequencerLane* object = findLane(track, lane);
    return (object != nullptr) ? object->findKey(frame) : nullptr;
}

u8* SequencerResourceIntermediate::findNativeKey(AutoString track, AutoString lane, u32 frame) const
{
    SequencerLane* object;
    sNativeLane* native;
    SequencerKey* key = findLaneAt(track, lane, object, native) ? object->findKey(frame) : nullptr;
    if (key == nullptr) {
        return nullptr;
    }
    return native->mpKeyArray + indexOf(object->mKeyList, key) * native->mKeyStride;
}

void SequencerResourceIntermediate::moveKey(AutoString trackName, AutoString laneName, u32 from, u32 to)
{
    SequencerLane* lane;
    sNativeLane* native;
    SequencerKey* key = findLaneAt(trackName, laneName, lane, native) ? lane->findKey(from) : nullptr;
    if (key == nullptr) {
        return;
    }
    u32 const oldIndex = indexOf(lane->mKeyList, key);
    lane->mKeyList.remove(key);
    key->setFrame(static_cast<u16>(to));
    u32 const stride = native->mKeyStride;
    u8* saved = static_cast<u8*>(Application::getInstance()->getTempAllocator()->allocate(static_cast<int>(stride), 4));
    memcpy(saved, native->mpKeyArray + oldIndex * stride, stride);
    makeKey(saved, key);
    u32 newIndex = 0;
    ObjectList::Iterator it = lane->mKeyList.begin();
    for (; it != lane->mKeyList.end(); ++it, ++newIndex) {
        if (static_cast<SequencerKey*>(*it)->getFrame() > to) {
            break;
        }
    }
    lane->mKeyList.insertFront(it, key);
    u8* keys = native->mpKeyArray;
    if (oldIndex < newIndex) {
        memmove(keys + oldIndex * stride, keys + (oldIndex + 1) * stride, (newIndex - oldIndex) * stride);
    } else if (newIndex < oldIndex) {
        memmove(keys + (newIndex + 1) * stride, keys + newIndex * stride, (oldIndex - newIndex) * stride);
    }
    memcpy(keys + newIndex * stride, saved, stride);
    Application::getInstance()->getTempAllocator()->deallocate(saved);
    setModify();
}

void SequencerResourceIntermediate::removeKey(AutoString trackName, AutoString laneName, u32 frame)
{
    SequencerLane* lane;
    sNativeLane* native;
    SequencerKey* key = findLaneAt(trackName, laneName, lane, native) ? lane->findKey(frame) : nullptr;
    if (key == nullptr) {
        return;
    }
    u32 const index = indexOf(lane->mKeyList, key);
    lane->mKeyList.remove(key);
    delete key;
    void* block = native->mpKeyArray;
    removeEntry(block, native->mKeyNum, index, native->mKeyStride);
    native->mpKeyArray = static_cast<u8*>(block);
    --native->mKeyNum;
    setModify();
}

void SequencerResourceIntermediate::removeAllKey(AutoString trackName, AutoString laneName)
{
    SequencerLane* lane;
    sNativeLane* native;
    if (!findLaneAt(trackName, laneName, lane, native)) {
        return;
    }
    for (ObjectList::Iterator it = lane->mKeyList.begin(); it != lane->mKeyList.end(); ++it) {
        delete *it;
    }
    lane->mKeyList.clear();
    releaseBlock(native->mpKeyArray);
    native->mpKeyArray = nullptr;
    native->mKeyNum = 0;
    setModify();
}

void SequencerResourceIntermediate::setKeyParameter(AutoString trackName, AutoString laneName, u32 frame,
                                                    void const* value)
{
    SequencerLane* lane;
    sNativeLane* native;
    SequencerKey* key = findLaneAt(trackName, laneName, lane, native) ? lane->findKey(frame) : nullptr;
    if (key == nullptr) {
        return;
    }
    key->setParameter(value);
    copyKeyParameter(native->mpKeyArray + indexOf(lane->mKeyList, key) * native->mKeyStride, key, lane->mKeyType);
    setModify();
}

void SequencerResourceIntermediate::setKeyInterpolateType(AutoString trackName, AutoString laneName, u32 frame,
                                                          eInterpolateType type)
{
    SequencerLane* lane;
    sNativeLane* native;
    SequencerKey* key = findLaneAt(trackName, laneName, lane, native) ? lane->findKey(frame) : nullptr;
    if (key == nullptr) {
        return;
    }
    key->setInterpolateType(static_cast<u8>(type));
    makeKey(native->mpKeyArray + indexOf(lane->mKeyList, key) * native->mKeyStride, key);
    setModify();
}

// ---------------------------------------------------------------------------
// [SECTION] Marker edits

u32 SequencerResourceIntermediate::findMarkerIndex(AutoString const& name, SequencerMarker*& marker) const
{
    u32 index = 0;
    for (LinkIterator<SequencerMarker> it = mMarkerList.begin(); it != mMarkerList.end(); ++it, ++index) {
        if (it->mMarkerName == name) {
            marker = *it;
            return index;
        }
    }
    marker = nullptr;
    return 0xFFFFFFFFu;
}

void SequencerResourceIntermediate::addMarker(AutoString name, u32 frame)
{
    if (mMarkerNum >= MaxMarkerNum) {
        return;
    }
    SequencerMarker* marker = new SequencerMarker();
    marker->mMarkerName = name;
    marker->mFrame = static_cast<u16>(frame);
    u32 index = 0;
    LinkIterator<SequencerMarker> it = mMarkerList.begin();
    for (; it != mMarkerList.end(); ++it, ++index) {
        if (it->mFrame > frame) {
            break;
        }
    }
    mMarkerList.insertFront(it, marker);
    insertEntry(mpMarkerArray, mMarkerNum, index);
    mpMarkerArray[index].mFrame = frame & FrameMask;
    ++mMarkerNum;
    setModify();
}

SequencerMarker* SequencerResourceIntermediate::findMarker(AutoString name) const
{
    SequencerMarker* marker;
    findMarkerIndex(name, marker);
    return marker;
}

SequencerMarker* SequencerResourceIntermediate::findMarker(u32 frame) const
{
    for (LinkIterator<SequencerMarker> it = mMarkerList.begin(); it != mMarkerList.end(); ++it) {
        if (it->mFrame == frame) {
            return *it;
        }
    }
    return nullptr;
}

SequencerMarker* SequencerResourceIntermediate::findMarkerBlock(u32 frame) const
{
    SequencerMarker* found = nullptr;
    for (LinkIterator<SequencerMarker> it = mMarkerList.begin(); it != mMarkerList.end() && it->mFrame <= frame; ++it) {
        found = *it;
    }
    return found;
}

sNativeMarker* SequencerResourceIntermediate::findNativeMarker(AutoString name) const
{
    SequencerMarker* marker;
    u32 const index = findMarkerIndex(name, marker);
    return (marker != nullptr) ? &mpMarkerArray[index] : nullptr;
}

void SequencerResourceIntermediate::moveMarker(AutoString name, u32 frame)
{
    SequencerMarker* marker;
    u32 const oldIndex = findMarkerIndex(name, marker);
    if (marker == nullptr) {
        return;
    }
    mMarkerList.remove(marker);
    marker->mFrame = static_cast<u16>(frame);
    u32 newIndex = 0;
    LinkIterator<SequencerMarker> it = mMarkerList.begin();
    for (; it != mMarkerList.end(); ++it, ++newIndex) {
        if (it->mFrame > frame) {
            break;
        }
    }
    mMarkerList.insertFront(it, marker);
    // The record keeps its old frame until something rebuilds it: playback
    // sees the move only then, as the tool expects.
    moveEntry(mpMarkerArray, oldIndex, newIndex, sizeof(sNativeMarker));
    u32 index = 0;
    for (it = mMarkerList.begin(); it != mMarkerList.end(); ++it, ++index) {
        if (it->mMarkerType == eMarkerType_JumpTarget && it->mTargetMarkerName == name) {
            mpMarkerArray[index].mTargetIndex = newIndex;
        }
    }
    setModify();
}

void SequencerResourceIntermediate::setMarkerName(AutoString name, AutoString newName)
{
    SequencerMarker* marker = findMarker(name);
    if (marker == nullptr || findMarker(newName) != nullptr) {
        return;
    }
    marker->mMarkerName = newName;
    for (LinkIterator<SequencerMarker> it = mMarkerList.begin(); it != mMarkerList.end(); ++it) {
        if (it->mMarkerType == eMarkerType_JumpTarget && it->mTargetMarkerName == name) {
            it->mTargetMarkerName = newName;
        }
    }
    setModify();
}

void SequencerResourceIntermediate::setMarkerType(AutoString name, eMarkerType type)
{
    SequencerMarker* marker;
    u32 const index = findMarkerIndex(name, marker);
    if (marker == nullptr) {
        return;
    }
    marker->mMarkerType = static_cast<u8>(type);
    mpMarkerArray[index].mType = type & 3;
    if (type == eMarkerType_JumpTarget) {
        setMarkerTargetName(name, marker->mTargetMarkerName);
    }
    setModify();
}

void SequencerResourceIntermediate::setMarkerCount(AutoString name, u8 count)
{
    SequencerMarker* marker;
    u32 const index = findMarkerIndex(name, marker);
    if (marker != nullptr) {
        marker->mInitialCount = count;
        mpMarkerArray[index].mCount = count;
        setModify();
    }
}

void SequencerResourceIntermediate::setMarkerReset(AutoString name, bool reset)
{
    SequencerMarker* marker;
    u32 const index = findMarkerIndex(name, marker);
    if (marker != nullptr) {
        marker->mReset = reset;
        mpMarkerArray[index].mReset = reset ? 1 : 0;
        setModify();
    }
}

void SequencerResourceIntermediate::setMarkerTargetFrame(AutoString name, u32 frame)
{
    SequencerMarker* marker;
    u32 const index = findMarkerIndex(name, marker);
    if (marker != nullptr) {
        marker->mTargetFrame = static_cast<u16>(frame);
        mpMarkerArray[index].mTargetFrame = frame & FrameMask;
        setModify();
    }
}

void SequencerResourceIntermediate::setMarkerTargetName(AutoString name, AutoString target)
{
    SequencerMarker* marker;
    u32 const index = findMarkerIndex(name, marker);
    if (marker == nullptr) {
        return;
    }
    marker->mTargetMarkerName = target;
    SequencerMarker* targetMarker;
    u32 const targetIndex = findMarkerIndex(target, targetMarker);
    mpMarkerArray[index].mTargetIndex = (targetMarker != nullptr) ? targetIndex : 0xFFFFu;
    setModify();
}

void SequencerResourceIntermediate::removeMarker(AutoString name)
{
    SequencerMarker* marker;
    u32 const index = findMarkerIndex(name, marker);
    if (marker == nullptr) {
        return;
    }
    mMarkerList.remove(marker);
    delete marker;
    removeEntry(mpMarkerArray, mMarkerNum, index);
    --mMarkerNum;
    setModify();
}

void SequencerResourceIntermediate::removeAllMarker()
{
    for (LinkIterator<SequencerMarker> it = mMarkerList.begin(); it != mMarkerList.end(); ++it) {
        delete *it;
    }
    mMarkerList.clear();
    releaseBlock(mpMarkerArray);
    mpMarkerArray = nullptr;
    mMarkerNum = 0;
    setModify();
}
