// File helpers of the platform layer that the C library lacks: pushing a
// written file down to the disk, replacing one file by another in one step,
// and opening for reading only what is a plain file. Together they let a
// writer leave either the old or the new file on disk, never a torn one, and
// keep a reader from waiting on a pipe or a device. The functions are
// stateless and thread safe; a ReplacingFile has one owner.
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

// Opens a plain file for reading ("rb"); null, with errno set, for anything
// else: a folder, a pipe, a device (EINVAL for those). Never waits on the
// other end of a pipe.
FILE* openRegularFile(char const* path);

// A file written beside its target ("<target><suffix>") and put in the
// target's place only by commit(). The new file is made exclusively and never
// through a symbolic link: a leftover of that name (from a killed run, or
// planted) is removed and the creation tried once more, and if that fails
// nothing is written. It takes the permission bits of the target when one
// exists. Every way out without a commit removes it.
class ReplacingFile {
public:
    ReplacingFile();
    ~ReplacingFile() { abandon(); }

    ReplacingFile(ReplacingFile const&) = delete;
    ReplacingFile& operator=(ReplacingFile const&) = delete;

    // The open file, or null (errno tells why) when it could not be made or
    // the names do not fit. Once per object.
    FILE* open(char const* target, char const* suffix, bool binary);
    FILE* getFile() const { return mpFile; }
    char const* getTemporaryPath() const { return mTemporary; }

    // Flushes, syncs to the disk, closes and renames over the target. False,
    // with the target untouched and the new file removed, when any step
    // fails. The file is closed afterwards either way.
    bool commit();
    // Closes and removes the new file; nothing when none is open.
    void abandon();

private:
    FILE* mpFile;
    char mTarget[4096];
    char mTemporary[4096];
};

} // namespace platform
