#include "reflection/property.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "foundation/allocator.h"
#include "foundation/utils.h"
#include "reflection/objectbase.h"
#include "reflection/typeinfo.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"

ClassHeap PropertyBase::mHeap;
ResourcePropertyIntermediate::sResourceLink const* ResourcePropertyIntermediate::mpLink = nullptr;

namespace {

unsigned int const kTextSize = 64;

// The text of an attribute, "" when absent.
char const* readText(XmlReader* reader, char const* name)
{
    char const* text = reader->getAttribute(name).c_str();
    return (text != nullptr) ? text : "";
}

// Compound values read each attribute on its own; a missing one reads as 0.
long readLong(XmlReader* reader, char const* name)
{
    return strtol(readText(reader, name), nullptr, 10);
}

float readFloat(XmlReader* reader, char const* name)
{
    return static_cast<float>(strtod(readText(reader, name), nullptr));
}

void addInt(XmlWriter* writer, char const* name, int value)
{
    char text[kTextSize];
    snprintf(text, sizeof(text), "%d", value);
    writer->addAttribute(name, text);
}

void addFloat(XmlWriter* writer, char const* name, double value)
{
    char text[kTextSize];
    snprintf(text, sizeof(text), "%f", value);
    writer->addAttribute(name, text);
}

// ---------------------------------------------------------------------------
// The rules of each value type: its text, its numeric form and its attributes.
// Scalar types are saved as one "value" attribute holding their text;
// compound types as named attributes and never through their text.

template <typename T>
struct sValue;

// Integers show as "%d": the 64-bit kinds deliberately show their low 32 bits
// only, and a u32 above 2^31 shows negative. Text and numbers are cut to the
// type's width.
template <typename T>
struct sIntegerValue {
    static bool const Scalar = true;
    static char const* toText(char* buffer, T value)
    {
        snprintf(buffer, kTextSize, "%d", static_cast<int>(value));
        return buffer;
    }
    static bool fromText(char const* text, T& value)
    {
        value = static_cast<T>(strtoll(text, nullptr, 10));
        return true;
    }
    static long long toNumeric(T value) { return static_cast<long long>(value); }
    static bool fromNumeric(long long number, T& value)
    {
        value = static_cast<T>(number);
        return true;
    }
    static void writeAttributes(XmlWriter*, T const&) {}
    static bool readAttributes(XmlReader*, T&) { return false; }
};

template <>
struct sValue<s8> : sIntegerValue<s8> {};
template <>
struct sValue<s16> : sIntegerValue<s16> {};
template <>
struct sValue<s32> : sIntegerValue<s32> {};
template <>
struct sValue<s64> : sIntegerValue<s64> {};
template <>
struct sValue<u8> : sIntegerValue<u8> {};
template <>
struct sValue<u16> : sIntegerValue<u16> {};
template <>
struct sValue<u32> : sIntegerValue<u32> {};
template <>
struct sValue<u64> : sIntegerValue<u64> {};

// No numbers, no named attributes: the defaults of the non-integer kinds.
struct sPlainValue {
    template <typename T>
    static long long toNumeric(T const&)
    {
        return 0;
    }
    template <typename T>
    static bool fromNumeric(long long, T&)
    {
        return false;
    }
    template <typename T>
    static void writeAttributes(XmlWriter*, T const&)
    {
    }
    template <typename T>
    static bool readAttributes(XmlReader*, T&)
    {
        return false;
    }
};

template <>
struct sValue<bool> {
    static bool const Scalar = true;
    static char const* toText(char*, bool value) { return value ? "true" : "false"; }
    // Deliberately inverted: "true" sets false and any other text sets true.
    // Saved files carry this, so a saved bool comes back inverted.
    static bool fromText(char const* text, bool& value)
    {
        value = strcmp(text, "true") != 0;
        return true;
    }
    static long long toNumeric(bool value) { return value ? -1 : 0; }
    static bool fromNumeric(long long number, bool& value)
    {
        value = number != 0;
        return true;
    }
    static void writeAttributes(XmlWriter*, bool const&) {}
    static bool readAttributes(XmlReader*, bool&) { return false; }
};

template <>
struct sValue<float> : sPlainValue {
    static bool const Scalar = true;
    static char const* toText(char* buffer, float value)
    {
        snprintf(buffer, kTextSize, "%f", static_cast<double>(value));
        return buffer;
    }
    static bool fromText(char const* text, float& value)
    {
        value = static_cast<float>(strtod(text, nullptr));
        return true;
    }
};

template <>
struct sValue<double> : sPlainValue {
    static bool const Scalar = true;
    static char const* toText(char* buffer, double value)
    {
        snprintf(buffer, kTextSize, "%f", value);
        return buffer;
    }
    static bool fromText(char const* text, double& value)
    {
        value = strtod(text, nullptr);
        return true;
    }
};

template <>
struct sValue<sFixed> : sPlainValue {
    static bool const Scalar = true;
    static char const* toText(char* buffer, sFixed value)
    {
        snprintf(buffer, kTextSize, "%f", static_cast<double>(static_cast<float>(value)));
        return buffer;
    }
    static bool fromText(char const* text, sFixed& value)
    {
        value = sFixed(static_cast<float>(strtod(text, nullptr)));
        return true;
    }
};

template <>
struct sValue<char const*> : sPlainValue {
    static bool const Scalar = true;
    static char const* toText(char*, char const* value) { return (value != nullptr) ? value : ""; }
    static bool fromText(char const*, char const*&) { return false; }
};

template <>
struct sValue<sSize> : sPlainValue {
    static bool const Scalar = false;
    static char const* toText(char* buffer, sSize const& value)
    {
        snprintf(buffer, kTextSize, "(%d,%d)", static_cast<int>(value.width), static_cast<int>(value.height));
        return buffer;
    }
    static bool fromText(char const*, sSize&) { return false; }
    static void writeAttributes(XmlWriter* writer, sSize const& value)
    {
        addInt(writer, "width", static_cast<int>(value.width));
        addInt(writer, "height", static_cast<int>(value.height));
    }
    static bool readAttributes(XmlReader* reader, sSize& value)
    {
        value.width = static_cast<unsigned int>(readLong(reader, "width"));
        value.height = static_cast<unsigned int>(readLong(reader, "height"));
        return true;
    }
};

template <>
struct sValue<sPoint> : sPlainValue {
    static bool const Scalar = false;
    static char const* toText(char* buffer, sPoint const& value)
    {
        snprintf(buffer, kTextSize, "(%d,%d)", value.x, value.y);
        return buffer;
    }
    static bool fromText(char const*, sPoint&) { return false; }
    static void writeAttributes(XmlWriter* writer, sPoint const& value)
    {
        addInt(writer, "x", value.x);
        addInt(writer, "y", value.y);
    }
    static bool readAttributes(XmlReader* reader, sPoint& value)
    {
        value.x = static_cast<int>(readLong(reader, "x"));
        value.y = static_cast<int>(readLong(reader, "y"));
        return true;
    }
};

template <>
struct sValue<sTexcoord> : sPlainValue {
    static bool const Scalar = false;
    static char const* toText(char* buffer, sTexcoord const& value)
    {
        snprintf(buffer, kTextSize, "(%d,%d)", value.x, value.y);
        return buffer;
    }
    static bool fromText(char const*, sTexcoord&) { return false; }
    static void writeAttributes(XmlWriter* writer, sTexcoord const& value)
    {
        addInt(writer, "u", value.x);
        addInt(writer, "v", value.y);
    }
    static bool readAttributes(XmlReader* reader, sTexcoord& value)
    {
        value.x = static_cast<unsigned short>(readLong(reader, "u"));
        value.y = static_cast<unsigned short>(readLong(reader, "v"));
        return true;
    }
};

template <>
struct sValue<sRect> : sPlainValue {
    static bool const Scalar = false;
    static char const* toText(char* buffer, sRect const& value)
    {
        snprintf(buffer, kTextSize, "(%d,%d,%d,%d)", value.left, value.top, value.right, value.bottom);
        return buffer;
    }
    static bool fromText(char const*, sRect&) { return false; }
    static void writeAttributes(XmlWriter* writer, sRect const& value)
    {
        addInt(writer, "left", value.left);
        addInt(writer, "top", value.top);
        addInt(writer, "right", value.right);
        addInt(writer, "bottom", value.bottom);
    }
    static bool readAttributes(XmlReader* reader, sRect& value)
    {
        value.left = static_cast<int>(readLong(reader, "left"));
        value.top = static_cast<int>(readLong(reader, "top"));
        value.right = static_cast<int>(readLong(reader, "right"));
        value.bottom = static_cast<int>(readLong(reader, "bottom"));
        return true;
    }
};

template <>
struct sValue<sColor> : sPlainValue {
    static bool const Scalar = false;
    static char const* toText(char* buffer, sColor const& value)
    {
        snprintf(buffer, kTextSize, "(%d,%d,%d,%d)", value.r, value.g, value.b, value.a);
        return buffer;
    }
    static bool fromText(char const*, sColor&) { return false; }
    static void writeAttributes(XmlWriter* writer, sColor const& value)
    {
        addInt(writer, "red", value.r);
        addInt(writer, "green", value.g);
        addInt(writer, "blue", value.b);
        addInt(writer, "alpha", value.a);
    }
    static bool readAttributes(XmlReader* reader, sColor& value)
    {
        value.r = static_cast<u8>(readLong(reader, "red"));
        value.g = static_cast<u8>(readLong(reader, "green"));
        value.b = static_cast<u8>(readLong(reader, "blue"));
        value.a = static_cast<u8>(readLong(reader, "alpha"));
        return true;
    }
};

template <>
struct sValue<sColorF> : sPlainValue {
    static bool const Scalar = false;
    static char const* toText(char* buffer, sColorF const& value)
    {
        snprintf(buffer, kTextSize, "(%f,%f,%f,%f)", static_cast<double>(value.r), static_cast<double>(value.g),
                 static_cast<double>(value.b), static_cast<double>(value.a));
        return buffer;
    }
    static bool fromText(char const*, sColorF&) { return false; }
    static void writeAttributes(XmlWriter* writer, sColorF const& value)
    {
        addFloat(writer, "red", value.r);
        addFloat(writer, "green", value.g);
        addFloat(writer, "blue", value.b);
        addFloat(writer, "alpha", value.a);
    }
    static bool readAttributes(XmlReader* reader, sColorF& value)
    {
        value.r = readFloat(reader, "red");
        value.g = readFloat(reader, "green");
        value.b = readFloat(reader, "blue");
        value.a = readFloat(reader, "alpha");
        return true;
    }
};

template <>
struct sValue<sVector> : sPlainValue {
    static bool const Scalar = false;
    static char const* toText(char* buffer, sVector const& value)
    {
        snprintf(buffer, kTextSize, "(%f,%f)", static_cast<double>(static_cast<float>(value.x)),
                 static_cast<double>(static_cast<float>(value.y)));
        return buffer;
    }
    static bool fromText(char const*, sVector&) { return false; }
    static void writeAttributes(XmlWriter* writer, sVector const& value)
    {
        addFloat(writer, "x", static_cast<float>(value.x));
        addFloat(writer, "y", static_cast<float>(value.y));
    }
    static bool readAttributes(XmlReader* reader, sVector& value)
    {
        value.x = sFixed(readFloat(reader, "x"));
        value.y = sFixed(readFloat(reader, "y"));
        return true;
    }
};

#define HARBOR_PROPERTY_NAME(T, code, name) name,
char const* const kTypeNames[] = {"undefined", HARBOR_PROPERTY_TYPES(HARBOR_PROPERTY_NAME)};
#undef HARBOR_PROPERTY_NAME
static_assert(sizeof(kTypeNames) / sizeof(kTypeNames[0]) == ePropertyType_Num, "one name per property type");

} // namespace

