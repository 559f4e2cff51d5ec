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

NamedSystem* add(char const* name, bool pre = true, bool upd = true, bool post = true)
{
    NamedSystem* system = new NamedSystem(name, pre, upd, post);
    SystemManager::getInstance()->addSystem(system);
    return system;
}

// The four orders as "preprocess | update | postprocess | destroy".
std::string orders()
{
    SystemManager* manager = SystemManager::getInstance();
    manager->order();
    return names(manager->getPreprocessOrder()) + " | " + names(manager->getUpdateOrder()) + " | " +
           names(manager->getPostprocessOrder()) + " | " + names(manager->getDestroyOrder());
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
    std::vector<std::string> mLog;
    SystemManager* mpManager = nullptr;
};

} // namespace

// Systems without dependencies keep the order of addition; of the pending
// ones, those ready together follow the rule that passes over the System
// behind a removed one.
TEST_F(SystemManagerTest, OrdersFollowDependenciesWithThePassedOverRule)
{
    struct {
        char const* mpName;
        void (*mBuild)();
        char const* mpOrders;
    } const cases[] = {
        {"disabled phases", [] { add("A"), add("B", false), add("C", true, false), add("D", true, true, false); },
         "A C D | A B D | A B C | A B C D"},
        {"ready together",
         [] {
             NamedSystem* base = add("Base");
             for (char const* name : {"P", "Q", "R"}) {
                 add(name)->addUpdateDependency(base);
             }
         },
         "Base P Q R | Base P R Q | Base P Q R | Base P Q R"},
        {"free ones first",
         [] {
             NamedSystem* a = add("A");
             a->addUpdateDependency(add("B"));
             add("C");
         },
         "A B C | B C A | A B C | A B C"},
        // Both still go through the pending list, behind every free System.
        {"disabled and null dependencies are met",
         [] {
             NamedSystem* a = add("A");
             a->addUpdateDependency(add("Off", true, false, true));
             add("B");
             add("C")->addUpdateDependency(nullptr);
         },
         "A Off B C | B A C | A Off B C | A Off B C"},
        {"all phases off", [] { add("Idle", false, false, false), add("Busy"); }, "Busy | Busy | Busy | Idle Busy"},
        {"a chain takes several walks",
         [] {
             NamedSystem* systems[4] = {add("A"), add("B"), add("C"), add("D")};
             for (int i = 0; i < 3; ++i) {
                 systems[i]->addPreprocessDependency(systems[i + 1]);
             }
         },
         "D C B A | A B C D | A B C D | A B C D"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.mpName);
        SystemManager::getInstance()->destroy();
        mpManager = SystemManager::create();
        c.mBuild();
        EXPECT_EQ(orders(), c.mpOrders);
    }
}

TEST_F(SystemManagerTest, PhasesWalkTheirOrdersAndDestroyFollowsTheDestroyOrder)
{
    NamedSystem* a = add("A", true, false, true);
    NamedSystem* b = add("B", false, true, true);
    a->addPostprocessDependency(b);
    a->addDestroyDependency(b);
    EXPECT_EQ(SystemManager::create(), mpManager) << "one instance";
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

// The host's ten Systems, with their flags and dependencies, give the host's
// four orders.
TEST_F(SystemManagerTest, HostSystemsGiveTheHostOrders)
{
    add("JobSystem", false, false, false);
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

    EXPECT_EQ(orders(), "RenderSystem UnitSystem ViewSystem UISystem ToolSystem | "
                        "ResourceSystem RenderSystem MouseSystem KeyboardSystem UnitSystem UISystem ViewSystem | "
                        "UnitSystem ViewSystem UISystem ToolSystem RenderSystem | "
                        "JobSystem UnitSystem ViewSystem UISystem ToolSystem ResourceSystem MouseSystem RenderSystem "
                        "KeyboardSystem HIDSystem");
}
