// Properties: small named, typed views on one value (or a fixed array of
// values) that lives in an object. Persistence, copying and the property
// editors work only through them. They are short-lived and counted: a list is
// built, used and dropped, and a property must not outlive its object. They
// come from the "Property" block heap, so every class here fits one 48-byte
// block. Not thread safe: used on the thread that works on the object.
#pragma once

#include <cstddef>
#include <type_traits>

#include "foundation/autostring.h"
#include "foundation/debug.h"
#include "foundation/types.h"
#include "reflection/accessor.h"

class AllocatorBase;
class ObjectBase;
class ResourceBase;
class TypeInfo;
class XmlReader;
class XmlWriter;

// Every property type once, in the order of its code (from 1; 0 is
// undefined): the C++ type, the code's name, the type's name in files.
#define HARBOR_PROPERTY_TYPES(X)                      \
    X(bool, Bool, "bool")                             \
    X(s8, S8, "s8")                                   \
    X(s16, S16, "s16")                                \
    X(s32, S32, "s32")                                \
    X(s64, S64, "s64")                                \
    X(u8, U8, "u8")                                   \
    X(u16, U16, "u16")                                \
    X(u32, U32, "u32")                                \
    X(u64, U64, "u64")                                \
    X(float, F32, "f32")                              \
    X(double, F64, "f64")                             \
    X(sSize, Size, "size")                            \
    X(sPoint, Point, "point")                         \
    X(sRect, Rect, "rect")                            \
    X(sColor, Color, "color")                         \
    X(sColorF, ColorF, "colorf")                      \
    X(sTexcoord, Texcoord, "texcoord")                \
    X(sFixed, Fixed, "fixed")                         \
    X(sVector, Vector, "vector")                      \
    X(AutoString, String, "string")                   \
    X(char const*, ConstString, "const string")       \
    X(ObjectBase*, Object, "Object")                  \
    X(ResourceBase*, Resource, "Resource")

enum ePropertyType {
    ePropertyType_Undefined = 0,
#define HARBOR_PROPERTY_CODE(T, code, name) ePropertyType_##code,
    HARBOR_PROPERTY_TYPES(HARBOR_PROPERTY_CODE)
#undef HARBOR_PROPERTY_CODE
    ePropertyType_Num
};

// The type code and type name of each value type; a type without an entry is
// not a property type and fails to compile.
template <typename T>
struct sPropertyTypeOf;

#define HARBOR_PROPERTY_TRAITS(T, code, name)                   \
    template <>                                                 \
    struct sPropertyTypeOf<T> {                                 \
        static constexpr unsigned int Value = ePropertyType_##code; \
        static constexpr char const* Name = name;               \
    };
HARBOR_PROPERTY_TYPES(HARBOR_PROPERTY_TRAITS)
#undef HARBOR_PROPERTY_TRAITS

template <typename T>
constexpr unsigned int getPropertyType()
{
    return sPropertyTypeOf<T>::Value;
}

template <typename T>
constexpr char const* getTypeNameTemplate()
{
    return sPropertyTypeOf<T>::Name;
}

// ---------------------------------------------------------------------------
// PropertyBase

class PropertyBase {
public:
    // As an index: the property's current element.
    static constexpr unsigned int CurrentIndex = 0xFFFFFFFFu;
    // Count and index have 12 bits each.
    static constexpr unsigned int MaxCount = 4095;

    // count 0 is a single value, 2 or more an array.
    PropertyBase(unsigned int type, char const* name, unsigned int count);
    virtual ~PropertyBase() {}

    PropertyBase(PropertyBase const&) = delete;
    PropertyBase& operator=(PropertyBase const&) = delete;

    virtual char const* getTypeName() const { return "undefined"; }
    virtual void writeUniqueAttributes(XmlWriter*) {}
    virtual void readUniqueAttributes(XmlReader*) {}
    virtual unsigned int getIndex() const { return mIndex; }
    // Ignored by a single value; fatal past the end of an array.
    virtual void setIndex(unsigned int index);
    // The caller's buffer holds at least 64 characters. Text kinds answer
    // their own text, valid until the next call on the same property.
    virtual char const* getString(char*, unsigned int) const { return nullptr; }
    // Sets the current element.
    virtual void setString(char const*) {}
    virtual long long getNumeric(unsigned int) const { return 0; }
    virtual void setNumeric(long long, unsigned int) {}

    unsigned int getCount() const { return mCount; }
    unsigned int getType() const { return mType; }
    char const* getName() const { return mpName; }
    u32 getNameHash() const { return mNameHash; }

    // Not atomic. The last release deletes.
    void addRef() { ++mRefCount; }
    void release();
    u32 getRefCount() const { return mRefCount; }

