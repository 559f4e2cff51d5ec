// Index: [SECTION] SystemInfoWindow, [SECTION] ResourceInfoWindow, [SECTION] UnitInfoWindow
#include "tool/infowindow.h"

#include "app/system.h"
#include "app/systemmanager.h"
#include "foundation/debug.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "resource/resourcebase.h"
#include "resource/resourcesystem.h"
#include "tool/toolbase.h"
#include "tool/toolsystem.h"
#include "tool/viewerwindow.h"
#include "ui/uicontrol.h"
#include "ui/uidialog.h"
#include "ui/uiform.h"
#include "ui/uimenu.h"
#include "ui/uisystem.h"
#include "unit/unitbase.h"
#include "unit/unitsystem.h"

IMPLEMENT_OBJECT_TYPEINFO(SystemInfoWindow, "UIWindow");
IMPLEMENT_OBJECT_TYPEINFO(ResourceInfoWindow, "UIWindow");
IMPLEMENT_OBJECT_TYPEINFO(UnitInfoWindow, "UIWindow");

namespace {

unsigned int const kInfoAttribute =
    UIWindow::eWindowAttribute_TitleBar | UIWindow::eWindowAttribute_Movable | UIWindow::eWindowAttribute_Sizable;
unsigned int const kNoRow = UIList::kNoRow;

} // namespace

// ---------------------------------------------------------------------------
// [SECTION] SystemInfoWindow

SystemInfoWindow::SystemOrder::SystemOrder(char const* column, System* system) : mpColumn(column)
{
    if (system == nullptr) {
        DEV_ERROR("System is NULL.");
    }
    mTypeName = system->getTypeInfo()->getName();
}

void SystemInfoWindow::SystemOrder::makePropertyList(PropertyList& list)
{
    list.add(new ReferenceProperty<AutoString>(mpColumn, &mTypeName));
}

SystemInfoWindow::SystemInfoWindow()
    : UIWindow(eStyle_Convex, kInfoAttribute, true, false, false, UIForm::eFormAttribute_AutoAlign, nullptr)
{
    setTitle("SystemInformation");
    setSize(sSize(256, 256));
    UIMenu* file = new UIMenu();
    file->addItem("Open");
    file->addItem("Close");
    UIMainMenu* bar = new UIMainMenu();
    bar->addItem("File", file);
    setMainMenu(bar);

    static char const* const kColumns[4] = {"Preprocess", "Update", "Postprocess", "Destroy"};
    SystemManager* manager = SystemManager::getInstance();
    List<System>* orders[4] = {&manager->getPreprocessOrder(), &manager->getUpdateOrder(),
                               &manager->getPostprocessOrder(), &manager->getDestroyOrder()};
    UIGroup* group = new UIGroup("System Order");
    group->setSize(sSize(236, 0));
    for (unsigned int i = 0; i < 4; ++i) {
        mOrders[i].setContentStability(false);
        for (System* system : *orders[i]) {
            mOrders[i].addLast(new SystemOrder(kColumns[i], system));
        }
        mpLists[i] = new UIList(false);
        mpLists[i]->addColumn(kColumns[i], 16, 96, eColumnAlignment_Left);
        mpLists[i]->setSize(sSize(98, 98));
        mpLists[i]->setObjectList(&mOrders[i]);
        group->add(mpLists[i]);
    }
    addClient(group);
}

SystemInfoWindow::~SystemInfoWindow()
{
    for (UIList* list : mpLists) {
        list->setObjectList(nullptr);
    }
}

// ---------------------------------------------------------------------------
// [SECTION] ResourceInfoWindow

void ResourceInfoWindow::ResourceInfo::setResource(ResourceBase* resource)
{
    if (resource != nullptr) {
        resource->addRef();
    }
    if (mpResource != nullptr) {
        mpResource->release();
    }
    mpResource = resource;
}

AutoString ResourceInfoWindow::ResourceInfo::getTypeName() const
{
    return mpResource != nullptr ? AutoString(mpResource->getTypeInfo()->getName()) : AutoString();
}

