#include "foundation/autostring.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "foundation/debug.h"
#include "foundation/utils.h"

ClassHeap AutoString::mHeap;
AutoString const AutoString::Null;

// ---------------------------------------------------------------------------
// Buffer

AutoString::Buffer::~Buffer()
{
    mHeap.deallocate(mpData);
}

// ---------------------------------------------------------------------------
// Construction and the change protocol

AutoString::AutoString(char const* text) : mpBuffer(nullptr)
{
    if (text != nullptr) {
        mpBuffer = makeBuffer(text, static_cast<u32>(strlen(text)));
    }
}

AutoString::AutoString(char character) : mpBuffer(nullptr)
{
    char text[2] = {character, '\0'};
    mpBuffer = makeBuffer(text, 1);
}

AutoString::Buffer* AutoString::makeBuffer(char const* text, u32 length)
{
    char* data = allocateScratch(length);
    if (data == nullptr) {
        return nullptr;
    }
    void* place = mHeap.allocate(sizeof(Buffer));
    if (place == nullptr) {
        DEV_TRACE("String heap exhausted: %u bytes refused.\n", static_cast<u32>(sizeof(Buffer)));
        mHeap.deallocate(data);
        return nullptr;
    }
    memcpy(data, text, length);
    data[length] = '\0';
    return ::new (place) Buffer(data);
}

char* AutoString::allocateScratch(u32 length)
{
    // The block size is an int: longer text is refused before it wraps.
    void* block = (length < 0x7FFFFFFFu) ? mHeap.allocate(length + 1) : nullptr;
    if (block == nullptr) {
        DEV_TRACE("String heap exhausted: %u bytes refused.\n", length + 1);
    }
    return static_cast<char*>(block);
}

char* AutoString::beginChange(u32 length)
{
    char* scratch = allocateScratch(length);
    if (scratch == nullptr) {
        releaseBuffer();
    }
    return scratch;
}

void AutoString::freeScratch(char* scratch)
{
    mHeap.deallocate(scratch);
}

void AutoString::replace(char const* text, u32 length)
{
    releaseBuffer();
    mpBuffer = makeBuffer(text, length);
}

void AutoString::share(Buffer* buffer)
{
    if (buffer != nullptr) {
        buffer->addRef();
    }
    releaseBuffer();
    mpBuffer = buffer;
}

u32 AutoString::size() const
{
    return (mpBuffer != nullptr) ? static_cast<u32>(strlen(mpBuffer->mpData)) : 0;
}

void AutoString::format(char const* format, ...)
{
    char text[1024];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    *this = text;
}

// ---------------------------------------------------------------------------
// Pieces

AutoString AutoString::substr(u32 start, u32 length) const
{
    u32 total = size();
    if (mpBuffer == nullptr || start >= total) {
        return AutoString();
    }
    u32 rest = total - start;
    if (length > rest) {
        length = rest;
    }
    AutoString result;
    result.mpBuffer = makeBuffer(mpBuffer->mpData + start, length);
    return result;
}

void AutoString::insert(u32 position, char character)
{
    char text[2] = {character, '\0'};
    if (mpBuffer == nullptr) {
        replace(text, 1);
        return;
    }
    u32 total = size();
    if (position > total) {
        position = total;
    }
    char* scratch = beginChange(total + 1);
    if (scratch == nullptr) {
        return;
    }
    memcpy(scratch, mpBuffer->mpData, position);
    scratch[position] = character;
    memcpy(scratch + position + 1, mpBuffer->mpData + position, total - position);
    scratch[total + 1] = '\0';
    replace(scratch, total + 1);
    freeScratch(scratch);
}

void AutoString::insert(u32 position, AutoString const& text)
{
    if (mpBuffer == nullptr) {
        share(text.mpBuffer);
        return;
    }
    u32 total = size();
    u32 added = text.size();
    if (position > total) {
        position = total;
    }
    char* scratch = beginChange(total + added);
    if (scratch == nullptr) {
        return;
    }
    memcpy(scratch, mpBuffer->mpData, position);
    if (added != 0) {
        memcpy(scratch + position, text.mpBuffer->mpData, added);
    }
    memcpy(scratch + position + added, mpBuffer->mpData + position, total - position);
    scratch[total + added] = '\0';
    replace(scratch, total + added);
    freeScratch(scratch);
}

void AutoString::remove(u32 position, u32 length)
{
    if (mpBuffer == nullptr) {
        return;
    }
    u32 total = size();
    if (total <= length) {
        releaseBuffer();
        return;
    }
    // A position at or past the end has nothing to take out.
    if (position >= total) {
        return;
    }
    u32 taken = (position + length >= total) ? total - position : length;
    u32 kept = total - taken;
    char* scratch = beginChange(kept);
    if (scratch == nullptr) {
        return;
    }
    memcpy(scratch, mpBuffer->mpData, position);
    memcpy(scratch + position, mpBuffer->mpData + position + taken, total - position - taken);
    scratch[kept] = '\0';
    replace(scratch, kept);
    freeScratch(scratch);
}

void AutoString::indent(u32 count)
{
    if (count == 0) {
        return;
    }
    u32 total = size();
    char* scratch = beginChange(count + total);
    if (scratch == nullptr) {
        return;
    }
    memset(scratch, '\t', count);
    if (total != 0) {
        memcpy(scratch + count, mpBuffer->mpData, total);
    }
    scratch[count + total] = '\0';
    replace(scratch, count + total);
    freeScratch(scratch);
}

// ---------------------------------------------------------------------------
// Searching

