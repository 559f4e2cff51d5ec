#include "unit/unitbase.h"

#include "foundation/debug.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "unit/unitsystem.h"

IMPLEMENT_TYPEINFO(UnitBase, "ObjectBase", TypeInfo::eAttribute_Abstract);
ClassHeap UnitBase::mHeap;

namespace {

// The game views' flags: view v has bit v, and view 0 none.
sEnumInfo const kViewFlags[] = {
    {"View0", 2},
    {"View1", 4},
    {"View2", 8},
    {"View3", 16},
};

} // namespace

UnitBase::UnitBase()
    : mSystemStatus(0), mStatus(eStatus_Update | eStatus_Draw), mCategory(0xFFFFFFFFu), mPriorityGroup(kNoGroup),
      mUpdatePass(1), mView(2)
{
}

UnitBase::~UnitBase()
{
    if (UnitSystem* units = UnitSystem::getInstance()) {
        units->notifyUnitDestroy(this);
    }
}

void UnitBase::update(float)
{
}

void UnitBase::draw(DrawContext*) const
{
}

void UnitBase::kill()
{
    UnitSystem::getInstance()->removeUnit(this);
}

void UnitBase::setSelect(bool select)
{
    if (select) {
        mSystemStatus |= eSystemStatus_Select;
    } else {
        mSystemStatus &= ~static_cast<u32>(eSystemStatus_Select);
    }
}

void UnitBase::setUpdate(bool update)
{
    if (update) {
        mStatus |= eStatus_Update;
    } else {
        mStatus &= ~static_cast<u32>(eStatus_Update);
    }
}

void UnitBase::setDraw(bool draw)
{
    if (draw) {
        mStatus |= eStatus_Draw;
    } else {
        mStatus &= ~static_cast<u32>(eStatus_Draw);
    }
}

char const* UnitBase::getTypeName() const
{
    return getTypeInfo()->getName();
}

void UnitBase::setTypeName(char const*)
{
}

// mUpdatePass is not published.
void UnitBase::makePropertyList(PropertyList& list)
{
    ObjectBase::makePropertyList(list);
    list.add(new IndirectProperty<char const*>("TypeName", this, &UnitBase::getTypeName, &UnitBase::setTypeName));
    list.add(new ReferenceProperty<u32>("Status", &mStatus));
    list.add(new ReferenceProperty<u32>("Category", &mCategory));
    list.add(new ReferenceProperty<u32>("PriorityGroup", &mPriorityGroup));
    list.add(new ReferenceProperty<u32>("View", &mView));
}

void UnitBase::makeControlList(List<ControlBase>& list)
{
    ObjectBase::makeControlList(list);
    list.addLast(new PropertyControl(
        new IndirectProperty<char const*>("TypeName", this, &UnitBase::getTypeName, &UnitBase::setTypeName)));
    list.addLast(new PropertyControl(new ReferenceProperty<u32>("Status", &mStatus)));
    list.addLast(new PropertyControl(new ReferenceProperty<u32>("Category", &mCategory)));
    list.addLast(new PropertyControl(new ReferenceProperty<u32>("PriorityGroup", &mPriorityGroup)));
    list.addLast(new PropertyControl(new ReferenceProperty<u32>("View", &mView), kViewFlags,
                                     sizeof(kViewFlags) / sizeof(kViewFlags[0])));
}
