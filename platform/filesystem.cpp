#include "platform/filesystem.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

namespace platform {

bool isFileExist(char const* path)
{
    if (path == nullptr) {
        return false;
    }
    struct stat info;
    return stat(path, &info) == 0;
}

bool listDirectory(char const* path, void (*visit)(sDirectoryEntry const& entry, void* user), void* user)
{
    if (path == nullptr) {
        return false;
    }
    DIR* directory = opendir(path);
    if (directory == nullptr) {
        return false;
    }
    size_t pathLength = strlen(path);
    bool slash = pathLength != 0 && path[pathLength - 1] == '/';
    std::vector<sDirectoryEntry> entries;
    while (dirent* item = readdir(directory)) {
        // Hidden entries, "." and ".." among them, are left out.
        if (item->d_name[0] == '.') {
            continue;
        }
        sDirectoryEntry entry;
        memset(&entry, 0, sizeof(entry));
        snprintf(entry.mName, sizeof(entry.mName), "%s", item->d_name);

        char full[4096];
        snprintf(full, sizeof(full), "%s%s%s", path, slash ? "" : "/", item->d_name);
        struct stat info;
        // A dangling link still shows, described by the link itself.
        if (stat(full, &info) == 0 || lstat(full, &info) == 0) {
            entry.mDirectory = S_ISDIR(info.st_mode);
            entry.mSize = entry.mDirectory ? 0 : static_cast<u64>(info.st_size);
            time_t modified = info.st_mtime;
            struct tm local;
            if (localtime_r(&modified, &local) != nullptr) {
                entry.mYear = static_cast<u16>(local.tm_year + 1900);
                entry.mMonth = static_cast<u8>(local.tm_mon + 1);
                entry.mDay = static_cast<u8>(local.tm_mday);
                entry.mHour = static_cast<u8>(local.tm_hour);
                entry.mMinute = static_cast<u8>(local.tm_min);
                entry.mSecond = static_cast<u8>(local.tm_sec);
            }
        }
        entries.push_back(entry);
    }
    closedir(directory);
    // By name, byte for byte, so that every run lists a folder alike.
    std::sort(entries.begin(), entries.end(), [](sDirectoryEntry const& a, sDirectoryEntry const& b) {
        return strcmp(a.mName, b.mName) < 0;
    });
    for (sDirectoryEntry const& entry : entries) {
        visit(entry, user);
    }
    return true;
}

bool makeParentFolders(char const* path)
{
    if (path == nullptr) {
        return false;
    }
    char folder[4096];
    size_t const length = strlen(path);
    if (length >= sizeof(folder)) {
        return false;
    }
    memcpy(folder, path, length + 1);
    for (char* slash = strchr(folder + 1, '/'); slash != nullptr; slash = strchr(slash + 1, '/')) {
        *slash = '\0';
        struct stat info;
        if (stat(folder, &info) != 0 && mkdir(folder, 0777) != 0 && stat(folder, &info) != 0) {
            return false;
        }
        *slash = '/';
    }
    return true;
}

} // namespace platform
