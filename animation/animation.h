// Animation primitives: the small 2D objects that the tracks of an animation
// make and its lanes drive. AnimCell is a textured quad, AnimCollision a box
// for hit tests, AnimGenerator a fixed pool of particles. They hold values and
// do no drawing of their own: AnimationUnit turns cells and generators into
// quads and boxes. An object belongs to the sequencer that made it and is
// touched by that sequencer's thread only.
#pragma once

#include <cstddef>

#include "foundation/boundingbox.h"
#include "foundation/random.h"
#include "foundation/types.h"
#include "reflection/objectbase.h"

class AllocatorBase;
class PropertyBase;

class AnimPrimitive : public ObjectBase {
public:
    AnimPrimitive();
    ~AnimPrimitive() override;

    // Centre in the animation's space, in pixels.
    sPoint const& getPosition() const { return mPosition; }
    void setPosition(sPoint const& position) { mPosition = position; }
    // Full width and height in pixels.
    sSize const& getSize() const { return mSize; }
    void setSize(sSize const& size) { mSize = size; }

    // The primitives' heap. Nothing sets it in the program; without one the
    // storage is plain array memory. A second call is fatal.
    static void setAllocator(AllocatorBase* allocator);
    static AllocatorBase* getAllocator() { return mpAllocator; }
    // 16-byte aligned; null when the heap is exhausted.
    static void* allocate(u32 size);
    static void deallocate(void* pointer);

    static void* operator new(std::size_t size) noexcept { return allocate(static_cast<u32>(size)); }
    static void operator delete(void* pointer) { deallocate(pointer); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) {}

    DECLARE_TYPEINFO(TypeInfo)

protected:
    sPoint mPosition;
    sSize mSize;

private:
    static AllocatorBase* mpAllocator;
};

class AnimCell : public AnimPrimitive {
public:
    // Bits of the attribute, named as the flag control shows them.
    enum eAttribute {
        eAttribute_Visible = 1,
        eAttribute_HFlip = 2,
        // Stored and offered, but a vertical flip leaves the quad as it is:
        // the cell's Y axis is the same vector with or without it.
        eAttribute_VFlip = 4,
    };
    enum eBlendMode {
        eBlendMode_Modulate = 0,
        eBlendMode_Add = 1,
        eBlendMode_Subtract = 2,
    };

    AnimCell();

    // "Position", "UV", "Size", "Color", "Attribute", "BlendMode" in both.
    void makePropertyList(PropertyList& list) override;
    void makeControlList(List<ControlBase>& list) override;

    // Texel of the top left corner.
    sTexcoord const& getUV() const { return mUV; }
    void setUV(sTexcoord const& uv) { mUV = uv; }
    sColor getColor() const { return mColor; }
    void setColor(sColor color) { mColor = color; }
    u32 getAttribute() const { return mAttribute; }
    void setAttribute(u32 attribute) { mAttribute = attribute & 7u; }
    // 3 is stored too; drawing then keeps the blend mode it finds.
    u32 getBlendMode() const { return mBlendMode; }
    void setBlendMode(u32 mode) { mBlendMode = mode & 3u; }

    DECLARE_TYPEINFO(UniqueTypeInfo<AnimCell>)

private:
    sTexcoord mUV;
    sColor mColor;
    u32 mAttribute : 3;
    u32 mBlendMode : 2;
};

class AnimCollision : public AnimPrimitive {
public:
    AnimCollision();

    // "Position", "Size", "Attribute" in both.
    void makePropertyList(PropertyList& list) override;
    void makeControlList(List<ControlBase>& list) override;

    u32 getAttribute() const { return mAttribute; }
    void setAttribute(u32 attribute) { mAttribute = attribute; }

    DECLARE_TYPEINFO(UniqueTypeInfo<AnimCollision>)

private:
    u32 mAttribute;
};

// Emits, moves, fades and counts down a fixed pool of particles. Everything
// follows from the seed: the same seed and the same steps give the same
// particles in the same slots. The pool is allocated once per reset, at most
// 255 entries; update and generate allocate nothing.
class AnimGenerator : public AnimPrimitive {
public:
    enum ePlacementMode {
        ePlacementMode_Disc = 0,
        ePlacementMode_UniformlyDisc = 1,
    };
    enum eVelocityMode {
        eVelocityMode_Random = 0,
        eVelocityMode_PositionDependent = 1,
        eVelocityMode_Directional = 2,
    };
    // Bits of sParticle::mFlags.
    enum eParticleFlag {
        eParticle_Alive = 1,
        eParticle_PhaseMask = 6, // 0 newborn, 1 appearing, 2 steady, 3 disappearing
        eParticle_HFlip = 8,
        eParticle_VFlip = 16,
    };
    static constexpr u32 kPhaseShift = 1;
    static constexpr u32 kDefaultSeed = 305419896u;

