#include "foundation/functor.h"

BlockAllocator FunctorBase::mAllocator(FunctorBase::BlockSize, FunctorBase::BlockNum, "Functor",
                                       AllocatorBase::getGlobalAllocator(), true);

void* FunctorBase::operator new(std::size_t size) noexcept
{
    return mAllocator.allocate(static_cast<int>(size), 4);
}

void FunctorBase::operator delete(void* pointer)
{
    mAllocator.deallocate(pointer);
}

AllocatorBase* FunctorBase::getAllocator()
{
    return &mAllocator;
}
