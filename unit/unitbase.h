// UnitBase: the root of game objects. It carries what UnitSystem needs to
// schedule a unit (status words, priority group, update passes, views) and
// two duties, update and draw. A unit is made by its creator, handed to
// UnitSystem::addUnit, and from then on belongs to the unit system, which
// deletes it. update may run on a job thread and draw always does; the unit
// system runs a unit at most once per pass, so one thread at a time touches it.
#pragma once

#include <cstddef>

#include "foundation/allocator.h"
#include "foundation/types.h"
#include "reflection/objectbase.h"

class DrawContext;

class UnitBase : public ObjectBase {
public:
    // mSystemStatus bits, kept by the unit system and the tools.
    enum eSystemStatus {
        eSystemStatus_Add = 0x1,      // waiting in the add list
        eSystemStatus_Kill = 0x2,     // kill requested
        eSystemStatus_Select = 0x10000 // selected in a tool
    };
    // mStatus bits, published as "Status".
    enum eStatus {
        eStatus_Update = 0x1, // updated (and, through the order list, drawable at all)
        eStatus_Draw = 0x2
    };

    // The default group hash: that of every group not yet named, so a new
    // unit lands in group 0.
    static u32 const kNoGroup = 0xFFFFFFFFu;

    UnitBase();
    ~UnitBase() override;

    // delta in nominal frames (1.0 = one frame at the nominal rate).
    virtual void update(float delta);
    // Records into context, which belongs to the calling job thread alone.
    virtual void draw(DrawContext* context) const;

    // Asks the unit system to delete this unit at the end of the next frame.
    void kill();
    void setSelect(bool select);
    bool isSelected() const { return (mSystemStatus & eSystemStatus_Select) != 0; }
    // False once a kill is pending: the unit still runs to the end of its frame.
    bool isEnable() const { return (mSystemStatus & eSystemStatus_Kill) == 0; }

    void setSystemStatus(u32 status) { mSystemStatus = status; }
    u32 getSystemStatus() const { return mSystemStatus; }
    void setStatus(u32 status) { mStatus = status; }
    u32 getStatus() const { return mStatus; }
    void setUpdate(bool update);
    void setDraw(bool draw);
    void setCategory(u32 category) { mCategory = category; }
    u32 getCategory() const { return mCategory; }
    // The hash of the group's name (Utils::hash), not an index.
    void setPriorityGroup(u32 group) { mPriorityGroup = group; }
    u32 getPriorityGroup() const { return mPriorityGroup; }
    // Bit p: updated in pass p.
    void setUpdatePass(u32 passMask) { mUpdatePass = passMask; }
    u32 getUpdatePass() const { return mUpdatePass; }
    // Bit v: drawn in view v. Game views are 1 to 4, so "View0" is bit 1.
    void setView(u32 viewMask) { mView = viewMask; }
    u32 getView() const { return mView; }

    // The name of the object's type record, which lets a saved unit name the
    // class to create.
    char const* getTypeName() const;
    // Does nothing: it exists so that "TypeName" can be an indirect property.
    void setTypeName(char const* name);

    void makePropertyList(PropertyList& list) override;
    void makeControlList(List<ControlBase>& list) override;

    // The "Unit" heap (see ClassHeap).
    static void setAllocator(AllocatorBase* allocator) { mHeap.set(allocator); }
    static AllocatorBase* getAllocator() { return mHeap.get(); }
    // Blocks of the same heap for a unit's own tables; null when exhausted.
    static void* allocate(std::size_t size) { return mHeap.allocate(size); }
    static void deallocate(void* pointer) { mHeap.deallocate(pointer); }

    static void* operator new(std::size_t size) noexcept { return mHeap.allocate(size); }
    static void operator delete(void* pointer) { mHeap.deallocate(pointer); }
    // The class-level forms hide the global placement form; keep it usable.
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) {}

    DECLARE_TYPEINFO(TypeInfo)

private:
    u32 mSystemStatus;
    u32 mStatus;
    u32 mCategory;
    u32 mPriorityGroup;
    u32 mUpdatePass;
    u32 mView;

    static ClassHeap mHeap;
};
