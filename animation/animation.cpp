// Index
//   [SECTION] AnimPrimitive: the common base and its heap
//   [SECTION] AnimCell and AnimCollision
//   [SECTION] AnimGenerator: reflection
//   [SECTION] AnimGenerator: pool, emission and update
#include "animation/animation.h"

#include <cmath>
#include <cstring>
#include <new>

#include "foundation/allocator.h"
#include "foundation/debug.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"

IMPLEMENT_TYPEINFO(AnimPrimitive, "ObjectBase", TypeInfo::eAttribute_Abstract);
IMPLEMENT_OBJECT_TYPEINFO(AnimCell, "AnimPrimitive");
IMPLEMENT_OBJECT_TYPEINFO(AnimCollision, "AnimPrimitive");
IMPLEMENT_OBJECT_TYPEINFO(AnimGenerator, "AnimPrimitive");

AllocatorBase* AnimPrimitive::mpAllocator = nullptr;

namespace {

sMaskInfo const kCellAttributes[] = {
    {"Visible", AnimCell::eAttribute_Visible},
    {"HFlip", AnimCell::eAttribute_HFlip},
    {"VFlip", AnimCell::eAttribute_VFlip},
};

sEnumInfo const kBlendModes[] = {
    {"MODULATE", 0},
    {"ADD", 1},
    {"SUBTRACT", 2},
};

sEnumInfo const kPlacementModes[] = {
    {"DISC", AnimGenerator::ePlacementMode_Disc},
    {"UNIFORMLY_DISC", AnimGenerator::ePlacementMode_UniformlyDisc},
};

sEnumInfo const kVelocityModes[] = {
    {"RANDOM", AnimGenerator::eVelocityMode_Random},
    {"POSITION_DEPENDENT", AnimGenerator::eVelocityMode_PositionDependent},
    {"DIRECTIONAL", AnimGenerator::eVelocityMode_Directional},
};

template <typename T, unsigned int N>
constexpr unsigned int countOf(T const (&)[N])
{
    return N;
}

// The particles' circle constant, a float a little below pi on purpose:
// recorded particle paths follow from it.
f32 const kPi = 3.1415925f;

sVector toVector(sPoint const& point)
{
    return sVector(sFixed(point.x, 16), sFixed(point.y, 16));
}

} // namespace

// ---------------------------------------------------------------------------
// [SECTION] AnimPrimitive: the common base and its heap

AnimPrimitive::AnimPrimitive() : mPosition(sPoint::Zero), mSize(0, 0)
{
}

AnimPrimitive::~AnimPrimitive()
{
}

void AnimPrimitive::setAllocator(AllocatorBase* allocator)
{
    if (mpAllocator != nullptr) {
        dev_assert("Allocator already set.", __FILE__, __LINE__);
    }
    mpAllocator = allocator;
}

void* AnimPrimitive::allocate(u32 size)
{
    if (mpAllocator != nullptr) {
        return mpAllocator->allocate(static_cast<int>(size), 16);
    }
    return new (std::nothrow) u8[size];
}

void AnimPrimitive::deallocate(void* pointer)
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

// ---------------------------------------------------------------------------
// [SECTION] AnimCell and AnimCollision

AnimCell::AnimCell() : mUV(0, 0), mColor(sColor::White), mAttribute(eAttribute_Visible), mBlendMode(eBlendMode_Modulate)
{
}

void AnimCell::makePropertyList(PropertyList& list)
{
    AnimPrimitive::makePropertyList(list);
    list.add(new ReferenceProperty<sPoint>("Position", &mPosition));
    list.add(new ReferenceProperty<sTexcoord>("UV", &mUV));
    list.add(new ReferenceProperty<sSize>("Size", &mSize));
    list.add(new ReferenceProperty<sColor>("Color", &mColor));
    list.add(new IndirectProperty<u32>("Attribute", this, &AnimCell::getAttribute, &AnimCell::setAttribute));
    list.add(new IndirectProperty<u32>("BlendMode", this, &AnimCell::getBlendMode, &AnimCell::setBlendMode));
}

