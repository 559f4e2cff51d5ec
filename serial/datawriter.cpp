#include "serial/datawriter.h"

#include <cstring>

#include "foundation/allocator.h"
#include "foundation/debug.h"
#include "serial/stream.h"

DataWriter::DataWriter(Stream* stream, unsigned int tagMax)
    : mpStream(stream), mpAccessor(stream->getBinaryAccessor()), mpTagList(nullptr), mpTagEnd(nullptr),
      mTagMax(tagMax), mPosition(0), mpAllocator(AllocatorBase::getTemporaryAllocator())
{
    if (mpAccessor == nullptr) {
        dev_assert("Stream don't have binary accessor.", __FILE__, __LINE__);
    }
    if (tagMax != 0) {
        u32 const size = tagMax * static_cast<u32>(sizeof(sTag));
        void* memory = (mpAllocator != nullptr) ? mpAllocator->allocate(static_cast<int>(size), 4) : new u8[size];
        mpTagList = static_cast<sTag*>(memory);
    }
    mpTagEnd = mpTagList;
}

DataWriter::~DataWriter()
{
    for (sTag* tag = mpTagList; tag != mpTagEnd; ++tag) {
        mpStream->seek(static_cast<int>(tag->mPosition), Stream::eOrigin_Start);
        mpAccessor->write(&tag->mValue, sizeof(tag->mValue));
    }
    if (mpAllocator != nullptr) {
        mpAllocator->deallocate(mpTagList);
    } else {
        delete[] reinterpret_cast<u8*>(mpTagList);
    }
}

unsigned int DataWriter::write(void const* data, unsigned int size)
{
    unsigned int const count = mpAccessor->write(data, size);
    mPosition += count;
    return count;
}

unsigned int DataWriter::writeString(char const* text)
{
    return mpAccessor->write(text, static_cast<unsigned int>(strlen(text)) + 1);
}

void DataWriter::writeTag(unsigned int id)
{
    if (static_cast<u32>(mpTagEnd - mpTagList) >= mTagMax) {
        dev_assert("Tag list overflow.", __FILE__, __LINE__);
    }
    sTag* tag = mpTagEnd++;
    tag->mID = id;
    tag->mPosition = mPosition;
    tag->mValue = 0xFFFFFFFFu;
    for (sTag* earlier = mpTagList; earlier != tag; ++earlier) {
        if (earlier->mID == id) {
            tag->mValue = earlier->mValue;
        }
    }
    write<u32>(0);
}

void DataWriter::setTag(unsigned int id)
{
    for (sTag* tag = mpTagList; tag != mpTagEnd; ++tag) {
        if (tag->mID == id) {
            tag->mValue = mPosition;
        }
    }
}
