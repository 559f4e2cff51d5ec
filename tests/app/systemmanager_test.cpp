// Ordering of Systems: the four orders computed from declared dependencies,
// with the tie-break that passes over the System behind a removed one.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/systemmanager.h"

namespace {

std::vector<std::string>* sLog = nullptr;

class NamedSystem : public System {
public:
    NamedSystem(char const* name, bool pre, bool upd, bool post) : mName(name) { setProcessEnable(pre, upd, post); }
    void destroy() override
    {
        if (sLog != nullptr) {
            sLog->push_back(std::string("destroy ") + mName);
        }
        delete this;
    }
    void preprocess() override { sLog->push_back(std::string("pre ") + mName); }
    void update() override { sLog->push_back(std::string("upd ") + mName); }
    void postprocess() override { sLog->push_back(std::string("post ") + mName); }
    void setup() override { sLog->push_back(std::string("setup ") + mName); }
    std::string mName;
};

std::string names(List<System>& order)
{
    std::string result;
    for (List<System>::Iterator it = order.begin(); it != order.end(); ++it) {
        if (!result.empty()) {
            result += ' ';
        }
        result += static_cast<NamedSystem*>(*it)->mName;
    }
    return result;
}

class SystemManagerTest : public testing::Test {
protected:
    void SetUp() override
    {
        sLog = &mLog;
        mpManager = SystemManager::create();
    }
    void TearDown() override
    {
        if (SystemManager::getInstance() != nullptr) {
            SystemManager::getInstance()->destroy();
        }
        sLog = nullptr;
    }
    NamedSystem* add(char const* name, bool pre = true, bool upd = true, bool post = true)
    {
        NamedSystem* system = new NamedSystem(name, pre, upd, post);
        mpManager->addSystem(system);
        return system;
    }
    std::vector<std::string> mLog;
    SystemManager* mpManager = nullptr;
};

} // namespace

TEST_F(SystemManagerTest, WithoutDependenciesEachOrderIsAdditionLessDisabled)
{
    add("A");
    add("B", false, true, true);
    add("C", true, false, true);
    add("D", true, true, false);
    mpManager->order();
    EXPECT_EQ(names(mpManager->getPreprocessOrder()), "A C D");
    EXPECT_EQ(names(mpManager->getUpdateOrder()), "A B D");
    EXPECT_EQ(names(mpManager->getPostprocessOrder()), "A B C");
    EXPECT_EQ(names(mpManager->getDestroyOrder()), "A B C D");
}

TEST_F(SystemManagerTest, SystemsReadyTogetherFollowThePassedOverRule)
{
    NamedSystem* base = add("Base");
    NamedSystem* p = add("P");
    NamedSystem* q = add("Q");
    NamedSystem* r = add("R");
    for (NamedSystem* s : {p, q, r}) {
        s->addUpdateDependency(base);
    }
    mpManager->order();
    EXPECT_EQ(names(mpManager->getUpdateOrder()), "Base P R Q");
}

TEST_F(SystemManagerTest, DependencyFreeSystemsComeFirstWhateverTheDependenciesSay)
{
    NamedSystem* a = add("A");
    NamedSystem* b = add("B");
    add("C");
    a->addUpdateDependency(b);
    mpManager->order();
    EXPECT_EQ(names(mpManager->getUpdateOrder()), "B C A");
}

TEST_F(SystemManagerTest, DisabledAndNullDependenciesCountAsMet)
{
    NamedSystem* a = add("A");
    NamedSystem* off = add("Off", true, false, true);
    add("B");
    a->addUpdateDependency(off);
    NamedSystem* c = add("C");
    c->addUpdateDependency(nullptr);
    mpManager->order();
    // Both still go through the pending list, behind every free System.
    EXPECT_EQ(names(mpManager->getUpdateOrder()), "B A C");
}

