// MemoryManager: the singleton register of named heaps, first to exist and
// last to go. Minimal form for the frame spine (the register only); allocator
// creation and ownership come with the real heaps.
#pragma once

#include "foundation/allocator.h"
#include "foundation/vector.h"
#include "reflection/objectbase.h"

class MemoryManager : public ObjectBase {
public:
    static MemoryManager* create();
    static MemoryManager* getInstance() { return mpInstance; }
    virtual void destroy();

    u32 getAllocatorNum() const { return mAllocators.size(); }
    AllocatorBase* getAllocator(u32 index) const { return mAllocators[index]; }

    TypeInfo const* getTypeInfo() const override { return &mUniqueTypeInfo; }
    static TypeInfo mUniqueTypeInfo;

protected:
    MemoryManager();
    ~MemoryManager() override;

private:
    Vector<AllocatorBase> mAllocators;
    static MemoryManager* mpInstance;
};