    // The property's tag (opened by the caller): common attributes, then the
    // value on the tag itself or one "element%d" child per element.
    void serialize(XmlWriter* writer);
    // Skips the property, with a trace, when type or count differ.
    void deserialize(XmlReader* reader);
    void writeCommonAttributes(XmlWriter* writer);

    // Typed doors to get and set; the type must match exactly.
    template <typename T>
    T getByType(unsigned int index) const;
    template <typename T>
    void setByType(T value, unsigned int index);
    template <typename T>
    explicit operator T() const
    {
        return getByType<T>(CurrentIndex);
    }
    template <typename T>
    PropertyBase& operator=(T value)
    {
        setByType<T>(value, CurrentIndex);
        return *this;
    }

    static char const* getTypeNameOf(unsigned int type);

    // The "Property" heap (see ClassHeap), shared with the controls.
    static void setAllocator(AllocatorBase* allocator) { mHeap.set(allocator); }
    static AllocatorBase* getAllocator() { return mHeap.get(); }
    static ClassHeap& getHeap() { return mHeap; }
    // noexcept: an exhausted heap answers null and nothing is constructed.
    static void* operator new(std::size_t size) noexcept { return mHeap.allocate(size); }
    static void operator delete(void* pointer) { mHeap.deallocate(pointer); }

protected:
    unsigned int resolveIndex(unsigned int index) const { return (index == CurrentIndex) ? getIndex() : index; }

private:
    // Type, count and current index share one word to keep properties small.
    u32 mType : 8;
    u32 mCount : 12;
    u32 mIndex : 12;
    // Before the name pointer: the base then ends after 28 bytes and
    // a derived class's first small field takes the gap (48-byte blocks).
    u32 mNameHash;
    char const* mpName; // not copied: a literal or something that outlives the property
    u32 mRefCount;

    static ClassHeap mHeap;
};

// ---------------------------------------------------------------------------
// Value properties: name, text and numeric conversion in terms of get and set.

template <typename T>
class PropertyIntermediate : public PropertyBase {
public:
    PropertyIntermediate(char const* name, unsigned int count) : PropertyBase(getPropertyType<T>(), name, count) {}

    virtual T get(unsigned int index) const = 0;
    virtual void set(T value, unsigned int index) = 0;

    char const* getTypeName() const override { return getTypeNameTemplate<T>(); }
    void writeUniqueAttributes(XmlWriter* writer) override;
    void readUniqueAttributes(XmlReader* reader) override;
    char const* getString(char* buffer, unsigned int index) const override;
    void setString(char const* text) override;
    long long getNumeric(unsigned int index) const override;
    void setNumeric(long long value, unsigned int index) override;
};

// A getter may hand out a string that nobody else holds: the property keeps
// the last text it gave until the next call.
template <>
class PropertyIntermediate<AutoString> : public PropertyBase {
public:
    PropertyIntermediate(char const* name, unsigned int count) : PropertyBase(ePropertyType_String, name, count) {}

    virtual AutoString get(unsigned int index) const = 0;
    virtual void set(AutoString value, unsigned int index) = 0;

    char const* getTypeName() const override { return getTypeNameTemplate<AutoString>(); }
    void writeUniqueAttributes(XmlWriter* writer) override;
    void readUniqueAttributes(XmlReader* reader) override;
    char const* getString(char* buffer, unsigned int index) const override;
    void setString(char const* text) override;
    long long getNumeric(unsigned int) const override { return 0; }
    void setNumeric(long long, unsigned int) override {}

private:
    mutable AutoString mText;
};

// A plain pointer to the field, or to the first element of an array. The
// object is not told of a change. No bounds test: setIndex is the guard.
template <typename T>
class ReferenceProperty : public PropertyIntermediate<T> {
public:
    ReferenceProperty(char const* name, T* value, unsigned int count = 0)
        : PropertyIntermediate<T>(name, count), mpValue(value)
    {
    }

    T get(unsigned int index) const override { return mpValue[this->resolveIndex(index)]; }
    void set(T value, unsigned int index) override { mpValue[this->resolveIndex(index)] = value; }

private:
    T* mpValue;
};

// A getter and a setter of the object; a null setter makes it read-only.
template <typename T>
class IndirectProperty : public PropertyIntermediate<T> {
public:
    template <typename C>
    IndirectProperty(char const* name, C* object, T (C::*getter)() const, void (C::*setter)(T), unsigned int count = 0)
        : PropertyIntermediate<T>(name, count), mpAccessor(new Accessor<C, T>(object, getter, setter))
    {
    }
    ~IndirectProperty() override { delete mpAccessor; }

    T get(unsigned int index) const override { return mpAccessor->get(index); }
    void set(T value, unsigned int index) override { mpAccessor->set(value, index); }

private:
    AccessorBase<T>* mpAccessor;
};