u32 ResourceInfoWindow::ResourceInfo::getRefCtr() const
{
    return mpResource != nullptr ? static_cast<u32>(mpResource->getRefCount()) : 0;
}

AutoString ResourceInfoWindow::ResourceInfo::getPath() const
{
    return mpResource != nullptr ? mpResource->getPath() : AutoString();
}

void ResourceInfoWindow::ResourceInfo::makePropertyList(PropertyList& list)
{
    list.add(new IndirectProperty<AutoString>("TypeName", this, &ResourceInfo::getTypeName, &ResourceInfo::setTypeName));
    list.add(new IndirectProperty<u32>("RefCtr", this, &ResourceInfo::getRefCtr, &ResourceInfo::setRefCtr));
    list.add(new IndirectProperty<AutoString>("Path", this, &ResourceInfo::getPath, &ResourceInfo::setPath));
}

ResourceInfoWindow::ResourceList::ResourceList() : UIList(false)
{
    addColumn("TypeName", 20, 96, eColumnAlignment_Left);
    addColumn("RefCtr", 6, 40, eColumnAlignment_Right);
    addColumn("Path", 40, 240, eColumnAlignment_Left);
}

ResourceInfoWindow::ResourceInfoWindow()
    : UIWindow(eStyle_Convex, kInfoAttribute, true, false, false, UIForm::eFormAttribute_AutoAlign, nullptr),
      mpList(nullptr), mpNumControl(nullptr), mResourceNum(0), mpSelectResource(nullptr)
{
    // Spelled so.
    setTitle("ResrourceInformation");
    setSize(sSize(256, 256));
    UIMenu* file = new UIMenu();
    file->addItem("New", this, &ResourceInfoWindow::eventNew);
    file->addItem("Open", this, &ResourceInfoWindow::eventOpen);
    UIMainMenu* bar = new UIMainMenu();
    bar->addItem("File", file);
    setMainMenu(bar);

    PropertyBase* number = new IndirectProperty<u32>("ResourceNum", this, &ResourceInfoWindow::getResourceNum,
                                                     &ResourceInfoWindow::setResourceNum);
    uNumeric minimum, maximum;
    minimum.mU64 = 0;
    maximum.mU64 = 0;
    maximum.mU32 = 0xFFFFFFFFu;
    mpNumControl = new UIParameterControl(number, minimum, maximum, true, UIControl::NoIndex, UIControl::eMode_Decimal);
    mpNumControl->setDefaultSize();
    mpNumControl->setAttribute(UIBase::eAttribute_RowItem);
    addClient(mpNumControl);
    mpList = new ResourceList();
    mpList->setAttribute(UIBase::eAttribute_RowItem);
    mpList->setSize(sSize(240, 160));
    mpList->setFunction(this, &ResourceInfoWindow::notifySelectList, &ResourceInfoWindow::notifyDecideList);
    addClient(mpList);
}

ResourceInfoWindow::~ResourceInfoWindow()
{
    mpList->setObjectList(nullptr);
    clearRecords();
    selectResource(nullptr);
}

void ResourceInfoWindow::clearRecords()
{
    for (ResourceInfo* record : mRecords) {
        delete record;
    }
    mRecords.clear();
    mResourceInfoList.clear();
}

void ResourceInfoWindow::selectResource(ResourceBase* resource)
{
    if (resource != nullptr) {
        resource->addRef();
    }
    if (mpSelectResource != nullptr) {
        mpSelectResource->release();
    }
    mpSelectResource = resource;
}

void ResourceInfoWindow::update(float deltaTime)
{
    UIWindow::update(deltaTime);
    int const height = getClientRegion().getHeight() - mpList->getPosition().y;
    if (height > 0) {
        mpList->setSize(sSize(mpList->getSize().width, static_cast<unsigned int>(height)));
    }
    updateResourceList();
}