// ---------------------------------------------------------------------------
// PropertyBase

PropertyBase::PropertyBase(unsigned int type, char const* name, unsigned int count)
    : mType(type), mCount(count), mIndex(0), mNameHash(Utils::hash(name)), mpName(name), mRefCount(0)
{
    if (count > MaxCount) {
        dev_assert("Property count overflow.", __FILE__, __LINE__);
    }
}

void PropertyBase::setIndex(unsigned int index)
{
    if (mCount == 0) {
        return;
    }
    if (index >= mCount) {
        dev_assert("Invalid index.", __FILE__, __LINE__);
    }
    mIndex = index;
}

// A property that was never added to a list (count 0) goes at its release too.
void PropertyBase::release()
{
    if (mRefCount <= 1) {
        mRefCount = 0;
        delete this;
        return;
    }
    --mRefCount;
}

char const* PropertyBase::getTypeNameOf(unsigned int type)
{
    return (type < ePropertyType_Num) ? kTypeNames[type] : kTypeNames[ePropertyType_Undefined];
}

void PropertyBase::writeCommonAttributes(XmlWriter* writer)
{
    writer->addAttribute("type", getTypeName());
    char text[kTextSize];
    snprintf(text, sizeof(text), "%d", getCount());
    writer->addAttribute("count", text);
    snprintf(text, sizeof(text), "%d", getIndex());
    writer->addAttribute("index", text);
}