void AnimCell::makeControlList(List<ControlBase>& list)
{
    AnimPrimitive::makeControlList(list);
    list.addLast(new PropertyControl(new ReferenceProperty<sPoint>("Position", &mPosition)));
    list.addLast(new PropertyControl(new ReferenceProperty<sTexcoord>("UV", &mUV)));
    list.addLast(new PropertyControl(new ReferenceProperty<sSize>("Size", &mSize)));
    list.addLast(new PropertyControl(new ReferenceProperty<sColor>("Color", &mColor)));
    list.addLast(new PropertyControl(
        new IndirectProperty<u32>("Attribute", this, &AnimCell::getAttribute, &AnimCell::setAttribute),
        kCellAttributes, countOf(kCellAttributes)));
    list.addLast(new PropertyControl(
        new IndirectProperty<u32>("BlendMode", this, &AnimCell::getBlendMode, &AnimCell::setBlendMode), kBlendModes,
        countOf(kBlendModes)));
}

AnimCollision::AnimCollision() : mAttribute(0)
{
}

void AnimCollision::makePropertyList(PropertyList& list)
{
    AnimPrimitive::makePropertyList(list);
    list.add(new ReferenceProperty<sPoint>("Position", &mPosition));
    list.add(new ReferenceProperty<sSize>("Size", &mSize));
    list.add(new ReferenceProperty<u32>("Attribute", &mAttribute));
}

void AnimCollision::makeControlList(List<ControlBase>& list)
{
    AnimPrimitive::makeControlList(list);
    list.addLast(new PropertyControl(new ReferenceProperty<sPoint>("Position", &mPosition)));
    list.addLast(new PropertyControl(new ReferenceProperty<sSize>("Size", &mSize)));
    list.addLast(new PropertyControl(new ReferenceProperty<u32>("Attribute", &mAttribute)));
}

// ---------------------------------------------------------------------------
// [SECTION] AnimGenerator: reflection

namespace {

// Positions in the generator's property order of the three enumerations.
u32 const kPlacementIndex = 4;
u32 const kVelocityIndex = 5;
u32 const kBlendIndex = 6;

} // namespace

void AnimGenerator::makeProperties(PropertyBase* (&properties)[kPropertyNum], char const* rateName)
{
    typedef AnimGenerator G;
    PropertyBase* made[kPropertyNum] = {
        new IndirectProperty<u8>("MaxParticleNum", this, &G::getMaxParticleNum, &G::setMaxParticleNum),
        new ReferenceProperty<sFixed>(rateName, &mGenerateRate),
        new IndirectProperty<u32>("RandomSeed", this, &G::getRandomSeed, &G::setRandomSeed),
        new ReferenceProperty<sPoint>("Position", &mPosition),
        new IndirectProperty<u32>("PlacementMode", this, &G::getPlacementMode, &G::setPlacementMode),
        new IndirectProperty<u32>("VelocityMode", this, &G::getVelocityMode, &G::setVelocityMode),
        new IndirectProperty<u32>("BlendMode", this, &G::getBlendMode, &G::setBlendMode),
        new IndirectProperty<bool>("RandomFlip", this, &G::getRandomFlip, &G::setRandomFlip),
        new ReferenceProperty<sColor>("Color", &mColor),
        new ReferenceProperty<sTexcoord>("UV", &mUV),
        new ReferenceProperty<sSize>("Size", &mSize),
        new ReferenceProperty<f32>("Direction", &mDirection),
        new ReferenceProperty<f32>("DirectionRange", &mDirectionRange),
        new ReferenceProperty<f32>("Speed", &mSpeed),
        new ReferenceProperty<f32>("SpeedRange", &mSpeedRange),
        new ReferenceProperty<sVector>("Gravity", &mGravity),
        new ReferenceProperty<f32>("Scale", &mScale),
        new ReferenceProperty<f32>("ScaleRange", &mScaleRange),
        new ReferenceProperty<u32>("InnerRadius", &mInnerRadius),
        new ReferenceProperty<u32>("OuterRadius", &mOuterRadius),
        new ReferenceProperty<u16>("LifeDuration", &mLifeDuration),
        new ReferenceProperty<u16>("AppearanceTime", &mAppearanceTime),
        new ReferenceProperty<u16>("DisappearanceTime", &mDisappearanceTime),
        new ReferenceProperty<sFixed>("ScaleRate", &mScaleRate),
    };
    memcpy(properties, made, sizeof(made));
}

void AnimGenerator::makePropertyList(PropertyList& list)
{
    AnimPrimitive::makePropertyList(list);
    PropertyBase* properties[kPropertyNum];
    makeProperties(properties, "GenerateRate");
    for (PropertyBase* property : properties) {
        list.add(property);
    }
}

