// Units through the public interface: a unit's defaults and reflection, the
// frame timing of add and kill, group levels and the order list, passes and
// callbacks, drawing by bits and views on many threads, the job queue's limit.
#include <atomic>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "foundation/functor.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "render/drawcontext.h"
#include "unit/unitbase.h"
#include "unitfixture.h"

using namespace unittest;

// Counts its updates and draws; optionally kills itself, logs its passes, or
// checks that its source has been updated as often as itself this frame.
class UnitProbe : public UnitBase {
public:
    struct sDraw {
        std::thread::id mThread;
        DrawContext* mpContext;
        unsigned int mView;
        sRect mProjection;
    };

    ~UnitProbe() override
    {
        if (mpGone != nullptr) {
            *mpGone = true;
        }
    }
    // Busy work, so that jobs overlap on the threads.
    static void work()
    {
        for (volatile int i = 0; i < sWork; i = i + 1) {
        }
    }
    void update(float) override
    {
        work();
        ++mUpdates;
        if (mUpdates == mKillAt) {
            kill();
        }
        if (mpSource != nullptr && mpSource->mUpdates != mUpdates) {
            ++sStale;
        }
        if (sLogging) {
            std::lock_guard<std::mutex> hold(sLock);
            sLog.emplace_back(UnitSystem::getInstance()->getCurrentPass(), this);
        }
    }
    void draw(DrawContext* context) const override
    {
        work();
        std::lock_guard<std::mutex> hold(sLock);
        ++mDraws;
        sDraws.push_back({std::this_thread::get_id(), context, context->getView(), context->getProjectionRect()});
    }

    int mUpdates = 0;
    mutable int mDraws = 0; // under sLock
    int mKillAt = 0;
    bool* mpGone = nullptr;
    UnitProbe const* mpSource = nullptr;

    static std::atomic<int> sStale;
    static int sWork;
    static bool sLogging;
    static std::mutex sLock;
    static std::vector<std::pair<int, UnitProbe const*>> sLog; // (pass, unit); a null unit is a callback
    static std::vector<sDraw> sDraws;

    DECLARE_TYPEINFO(UniqueTypeInfo<UnitProbe>)
};
IMPLEMENT_OBJECT_TYPEINFO(UnitProbe, "UnitBase");
std::atomic<int> UnitProbe::sStale{0};
int UnitProbe::sWork = 0;
bool UnitProbe::sLogging = false;
std::mutex UnitProbe::sLock;
std::vector<std::pair<int, UnitProbe const*>> UnitProbe::sLog;
std::vector<UnitProbe::sDraw> UnitProbe::sDraws;

namespace {

template <typename T>
std::vector<T*> entries(Vector<T> const& vector)
{
    std::vector<T*> result;
    for (u32 i = 0; i < vector.size(); ++i) {
        result.push_back(vector[i]);
    }
    return result;
}

class UnitSystemTest : public UnitTest {
public:
    unsigned int onPassEnd()
    {
        UnitProbe::sLog.emplace_back(mpUnits->getCurrentPass(), nullptr);
        return 0;
    }

protected:
    void SetUp() override
    {
        UnitTest::SetUp();
        UnitProbe::sStale = 0;
        UnitProbe::sWork = 0;
        UnitProbe::sLogging = false;
        UnitProbe::sLog.clear();
        UnitProbe::sDraws.clear();
    }
    UnitProbe* add(u32 group = UnitBase::kNoGroup)
    {
        UnitProbe* unit = new UnitProbe();
        unit->setPriorityGroup(group);
        mpUnits->addUnit(unit);
        return unit;
    }
    // As a game names its groups.
    u32 nameGroup(u32 index, char const* name)
    {
        UnitSystem::sPriorityGroup* group = mpUnits->getPriorityGroup(index);
        group->mName = name;
        group->mHash = Utils::hash(name);
        return group->mHash;
    }
};
using UnitSystemDeathTest = UnitSystemTest;

class SecondUnitSystem : public UnitSystem {};

} // namespace