// ---------------------------------------------------------------------------
// Object properties. A stable object exists before loading and only takes
// values from a file; a non-stable one is referred to and made from the file.

class ObjectPropertyIntermediate : public PropertyBase {
public:
    ObjectPropertyIntermediate(char const* name, unsigned int count) : PropertyBase(ePropertyType_Object, name, count) {}

    virtual ObjectBase* get(unsigned int index) const = 0;
    virtual void set(ObjectBase* value, unsigned int index) = 0;
    virtual bool isStableObject() const = 0;
    // Whether an object of that class may be set from a file; any class by
    // default.
    virtual bool isAcceptable(TypeInfo const* type) const;

    char const* getTypeName() const override { return "Object"; }
    // The object's own attributes and properties; it must not be null.
    void writeUniqueAttributes(XmlWriter* writer) override;
    void readUniqueAttributes(XmlReader* reader) override;
    // The class name, or "null".
    char const* getString(char* buffer, unsigned int index) const override;
};

// The index is not applied to the object pointer: only element 0 of an object
// property is meaningful, and the count of such properties is left at 0.
class ObjectProperty : public ObjectPropertyIntermediate {
public:
    // A fixed member: always stable; set copies the values into it.
    ObjectProperty(char const* name, ObjectBase* object, unsigned int count = 0)
        : ObjectPropertyIntermediate(name, count), mStable(true), mPointerField(false), mpObject(object),
          mppObject(nullptr)
    {
    }
    // A pointer field: set replaces the pointer when not stable (nothing is
    // deleted or counted), and copies the values into the object when stable.
    // A file may set it only to a T or a class derived from T.
    template <typename T>
    ObjectProperty(char const* name, T** pointer, bool stable, unsigned int count = 0)
        : ObjectPropertyIntermediate(name, count), mStable(stable), mPointerField(true),
          mpClass(T::getStaticTypeInfo()), mppObject(reinterpret_cast<ObjectBase**>(pointer))
    {
        static_assert(std::is_base_of<ObjectBase, T>::value, "an object property points at reflected objects");
    }

    ObjectBase* get(unsigned int index) const override;
    void set(ObjectBase* value, unsigned int index) override;
    bool isStableObject() const override { return mStable; }
    bool isAcceptable(TypeInfo const* type) const override;

private:
    // First, to sit in the base's tail (48-byte blocks).
    bool mStable;
    bool mPointerField;
    // A fixed member has mpObject; a pointer field has mppObject and the
    // class it points at. The two forms share the slot to stay in 48 bytes.
    union {
        ObjectBase* mpObject;
        TypeInfo const* mpClass;
    };
    ObjectBase** mppObject;
};

// Always written as a referenced (non-stable) object.
class IndirectObjectProperty : public ObjectPropertyIntermediate {
public:
    template <typename C>
    IndirectObjectProperty(char const* name, C* object, ObjectBase* (C::*getter)() const,
                           void (C::*setter)(ObjectBase*), unsigned int count = 0)
        : ObjectPropertyIntermediate(name, count), mpAccessor(new Accessor<C, ObjectBase*>(object, getter, setter))
    {
    }
    // Takes over an accessor made elsewhere (a ProxyAccessor, for example).
    IndirectObjectProperty(char const* name, AccessorBase<ObjectBase*>* accessor, unsigned int count = 0)
        : ObjectPropertyIntermediate(name, count), mpAccessor(accessor)
    {
    }
    ~IndirectObjectProperty() override { delete mpAccessor; }

    ObjectBase* get(unsigned int index) const override { return mpAccessor->get(index); }
    void set(ObjectBase* value, unsigned int index) override { mpAccessor->set(value, index); }
    bool isStableObject() const override { return false; }
    unsigned int getIndex() const override { return mpAccessor->getIndex(); }
    void setIndex(unsigned int index) override { mpAccessor->setIndex(index); }

private:
    AccessorBase<ObjectBase*>* mpAccessor;
};

// ---------------------------------------------------------------------------
// Resource properties. They hold counted resources of one class or its
// descendants and refuse others in silence.

class ResourcePropertyIntermediate : public PropertyBase {
public:
    // What resource properties need of the resource layer, which sits above
    // this one. The resource system hands it over when it starts; before
    // that no resource can exist, and these properties hold null.
    struct sResourceLink {
        TypeInfo const* (*mpGetTypeInfo)(ResourceBase const* resource);
        void (*mpAddRef)(ResourceBase* resource);
        void (*mpRelease)(ResourceBase* resource);
        // From the data root with the extension: "native/ui/panel.tex".
        char const* (*mpGetPath)(ResourceBase const* resource);
        // The class's extension without the dot: "tex".
        char const* (*mpGetExtension)(ResourceBase const* resource);
        // ResourceSystem::createResource: one reference for the caller, or null.
        ResourceBase* (*mpCreateResource)(char const* path, TypeInfo const* type);
    };

