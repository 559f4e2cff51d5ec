// Deterministic, seedable pseudo-random generators: a linear congruential one
// (the particle generator replays a seed with it) and xorshift-128. Plain
// state, no virtual operations; one thread uses a generator at a time.
#pragma once

#include "foundation/types.h"

class Random {
public:
    // [0, 1): the top 23 bits as the mantissa of a float in [1, 2), less 1.
    static f32 convertF32(u32 value);
    // [0, 1): the top 16 bits as the raw fraction.
    static sFixed convertFixed(u32 value) { return sFixed(static_cast<int>(value >> 16), 0); }
};

class RandomLCG : public Random {
public:
    explicit RandomLCG(u32 seed = 0) : mSeed(seed) {}

    void setSeed(u32 seed) { mSeed = seed; }
    u32 getSeed() const { return mSeed; }

    // seed = seed x 214013 + 2531011 (mod 2^32); the new seed is the result.
    u32 randomU32()
    {
        mSeed = mSeed * 214013u + 2531011u;
        return mSeed;
    }
    f32 randomF32() { return convertF32(randomU32()); }
    sFixed randomFixed() { return convertFixed(randomU32()); }

private:
    u32 mSeed;
};

// Period 2^128 - 1.
class RandomXorShift : public Random {
public:
    RandomXorShift() : mX(123456789u), mY(362436069u), mZ(521288629u), mW(88675123u) {}
    RandomXorShift(u32 x, u32 y, u32 z, u32 w) : mX(x), mY(y), mZ(z), mW(w) {}

    u32 randomU32()
    {
        u32 t = mX ^ (mX << 11);
        mX = mY;
        mY = mZ;
        mZ = mW;
        mW = mW ^ (mW >> 19) ^ t ^ (t >> 8);
        return mW;
    }
    f32 randomF32() { return convertF32(randomU32()); }
    sFixed randomFixed() { return convertFixed(randomU32()); }

private:
    u32 mX;
    u32 mY;
    u32 mZ;
    u32 mW;
};