TEST(UnitBaseTest, DefaultsBitsPropertiesAndControls)
{
    u32 const heapUsed = UnitBase::getAllocator()->getUsedSize();
    UnitProbe* unit = new UnitProbe();
    EXPECT_GT(UnitBase::getAllocator()->getUsedSize(), heapUsed);
    EXPECT_EQ(unit->getSystemStatus(), 0u);
    EXPECT_EQ(unit->getStatus(), 3u);
    EXPECT_EQ(unit->getCategory(), 0xFFFFFFFFu);
    EXPECT_EQ(unit->getPriorityGroup(), 0xFFFFFFFFu);
    EXPECT_EQ(unit->getUpdatePass(), 1u);
    EXPECT_EQ(unit->getView(), 2u);
    unit->setDraw(false);
    EXPECT_EQ(unit->getStatus(), 1u);
    unit->setUpdate(false);
    EXPECT_EQ(unit->getStatus(), 0u);
    unit->setSelect(true);
    EXPECT_EQ(unit->getSystemStatus(), 0x10000u);
    unit->setTypeName("Other");
    EXPECT_STREQ(unit->getTypeName(), "UnitProbe");

    PropertyList properties;
    unit->makePropertyList(properties);
    char const* const names[] = {"TypeName", "Status", "Category", "PriorityGroup", "View"};
    ASSERT_EQ(properties.size(), 5u);
    for (u32 i = 0; i < 5; ++i) {
        EXPECT_STREQ(properties[i]->getName(), names[i]);
    }
    char buffer[64];
    EXPECT_STREQ(properties[0]->getString(buffer, 0), "UnitProbe");
    properties[4]->setNumeric(8, 0);
    EXPECT_EQ(unit->getView(), 8u);

    List<ControlBase> controls;
    unit->makeControlList(controls);
    ASSERT_EQ(controls.size(), 5u);
    PropertyControl* view = static_cast<PropertyControl*>(controls[4]);
    EXPECT_STREQ(view->getName(), "View");
    ASSERT_EQ(view->getArrayNum(), 4u);
    for (u32 i = 0; i < 4; ++i) {
        EXPECT_EQ(view->getEnumInfo()[i].mValue, 2u << i);
        EXPECT_EQ(view->getEnumInfo()[i].mpName[4], static_cast<char>('0' + i));
    }
    for (List<ControlBase>::Iterator it = controls.begin(); it != controls.end(); ++it) {
        delete *it;
    }
    delete unit;
    EXPECT_EQ(UnitBase::getAllocator()->getUsedSize(), heapUsed);
}

TEST_F(UnitSystemDeathTest, FatalTexts)
{
    UnitProbe* unit = add();
    EXPECT_DEATH(mpUnits->addUnit(unit), "Unit already exists in mAddUnitList.");
    mpUnits->preprocess();
    EXPECT_DEATH(mpUnits->addUnit(unit), "Unit already exists in mUnitList.");
    unit->kill();
    mpUnits->postprocess();
    EXPECT_DEATH(unit->kill(), "Unit already exists in mRemoveUnitList.");
    EXPECT_DEATH(mpUnits->addUnit(unit), "Unit already exists in mRemoveUnitList.");
    EXPECT_DEATH(mpUnits->setPriorityGroupName(3, "Fresh"), "PriorityGroup already exist or hash conflict.");
    EXPECT_DEATH(new SecondUnitSystem(), "JobSystem already instanced.");
    EXPECT_DEATH(UnitBase::setAllocator(nullptr), "Allocator already set.");
}

TEST_F(UnitSystemTest, AddAndKillKeepTheirFrameTiming)
{
    bool goneA = false;
    bool goneC = false;
    bool goneD = false;
    UnitProbe* a = add();
    UnitProbe* b = nullptr;
    a->mpGone = &goneA;
    a->mKillAt = 2;
    runFrame([&] { b = add(); }); // after preprocess: joins next frame
    EXPECT_EQ(a->mUpdates, 1);
    EXPECT_EQ(b->mUpdates, 0);
    EXPECT_EQ(b->getSystemStatus(), 1u);
    runFrame(); // a kills itself and still draws this frame
    EXPECT_EQ(a->mUpdates, 2);
    EXPECT_EQ(a->mDraws, 2);
    EXPECT_EQ(b->getSystemStatus(), 0u);
    runFrame([&] { EXPECT_FALSE(goneA); });
    EXPECT_TRUE(goneA);
    EXPECT_EQ(a->mUpdates, 2);
    EXPECT_EQ(b->mUpdates, 2);

    // Of two neighbours killed together, the second is passed over and
    // moves to the remove list a frame later.
    UnitProbe* c = add();
    UnitProbe* d = add();
    c->mpGone = &goneC;
    d->mpGone = &goneD;
    runFrame([&] { c->kill(); d->kill(); });
    EXPECT_EQ(c->mUpdates, 1);
    runFrame();
    EXPECT_TRUE(goneC);
    EXPECT_FALSE(goneD);
    EXPECT_EQ(d->mUpdates, 2);
    runFrame();
    EXPECT_TRUE(goneD);
}

