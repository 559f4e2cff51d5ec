#include "resource/resourcebase.h"

#include "foundation/debug.h"
#include "resource/resourcesystem.h"

IMPLEMENT_TYPEINFO(ResourceBase, "ObjectBase", TypeInfo::eAttribute_Abstract);

AllocatorBase* ResourceBase::mpAllocator = nullptr;

namespace {

// Objects hold pointers and vtables: 16 on 64-bit, where payloads keep 4.
unsigned int const kResourceAlignment = 16;
unsigned int const kPayloadAlignment = 4;

void* allocateFrom(AllocatorBase* allocator, std::size_t size, unsigned int alignment)
{
    if (allocator != nullptr) {
        return allocator->allocate(static_cast<int>(size), alignment);
    }
    return new (std::nothrow) u8[size];
}

void deallocateFrom(AllocatorBase* allocator, void* pointer)
{
    if (allocator != nullptr) {
        allocator->deallocate(pointer);
    } else {
        delete[] static_cast<u8*>(pointer);
    }
}

} // namespace

ResourceBase::ResourceBase() : mAttribute(0), mFlags(0), mHash(0)
{
}

ResourceBase::ResourceBase(u16 attribute) : mAttribute(attribute), mFlags(0), mHash(0)
{
}

// The map's entry goes here rather than in the destructor: under the system
// lock a look-up on the load thread may still take the resource back.
void ResourceBase::end()
{
    ResourceSystem* system = ResourceSystem::getInstance();
    if (system != nullptr && !mPath.empty() && !system->removeEndingResource(this)) {
        return;
    }
    delete this;
}

bool ResourceBase::load(Stream&)
{
    return false;
}

bool ResourceBase::save(Stream&)
{
    return false;
}

bool ResourceBase::convert(Stream&)
{
    return false;
}

char const* ResourceBase::getExtension() const
{
    return nullptr;
}

TypeInfo const* ResourceBase::getIntermediateType() const
{
    return nullptr;
}

TypeInfo const* ResourceBase::getExtraIntermediateType(unsigned int) const
{
    return nullptr;
}

TypeInfo const* ResourceBase::getNativeType() const
{
    return nullptr;
}

char const* ResourceBase::getFilter() const
{
    return nullptr;
}

void ResourceBase::setPath(AutoString const& path)
{
    if (!mPath.empty()) {
        dev_assert("Path is already set.", __FILE__, __LINE__);
    }
    mPath = path;
    mHash = mPath.hash();
}

void ResourceBase::setAllocator(AllocatorBase* allocator)
{
    if (mpAllocator != nullptr) {
        dev_assert("Allocator already set.", __FILE__, __LINE__);
    }
    mpAllocator = allocator;
}

void* ResourceBase::allocate(unsigned int size)
{
    return allocateFrom(mpAllocator, size, kPayloadAlignment);
}

void ResourceBase::deallocate(void* pointer)
{
    deallocateFrom(mpAllocator, pointer);
}

void* ResourceBase::operator new(std::size_t size) noexcept
{
    return allocateFrom(mpAllocator, size, kResourceAlignment);
}

void ResourceBase::operator delete(void* pointer)
{
    deallocateFrom(mpAllocator, pointer);
}
