#include <gtest/gtest.h>

#include "foundation/random.h"

TEST(Random, LcgFromSeedZero)
{
    RandomLCG random(0);
    EXPECT_EQ(random.randomU32(), 2531011u);
    EXPECT_EQ(random.randomU32(), 505908858u);
    EXPECT_EQ(random.randomU32(), 3539360597u);
    random.setSeed(0);
    EXPECT_EQ(random.randomU32(), 2531011u);
    EXPECT_EQ(random.getSeed(), 2531011u);
}

TEST(Random, XorShiftDefaultSequence)
{
    RandomXorShift random;
    EXPECT_EQ(random.randomU32(), 3701687786u);
    EXPECT_EQ(random.randomU32(), 458299110u);
    EXPECT_EQ(random.randomU32(), 2500872618u);
    RandomXorShift seeded(123456789u, 362436069u, 521288629u, 88675123u);
    EXPECT_EQ(seeded.randomU32(), 3701687786u);
}

TEST(Random, ConversionsStayInTheUnitInterval)
{
    EXPECT_EQ(Random::convertF32(0xFFFFFFFFu), 1.0f - 1.0f / 8388608.0f);
    EXPECT_EQ(Random::convertF32(0x80000000u), 0.5f);
    EXPECT_EQ(Random::convertFixed(0xFFFFFFFFu).mValue, 0xFFFF);
    EXPECT_EQ(Random::convertFixed(0xFFFFu).mValue, 0);
    RandomLCG lcg(0);
    EXPECT_EQ(lcg.randomF32(), Random::convertF32(2531011u));
    EXPECT_EQ(lcg.randomFixed(), Random::convertFixed(505908858u));
}
