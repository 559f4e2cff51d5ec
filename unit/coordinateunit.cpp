#include "unit/coordinateunit.h"

#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"

IMPLEMENT_OBJECT_TYPEINFO(CoordinateUnit, "UnitBase");

CoordinateUnit::CoordinateUnit()
    : mPosition(sVector::Zero), mScale(sVector::One), mOrientation(sFixed::Zero)
{
}

CoordinateUnit::~CoordinateUnit()
{
}

void CoordinateUnit::update(float delta)
{
    UnitBase::update(delta);
}

void CoordinateUnit::makePropertyList(PropertyList& list)
{
    UnitBase::makePropertyList(list);
    list.add(new ReferenceProperty<sVector>("Position", &mPosition));
    list.add(new ReferenceProperty<sVector>("Scale", &mScale));
    list.add(new ReferenceProperty<sFixed>("Orientation", &mOrientation));
}

void CoordinateUnit::makeControlList(List<ControlBase>& list)
{
    UnitBase::makeControlList(list);
    list.addLast(new PropertyControl(new ReferenceProperty<sVector>("Position", &mPosition)));
    list.addLast(new PropertyControl(new ReferenceProperty<sVector>("Scale", &mScale)));
    list.addLast(new PropertyControl(new ReferenceProperty<sFixed>("Orientation", &mOrientation)));
}
