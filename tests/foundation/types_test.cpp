#include <gtest/gtest.h>

#include <limits>

#include "foundation/types.h"

namespace {

sFixed raw(s32 value)
{
    return sFixed(value, 0);
}

} // namespace

TEST(Fixed, IntegerConversionRoundsTowardNegativeInfinity)
{
    EXPECT_EQ(static_cast<int>(sFixed(-1, 16)), -1);
    EXPECT_EQ(static_cast<int>(raw(-1)), -1);
    EXPECT_EQ(static_cast<int>(raw(-0x18000)), -2);
    EXPECT_EQ(sFixed(3, 15), raw(0x18000));
}

// Out of range values come from files ("1e12"): they clamp, without the
// undefined conversion the sanitizer build would stop on.
TEST(Fixed, FloatConversionTruncatesTowardZeroAndClampsBeyondTheRange)
{
    struct {
        float mValue;
        s32 mRaw;
    } const cases[] = {
        {1.5f, 0x18000},
        {-1.5f, -0x18000},
        {0.75f / 65536.0f, 0}, // truncates to 0 on both sides of zero
        {-0.75f / 65536.0f, 0},
        {-32768.0f, static_cast<s32>(0x80000000u)},
        {32768.0f, 0x7FFFFFFF},
        {1e12f, 0x7FFFFFFF},
        {-1e12f, static_cast<s32>(0x80000000u)},
        {std::numeric_limits<float>::infinity(), 0x7FFFFFFF},
        {std::numeric_limits<float>::quiet_NaN(), 0},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(sFixed(c.mValue).mValue, c.mRaw) << c.mValue;
        sFixed assigned;
        assigned = c.mValue;
        EXPECT_EQ(assigned.mValue, c.mRaw) << c.mValue;
    }
    EXPECT_FLOAT_EQ(static_cast<float>(raw(0x24000)), 2.25f);
}

TEST(Fixed, ArithmeticWrapsWithoutSaturation)
{
    EXPECT_EQ(sFixed::Max + sFixed::One, raw(static_cast<s32>(0x8000FFFFu)));
    EXPECT_EQ(-sFixed::Min, sFixed::Min);
    EXPECT_EQ(sFixed::Min - sFixed::One, raw(0x7FFF0000));
    EXPECT_EQ(sFixed(1.5f) * sFixed(1.5f), raw(0x24000));
    EXPECT_EQ(sFixed(-1.5f) * sFixed(1.5f), raw(-0x24000));
    // Products shift arithmetically: the smallest negative stays negative.
    EXPECT_EQ(raw(-1) * sFixed::Half, raw(-1));
    EXPECT_EQ(sFixed(3, 16) / sFixed(2, 16), sFixed(1.5f));
    EXPECT_EQ(sFixed(1, 16) / sFixed(3, 16), raw(0x5555));
    EXPECT_EQ(raw(-5).abs(), raw(5));
}

TEST(Color, BytesAndFloatsConvertByTruncation)
{
    sColor gray = sColor::Gray;
    EXPECT_EQ(gray.r, 191);
    sColorF grayF(gray);
    EXPECT_FLOAT_EQ(grayF.r, 191.0f / 255.0f);
    sColor back = grayF;
    EXPECT_TRUE(back.r == 190 || back.r == 191);
    EXPECT_EQ(back.a, 255);
    // The word reads the bytes in stored order.
    sColor bytes(1, 2, 3, 4);
    unsigned int word = bytes;
    EXPECT_EQ(memcmp(&word, &bytes, 4), 0);
    sColorF product = sColorF::Yellow * sColorF(0.5f, 0.5f, 0.5f, 1.0f);
    EXPECT_FLOAT_EQ(product[0], 0.5f);
    EXPECT_FLOAT_EQ(product[2], 0.0f);
}

TEST(Point, VectorLengthDotAndNormal)
{
    EXPECT_EQ(sPoint(3, 4) * 2 - sPoint(1, 1), sPoint(5, 7));
    sVector v(sFixed(3, 16), sFixed(4, 16));
    EXPECT_FLOAT_EQ(v.length(), 5.0f);
    EXPECT_EQ(v.dot(v), sFixed(25, 16));
    EXPECT_EQ(v * sVector(sFixed::Half, sFixed::One), sVector(sFixed(1.5f), sFixed(4, 16)));
    EXPECT_EQ(v.normalize(), sVector(sFixed(0.6f), sFixed(0.8f)));
}

// Points on either edge are inside; rectangles that only touch overlap in Zero.
TEST(Rect, EdgesCountForPointsButNotForOverlap)
{
    sRect a(0, 0, 10, 10);
    EXPECT_TRUE(a.intersect(sPoint(10, 10)) && a.intersect(sPoint(0, 0)));
    EXPECT_FALSE(a.intersect(sPoint(11, 5)) || a.intersect(sPoint(5, -1)));
    EXPECT_EQ(a & sRect(10, 0, 20, 10), sRect::Zero);
    EXPECT_EQ(a & sRect(0, 10, 10, 20), sRect::Zero);
    EXPECT_EQ(a & sRect(5, -5, 15, 5), sRect(5, 0, 10, 5));
    sRect b = a;
    b &= sRect(2, 3, 4, 5);
    b |= sRect(-1, 8, 3, 20);
    EXPECT_EQ(b, sRect(-1, 3, 4, 20));
}
