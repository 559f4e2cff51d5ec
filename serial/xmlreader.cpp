#include "serial/xmlreader.h"

#include <cstdlib>
#include <cstring>

#include "foundation/debug.h"
#include "foundation/stack.h"
#include "foundation/utils.h"
#include "reflection/objectbase.h"
#include "reflection/typeinfo.h"
#include "serial/stream.h"

namespace {

bool isWordCharacter(int c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool isValueCharacter(int c)
{
    return isWordCharacter(c) || c == '+' || c == '-' || c == '<' || c == '>' || c == '.' || c == '/';
}

// The characters that end a word or value and stay consumed; any other
// terminator is put back.
bool isConsumedTerminator(int c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == -1;
}

} // namespace

// ---------------------------------------------------------------------------
// Tree

XmlReader::sTag::~sTag()
{
    for (u32 i = 0; i < mAttributes.size(); ++i) {
        delete mAttributes[i];
    }
    deleteTags(mTags);
}

// Without recursion: a file may nest deeper than the stack would allow.
void XmlReader::deleteTags(Vector<sTag>& tags)
{
    Stack<sTag> pending;
    for (u32 i = 0; i < tags.size(); ++i) {
        pending.push(tags[i]);
    }
    tags.clear();
    while (!pending.empty()) {
        sTag* tag = pending.pop();
        for (u32 i = 0; i < tag->mTags.size(); ++i) {
            pending.push(tag->mTags[i]);
        }
        tag->mTags.clear();
        delete tag;
    }
}

XmlReader::XmlReader() : mpCurrentTag(nullptr), mpScratch(nullptr), mScratchSize(0), mpInterned(nullptr) {}

XmlReader::~XmlReader()
{
    deleteTags(mTags);
    delete[] mpScratch;
    delete[] mpInterned;
}

// ---------------------------------------------------------------------------
// Parsing

void XmlReader::parse(Stream* stream)
{
    TextStreamAccessor* accessor = stream->getTextAccessor();
    if (accessor == nullptr) {
        dev_assert("Stream don't have text accessor.", __FILE__, __LINE__);
    }
    if (mpInterned == nullptr) {
        mpInterned = new AutoString[InternSize];
    }
    while (sTag* tag = readTag(accessor)) {
        if (tag->mEndTag) {
            // With no tag open there is nothing a closing tag could match.
            if (mpCurrentTag == nullptr || !(tag->mName == mpCurrentTag->mName)) {
                dev_assert("Invalid end tag.", __FILE__, __LINE__);
            }
            mpCurrentTag = mpCurrentTag->mpParent;
            delete tag;
            continue;
        }
        if (mpCurrentTag != nullptr) {
            mpCurrentTag->mTags.addLast(tag);
        } else {
            mTags.addLast(tag);
        }
        tag->mpParent = mpCurrentTag;
        if (!tag->mEmpty) {
            mpCurrentTag = tag;
        }
    }
    if (mpCurrentTag != nullptr) {
        dev_assert("Unclosed tag exists.", __FILE__, __LINE__);
    }
}

XmlReader::sTag* XmlReader::readTag(TextStreamAccessor* accessor)
{
    int c;
    for (;;) {
        // Everything between tags is dropped.
        do {
            c = accessor->getChar();
            if (c == -1) {
                return nullptr;
            }
        } while (c != '<');
        c = accessor->getChar();
        if (c != '?') {
            break;
        }
        // A declaration: the only construct that is skipped.
        do {
            c = accessor->getChar();
        } while (c != '>' && c != -1);
    }

    if (c == '/') {
        u32 length = getWord(accessor);
        if (length == 0) {
            dev_assert("Invalid tag.", __FILE__, __LINE__);
        }
        sTag* tag = new sTag;
        tag->mName = intern(length);
        tag->mEndTag = true;
        // The rest up to ">" goes with the text before the next tag.
        return tag;
    }

    accessor->backforward();
    u32 length = getWord(accessor);
    if (length == 0) {
        dev_assert("Invalid tag.", __FILE__, __LINE__);
    }
    sTag* tag = new sTag;
    tag->mName = intern(length);
    tag->mNameHash = Utils::hash(mpScratch);

    for (;;) {
        length = getWord(accessor);
        if (length != 0) {
            sAttribute* attribute = new sAttribute;
            attribute->mName = intern(length);
            tag->mAttributes.addLast(attribute);
            skipSpace(accessor);
            if (accessor->getChar() != '=') {
                dev_assert("Invalid attribute format.", __FILE__, __LINE__);
            }
            skipSpace(accessor);
            if (accessor->getChar() != '"') {
                dev_assert("Invalid attribute format.", __FILE__, __LINE__);
            }
            skipSpace(accessor);
            length = getValue(accessor);
            if (length == 0) {
                dev_assert("Invalid attribute value.", __FILE__, __LINE__);
            }
            attribute->mValue = intern(length);
            if (accessor->getChar() != '"') {
                dev_assert("Invalid attribute format.", __FILE__, __LINE__);
            }
            continue;
        }
        // No further attribute: whatever stands before "/" or ">" is dropped.
        skipSpace(accessor);
        do {
            c = accessor->getChar();
            if (c == -1) {
                dev_assert("Invalid tag.", __FILE__, __LINE__);
            }
        } while (c != '/' && c != '>');
        if (c == '/') {
            c = accessor->getChar();
            tag->mEmpty = true;
        }
        if (c != '>') {
            dev_assert("Invalid tag.", __FILE__, __LINE__);
        }
        return tag;
    }
}

// Tab, line feed, blank and zero are space; a carriage return is not.
void XmlReader::skipSpace(TextStreamAccessor* accessor)
{
    for (;;) {
        int c = accessor->getChar();
        if (c == -1) {
            return;
        }
        if (c != '\t' && c != '\n' && c != ' ' && c != 0) {
            accessor->backforward();
            return;
        }
    }
}

void XmlReader::putScratch(u32 length, char character)
{
    if (length + 1 >= mScratchSize) {
        u32 size = (mScratchSize == 0) ? 256 : mScratchSize * 2;
        char* scratch = new char[size];
        if (length != 0) {
            memcpy(scratch, mpScratch, length);
        }
        delete[] mpScratch;
        mpScratch = scratch;
        mScratchSize = size;
    }
    mpScratch[length] = character;
}

AutoString const& XmlReader::intern(u32 length)
{
    // FNV-1a over the text: only a slot number, never stored.
    u32 hash = 2166136261u;
    for (u32 i = 0; i < length; ++i) {
        hash = (hash ^ static_cast<u8>(mpScratch[i])) * 16777619u;
    }
    AutoString& slot = mpInterned[hash & (InternSize - 1)];
    if (slot.empty() || strcmp(slot.c_str(), mpScratch) != 0) {
        slot = mpScratch;
    }
    return slot;
}

u32 XmlReader::getWord(TextStreamAccessor* accessor)
{
    return getToken(accessor, &isWordCharacter);
}

u32 XmlReader::getValue(TextStreamAccessor* accessor)
{
    return getToken(accessor, &isValueCharacter);
}

// Reads the run of accepted characters into the scratch buffer; the first
// other character is given back unless it ends the token by itself.
u32 XmlReader::getToken(TextStreamAccessor* accessor, bool (*accept)(int))
{
    skipSpace(accessor);
    u32 length = 0;
    int c;
    for (;;) {
        c = accessor->getChar();
        if (!accept(c)) {
            break;
        }
        putScratch(length++, static_cast<char>(c));
    }
    if (!isConsumedTerminator(c)) {
        accessor->backforward();
    }
    putScratch(length, '\0');
    return length;
}

// ---------------------------------------------------------------------------
// Navigation

bool XmlReader::openTag(char const* name)
{
    Vector<sTag> const& tags = (mpCurrentTag != nullptr) ? mpCurrentTag->mTags : mTags;
    u32 const hash = Utils::hash(name);
    for (u32 i = 0; i < tags.size(); ++i) {
        sTag* tag = tags[i];
        if (tag->mNameHash == hash && AutoString::isEqual(tag->mName.c_str(), name)) {
            mpCurrentTag = tag;
            return true;
        }
    }
    return false;
}

bool XmlReader::openTag(AutoString const& name)
{
    return openTag(name.c_str());
}

void XmlReader::closeTag()
{
    if (mpCurrentTag == nullptr) {
        dev_assert("No tag is opened.", __FILE__, __LINE__);
    }
    mpCurrentTag = mpCurrentTag->mpParent;
}

AutoString const& XmlReader::getAttribute(char const* name) const
{
    if (mpCurrentTag == nullptr) {
        dev_assert("No tag is opened.", __FILE__, __LINE__);
    }
    Vector<sAttribute> const& attributes = mpCurrentTag->mAttributes;
    for (u32 i = 0; i < attributes.size(); ++i) {
        if (AutoString::isEqual(attributes[i]->mName.c_str(), name)) {
            return attributes[i]->mValue;
        }
    }
    return AutoString::Null;
}

void XmlReader::registerObject(ObjectBase* object, unsigned int id)
{
    if (id != 0 && mObjects.find(id) == nullptr) {
        mObjects.add(object, id);
    }
}

ObjectBase* XmlReader::read(ObjectBase* object, char const* tagName)
{
    if (!openTag(tagName)) {
        return object;
    }
    if (object == nullptr) {
        AutoString const& typeName = getAttribute("typeinfo");
        if (typeName.empty()) {
            DEV_TRACE("%s typeinfo not found.\n", tagName);
        } else {
            TypeInfo const* type = TypeInfo::find(typeName.c_str());
            if (type == nullptr) {
                DEV_TRACE("%s undefined typeinfo \"%s\".\n", tagName, typeName.c_str());
            } else {
                object = type->newInstance();
            }
        }
    }
    if (object != nullptr) {
        object->deserialize(this);
    }
    closeTag();
    return object;
}
