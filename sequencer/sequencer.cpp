// Index
//   [SECTION] Value types: differences, elements and results
//   [SECTION] Life, binding and reflection
//   [SECTION] Position, markers and steps
//   [SECTION] Lanes
#include "sequencer/sequencer.h"

#include <cmath>
#include <cstring>
#include <new>

#include "app/application.h"
#include "foundation/allocator.h"
#include "foundation/functor.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "resource/resourcesystem.h"
#include "sequencer/sequencerresource.h"

IMPLEMENT_OBJECT_TYPEINFO(Sequencer, "ObjectBase");

// ---------------------------------------------------------------------------
// [SECTION] Value types: differences, elements and results
//
// Each key type says how its differences are formed and how a float result
// goes back into the type. The forms are part of what a game shows: unsigned
// differences of falling keys come out near 2^32, results are truncated and
// cut to the width rather than clamped.

namespace {

// Truncation toward zero into 64 bits, saturating where the float is out of
// range (NaN gives 0), so that a zero-length span cannot reach undefined
// conversions.
s64 truncate64(f32 value)
{
    if (!(value == value)) {
        return 0;
    }
    if (value >= 9.2233720368547758e18f) {
        return INT64_MAX;
    }
    if (value <= -9.2233720368547758e18f) {
        return INT64_MIN;
    }
    return static_cast<s64>(value);
}

u32 toU32(f32 value)
{
    if (value < 0.0f || !(value == value)) {
        return 0;
    }
    return (value >= 4294967296.0f) ? 0xFFFFFFFFu : static_cast<u32>(value);
}

sFixed toFixed(f32 value)
{
    return sFixed::raw(static_cast<u32>(static_cast<u64>(truncate64(value * 65536.0f))));
}

template <typename T>
T cut(f32 value)
{
    return static_cast<T>(static_cast<u64>(truncate64(value)));
}

// Scalars: one element; d, t0 and t1 all use the type's own difference.
template <typename T>
struct sScalar {
    static constexpr u32 Num = 1;
    static f32 element(T const& value, u32) { return static_cast<f32>(value); }
};

template <typename T>
struct sElements;

// Unsigned up to 32 bits: 32-bit unsigned differences.
template <typename T>
struct sUnsignedSmall : sScalar<T> {
    static f32 difference(T const& a, T const& b, u32) { return static_cast<f32>(static_cast<u32>(a) - static_cast<u32>(b)); }
    static f32 differenceT1(T const& a, T const& b, u32 i) { return difference(a, b, i); }
    static void store(T& value, u32, f32 result) { value = cut<T>(result); }
};
template <>
struct sElements<u8> : sUnsignedSmall<u8> {};
template <>
struct sElements<u16> : sUnsignedSmall<u16> {};
template <>
struct sElements<u32> : sUnsignedSmall<u32> {
    static void store(u32& value, u32, f32 result) { value = toU32(result); }
};
template <>
struct sElements<u64> : sScalar<u64> {
    static f32 difference(u64 a, u64 b, u32) { return static_cast<f32>(a - b); }
    static f32 differenceT1(u64 a, u64 b, u32 i) { return difference(a, b, i); }
    static void store(u64& value, u32, f32 result)
    {
        if (result >= 18446744073709551616.0f) {
            value = UINT64_MAX;
        } else if (result >= 9.2233720368547758e18f) {
            value = static_cast<u64>(result);
        } else {
            value = static_cast<u64>(truncate64(result)); // below 0 wraps, as the machine word does
        }
    }
};

// Signed: signed subtraction, wrapping in the type's width for 32 and 64 bits.
template <typename T>
struct sSigned : sScalar<T> {
    static f32 difference(T const& a, T const& b, u32)
    {
        if (sizeof(T) < 4) {
            return static_cast<f32>(static_cast<int>(a) - static_cast<int>(b));
        }
        return static_cast<f32>(static_cast<T>(static_cast<u64>(a) - static_cast<u64>(b)));
    }
    static f32 differenceT1(T const& a, T const& b, u32 i) { return difference(a, b, i); }
    static void store(T& value, u32, f32 result) { value = cut<T>(result); }
};
template <>
struct sElements<s8> : sSigned<s8> {};
template <>
struct sElements<s16> : sSigned<s16> {};
template <>
struct sElements<s32> : sSigned<s32> {};
template <>
struct sElements<s64> : sSigned<s64> {};

template <>
struct sElements<f32> : sScalar<f32> {
    static f32 difference(f32 a, f32 b, u32) { return a - b; }
    static f32 differenceT1(f32 a, f32 b, u32) { return a - b; }
    static void store(f32& value, u32, f32 result) { value = result; }
};
template <>
struct sElements<f64> : sScalar<f64> {
    static f32 difference(f64 a, f64 b, u32) { return static_cast<f32>(a - b); }
    static f32 differenceT1(f64 a, f64 b, u32) { return static_cast<f32>(a - b); }
    static void store(f64& value, u32, f32 result) { value = result; }
};
template <>
struct sElements<sFixed> {
    static constexpr u32 Num = 1;
    static f32 element(sFixed value, u32) { return static_cast<f32>(value); }
    static f32 difference(sFixed a, sFixed b, u32) { return static_cast<f32>(a - b); }
    static f32 differenceT1(sFixed a, sFixed b, u32) { return static_cast<f32>(a - b); }
    static void store(sFixed& value, u32, f32 result) { value = toFixed(result); }
};

// Compound types: d and t0 as differences of floats, t1 as differences in
// the element type.
template <typename T, typename E, u32 N>
struct sCompound {
    static constexpr u32 Num = N;
    static E get(T const& value, u32 i) { return value[static_cast<int>(i)]; }
    static f32 element(T const& value, u32 i) { return static_cast<f32>(get(value, i)); }
    static f32 difference(T const& a, T const& b, u32 i) { return element(a, i) - element(b, i); }
};

// Points, rectangles, texture coordinates and colours: signed integer t1.
template <typename T, typename E, u32 N>
struct sIntegerCompound : sCompound<T, E, N> {
    typedef sCompound<T, E, N> Base;
    static f32 differenceT1(T const& a, T const& b, u32 i)
    {
        return static_cast<f32>(static_cast<s32>(static_cast<u32>(Base::get(a, i)) - static_cast<u32>(Base::get(b, i))));
    }
    static void store(T& value, u32 i, f32 result) { value[static_cast<int>(i)] = cut<E>(result); }
};
template <>
struct sElements<sPoint> : sIntegerCompound<sPoint, int, 2> {};
template <>
struct sElements<sRect> : sIntegerCompound<sRect, int, 4> {};
template <>
struct sElements<sTexcoord> : sIntegerCompound<sTexcoord, unsigned short, 2> {};
template <>
struct sElements<sColor> : sIntegerCompound<sColor, u8, 4> {};

template <>
struct sElements<sColorF> : sCompound<sColorF, f32, 4> {
    static f32 differenceT1(sColorF const& a, sColorF const& b, u32 i) { return difference(a, b, i); }
    static void store(sColorF& value, u32 i, f32 result) { value[static_cast<int>(i)] = result; }
};
template <>
struct sElements<sVector> : sCompound<sVector, sFixed, 2> {
    static f32 differenceT1(sVector const& a, sVector const& b, u32 i)
    {
        return static_cast<f32>(get(a, i) - get(b, i));
    }
    static void store(sVector& value, u32 i, f32 result) { value[static_cast<int>(i)] = toFixed(result); }
};

// A size has no subscript; its t1 differences are unsigned.
template <>
struct sElements<sSize> {
    static constexpr u32 Num = 2;
    static u32 get(sSize const& value, u32 i) { return (i == 0) ? value.width : value.height; }
    static f32 element(sSize const& value, u32 i) { return static_cast<f32>(get(value, i)); }
    static f32 difference(sSize const& a, sSize const& b, u32 i) { return element(a, i) - element(b, i); }
    static f32 differenceT1(sSize const& a, sSize const& b, u32 i) { return static_cast<f32>(get(a, i) - get(b, i)); }
    static void store(sSize& value, u32 i, f32 result) { ((i == 0) ? value.width : value.height) = toU32(result); }
};

// A key's value: one- and two-byte types at offset 2, wider ones at 4.
template <typename T>
T readValue(u8 const* key)
{
    T value;
    memcpy(&value, key + ((sizeof(T) <= 2) ? 2 : 4), sizeof(T));
    return value;
}

template <typename T>
void makeInterpolateParameter(Sequencer::sLaneData* lane, u8 const* key, u8 const* next, u32 index)
{
    typedef sElements<T> E;
    u32 const stride = lane->mKeyStride;
    u32 const mode = SequencerResource::getKeyInterpolateType(key);
    T const p0 = readValue<T>(key);
    T const p1 = readValue<T>(next);
    bool const hasPrevious = index != 0;
    bool const hasAfter = index + 2 < lane->mKeyNum;
    u8 const* previousKey = hasPrevious ? key - stride : nullptr;
    u8 const* afterKey = hasAfter ? next + stride : nullptr;
    u32 const previousMode = hasPrevious ? SequencerResource::getKeyInterpolateType(previousKey) : 0;
    u32 const nextMode = SequencerResource::getKeyInterpolateType(next);
    for (u32 i = 0; i < E::Num; ++i) {
        Sequencer::sInterpolateData& data = lane->mpInterpolateData[i];
        f32 const d = E::difference(p1, p0, i);
        f32 const start = E::element(p0, i);
        if (mode == SequencerResource::eInterpolateType_Linear) {
            data.mLinearStart = start;
            data.mLinearDelta = d;
            continue;
        }
        f32 t0 = 0.0f;
        if (hasPrevious) {
            T const previous = readValue<T>(previousKey);
            if (previousMode == SequencerResource::eInterpolateType_Linear) {
                t0 = E::difference(p0, previous, i);
            } else if (previousMode == SequencerResource::eInterpolateType_Hermite) {
                t0 = 0.5f * E::difference(p1, previous, i);
            }
        }
        f32 t1 = 0.0f;
        if (hasAfter) {
            T const after = readValue<T>(afterKey);
            if (nextMode == SequencerResource::eInterpolateType_Linear) {
                t1 = E::differenceT1(after, p1, i);
            } else if (nextMode == SequencerResource::eInterpolateType_Hermite) {
                t1 = 0.5f * E::differenceT1(after, p0, i);
            }
        }
        data.mCubic[0] = -2.0f * d + t0 + t1;
        data.mCubic[1] = -2.0f * t0 + 3.0f * d - t1;
        data.mCubic[2] = t0;
        data.mCubic[3] = start;
    }
}

template <typename T>
void applyValue(Sequencer::sLaneData const* lane, PropertyBase* property, f32 t)
{
    typedef sElements<T> E;
    T value = readValue<T>(lane->mpCurrentKey);
    if (lane->mInterpolateType == SequencerResource::eInterpolateType_Linear) {
        for (u32 i = 0; i < E::Num; ++i) {
            Sequencer::sInterpolateData const& data = lane->mpInterpolateData[i];
            E::store(value, i, data.mLinearStart + data.mLinearDelta * t);
        }
    } else if (lane->mInterpolateType == SequencerResource::eInterpolateType_Hermite) {
        for (u32 i = 0; i < E::Num; ++i) {
            f32 const* c = lane->mpInterpolateData[i].mCubic;
            E::store(value, i, ((c[0] * t + c[1]) * t + c[2]) * t + c[3]);
        }
    }
    property->setByType<T>(value, PropertyBase::CurrentIndex);
}

// Calls f<T> for the value type of a property type 2 to 19.
template <template <typename> class F, typename... A>
void dispatchValueType(u32 type, A... arguments)
{
    switch (type) {
    case ePropertyType_S8: F<s8>::call(arguments...); break;
    case ePropertyType_S16: F<s16>::call(arguments...); break;
    case ePropertyType_S32: F<s32>::call(arguments...); break;
    case ePropertyType_S64: F<s64>::call(arguments...); break;
    case ePropertyType_U8: F<u8>::call(arguments...); break;
    case ePropertyType_U16: F<u16>::call(arguments...); break;
    case ePropertyType_U32: F<u32>::call(arguments...); break;
    case ePropertyType_U64: F<u64>::call(arguments...); break;
    case ePropertyType_F32: F<f32>::call(arguments...); break;
    case ePropertyType_F64: F<f64>::call(arguments...); break;
    case ePropertyType_Size: F<sSize>::call(arguments...); break;
    case ePropertyType_Point: F<sPoint>::call(arguments...); break;
    case ePropertyType_Rect: F<sRect>::call(arguments...); break;
    case ePropertyType_Color: F<sColor>::call(arguments...); break;
    case ePropertyType_ColorF: F<sColorF>::call(arguments...); break;
    case ePropertyType_Texcoord: F<sTexcoord>::call(arguments...); break;
    case ePropertyType_Fixed: F<sFixed>::call(arguments...); break;
    case ePropertyType_Vector: F<sVector>::call(arguments...); break;
    default: break;
    }
}

template <typename T>
struct sMakeInterpolate {
    static void call(Sequencer::sLaneData* lane, u8 const* key, u8 const* next, u32 index)
    {
        makeInterpolateParameter<T>(lane, key, next, index);
    }
};

template <typename T>
struct sApplyValue {
    static void call(Sequencer::sLaneData const* lane, PropertyBase* property, f32 t) { applyValue<T>(lane, property, t); }
};

sFixed frameOf(u32 frame)
{
    return sFixed(static_cast<int>(frame), 16);
}

// Nested sequences that name each other stop here rather than recurse
// without end. Per thread: sequencers of different units play in parallel.
thread_local u32 tNesting = 0;
u32 const kMaxNesting = 16;

} // namespace

