#include "unit/unitsystem.h"

#include "reflection/control.h"

#include "app/application.h"
#include "foundation/debug.h"
#include "foundation/utils.h"
#include "input/hidsystem.h"
#include "jobs/jobsystem.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "render/drawcontext.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "unit/unitbase.h"

IMPLEMENT_TYPEINFO(UnitSystem, "System", TypeInfo::eAttribute_Singleton);
UnitSystem* UnitSystem::mpInstance = nullptr;

namespace {

// Sixteen names, of which the passes take the first eight.
char const* const pDefaultPassName[] = {
    "Pass0", "Pass1", "Pass2",  "Pass3",  "Pass4",  "Pass5",  "Pass6",  "Pass7",
    "Pass8", "Pass9", "Pass10", "Pass11", "Pass12", "Pass13", "Pass14", "Pass15",
};
static_assert(sizeof(pDefaultPassName) / sizeof(pDefaultPassName[0]) == 16, "sixteen default pass names");

char const* const kUnused = "Unused";

} // namespace

// ---------------------------------------------------------------------------
// Pass

UnitSystem::Pass::Pass() : mName(nullptr), mEnable(false), mParallel(false), mpCallback(nullptr)
{
}

UnitSystem::Pass::~Pass()
{
    delete mpCallback;
}

void UnitSystem::Pass::setCallbackEnable(bool)
{
}

void UnitSystem::Pass::makePropertyList(PropertyList& list)
{
    ObjectBase::makePropertyList(list);
    list.add(new ReferenceProperty<char const*>("Name", &mName));
    list.add(new ReferenceProperty<bool>("Enable", &mEnable));
    list.add(new ReferenceProperty<bool>("Parallel", &mParallel));
    list.add(new IndirectProperty<bool>("Callback", this, &Pass::getCallbackEnable, &Pass::setCallbackEnable));
}

// ---------------------------------------------------------------------------
// sPriorityGroup

UnitSystem::sPriorityGroup::sPriorityGroup() : mName(kUnused), mHash(kNoHash), mUnitList(kGroupUnitListCapacity)
{
}

// ---------------------------------------------------------------------------
// UnitSystem: life

UnitSystem* UnitSystem::create()
{
    if (mpInstance == nullptr) {
        UnitSystem* instance = new UnitSystem();
        mpInstance = instance;
    }
    return mpInstance;
}

void UnitSystem::destroy()
{
    delete this;
    mpInstance = nullptr;
}

UnitSystem::UnitSystem()
    : mCurrentPass(-1), mDeltaTime(1.0f), mPriorityGroupOrderDirty(true), mUnitList(kUnitListCapacity),
      mAddUnitList(kAddUnitListCapacity), mRemoveUnitList(kRemoveUnitListCapacity), mOrderList(kOrderListCapacity),
      mDestroyListener(), mDestroyListenerNum(0)
{
    // The text names JobSystem; it stands as it is.
    DEV_ASSERT(mpInstance == nullptr, "JobSystem already instanced.");
    for (u32 i = 0; i < kPassNum; ++i) {
        mPass[i].mName = pDefaultPassName[i];
    }
    mPass[0].mEnable = true;
    mPass[0].mParallel = true;
    for (u32 i = 0; i < kCategoryNum; ++i) {
        mCategory[i].mName = kUnused;
        mCategory[i].mHash = kNoHash;
    }
    DEV_TRACE("UnitSystem : start.\n");
}

UnitSystem::~UnitSystem()
{
    if (ViewSystem* views = ViewSystem::getInstance()) {
        views->removeDrawer(this);
    }
    for (Vector<UnitBase>::Iterator it = mAddUnitList.begin(); it != mAddUnitList.end(); ++it) {
        delete *it;
    }
    mAddUnitList.clear();
    for (Vector<UnitBase>::Iterator it = mRemoveUnitList.begin(); it != mRemoveUnitList.end(); ++it) {
        mUnitList.remove(*it);
        delete *it;
    }
    mRemoveUnitList.clear();
    for (List<UnitBase>::Iterator it = mUnitList.begin(); it != mUnitList.end(); ++it) {
        delete *it;
    }
    mUnitList.clear();
    for (u32 i = 0; i < kPassNum; ++i) {
        delete mPass[i].mpCallback;
        mPass[i].mpCallback = nullptr;
    }
    DEV_TRACE("UnitSystem : end.\n");
}