void AnimGenerator::makeControlList(List<ControlBase>& list)
{
    AnimPrimitive::makeControlList(list);
    PropertyBase* properties[kPropertyNum];
    // Spelt so on purpose: lanes bind to this name, files keep "GenerateRate".
    makeProperties(properties, "GenerataionRate");
    for (u32 i = 0; i < kPropertyNum; ++i) {
        ControlBase* control;
        if (i == kPlacementIndex) {
            control = new PropertyControl(properties[i], kPlacementModes, countOf(kPlacementModes));
        } else if (i == kVelocityIndex) {
            control = new PropertyControl(properties[i], kVelocityModes, countOf(kVelocityModes));
        } else if (i == kBlendIndex) {
            control = new PropertyControl(properties[i], kBlendModes, countOf(kBlendModes));
        } else {
            control = new PropertyControl(properties[i]);
        }
        list.addLast(control);
    }
    list.addLast(new TriggerControl<u32>("Generate", this, &AnimGenerator::generate));
    list.addLast(new TriggerControl<void>("Reset", this, &AnimGenerator::reset));
}

// ---------------------------------------------------------------------------
// [SECTION] AnimGenerator: pool, emission and update

AnimGenerator::AnimGenerator()
    : mPlacementMode(ePlacementMode_Disc), mVelocityMode(eVelocityMode_Random), mRandomFlip(1), mBlendMode(0),
      mDirection(0.0f), mDirectionRange(0.0f), mSpeed(0.0f), mSpeedRange(0.0f), mGravity(sVector::Zero),
      mScale(1.0f), mScaleRange(0.0f), mColor(sColor::White), mUV(0, 0), mInnerRadius(0), mOuterRadius(0),
      mScaleRate(sFixed::Zero), mLifeDuration(60), mAppearanceTime(0), mDisappearanceTime(0), mMaxParticleNum(16),
      mActiveCount(0), mGenerateRate(sFixed::One), mGenerateAccumulator(sFixed::Zero), mRandom(kDefaultSeed),
      mRandomSeed(kDefaultSeed), mBoundingBox(sAABB::Zero), mCenterOffset(sVector::Zero), mpParticles(nullptr)
{
    reset();
}

AnimGenerator::~AnimGenerator()
{
    deallocate(mpParticles);
}

void AnimGenerator::setMaxParticleNum(u8 num)
{
    if (num != mMaxParticleNum) {
        mMaxParticleNum = num;
        reset();
    }
}

void AnimGenerator::setRandomSeed(u32 seed)
{
    if (seed != mRandomSeed) {
        mRandomSeed = seed;
        reset();
    }
}

void AnimGenerator::reset()
{
    deallocate(mpParticles);
    u32 const bytes = mMaxParticleNum * static_cast<u32>(sizeof(sParticle));
    mpParticles = static_cast<sParticle*>(allocate(bytes));
    if (mpParticles == nullptr) {
        dev_assert("Particle allocation failed.", __FILE__, __LINE__);
    }
    memset(static_cast<void*>(mpParticles), 0, bytes);
    mActiveCount = 0;
    mGenerateAccumulator = sFixed::Zero;
    mRandom.setSeed(mRandomSeed);
}

void AnimGenerator::generate(u32 count)
{
    u32 const room = static_cast<u32>(mMaxParticleNum) - mActiveCount;
    u32 n = (count < room) ? count : room;
    // The active count stays 0, so the free slots bound the walk. A count of
    // 0 wraps below zero on the first birth and so fills every free slot.
    for (u32 i = 0; i < mMaxParticleNum; ++i) {
        if (mpParticles[i].isAlive()) {
            continue;
        }
        generate1(mpParticles[i]);
        if (--n == 0) {
            break;
        }
    }
}