// ---------------------------------------------------------------------------
// [SECTION] Life, binding and reflection

Sequencer::Sequencer(AllocatorBase* allocator)
    : mpAllocator(allocator), mpTrackArray(nullptr), mpMarkerCounts(nullptr), mTrackNum(0), mMarkerNum(0),
      mCurrentFrame(sFixed::Zero), mPreviousFrame(sFixed::Zero), mpCurrentMarker(nullptr),
      mNextMarkerFrame(sFixed::Zero), mPlaying(false), mpResource(nullptr)
{
}

Sequencer::~Sequencer()
{
    deleteAllTrack();
    if (mpResource != nullptr) {
        mpResource->release();
    }
}

// Track and lane data hold pointers: 8-byte alignment.
void* Sequencer::allocate(u32 size)
{
    void* block = (mpAllocator != nullptr) ? mpAllocator->allocate(static_cast<int>(size), 8)
                                           : static_cast<void*>(new (std::nothrow) u8[size]);
    if (block == nullptr) {
        dev_assert("Sequencer allocation failed.", __FILE__, __LINE__);
    }
    memset(block, 0, size);
    return block;
}

void Sequencer::deallocate(void* pointer)
{
    if (pointer == nullptr) {
        return;
    }
    if (mpAllocator != nullptr) {
        mpAllocator->deallocate(pointer);
    } else {
        delete[] static_cast<u8*>(pointer);
    }
}