u32 AutoString::findFirst(char character, u32 start) const
{
    if (mpBuffer == nullptr) {
        return NotFound;
    }
    // Stops at the terminator, so a start past the end finds nothing.
    u32 total = size();
    for (u32 i = start; i < total; ++i) {
        if (mpBuffer->mpData[i] == character) {
            return i;
        }
    }
    return NotFound;
}

u32 AutoString::findFirst(AutoString const& text, u32 start) const
{
    if (mpBuffer == nullptr || text.mpBuffer == nullptr || start > size()) {
        return NotFound;
    }
    char const* hit = strstr(mpBuffer->mpData + start, text.mpBuffer->mpData);
    return (hit != nullptr) ? static_cast<u32>(hit - mpBuffer->mpData) : NotFound;
}

u32 AutoString::findLast(char character, u32 limit) const
{
    if (mpBuffer == nullptr) {
        return NotFound;
    }
    for (u32 i = size(); i > limit; --i) {
        if (mpBuffer->mpData[i - 1] == character) {
            return i - 1;
        }
    }
    return NotFound;
}

u32 AutoString::findLast(AutoString const& text, u32 start) const
{
    if (mpBuffer == nullptr || text.mpBuffer == nullptr || start > size()) {
        return NotFound;
    }
    u32 step = text.size();
    // An empty needle would never move on.
    if (step == 0) {
        return NotFound;
    }
    u32 last = NotFound;
    char const* from = mpBuffer->mpData + start;
    while (char const* hit = strstr(from, text.mpBuffer->mpData)) {
        last = static_cast<u32>(hit - mpBuffer->mpData);
        from = hit + step;
    }
    return last;
}

u32 AutoString::hash() const
{
    return Utils::hash(c_str());
}

// ---------------------------------------------------------------------------
// Assignment and concatenation

AutoString& AutoString::operator=(AutoString const& other)
{
    if (*this == other) {
        return *this;
    }
    share(other.mpBuffer);
    return *this;
}

AutoString& AutoString::operator=(AutoString&& other) noexcept
{
    // Like the copy: an equal value keeps the buffer this string already has.
    if (*this == other) {
        return *this;
    }
    releaseBuffer();
    mpBuffer = other.mpBuffer;
    other.mpBuffer = nullptr;
    return *this;
}

AutoString& AutoString::operator=(char const* text)
{
    if (*this == text) {
        return *this;
    }
    if (text == nullptr) {
        releaseBuffer();
        return *this;
    }
    // text may point into the current buffer, so copy before releasing.
    u32 length = static_cast<u32>(strlen(text));
    char* scratch = beginChange(length);
    if (scratch == nullptr) {
        return *this;
    }
    memcpy(scratch, text, length + 1);
    replace(scratch, length);
    freeScratch(scratch);
    return *this;
}

AutoString& AutoString::operator=(char character)
{
    char text[2] = {character, '\0'};
    return *this = text;
}

AutoString& AutoString::operator+=(AutoString const& other)
{
    if (other.mpBuffer == nullptr) {
        return *this;
    }
    if (mpBuffer == nullptr) {
        share(other.mpBuffer);
        return *this;
    }
    return *this += other.mpBuffer->mpData;
}

AutoString& AutoString::operator+=(char const* text)
{
    if (text == nullptr) {
        return *this;
    }
    u32 total = size();
    u32 added = static_cast<u32>(strlen(text));
    char* scratch = beginChange(total + added);
    if (scratch == nullptr) {
        return *this;
    }
    if (total != 0) {
        memcpy(scratch, mpBuffer->mpData, total);
    }
    memcpy(scratch + total, text, added);
    scratch[total + added] = '\0';
    replace(scratch, total + added);
    freeScratch(scratch);
    return *this;
}

AutoString& AutoString::operator+=(char character)
{
    char text[2] = {character, '\0'};
    return *this += text;
}

AutoString AutoString::operator+(AutoString const& other) const
{
    AutoString result(*this);
    result += other;
    return result;
}

AutoString AutoString::operator+(char const* text) const
{
    AutoString result(*this);
    result += text;
    return result;
}

AutoString AutoString::operator+(char character) const
{
    AutoString result(*this);
    result += character;
    return result;
}

char& AutoString::operator[](u32 index)
{
    if (mpBuffer == nullptr) {
        dev_assert("Buffer is NULL.", __FILE__, __LINE__);
    }
    // A private copy every time, whether shared or not, so that the reference
    // handed out can never be seen through another string.
    u32 total = size();
    char* scratch = beginChange(total);
    if (scratch == nullptr) {
        dev_assert("Buffer is NULL.", __FILE__, __LINE__);
    }
    memcpy(scratch, mpBuffer->mpData, total + 1);
    replace(scratch, total);
    freeScratch(scratch);
    return mpBuffer->mpData[index];
}

// ---------------------------------------------------------------------------
// Comparison

bool AutoString::operator==(AutoString const& other) const
{
    if (mpBuffer == other.mpBuffer) {
        return true;
    }
    if (mpBuffer == nullptr || other.mpBuffer == nullptr) {
        return false;
    }
    return strcmp(mpBuffer->mpData, other.mpBuffer->mpData) == 0;
}

bool AutoString::operator==(char const* text) const
{
    if (mpBuffer == nullptr) {
        return text == nullptr || text[0] == '\0';
    }
    return isEqual(mpBuffer->mpData, text);
}

bool AutoString::isEqual(char const* a, char const* b)
{
    if (a == nullptr || b == nullptr) {
        return a == b;
    }
    return strcmp(a, b) == 0;
}

// ---------------------------------------------------------------------------
// The heap

void AutoString::deleteAllocator()
{
    delete mHeap.get();
    mHeap.reset();
}