void PropertyBase::serialize(XmlWriter* writer)
{
    writeCommonAttributes(writer);
    unsigned int const current = getIndex();
    if (getCount() < 2) {
        setIndex(0);
        writeUniqueAttributes(writer);
    } else {
        char name[kTextSize];
        char text[kTextSize];
        for (unsigned int i = 0; i < getCount(); ++i) {
            setIndex(i);
            snprintf(name, sizeof(name), "element%d", i);
            writer->openTag(name);
            snprintf(text, sizeof(text), "%d", i);
            writer->addAttribute("index", text);
            writeUniqueAttributes(writer);
            writer->closeTag();
        }
    }
    setIndex(current);
}

// "index" is written but never read: elements are found by their tag names.
void PropertyBase::deserialize(XmlReader* reader)
{
    if (!(reader->getAttribute("type") == getTypeName())) {
        DEV_TRACE("%s type missmatch.\n", getName());
        return;
    }
    AutoString const& count = reader->getAttribute("count");
    if (count.empty() || static_cast<unsigned int>(atoi(count.c_str())) != getCount()) {
        DEV_TRACE("%s counts missmatch.\n", getName());
        return;
    }
    if (getCount() <= 1) {
        readUniqueAttributes(reader);
        return;
    }
    unsigned int const current = getIndex();
    char name[kTextSize];
    for (unsigned int i = 0; i < getCount(); ++i) {
        snprintf(name, sizeof(name), "element%d", i);
        if (reader->openTag(name)) {
            setIndex(i);
            readUniqueAttributes(reader);
            reader->closeTag();
        } else {
            DEV_TRACE("%s array index(%d) not found.", getName(), i);
        }
    }
    setIndex(current);
}