void Sequencer::makePropertyList(PropertyList& list)
{
    ObjectBase::makePropertyList(list);
    list.add(new IndirectResourceProperty("Resource", SequencerResource::getStaticTypeInfo(), this,
                                          &Sequencer::getResource, &Sequencer::setResource));
}

void Sequencer::makeControlList(List<ControlBase>& list)
{
    ObjectBase::makeControlList(list);
    TypeInfo const* type = SequencerResource::getStaticTypeInfo();
    list.addLast(new PropertyControl(
        new IndirectResourceProperty("Resource", type, this, &Sequencer::getResource, &Sequencer::setResource), type));
    list.addLast(new TriggerControl<u32>("Seek", this, &Sequencer::seekTrigger));
    list.addLast(new TriggerControl<void>("Play", this, &Sequencer::play));
    list.addLast(new TriggerControl<void>("Stop", this, &Sequencer::stop));
}

void Sequencer::setResource(SequencerResource* resource)
{
    stop();
    deleteAllTrack();
    if (mpResource != nullptr) {
        mpResource->release();
    }
    mpResource = resource;
    if (resource != nullptr) {
        resource->addRef();
        mCurrentFrame = frameOf(resource->getStartFrame());
        if (tNesting < kMaxNesting) {
            ++tNesting;
            build();
            --tNesting;
        }
    } else {
        mCurrentFrame = sFixed::Zero;
        mPreviousFrame = sFixed::Zero;
    }
    clearCurrentMarker();
    updateCurrentMarker();
    ++tNesting;
    applySequence(sFixed::Zero);
    --tNesting;
}

