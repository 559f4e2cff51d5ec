// Fixed-point maths: the 2D affine matrix of sFixed and the sine table.
// TrigonometricalFunction::initialize() fills the table once on the main
// thread before any other thread starts; afterwards the table is read-only and
// may be read from anywhere.
#pragma once

#include "foundation/types.h"

class TrigonometricalFunction {
public:
    static constexpr u32 TableSize = 1024;

    static void initialize();

    // From the table, 1024 steps per turn. The index is computed in unsigned
    // 32-bit arithmetic, so degrees beyond about 4.19 million wrap.
    static sFixed getSin(int degrees);
    static sFixed getCos(int degrees);
    // Exact, through sinf, not from the table.
    static sFixed getSin(sFixed degrees);
    static sFixed getCos(sFixed degrees);

    static sFixed const* getTable() { return mTable; }

private:
    static sFixed mTable[TableSize];
};

// Nine sFixed row by row. The third column is the translation; a matrix made
// from parts has 0 0 1 as its third row.
struct sMatrix {
    sFixed m00, m01, m02;
    sFixed m10, m11, m12;
    sFixed m20, m21, m22;

    // Deliberately leaves the elements undefined.
    sMatrix() = default;
    sMatrix(sFixed a00, sFixed a01, sFixed a02, sFixed a10, sFixed a11, sFixed a12, sFixed a20, sFixed a21,
            sFixed a22)
        : m00(a00), m01(a01), m02(a02), m10(a10), m11(a11), m12(a12), m20(a20), m21(a21), m22(a22)
    {
    }
    // Scales the diagonal only (m00, m11), after the rotation is set: with a
    // rotation and a non-unit scale together this is not rotation x scale.
    // Deliberate; sequences and units are authored against this form.
    sMatrix(sVector const& scale, sFixed orientation, sVector const& translation);

    void setOrientation(sFixed degrees);
    void setTranslation(sVector const& translation)
    {
        m02 = translation.x;
        m12 = translation.y;
    }
    // Overwrites the diagonal, whatever rotation was there.
    void setScale(sVector const& scale)
    {
        m00 = scale.x;
        m11 = scale.y;
    }

    sMatrix operator*(sMatrix const& right) const;
    sVector transform(sVector const& point) const
    {
        return sVector(m00 * point.x + m01 * point.y + m02, m10 * point.x + m11 * point.y + m12);
    }
    sVector transformNormal(sVector const& normal) const
    {
        return sVector(m00 * normal.x + m01 * normal.y, m10 * normal.x + m11 * normal.y);
    }
};
