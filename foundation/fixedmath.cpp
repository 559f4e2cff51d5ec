#include "foundation/fixedmath.h"

#include <cmath>

sFixed TrigonometricalFunction::mTable[TrigonometricalFunction::TableSize];

void TrigonometricalFunction::initialize()
{
    // 2 pi as the float 0x40C90FDA; the quarter points are set exactly so
    // that the right angles come out as 0, 1 and -1.
    f32 const twoPi = 6.2831850f;
    for (u32 i = 0; i < TableSize; ++i) {
        mTable[i] = sFixed(sinf(static_cast<f32>(i) * twoPi / static_cast<f32>(TableSize)));
    }
    mTable[0] = sFixed::Zero;
    mTable[TableSize / 4] = sFixed::One;
    mTable[TableSize / 2] = sFixed::Zero;
    mTable[TableSize * 3 / 4] = -sFixed::One;
}

sFixed TrigonometricalFunction::getSin(int degrees)
{
    if (degrees >= 0) {
        u32 index = (static_cast<u32>(degrees) * TableSize / 360) & (TableSize - 1);
        return mTable[index];
    }
    u32 index = ((0u - static_cast<u32>(degrees)) * TableSize / 360) & (TableSize - 1);
    if (index != 0) {
        index = TableSize - index;
    }
    return mTable[index];
}

sFixed TrigonometricalFunction::getCos(int degrees)
{
    // Wraps like the machine word rather than overflowing.
    return getSin(static_cast<int>(static_cast<u32>(degrees) + 90u));
}

sFixed TrigonometricalFunction::getSin(sFixed degrees)
{
    // pi as the float 0x40490FDA.
    f32 const pi = 3.1415925f;
    return sFixed(sinf(static_cast<f32>(degrees) * pi / 180.0f));
}

sFixed TrigonometricalFunction::getCos(sFixed degrees)
{
    return getSin(degrees + sFixed(90, 16));
}

sMatrix::sMatrix(sVector const& scale, sFixed orientation, sVector const& translation)
{
    setOrientation(orientation);
    setTranslation(translation);
    m00 *= scale.x;
    m11 *= scale.y;
    m20 = sFixed::Zero;
    m21 = sFixed::Zero;
    m22 = sFixed::One;
}

void sMatrix::setOrientation(sFixed degrees)
{
    sFixed c = TrigonometricalFunction::getCos(degrees);
    sFixed s = TrigonometricalFunction::getSin(degrees);
    m00 = c;
    m01 = -s;
    m10 = s;
    m11 = c;
}

sMatrix sMatrix::operator*(sMatrix const& r) const
{
    return sMatrix(m00 * r.m00 + m01 * r.m10 + m02 * r.m20, m00 * r.m01 + m01 * r.m11 + m02 * r.m21,
                   m00 * r.m02 + m01 * r.m12 + m02 * r.m22, m10 * r.m00 + m11 * r.m10 + m12 * r.m20,
                   m10 * r.m01 + m11 * r.m11 + m12 * r.m21, m10 * r.m02 + m11 * r.m12 + m12 * r.m22,
                   m20 * r.m00 + m21 * r.m10 + m22 * r.m20, m20 * r.m01 + m21 * r.m11 + m22 * r.m21,
                   m20 * r.m02 + m21 * r.m12 + m22 * r.m22);
}