void Sequencer::build()
{
    if (mpResource == nullptr) {
        return;
    }
    mMarkerNum = mpResource->getMarkerNum();
    mpMarkerCounts = (mMarkerNum != 0) ? static_cast<u8*>(allocate(mMarkerNum)) : nullptr;
    mTrackNum = mpResource->getTrackNum();
    mpTrackArray = (mTrackNum != 0) ? static_cast<sTrackData*>(allocate(mTrackNum * sizeof(sTrackData))) : nullptr;
    sNativeTrack const* tracks = mpResource->getTrackArray();
    for (u32 t = 0; t < mTrackNum; ++t) {
        sTrackData& track = mpTrackArray[t];
        TypeInfo const* type = TypeInfo::find(tracks[t].mObjectTypeID);
        track.mpObject = (type != nullptr) ? type->newInstance() : nullptr;
        track.mNested = track.mpObject != nullptr &&
                        track.mpObject->getTypeInfo()->isDerivedFrom(Sequencer::getStaticTypeInfo());
        if (track.mpObject == nullptr || tracks[t].mLaneNum == 0) {
            continue;
        }
        track.mLaneNum = tracks[t].mLaneNum;
        track.mpLaneArray = static_cast<sLaneData*>(allocate(track.mLaneNum * sizeof(sLaneData)));
        List<ControlBase> controls;
        track.mpObject->makeControlList(controls);
        for (u32 l = 0; l < track.mLaneNum; ++l) {
            sNativeLane const& native = tracks[t].mpLaneArray[l];
            sLaneData& lane = track.mpLaneArray[l];
            for (LinkIterator<ControlBase> it = controls.begin(); it != controls.end(); ++it) {
                ControlBase* control = *it;
                if (control->getType() != native.mControlType || control->getNameHash() != native.mNameHash) {
                    continue;
                }
                // Keys must have the layout of the control's value type: a
                // lane of another layout stays unbound, like one without a match.
                u32 const keyType = (control->getType() == eControlType_Property)
                                        ? static_cast<PropertyControl*>(control)->getProperty()->getType()
                                        : static_cast<TriggerControlBase*>(control)->getArgumentType();
                SequencerResource::sKeyLayout const* layout = SequencerResource::findKeyLayout(keyType);
                if (layout == nullptr || native.mKeyStride < layout->mStride) {
                    break;
                }
                lane.mpControl = control->duplicate();
                lane.mControlType = control->getType();
                if (lane.mControlType == eControlType_Property) {
                    lane.mpProperty = static_cast<PropertyControl*>(lane.mpControl)->getProperty();
                    lane.mPropertyType = lane.mpProperty->getType();
                }
                lane.mpKeys = native.mpKeyArray;
                lane.mKeyNum = (native.mpKeyArray != nullptr) ? native.mKeyNum : 0;
                lane.mKeyStride = native.mKeyStride;
                lane.mInterpolateNum = layout->mInterpolateNum;
                if (lane.mInterpolateNum != 0) {
                    lane.mpInterpolateData =
                        static_cast<sInterpolateData*>(allocate(lane.mInterpolateNum * sizeof(sInterpolateData)));
                }
                break;
            }
        }
        for (LinkIterator<ControlBase> it = controls.begin(); it != controls.end(); ++it) {
            delete *it;
        }
    }
    sFixed const start = frameOf(mpResource->getStartFrame());
    sFixed const end = frameOf(mpResource->getEndFrame());
    if (mCurrentFrame < start || static_cast<int>(mCurrentFrame) > static_cast<int>(end)) {
        mCurrentFrame = start;
        mPreviousFrame = start;
    }
    if (mPreviousFrame < start || static_cast<int>(mPreviousFrame) > static_cast<int>(end)) {
        mPreviousFrame = mCurrentFrame;
    }
}