// ---------------------------------------------------------------------------
// PropertyIntermediate

template <typename T>
void PropertyIntermediate<T>::writeUniqueAttributes(XmlWriter* writer)
{
    if (sValue<T>::Scalar) {
        char text[kTextSize];
        writer->addAttribute("value", getString(text, CurrentIndex));
    } else {
        sValue<T>::writeAttributes(writer, get(CurrentIndex));
    }
}

template <typename T>
void PropertyIntermediate<T>::readUniqueAttributes(XmlReader* reader)
{
    if (sValue<T>::Scalar) {
        setString(readText(reader, "value"));
        return;
    }
    T value = get(CurrentIndex);
    if (sValue<T>::readAttributes(reader, value)) {
        set(value, CurrentIndex);
    }
}

template <typename T>
char const* PropertyIntermediate<T>::getString(char* buffer, unsigned int index) const
{
    return sValue<T>::toText(buffer, get(index));
}

template <typename T>
void PropertyIntermediate<T>::setString(char const* text)
{
    T value = get(CurrentIndex);
    if (sValue<T>::fromText((text != nullptr) ? text : "", value)) {
        set(value, CurrentIndex);
    }
}

template <typename T>
long long PropertyIntermediate<T>::getNumeric(unsigned int index) const
{
    return sValue<T>::toNumeric(get(index));
}

template <typename T>
void PropertyIntermediate<T>::setNumeric(long long number, unsigned int index)
{
    T value = get(index);
    if (sValue<T>::fromNumeric(number, value)) {
        set(value, index);
    }
}

