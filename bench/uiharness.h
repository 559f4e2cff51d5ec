// The engine side of the widget benchmarks: a headless application of 1024
// by 768 with the Systems the toolkit stands on, wired as the host wires
// them. Built once per program; deleting the application ends it all.
#pragma once

#include "app/systemmanager.h"
#include "benchapp.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "input/hidsystem.h"
#include "jobs/jobsystem.h"
#include "platform/platform.h"
#include "reflection/property.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "tool/toolsystem.h"
#include "ui/uisystem.h"
#include "unit/unitbase.h"
#include "unit/unitsystem.h"

// withUnits adds the unit system and its heap. Heaps are sized for the
// largest benchmark.
inline BenchApplication* startUIApplication(char const* name, bool withUnits)
{
    platform::setHeadless(true);
    Application::sInitializer const initializer = {name, 1024, 768, 60, 20, 240};
    BenchApplication* application = new BenchApplication(&initializer);
    MemoryManager* memory = MemoryManager::getInstance();
    AutoString::setAllocator(memory->createAllocator(0x800000, "String"));
    application->setTempAllocator(memory->createAllocator(0x1000000, "Temp"));
    PropertyBase::setAllocator(memory->createBlockAllocator(64, 0x10000, "Property"));
    System::setAllocator(memory->createAllocator(0x1000000, "System"));
    SystemManager* manager = SystemManager::getInstance();
    manager->addSystem(JobSystem::create(0x10000, application->getProcessorNum()));
    manager->addSystem(RenderSystem::create());
    if (withUnits) {
        UnitBase::setAllocator(memory->createAllocator(0x1000000, "Unit"));
        manager->addSystem(UnitSystem::create());
    }
    manager->addSystem(HIDSystem::create());
    manager->addSystem(ViewSystem::create());
    manager->addSystem(UISystem::create());
    manager->addSystem(ToolSystem::create());
    manager->setup();
    // The renderer closes the frame after the tools and outlives their font
    // texture.
    RenderSystem::getInstance()->addPostprocessDependency(ToolSystem::getInstance());
    RenderSystem::getInstance()->addDestroyDependency(ToolSystem::getInstance());
    manager->order();
    return application;
}