// Units read this frame's input.
void UnitSystem::setup()
{
    addUpdateDependency(HIDSystem::getInstance());
    // The units come first in each game view's pass.
    if (ViewSystem* views = ViewSystem::getInstance()) {
        views->addGameViewDrawer(ViewSystem::eDrawStage_Scene,
                                 &ViewSystem::DrawerList::member<UnitSystem, &UnitSystem::draw>, this);
    }
}

// ---------------------------------------------------------------------------
// Units

void UnitSystem::addUnit(UnitBase* unit)
{
    if (mUnitList.find(unit) != mUnitList.end()) {
        dev_assert("Unit already exists in mUnitList.", __FILE__, __LINE__);
    }
    if (mAddUnitList.find(unit) != mAddUnitList.end()) {
        dev_assert("Unit already exists in mAddUnitList.", __FILE__, __LINE__);
    }
    if (mRemoveUnitList.find(unit) != mRemoveUnitList.end()) {
        dev_assert("Unit already exists in mRemoveUnitList.", __FILE__, __LINE__);
    }
    unit->setSystemStatus(unit->getSystemStatus() | UnitBase::eSystemStatus_Add);
    mAddUnitList.addLast(unit);
}

// During a parallel pass this runs on job threads: it only reads the remove
// list, which changes in postprocess alone, and writes the unit's own status.
void UnitSystem::removeUnit(UnitBase* unit)
{
    if (mRemoveUnitList.find(unit) != mRemoveUnitList.end()) {
        dev_assert("Unit already exists in mRemoveUnitList.", __FILE__, __LINE__);
    }
    unit->setSystemStatus(unit->getSystemStatus() | UnitBase::eSystemStatus_Kill);
}

// ---------------------------------------------------------------------------
// Groups, categories, passes

void UnitSystem::setPriorityGroupName(u32 index, char const* name)
{
    u32 const hash = Utils::hash(name);
    mPriorityGroup[index].mName = name;
    mPriorityGroup[index].mHash = hash;
    // Deliberate: the group just stored is found, so this always ends here.
    if (findPriorityGroup(hash) != nullptr) {
        dev_assert("PriorityGroup already exist or hash conflict.", __FILE__, __LINE__);
    }
}

UnitSystem::sPriorityGroup* UnitSystem::getPriorityGroup(u32 index)
{
    return (index < kPriorityGroupNum) ? &mPriorityGroup[index] : nullptr;
}

UnitSystem::sPriorityGroup* UnitSystem::findPriorityGroup(u32 hash)
{
    for (u32 i = 0; i < kPriorityGroupNum; ++i) {
        if (mPriorityGroup[i].mHash == hash) {
            return &mPriorityGroup[i];
        }
    }
    return nullptr;
}

void UnitSystem::addPriorityGroupDependency(char const* group, char const* dependsOn)
{
    sPriorityGroup* target = findPriorityGroup(Utils::hash(group));
    sPriorityGroup* dependency = findPriorityGroup(Utils::hash(dependsOn));
    if (target == nullptr || dependency == nullptr) {
        return;
    }
    target->mDependency.addLast(dependency);
    mPriorityGroupOrderDirty = true;
}

void UnitSystem::removePriorityGroupDependency(char const* group, char const* dependsOn)
{
    sPriorityGroup* target = findPriorityGroup(Utils::hash(group));
    sPriorityGroup* dependency = findPriorityGroup(Utils::hash(dependsOn));
    if (target == nullptr || dependency == nullptr) {
        return;
    }
    target->mDependency.remove(dependency);
    mPriorityGroupOrderDirty = true;
}

void UnitSystem::setCategoryName(u32 index, char const* name)
{
    mCategory[index].mName = name;
}

void UnitSystem::setPassName(u32 index, char const* name)
{
    mPass[index].mName = name;
}

void UnitSystem::setPassCallback(u32 index, FunctorIntermediate<void, unsigned int>* callback)
{
    delete mPass[index].mpCallback;
    mPass[index].mpCallback = callback;
}

// ---------------------------------------------------------------------------
// Phases

void UnitSystem::preprocess()
{
    for (Vector<UnitBase>::Iterator it = mAddUnitList.begin(); it != mAddUnitList.end(); ++it) {
        UnitBase* unit = *it;
        unit->setSystemStatus(unit->getSystemStatus() & ~static_cast<u32>(UnitBase::eSystemStatus_Add));
        mUnitList.addLast(unit);
    }
    mAddUnitList.clear();
    // The flag is never cleared, so the order is rebuilt every frame; the
    // cost is small and accepted.
    if (mPriorityGroupOrderDirty) {
        updatePriorityGroupOrder();
    }
    buildOrderList();
}