void Sequencer::deleteAllTrack()
{
    for (u32 t = 0; t < mTrackNum; ++t) {
        sTrackData& track = mpTrackArray[t];
        for (u32 l = 0; l < track.mLaneNum; ++l) {
            delete track.mpLaneArray[l].mpControl;
            deallocate(track.mpLaneArray[l].mpInterpolateData);
        }
        deallocate(track.mpLaneArray);
        if (track.mpObject != nullptr) {
            if (track.mpObject->getTypeInfo()->isDerivedFrom(ResourceBase::getStaticTypeInfo())) {
                static_cast<ResourceBase*>(track.mpObject)->release();
            } else {
                delete track.mpObject;
            }
        }
    }
    deallocate(mpTrackArray);
    deallocate(mpMarkerCounts);
    mpTrackArray = nullptr;
    mpMarkerCounts = nullptr;
    mTrackNum = 0;
    mMarkerNum = 0;
}

// ---------------------------------------------------------------------------
// [SECTION] Position, markers and steps

void Sequencer::notifyRebuild()
{
}

void Sequencer::play()
{
    if (mpResource != nullptr) {
        mPlaying = true;
    }
}

void Sequencer::stop()
{
    mPlaying = false;
}

void Sequencer::resetMarkerCount()
{
    if (mpMarkerCounts != nullptr) {
        memset(mpMarkerCounts, 0, mMarkerNum);
    }
}

void Sequencer::update(float step)
{
    if (mpResource == nullptr) {
        return;
    }
    Application const* application = Application::getInstance();
    f32 const rate = (application != nullptr && application->getFrameRate() > 0.0f) ? application->getFrameRate() : 60.0f;
    update(sFixed(static_cast<f32>(mpResource->getFPS()) * step / rate));
}

