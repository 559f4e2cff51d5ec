#include "unitfixture.h"

#include <cstdlib>

#include "app/application.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "platform/glcontext.h"
#include "unit/unitbase.h"

namespace unittest {

namespace {

class TestApplication : public Application {
public:
    explicit TestApplication(sInitializer const* initializer) : Application(initializer) {}
    void setup() override {}
    void update(float) override {}
};

TestApplication* sApplication = nullptr;

class UnitEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        char const* display = getenv("DISPLAY");
        platform::setHeadless(display == nullptr || display[0] == '\0');
        Application::sInitializer initializer = {"Unit test", kWindowWidth, kWindowHeight, 60, 20, 240};
        sApplication = new TestApplication(&initializer);
        if (hasWindow()) {
            platform::hideWindow(sApplication->getWindowHandle());
        }
        MemoryManager* memory = MemoryManager::getInstance();
        AutoString::setAllocator(memory->createAllocator(0x200000, "String"));
        System::setAllocator(memory->createAllocator(0x1000000, "System"));
        UnitBase::setAllocator(memory->createAllocator(0x1000000, "Unit"));
    }
    // The heaps' leak checks run here: a unit the system failed to delete is fatal.
    void TearDown() override { delete sApplication; }
};

[[maybe_unused]] testing::Environment* const sEnvironment = testing::AddGlobalTestEnvironment(new UnitEnvironment);

} // namespace

bool hasWindow()
{
    return !platform::isHeadless() && sApplication->getWindowHandle() != nullptr;
}

void UnitTest::SetUp()
{
    // Four threads whatever the machine, so that the parallel paths run.
    mpJobs = JobSystem::create(0x10000, 4);
    mpRender = RenderSystem::create();
    mpViews = ViewSystem::create();
    mpUnits = UnitSystem::create();
}

void UnitTest::TearDown()
{
    mpUnits->destroy();
    mpViews->destroy();
    mpRender->destroy();
    mpJobs->destroy();
}

void UnitTest::runFrame(std::function<void()> const& afterPreprocess)
{
    mpRender->preprocess();
    mpUnits->preprocess();
    if (afterPreprocess) {
        afterPreprocess();
    }
    mpUnits->update();
    mpViews->update();
    mpUnits->postprocess();
    mpRender->postprocess();
    mpRender->executeCommand();
}

} // namespace unittest