// The records are remade when the map's size changes; each frame they take
// the resources anew, with a reference each, in the map's id order.
void ResourceInfoWindow::updateResourceList()
{
    mpList->setObjectList(nullptr);
    for (ResourceInfo* record : mRecords) {
        record->setResource(nullptr);
    }
    mResourceInfoList.clear();
    Map<ResourceBase> const& map = ResourceSystem::getInstance()->getResources();
    mResourceNum = map.size();
    if (mRecords.size() != map.size()) {
        clearRecords();
        if (map.size() != 0) {
            mRecords.reserve(map.size());
            for (u32 i = 0; i < map.size(); ++i) {
                mRecords.addLast(new ResourceInfo());
            }
        }
    }
    mResourceInfoList.reserve(map.size());
    unsigned int selected = kNoRow;
    unsigned int row = 0;
    for (Map<ResourceBase>::Iterator it = map.begin(); it != map.end(); ++it, ++row) {
        mRecords[row]->setResource(*it);
        mResourceInfoList.addLast(mRecords[row]);
        if (*it == mpSelectResource) {
            selected = row;
        }
    }
    mpList->setObjectList(&mResourceInfoList);
    if (selected != kNoRow) {
        mpList->setSelectRow(selected);
    }
}

void ResourceInfoWindow::notifySelectList(unsigned int row)
{
    selectResource(row < mResourceInfoList.size() ? mRecords[row]->getResource() : nullptr);
}

void ResourceInfoWindow::notifyDecideList(unsigned int row)
{
    notifySelectList(row);
    if (mpSelectResource == nullptr) {
        return;
    }
    if (ToolBase* tool = ToolSystem::getInstance()->createTool(mpSelectResource->getTypeInfo())) {
        tool->setManagedResource(mpSelectResource);
        UISystem::getInstance()->addWindow(tool);
    }
}

void ResourceInfoWindow::eventOpen()
{
    UISystem::getInstance()->addWindow(
        new UIFileDialog("Open", this, &ResourceInfoWindow::notifyOpen, "All files", nullptr, false, this));
}

void ResourceInfoWindow::notifyOpen(UIDialog* dialog)
{
    if (dialog->getReturnValue() != UIDialog::eReturnValue_Ok) {
        return;
    }
    UIFileDialog const* files = static_cast<UIFileDialog const*>(dialog);
    ResourceSystem* resources = ResourceSystem::getInstance();
    TypeInfo const* type = resources->getTypeInfoByExtension(files->getExtension().c_str());
    AutoString const path = files->getResourcePath();
    if (type == nullptr || path.empty()) {
        return;
    }
    ResourceBase* resource = resources->createResource(path.c_str(), type);
    if (resource == nullptr) {
        return;
    }
    if (ToolBase* tool = ToolSystem::getInstance()->createTool(type)) {
        tool->setManagedResource(resource);
        UISystem::getInstance()->addWindow(tool);
    }
    resource->release();
}

void ResourceInfoWindow::eventNew()
{
    UIPlaneObjectDialog* dialog = new UIPlaneObjectDialog("Creatable resource", this, &ResourceInfoWindow::notifySelect,
                                                          ResourceBase::getStaticTypeInfo(), this);
    dialog->setFilter(this, &ResourceInfoWindow::enumCallback);
    UISystem::getInstance()->addWindow(dialog);
}

bool ResourceInfoWindow::enumCallback(TypeInfo const* type)
{
    ObjectBase* object = type->newInstance();
    if (object == nullptr) {
        return false;
    }
    // Every class below ResourceBase is a resource.
    ResourceBase* resource = static_cast<ResourceBase*>(object);
    bool const creatable = resource->checkAttribute(ResourceBase::eAttribute_Creatable);
    resource->release();
    return creatable;
}

void ResourceInfoWindow::notifySelect(UIDialog* dialog)
{
    if (dialog->getReturnValue() != UIDialog::eReturnValue_Ok) {
        return;
    }
    TypeInfo const* type = static_cast<UIPlaneObjectDialog const*>(dialog)->getSelecteTypeInfo();
    if (type == nullptr) {
        return;
    }
    ResourceBase* resource = ResourceSystem::getInstance()->createResource(nullptr, type);
    if (resource == nullptr) {
        return;
    }
    if (ToolBase* tool = ToolSystem::getInstance()->createTool(type)) {
        tool->setManagedResource(resource);
        UISystem::getInstance()->addWindow(tool);
    }
    resource->release();
}

