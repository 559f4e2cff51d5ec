#include "unit/coordinateunit.h"

#include <initializer_list>

#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "tool/toolsystem.h"
#include "ui/uigameviewcontrol.h"
#include "ui/uisystem.h"

IMPLEMENT_OBJECT_TYPEINFO(CoordinateUnit, "UnitBase");

CoordinateUnit::CoordinateUnit()
    : mPosition(sVector::Zero), mScale(sVector::One), mOrientation(sFixed::Zero), mpPositionControl(nullptr),
      mpDirectionControl(nullptr)
{
}

CoordinateUnit::~CoordinateUnit()
{
    UISystem* ui = UISystem::getInstance();
    if (ui == nullptr) {
        return;
    }
    ui->removeGameViewControl(mpPositionControl);
    ui->removeGameViewControl(mpDirectionControl);
    for (UIGameViewControl* handle : mLeftHandles) {
        ui->removeGameViewControl(handle);
    }
}

void CoordinateUnit::update(float delta)
{
    UnitBase::update(delta);
    UISystem* ui = UISystem::getInstance();
    if (ui == nullptr) {
        return; // a game without the editor has no handles to show
    }
    if (isSelected()) {
        // The name with a shadow one pixel below and to the right.
        if (ToolSystem* tools = ToolSystem::getInstance()) {
            char const* name = getTypeInfo()->getName();
            tools->drawString(getView(), mPosition + sVector::One, name, 6, sColor::Black);
            tools->drawString(getView(), mPosition, name, 6, sColor::White);
        }
        if (mpPositionControl == nullptr) {
            mpPositionControl = new UIPositionControl(new ReferenceProperty<sVector>("Position", &mPosition));
            mpPositionControl->setView(getView());
            ui->addGameViewControl(mpPositionControl);
        }
        if (mpDirectionControl == nullptr) {
            mpDirectionControl = new UIDirectionControl(new ReferenceProperty<sFixed>("Direction", &mOrientation));
            mpDirectionControl->setView(getView());
            ui->addGameViewControl(mpDirectionControl);
        }
    } else {
        ui->removeGameViewControl(mpPositionControl);
        mpPositionControl = nullptr;
        if (mpDirectionControl != nullptr) {
            mLeftHandles.addLast(mpDirectionControl);
        }
        mpDirectionControl = nullptr;
    }
    sPoint const place(static_cast<int>(mPosition.x), static_cast<int>(mPosition.y));
    for (UIGameViewControl* control : {static_cast<UIGameViewControl*>(mpPositionControl),
                                       static_cast<UIGameViewControl*>(mpDirectionControl)}) {
        if (control != nullptr) {
            control->setView(getView());
            control->setPosition(place);
        }
    }
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