    struct sParticle {
        u32 mFlags;
        sVector mPosition; // from the generator's position, added when drawn
        sVector mVelocity;
        sVector mAcceleration; // gravity at birth
        f32 mOpacity;
        sTexcoord mUV;
        sSize mSize;
        sFixed mScale; // the quad's half extent is scale times size
        sFixed mAge;   // frames

        u32 getPhase() const { return (mFlags & eParticle_PhaseMask) >> kPhaseShift; }
        bool isAlive() const { return (mFlags & eParticle_Alive) != 0; }
        // The quad's edges around the particle's place; a flip swaps a pair
        // so that the texture's corners follow it.
        void getQuad(sFixed& left, sFixed& top, sFixed& right, sFixed& bottom) const
        {
            sFixed const hw = mScale * sFixed(static_cast<int>(mSize.width), 16);
            sFixed const hh = mScale * sFixed(static_cast<int>(mSize.height), 16);
            bool const hflip = (mFlags & eParticle_HFlip) != 0;
            bool const vflip = (mFlags & eParticle_VFlip) != 0;
            left = hflip ? mPosition.x + hw : mPosition.x - hw;
            right = hflip ? mPosition.x - hw : mPosition.x + hw;
            top = vflip ? mPosition.y + hh : mPosition.y - hh;
            bottom = vflip ? mPosition.y - hh : mPosition.y + hh;
        }
    };

    AnimGenerator();
    ~AnimGenerator() override;

    void makePropertyList(PropertyList& list) override;
    // As the property list, with the rate offered as "GenerataionRate" (the
    // name lanes bind to), then the triggers "Generate" (u32) and "Reset".
    void makeControlList(List<ControlBase>& list) override;

    // frames: steps of the owning sequence. Ages, moves and fades the live
    // particles, then emits what the rate has accumulated; particles born
    // here first move in the next update.
    void update(sFixed frames);
    // Brings up to count free slots to life, in pool order; 0 fills every
    // free slot.
    void generate(u32 count);
    // A fresh, zeroed pool of the current size and the random stream back at
    // the seed.
    void reset();

    // Zero at all times: the particles' boxes are merged into a copy that is
    // dropped. The drawing and the unit's trees rely on it as it is.
    sAABB const& getBoundingBox() const { return mBoundingBox; }
    // The box's centre less the position.
    sVector const& getCenterOffset() const { return mCenterOffset; }
    // index below getMaxParticleNum().
    sParticle const& getParticle(u32 index) const { return mpParticles[index]; }

    u8 getMaxParticleNum() const { return mMaxParticleNum; }
    void setMaxParticleNum(u8 num);
    u32 getRandomSeed() const { return mRandomSeed; }
    void setRandomSeed(u32 seed);
    u32 getPlacementMode() const { return mPlacementMode; }
    void setPlacementMode(u32 mode) { mPlacementMode = mode & 1u; }
    u32 getVelocityMode() const { return mVelocityMode; }
    void setVelocityMode(u32 mode) { mVelocityMode = mode & 3u; }
    u32 getBlendMode() const { return mBlendMode; }
    void setBlendMode(u32 mode) { mBlendMode = mode & 3u; }
    bool getRandomFlip() const { return mRandomFlip != 0; }
    void setRandomFlip(bool flip) { mRandomFlip = flip ? 1u : 0u; }

    sColor getColor() const { return mColor; }
    sTexcoord const& getUV() const { return mUV; }
    sFixed getGenerateRate() const { return mGenerateRate; }
    void setGenerateRate(sFixed rate) { mGenerateRate = rate; }

    DECLARE_TYPEINFO(UniqueTypeInfo<AnimGenerator>)

private:
    static constexpr u32 kPropertyNum = 24;
    // The published values in list order; rateName names the generate rate.
    void makeProperties(PropertyBase* (&properties)[kPropertyNum], char const* rateName);
    void generate1(sParticle& particle);

    u32 mPlacementMode : 1;
    u32 mVelocityMode : 2;
    u32 mRandomFlip : 1;
    u32 mBlendMode : 2;

public:
    // Reference properties: lanes and forms write these directly.
    f32 mDirection;      // degrees
    f32 mDirectionRange; // degrees either side
    f32 mSpeed;          // pixels per update
    f32 mSpeedRange;
    sVector mGravity;    // added to the velocity at each update
    f32 mScale;
    f32 mScaleRange;
    sColor mColor;
    sTexcoord mUV;       // top left texel of every particle
    u32 mInnerRadius;
    u32 mOuterRadius;
    sFixed mScaleRate;   // added to a particle's scale at each update
    u16 mLifeDuration;   // frames
    u16 mAppearanceTime;
    u16 mDisappearanceTime;

private:
    u8 mMaxParticleNum;
    // Never raised: generate is bounded by the free slots alone.
    u8 mActiveCount;
    sFixed mGenerateRate; // particles per frame
    sFixed mGenerateAccumulator;
    RandomLCG mRandom;
    u32 mRandomSeed;
    sAABB mBoundingBox;
    sVector mCenterOffset;
    sParticle* mpParticles;
};
