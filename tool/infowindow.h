// Information windows on the running program: SystemInfoWindow shows the four
// computed orders of the Systems, ResourceInfoWindow every loaded resource
// (with "New" and "Open"), UnitInfoWindow every unit (with filters, the
// selection kept in the units, "New" and "Delete"). The resource and unit
// lists are rebuilt from live data at every update; nothing is kept across
// frames but the selection. Main thread only.
#pragma once

#include "foundation/autostring.h"
#include "foundation/vector.h"
#include "reflection/objectlist.h"
#include "ui/uilist.h"
#include "ui/uiwindow.h"

class ResourceBase;
class System;
class UIDialog;
class UIEnumControl;
class UIParameterControl;
class UnitBase;

class SystemInfoWindow : public UIWindow {
public:
    // A row: one System under the name of its list's column.
    class SystemOrder : public ObjectBase {
    public:
        // "System is NULL." for a null System.
        SystemOrder(char const* column, System* system);
        void makePropertyList(PropertyList& list) override;

    private:
        char const* mpColumn;
        AutoString mTypeName;
    };

    SystemInfoWindow();
    ~SystemInfoWindow() override;

    DECLARE_TYPEINFO(UniqueTypeInfo<SystemInfoWindow>)

    // 0 preprocess, 1 update, 2 postprocess, 3 destroy.
    UIList* getOrderList(unsigned int index) const { return mpLists[index]; }

private:
    UIList* mpLists[4];
    ObjectList mOrders[4];
};

class ResourceInfoWindow : public UIWindow {
public:
    // A row: one resource, with a reference held.
    class ResourceInfo : public ObjectBase {
    public:
        ResourceInfo() : mpResource(nullptr) {}
        ~ResourceInfo() override { setResource(nullptr); }
        // Takes a reference to the new one and gives back the old one's.
        void setResource(ResourceBase* resource);
        ResourceBase* getResource() const { return mpResource; }
        AutoString getTypeName() const;
        void setTypeName(AutoString) {}
        u32 getRefCtr() const;
        void setRefCtr(u32) {}
        AutoString getPath() const;
        void setPath(AutoString) {}
        void makePropertyList(PropertyList& list) override;

    private:
        ResourceBase* mpResource;
    };

    // "TypeName", "RefCtr" and "Path"; the type name is the record's own
    // property, so the list's cells need nothing of their own.
    class ResourceList : public UIList {
    public:
        ResourceList();
    };

    ResourceInfoWindow();
    // Gives back every reference it holds.
    ~ResourceInfoWindow() override;

    DECLARE_TYPEINFO(UniqueTypeInfo<ResourceInfoWindow>)

    void update(float deltaTime) override;
    // The list from ResourceSystem's map, in id order, the selection kept
    // on its resource.
    void updateResourceList();
    u32 getResourceNum() const { return mResourceNum; }
    void setResourceNum(u32) {}
    ResourceBase* getSelectResource() const { return mpSelectResource; }
    ResourceList* getList() const { return mpList; }

    void eventNew();
    void eventOpen();
    void notifySelectList(unsigned int row);
    void notifyDecideList(unsigned int row);
    void notifyOpen(UIDialog* dialog);
    void notifySelect(UIDialog* dialog);
    bool enumCallback(TypeInfo const* type);

    void makePropertyList(PropertyList& list) override;

private:
    void selectResource(ResourceBase* resource);
    void clearRecords();

    ResourceList* mpList;
    UIParameterControl* mpNumControl;
    ObjectList mResourceInfoList;
    Vector<ResourceInfo> mRecords;
    u32 mResourceNum;
    ResourceBase* mpSelectResource;
};

class UnitInfoWindow : public UIWindow {
public:
    class UIUnitList : public UIList {
    public:
        UIUnitList();
        // Rows over the list, their flags taken from the units' selection.
        void setUnitList(ObjectList* list);
    };

    static constexpr unsigned int kFilterWidth = 96;

    UnitInfoWindow();
    ~UnitInfoWindow() override;

    DECLARE_TYPEINFO(UniqueTypeInfo<UnitInfoWindow>)

    // The shown list: the units that pass both filters.
    void update(float deltaTime) override;
    UIUnitList* getList() const { return mpList; }
    ObjectList const& getShownUnits() const { return mUnitList; }
    // 0 is "All"; n is category or group n - 1.
    u32 getCategoryFilter() const { return mCategoryFilter; }
    void setCategoryFilter(u32 filter) { mCategoryFilter = filter; }
    u32 getPriorityFilter() const { return mPriorityFilter; }
    void setPriorityFilter(u32 filter) { mPriorityFilter = filter; }

    void eventNew();
    // Kills every selected unit, also those the filters hide.
    void eventDelete();
    void notifySelectList(unsigned int row);
    void notifyDecideList(unsigned int row);
    void notifySelect(UIDialog* dialog);

    void makePropertyList(PropertyList& list) override;

private:
    // A unit deleted outright, not through a kill, empties the list at once.
    static void notifyUnitDestroy(UnitBase* unit, void* user);

    UIUnitList* mpList;
    u32 mCategoryFilter;
    u32 mPriorityFilter;
    ObjectList mUnitList; // not owned
};