// Levels of groups, each ended by null. Groups without dependencies (the
// unused ones too) make the first level; then each walk over the pending
// groups places those whose dependencies are all placed. As in the Systems'
// ordering, the walk steps over the group behind one just placed, which sets
// the tie-break; it also lets a group land in the same walk as a group it
// depends on when that one was placed earlier in the walk. A cycle hangs here.
void UnitSystem::updatePriorityGroupOrder()
{
    mPriorityGroupOrder.clear();
    mPriorityGroupOrder.reserve(32);
    List<sPriorityGroup> pending(kPriorityGroupNum);
    for (u32 i = 0; i < kPriorityGroupNum; ++i) {
        sPriorityGroup* group = &mPriorityGroup[i];
        if (group->mDependency.empty()) {
            mPriorityGroupOrder.addLast(group);
        } else {
            pending.addLast(group);
        }
    }
    mPriorityGroupOrder.addLast(nullptr);
    while (!pending.empty()) {
        for (List<sPriorityGroup>::Iterator it = pending.begin(); it != pending.end(); ++it) {
            sPriorityGroup* group = *it;
            u32 met = 0;
            for (Vector<sPriorityGroup>::Iterator dependency = group->mDependency.begin();
                 dependency != group->mDependency.end(); ++dependency) {
                if (pending.find(*dependency) == pending.end()) {
                    ++met;
                }
            }
            if (met == group->mDependency.size()) {
                mPriorityGroupOrder.addLast(group);
                it = pending.remove(it); // the loop's step then passes over the next group
            }
        }
        mPriorityGroupOrder.addLast(nullptr);
    }
}

// A unit with update off, or of a group that does not exist, joins no list
// and so neither updates nor draws.
void UnitSystem::buildOrderList()
{
    mOrderList.clear();
    for (u32 i = 0; i < kPriorityGroupNum; ++i) {
        mPriorityGroup[i].mUnitList.clear();
    }
    for (List<UnitBase>::Iterator it = mUnitList.begin(); it != mUnitList.end(); ++it) {
        UnitBase* unit = *it;
        if ((unit->getStatus() & UnitBase::eStatus_Update) == 0) {
            continue;
        }
        if (sPriorityGroup* group = findPriorityGroup(unit->getPriorityGroup())) {
            group->mUnitList.addLast(unit);
        }
    }
    for (Vector<sPriorityGroup>::Iterator it = mPriorityGroupOrder.begin(); it != mPriorityGroupOrder.end(); ++it) {
        sPriorityGroup* group = *it;
        if (group == nullptr) {
            mOrderList.addLast(nullptr);
            continue;
        }
        for (Vector<UnitBase>::Iterator unit = group->mUnitList.begin(); unit != group->mUnitList.end(); ++unit) {
            mOrderList.addLast(*unit);
        }
    }
}

void UnitSystem::update()
{
    if (Application* application = Application::getInstance()) {
        mDeltaTime = application->getDeltaTime();
    }
    for (u32 pass = 0; pass < kPassNum; ++pass) {
        mCurrentPass = static_cast<int>(pass);
        u32 const mask = 1u << pass;
        Pass& current = mPass[pass];
        if (!current.mEnable) {
            continue;
        }
        if (current.mParallel) {
            updateParallel(mask);
        } else {
            updateSerial(mask);
        }
        if (current.mpCallback != nullptr) {
            (*current.mpCallback)();
        }
    }
    mCurrentPass = -1;
}

// One batch per level: the null entry is the barrier, so the units of a
// dependent group start only after those of its dependencies have ended. A
// level takes at most the job queue's 1,024 units; the rest are dropped.
void UnitSystem::updateParallel(u32 mask)
{
    JobSystem* jobs = JobSystem::getInstance();
    for (Vector<UnitBase>::Iterator it = mOrderList.begin(); it != mOrderList.end(); ++it) {
        UnitBase* unit = *it;
        if (unit == nullptr) {
            jobs->executeJob();
        } else if ((unit->getUpdatePass() & mask) != 0) {
            jobs->addJob(new Job<UnitSystem>(this, &UnitSystem::updateUnitJob, unit));
        }
    }
    jobs->executeJob();
}

void UnitSystem::updateSerial(u32 mask)
{
    for (Vector<UnitBase>::Iterator it = mOrderList.begin(); it != mOrderList.end(); ++it) {
        UnitBase* unit = *it;
        if (unit != nullptr && (unit->getUpdatePass() & mask) != 0) {
            unit->update(mDeltaTime);
        }
    }
}

