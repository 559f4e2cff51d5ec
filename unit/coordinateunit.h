// CoordinateUnit: a unit with a place in the world, all in fixed point: a
// position, a scale and an orientation in degrees, published so that saved
// scenes, property forms and timelines can move it. While selected it shows
// its class name and two handles in its views (a position and a direction
// handle, kept in UISystem's list). Drawing stays with the classes that
// derive from it. Thread rules are those of UnitBase; a selected unit's
// update touches UISystem, which locks its list of handles for it.
#pragma once

#include "foundation/list.h"
#include "foundation/types.h"
#include "unit/unitbase.h"

class UIDirectionControl;
class UIGameViewControl;
class UIPositionControl;

class CoordinateUnit : public UnitBase {
public:
    CoordinateUnit();
    // Takes its handles out of UISystem, also a direction handle left
    // behind by a deselection: they edit this unit's fields.
    ~CoordinateUnit() override;

    // While selected: the name in the views and the two handles at the
    // position. Deselection removes the position handle only; the direction
    // handle stays where it was, as the editor has always behaved.
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

    UIPositionControl* getPositionControl() const { return mpPositionControl; }
    UIDirectionControl* getDirectionControl() const { return mpDirectionControl; }

private:
    sVector mPosition;
    sVector mScale;
    sFixed mOrientation;
    UIPositionControl* mpPositionControl;
    UIDirectionControl* mpDirectionControl;
    // Direction handles that deselection left in UISystem's list.
    List<UIGameViewControl> mLeftHandles;
};
