// File helpers of the platform layer that the C library lacks: pushing a
// written file down to the disk and replacing one file by another in one step.
// Together they let a writer leave either the old or the new file on disk,
// never a torn one. Stateless and thread safe.
#pragma once

#include <cstdio>

namespace platform {

// Flushes the C library's buffer and waits until the system has the file's
// bytes on the disk. False on any failure.
bool syncFile(FILE* file);

// Renames from over to, replacing an existing file atomically: a reader sees
// the old or the new file whole. Both must lie in one file system. The folder
// of to is synced afterwards, so the new name survives a power cut.
bool renameFile(char const* from, char const* to);

// Deletes a file; false when there was none or it could not be removed.
bool removeFile(char const* path);

} // namespace platform
