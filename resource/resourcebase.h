// ResourceBase: a shared, counted piece of loaded file data, addressed by its
// path. One instance per file: ResourceSystem holds every loaded resource in
// its map without a reference, and a resource leaves the map in its
// destructor. Each kind has a native class (binary file below native/) and
// intermediate classes (authoring files below intermediate/) that convert to
// it. Storage comes from the "Resource" heap, shared by all threads.
#pragma once

#include <cstddef>

#include "foundation/allocator.h"
#include "foundation/autostring.h"
#include "foundation/referenceobject.h"
#include "foundation/types.h"

class Stream;

class ResourceBase : public ReferenceObject {
public:
    // Bits of mAttribute, fixed by each class's constructor.
    enum eAttribute {
        eAttribute_Intermediate = 1, // createResource loads it from intermediate/
        eAttribute_Native = 2,       // offers an intermediate type for file dialogs
        eAttribute_Binary = 4,       // the intermediate file opens as a binary stream
        eAttribute_Creatable = 8,    // listed for "new" in the resource window
    };
    enum eFlag {
        eFlag_Modified = 1,
        eFlag_Updated = 2, // lasts until the next ResourceSystem::update
    };

    ResourceBase();

    // Reads the file; answers false on any mismatch. A successful load sets
    // the path from the stream.
    virtual bool load(Stream& stream);
    virtual bool save(Stream& stream);
    // Writes the native form to the stream.
    virtual bool convert(Stream& stream);
    // Without the dot: "tex".
    virtual char const* getExtension() const;
    // Of a native class: the class to load when the native file is missing.
    virtual TypeInfo const* getIntermediateType() const;
    // Further intermediate classes for the file dialogs; null past the end.
    virtual TypeInfo const* getExtraIntermediateType(unsigned int index) const;
    virtual TypeInfo const* getNativeType() const;
    // Extension and label with a stroke between them: "tex|Texture".
    virtual char const* getFilter() const;
    // The last release: leaves the map of ResourceSystem and deletes.
    void end() override;
    // Main thread, in ResourceSystem::update, when a load on another thread
    // asked for it through ResourceSystem::requestMainThread.
    virtual void notifyMainThread() {}

    u16 getAttribute() const { return mAttribute; }
    bool checkAttribute(u16 bits) const { return (mAttribute & bits) != 0; }

    void setModify() { mFlags = static_cast<u16>(mFlags | eFlag_Modified | eFlag_Updated); }
    void clearModify() { mFlags = static_cast<u16>(mFlags & ~eFlag_Modified); }
    void clearUpdate() { mFlags = static_cast<u16>(mFlags & ~eFlag_Updated); }
    bool isModified() const { return (mFlags & eFlag_Modified) != 0; }
    bool isUpdated() const { return (mFlags & eFlag_Updated) != 0; }

    // From "intermediate/" or "native/" on, with the extension. Once only:
    // a second call asserts.
    void setPath(AutoString const& path);
    AutoString const& getPath() const { return mPath; }
    // A resource that loaded from a file takes its path, unless it has one:
    // the resource system finds a resource's map entry by it when it ends.
    void takePathFrom(Stream const& stream);
    u32 getHash() const { return mHash; }

    // The "Resource" heap (see ClassHeap), for the resources and their
    // payloads (pixels and the like).
    static void setAllocator(AllocatorBase* allocator) { mHeap.set(allocator); }
    static AllocatorBase* getAllocator() { return mHeap.get(); }
    static void* allocate(unsigned int size) { return mHeap.allocate(size); }
    static void deallocate(void* pointer) { mHeap.deallocate(pointer); }

    static void* operator new(std::size_t size) noexcept { return mHeap.allocate(size); }
    static void operator delete(void* pointer) { mHeap.deallocate(pointer); }

    // "Path", the file the resource came from.
    void makeUIList(List<UIBase>& list) override;

    DECLARE_TYPEINFO(TypeInfo)

protected:
    explicit ResourceBase(u16 attribute);
    ~ResourceBase() override {}

    // For the classes kept as the general XML form under their class name.
    // readXml reads the stream into the object and takes its path; writeXml
    // answers false for a stream without text access.
    void readXml(Stream& stream);
    bool writeXml(Stream& stream);

private:
    u16 mAttribute;
    u16 mFlags;
    AutoString mPath;
    u32 mHash;

    static ClassHeap mHeap;
};
