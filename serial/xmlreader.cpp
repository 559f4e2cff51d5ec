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

XmlReader::XmlReader()
    : mpCurrentTag(nullptr), mpReading(nullptr), mpPath(nullptr), mLine(1), mLastChar(-1), mRefused(false),
      mpScratch(nullptr), mScratchSize(0), mpInterned(nullptr)
{
}

XmlReader::~XmlReader()
{
    delete mpReading;
    deleteTags(mTags);
    delete[] mpScratch;
    delete[] mpInterned;
}

// ---------------------------------------------------------------------------
// Parsing

bool XmlReader::parse(Stream* stream)
{
    TextStreamAccessor* accessor = stream->getTextAccessor();
    if (accessor == nullptr) {
        dev_assert("Stream don't have text accessor.", __FILE__, __LINE__);
    }
    if (mpInterned == nullptr) {
        mpInterned = new AutoString[InternSize];
    }
    mpPath = stream->getFullPath();
    mLine = 1;
    mRefused = false;
    while (sTag* tag = readTag(accessor)) {
        mpReading = nullptr;
        if (mRefused) {
            delete tag;
            break;
        }
        if (tag->mEndTag) {
            // With no tag open there is nothing a closing tag could match.
            if (mpCurrentTag == nullptr || !(tag->mName == mpCurrentTag->mName)) {
                delete tag;
                fail("Invalid end tag.", __LINE__);
            }
            mpCurrentTag = mpCurrentTag->mpParent;
            delete tag;
            continue;
        }
        append((mpCurrentTag != nullptr) ? mpCurrentTag->mTags : mTags, tag);
        tag->mpParent = mpCurrentTag;
        if (!tag->mEmpty) {
            mpCurrentTag = tag;
        }
    }
    if (mRefused) {
        DEV_TRACE("%s(%u) : token too long, file refused.\n", mpPath != nullptr ? mpPath : "", mLine);
        deleteTags(mTags);
        mpCurrentTag = nullptr;
        mpPath = nullptr;
        return false;
    }
    if (mpCurrentTag != nullptr) {
        fail("Unclosed tag exists.", __LINE__);
    }
    mpPath = nullptr;
    return true;
}

template <typename T>
void XmlReader::append(Vector<T>& vector, T* value)
{
    if (vector.size() >= 16 && vector.size() == vector.getCapacity()) {
        vector.reserve(vector.size() * 2);
    }
    vector.addLast(value);
}

int XmlReader::next(TextStreamAccessor* accessor)
{
    mLastChar = accessor->getChar();
    if (mLastChar == '\n') {
        ++mLine;
    }
    return mLastChar;
}

void XmlReader::back(TextStreamAccessor* accessor)
{
    if (mLastChar == '\n') {
        --mLine;
    }
    mLastChar = -1;
    accessor->backforward();
}

void XmlReader::fail(char const* message, unsigned int sourceLine)
{
    DEV_TRACE("%s(%u) : damaged file.\n", mpPath != nullptr ? mpPath : "", mLine);
    dev_assert(message, __FILE__, sourceLine);
}

XmlReader::sTag* XmlReader::readTag(TextStreamAccessor* accessor)
{
    int c;
    for (;;) {
        // Everything between tags is dropped.
        do {
            c = next(accessor);
            if (c == -1) {
                return nullptr;
            }
        } while (c != '<');
        c = next(accessor);
        if (c != '?') {
            break;
        }
        // A declaration: the only construct that is skipped.
        do {
            c = next(accessor);
        } while (c != '>' && c != -1);
    }

    if (c == '/') {
        u32 length = getWord(accessor);
        if (length == 0) {
            fail("Invalid tag.", __LINE__);
        }
        sTag* tag = new sTag;
        tag->mName = intern(length);
        tag->mEndTag = true;
        // The rest up to ">" goes with the text before the next tag.
        return tag;
    }

    back(accessor);
    u32 length = getWord(accessor);
    if (length == 0) {
        fail("Invalid tag.", __LINE__);
    }
    // Held by the reader until parse takes it, so that nothing is lost
    // when a format fault ends the parse here.
    sTag* tag = mpReading = new sTag;
    tag->mName = intern(length);
    tag->mNameHash = Utils::hash(mpScratch);

    for (;;) {
        length = getWord(accessor);
        if (length != 0) {
            sAttribute* attribute = new sAttribute;
            attribute->mName = intern(length);
            append(tag->mAttributes, attribute);
            skipSpace(accessor);
            if (next(accessor) != '=') {
                fail("Invalid attribute format.", __LINE__);
            }
            skipSpace(accessor);
            if (next(accessor) != '"') {
                fail("Invalid attribute format.", __LINE__);
            }
            skipSpace(accessor);
            length = getValue(accessor);
            if (length == 0) {
                fail("Invalid attribute value.", __LINE__);
            }
            attribute->mValue = intern(length);
            if (next(accessor) != '"') {
                fail("Invalid attribute format.", __LINE__);
            }
            continue;
        }
        // No further attribute: whatever stands before "/" or ">" is dropped.
        skipSpace(accessor);
        do {
            c = next(accessor);
            if (c == -1) {
                fail("Invalid tag.", __LINE__);
            }
        } while (c != '/' && c != '>');
        if (c == '/') {
            c = next(accessor);
            tag->mEmpty = true;
        }
        if (c != '>') {
            fail("Invalid tag.", __LINE__);
        }
        return tag;
    }
}

// Tab, line feed, blank and zero are space; a carriage return is not.
void XmlReader::skipSpace(TextStreamAccessor* accessor)
{
    for (;;) {
        int c = next(accessor);
        if (c == -1) {
            return;
        }
        if (c != '\t' && c != '\n' && c != ' ' && c != 0) {
            back(accessor);
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
        // An exhausted string heap leaves the slot empty.
        if (slot.empty()) {
            mRefused = true;
        }
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
        c = next(accessor);
        if (!accept(c)) {
            break;
        }
        // Past the limit the token is read to its end but not kept, so that
        // the file's structure is still followed.
        if (length < kTokenMax) {
            putScratch(length++, static_cast<char>(c));
        } else {
            mRefused = true;
        }
    }
    if (!isConsumedTerminator(c)) {
        back(accessor);
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

bool XmlReader::claimObject(ObjectBase* object, unsigned int id)
{
    if (id == 0) {
        return true;
    }
    if (mClaimed.find(id) != nullptr) {
        return false;
    }
    mClaimed.add(object, id);
    return true;
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