void ResourceInfoWindow::makePropertyList(PropertyList& list)
{
    list.add(new IndirectProperty<u32>("ResourceNum", this, &ResourceInfoWindow::getResourceNum,
                                       &ResourceInfoWindow::setResourceNum));
}

// ---------------------------------------------------------------------------
// [SECTION] UnitInfoWindow

UnitInfoWindow::UIUnitList::UIUnitList() : UIList(true)
{
    addColumn("TypeName", 24, 160, eColumnAlignment_Left);
    addColumn("Category", 8, 96, eColumnAlignment_Right);
    addColumn("PriorityGroup", 8, 112, eColumnAlignment_Right);
}

void UnitInfoWindow::UIUnitList::setUnitList(ObjectList* list)
{
    setObjectList(list);
    if (list == nullptr) {
        return;
    }
    unsigned int row = 0;
    for (ObjectBase* object : *list) {
        setSelectFlag(row++, static_cast<UnitBase const*>(object)->isSelected());
    }
}

UnitInfoWindow::UnitInfoWindow()
    : UIWindow(eStyle_Convex, kInfoAttribute, true, false, false, 0, nullptr), mpList(nullptr),
      mCategoryFilter(0), mPriorityFilter(0)
{
    setTitle("UnitInformation");
    setSize(sSize(512, 256));
    UIMenu* edit = new UIMenu();
    edit->addItem("New", this, &UnitInfoWindow::eventNew);
    edit->addItem("Delete", this, &UnitInfoWindow::eventDelete);
    UIMainMenu* bar = new UIMainMenu();
    bar->addItem("Edit", edit);
    setMainMenu(bar);

    // "All", then the names UnitSystem holds; the controls copy the tables.
    UnitSystem* units = UnitSystem::getInstance();
    sEnumInfo categories[UnitSystem::kCategoryNum + 1];
    sEnumInfo groups[UnitSystem::kPriorityGroupNum + 1];
    categories[0] = {"All", 0};
    groups[0] = {"All", 0};
    for (u32 i = 0; i < UnitSystem::kCategoryNum; ++i) {
        categories[i + 1] = {units->getCategoryName(i), i + 1};
    }
    for (u32 i = 0; i < UnitSystem::kPriorityGroupNum; ++i) {
        groups[i + 1] = {units->getPriorityGroup(i)->mName, i + 1};
    }
    struct {
        char const* name;
        sEnumInfo const* table;
        unsigned int count;
        u32 (UnitInfoWindow::*getter)() const;
        void (UnitInfoWindow::*setter)(u32);
    } const filters[] = {
        {"Category", categories, UnitSystem::kCategoryNum + 1, &UnitInfoWindow::getCategoryFilter,
         &UnitInfoWindow::setCategoryFilter},
        {"Priority", groups, UnitSystem::kPriorityGroupNum + 1, &UnitInfoWindow::getPriorityFilter,
         &UnitInfoWindow::setPriorityFilter},
    };
    int y = 0;
    for (auto const& filter : filters) {
        PropertyBase* property = new IndirectProperty<u32>(filter.name, this, filter.getter, filter.setter);
        UIEnumControl* control = new UIEnumControl(property, filter.table, filter.count, false, UIControl::NoIndex);
        control->setPosition(sPoint(0, y));
        control->setSize(sSize(kFilterWidth, 32));
        addClient(control);
        y += 36;
    }
    mpList = new UIUnitList();
    mpList->setPosition(sPoint(kFilterWidth + 8, 0));
    mpList->setSize(sSize(384, 256));
    mpList->setFunction(this, &UnitInfoWindow::notifySelectList, &UnitInfoWindow::notifyDecideList);
    addClient(mpList);
    units->addDestroyListener(&UnitInfoWindow::notifyUnitDestroy, this);
}

