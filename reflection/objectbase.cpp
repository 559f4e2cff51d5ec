#include "reflection/objectbase.h"

#include <cstdint>
#include <cstdio>

#include "foundation/debug.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"

TypeInfo ObjectBase::mUniqueTypeInfo("ObjectBase", nullptr, TypeInfo::eAttribute_Concrete);
ClassHeap ObjectBase::mObjectHeap;

void ObjectBase::makePropertyList(PropertyList&) {}

void ObjectBase::makeControlList(List<ControlBase>&) {}

void ObjectBase::makeUIList(List<UIBase>& list)
{
    List<ControlBase> controls;
    makeControlList(controls);
    for (List<ControlBase>::Iterator it = controls.begin(); it != controls.end(); ++it) {
        UIBase* widget = Utils::makeUIFromControl(*it);
        if (widget != nullptr) {
            list.addLast(widget);
        }
        delete *it;
    }
}

// The id is the object's address: a token unique within the file. The
// reader keeps its low 32 bits, which stay unique for objects of one heap.
void ObjectBase::serialize(XmlWriter* writer, bool stable, unsigned int)
{
    writer->addAttribute("typeinfo", getTypeInfo()->getName());
    char text[32];
    snprintf(text, sizeof(text), "%lld", static_cast<long long>(reinterpret_cast<intptr_t>(this)));
    writer->addAttribute("id", text);
    if (stable) {
        writer->addAttribute("stable", "true");
        serializeProperties(writer);
        return;
    }
    writer->addAttribute("stable", "false");
    unsigned int const id = static_cast<unsigned int>(reinterpret_cast<uintptr_t>(this));
    // Written once: a second reference is the bare tag, which keeps the
    // object's identity in the file.
    if (writer->findObject(id) == nullptr) {
        writer->registerObject(this, id);
        serializeProperties(writer);
    }
}

void ObjectBase::serializeProperties(XmlWriter* writer)
{
    PropertyList list;
    makePropertyList(list);
    for (PropertyList::Iterator it = list.begin(); it != list.end(); ++it) {
        writer->openTag((*it)->getName());
        (*it)->serialize(writer);
        writer->closeTag();
    }
}

// The object's own list drives loading: tags no property asks for are
// ignored, and the order of tags in the file means nothing.
void ObjectBase::deserialize(XmlReader* reader)
{
    PropertyList list;
    makePropertyList(list);
    for (PropertyList::Iterator it = list.begin(); it != list.end(); ++it) {
        if (reader->openTag((*it)->getName())) {
            (*it)->deserialize(reader);
            reader->closeTag();
        } else {
            DEV_TRACE("Property %s not found.\n", (*it)->getName());
        }
    }
}

// Only integers and objects are copied; bool, floats, the compound values,
// strings and resources are deliberately left as they are.
void ObjectBase::copyProperties(ObjectBase* source)
{
    PropertyList sourceList;
    source->makePropertyList(sourceList);
    if (sourceList.empty()) {
        return;
    }
    PropertyList targetList;
    makePropertyList(targetList);
    if (targetList.empty()) {
        return;
    }
    for (PropertyList::Iterator it = sourceList.begin(); it != sourceList.end(); ++it) {
        PropertyBase* from = *it;
        PropertyBase* to = targetList.find(from->getNameHash(), from->getType());
        if (to == nullptr) {
            continue;
        }
        switch (from->getType()) {
        case ePropertyType_S8:
        case ePropertyType_S16:
        case ePropertyType_S32:
        case ePropertyType_S64:
        case ePropertyType_U8:
        case ePropertyType_U16:
        case ePropertyType_U32:
        case ePropertyType_U64:
            to->setNumeric(from->getNumeric(PropertyBase::CurrentIndex), PropertyBase::CurrentIndex);
            break;
        case ePropertyType_Object:
            to->setByType<ObjectBase*>(from->getByType<ObjectBase*>(PropertyBase::CurrentIndex),
                                       PropertyBase::CurrentIndex);
            break;
        default:
            break;
        }
    }
}
