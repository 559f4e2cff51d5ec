#include "platform/fileio.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace platform {

bool syncFile(FILE* file)
{
    if (file == nullptr || fflush(file) != 0) {
        return false;
    }
    return fsync(fileno(file)) == 0;
}

bool renameFile(char const* from, char const* to)
{
    if (from == nullptr || to == nullptr || rename(from, to) != 0) {
        return false;
    }
    // The folder entry is data too: without this the rename may be lost.
    char folder[4096];
    char const* slash = strrchr(to, '/');
    if (slash == nullptr) {
        strcpy(folder, ".");
    } else {
        size_t length = static_cast<size_t>(slash - to);
        if (length >= sizeof(folder)) {
            return true;
        }
        memcpy(folder, to, length);
        folder[length] = '\0';
        if (length == 0) {
            strcpy(folder, "/");
        }
    }
    int descriptor = open(folder, O_RDONLY | O_DIRECTORY);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
    return true;
}

bool removeFile(char const* path)
{
    return path != nullptr && unlink(path) == 0;
}

FILE* openRegularFile(char const* path)
{
    if (path == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    // Without O_NONBLOCK the open of a pipe would wait for a writer.
    int const descriptor = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    struct stat status;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        errno = EINVAL;
        return nullptr;
    }
    int const flags = fcntl(descriptor, F_GETFL);
    fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK);
    FILE* file = fdopen(descriptor, "rb");
    if (file == nullptr) {
        close(descriptor);
    }
    return file;
}

ReplacingFile::ReplacingFile() : mpFile(nullptr)
{
    mTarget[0] = '\0';
    mTemporary[0] = '\0';
}

FILE* ReplacingFile::open(char const* target, char const* suffix, bool binary)
{
    if (mpFile != nullptr || target == nullptr || suffix == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    int const length = snprintf(mTarget, sizeof(mTarget), "%s", target);
    int const temporaryLength = snprintf(mTemporary, sizeof(mTemporary), "%s%s", target, suffix);
    if (length < 0 || temporaryLength < 0 || static_cast<size_t>(temporaryLength) >= sizeof(mTemporary)) {
        mTemporary[0] = '\0';
        errno = ENAMETOOLONG;
        return nullptr;
    }
    int const flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    int descriptor = ::open(mTemporary, flags, 0666);
    if (descriptor < 0 && errno == EEXIST) {
        // unlink removes a link itself, never what it points at.
        unlink(mTemporary);
        descriptor = ::open(mTemporary, flags, 0666);
    }
    if (descriptor < 0) {
        mTemporary[0] = '\0';
        return nullptr;
    }
    // The new file keeps what the user gave the old one, read-only included;
    // the open descriptor writes regardless.
    struct stat status;
    bool const kept = stat(mTarget, &status) != 0 || fchmod(descriptor, status.st_mode & 07777) == 0;
    mpFile = kept ? fdopen(descriptor, binary ? "wb" : "w") : nullptr;
    if (mpFile == nullptr) {
        int const error = errno;
        close(descriptor);
        unlink(mTemporary);
        mTemporary[0] = '\0';
        errno = error;
    }
    return mpFile;
}

bool ReplacingFile::commit()
{
    if (mpFile == nullptr) {
        return false;
    }
    bool const synced = syncFile(mpFile);
    bool const closed = fclose(mpFile) == 0;
    mpFile = nullptr;
    if (synced && closed && renameFile(mTemporary, mTarget)) {
        mTemporary[0] = '\0';
        return true;
    }
    unlink(mTemporary);
    mTemporary[0] = '\0';
    return false;
}

void ReplacingFile::abandon()
{
    if (mpFile == nullptr) {
        return;
    }
    fclose(mpFile);
    mpFile = nullptr;
    unlink(mTemporary);
    mTemporary[0] = '\0';
}

} // namespace platform
