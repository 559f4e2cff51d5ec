#include <gtest/gtest.h>

#include <cmath>

#include "foundation/fixedmath.h"

namespace {

class Trigonometry : public testing::Test {
protected:
    void SetUp() override { TrigonometricalFunction::initialize(); }
};

typedef Trigonometry Matrix;

sFixed fixed(float value)
{
    return sFixed(value);
}

} // namespace

TEST_F(Trigonometry, QuarterPointsOfTheTableAreExact)
{
    sFixed const* table = TrigonometricalFunction::getTable();
    EXPECT_EQ(table[0], sFixed::Zero);
    EXPECT_EQ(table[256], sFixed::One);
    EXPECT_EQ(table[512], sFixed::Zero);
    EXPECT_EQ(table[768], -sFixed::One);
    // Other entries follow the sine within one raw step.
    for (int i : {1, 100, 128, 300, 640, 1000, 1023}) {
        double expected = std::sin(i * 2.0 * M_PI / 1024.0) * 65536.0;
        EXPECT_NEAR(table[i].mValue, expected, 1.5) << "entry " << i;
    }
}

TEST_F(Trigonometry, TableLookupByWholeDegrees)
{
    EXPECT_EQ(TrigonometricalFunction::getSin(90), sFixed::One);
    EXPECT_EQ(TrigonometricalFunction::getSin(-90), -sFixed::One);
    EXPECT_EQ(TrigonometricalFunction::getSin(360), sFixed::Zero);
    EXPECT_EQ(TrigonometricalFunction::getCos(180), -sFixed::One);
    EXPECT_EQ(TrigonometricalFunction::getSin(-360), sFixed::Zero);
    EXPECT_EQ(TrigonometricalFunction::getSin(450), sFixed::One);
    // 45 degrees is entry 128; -45 is entry 1024 - 128.
    sFixed const* table = TrigonometricalFunction::getTable();
    EXPECT_EQ(TrigonometricalFunction::getSin(45), table[128]);
    EXPECT_EQ(TrigonometricalFunction::getSin(-45), table[896]);
    // 1 degree: 1024 / 360 truncates to entry 2.
    EXPECT_EQ(TrigonometricalFunction::getSin(1), table[2]);
    // The index is computed in unsigned 32 bits: 4194304 x 1024 wraps to 0.
    EXPECT_EQ(TrigonometricalFunction::getSin(4194304), sFixed::Zero);
}

TEST_F(Trigonometry, FixedDegreesGoThroughTheFloatSine)
{
    EXPECT_EQ(TrigonometricalFunction::getSin(sFixed(30, 16)), fixed(sinf(30.0f * 3.1415925f / 180.0f)));
    EXPECT_NEAR(static_cast<float>(TrigonometricalFunction::getCos(sFixed(60, 16))), 0.5f, 1e-4f);
}

TEST_F(Matrix, ConstructionFromPartsScalesOnlyTheDiagonal)
{
    sVector scale(sFixed(2, 16), sFixed(3, 16));
    sVector translation(sFixed(10, 16), sFixed(20, 16));
    sMatrix m(scale, sFixed(90, 16), translation);
    sFixed s = TrigonometricalFunction::getSin(sFixed(90, 16));
    sFixed c = TrigonometricalFunction::getCos(sFixed(90, 16));
    EXPECT_EQ(m.m00, c * scale.x);
    EXPECT_EQ(m.m11, c * scale.y);
    // Unscaled: the rotation part keeps its plain sine.
    EXPECT_EQ(m.m01, -s);
    EXPECT_EQ(m.m10, s);
    EXPECT_EQ(m.m02, translation.x);
    EXPECT_EQ(m.m12, translation.y);

    sMatrix plain(scale, sFixed::Zero, translation);
    sVector point(sFixed::One, sFixed::One);
    EXPECT_EQ(plain.transform(point), sVector(sFixed(12, 16), sFixed(23, 16)));
    EXPECT_EQ(plain.transformNormal(point), sVector(sFixed(2, 16), sFixed(3, 16)));
}

TEST_F(Matrix, ProductIsLeftTimesRight)
{
    sFixed o = sFixed::One;
    sFixed z = sFixed::Zero;
    sMatrix translate(o, z, sFixed(5, 16), z, o, sFixed(7, 16), z, z, o);
    sMatrix scale(sFixed(2, 16), z, z, z, sFixed(3, 16), z, z, z, o);
    sVector point(sFixed::One, sFixed::One);
    // Scale first, then translate.
    EXPECT_EQ((translate * scale).transform(point), sVector(sFixed(7, 16), sFixed(10, 16)));
    EXPECT_EQ((scale * translate).transform(point), sVector(sFixed(12, 16), sFixed(24, 16)));
}