TEST_F(SystemManagerTest, SystemWithAllPhasesOffStandsOnlyInTheDestroyOrder)
{
    add("Idle", false, false, false);
    add("Busy");
    mpManager->order();
    EXPECT_EQ(names(mpManager->getPreprocessOrder()), "Busy");
    EXPECT_EQ(names(mpManager->getUpdateOrder()), "Busy");
    EXPECT_EQ(names(mpManager->getPostprocessOrder()), "Busy");
    EXPECT_EQ(names(mpManager->getDestroyOrder()), "Idle Busy");
}

TEST_F(SystemManagerTest, ChainsResolveAcrossSeveralWalks)
{
    NamedSystem* a = add("A");
    NamedSystem* b = add("B");
    NamedSystem* c = add("C");
    NamedSystem* d = add("D");
    a->addPreprocessDependency(b);
    b->addPreprocessDependency(c);
    c->addPreprocessDependency(d);
    mpManager->order();
    EXPECT_EQ(names(mpManager->getPreprocessOrder()), "D C B A");
}

TEST_F(SystemManagerTest, PhasesWalkTheirOrdersAndDestroyFollowsTheDestroyOrder)
{
    NamedSystem* a = add("A", true, false, true);
    NamedSystem* b = add("B", false, true, true);
    a->addPostprocessDependency(b);
    a->addDestroyDependency(b);
    mpManager->setup();
    mpManager->order();
    mpManager->preprocess();
    mpManager->update();
    mpManager->postprocess();
    mpManager->destroy();
    EXPECT_EQ(SystemManager::getInstance(), nullptr);
    std::vector<std::string> const expected = {"setup A", "setup B", "pre A",     "upd B",
                                               "post B",  "post A",  "destroy B", "destroy A"};
    EXPECT_EQ(mLog, expected);
}

TEST_F(SystemManagerTest, CreateReturnsTheOneInstance)
{
    EXPECT_EQ(SystemManager::create(), mpManager);
    EXPECT_EQ(SystemManager::getInstance(), mpManager);
}

// The host's ten Systems, with their flags and dependencies, give the host's
// four orders.
TEST_F(SystemManagerTest, HostSystemsGiveTheHostOrders)
{
    NamedSystem* job = add("JobSystem", false, false, false);
    NamedSystem* resource = add("ResourceSystem", false, true, false);
    resource->addDestroyDependency(nullptr);  // RenderSystem does not exist yet
    NamedSystem* render = add("RenderSystem", true, true, true);
    NamedSystem* unit = add("UnitSystem", true, true, true);
    NamedSystem* mouse = add("MouseSystem", false, true, false);
    NamedSystem* keyboard = add("KeyboardSystem", false, true, false);
    NamedSystem* hid = add("HIDSystem", false, false, false);
    NamedSystem* view = add("ViewSystem", true, true, true);
    NamedSystem* ui = add("UISystem", true, true, true);
    NamedSystem* tool = add("ToolSystem", true, false, true);
    (void)job;

    render->addPostprocessDependency(tool);
    render->addDestroyDependency(tool);
    unit->addUpdateDependency(hid);
    mouse->addDestroyDependency(tool);
    keyboard->addDestroyDependency(tool);
    hid->addDestroyDependency(mouse);
    hid->addDestroyDependency(keyboard);
    view->addUpdateDependency(unit);
    ui->addUpdateDependency(mouse);
    ui->addUpdateDependency(keyboard);
    tool->addPreprocessDependency(render);

    mpManager->order();
    EXPECT_EQ(names(mpManager->getPreprocessOrder()), "RenderSystem UnitSystem ViewSystem UISystem ToolSystem");
    EXPECT_EQ(names(mpManager->getUpdateOrder()),
              "ResourceSystem RenderSystem MouseSystem KeyboardSystem UnitSystem UISystem ViewSystem");
    EXPECT_EQ(names(mpManager->getPostprocessOrder()), "UnitSystem ViewSystem UISystem ToolSystem RenderSystem");
    EXPECT_EQ(names(mpManager->getDestroyOrder()),
              "JobSystem UnitSystem ViewSystem UISystem ToolSystem ResourceSystem MouseSystem RenderSystem "
              "KeyboardSystem HIDSystem");
}

