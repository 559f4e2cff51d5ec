// ObjectBase: the root of every reflected class. It carries no data; its
// virtual operations let an object show its properties, controls and editing
// widgets, and save itself to and load itself from XML through those
// properties alone. Objects live in the global heap. Thread rules are those
// of the object's owner.
#pragma once

#include <cstddef>

#include "foundation/allocator.h"
#include "foundation/list.h"
#include "reflection/typeinfo.h"

class ControlBase;
class PropertyList;
class UIBase;
class XmlReader;
class XmlWriter;

class ObjectBase {
public:
    ObjectBase() {}
    virtual ~ObjectBase() {}

    // A class that does not override it is seen as a plain ObjectBase.
    virtual TypeInfo const* getTypeInfo() const { return &mUniqueTypeInfo; }
    // Appends the object's properties; nothing in the base.
    virtual void makePropertyList(PropertyList& list);
    // Appends control descriptors; nothing in the base.
    virtual void makeControlList(List<ControlBase>& list);
    // Widgets made from makeControlList, one per control that has one.
    virtual void makeUIList(List<UIBase>& list);
    // Attributes on the tag the caller opened, then one child per property;
    // a non-stable object already written is written as its tag alone. index
    // is the position in a list when an ObjectList calls; ignored here.
    virtual void serialize(XmlWriter* writer, bool stable, unsigned int index);
    // Reads from the open tag, driven by the object's own property list.
    virtual void deserialize(XmlReader* reader);

    void serializeProperties(XmlWriter* writer);
    // Copies only the integer and object properties that source shares with
    // this object by name and type; see the source for why.
    void copyProperties(ObjectBase* source);

    static TypeInfo const* getStaticTypeInfo() { return &mUniqueTypeInfo; }
    // "ObjectBase", no parent, listed as concrete though it makes nothing.
    static TypeInfo mUniqueTypeInfo;

    // Every reflected object without a heap of its own lives in "Global": this
    // class heap is never set. noexcept, so that an exhausted heap yields null
    // instead of a construction.
    static void* operator new(std::size_t size) noexcept { return mObjectHeap.allocate(size); }
    static void* operator new[](std::size_t size) noexcept { return mObjectHeap.allocate(size); }
    static void operator delete(void* pointer) { mObjectHeap.deallocate(pointer); }
    static void operator delete[](void* pointer) { mObjectHeap.deallocate(pointer); }
    // The class-level forms hide the global placement form; keep it usable.
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) {}

private:
    static ClassHeap mObjectHeap;
    static_assert(ClassHeap::kAlignment >= alignof(std::max_align_t), "objects need the platform's alignment");
};

// The object as a T if its type record derives from T's, else null: the
// checked downcast of reflected objects, for a language without run-time
// type information.
template <typename T>
T* typeCast(ObjectBase* object)
{
    return (object != nullptr && object->getTypeInfo()->isDerivedFrom(T::getStaticTypeInfo())) ? static_cast<T*>(object)
                                                                                              : nullptr;
}

template <typename T>
T const* typeCast(ObjectBase const* object)
{
    return typeCast<T>(const_cast<ObjectBase*>(object));
}