void Sequencer::update(sFixed step)
{
    if (mpResource == nullptr) {
        return;
    }
    bool const moving = mPlaying && step != sFixed::Zero;
    if (mpResource->isUpdated()) {
        deleteAllTrack();
        build();
        notifyRebuild();
        clearCurrentMarker();
        updateCurrentMarker();
        if (!moving) {
            applySequence(sFixed::Zero);
        }
    }
    if (moving) {
        applySequence(step);
        sFixed const end = frameOf(mpResource->getEndFrame());
        if (mCurrentFrame > end) {
            mCurrentFrame = end;
            stop();
        }
    }
}

void Sequencer::seek(unsigned int frame)
{
    seekWithoutApplySequence(frame);
    applySequence(sFixed::Zero);
}

void Sequencer::seekWithoutApplySequence(unsigned int frame)
{
    if (mpResource != nullptr) {
        u32 const start = mpResource->getStartFrame();
        u32 const end = mpResource->getEndFrame();
        frame = (frame < start) ? start : frame;
        frame = (frame > end) ? end : frame;
        mCurrentFrame = frameOf(frame);
        mPreviousFrame = mCurrentFrame;
    }
    clearCurrentMarker();
    updateCurrentMarker();
    for (u32 t = 0; t < mTrackNum; ++t) {
        for (u32 l = 0; l < mpTrackArray[t].mLaneNum; ++l) {
            mpTrackArray[t].mpLaneArray[l].mpCurrentKey = nullptr;
        }
    }
}

void Sequencer::clearCurrentMarker()
{
    mpCurrentMarker = nullptr;
    mNextMarkerFrame = sFixed::Zero;
}

void Sequencer::updateCurrentMarker()
{
    if (mMarkerNum == 0 || mpResource == nullptr) {
        return;
    }
    sNativeMarker const* markers = mpResource->getMarkerArray();
    if (mpCurrentMarker == nullptr) {
        for (u32 i = 0; i < mMarkerNum && frameOf(markers[i].mFrame) <= mCurrentFrame; ++i) {
            mpCurrentMarker = &markers[i];
        }
    } else {
        ++mpCurrentMarker;
    }
    if (mpCurrentMarker != nullptr) {
        u32 const index = static_cast<u32>(mpCurrentMarker - markers);
        mNextMarkerFrame = (index + 1 >= mMarkerNum) ? frameOf(SequencerResource::NoFrame) : frameOf(markers[index + 1].mFrame);
    } else {
        mNextMarkerFrame = frameOf(markers[0].mFrame);
    }
}

sFixed Sequencer::applyMarker(sFixed target)
{
    sFixed const remainder = target - mCurrentFrame;
    sNativeMarker const* markers = mpResource->getMarkerArray();
    u32 const index = (mpCurrentMarker != nullptr) ? static_cast<u32>(mpCurrentMarker - markers) : mMarkerNum;
    if (index < mMarkerNum) {
        sNativeMarker const marker = *mpCurrentMarker;
        u8& counter = mpMarkerCounts[index];
        if (marker.mCount != 0 && counter >= marker.mCount) {
            if (marker.mReset) {
                counter = 0;
            }
        } else {
            if (marker.mType == SequencerResource::eMarkerType_JumpTarget) {
                if (marker.mTargetIndex < mMarkerNum) {
                    seekWithoutApplySequence(markers[marker.mTargetIndex].mFrame);
                }
            } else if (marker.mType == SequencerResource::eMarkerType_JumpFrame) {
                seekWithoutApplySequence(marker.mTargetFrame);
            }
            ++counter;
        }
    }
    return mCurrentFrame + remainder;
}

void Sequencer::applySequence(sFixed step)
{
    if (mpResource == nullptr) {
        return;
    }
    mPreviousFrame = mCurrentFrame;
    sFixed target = mPreviousFrame + step;
    if (mMarkerNum != 0) {
        // The last marker's successor frame lies beyond every 12-bit frame;
        // a timeline edited past it must not walk off the marker array.
        sNativeMarker const* last = mpResource->getMarkerArray() + (mMarkerNum - 1);
        while (mNextMarkerFrame <= target && mpCurrentMarker != last) {
            mCurrentFrame = mNextMarkerFrame;
            updateCurrentMarker();
            applyTrackSequence(mCurrentFrame - mPreviousFrame);
            target = applyMarker(target);
            mPreviousFrame = mCurrentFrame;
        }
    }
    mCurrentFrame = target;
    applyTrackSequence(mCurrentFrame - mPreviousFrame);
}

void Sequencer::applyTrackSequence(sFixed step)
{
    for (u32 t = 0; t < mTrackNum; ++t) {
        sTrackData& track = mpTrackArray[t];
        for (u32 l = 0; l < track.mLaneNum; ++l) {
            sLaneData& lane = track.mpLaneArray[l];
            if (lane.mpControl == nullptr) {
                continue;
            }
            if (lane.mControlType != eControlType_Property) {
                applyTriggerControl(&lane);
            } else {
                applyPropertyControl(&lane);
            }
        }
        applyObjectDependedTask(&track, step);
    }
}

