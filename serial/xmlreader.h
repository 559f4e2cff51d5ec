// XmlReader: parses a whole file of this system's small XML (elements and
// attributes only) into a tree, then lets its caller walk it with openTag and
// closeTag. Any format fault is fatal, after a trace naming the file and
// line; a token too long for the string heap refuses the whole file instead.
// What a missing tag or attribute means is the caller's business. It also maps
// ids to the objects read so far, so a shared object is made once per file.
// One owner, one thread.
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

    // Reads the whole stream. Afterwards no tag is current. False when the
    // file was refused (a token longer than kTokenMax or than the string heap
    // can hold): a trace names the file and the reader holds no tag.
    bool parse(Stream* stream);

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
    // An owner (an owning object list) takes the object found under id;
    // false when another owner took it already, as a damaged file may ask.
    // Id 0 is never shared, so it is always free.
    bool claimObject(ObjectBase* object, unsigned int id);

    // Opens tagName; creates the object from its "typeinfo" when none is
    // given, lets it read itself and closes the tag again. Answers the object,
    // null when none could be made, or the given one unchanged without the tag.
    ObjectBase* read(ObjectBase* object, char const* tagName);

    // Longer tokens refuse the file: no heap of the program holds one.
    static constexpr u32 kTokenMax = 0x1000000;

private:
    sTag* readTag(TextStreamAccessor* accessor);
    // getChar and backforward of the accessor, counting lines for traces.
    int next(TextStreamAccessor* accessor);
    void back(TextStreamAccessor* accessor);
    // Traces the file and line, then the format assertion.
    [[noreturn]] void fail(char const* message, unsigned int sourceLine);
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
    // Doubles a full child or attribute list ahead of addLast, which grows
    // by 16: a file of many siblings is read in linear time.
    template <typename T>
    static void append(Vector<T>& vector, T* value);

    static constexpr u32 InternSize = 1024; // a power of two

    Vector<sTag> mTags;
    Map<ObjectBase> mObjects;
    Map<ObjectBase> mClaimed; // objects an owner took, by id
    sTag* mpCurrentTag;
    sTag* mpReading; // the tag readTag is building, not yet in the tree
    char const* mpPath; // of the stream being parsed, for traces
    u32 mLine;          // 1-based line of the character last read
    int mLastChar;      // the character last read, for back()
    bool mRefused;
    char* mpScratch;
    u32 mScratchSize;
    AutoString* mpInterned; // InternSize slots, made by the first parse
};
