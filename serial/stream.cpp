#include "serial/stream.h"

#include <cerrno>
#include <cstring>

#include "foundation/debug.h"
#include "foundation/utils.h"
#include "platform/fileio.h"

// ---------------------------------------------------------------------------
// Stream

char const* Stream::getPath() const
{
    return Utils::getPath(mPath.c_str());
}

char const* Stream::getFileName() const
{
    return Utils::getFileName(mPath.c_str());
}

// ---------------------------------------------------------------------------
// FileStream

FileStream::~FileStream()
{
    if (mpFile != nullptr) {
        fclose(mpFile);
        mpFile = nullptr;
    }
}

void FileStream::open(char const* path, unsigned int mode, char const* suffix)
{
    if (mpFile != nullptr) {
        dev_assert("Stream already open.", __FILE__, __LINE__);
    }
    static char const* const kModes[] = {"r", "w", "w+"};
    char text[8];
    snprintf(text, sizeof(text), "%s%s", (mode < 3) ? kModes[mode] : "", suffix);
    mPath = path;
    if (path == nullptr) {
        return;
    }
    // A pipe or a device would block a read or never end it.
    mpFile = (mode == eMode_Read) ? platform::openRegularFile(path) : fopen(path, text);
}

bool FileStream::hasError() const
{
    return mpFile != nullptr && ferror(mpFile) != 0;
}

int FileStream::seek(int offset, unsigned int origin)
{
    if (mpFile == nullptr) {
        return 0;
    }
    switch (origin) {
    case eOrigin_Start:
        return fseek(mpFile, offset, SEEK_SET);
    case eOrigin_Current:
        return fseek(mpFile, offset, SEEK_CUR);
    case eOrigin_End:
        return fseek(mpFile, offset, SEEK_END);
    default:
        return 0;
    }
}

unsigned int FileStream::getLength() const
{
    if (mpFile == nullptr) {
        return 0;
    }
    long position = ftell(mpFile);
    fseek(mpFile, 0, SEEK_END);
    long length = ftell(mpFile);
    fseek(mpFile, position, SEEK_SET);
    return (length < 0) ? 0 : static_cast<unsigned int>(length);
}

// ---------------------------------------------------------------------------
// TextFileStream

TextFileStream::TextFileStream(char const* path, unsigned int mode) : TextFileStream()
{
    open(path, mode, "t");
    if (mpFile == nullptr) {
        traceOpenError();
    }
}

TextFileStream::TextFileStream() : mLastChar(EOF)
{
    mType = eType_Text | eType_File;
}

void TextFileStream::traceOpenError()
{
    mEOF = true;
    DEV_TRACE("File open error.\n%s\n", strerror(errno));
}

int TextFileStream::seek(int offset, unsigned int origin)
{
    mLastChar = EOF;
    return FileStream::seek(offset, origin);
}

unsigned int TextFileStream::read(char* buffer, unsigned int size)
{
    mLastChar = EOF;
    if (mEOF || mpFile == nullptr) {
        return 0;
    }
    unsigned int count = 0;
    if (size == 0) {
        if (fgets(buffer, 1024, mpFile) != nullptr) {
            count = static_cast<unsigned int>(strlen(buffer));
        }
    } else {
        count = static_cast<unsigned int>(fread(buffer, 1, size, mpFile));
    }
    if (count == 0) {
        mEOF = true;
    }
    return count;
}

unsigned int TextFileStream::write(char const* text, unsigned int size)
{
    mLastChar = EOF;
    if (mpFile == nullptr) {
        return 0;
    }
    if (size == 0) {
        size_t length = strlen(text);
        fwrite(text, 1, length, mpFile);
        return static_cast<unsigned int>(length);
    }
    return static_cast<unsigned int>(fwrite(text, 1, size, mpFile));
}

int TextFileStream::getChar()
{
    if (mEOF || mpFile == nullptr) {
        return -1;
    }
    // Taken as a signed byte: end of file and a byte 0xFF both give -1 and
    // end the stream for every reader.
    int const read = fgetc(mpFile);
    int const value = static_cast<s8>(read);
    if (value == -1) {
        mEOF = true;
    }
    mLastChar = read;
    return value;
}

void TextFileStream::putChar(char character)
{
    mLastChar = EOF;
    if (mpFile != nullptr) {
        fputc(character, mpFile);
    }
}

void TextFileStream::putCR()
{
    putChar('\n');
}

void TextFileStream::putTab(unsigned int count)
{
    for (unsigned int i = 0; i < count; ++i) {
        putChar('\t');
    }
}

// Right after a read the byte is pushed back into the C library's buffer,
// which is the same step back without a system call; otherwise it seeks.
void TextFileStream::backforward()
{
    if (mpFile == nullptr) {
        return;
    }
    if (mLastChar != EOF && ungetc(mLastChar, mpFile) != EOF) {
        mLastChar = EOF;
        return;
    }
    fseek(mpFile, -1, SEEK_CUR);
}

// ---------------------------------------------------------------------------
// BinaryFileStream

BinaryFileStream::BinaryFileStream(char const* path, unsigned int mode) : BinaryFileStream()
{
    open(path, mode, "b");
}

BinaryFileStream::BinaryFileStream()
{
    mType = eType_Binary | eType_File;
}

unsigned int BinaryFileStream::read(void* buffer, unsigned int size)
{
    if (mpFile == nullptr) {
        return 0;
    }
    return static_cast<unsigned int>(fread(buffer, 1, size, mpFile));
}

unsigned int BinaryFileStream::write(void const* data, unsigned int size)
{
    if (mpFile == nullptr) {
        return 0;
    }
    return static_cast<unsigned int>(fwrite(data, 1, size, mpFile));
}

// ---------------------------------------------------------------------------
// ReplacingFileStream

template <typename FileStreamType>
ReplacingFileStream<FileStreamType>::ReplacingFileStream(char const* path, char const* suffix) : mTargetPath(path)
{
    this->mpFile = mFile.open(path, suffix, (this->getType() & Stream::eType_Binary) != 0);
    this->mPath = mFile.getTemporaryPath();
    if (this->mpFile == nullptr) {
        this->traceOpenError();
    }
}

// The platform file owns the handle: the base must not close it again.
template <typename FileStreamType>
ReplacingFileStream<FileStreamType>::~ReplacingFileStream()
{
    mFile.abandon();
    this->mpFile = nullptr;
}

template <typename FileStreamType>
bool ReplacingFileStream<FileStreamType>::commit()
{
    this->mpFile = nullptr;
    return mFile.commit();
}

template class ReplacingFileStream<TextFileStream>;
template class ReplacingFileStream<BinaryFileStream>;