void Sequencer::applyObjectDependedTask(sTrackData* track, sFixed step)
{
    if (track->mNested) {
        static_cast<Sequencer*>(track->mpObject)->update(step);
    }
}

// ---------------------------------------------------------------------------
// [SECTION] Lanes

bool Sequencer::checkKeyUpdate(sLaneData const* lane) const
{
    if (lane->mpCurrentKey == nullptr) {
        return true;
    }
    u32 const frame = static_cast<u32>(static_cast<int>(mCurrentFrame));
    return SequencerResource::getKeyFrame(lane->mpCurrentKey) > frame || lane->mNextKeyFrame <= frame;
}

u8 const* Sequencer::getCurrentKey(sLaneData const* lane) const
{
    u32 const frame = static_cast<u32>(static_cast<int>(mCurrentFrame));
    u32 const stride = lane->mKeyStride;
    u32 i = 0;
    if (lane->mpCurrentKey != nullptr && SequencerResource::getKeyFrame(lane->mpCurrentKey) < frame) {
        i = static_cast<u32>(lane->mpCurrentKey - lane->mpKeys) / stride + 1;
        i = (i < lane->mKeyNum) ? i : lane->mKeyNum - 1;
    }
    while (i + 1 < lane->mKeyNum && SequencerResource::getKeyFrame(lane->mpKeys + (i + 1) * stride) <= frame) {
        ++i;
    }
    return lane->mpKeys + i * stride;
}

void Sequencer::updateLaneInterpolateData(sLaneData* lane, unsigned int propertyType)
{
    u8 const* key = getCurrentKey(lane);
    lane->mpCurrentKey = key;
    lane->mApplied = 0;
    u32 const frame = static_cast<u32>(static_cast<int>(mCurrentFrame));
    u32 const keyFrame = SequencerResource::getKeyFrame(key);
    u32 const index = static_cast<u32>(key - lane->mpKeys) / lane->mKeyStride;
    if (keyFrame > frame) {
        lane->mInterpolateType = 0;
        lane->mNextKeyFrame = keyFrame;
        return;
    }
    if (index + 1 >= lane->mKeyNum) {
        lane->mInterpolateType = 0;
        lane->mNextKeyFrame = SequencerResource::NoFrame;
        return;
    }
    u8 const* next = key + lane->mKeyStride;
    u32 const nextFrame = SequencerResource::getKeyFrame(next);
    lane->mNextKeyFrame = nextFrame;
    lane->mInterpolateType = SequencerResource::getKeyInterpolateType(key);
    if (lane->mInterpolateType != SequencerResource::eInterpolateType_Linear &&
        lane->mInterpolateType != SequencerResource::eInterpolateType_Hermite) {
        return;
    }
    // Two keys on one frame give an infinite reciprocal; the results then
    // saturate in the conversions.
    lane->mReciprocal = 1.0f / static_cast<f32>(static_cast<s32>(nextFrame) - static_cast<s32>(keyFrame));
    if (lane->mpInterpolateData != nullptr) {
        dispatchValueType<sMakeInterpolate>(propertyType, lane, key, next, index);
    }
}

void Sequencer::applyPropertyControl(sLaneData* lane)
{
    if (lane->mKeyNum == 0) {
        return;
    }
    PropertyBase* property = lane->mpProperty;
    u32 const type = lane->mPropertyType;
    if (checkKeyUpdate(lane)) {
        updateLaneInterpolateData(lane, type);
    }
    u8 const* key = lane->mpCurrentKey;
    if (SequencerResource::getKeyInterpolateType(key) == SequencerResource::eInterpolateType_Trigger &&
        lane->mApplied == 0) {
        sFixed const keyFrame = frameOf(SequencerResource::getKeyFrame(key));
        if ((mPreviousFrame < keyFrame && !(keyFrame < mCurrentFrame)) || mPreviousFrame == mCurrentFrame) {
            lane->mApplied = 1;
        } else {
            return;
        }
    }
    if (type == ePropertyType_Bool) {
        property->setByType<bool>(key[2] != 0, PropertyBase::CurrentIndex);
    } else if (type == ePropertyType_Resource) {
        applyResourceKey(lane, key);
    } else if (lane->mpInterpolateData != nullptr) {
        f32 const t = lane->mReciprocal *
                      (static_cast<f32>(mCurrentFrame) - static_cast<f32>(SequencerResource::getKeyFrame(key)));
        dispatchValueType<sApplyValue>(type, static_cast<sLaneData const*>(lane), property, t);
    }
}