TEST_F(UnitSystemTest, GroupsFormLevelsWithThePassedOverRule)
{
    UnitProbe* defaultUnit = add();
    UnitProbe* strayUnit = add(Utils::hash("Nowhere"));
    UnitProbe* aUnit = add(nameGroup(1, "A"));
    nameGroup(2, "B");
    nameGroup(3, "D");
    UnitProbe* eUnit = add(nameGroup(4, "E"));
    mpUnits->addPriorityGroupDependency("B", "A");
    mpUnits->addPriorityGroupDependency("D", "A");
    mpUnits->addPriorityGroupDependency("E", "B");
    mpUnits->addPriorityGroupDependency("E", "Nowhere");
    runFrame();

    // Pending B, D, E: B is placed, D passed over, and E lands beside B.
    std::vector<UnitSystem::sPriorityGroup*> expected;
    for (u32 i : {0u, 1u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 13u, 14u, 15u}) {
        expected.push_back(mpUnits->getPriorityGroup(i));
    }
    for (UnitSystem::sPriorityGroup* entry : {(UnitSystem::sPriorityGroup*)nullptr, mpUnits->getPriorityGroup(2),
                                              mpUnits->getPriorityGroup(4), (UnitSystem::sPriorityGroup*)nullptr,
                                              mpUnits->getPriorityGroup(3), (UnitSystem::sPriorityGroup*)nullptr}) {
        expected.push_back(entry);
    }
    EXPECT_EQ(entries(mpUnits->getPriorityGroupOrder()), expected);
    EXPECT_EQ(entries(mpUnits->getOrderList()), (std::vector<UnitBase*>{defaultUnit, aUnit, nullptr, eUnit, nullptr, nullptr}));
    EXPECT_EQ(strayUnit->mUpdates + strayUnit->mDraws, 0);

    // Removal takes its entry from the head of the array: of B, A, D less A
    // stays A, A.
    mpUnits->addPriorityGroupDependency("E", "A");
    mpUnits->addPriorityGroupDependency("E", "D");
    mpUnits->removePriorityGroupDependency("E", "A");
    Vector<UnitSystem::sPriorityGroup> const& left = mpUnits->getPriorityGroup(4)->mDependency;
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left[0], mpUnits->getPriorityGroup(1));
    EXPECT_EQ(left[1], mpUnits->getPriorityGroup(1));
}

TEST_F(UnitSystemTest, DependentGroupsAlwaysSeeThisFramesUpdateOfTheirDependency)
{
    u32 const first = nameGroup(1, "First");
    u32 const second = nameGroup(2, "Second");
    u32 const third = nameGroup(3, "Third");
    mpUnits->addPriorityGroupDependency("Second", "First");
    mpUnits->addPriorityGroupDependency("Third", "Second");
    // The first units of a level read the last ones of the level before,
    // which a missing barrier would let run at the same time.
    std::vector<UnitProbe*> firsts;
    std::vector<UnitProbe*> seconds;
    for (int i = 0; i < 100; ++i) {
        firsts.push_back(add(first));
        seconds.push_back(add(second));
    }
    for (int i = 0; i < 100; ++i) {
        seconds[i]->mpSource = firsts[99 - i];
        add(third)->mpSource = seconds[99 - i];
    }
    UnitProbe::sWork = 2000;
    for (int frame = 0; frame < 100; ++frame) {
        runFrame();
    }
    EXPECT_EQ(UnitProbe::sStale, 0);
    EXPECT_EQ(firsts[0]->mUpdates + seconds[0]->mUpdates, 200);
}

