// CoordinateUnit: a unit with a place in the world, all in fixed point: a
// position, a scale and an orientation in degrees, published so that saved
// scenes, property forms and timelines can move it. Drawing stays with the
// classes that derive from it. Thread rules are those of UnitBase.
#pragma once

#include "foundation/types.h"
#include "unit/unitbase.h"

class CoordinateUnit : public UnitBase {
public:
    CoordinateUnit();
    ~CoordinateUnit() override;

    void update(float delta) override;

    // UnitBase's first, then "Position", "Scale", "Orientation".
    void makePropertyList(PropertyList& list) override;
    void makeControlList(List<ControlBase>& list) override;

    void setPosition(sVector const& position) { mPosition = position; }
    sVector const& getPosition() const { return mPosition; }
    void setScale(sVector const& scale) { mScale = scale; }
    sVector const& getScale() const { return mScale; }
    // Degrees.
    void setOrientation(sFixed orientation) { mOrientation = orientation; }
    sFixed getOrientation() const { return mOrientation; }

    DECLARE_TYPEINFO(UniqueTypeInfo<CoordinateUnit>)

private:
    sVector mPosition;
    sVector mScale;
    sFixed mOrientation;
};
