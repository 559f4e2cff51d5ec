#include "app/systemmanager.h"

#include "foundation/debug.h"
#include "reflection/objectlist.h"

SystemManager* SystemManager::mpInstance = nullptr;
IMPLEMENT_TYPEINFO(SystemManager, "ObjectBase", TypeInfo::eAttribute_Singleton);

SystemManager* SystemManager::create()
{
    if (mpInstance == nullptr) {
        // Stored only after the constructor returns: getInstance() is null inside it.
        SystemManager* instance = new SystemManager();
        mpInstance = instance;
    }
    return mpInstance;
}

void SystemManager::destroy()
{
    for (List<System>::Iterator it = mDestroyOrder.begin(); it != mDestroyOrder.end(); ++it) {
        (*it)->destroy();
    }
    mpInstance = nullptr;
    delete this;
}

SystemManager::SystemManager() : mSystems(16), mPreprocessOrder(16), mUpdateOrder(16), mPostprocessOrder(16)
{
    if (mpInstance != nullptr) {
        dev_assert("SystemManager already instanced.", __FILE__, __LINE__);
    }
    DEV_TRACE("SystemManager : start.\n");
}

SystemManager::~SystemManager()
{
    DEV_TRACE("SystemManager : end.\n");
}

void SystemManager::makePropertyList(PropertyList& list)
{
    for (u32 i = 0; i < mSystems.size(); ++i) {
        System* system = mSystems[i];
        list.add(new ObjectProperty(system->getTypeInfo()->getName(), system, 1));
    }
}

void SystemManager::setup()
{
    for (u32 i = 0; i < mSystems.size(); ++i) {
        mSystems[i]->setup();
    }
}

void SystemManager::order()
{
    resolvePreprocessDependency();
    resolveUpdateDependency();
    resolvePostprocessDependency();
    resolveDestroyDependency();
}

void SystemManager::preprocess()
{
    for (List<System>::Iterator it = mPreprocessOrder.begin(); it != mPreprocessOrder.end(); ++it) {
        (*it)->preprocess();
    }
}

void SystemManager::update()
{
    for (List<System>::Iterator it = mUpdateOrder.begin(); it != mUpdateOrder.end(); ++it) {
        (*it)->update();
    }
}

void SystemManager::postprocess()
{
    for (List<System>::Iterator it = mPostprocessOrder.begin(); it != mPostprocessOrder.end(); ++it) {
        (*it)->postprocess();
    }
}

void SystemManager::resolvePreprocessDependency()
{
    resolve(mPreprocessOrder, &System::isPreprocessEnable, &System::getPreprocessDependency);
}

void SystemManager::resolveUpdateDependency()
{
    resolve(mUpdateOrder, &System::isUpdateEnable, &System::getUpdateDependency);
}

void SystemManager::resolvePostprocessDependency()
{
    resolve(mPostprocessOrder, &System::isPostprocessEnable, &System::getPostprocessDependency);
}

void SystemManager::resolveDestroyDependency()
{
    // Every System is destroyed: no phase flag applies.
    resolve(mDestroyOrder, nullptr, &System::getDestroyDependency);
}

void SystemManager::resolve(List<System>& output, EnableTest enabled, DependencyList dependencies)
{
    output.clear();
    List<System> pending(mSystems.size());
    for (u32 i = 0; i < mSystems.size(); ++i) {
        System* system = mSystems[i];
        if (enabled != nullptr && !(system->*enabled)()) {
            continue;
        }
        if ((system->*dependencies)().empty()) {
            output.addLast(system);
        } else {
            pending.addLast(system);
        }
    }

    while (!pending.empty()) {
        for (List<System>::Iterator it = pending.begin(); it != pending.end(); ++it) {
            List<System>& waits = ((*it)->*dependencies)();
            u32 met = 0;
            for (List<System>::Iterator dep = waits.begin(); dep != waits.end(); ++dep) {
                if (pending.find(*dep) == pending.end()) {
                    ++met;
                }
            }
            if (met == waits.size()) {
                output.addLast(*it);
                // The iterator now stands on the next System, and the loop's
                // step passes over it: it is looked at in the next walk. This
                // tie-break decides the final orders and is relied upon.
                it = pending.remove(it);
                if (it == pending.end()) {
                    break;
                }
            }
        }
    }
}
