#include "resource/resourcesystem.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "app/application.h"
#include "foundation/debug.h"
#include "foundation/utils.h"
#include "platform/filesystem.h"
#include "reflection/property.h"
#include "render/rendersystem.h"
#include "resource/resourcebase.h"
#include "serial/stream.h"

IMPLEMENT_TYPEINFO(ResourceSystem, "System", TypeInfo::eAttribute_Singleton);

ResourceSystem* ResourceSystem::mpInstance = nullptr;

namespace {

u32 const kPathMax = 2048;
// The "." before an extension, the extension, and the end of the text.
u32 const kExtensionRoom = 34;
// sLoadData is three pointers: 24 bytes.
u32 const kLoadBlockNum = ResourceSystem::kLoadQueueMax;

// Files being read on this thread, innermost last. A file names others (a
// sequence its nested sequences, an animation list its animations), which
// load inside its own load; one that names itself, directly or through
// others, would load again without end.
u32 const kLoadNestingMax = 32;
thread_local u32 tLoading[kLoadNestingMax];
thread_local u32 tLoadingNum = 0;

// False, with a trace, when the file is already being read on this thread
// or the chain of files is too long; otherwise enters it.
bool enterLoad(u32 hash, char const* fileName)
{
    for (u32 i = 0; i < tLoadingNum; ++i) {
        if (tLoading[i] == hash) {
            DEV_TRACE("Resource %s refers to itself.\n", fileName);
            return false;
        }
    }
    if (tLoadingNum == kLoadNestingMax) {
        DEV_TRACE("Resource %s nests too deep.\n", fileName);
        return false;
    }
    tLoading[tLoadingNum++] = hash;
    return true;
}

void leaveLoad()
{
    --tLoadingNum;
}

// What resource properties need of this layer (see reflection/property.h).
TypeInfo const* linkGetTypeInfo(ResourceBase const* resource)
{
    return resource->getTypeInfo();
}
void linkAddRef(ResourceBase* resource)
{
    resource->addRef();
}
void linkRelease(ResourceBase* resource)
{
    resource->release();
}
char const* linkGetPath(ResourceBase const* resource)
{
    return resource->getPath().c_str();
}
char const* linkGetExtension(ResourceBase const* resource)
{
    return resource->getExtension();
}
ResourceBase* linkCreateResource(char const* path, TypeInfo const* type)
{
    ResourceSystem* system = ResourceSystem::getInstance();
    return (system != nullptr) ? system->createResource(path, type) : nullptr;
}

ResourcePropertyIntermediate::sResourceLink const kResourceLink = {
    linkGetTypeInfo, linkAddRef, linkRelease, linkGetPath, linkGetExtension, linkCreateResource,
};

// A new instance of a resource class; null for abstract classes and for
// classes outside the resource tree.
ResourceBase* newResource(TypeInfo const* type)
{
    if (type == nullptr || !type->isDerivedFrom(ResourceBase::getStaticTypeInfo())) {
        return nullptr;
    }
    return typeCast<ResourceBase>(type->newInstance());
}

char const* getExtensionText(ResourceBase const* resource)
{
    char const* extension = resource->getExtension();
    return (extension != nullptr) ? extension : "";
}

char const* getFolder(bool intermediate)
{
    Application* application = Application::getInstance();
    if (application == nullptr) {
        return "";
    }
    return intermediate ? application->getIntermediatePath() : application->getNativePath();
}

// Names the converted file is written under before it takes its place.
Atomic sPartNumber(0);

} // namespace

// ---------------------------------------------------------------------------
// Life

ResourceSystem* ResourceSystem::create()
{
    if (mpInstance == nullptr) {
        ResourceSystem* instance = new ResourceSystem();
        mpInstance = instance;
    }
    return mpInstance;
}

void ResourceSystem::destroy()
{
    delete this;
    mpInstance = nullptr;
}

