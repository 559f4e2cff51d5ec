#include "host/harborapp.h"

#include <cstdio>

#include "app/systemmanager.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "input/hidsystem.h"
#include "jobs/jobsystem.h"
#include "reflection/objectlist.h"
#include "serial/stream.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"

IMPLEMENT_TYPEINFO(HarborApp, "System", TypeInfo::eAttribute_Singleton);

namespace {

char const* const kSettingsFile = "harbor.xml";

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
    // Resources and units take theirs once they exist.
    memory->createAllocator(0x2000000, "Resource");
    memory->createAllocator(0x1000000, "Unit");

    manager->addSystem(JobSystem::create(0x10000, getProcessorNum()));
    // Its constructor adds MouseSystem and KeyboardSystem first, so it stands behind them.
    manager->addSystem(HIDSystem::create());

    manager->setup();
    manager->order();
    readSettings();
}

void HarborApp::update(float delta)
{
    (void)delta;
    SystemManager* manager = SystemManager::getInstance();
    manager->preprocess();
    manager->update();
    manager->postprocess();
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
    TextFileStream stream(path, Stream::eMode_Read);
    XmlReader reader;
    reader.parse(&stream);
    reader.read(this, getTypeInfo()->getName());
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
    ReplacingTextFileStream stream(path);
    XmlWriter writer(getTypeInfo()->getName());
    ObjectBase::serialize(&writer, true, 0);
    writer.write(&stream);
    if (!stream.commit()) {
        DEV_TRACE("Settings not saved: %s\n", path);
    }
}
