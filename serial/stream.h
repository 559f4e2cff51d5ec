// Streams: the one way the XML layer, the binary data layer and the resource
// loaders reach a file. A stream hands out either a text accessor or a binary
// accessor, never both, so each layer refuses the other kind with a null test.
// A stream is open from its constructor to its destructor and has one owner;
// it takes no lock.
#pragma once

#include <cstdio>

#include "foundation/autostring.h"
#include "foundation/types.h"
#include "platform/fileio.h"

class TextStreamAccessor {
public:
    virtual ~TextStreamAccessor() {}
    // size 0 reads one line (at most 1023 characters) and answers its length.
    virtual unsigned int read(char* buffer, unsigned int size) = 0;
    // size 0 writes the whole zero-terminated text.
    virtual unsigned int write(char const* text, unsigned int size) = 0;
    // -1 at the end; a byte 0xFF also reads as -1 and ends the stream.
    virtual int getChar() = 0;
    virtual void putChar(char character) = 0;
    // One line feed: the name is historical, no carriage return is written.
    virtual void putCR() = 0;
    virtual void putTab(unsigned int count) = 0;
    // Steps one byte back: the way to unread the character just read.
    virtual void backforward() = 0;
};

class BinaryStreamAccessor {
public:
    virtual ~BinaryStreamAccessor() {}
    virtual unsigned int read(void* buffer, unsigned int size) = 0;
    virtual unsigned int write(void const* data, unsigned int size) = 0;
};

class Stream {
public:
    // Bits of getType().
    enum eType {
        eType_Text = 1,
        eType_Binary = 2,
        eType_File = 4,
    };
    // Open modes of the file streams.
    enum eMode {
        eMode_Read = 0,
        eMode_Write = 1,
        eMode_WriteRead = 2,
    };
    // Seek origins.
    enum eOrigin {
        eOrigin_Start = 0,
        eOrigin_Current = 1,
        eOrigin_End = 2,
    };

    Stream() : mEOF(false), mType(0) {}
    virtual ~Stream() {}

    virtual int seek(int offset, unsigned int origin) = 0;
    virtual unsigned int getLength() const = 0;
    virtual TextStreamAccessor* getTextAccessor() = 0;
    virtual BinaryStreamAccessor* getBinaryAccessor() = 0;

    bool eof() const { return mEOF; }
    unsigned int getType() const { return mType; }
    // From "intermediate/" or "native/" on, or null outside the data root.
    char const* getPath() const;
    char const* getFullPath() const { return mPath.c_str(); }
    char const* getFileName() const;

protected:
    bool mEOF;
    u32 mType;
    AutoString mPath;
};

// A stdio file; null when it did not open, and every operation then answers 0.
class FileStream : public Stream {
public:
    FileStream() : mpFile(nullptr) {}
    ~FileStream() override;

    // The stdio result; 0 without a file or with an unknown origin.
    int seek(int offset, unsigned int origin) override;
    unsigned int getLength() const override;
    // A read or write that failed part-way (an I/O error), as opposed to
    // the end of the file.
    bool hasError() const;

protected:
    // Opens with "r", "w" or "w+" and the given suffix; asserts when a file is
    // already open.
    void open(char const* path, unsigned int mode, char const* suffix);

    FILE* mpFile;
};

class TextFileStream : public FileStream, public TextStreamAccessor {
public:
    // A file that does not open sets the end flag and traces the reason.
    // Reading opens plain files only: a folder, pipe or device does not open.
    TextFileStream(char const* path, unsigned int mode);

    TextStreamAccessor* getTextAccessor() override { return this; }
    BinaryStreamAccessor* getBinaryAccessor() override { return nullptr; }
    int seek(int offset, unsigned int origin) override;

    unsigned int read(char* buffer, unsigned int size) override;
    unsigned int write(char const* text, unsigned int size) override;
    int getChar() override;
    void putChar(char character) override;
    void putCR() override;
    void putTab(unsigned int count) override;
    void backforward() override;

protected:
    // Closed; a derived class hands it a file.
    TextFileStream();
    void traceOpenError();

private:
    int mLastChar; // the byte getChar just read, EOF after anything else
};

class BinaryFileStream : public FileStream, public BinaryStreamAccessor {
public:
    // A file that does not open stays silently closed. Reading opens plain
    // files only, as for text.
    BinaryFileStream(char const* path, unsigned int mode);

    TextStreamAccessor* getTextAccessor() override { return nullptr; }
    BinaryStreamAccessor* getBinaryAccessor() override { return this; }

    unsigned int read(void* buffer, unsigned int size) override;
    unsigned int write(void const* data, unsigned int size) override;

protected:
    // Closed; a derived class hands it a file.
    BinaryFileStream();
    void traceOpenError() {}
};

// A file written beside its target ("<path>.new", or the suffix given) and
// put in the target's place only by commit(). A kill or crash before the
// commit leaves the previous file whole; a stream that ends without commit()
// removes its partial file. The partial file is made exclusively, never
// through a symbolic link, with the target's permissions (platform::
// ReplacingFile). Text and binary forms share this template.
template <typename FileStreamType>
class ReplacingFileStream : public FileStreamType {
public:
    // A file that could not be made sets the end flag and traces the reason.
    explicit ReplacingFileStream(char const* path, char const* suffix = ".new");
    ~ReplacingFileStream() override;

    // Flushes, syncs to the disk, closes and renames over the target. False,
    // with the target untouched and the partial file gone, when any step
    // fails. Once only.
    bool commit();
    char const* getTargetPath() const { return mTargetPath.c_str(); }

private:
    platform::ReplacingFile mFile;
    AutoString mTargetPath;
};

typedef ReplacingFileStream<TextFileStream> ReplacingTextFileStream;
typedef ReplacingFileStream<BinaryFileStream> ReplacingBinaryFileStream;