template class PropertyIntermediate<bool>;
template class PropertyIntermediate<s8>;
template class PropertyIntermediate<s16>;
template class PropertyIntermediate<s32>;
template class PropertyIntermediate<s64>;
template class PropertyIntermediate<u8>;
template class PropertyIntermediate<u16>;
template class PropertyIntermediate<u32>;
template class PropertyIntermediate<u64>;
template class PropertyIntermediate<float>;
template class PropertyIntermediate<double>;
template class PropertyIntermediate<sSize>;
template class PropertyIntermediate<sPoint>;
template class PropertyIntermediate<sRect>;
template class PropertyIntermediate<sColor>;
template class PropertyIntermediate<sColorF>;
template class PropertyIntermediate<sTexcoord>;
template class PropertyIntermediate<sFixed>;
template class PropertyIntermediate<sVector>;
template class PropertyIntermediate<char const*>;

// ---------------------------------------------------------------------------
// PropertyIntermediate<AutoString>

void PropertyIntermediate<AutoString>::writeUniqueAttributes(XmlWriter* writer)
{
    // Written even when the reader cannot take it back (empty, or holding
    // characters outside the value set).
    writer->addAttribute("value", get(CurrentIndex));
}

void PropertyIntermediate<AutoString>::readUniqueAttributes(XmlReader* reader)
{
    set(reader->getAttribute("value"), CurrentIndex);
}

char const* PropertyIntermediate<AutoString>::getString(char*, unsigned int index) const
{
    mText = get(index);
    return mText.empty() ? "" : mText.c_str();
}

void PropertyIntermediate<AutoString>::setString(char const* text)
{
    set(AutoString(text), CurrentIndex);
}

// ---------------------------------------------------------------------------
// Object properties

void ObjectPropertyIntermediate::writeUniqueAttributes(XmlWriter* writer)
{
    ObjectBase* object = get(CurrentIndex);
    if (object != nullptr) {
        object->serialize(writer, isStableObject(), 0);
    }
}

void ObjectPropertyIntermediate::readUniqueAttributes(XmlReader* reader)
{
    AutoString const& typeName = reader->getAttribute("typeinfo");
    AutoString const& stable = reader->getAttribute("stable");
    if (isStableObject()) {
        if (!(stable == "true")) {
            DEV_TRACE("%s stability missmatch.\n", getName());
            return;
        }
        ObjectBase* object = get(CurrentIndex);
        if (object == nullptr || !(typeName == object->getTypeInfo()->getName())) {
            DEV_TRACE("%s typeinfo missmatch.\n", getName());
            return;
        }
        object->deserialize(reader);
        return;
    }

    if (!(stable == "false")) {
        DEV_TRACE("%s stability missmatch.\n", getName());
        return;
    }
    AutoString const& idText = reader->getAttribute("id");
    if (idText.empty()) {
        DEV_TRACE("%s id not found.\n", getName());
        return;
    }
    unsigned int const id = static_cast<unsigned int>(strtoll(idText.c_str(), nullptr, 10));
    ObjectBase* object = reader->findObject(id);
    TypeInfo const* type = (object != nullptr) ? object->getTypeInfo() : TypeInfo::find(typeName.c_str());
    if (type != nullptr && !isAcceptable(type)) {
        // A damaged file names another class than the field holds.
        DEV_TRACE("%s typeinfo missmatch.\n", getName());
        return;
    }
    if (object != nullptr) {
        // Read at its first appearance; here only the reference is taken.
        setByType<ObjectBase*>(object, CurrentIndex);
        return;
    }
    object = (type != nullptr) ? type->newInstance() : nullptr;
    if (object == nullptr) {
        // Unknown, abstract or singleton classes alike: nothing can be made.
        DEV_TRACE("%s typeinfo not found.\n", getName());
        return;
    }
    // Registered before reading, so that a reference back from deeper in the
    // file finds it.
    reader->registerObject(object, id);
    setByType<ObjectBase*>(object, CurrentIndex);
    object->deserialize(reader);
}

bool ObjectPropertyIntermediate::isAcceptable(TypeInfo const*) const
{
    return true;
}

bool ObjectProperty::isAcceptable(TypeInfo const* type) const
{
    return !mPointerField || (type != nullptr && type->isDerivedFrom(mpClass));
}

char const* ObjectPropertyIntermediate::getString(char*, unsigned int index) const
{
    ObjectBase* object = get(index);
    return (object != nullptr) ? object->getTypeInfo()->getName() : "null";
}

ObjectBase* ObjectProperty::get(unsigned int) const
{
    if (!mPointerField) {
        return mpObject;
    }
    return (mppObject != nullptr) ? *mppObject : nullptr;
}