TEST_F(UnitSystemTest, PassesRunByMaskSeriallyOrInParallelThenTheirCallbacks)
{
    EXPECT_TRUE(mpUnits->getPass(0).isEnable() && mpUnits->getPass(0).isParallel());
    for (u32 i = 1; i < UnitSystem::kPassNum; ++i) {
        EXPECT_FALSE(mpUnits->getPass(i).isEnable() || mpUnits->getPass(i).isParallel());
        EXPECT_EQ(mpUnits->getPass(i).getName()[4], static_cast<char>('0' + i));
    }
    // A single thread still runs a parallel pass through the job queue, in order.
    mpJobs->setJobThreadNum(1);
    mpUnits->getPass(1).setEnable(true);
    mpUnits->getPass(2).setEnable(true);
    mpUnits->getPass(2).setParallel(true);
    mpUnits->setPassCallback(1, new Functor<UnitSystemTest, void, unsigned int>(this, &UnitSystemTest::onPassEnd));
    EXPECT_TRUE(mpUnits->getPass(1).getCallbackEnable());
    UnitProbe* x = add();
    UnitProbe* y = add();
    UnitProbe* z = add();
    x->setUpdatePass(0x3);
    y->setUpdatePass(0x7);
    z->setUpdatePass(0); // never updated, still drawn
    UnitProbe::sLogging = true;
    runFrame();
    std::vector<std::pair<int, UnitProbe const*>> const expected = {{0, x}, {0, y}, {1, x}, {1, y}, {1, nullptr}, {2, y}};
    EXPECT_EQ(UnitProbe::sLog, expected);
    EXPECT_EQ(mpUnits->getCurrentPass(), -1);
    EXPECT_EQ(z->mUpdates, 0);
    EXPECT_EQ(z->mDraws, 1);
}

TEST_F(UnitSystemTest, DrawingFollowsTheDrawBitTheUpdateBitAndTheViewMask)
{
    mpViews->setEnable(2, true);
    std::vector<UnitProbe*> crowd;
    for (int i = 0; i < 64; ++i) {
        crowd.push_back(add());
    }
    UnitProbe::sWork = 100000;
    UnitProbe* hidden = add();
    UnitProbe* idle = add();
    UnitProbe* second = add();
    UnitProbe* both = add();
    UnitProbe* viewZero = add();
    hidden->setDraw(false);
    idle->setUpdate(false);
    second->setView(4);
    both->setView(6);
    viewZero->setView(1);
    runFrame();
    for (UnitProbe* unit : crowd) {
        ASSERT_EQ(unit->mDraws, 1);
    }
    EXPECT_EQ(hidden->mUpdates * 10 + hidden->mDraws, 10);
    EXPECT_EQ(idle->mUpdates * 10 + idle->mDraws, 0);
    EXPECT_EQ(second->mDraws, 1);
    EXPECT_EQ(both->mDraws, 2);
    EXPECT_EQ(viewZero->mDraws, 0);

    // Every draw sees its view's state; within a view each thread draws into
    // a context of its own.
    ASSERT_EQ(UnitProbe::sDraws.size(), 64u + 3u);
    bool spread = false;
    for (UnitProbe::sDraw const& a : UnitProbe::sDraws) {
        spread = spread || a.mThread != UnitProbe::sDraws.front().mThread;
        EXPECT_EQ(a.mProjection, mpViews->getProjection(a.mView));
        for (UnitProbe::sDraw const& b : UnitProbe::sDraws) {
            if (a.mView == b.mView) {
                ASSERT_EQ(a.mThread == b.mThread, a.mpContext == b.mpContext);
            }
        }
    }
    EXPECT_TRUE(spread) << "all units drew on one thread";
}

TEST_F(UnitSystemTest, OneLevelOfAParallelPassAndOneViewTakeAtMost1024Units)
{
    std::vector<UnitProbe*> units;
    for (int i = 0; i < 1100; ++i) {
        units.push_back(add());
    }
    runFrame();
    mpUnits->getPass(0).setParallel(false);
    runFrame();
    int updates = 0;
    int draws = 0;
    for (UnitProbe* unit : units) {
        updates += unit->mUpdates;
        draws += unit->mDraws;
    }
    EXPECT_EQ(updates, 1024 + 1100);
    EXPECT_EQ(draws, 2 * 1024);
    EXPECT_EQ(units.back()->mDraws, 0);
}
