// UnitSystem: owns every game object (UnitBase) and steps it. Units sit in
// priority groups whose dependencies give a sequence of levels; up to eight
// update passes walk that sequence, serially or spread over the job threads
// with a barrier between levels, and drawing runs in parallel with one draw
// context per job thread. addUnit, removeUnit and the phases are for the main
// thread; during a parallel pass, units of one level run at the same time and
// must not touch each other.
#pragma once

#include "app/system.h"
#include "reflection/objectlist.h"
#include "foundation/functor.h"
#include "foundation/list.h"
#include "foundation/types.h"
#include "foundation/vector.h"
#include "reflection/objectbase.h"

class DrawContext;
class UnitBase;

class UnitSystem : public System {
public:
    static u32 const kPassNum = 8;
    static u32 const kPriorityGroupNum = 16;
    static u32 const kCategoryNum = 16;
    static u32 const kUnitListCapacity = 1024;
    static u32 const kAddUnitListCapacity = 256;
    static u32 const kRemoveUnitListCapacity = 256;
    static u32 const kOrderListCapacity = 2048;
    static u32 const kGroupUnitListCapacity = 256;
    static u32 const kNoHash = 0xFFFFFFFFu;

    // One update pass: units whose update-pass mask has bit p take part in
    // pass p. Owns its callback, run once after the pass. Publishes its
    // properties under ObjectBase's record: a part of the unit system, not a
    // class anyone creates by name.
    class Pass : public ObjectBase {
    public:
        Pass();
        ~Pass() override;

        // Whether a callback is set; the setter changes nothing and exists so
        // that "Callback" can be an indirect property.
        bool getCallbackEnable() const { return mpCallback != nullptr; }
        void setCallbackEnable(bool enable);

        void makePropertyList(PropertyList& list) override;

        char const* getName() const { return mName; }
        bool isEnable() const { return mEnable; }
        void setEnable(bool enable) { mEnable = enable; }
        bool isParallel() const { return mParallel; }
        void setParallel(bool parallel) { mParallel = parallel; }

    private:
        friend class UnitSystem;

        char const* mName; // borrowed
        bool mEnable;
        bool mParallel;
        FunctorIntermediate<void, unsigned int>* mpCallback;
    };

    // A group is found by the hash of its name alone. Its unit list is
    // rebuilt each frame from the live units.
    struct sPriorityGroup {
        sPriorityGroup();

        char const* mName; // borrowed; "Unused" at start
        u32 mHash;         // 0xFFFFFFFF at start
        Vector<sPriorityGroup> mDependency; // groups that must come before
        Vector<UnitBase> mUnitList;
    };

    // For display only.
    struct sCategory {
        char const* mName; // borrowed; "Unused" at start
        u32 mHash;         // 0xFFFFFFFF at start
    };

    static UnitSystem* create();
    static UnitSystem* getInstance() { return mpInstance; }
    void destroy() override;

    // Joins at the next preprocess. Fatal when the unit is already live,
    // queued or on the remove list.
    void addUnit(UnitBase* unit);
    // Flags the unit: it runs to the end of this frame and is deleted at the
    // end of the next. UnitBase::kill comes here; safe from an update job.
    void removeUnit(UnitBase* unit);

    // Always fatal, as it stands: it stores the hash before it looks for a
    // group with that hash, and so always finds one. Nothing calls it; name a
    // group through getPriorityGroup instead.
    void setPriorityGroupName(u32 index, char const* name);
    // The group with that index, whose name and hash a game sets up before
    // its units run. Null past the last group.
    sPriorityGroup* getPriorityGroup(u32 index);
    // The first of the groups with that hash, or null.
    sPriorityGroup* findPriorityGroup(u32 hash);
    // Both groups are looked up by the hash of their names; when either is
    // missing nothing happens.
    void addPriorityGroupDependency(char const* group, char const* dependsOn);
    // Through Vector::remove and its deliberate rule, which shifts the head
    // of the array: with three or more dependencies others go with it.
    void removePriorityGroupDependency(char const* group, char const* dependsOn);
    void setCategoryName(u32 index, char const* name);
    char const* getCategoryName(u32 index) const { return mCategory[index].mName; }
    void setPassName(u32 index, char const* name);
    // Takes ownership, deleting any former callback.
    void setPassCallback(u32 index, FunctorIntermediate<void, unsigned int>* callback);
    Pass& getPass(u32 index) { return mPass[index]; }

    // Called by ViewSystem::View::draw with the view's context: the units of
    // that view draw on the job threads, each into its own context.
    void draw(DrawContext* context);

    // Moves queued units in and builds this frame's order.
    void preprocess() override;
    // Runs the enabled passes.
    void update() override;
    // Deletes last frame's killed units and takes in this frame's.
    void postprocess() override;
    void setup() override;

    // Job entry points.
    void updateUnitJob(void* unit);
    void drawUnitJob(void* unit, void* context);

    // Empty: the passes are shown by the widget list, not saved.
    void makePropertyList(PropertyList& list) override;
    // A table over the eight passes: "Name" 96, "Enable" 64, "Parallel" 64,
    // "Callback" 80, 306 by 146 pixels.
    void makeUIList(List<UIBase>& list) override;

    // Told of every unit's destruction, on the thread that deletes it (the
    // main thread in postprocess), so that whoever shows a unit can let go of
    // it. At most kDestroyListenerNum at once: one more is fatal.
    typedef void (*DestroyListener)(UnitBase* unit, void* user);
    static u32 const kDestroyListenerNum = 256;
    void addDestroyListener(DestroyListener listener, void* user);
    // Nothing when the pair is not listed.
    void removeDestroyListener(DestroyListener listener, void* user);
    // UnitBase's destructor calls it.
    void notifyUnitDestroy(UnitBase* unit);

    // The pass being updated, -1 outside update().
    int getCurrentPass() const { return mCurrentPass; }
    f32 getDeltaTime() const { return mDeltaTime; }
    List<UnitBase> const& getUnitList() const { return mUnitList; }
    // This frame's units in execution order; a null entry ends a level.
    Vector<UnitBase> const& getOrderList() const { return mOrderList; }
    // Groups in order; a null entry ends a level.
    Vector<sPriorityGroup> const& getPriorityGroupOrder() const { return mPriorityGroupOrder; }

    DECLARE_TYPEINFO(TypeInfo)

protected:
    UnitSystem();
    ~UnitSystem() override;

private:
    void updatePriorityGroupOrder();
    void buildOrderList();
    void updateParallel(u32 mask);
    void updateSerial(u32 mask);

    Pass mPass[kPassNum];
    ObjectList mPassList; // the passes, for the table; not owned
    int mCurrentPass;
    f32 mDeltaTime;
    bool mPriorityGroupOrderDirty;
    List<UnitBase> mUnitList;
    Vector<UnitBase> mAddUnitList;
    Vector<UnitBase> mRemoveUnitList;
    Vector<UnitBase> mOrderList;
    sPriorityGroup mPriorityGroup[kPriorityGroupNum];
    Vector<sPriorityGroup> mPriorityGroupOrder;
    sCategory mCategory[kCategoryNum];
    struct sDestroyListener {
        DestroyListener mFunction;
        void* mpUser;
    };
    sDestroyListener mDestroyListener[kDestroyListenerNum];
    u32 mDestroyListenerNum;

    static UnitSystem* mpInstance;
};
