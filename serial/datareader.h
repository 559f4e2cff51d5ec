// DataReader: buffered reading of the native binary files that DataWriter
// makes. A read past the end answers fewer bytes than asked; the caller
// compares. A local object: its buffer comes from the application's temporary
// heap, and it must end before its stream.
#pragma once

#include "foundation/types.h"

class AllocatorBase;
class BinaryStreamAccessor;
class Stream;

class DataReader {
public:
    // Fills the buffer at once.
    DataReader(Stream* stream, unsigned int bufferSize);
    ~DataReader();

    DataReader(DataReader const&) = delete;
    DataReader& operator=(DataReader const&) = delete;

    // Answers the count actually copied; stops when a refill gives nothing.
    unsigned int read(void* buffer, unsigned int size);
    template <typename T>
    T read()
    {
        T value = T();
        read(&value, sizeof(T));
        return value;
    }
    // Bytes up to and including a zero byte, at most size - 1 of them; the
    // buffer always ends with a zero. Answers the bytes taken, the terminator
    // included when it was met.
    unsigned int readString(char* buffer, unsigned int size);

private:
    void buffer();

    [[maybe_unused]] Stream* mpStream; // the stream read from; reads go through mpAccessor
    BinaryStreamAccessor* mpAccessor;
    u8* mpBuffer;
    u8* mpCursor;
    u32 mBufferSize;
    [[maybe_unused]] u32 mPosition; // stays 0: nothing depends on a reader's position
    u32 mBufferFill; // valid bytes in the buffer
    bool mEnd;       // a refill came back short: the next one gives nothing
    AllocatorBase* mpAllocator; // where mpBuffer came from; null: array new
};