ResourceSystem::ResourceSystem()
    : mLoadThread(this), mpLoadAllocator(nullptr), mMainThread(std::this_thread::get_id())
{
    if (mpInstance != nullptr) {
        dev_assert("ResourceSystem already instanced.", __FILE__, __LINE__);
    }
    // Null while the render system does not exist yet, as in the host.
    addDestroyDependency(RenderSystem::getInstance());
    setProcessEnable(false, true, false);

    TypeInfo const* base = ResourceBase::getStaticTypeInfo();
    for (u32 i = 0; i < TypeInfo::getDataBaseSize(); ++i) {
        TypeInfo const* type = TypeInfo::getTypeInfo(i);
        if (type->isDerivedFrom(base)) {
            mResourceTypes.addLast(type);
        }
    }
    mResources.reserve(kResourceMax);
    // A ring of n nodes holds n - 1 entries.
    mLoadQueue.reserve(kLoadQueueMax + 1);
    mpLoadAllocator = new BlockAllocator(sizeof(sLoadData), kLoadBlockNum, "LoadQueue",
                                         AllocatorBase::getGlobalAllocator(), true);
    mMainThreadRequests.reserve(kLoadQueueMax);
    ResourcePropertyIntermediate::setResourceLink(&kResourceLink);

    // Started only now: the thread reads the queue, which the member order
    // constructs after it.
    mLoadThread.setPriority(Thread::ePriority_High);
    mLoadThread.run();
    DEV_TRACE("ResourceSystem : start.\n");
}

ResourceSystem::~ResourceSystem()
{
    mLoadThread.terminate();
    mLoadThread.waitForTermination();
    while (!mLoadQueue.empty()) {
        freeRequest(mLoadQueue.pop());
    }
    delete mpLoadAllocator;
    mpLoadAllocator = nullptr;

    for (u32 i = 0; i < mMainThreadRequests.size(); ++i) {
        mMainThreadRequests[i]->release();
    }
    mMainThreadRequests.clear();

    // Reported, not deleted: a holder may still release them later.
    for (Map<ResourceBase>::Iterator it = mResources.begin(); it != mResources.end(); ++it) {
        char const* path = it->getPath().c_str();
        DEV_TRACE("Resource leak.(%s)\n", path != nullptr ? path : "");
    }
    if (ResourcePropertyIntermediate::getResourceLink() == &kResourceLink) {
        ResourcePropertyIntermediate::setResourceLink(nullptr);
    }
    DEV_TRACE("ResourceSystem : end.\n");
}

// ---------------------------------------------------------------------------
// Creation

ResourceBase* ResourceSystem::createResource(char const* path, TypeInfo const* type)
{
    lock();
    ResourceBase* resource = nullptr;
    if (path != nullptr) {
        resource = createResourceInternal(path, type);
    } else if ((resource = newResource(type)) != nullptr) {
        // The first free name of newfile.ext, newfile0.ext, newfile1.ext, ...
        char const* folder = getFolder(resource->checkAttribute(ResourceBase::eAttribute_Intermediate));
        char const* extension = getExtensionText(resource);
        char candidate[kPathMax];
        snprintf(candidate, sizeof(candidate), "%snewfile.%s", folder, extension);
        for (int counter = 0;; ++counter) {
            char const* relative = Utils::getPath(candidate);
            if (!Utils::isFileExist(candidate) && mResources.find(Utils::hash(relative)) == nullptr) {
                break;
            }
            snprintf(candidate, sizeof(candidate), "%snewfile%d.%s", folder, counter, extension);
        }
        resource->setPath(AutoString(Utils::getPath(candidate)));
        if (!resource->getPath().empty()) {
            mResources.add(resource, resource->getHash());
        }
    }
    unlock();
    return resource;
}

ResourceBase* ResourceSystem::createResourceInternal(char const* path, TypeInfo const* type)
{
    // Room for the longer root folder, ".", an extension and the end.
    size_t const folders = std::max(strlen(getFolder(true)), strlen(getFolder(false)));
    u32 const room = (folders + kExtensionRoom < kPathMax) ? static_cast<u32>(kPathMax - folders - kExtensionRoom) : 0;
    if (path == nullptr || !Utils::isSafePath(path, room)) {
        return nullptr;
    }
    ResourceBase* instance = newResource(type);
    if (instance == nullptr) {
        return nullptr;
    }
    if (instance->checkAttribute(ResourceBase::eAttribute_Intermediate)) {
        return loadIntermediate(instance, path);
    }
    return loadNative(instance, path);
}

