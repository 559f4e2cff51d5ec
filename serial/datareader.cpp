#include "serial/datareader.h"

#include <cstring>

#include "foundation/allocator.h"
#include "foundation/debug.h"
#include "serial/stream.h"

DataReader::DataReader(Stream* stream, unsigned int bufferSize)
    : mpStream(stream), mpAccessor(stream->getBinaryAccessor()), mpBuffer(nullptr), mpCursor(nullptr),
      mBufferSize(bufferSize), mPosition(0), mBufferFill(0), mEnd(false), mpAllocator(AllocatorBase::getTemporaryAllocator())
{
    if (mpAccessor == nullptr) {
        dev_assert("Stream don't have binary accessor.", __FILE__, __LINE__);
    }
    void* memory = (mpAllocator != nullptr) ? mpAllocator->allocate(static_cast<int>(bufferSize), 4)
                                            : new u8[bufferSize];
    mpBuffer = static_cast<u8*>(memory);
    buffer();
}

DataReader::~DataReader()
{
    if (mpAllocator != nullptr) {
        mpAllocator->deallocate(mpBuffer);
    } else {
        delete[] mpBuffer;
    }
}

void DataReader::buffer()
{
    if (mEnd) {
        mBufferFill = 0;
    } else {
        mBufferFill = mpAccessor->read(mpBuffer, mBufferSize);
        if (mBufferFill < mBufferSize) {
            mEnd = true;
        }
    }
    mpCursor = mpBuffer;
}

unsigned int DataReader::read(void* buffer, unsigned int size)
{
    u8* target = static_cast<u8*>(buffer);
    unsigned int copied = 0;
    while (copied < size) {
        u32 available = static_cast<u32>(mpBuffer + mBufferFill - mpCursor);
        if (available == 0) {
            this->buffer();
            if (mBufferFill == 0) {
                break;
            }
            continue;
        }
        u32 const count = (available < size - copied) ? available : size - copied;
        memcpy(target + copied, mpCursor, count);
        mpCursor += count;
        copied += count;
    }
    return copied;
}

unsigned int DataReader::readString(char* buffer, unsigned int size)
{
    if (size == 0) {
        return 0;
    }
    unsigned int taken = 0;
    while (taken + 1 < size) {
        if (mpCursor == mpBuffer + mBufferFill) {
            this->buffer();
            if (mBufferFill == 0) {
                break;
            }
        }
        char const character = static_cast<char>(*mpCursor++);
        buffer[taken++] = character;
        if (character == '\0') {
            return taken;
        }
    }
    buffer[taken] = '\0';
    return taken;
}
