#include "reflection/objectlist.h"

#include <cstdio>
#include <cstdlib>

#include "foundation/debug.h"
#include "foundation/utils.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"

IMPLEMENT_OBJECT_TYPEINFO(ObjectList, "ObjectBase");

// ---------------------------------------------------------------------------
// PropertyList

PropertyList::~PropertyList()
{
    for (Iterator it = begin(); it != end(); ++it) {
        (*it)->release();
    }
}

void PropertyList::add(PropertyBase* property)
{
    property->addRef();
    addLast(property);
}

PropertyBase* PropertyList::find(unsigned int nameHash, unsigned int type) const
{
    for (Iterator it = begin(); it != end(); ++it) {
        if ((*it)->getNameHash() == nameHash && (*it)->getType() == type) {
            return *it;
        }
    }
    return nullptr;
}

PropertyBase* PropertyList::find(char const* name, unsigned int type) const
{
    return find(Utils::hash(name), type);
}

// ---------------------------------------------------------------------------
// ObjectList

ObjectList::ObjectList() : mIndex(0), mContentStability(true), mDeserializing(false) {}

ObjectList::~ObjectList()
{
    if (!mContentStability) {
        deleteElements();
    }
}

void ObjectList::deleteElements()
{
    for (Iterator it = mList.begin(); it != mList.end(); ++it) {
        delete *it;
    }
}

void ObjectList::setContentStability(bool stable)
{
    if (!mList.empty()) {
        dev_assert("List is not empty.", __FILE__, __LINE__);
    }
    mContentStability = stable;
}

ObjectBase* ObjectList::getObject() const
{
    if (mIndex >= size()) {
        dev_assert("Index overflow.", __FILE__, __LINE__);
    }
    return mList[mIndex];
}

void ObjectList::setObject(ObjectBase* object)
{
    if (mIndex >= size()) {
        dev_assert("Index overflow.", __FILE__, __LINE__);
    }
    Iterator slot = mList.begin() + static_cast<int>(mIndex);
    if (!mContentStability) {
        delete *slot;
    }
    slot.getNode()->mpValue = object;
}

void ObjectList::setCount(unsigned int count)
{
    if (!mContentStability) {
        deleteElements();
    }
    mList.clear();
    mList.reserve(count);
    for (unsigned int i = 0; i < count; ++i) {
        mList.addLast(nullptr);
    }
}

void ObjectList::makePropertyList(PropertyList& list)
{
    list.add(new IndirectProperty<unsigned int>("count", this, &ObjectList::size, &ObjectList::setCount));
    // The blank in the name keeps it out of XML tags: serialize is our own.
    list.add(new ReferenceProperty<bool>("stable contents", &mContentStability));
    for (unsigned int i = 0; i < size(); ++i) {
        list.add(new ReferenceProperty<unsigned int>("index", &mIndex));
        list.add(new IndirectObjectProperty("member", this, &ObjectList::getObject, &ObjectList::setObject));
    }
}

void ObjectList::serialize(XmlWriter* writer, bool stable, unsigned int)
{
    char text[64];
    writer->addAttribute("typeinfo", getTypeInfo()->getName());
    snprintf(text, sizeof(text), "%lld", static_cast<long long>(reinterpret_cast<intptr_t>(this)));
    writer->addAttribute("id", text);
    snprintf(text, sizeof(text), "%d", size());
    writer->addAttribute("list_count", text);
    writer->addAttribute("stable", stable ? "true" : "false");

    unsigned int const id = static_cast<unsigned int>(reinterpret_cast<uintptr_t>(this));
    if (!stable && writer->findObject(id) == nullptr) {
        writer->registerObject(this, id);
    }
    // Null entries have no tag; "list_count" keeps them.
    unsigned int i = 0;
    for (Iterator it = mList.begin(); it != mList.end(); ++it, ++i) {
        if (*it == nullptr) {
            continue;
        }
        snprintf(text, sizeof(text), "element%d", i);
        writer->openTag(text);
        (*it)->serialize(writer, mContentStability, i);
        writer->closeTag();
    }
}

void ObjectList::deserialize(XmlReader* reader)
{
    // A damaged file may name this list again inside itself; reading it anew
    // there would rebuild the list under the loop that fills it.
    if (mDeserializing) {
        DEV_TRACE("ObjectList is read inside itself.\n");
        return;
    }
    mDeserializing = true;
    deserializeElements(reader);
    mDeserializing = false;
}

void ObjectList::deserializeElements(XmlReader* reader)
{
    AutoString const& countText = reader->getAttribute("list_count");
    char name[64];

    if (mContentStability) {
        unsigned int const count = static_cast<unsigned int>(atoi(countText.empty() ? "0" : countText.c_str()));
        if (size() != count) {
            DEV_TRACE("Object count mismatch.\n");
            return;
        }
        unsigned int i = 0;
        for (Iterator it = mList.begin(); it != mList.end(); ++it, ++i) {
            snprintf(name, sizeof(name), "element%d", i);
            if (!reader->openTag(name)) {
                continue;
            }
            AutoString const& idText = reader->getAttribute("id");
            if (idText.empty()) {
                DEV_TRACE("element%d id not found.\n", i);
            } else if (*it == nullptr) {
                DEV_TRACE("Content is NULL.\n");
            } else if ((*it)->getTypeInfo()->getID() != static_cast<u32>(strtoll(idText.c_str(), nullptr, 10))) {
                // Deliberately the type id, where serialize writes the
                // address: stable contents load only from files that hold
                // the type id here.
                DEV_TRACE("TypeID mismatch.\n");
            } else {
                (*it)->deserialize(reader);
            }
            reader->closeTag();
        }
        return;
    }

    if (countText.empty()) {
        DEV_TRACE("count not found.\n");
        setCount(0);
        return;
    }
    long long const count = strtoll(countText.c_str(), nullptr, 10);
    if (count < 0 || count > MaxCount) {
        DEV_TRACE("Object count %lld out of range.\n", count);
        setCount(0);
        return;
    }
    setCount(static_cast<unsigned int>(count));
    unsigned int i = 0;
    for (Iterator it = mList.begin(); it != mList.end(); ++it, ++i) {
        snprintf(name, sizeof(name), "element%d", i);
        if (!reader->openTag(name)) {
            continue;
        }
        AutoString const& idText = reader->getAttribute("id");
        if (idText.empty()) {
            DEV_TRACE("element%d id not found.\n", i);
            reader->closeTag();
            continue;
        }
        unsigned int const id = static_cast<unsigned int>(strtoll(idText.c_str(), nullptr, 10));
        ObjectBase* object = reader->findObject(id);
        if (object == nullptr) {
            TypeInfo const* type = TypeInfo::find(reader->getAttribute("typeinfo").c_str());
            object = (type != nullptr) ? type->newInstance() : nullptr;
            if (object == nullptr) {
                DEV_TRACE("typeinfo not found.\n");
                reader->closeTag();
                continue;
            }
            reader->registerObject(object, id);
        }
        // The list deletes its elements: one object twice (two elements, or
        // two lists, with one id) or the list itself would be deleted twice.
        if (object == this || !reader->claimObject(object, id)) {
            DEV_TRACE("element%d id %u is owned already.\n", i, id);
            reader->closeTag();
            continue;
        }
        // A known object is read again from this tag, unlike an object
        // property's second reference.
        object->deserialize(reader);
        it.getNode()->mpValue = object;
        reader->closeTag();
    }
}
