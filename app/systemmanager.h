// SystemManager: holds every System in order of addition and computes, once,
// the four orders (preprocess, update, postprocess, destroy) from the
// dependencies the Systems declared. A frame only walks the ready lists.
// Main thread only.
#pragma once

#include "app/system.h"
#include "foundation/vector.h"

class SystemManager : public ObjectBase {
public:
    static SystemManager* create();
    static SystemManager* getInstance() { return mpInstance; }
    // Destroys every System in the destroy order, then the manager.
    virtual void destroy();

    void addSystem(System* system) { mSystems.addLast(system); }
    System* getSystem(u32 index) { return mSystems[index]; }
    u32 getSystemNum() const { return mSystems.size(); }

    List<System>& getPreprocessOrder() { return mPreprocessOrder; }
    List<System>& getUpdateOrder() { return mUpdateOrder; }
    List<System>& getPostprocessOrder() { return mPostprocessOrder; }
    List<System>& getDestroyOrder() { return mDestroyOrder; }

    void setup();
    // Runs once after all Systems exist; a cycle of dependencies never ends.
    void order();
    void preprocess();
    void update();
    void postprocess();

    // One object property per System, named by the System's type name.
    void makePropertyList(PropertyList& list) override;

    DECLARE_TYPEINFO(TypeInfo)

protected:
    SystemManager();
    ~SystemManager() override;

private:
    typedef bool (System::*EnableTest)() const;
    typedef List<System>& (System::*DependencyList)();

    void resolvePreprocessDependency();
    void resolveUpdateDependency();
    void resolvePostprocessDependency();
    void resolveDestroyDependency();
    void resolve(List<System>& output, EnableTest enabled, DependencyList dependencies);

    Vector<System> mSystems;
    List<System> mPreprocessOrder;
    List<System> mUpdateOrder;
    List<System> mPostprocessOrder;
    List<System> mDestroyOrder;

    static SystemManager* mpInstance;
};
