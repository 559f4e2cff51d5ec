// XmlReader: parses a whole file of this system's small XML (elements and
// attributes only) into a tree, then lets its caller walk it with openTag and
// closeTag. Any format fault is fatal; what a missing tag or attribute means
// is the caller's business. It also maps ids to the objects read so far, so a
// shared object is made once per file. One owner, one thread.
#pragma once

#include "foundation/autostring.h"
#include "foundation/map.h"
#include "foundation/vector.h"

class ObjectBase;
class Stream;
class TextStreamAccessor;

class XmlReader {
public:
    struct sAttribute {
        AutoString mName;
        AutoString mValue;
    };

    // Owns its child tags and attributes.
    struct sTag {
        sTag() : mpParent(nullptr), mNameHash(0), mEmpty(false), mEndTag(false) {}
        ~sTag();
        sTag(sTag const&) = delete;
        sTag& operator=(sTag const&) = delete;

        AutoString mName;
        sTag* mpParent;
        Vector<sTag> mTags;
        Vector<sAttribute> mAttributes;
        u32 mNameHash;  // Utils::hash of mName, so look-ups compare numbers first
        bool mEmpty;    // closed itself with "/>"
        bool mEndTag;   // a closing tag; exists only while parsing
    };

    XmlReader();
    ~XmlReader();

    XmlReader(XmlReader const&) = delete;
    XmlReader& operator=(XmlReader const&) = delete;

    // Reads the whole stream. Afterwards no tag is current.
    void parse(Stream* stream);

    // The first child of that name of the current tag (a top-level tag when
    // none is current) becomes current. False, with nothing changed, if none.
    bool openTag(AutoString const& name);
    bool openTag(char const* name);
    void closeTag();
    // The first attribute of that name on the current tag, or AutoString::Null.
    // Valid while the reader lives.
    AutoString const& getAttribute(char const* name) const;

    ObjectBase* findObject(unsigned int id) const { return mObjects.find(id); }
    // Id 0 is never stored (a damaged id reads as 0): such an object cannot be
    // referred to again, and a second reference makes a new object.
    void registerObject(ObjectBase* object, unsigned int id);

    // Opens tagName; creates the object from its "typeinfo" when none is
    // given, lets it read itself and closes the tag again. Answers the object,
    // null when none could be made, or the given one unchanged without the tag.
    ObjectBase* read(ObjectBase* object, char const* tagName);

private:
    sTag* readTag(TextStreamAccessor* accessor);
    void skipSpace(TextStreamAccessor* accessor);
    // Both collect into mpScratch and answer the length.
    u32 getWord(TextStreamAccessor* accessor);
    u32 getValue(TextStreamAccessor* accessor);
    u32 getToken(TextStreamAccessor* accessor, bool (*accept)(int));
    void putScratch(u32 length, char character);
    // The scratch text as a string, shared with an earlier equal one where
    // the cache has it: names and most values repeat throughout a file.
    AutoString const& intern(u32 length);
    static void deleteTags(Vector<sTag>& tags);

    static constexpr u32 InternSize = 1024; // a power of two

    Vector<sTag> mTags;
    Map<ObjectBase> mObjects;
    sTag* mpCurrentTag;
    char* mpScratch;
    u32 mScratchSize;
    AutoString* mpInterned; // InternSize slots, made by the first parse
};
