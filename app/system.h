// System: an engine service with up to three per-frame phases and a setup
// call, each a singleton. Dependencies declared here decide, once, the order
// in which SystemManager runs each phase and destroys the Systems.
// Flags and dependencies are set on the main thread before ordering.
#pragma once

#include "foundation/allocator.h"
#include "foundation/list.h"
#include "foundation/multithread.h"
#include "reflection/objectbase.h"

class System : public ObjectBase {
public:
    System();
    ~System() override;

    // Deletes the System and clears its class's instance pointer.
    virtual void destroy() = 0;
    virtual void preprocess() {}
    virtual void update() {}
    virtual void postprocess() {}
    virtual void setup() {}

    void setProcessEnable(bool preprocess, bool update, bool postprocess);
    bool isPreprocessEnable() const { return mPreprocessEnable; }
    bool isUpdateEnable() const { return mUpdateEnable; }
    bool isPostprocessEnable() const { return mPostprocessEnable; }

    // "In this phase, this System runs after the given one." No check for
    // duplicates or null: a null entry counts as met.
    void addPreprocessDependency(System* system) { mPreprocessDependency.addLast(system); }
    void addUpdateDependency(System* system) { mUpdateDependency.addLast(system); }
    void addPostprocessDependency(System* system) { mPostprocessDependency.addLast(system); }
    void addDestroyDependency(System* system) { mDestroyDependency.addLast(system); }
    List<System>& getPreprocessDependency() { return mPreprocessDependency; }
    List<System>& getUpdateDependency() { return mUpdateDependency; }
    List<System>& getPostprocessDependency() { return mPostprocessDependency; }
    List<System>& getDestroyDependency() { return mDestroyDependency; }
    void clearDependency();

    // Re-entrant; for Systems whose data worker threads reach.
    void lock() { mCriticalSection.enter(); }
    void unlock() { mCriticalSection.leave(); }

    // The Systems' budget: draw contexts, render objects, job threads.
    static void setAllocator(AllocatorBase* allocator) { mHeap.set(allocator); }
    static AllocatorBase* getAllocator() { return mHeap.get(); }
    static void* allocate(u32 size) { return mHeap.allocate(size); }
    static void deallocate(void* pointer) { mHeap.deallocate(pointer); }

    DECLARE_TYPEINFO(TypeInfo)

private:
    bool mPreprocessEnable;
    bool mUpdateEnable;
    bool mPostprocessEnable;
    List<System> mPreprocessDependency;
    List<System> mUpdateDependency;
    List<System> mPostprocessDependency;
    List<System> mDestroyDependency;
    CriticalSection mCriticalSection;

    static ClassHeap mHeap;
};