bool ResourceSystem::enterFile(ResourceBase* resource, char const* path, bool intermediate, char* fileName,
                               u32& hash, ResourceBase*& found)
{
    char const* extension = getExtensionText(resource);
    char key[kPathMax];
    snprintf(key, sizeof(key), "%s/%s.%s", intermediate ? "intermediate" : "native", path, extension);
    snprintf(fileName, kPathMax, "%s%s.%s", getFolder(intermediate), path, extension);
    hash = Utils::hash(key);

    found = findResource(hash);
    if (found != nullptr || !enterLoad(hash, fileName)) {
        resource->release();
        return false;
    }
    return true;
}

ResourceBase* ResourceSystem::loadIntermediate(ResourceBase* resource, char const* path)
{
    char fileName[kPathMax];
    u32 hash = 0;
    ResourceBase* found = nullptr;
    if (!enterFile(resource, path, true, fileName, hash, found)) {
        return found;
    }
    bool const loaded = resource->checkAttribute(ResourceBase::eAttribute_Binary) ? loadBinary(resource, fileName)
                                                                                  : loadText(resource, fileName);
    leaveLoad();
    if (!loaded) {
        DEV_TRACE("Resource %s loading fail.\n", fileName);
        resource->release();
        return nullptr;
    }
    DEV_TRACE("Resource %s loading success.\n", fileName);
    return addResource(resource, hash);
}

ResourceBase* ResourceSystem::loadNative(ResourceBase* resource, char const* path)
{
    char fileName[kPathMax];
    u32 hash = 0;
    ResourceBase* found = nullptr;
    if (!enterFile(resource, path, false, fileName, hash, found)) {
        return found;
    }
    bool const loaded = loadBinary(resource, fileName);
    leaveLoad();
    if (loaded) {
        return addResource(resource, hash);
    }

    // The native file is a cache: make it from the intermediate file.
    ResourceBase* intermediate = newResource(resource->getIntermediateType());
    if (intermediate == nullptr) {
        resource->release();
        return nullptr;
    }
    intermediate = loadIntermediate(intermediate, path);
    if (intermediate == nullptr) {
        // Deliberately the unloaded object, with no map entry: callers test
        // the resource's own data.
        return resource;
    }
    ResourceBase* result = nullptr;
    if (convertFromIntermediate(intermediate, fileName) && loadBinary(resource, fileName)) {
        result = addResource(resource, hash);
    } else {
        resource->release();
    }
    intermediate->release();
    return result;
}

ResourceBase* ResourceSystem::findResource(u32 key)
{
    lock();
    ResourceBase* found = mResources.find(key);
    // A count of 0 is a resource on its way out: its end() waits for this
    // lock and then deletes it, unless the count has come back up.
    if (found != nullptr && found->getRefCount() > 0) {
        found->addRef();
    } else {
        found = nullptr;
    }
    unlock();
    return found;
}

ResourceBase* ResourceSystem::addResource(ResourceBase* resource, u32 key)
{
    lock();
    ResourceBase* found = mResources.find(key);
    if (found != nullptr && found->getRefCount() > 0) {
        // The other thread was first: one file, one instance.
        found->addRef();
        unlock();
        resource->release();
        return found;
    }
    if (found != nullptr) {
        mResources.remove(key); // the ending one no longer owns the entry
    }
    mResources.add(resource, key);
    unlock();
    return resource;
}

bool ResourceSystem::loadBinary(ResourceBase* resource, char const* fileName)
{
    // A file that did not open reads as empty, and load fails on that.
    BinaryFileStream stream(fileName, Stream::eMode_Read);
    return !stream.eof() && resource->load(stream);
}

bool ResourceSystem::loadText(ResourceBase* resource, char const* fileName)
{
    TextFileStream stream(fileName, Stream::eMode_Read);
    return !stream.eof() && resource->load(stream);
}

// Written under a name of its own and renamed into place, so that a reader
// on the other thread, or the next run after a crash, never sees half a file.
bool ResourceSystem::convertFromIntermediate(ResourceBase* intermediate, char const* fileName)
{
    char suffix[32];
    snprintf(suffix, sizeof(suffix), ".%d.part", sPartNumber.increment());
    platform::makeParentFolders(fileName);
    ReplacingBinaryFileStream stream(fileName, suffix);
    return intermediate->convert(stream) && stream.commit();
}

// ---------------------------------------------------------------------------
// The load thread

