#include "platform/fileio.h"

#include <fcntl.h>
#include <unistd.h>

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

} // namespace platform