    // Fatal "Invalid TypeInfo." unless type derives from ResourceBase.
    ResourcePropertyIntermediate(char const* name, TypeInfo const* type, unsigned int count);

    virtual ResourceBase* get(unsigned int index) const = 0;
    virtual void set(ResourceBase* value, unsigned int index) = 0;

    TypeInfo const* getTypeInfo() const { return mpTypeInfo; }
    char const* getTypeName() const override { return "Resource"; }
    // "typeinfo" and "path"; nothing for an empty property.
    void writeUniqueAttributes(XmlWriter* writer) override;
    void readUniqueAttributes(XmlReader* reader) override;
    // The resource's path, or "null".
    char const* getString(char* buffer, unsigned int index) const override;

    // Null disconnects.
    static void setResourceLink(sResourceLink const* link) { mpLink = link; }
    static sResourceLink const* getResourceLink() { return mpLink; }

protected:
    // Whether value may be stored: null always, else only a resource of our class.
    bool isAcceptable(ResourceBase* value) const;

private:
    TypeInfo const* mpTypeInfo;

    static sResourceLink const* mpLink;
};

// Takes part in the counting: holds one reference to what it stores.
class ResourceProperty : public ResourcePropertyIntermediate {
public:
    ResourceProperty(char const* name, TypeInfo const* type, ResourceBase** pointer, unsigned int count = 0)
        : ResourcePropertyIntermediate(name, type, count), mppResource(pointer)
    {
    }

    ResourceBase* get(unsigned int index) const override { return mppResource[resolveIndex(index)]; }
    // Releases the old resource and adds a reference to the new one.
    void set(ResourceBase* value, unsigned int index) override;

private:
    ResourceBase** mppResource;
};

// Counting is the setter's business.
class IndirectResourceProperty : public ResourcePropertyIntermediate {
public:
    // C is the object's class, R the resource class its functions use.
    template <typename C, typename R>
    IndirectResourceProperty(char const* name, TypeInfo const* type, C* object, R* (C::*getter)() const,
                             void (C::*setter)(R*), unsigned int count = 0)
        : ResourcePropertyIntermediate(name, type, count),
          mpAccessor(new ProxyAccessor<C, R*, ResourceBase*>(object, getter, setter))
    {
    }
    ~IndirectResourceProperty() override { delete mpAccessor; }

    ResourceBase* get(unsigned int index) const override { return mpAccessor->get(index); }
    void set(ResourceBase* value, unsigned int index) override;
    unsigned int getIndex() const override { return mpAccessor->getIndex(); }
    void setIndex(unsigned int index) override { mpAccessor->setIndex(index); }

private:
    AccessorBase<ResourceBase*>* mpAccessor;
};

// ---------------------------------------------------------------------------
// Typed access

template <typename T>
struct sPropertyClassOf {
    typedef PropertyIntermediate<T> Type;
};
template <>
struct sPropertyClassOf<ObjectBase*> {
    typedef ObjectPropertyIntermediate Type;
};
template <>
struct sPropertyClassOf<ResourceBase*> {
    typedef ResourcePropertyIntermediate Type;
};

template <typename T>
T PropertyBase::getByType(unsigned int index) const
{
    if (getType() != getPropertyType<T>()) {
        dev_assert("Type missmatch", __FILE__, __LINE__);
    }
    return static_cast<typename sPropertyClassOf<T>::Type const*>(this)->get(index);
}

template <typename T>
void PropertyBase::setByType(T value, unsigned int index)
{
    if (getType() != getPropertyType<T>()) {
        dev_assert("Type missmatch.", __FILE__, __LINE__);
    }
    static_cast<typename sPropertyClassOf<T>::Type*>(this)->set(value, index);
}

// A const string can be read but not set through the base class.
template <>
inline void PropertyBase::setByType<char const*>(char const*, unsigned int)
{
    if (getType() != ePropertyType_ConstString) {
        dev_assert("Type missmatch.", __FILE__, __LINE__);
    }
}

// Every property class fits one block of the "Property" heap.
static_assert(sizeof(ReferenceProperty<AutoString>) <= 48, "properties fit 48-byte blocks");
static_assert(sizeof(ReferenceProperty<sColorF>) <= 48, "properties fit 48-byte blocks");
static_assert(sizeof(IndirectProperty<AutoString>) <= 48, "properties fit 48-byte blocks");
static_assert(sizeof(ObjectProperty) <= 48, "properties fit 48-byte blocks");
static_assert(sizeof(IndirectObjectProperty) <= 48, "properties fit 48-byte blocks");
static_assert(sizeof(ResourceProperty) <= 48, "properties fit 48-byte blocks");
static_assert(sizeof(IndirectResourceProperty) <= 48, "properties fit 48-byte blocks");
