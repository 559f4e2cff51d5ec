// File-system queries of the platform layer: existence of a path and the
// listing of one folder with name, directory flag, size and modification time.
// Stateless and thread safe.
#pragma once

#include "foundation/types.h"

namespace platform {

struct sDirectoryEntry {
    char mName[256]; // UTF-8, NUL-terminated, cut at 255 bytes
    bool mDirectory;
    u64 mSize;
    // Last modification in local time.
    u16 mYear;
    u8 mMonth;  // 1..12
    u8 mDay;    // 1..31
    u8 mHour;
    u8 mMinute;
    u8 mSecond;
};

// True if something (file, folder, link target) exists at the path.
bool isFileExist(char const* path);

// Calls visit once per entry of the folder, sorted by name (byte order),
// hidden entries ("." and ".." among them) left out. False if the folder
// cannot be read.
bool listDirectory(char const* path, void (*visit)(sDirectoryEntry const& entry, void* user), void* user);

// Makes every missing folder on the way to the file at path (the part after
// the last "/" is the file's name and is not made). False when one could not
// be made.
bool makeParentFolders(char const* path);

} // namespace platform
