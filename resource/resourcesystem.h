// ResourceSystem: the one door to file data. It keeps the map of loaded
// resources (weak entries, one per file), creates resources on the main
// thread or on its load thread, turns intermediate files into native ones on
// first use, and reports resources still alive at exit. The system lock
// guards the map and the queue, so the load thread may work beside the main
// thread; callbacks of queued requests run on the load thread.
#pragma once

#include <thread>

#include "app/system.h"
#include "foundation/allocator.h"
#include "foundation/functor.h"
#include "foundation/map.h"
#include "foundation/multithread.h"
#include "foundation/queue.h"
#include "foundation/vector.h"

class ResourceBase;

class ResourceSystem : public System {
public:
    typedef FunctorIntermediate<ResourceBase*, void> Callback;

    // A queued request. mpPath is the caller's text and must live until the
    // request is done; null marks a cancelled request.
    struct sLoadData {
        char const* mpPath;
        TypeInfo const* mpTypeInfo;
        Callback* mpCallback;
    };

    static u32 const kResourceMax = 1024;
    static u32 const kLoadQueueMax = 256;

    static ResourceSystem* create();
    static ResourceSystem* getInstance() { return mpInstance; }
    void destroy() override;

    // Main thread. Path without root folder and extension ("ui/panel"); the
    // caller receives one reference, or null. A null path makes an empty
    // resource under a free "newfile" name.
    ResourceBase* createResource(char const* path, TypeInfo const* type);
    // Any thread. The request owns callback and deletes it once it has been
    // called or the request was dropped; callback receives one reference (or
    // null) on the load thread and must hand it over to the main thread
    // itself. More than 256 waiting requests are fatal.
    void createResourceAsync(char const* path, TypeInfo const* type, Callback* callback);
    // Waiting requests with this path text and class, or all of them, are
    // dropped without a call.
    void cancel(char const* path, TypeInfo const* type);
    void cancelAll();
    // The first resource class with that extension ("tga"); null for none.
    TypeInfo const* getTypeInfoByExtension(char const* extension) const;

    // Takes the entry out of the map.
    void removeResource(unsigned int hash);
    // ResourceBase::end(), once the count reached 0: false when a look-up has
    // taken a new reference meanwhile (the resource lives on). Otherwise
    // removes the entry under its hash if the entry is this resource, and
    // not a second instance of the same file made concurrently.
    bool removeEndingResource(ResourceBase* resource);
    // Clears the updated flag of every resource, and does the main-thread
    // work that loads on the load thread left behind.
    void update() override;

    // Any thread: resource's notifyMainThread() runs in the next update pass
    // (or earlier, when its owner does it itself). Holds a reference till then.
    void requestMainThread(ResourceBase* resource);
    // Whether the caller is the thread that created the system.
    bool isMainThread() const { return std::this_thread::get_id() == mMainThread; }
    // The loaded resources by hash; walk them under lock().
    Map<ResourceBase> const& getResources() const { return mResources; }
    Vector<TypeInfo const> const& getResourceTypes() const { return mResourceTypes; }

    DECLARE_TYPEINFO(TypeInfo)

protected:
    ResourceSystem();
    ~ResourceSystem() override;

private:
    // Takes one request per pass, then sleeps 10 ms, so that it never
    // competes with the frame.
    class LoadThread : public Thread {
    public:
        explicit LoadThread(ResourceSystem* system);

    protected:
        void execute() override;

    private:
        ResourceSystem* mpSystem;
    };

    sLoadData* pop();
    void freeRequest(sLoadData* data);
    ResourceBase* createResourceInternal(char const* path, TypeInfo const* type);
    // Names the file of path under the intermediate or the native root
    // (fileName: room for the longest path) and enters its load. False when
    // resource is not to be loaded, which it then releases: found is the
    // instance already loaded, or null for a file that refers to itself or
    // nests too deep.
    bool enterFile(ResourceBase* resource, char const* path, bool intermediate, char* fileName, u32& hash,
                   ResourceBase*& found);
    ResourceBase* loadIntermediate(ResourceBase* resource, char const* path);
    ResourceBase* loadNative(ResourceBase* resource, char const* path);
    // Under the lock: the loaded instance of this key with a new reference,
    // or null.
    ResourceBase* findResource(u32 key);
    // Under the lock: enters resource; when another thread entered the same
    // file meanwhile, drops resource and answers that one instead.
    ResourceBase* addResource(ResourceBase* resource, u32 key);
    bool loadBinary(ResourceBase* resource, char const* fileName);
    bool loadText(ResourceBase* resource, char const* fileName);
    bool convertFromIntermediate(ResourceBase* intermediate, char const* fileName);

    Vector<TypeInfo const> mResourceTypes;
    Map<ResourceBase> mResources;
    LoadThread mLoadThread;
    Queue<sLoadData> mLoadQueue;
    BlockAllocator* mpLoadAllocator;
    Vector<ResourceBase> mMainThreadRequests; // each holds a reference
    std::thread::id mMainThread;

    static ResourceSystem* mpInstance;
};
