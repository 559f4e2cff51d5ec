// Units through the public interface: a unit's defaults and reflection, the
// frame timing of add and kill, group levels, passes and callbacks, drawing by
// bits and views on many threads, the job queue's limit, and the pixels that
// units' quads leave in GAME0 (with a display only; the window test
// unit_pixels.sh runs them under Xvfb).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <mutex>
#include <thread>
#include <tuple>
#include <vector>

#include "foundation/utils.h"
#include "jobs/jobsystem.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "render/drawcontext.h"
#include "render/viewsystem.h"
#include "unit/unitbase.h"
#include "unit/unitsystem.h"

// The renderer tests' environment: one application, with a hidden window
// when there is a display, whose end runs the heaps' leak checks (a unit left
// undeleted is fatal).
#include "../render/renderfixture.cpp"

namespace {

int const kWidth = rendertest::kWindowWidth;
int const kHeight = rendertest::kWindowHeight;

} // namespace

// Counts updates, draws and deletions; can kill itself, log its passes, and
// check that its source has had as many updates as itself (after busy work,
// so that updates overlap). Draws check their view's state.
class UnitProbe : public UnitBase {
public:
    ~UnitProbe() override { ++sDeleted; }
    void update(float) override
    {
        for (volatile int i = 0; i < sWork; i = i + 1) {
        }
        if (++mUpdates == mKillAt) {
            kill();
        }
        sStale += (mpSource != nullptr && mpSource->mUpdates != mUpdates) ? 1 : 0;
        if (sLogging) {
            sLog.emplace_back(UnitSystem::getInstance()->getCurrentPass(), this);
        }
    }
    void draw(DrawContext* context) const override
    {
        // With sMeet on, the first two draws wait (5 s at most) for each
        // other, so that two threads surely take part.
        if (sMeet >= 0 && ++sMeet <= 2) {
            for (int i = 0; i < 5000 && sMeet < 2; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
        EXPECT_EQ(context->getProjectionRect(), ViewSystem::getInstance()->getProjection(context->getView()));
        std::lock_guard<std::mutex> hold(sLock);
        ++mDraws;
        sDraws.emplace_back(context->getView(), std::this_thread::get_id(), context);
    }

    int mUpdates = 0;
    mutable int mDraws = 0; // under sLock
    int mKillAt = 0;
    UnitProbe const* mpSource = nullptr;
    static inline int sDeleted = 0;
    static inline int sWork = 0;
    static inline std::atomic<int> sStale{0};
    static inline std::atomic<int> sMeet{-1};
    static inline bool sLogging = false; // single-threaded runs only
    static inline std::vector<std::pair<int, UnitProbe const*>> sLog; // a null unit stands for a callback
    static inline std::mutex sLock;
    static inline std::vector<std::tuple<unsigned int, std::thread::id, DrawContext*>> sDraws;

    DECLARE_TYPEINFO(UniqueTypeInfo<UnitProbe>)
};
IMPLEMENT_OBJECT_TYPEINFO(UnitProbe, "UnitBase");

namespace {

class UnitSystemTest : public testing::Test {
public:
    unsigned int onPassEnd()
    {
        UnitProbe::sLog.emplace_back(mpUnits->getCurrentPass(), nullptr);
        return 0;
    }

protected:
    void SetUp() override
    {
        mpJobs = JobSystem::create(0x10000, 4); // four threads on any machine
        mpRender = RenderSystem::create();
        mpViews = ViewSystem::create();
        mpUnits = UnitSystem::create();
        mpUnits->setup(); // draws into the game views
        UnitProbe::sDeleted = UnitProbe::sWork = UnitProbe::sStale = 0;
        UnitProbe::sMeet = -1;
        UnitProbe::sLogging = false;
        UnitProbe::sLog.clear();
        UnitProbe::sDraws.clear();
    }
    void TearDown() override
    {
        mpUnits->destroy();
        mpViews->destroy();
        mpRender->destroy();
        mpJobs->destroy();
    }
    // A frame in the host's order; midFrame runs between preprocess and update.
    template <typename F = void (*)()>
    void runFrame(F midFrame = [] {})
    {
        mpRender->preprocess();
        mpUnits->preprocess();
        midFrame();
        mpUnits->update();
        mpViews->update();
        mpUnits->postprocess();
        mpRender->postprocess();
        mpRender->executeCommand();
    }
    template <typename T = UnitProbe>
    T* add(T* unit = new T(), u32 group = 0xFFFFFFFFu)
    {
        unit->setPriorityGroup(group);
        mpUnits->addUnit(unit);
        return unit;
    }
    // As a game names its groups: setPriorityGroupName is always fatal.
    u32 nameGroup(u32 index, char const* name)
    {
        mpUnits->getPriorityGroup(index)->mName = name;
        return mpUnits->getPriorityGroup(index)->mHash = Utils::hash(name);
    }
    template <typename T>
    static std::vector<T*> entries(Vector<T> const& vector)
    {
        std::vector<T*> result;
        for (T* entry : vector) {
            result.push_back(entry);
        }
        return result;
    }

    JobSystem* mpJobs = nullptr;
    RenderSystem* mpRender = nullptr;
    ViewSystem* mpViews = nullptr;
    UnitSystem* mpUnits = nullptr;
};
using UnitSystemDeathTest = UnitSystemTest;

class SecondUnitSystem : public UnitSystem {};

} // namespace

TEST(UnitBaseTest, StatusBitsPropertiesAndControlsOnItsHeap)
{
    u32 const heapUsed = UnitBase::getAllocator()->getUsedSize();
    UnitProbe* unit = new UnitProbe();
    EXPECT_GT(UnitBase::getAllocator()->getUsedSize(), heapUsed);
    unit->setDraw(false);
    EXPECT_EQ(unit->getStatus(), 1u);
    unit->setUpdate(false);
    unit->setSelect(true);
    EXPECT_EQ(unit->getStatus(), 0u);
    EXPECT_EQ(unit->getSystemStatus(), 0x10000u);
    PropertyList properties;
    unit->makePropertyList(properties);
    ASSERT_EQ(properties.size(), 5u);
    char buffer[64];
    EXPECT_STREQ(properties[0]->getString(buffer, 0), "UnitProbe");
    properties[4]->setNumeric(8, 0);
    EXPECT_EQ(unit->getView(), 8u);
    List<ControlBase> controls;
    unit->makeControlList(controls);
    ASSERT_EQ(controls.size(), 5u);
    // The view choices are bits: view N is 1 << (N + 1).
    sEnumInfo const* views = static_cast<PropertyControl*>(controls[4])->getEnumInfo();
    EXPECT_STREQ(views[3].mpName, "View3");
    EXPECT_EQ(views[3].mValue, 16u);
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
    UnitProbe* a = add();
    UnitProbe* b = nullptr;
    a->mKillAt = 2;
    runFrame([&] { b = add(); }); // after preprocess: joins the next frame
    EXPECT_EQ(a->mUpdates, 1);
    EXPECT_EQ(b->mUpdates, 0);
    EXPECT_EQ(b->getSystemStatus(), 1u);
    runFrame(); // a kills itself, and still draws in this frame
    EXPECT_EQ(a->mUpdates, 2);
    EXPECT_EQ(a->mDraws, 2);
    runFrame([&] { EXPECT_EQ(UnitProbe::sDeleted, 0); });
    EXPECT_EQ(UnitProbe::sDeleted, 1);
    EXPECT_EQ(b->mUpdates, 2);
    // Of two neighbours killed together the second is passed over: it runs
    // one frame more and goes one frame later.
    UnitProbe* c = add();
    UnitProbe* d = add();
    runFrame([&] { c->kill(), d->kill(); });
    runFrame();
    EXPECT_EQ(d->mUpdates, 2);
    EXPECT_EQ(UnitProbe::sDeleted, 2);
    runFrame();
    EXPECT_EQ(UnitProbe::sDeleted, 3);
}

TEST_F(UnitSystemTest, GroupsFormLevelsWithThePassedOverRule)
{
    UnitProbe* plain = add();
    UnitProbe* stray = add(new UnitProbe(), Utils::hash("Nowhere"));
    UnitProbe* inA = add(new UnitProbe(), nameGroup(1, "A"));
    nameGroup(2, "B");
    nameGroup(3, "D");
    UnitProbe* inE = add(new UnitProbe(), nameGroup(4, "E"));
    for (char const* pair : {"B\0A", "D\0A", "E\0B", "E\0N"}) { // no group N
        mpUnits->addPriorityGroupDependency(pair, pair + 2);
    }
    runFrame();
    // Pending B, D, E: B is placed, D passed over, and E lands beside B.
    std::vector<UnitSystem::sPriorityGroup*> expected;
    for (int i : {0, 1, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, -1, 2, 4, -1, 3, -1}) {
        expected.push_back(i < 0 ? nullptr : mpUnits->getPriorityGroup(static_cast<u32>(i)));
    }
    EXPECT_EQ(entries(mpUnits->getPriorityGroupOrder()), expected);
    EXPECT_EQ(entries(mpUnits->getOrderList()), (std::vector<UnitBase*>{plain, inA, nullptr, inE, nullptr, nullptr}));
    EXPECT_EQ(stray->mUpdates, 0);
    EXPECT_EQ(stray->mDraws, 0);
    // Removal moves the head of the array: of B, A, D less A stays A, A.
    mpUnits->addPriorityGroupDependency("E", "A");
    mpUnits->addPriorityGroupDependency("E", "D");
    mpUnits->removePriorityGroupDependency("E", "A");
    UnitSystem::sPriorityGroup* const a = mpUnits->getPriorityGroup(1);
    EXPECT_EQ(entries(mpUnits->getPriorityGroup(4)->mDependency), (std::vector<UnitSystem::sPriorityGroup*>{a, a}));
}

TEST_F(UnitSystemTest, DependentGroupsAlwaysSeeThisFramesUpdateOfTheirDependency)
{
    u32 const groups[3] = {nameGroup(1, "First"), nameGroup(2, "Second"), nameGroup(3, "Third")};
    mpUnits->addPriorityGroupDependency("Second", "First");
    mpUnits->addPriorityGroupDependency("Third", "Second");
    // The first units of a level read the last ones of the level before,
    // which a missing barrier would let run at the same time.
    std::vector<UnitProbe*> levels[3];
    for (int level = 0; level < 3; ++level) {
        for (int i = 0; i < 100; ++i) {
            levels[level].push_back(add(new UnitProbe(), groups[level]));
            levels[level].back()->mpSource = level == 0 ? nullptr : levels[level - 1][99 - i];
        }
    }
    UnitProbe::sWork = 2000;
    for (int frame = 0; frame < 100; ++frame) {
        runFrame();
    }
    EXPECT_EQ(UnitProbe::sStale, 0);
    EXPECT_EQ(levels[0][0]->mUpdates, 100);
    EXPECT_EQ(levels[2][0]->mUpdates, 100);
}

TEST_F(UnitSystemTest, PassesRunByMaskSeriallyOrInParallelThenTheirCallbacks)
{
    for (u32 i = 0; i < UnitSystem::kPassNum; ++i) {
        EXPECT_EQ(mpUnits->getPass(i).isEnable() && mpUnits->getPass(i).isParallel(), i == 0);
        EXPECT_EQ(mpUnits->getPass(i).getName()[4], static_cast<char>('0' + i));
    }
    EXPECT_EQ(TypeInfo::find("Pass"), nullptr) << "no record: class dialogs must not offer a pass";
    // A single thread still runs a parallel pass through the job queue, in order.
    mpJobs->setJobThreadNum(1);
    mpUnits->getPass(1).setEnable(true);
    mpUnits->getPass(2).setEnable(true);
    mpUnits->getPass(2).setParallel(true);
    mpUnits->setPassCallback(1, new Functor<UnitSystemTest, void, unsigned int>(this, &UnitSystemTest::onPassEnd));
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

// Also the job queue's limit: one level of a parallel pass, and one view,
// take 1,024 units, and the rest are dropped.
TEST_F(UnitSystemTest, DrawingFollowsBitsAndViewMaskOnManyThreadsUpToTheJobLimit)
{
    mpViews->setEnable(2, true);
    UnitProbe* probes[5] = {add(), add(), add(), add(), add()};
    probes[0]->setDraw(false);
    probes[1]->setUpdate(false);
    probes[2]->setView(4);
    probes[3]->setView(6);
    probes[4]->setView(1); // view 0, which the view system does not draw
    std::vector<UnitProbe*> crowd;
    for (int i = 0; i < 1100; ++i) {
        crowd.push_back(add());
    }
    UnitProbe::sMeet = 0;
    runFrame();
    int const updates[5] = {1, 0, 1, 1, 1};
    int const draws[5] = {0, 0, 1, 2, 0};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(probes[i]->mUpdates, updates[i]) << "probe " << i;
        EXPECT_EQ(probes[i]->mDraws, draws[i]) << "probe " << i;
    }
    // Within a view, every thread draws into a context of its own.
    ASSERT_EQ(UnitProbe::sDraws.size(), 1024u + 2u);
    for (auto const& a : UnitProbe::sDraws) {
        for (auto const& b : UnitProbe::sDraws) {
            ASSERT_TRUE(std::get<0>(a) != std::get<0>(b) ||
                        (std::get<1>(a) == std::get<1>(b)) == (std::get<2>(a) == std::get<2>(b)));
        }
    }
    mpUnits->getPass(0).setParallel(false);
    runFrame();
    int updateSum = 0;
    int drawSum = 0;
    for (UnitProbe* unit : crowd) {
        updateSum += unit->mUpdates;
        drawSum += unit->mDraws;
    }
    EXPECT_EQ(updateSum, 1020 + 1100);
    EXPECT_EQ(drawSum, 2 * 1023);
    EXPECT_EQ(crowd.back()->mDraws, 0);
}

namespace {

// A 12 by 12 quad around its world position, in one colour.
class QuadUnit : public UnitBase {
public:
    QuadUnit(int x, int y, sColor color) : mX(x), mY(y), mColor(color) {}
    void draw(DrawContext* context) const override
    {
        context->setDrawLevel(1, 0);
        context->setVertexDecl(eVertexDecl_Plain);
        DrawContext::sVertex* vertex = static_cast<DrawContext::sVertex*>(context->allocateVertices(ePrimitiveType_Quad, 4));
        for (int i = 0; i < 4; ++i) {
            vertex[i].mPosition = sVector(sFixed(mX + (i % 2 ? 6 : -6), 16), sFixed(mY + (i < 2 ? -6 : 6), 16));
            vertex[i].mColor = mColor;
        }
    }
    int mX;
    int mY;
    sColor mColor;
};

} // namespace

TEST_F(UnitSystemTest, QuadsAppearAtTheirWorldPositionsWithAnyNumberOfThreads)
{
    REQUIRE_GL();
    // 15 by 11 quads over GAME0's world rectangle (-160, -120)-(160, 120).
    std::vector<QuadUnit*> units;
    for (int i = 0; i < 15 * 11; ++i) {
        units.push_back(add(new QuadUnit(-140 + 20 * (i % 15), -100 + 20 * (i / 15),
                                         sColor(static_cast<u8>(40 + 12 * (i % 15)), static_cast<u8>(40 + i), 200, 255))));
    }
    std::vector<sColor> pictures[3];
    u32 const threads[3] = {1, 4, JobSystem::kJobThreadMax};
    for (int i = 0; i < 3; ++i) {
        mpJobs->setJobThreadNum(threads[i]);
        runFrame();
        pictures[i] = rendertest::readWindow();
    }
    // World (x, y) is at window pixel (x + 160, y + 120); GL's rows run upwards.
    auto pixel = [&](int x, int y) { return pictures[0][static_cast<size_t>((kHeight - 121 - y) * kWidth + x + 160)]; };
    for (QuadUnit const* unit : units) {
        for (int corner = 0; corner < 4; ++corner) {
            sColor const color = pixel(unit->mX + (corner % 2 ? 5 : -6), unit->mY + (corner < 2 ? -6 : 5));
            ASSERT_EQ(memcmp(&color, &unit->mColor, 3), 0) << "unit at (" << unit->mX << ", " << unit->mY << ")";
        }
    }
    EXPECT_NE(pixel(-130, -90).b, 200); // a gap keeps the clear colour
    size_t const bytes = pictures[0].size() * sizeof(sColor);
    EXPECT_EQ(memcmp(pictures[0].data(), pictures[1].data(), bytes), 0) << "4 threads give another picture";
    EXPECT_EQ(memcmp(pictures[0].data(), pictures[2].data(), bytes), 0) << "16 threads give another picture";
}