// The key's stored hash is ResourceBase::getHash of its resource, and the
// property's resource is compared by the same hash: a nested sequence is set
// once and then plays.
void Sequencer::applyResourceKey(sLaneData* lane, u8 const* key)
{
    PropertyBase* property = static_cast<PropertyControl*>(lane->mpControl)->getProperty();
    ResourceBase* current = property->getByType<ResourceBase*>(0);
    u32 hash;
    memcpy(&hash, key + 232, sizeof(hash));
    if ((current != nullptr && current->getHash() == hash) || (current == nullptr && hash == 0xFFFFFFFFu)) {
        return;
    }
    u32 typeID;
    memcpy(&typeID, key + 4, sizeof(typeID));
    TypeInfo const* type = TypeInfo::find(typeID);
    ResourceSystem* system = ResourceSystem::getInstance();
    if (type == nullptr || system == nullptr) {
        return;
    }
    char path[SequencerResource::ResourcePathSize];
    memcpy(path, key + 8, sizeof(path));
    path[sizeof(path) - 1] = '\0'; // a damaged file may leave it open
    if (ResourceBase* resource = system->createResource(path, type)) {
        property->setByType<ResourceBase*>(resource, 0);
        resource->release();
    }
}

void Sequencer::applyTriggerControl(sLaneData* lane)
{
    if (lane->mKeyNum == 0) {
        return;
    }
    if (checkKeyUpdate(lane)) {
        u8 const* key = getCurrentKey(lane);
        lane->mpCurrentKey = key;
        bool const last = static_cast<u32>(key - lane->mpKeys) / lane->mKeyStride + 1 >= lane->mKeyNum;
        // The key's own frame, where property lanes keep the next key's: the
        // lane looks its key up again at every step once that frame is reached.
        lane->mNextKeyFrame = last ? SequencerResource::NoFrame : SequencerResource::getKeyFrame(key);
        lane->mApplied = 0;
    }
    if (lane->mApplied != 0) {
        return;
    }
    sFixed const keyFrame = frameOf(SequencerResource::getKeyFrame(lane->mpCurrentKey));
    bool fire = (mPreviousFrame == mCurrentFrame) ? keyFrame == mCurrentFrame : false;
    if (!fire) {
        // Deliberately the key against the current frame, not the reverse.
        fire = mPreviousFrame < keyFrame && !(keyFrame < mCurrentFrame);
    }
    if (fire) {
        applyTrigger(lane->mpControl, lane->mpCurrentKey);
        lane->mApplied = 1;
    }
}

void Sequencer::applyTrigger(ControlBase* control, u8 const* key)
{
    TriggerControlBase* trigger = static_cast<TriggerControlBase*>(control);
    switch (trigger->getArgumentType()) {
    case eTriggerArgument_None: static_cast<TriggerControl<void>*>(control)->trigger(); break;
    case eTriggerArgument_U8: static_cast<TriggerControl<u8>*>(control)->trigger(key[2]); break;
    case eTriggerArgument_S8: static_cast<TriggerControl<s8>*>(control)->trigger(readValue<s8>(key)); break;
    case eTriggerArgument_U16: static_cast<TriggerControl<u16>*>(control)->trigger(readValue<u16>(key)); break;
    case eTriggerArgument_S16: static_cast<TriggerControl<s16>*>(control)->trigger(readValue<s16>(key)); break;
    case eTriggerArgument_U32: static_cast<TriggerControl<u32>*>(control)->trigger(readValue<u32>(key)); break;
    case eTriggerArgument_S32: static_cast<TriggerControl<s32>*>(control)->trigger(readValue<s32>(key)); break;
    case eTriggerArgument_U64: static_cast<TriggerControl<u64>*>(control)->trigger(readValue<u64>(key)); break;
    case eTriggerArgument_S64: static_cast<TriggerControl<s64>*>(control)->trigger(readValue<s64>(key)); break;
    case eTriggerArgument_F32: static_cast<TriggerControl<f32>*>(control)->trigger(readValue<f32>(key)); break;
    case eTriggerArgument_F64: static_cast<TriggerControl<f64>*>(control)->trigger(readValue<f64>(key)); break;
    case eTriggerArgument_Fixed: static_cast<TriggerControl<sFixed>*>(control)->trigger(readValue<sFixed>(key)); break;
    default: break; // 130 has no trigger class
    }
}
