#include "app/system.h"

#include "foundation/debug.h"

IMPLEMENT_TYPEINFO(System, "ObjectBase", TypeInfo::eAttribute_Abstract);
AllocatorBase* System::mpAllocator = nullptr;

System::System() : mPreprocessEnable(true), mUpdateEnable(true), mPostprocessEnable(true)
{
}

System::~System()
{
}

void System::setProcessEnable(bool preprocess, bool update, bool postprocess)
{
    mPreprocessEnable = preprocess;
    mUpdateEnable = update;
    mPostprocessEnable = postprocess;
}

void System::clearDependency()
{
    mPreprocessDependency.clear();
    mUpdateDependency.clear();
    mPostprocessDependency.clear();
    mDestroyDependency.clear();
}

void System::setAllocator(AllocatorBase* allocator)
{
    if (mpAllocator != nullptr) {
        dev_assert("Allocator already set.", __FILE__, __LINE__);
    }
    mpAllocator = allocator;
}

void* System::allocate(u32 size)
{
    if (mpAllocator != nullptr) {
        return mpAllocator->allocate(static_cast<int>(size), 4);
    }
    return new u8[size];
}

void System::deallocate(void* pointer)
{
    if (mpAllocator != nullptr) {
        mpAllocator->deallocate(pointer);
    } else if (pointer != nullptr) {
        delete[] static_cast<u8*>(pointer);
    }
}