void UnitSystem::updateUnitJob(void* unit)
{
    static_cast<UnitBase*>(unit)->update(mDeltaTime);
}

// Drawing has no barriers: its order is the draw level in the sort key. The
// calling thread keeps the view's context; each worker gets a context of its
// own that starts from the view's state. One view takes at most the job
// queue's 1,024 units; the rest are dropped.
void UnitSystem::draw(DrawContext* context)
{
    JobSystem* jobs = JobSystem::getInstance();
    RenderSystem* renderSystem = RenderSystem::getInstance();
    u32 const threadNum = jobs->getJobThreadNum();
    jobs->setThreadUniqueData(0, context);
    for (u32 i = 1; i < threadNum; ++i) {
        DrawContext* threadContext = renderSystem->popContext();
        threadContext->duplicate(context);
        jobs->setThreadUniqueData(i, threadContext);
    }
    u32 const viewBit = 1u << context->getView();
    for (Vector<UnitBase>::Iterator it = mOrderList.begin(); it != mOrderList.end(); ++it) {
        UnitBase* unit = *it;
        if (unit != nullptr && (unit->getStatus() & UnitBase::eStatus_Draw) != 0 && (unit->getView() & viewBit) != 0) {
            jobs->addJob(new ThreadUniqueJob<UnitSystem>(this, &UnitSystem::drawUnitJob, unit));
        }
    }
    jobs->executeJob();
    for (u32 i = 1; i < threadNum; ++i) {
        renderSystem->pushContext(static_cast<DrawContext*>(jobs->getThreadUniqueData(i)));
    }
}

void UnitSystem::drawUnitJob(void* unit, void* context)
{
    static_cast<UnitBase const*>(unit)->draw(static_cast<DrawContext*>(context));
}

// A killed unit moves to the remove list here and is deleted at the next
// postprocess, so it lives through one more frame, in no order list.
void UnitSystem::postprocess()
{
    for (Vector<UnitBase>::Iterator it = mRemoveUnitList.begin(); it != mRemoveUnitList.end(); ++it) {
        delete *it;
    }
    mRemoveUnitList.clear();
    for (List<UnitBase>::Iterator it = mUnitList.begin(); it != mUnitList.end(); ++it) {
        UnitBase* unit = *it;
        if ((unit->getSystemStatus() & UnitBase::eSystemStatus_Kill) != 0) {
            mRemoveUnitList.addLast(unit);
            // Deliberate: the loop's step then passes over the unit behind,
            // which waits for the next frame's walk.
            it = mUnitList.remove(it);
        }
    }
}

void UnitSystem::addDestroyListener(DestroyListener listener, void* user)
{
    if (mDestroyListenerNum >= kDestroyListenerNum) {
        DEV_ERROR("Too many unit destroy listeners.");
    }
    mDestroyListener[mDestroyListenerNum].mFunction = listener;
    mDestroyListener[mDestroyListenerNum].mpUser = user;
    ++mDestroyListenerNum;
}

void UnitSystem::removeDestroyListener(DestroyListener listener, void* user)
{
    for (u32 i = 0; i < mDestroyListenerNum; ++i) {
        if (mDestroyListener[i].mFunction == listener && mDestroyListener[i].mpUser == user) {
            mDestroyListener[i] = mDestroyListener[--mDestroyListenerNum];
            return;
        }
    }
}

// A listener may remove itself while it is told: the walk goes from the end.
void UnitSystem::notifyUnitDestroy(UnitBase* unit)
{
    for (u32 i = mDestroyListenerNum; i-- > 0;) {
        if (i < mDestroyListenerNum) {
            mDestroyListener[i].mFunction(unit, mDestroyListener[i].mpUser);
        }
    }
}

// ---------------------------------------------------------------------------
// Reflection

void UnitSystem::makePropertyList(PropertyList&)
{
}

void UnitSystem::makeUIList(List<UIBase>& list)
{
    static sListColumn const columns[] = {{"Name", 96}, {"Enable", 64}, {"Parallel", 64}, {"Callback", 80}};
    if (mPassList.empty()) {
        for (u32 i = 0; i < kPassNum; ++i) {
            mPassList.addLast(&mPass[i]);
        }
    }
    if (UIBase* table =
            makeObjectListUI(&mPassList, columns, sizeof(columns) / sizeof(columns[0]), sSize(306, 146), nullptr)) {
        list.addLast(table);
    }
}