UnitInfoWindow::~UnitInfoWindow()
{
    mpList->setObjectList(nullptr);
    if (UnitSystem* units = UnitSystem::getInstance()) {
        units->removeDestroyListener(&UnitInfoWindow::notifyUnitDestroy, this);
    }
}

void UnitInfoWindow::notifyUnitDestroy(UnitBase*, void* user)
{
    UnitInfoWindow* window = static_cast<UnitInfoWindow*>(user);
    window->mpList->setObjectList(nullptr);
    window->mUnitList.clear();
}

void UnitInfoWindow::update(float deltaTime)
{
    UIWindow::update(deltaTime);
    // The rows are remade only when the shown units change; otherwise only
    // the selection flags are taken from the units again.
    List<UnitBase> const& units = UnitSystem::getInstance()->getUnitList();
    bool same = mpList->getRowCount() == mUnitList.size();
    ObjectList::Iterator shown = mUnitList.begin();
    unsigned int count = 0;
    for (UnitBase* unit : units) {
        if (mCategoryFilter != 0 && mCategoryFilter - 1 != unit->getCategory()) {
            continue;
        }
        if (mPriorityFilter != 0 && mPriorityFilter - 1 != unit->getPriorityGroup()) {
            continue;
        }
        same = same && shown != mUnitList.end() && *shown == unit;
        if (shown != mUnitList.end()) {
            ++shown;
        }
        ++count;
    }
    if (same && count == mUnitList.size()) {
        unsigned int row = 0;
        for (ObjectBase* object : mUnitList) {
            mpList->setSelectFlag(row++, static_cast<UnitBase const*>(object)->isSelected());
        }
        return;
    }
    mUnitList.clear();
    mUnitList.reserve(units.size());
    for (UnitBase* unit : units) {
        if (mCategoryFilter != 0 && mCategoryFilter - 1 != unit->getCategory()) {
            continue;
        }
        if (mPriorityFilter != 0 && mPriorityFilter - 1 != unit->getPriorityGroup()) {
            continue;
        }
        mUnitList.addLast(unit);
    }
    mpList->setUnitList(&mUnitList);
}

void UnitInfoWindow::notifySelectList(unsigned int)
{
    unsigned int row = 0;
    for (ObjectBase* object : mUnitList) {
        static_cast<UnitBase*>(object)->setSelect(mpList->isSelected(row++));
    }
}

void UnitInfoWindow::notifyDecideList(unsigned int row)
{
    if (row < mUnitList.size()) {
        UISystem::getInstance()->addWindow(new UnitViewerWindow(static_cast<UnitBase*>(mUnitList[row])));
    }
}

void UnitInfoWindow::eventNew()
{
    UISystem::getInstance()->addWindow(
        new UIObjectDialog("Unit", this, &UnitInfoWindow::notifySelect, UnitBase::getStaticTypeInfo(), this));
}

void UnitInfoWindow::notifySelect(UIDialog* dialog)
{
    if (dialog->getReturnValue() != UIDialog::eReturnValue_Ok) {
        return;
    }
    TypeInfo const* type = static_cast<UIObjectDialog const*>(dialog)->getSelectedTypeInfo();
    if (type == nullptr || !type->isDerivedFrom(UnitBase::getStaticTypeInfo())) {
        return;
    }
    if (ObjectBase* unit = type->newInstance()) {
        UnitSystem::getInstance()->addUnit(static_cast<UnitBase*>(unit));
    }
}

void UnitInfoWindow::eventDelete()
{
    for (UnitBase* unit : UnitSystem::getInstance()->getUnitList()) {
        if (unit->isSelected() && unit->isEnable()) {
            unit->kill();
        }
    }
}

void UnitInfoWindow::makePropertyList(PropertyList& list)
{
    list.add(new ReferenceProperty<u32>("Category", &mCategoryFilter));
    list.add(new ReferenceProperty<u32>("Priority", &mPriorityFilter));
}