void ObjectProperty::set(ObjectBase* value, unsigned int)
{
    if (!mPointerField) {
        if (mpObject != nullptr && value != nullptr && value != mpObject) {
            mpObject->copyProperties(value);
        }
        return;
    }
    if (mppObject == nullptr) {
        return;
    }
    if (!mStable) {
        // A plain reference: the old object is neither deleted nor released.
        *mppObject = value;
        return;
    }
    if (*mppObject != nullptr && value != nullptr && value != *mppObject) {
        (*mppObject)->copyProperties(value);
    }
}

// ---------------------------------------------------------------------------
// Resource properties

ResourcePropertyIntermediate::ResourcePropertyIntermediate(char const* name, TypeInfo const* type, unsigned int count)
    : PropertyBase(ePropertyType_Resource, name, count), mpTypeInfo(type)
{
    if (type == nullptr || !type->isDerivedFrom("ResourceBase")) {
        dev_assert("Invalid TypeInfo.", __FILE__, __LINE__);
    }
}

bool ResourcePropertyIntermediate::isAcceptable(ResourceBase* value) const
{
    if (value == nullptr) {
        return true;
    }
    if (mpLink == nullptr) {
        return false;
    }
    TypeInfo const* type = mpLink->mpGetTypeInfo(value);
    return type != nullptr && type->isDerivedFrom(mpTypeInfo);
}

// The file names a resource without its root folder and extension, so the
// same text serves the intermediate and the native form.
void ResourcePropertyIntermediate::writeUniqueAttributes(XmlWriter* writer)
{
    ResourceBase* resource = get(CurrentIndex);
    if (resource == nullptr || mpLink == nullptr) {
        return;
    }
    writer->addAttribute("typeinfo", mpLink->mpGetTypeInfo(resource)->getName());

    char const* path = mpLink->mpGetPath(resource);
    path = (path != nullptr) ? path : "";
    char const* slash = strchr(path, '/');
    AutoString text((slash != nullptr) ? slash + 1 : path);
    char const* extension = mpLink->mpGetExtension(resource);
    if (extension != nullptr && !text.empty()) {
        AutoString suffix(".");
        suffix += extension;
        u32 const found = text.findLast(suffix);
        if (found != AutoString::NotFound) {
            text = text.substr(0, found);
        }
    }
    writer->addAttribute("path", text);
}

void ResourcePropertyIntermediate::readUniqueAttributes(XmlReader* reader)
{
    AutoString const& path = reader->getAttribute("path");
    if (path.empty()) {
        return;
    }
    reader->getAttribute("container_typeinfo"); // written by older tools; ignored
    TypeInfo const* type = TypeInfo::find(reader->getAttribute("typeinfo").c_str());
    if (type == nullptr) {
        DEV_TRACE("%s typeinfo not found.\n", getName());
        return;
    }
    ResourceBase* resource =
        (mpLink != nullptr) ? mpLink->mpCreateResource(path.c_str(), type) : nullptr;
    if (resource == nullptr) {
        DEV_TRACE("Resource path=\"%s\" not found.\n", path.c_str());
        return;
    }
    setByType<ResourceBase*>(resource, CurrentIndex);
    // The property now holds its own reference; createResource's goes.
    mpLink->mpRelease(resource);
}

char const* ResourcePropertyIntermediate::getString(char*, unsigned int index) const
{
    ResourceBase* resource = get(index);
    if (resource == nullptr || mpLink == nullptr) {
        return "null";
    }
    char const* path = mpLink->mpGetPath(resource);
    return (path != nullptr) ? path : "";
}

void ResourceProperty::set(ResourceBase* value, unsigned int index)
{
    ResourceBase*& slot = mppResource[resolveIndex(index)];
    if (slot == value || !isAcceptable(value)) {
        return;
    }
    sResourceLink const* link = getResourceLink();
    if (slot != nullptr) {
        ResourceBase* old = slot;
        slot = nullptr;
        if (link != nullptr) {
            link->mpRelease(old);
        }
    }
    slot = value;
    if (value != nullptr) {
        link->mpAddRef(value);
    }
}

void IndirectResourceProperty::set(ResourceBase* value, unsigned int index)
{
    if (mpAccessor->get(index) == value || !isAcceptable(value)) {
        return;
    }
    mpAccessor->set(value, index);
}
