// DataWriter: the thin layer under every native binary file. It writes what
// the caller hands it, in the machine's (little-endian) order, with no header
// or version of its own, and patches 4-byte offset slots ("tags") whose values
// are known only later when it ends. A local object: its working memory comes
// from the application's temporary heap, and it must end before its stream.
#pragma once

#include "foundation/types.h"

class AllocatorBase;
class BinaryStreamAccessor;
class Stream;

class DataWriter {
public:
    struct sTag {
        u32 mID;       // the caller's tag number
        u32 mPosition; // where the tag's 4-byte slot stands in the file
        u32 mValue;    // what goes into the slot; 0xFFFFFFFF until set
    };

    // Must start at the beginning of the file: tag positions are absolute.
    DataWriter(Stream* stream, unsigned int tagMax);
    // Writes every tag's value into its slot.
    ~DataWriter();

    DataWriter(DataWriter const&) = delete;
    DataWriter& operator=(DataWriter const&) = delete;

    unsigned int write(void const* data, unsigned int size);
    template <typename T>
    unsigned int write(T value)
    {
        return write(&value, sizeof(T));
    }
    // With its terminating zero. Deliberately not counted in the position:
    // tag offsets taken after a string fall short by its size, so a format
    // that uses both takes its offsets from elsewhere.
    unsigned int writeString(char const* text);

    // Writes a zero slot for the tag; it takes the value of an earlier entry
    // of the same id (the last one) if that was set already.
    void writeTag(unsigned int id);
    // The current position becomes the value of every entry with this id.
    void setTag(unsigned int id);

    unsigned int getPosition() const { return mPosition; }

private:
    Stream* mpStream;
    BinaryStreamAccessor* mpAccessor;
    sTag* mpTagList;
    sTag* mpTagEnd;
    u32 mTagMax;
    u32 mPosition;
    AllocatorBase* mpAllocator; // where mpTagList came from; null: array new
};