ResourceSystem::LoadThread::LoadThread(ResourceSystem* system) : Thread(4096), mpSystem(system)
{
}

void ResourceSystem::LoadThread::execute()
{
    while (!checkTerminateRequest()) {
        if (sLoadData* data = mpSystem->pop()) {
            if (data->mpPath != nullptr) {
                ResourceBase* resource = mpSystem->createResourceInternal(data->mpPath, data->mpTypeInfo);
                if (data->mpCallback != nullptr) {
                    (*data->mpCallback)(resource);
                } else if (resource != nullptr) {
                    resource->release();
                }
            }
            mpSystem->freeRequest(data);
        }
        Thread::sleep(10);
    }
}

void ResourceSystem::createResourceAsync(char const* path, TypeInfo const* type, Callback* callback)
{
    lock();
    void* block = mpLoadAllocator->allocate(sizeof(sLoadData), alignof(sLoadData));
    if (block == nullptr) {
        dev_assert("Queue overflow.", __FILE__, __LINE__);
    }
    sLoadData* data = new (block) sLoadData;
    data->mpPath = path;
    data->mpTypeInfo = type;
    data->mpCallback = callback;
    mLoadQueue.push(data);
    unlock();
}

ResourceSystem::sLoadData* ResourceSystem::pop()
{
    lock();
    sLoadData* data = mLoadQueue.empty() ? nullptr : mLoadQueue.pop();
    unlock();
    return data;
}

void ResourceSystem::freeRequest(sLoadData* data)
{
    delete data->mpCallback;
    mpLoadAllocator->deallocate(data);
}

void ResourceSystem::cancel(char const* path, TypeInfo const* type)
{
    if (path == nullptr) {
        return;
    }
    lock();
    for (Queue<sLoadData>::Iterator it = mLoadQueue.begin(); it != mLoadQueue.end(); ++it) {
        // Entries cancelled before hold null and are passed over.
        if (it->mpPath != nullptr && it->mpTypeInfo == type && strcmp(it->mpPath, path) == 0) {
            it->mpPath = nullptr;
        }
    }
    unlock();
}

void ResourceSystem::cancelAll()
{
    lock();
    for (Queue<sLoadData>::Iterator it = mLoadQueue.begin(); it != mLoadQueue.end(); ++it) {
        it->mpPath = nullptr;
    }
    unlock();
}

// ---------------------------------------------------------------------------
// Map and frame

TypeInfo const* ResourceSystem::getTypeInfoByExtension(char const* extension) const
{
    if (extension == nullptr) {
        return nullptr;
    }
    for (u32 i = 0; i < mResourceTypes.size(); ++i) {
        ResourceBase* instance = newResource(mResourceTypes[i]);
        if (instance == nullptr) {
            continue;
        }
        char const* own = instance->getExtension();
        bool const match = own != nullptr && strcmp(own, extension) == 0;
        instance->release();
        if (match) {
            return mResourceTypes[i];
        }
    }
    return nullptr;
}

void ResourceSystem::removeResource(unsigned int hash)
{
    lock();
    mResources.remove(hash);
    unlock();
}

bool ResourceSystem::removeEndingResource(ResourceBase* resource)
{
    lock();
    // A look-up may have taken a new reference since the count reached 0.
    bool const ended = resource->getRefCount() == 0;
    if (ended && mResources.find(resource->getHash()) == resource) {
        mResources.remove(resource->getHash());
    }
    unlock();
    return ended;
}

void ResourceSystem::requestMainThread(ResourceBase* resource)
{
    resource->addRef();
    lock();
    mMainThreadRequests.addLast(resource);
    unlock();
}

void ResourceSystem::update()
{
    lock();
    for (Map<ResourceBase>::Iterator it = mResources.begin(); it != mResources.end(); ++it) {
        it->clearUpdate();
    }
    unlock();

    for (;;) {
        lock();
        ResourceBase* resource = nullptr;
        if (!mMainThreadRequests.empty()) {
            resource = mMainThreadRequests[0];
            mMainThreadRequests.remove(mMainThreadRequests.begin());
        }
        unlock();
        if (resource == nullptr) {
            break;
        }
        // Nobody but this request holds it: the work would be thrown away.
        if (resource->getRefCount() > 1) {
            resource->notifyMainThread();
        }
        resource->release();
    }
}
