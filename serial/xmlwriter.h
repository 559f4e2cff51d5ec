// XmlWriter: collects a tree of tags with attributes in memory and writes it
// out in one go, in the small XML of this system (elements and attributes
// only, values written as they are). It also remembers which objects were
// written, by id, so a shared object is written once per file. One owner, one
// thread; a writer writes one file.
#pragma once

#include "foundation/autostring.h"
#include "foundation/map.h"
#include "foundation/stack.h"
#include "foundation/vector.h"

class ObjectBase;
class Stream;
class TextStreamAccessor;

class XmlWriter {
public:
    struct sAttribute {
        AutoString mName;
        AutoString mValue;
    };

    // Owns its attributes and child tags.
    struct sTag {
        explicit sTag(AutoString const& name) : mName(name) {}
        ~sTag();
        sTag(sTag const&) = delete;
        sTag& operator=(sTag const&) = delete;

        AutoString mName;
        Vector<sAttribute> mAttributes;
        Vector<sTag> mTags;
    };

    // The root tag is open at once.
    explicit XmlWriter(char const* rootName);
    ~XmlWriter();

    XmlWriter(XmlWriter const&) = delete;
    XmlWriter& operator=(XmlWriter const&) = delete;

    // A child of the current tag, or a top-level tag when none is current.
    void openTag(AutoString const& name);
    void openTag(char const* name);
    void closeTag();
    // No test for a duplicate name; attributes keep the order of the calls.
    void addAttribute(AutoString const& name, AutoString const& value);

    ObjectBase* findObject(unsigned int id) const { return mObjects.find(id); }
    void registerObject(ObjectBase* object, unsigned int id) { mObjects.add(object, id); }

    // Closes the root and writes the declaration and every top-level tag.
    // Once only: a second call finds the root closed.
    void write(Stream* stream);

private:
    void writeTag(TextStreamAccessor* accessor, sTag const* tag);

    Stack<sTag> mStack;
    Vector<sTag> mTags;
    sTag* mpCurrentTag;
    u32 mTabCount;
    Map<ObjectBase> mObjects;
};
