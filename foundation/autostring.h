// AutoString: the program's string. One pointer to an immutable, counted
// buffer, so a copy costs one atomic increment and every change builds a new
// buffer. A null buffer is the empty string (c_str() is then null, not "").
// All bytes, the buffer records and heap-placed AutoString objects alike, come
// from one allocator set once by setAllocator() before any string holds text.
// Copies of one string may be read from several threads; a single AutoString
// object must not be written while it is read.
#pragma once

#include <cstddef>
#include <new>

#include "foundation/allocator.h"
#include "foundation/referenceobject.h"
#include "foundation/types.h"

class AutoString {
public:
    static constexpr u32 NotFound = 0xFFFFFFFFu;

    constexpr AutoString() : mpBuffer(nullptr) {}
    AutoString(AutoString const& other) : mpBuffer(other.mpBuffer)
    {
        if (mpBuffer != nullptr) {
            mpBuffer->addRef();
        }
    }
    AutoString(AutoString&& other) noexcept : mpBuffer(other.mpBuffer) { other.mpBuffer = nullptr; }
    // Null gives the empty string; "" gives a buffer of length 0, which is
    // not empty().
    AutoString(char const* text);
    explicit AutoString(char character);
    ~AutoString() { releaseBuffer(); }

    // The text, or null for the empty string.
    char const* c_str() const { return (mpBuffer != nullptr) ? mpBuffer->mpData : nullptr; }
    // strlen each time; the length is not stored.
    u32 size() const;
    // On the pointer alone: a buffer of length 0 is not empty.
    bool empty() const { return mpBuffer == nullptr; }
    explicit operator bool() const { return mpBuffer != nullptr; }

    // Through a local 1024-byte buffer; longer results are cut there.
    void format(char const* format, ...) __attribute__((format(printf, 2, 3)));

    // length NotFound, or one that passes the end, takes the rest.
    AutoString substr(u32 start, u32 length = NotFound) const;
    // A position at or past the end appends.
    void insert(u32 position, char character);
    void insert(u32 position, AutoString const& text);
    // Deliberate: when the size is not above length the whole string is
    // cleared, whatever the position, so remove(2, 100) on "abc" leaves
    // nothing. Callers depend on this to empty strings.
    void remove(u32 position, u32 length);

    // Indices, or NotFound (also for an empty string).
    u32 findFirst(char character, u32 start = 0) const;
    u32 findFirst(AutoString const& text, u32 start = 0) const;
    // The last hit at or above limit.
    u32 findLast(char character, u32 limit = 0) const;
    // The last hit of repeated searches from start, each moving past the
    // previous hit by the length of text.
    u32 findLast(AutoString const& text, u32 start = 0) const;

    // count tabs in front of the text.
    void indent(u32 count);

    // Utils::hash of the text; 0xFFFFFFFF for the empty string.
    u32 hash() const;

    // An equal value keeps the current buffer.
    AutoString& operator=(AutoString const& other);
    AutoString& operator=(AutoString&& other) noexcept;
    AutoString& operator=(char const* text);
    AutoString& operator=(char character);

    AutoString& operator+=(AutoString const& other);
    AutoString& operator+=(char const* text);
    AutoString& operator+=(char character);
    AutoString operator+(AutoString const& other) const;
    AutoString operator+(char const* text) const;
    AutoString operator+(char character) const;

    char operator[](u32 index) const { return mpBuffer->mpData[index]; }
    // Makes a private copy of the buffer on every call, shared or not, and
    // answers a reference into it. Fatal on the empty string.
    char& operator[](u32 index);

    // Same buffer (two empties included) is equal; one empty and one not is
    // unequal even if the other has length 0; otherwise bytes decide.
    bool operator==(AutoString const& other) const;
    bool operator!=(AutoString const& other) const { return !(*this == other); }
    // The empty string equals "" (and null).
    bool operator==(char const* text) const;
    bool operator!=(char const* text) const { return !(*this == text); }

    // Bytes; two nulls are equal, one null is unequal.
    static bool isEqual(char const* a, char const* b);

    // The "String" heap (see ClassHeap): the texts, their buffers, and
    // AutoString objects placed on the heap.
    static void setAllocator(AllocatorBase* allocator) { mHeap.set(allocator); }
    static AllocatorBase* getAllocator() { return mHeap.get(); }
    // Deletes the allocator and clears the pointer.
    static void deleteAllocator();

    static void* operator new(std::size_t size) { return mHeap.allocate(size); }
    static void* operator new[](std::size_t size) { return mHeap.allocate(size); }
    static void operator delete(void* pointer) { mHeap.deallocate(pointer); }
    static void operator delete[](void* pointer) { mHeap.deallocate(pointer); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) {}

    static AutoString const Null;

private:
    // The text lives in a block of its own, exactly length + 1 bytes.
    class Buffer : public ReferenceObject {
    public:
        // Takes over data, a block of the string heap.
        explicit Buffer(char* data) : mpData(data) {}
        ~Buffer() override;

        // Made by placement in makeBuffer, which can refuse; deleted here.
        static void operator delete(void* pointer) { mHeap.deallocate(pointer); }

        char* mpData;
    };

    // Null, with a trace, when the string heap cannot give the blocks: the
    // string is then empty. Long text from a file must not end the program.
    static Buffer* makeBuffer(char const* text, u32 length);

    // Every change: build the text in a scratch block, drop the old buffer,
    // make a new buffer from the scratch, free the scratch. A scratch block
    // that cannot be had empties the string (beginChange) instead.
    static char* allocateScratch(u32 length);
    char* beginChange(u32 length);
    static void freeScratch(char* scratch);
    void replace(char const* text, u32 length);
    void share(Buffer* buffer);
    void releaseBuffer()
    {
        if (mpBuffer != nullptr) {
            Buffer* buffer = mpBuffer;
            mpBuffer = nullptr;
            buffer->release();
        }
    }

    Buffer* mpBuffer;

    static ClassHeap mHeap;
};