// The random draws come in a fixed order: placement, direction, speed, scale,
// flip. Replays of a seed depend on it.
void AnimGenerator::generate1(sParticle& particle)
{
    memset(static_cast<void*>(&particle), 0, sizeof(particle));

    f32 x = 0.0f;
    f32 y = 0.0f;
    if (mPlacementMode == ePlacementMode_Disc) {
        f32 const inner = static_cast<f32>(mInnerRadius);
        f32 const r = inner + static_cast<f32>(mOuterRadius - mInnerRadius) * mRandom.randomF32();
        f32 const theta = kPi * (mRandom.randomF32() * 2.0f);
        x = cosf(theta) * r;
        y = sinf(theta) * r;
    } else if (mOuterRadius != 0) {
        // Points in the unit disc between inner / outer and 1 from the
        // centre: the radius is not scaled back by the outer radius.
        f32 const q = static_cast<f32>(mInnerRadius) / static_cast<f32>(mOuterRadius);
        f32 const s = q * q;
        f32 const r = sqrtf((1.0f - s) * mRandom.randomF32() + s);
        f32 const theta = kPi * (mRandom.randomF32() * 2.0f);
        x = cosf(theta) * r;
        y = sinf(theta) * r;
    }
    particle.mPosition = sVector(sFixed(x), sFixed(y));

    sVector direction = sVector::Zero;
    if (mVelocityMode == eVelocityMode_PositionDependent) {
        if (particle.mPosition != sVector::Zero) {
            direction = particle.mPosition.normalize();
        }
    } else if (mVelocityMode == eVelocityMode_Random) {
        f32 const theta = kPi * (mRandom.randomF32() * 2.0f);
        direction = sVector(sFixed(cosf(theta)), sFixed(sinf(theta)));
    } else if (mVelocityMode == eVelocityMode_Directional) {
        f32 const degrees = mDirection - mDirectionRange + mDirectionRange * 2.0f * mRandom.randomF32();
        f32 const theta = degrees * kPi / 180.0f;
        direction = sVector(sFixed(cosf(theta)), sFixed(sinf(theta)));
    }

    sFixed const speed(mSpeed - mSpeedRange + mSpeedRange * 2.0f * mRandom.randomF32());
    particle.mVelocity = direction * speed;
    particle.mAcceleration = mGravity;
    particle.mScale = sFixed(0.5f * (mScale - mScaleRange + mScaleRange * 2.0f * mRandom.randomF32()));

    if (mRandomFlip != 0) {
        // The draw is taken and its top two bits masked, but the AND with 1
        // of the masked value leaves both flip bits 0: particles never flip.
        // Kept so, since the draw still moves the stream.
        u32 const draw = mRandom.randomU32();
        u32 const hflip = (draw & 0x80000000u) & 1u;
        u32 const vflip = (draw & 0x40000000u) & 1u;
        particle.mFlags |= (hflip != 0 ? static_cast<u32>(eParticle_HFlip) : 0u) |
                          (vflip != 0 ? static_cast<u32>(eParticle_VFlip) : 0u);
    } else {
        particle.mFlags &= ~static_cast<u32>(eParticle_HFlip | eParticle_VFlip);
    }

    particle.mUV = mUV;
    particle.mSize = mSize;
    particle.mAge = sFixed::Zero;
    particle.mFlags = (particle.mFlags & ~static_cast<u32>(eParticle_PhaseMask)) | eParticle_Alive;
}

void AnimGenerator::update(sFixed frames)
{
    mBoundingBox = sAABB::Zero;
    int const life = mLifeDuration;
    for (u32 i = 0; i < mMaxParticleNum; ++i) {
        sParticle& particle = mpParticles[i];
        if (!particle.isAlive()) {
            continue;
        }
        particle.mAge += frames;
        int const age = static_cast<int>(particle.mAge);
        if (age >= life) {
            particle.mFlags &= ~static_cast<u32>(eParticle_Alive);
            continue;
        }
        // Once per update, however many frames it covers.
        particle.mPosition += particle.mVelocity;
        particle.mVelocity += particle.mAcceleration;
        particle.mScale += mScaleRate;

        u32 phase;
        if (age < mAppearanceTime) {
            particle.mOpacity = static_cast<f32>(particle.mAge) / static_cast<f32>(mAppearanceTime);
            phase = 1;
        } else if (age < life - mDisappearanceTime) {
            particle.mOpacity = 1.0f;
            phase = 2;
        } else {
            // Rises from 0 to 1 over the last frames, the mirror of a fade:
            // the particle blinks out and comes back before it dies. Kept as
            // authored content looks that way.
            particle.mOpacity = 1.0f - static_cast<f32>(life - age) / static_cast<f32>(mDisappearanceTime);
            phase = 3;
        }
        particle.mFlags = (particle.mFlags & ~static_cast<u32>(eParticle_PhaseMask)) | (phase << kPhaseShift);

        // Each particle's box (half its drawn size around its position) is
        // merged into a copy of the bounding box that is then dropped, so
        // the box stays zero: the unit's trees and the drawing are built on
        // that. The merge is pure and its result unused, so it is not done.
    }
    mCenterOffset = mBoundingBox.getCenter() - toVector(mPosition);

    mGenerateAccumulator += mGenerateRate * frames;
    if (mGenerateAccumulator >= sFixed::One) {
        u32 const whole = static_cast<u32>(static_cast<int>(mGenerateAccumulator));
        generate(whole);
        mGenerateAccumulator = sFixed::raw(static_cast<u32>(mGenerateAccumulator.mValue) & 0xFFFFu);
    }
}
