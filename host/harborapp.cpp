#include "host/harborapp.h"

#include <cstdio>

#include "app/systemmanager.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "host/settingsfile.h"
#include "input/hidsystem.h"
#include "input/keyboardsystem.h"
#include "input/mousesystem.h"
#include "jobs/jobsystem.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "resource/resourcebase.h"
#include "resource/resourcesystem.h"
#include "tool/toolsystem.h"
#include "ui/uisystem.h"
#include "unit/unitbase.h"
#include "unit/unitsystem.h"

IMPLEMENT_TYPEINFO(HarborApp, "System", TypeInfo::eAttribute_Singleton);

namespace {

char const* const kSettingsFile = "harbor.xml";

// Whether the file at exit may replace the one read at start; one host per
// program, and the class keeps no data of its own.
SettingsFile sSettings;

} // namespace

HarborApp::HarborApp(sInitializer const* initializer) : Application(initializer)
{
    DEV_TRACE("HarborApp start.\n");
}

HarborApp::~HarborApp()
{
    writeSettings();
    DEV_TRACE("HarborApp end.\n");
}

void HarborApp::setup()
{
    SystemManager* manager = SystemManager::getInstance();
    if (manager == nullptr) {
        return; // no window could be made: nothing to run
    }

    // The named heaps, all carved from "Global", in the order the overlay lists them.
    MemoryManager* memory = MemoryManager::getInstance();
    AutoString::setAllocator(memory->createAllocator(0x200000, "String"));
    setTempAllocator(memory->createAllocator(0x1000000, "Temp"));
    PropertyBase::setAllocator(memory->createBlockAllocator(48, 0x10000, "Property"));
    System::setAllocator(memory->createAllocator(0x1000000, "System"));
    ResourceBase::setAllocator(memory->createAllocator(0x2000000, "Resource"));
    UnitBase::setAllocator(memory->createAllocator(0x1000000, "Unit"));

    // The Systems, each at its fixed place in the manager.
    manager->addSystem(JobSystem::create(0x10000, getProcessorNum()));
    manager->addSystem(ResourceSystem::create());
    manager->addSystem(RenderSystem::create());
    manager->addSystem(UnitSystem::create());
    // Its constructor adds MouseSystem and KeyboardSystem first, so it stands behind them.
    manager->addSystem(HIDSystem::create());
    manager->addSystem(ViewSystem::create());
    manager->addSystem(UISystem::create());
    manager->addSystem(ToolSystem::create());
    manager->setup();
    wireSystems();
    manager->order();
    readSettings();
}

// The orders between Systems of different layers, which neither side can name
// without reaching above its own layer.
void HarborApp::wireSystems()
{
    ToolSystem* tools = ToolSystem::getInstance();
    // The game views draw what the units updated in this frame.
    ViewSystem::getInstance()->addUpdateDependency(UnitSystem::getInstance());
    // The renderer closes the frame after the tools' drawing, and outlives the tools' textures.
    RenderSystem::getInstance()->addPostprocessDependency(tools);
    RenderSystem::getInstance()->addDestroyDependency(tools);
    // The tool windows' widgets read the input state until they are gone.
    MouseSystem::getInstance()->addDestroyDependency(tools);
    KeyboardSystem::getInstance()->addDestroyDependency(tools);
}

void HarborApp::update(float delta)
{
    SystemManager* manager = SystemManager::getInstance();
    manager->preprocess();

    // The overlay at the top right: frame, rates, and one line per heap.
    if (ToolSystem* tools = ToolSystem::getInstance()) {
        char text[256];
        int const x = static_cast<int>(getWindowWidth()) - 192;
        snprintf(text, sizeof(text), "Frame %d", getCurrentFrame());
        tools->drawString(sPoint(x, 16), text, 6, sColor::White);
        snprintf(text, sizeof(text), "FPS %4.2f(Avg. %4.2f)", static_cast<double>(getFrameRate() / delta),
                 static_cast<double>(getAverageFrameRate()));
        tools->drawString(sPoint(x, 28), text, 6, sColor::White);
        MemoryManager* memory = MemoryManager::getInstance();
        for (u32 i = 0; i < memory->getAllocatorNum(); ++i) {
            AllocatorBase* allocator = memory->getAllocator(i);
            u32 const used = allocator->getUsedSize();
            u32 const heap = allocator->getHeapSize();
            snprintf(text, sizeof(text), "%s : %08x/%08x %d%%", allocator->getName(), used, heap,
                     static_cast<int>(used * 100u / heap));
            tools->drawString(sPoint(x, static_cast<int>(52 + 12 * i)), text, 6, sColor::White);
        }
    }

    manager->update();
    // The widgets paint between the phases, after every System has updated.
    if (UISystem* ui = UISystem::getInstance()) {
        ui->draw();
    }
    manager->postprocess();
    if (RenderSystem* renderSystem = RenderSystem::getInstance()) {
        renderSystem->executeCommand();
    }
}

void HarborApp::makePropertyList(PropertyList& list)
{
    SystemManager::getInstance()->makePropertyList(list);
}

// A missing file only traces: the Systems keep their defaults.
void HarborApp::readSettings()
{
    char path[2048];
    snprintf(path, sizeof(path), "%s%s", getIntermediatePath(), kSettingsFile);
    sSettings.read(this, getTypeInfo()->getName(), path);
}

// Written beside the old file and renamed over it: a kill or crash during
// the write leaves the previous settings whole.
void HarborApp::writeSettings()
{
    if (SystemManager::getInstance() == nullptr || AutoString::getAllocator() == nullptr) {
        return; // set up never ran
    }
    char path[2048];
    snprintf(path, sizeof(path), "%s%s", getIntermediatePath(), kSettingsFile);
    sSettings.write(this, getTypeInfo()->getName(), path);
}
