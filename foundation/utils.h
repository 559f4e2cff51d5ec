// Utils: the name hash that identifies every type, property and resource, and
// helpers for the data paths and folder listings. Stateless apart from the
// root path, which the application sets once at start-up before other threads
// run; everything may then be called from any thread.
#pragma once

#include "foundation/autostring.h"
#include "foundation/types.h"
#include "foundation/vector.h"

class ControlBase;
class UIBase;

class Utils {
public:
    struct FileInfo {
        char mName[256]; // UTF-8, at most 255 bytes
        bool mDirectory;
        u64 mSize;
        u16 mYear;
        u8 mMonth;
        u8 mDay;
        u8 mHour;
        u8 mMinute;
        u8 mSecond;
    };

    // CRC-32 (0x04C11DB7, most significant bit first, start 0xFFFFFFFF, no
    // final inversion). Its values are stored in data files: never change it.
    // Null gives 0xFFFFFFFF, the same as "".
    static u32 hash(char const* text);

    // The absolute data root ("<program>/resources/"), copied. Set by the
    // application once it has made its paths.
    static void setRootPath(char const* rootPath);
    static char const* getRootPath();

    // Of an absolute path below the root: the part from "intermediate/" or,
    // failing that, "native/" on, pointing into the argument; null if the
    // root is not in it or neither word follows.
    static char const* getPath(char const* path);
    // Behind the last "/" (all of it without one); points into the argument.
    static char const* getFileName(char const* path);
    // Deliberately behind the first ".", not the last: "a.b.c" gives "b.c".
    // Null when there is no ".". Points into the argument.
    static char const* getFileExtension(char const* path);
    static bool isFileExist(char const* path);
    // The one gate for a relative path that comes from a file or a user and
    // becomes a file name below the data root: false, with a trace, for an
    // empty or absolute path, a ".." part, a control character (a line feed
    // would forge trace lines), a part longer than a file name may be, or more
    // than maxLength bytes in all (the name would be cut).
    static bool isSafePath(char const* path, u32 maxLength);
    // A resource's name as the data refers to it: without the leading
    // "intermediate/" or "native/" and without the extension.
    static AutoString getResourcePath(char const* path);
    // One FileInfo per entry, made with new, sorted by name, hidden entries
    // left out; the caller deletes them.
    static void getFileList(Vector<FileInfo>& list, char const* path);
    // The widget that edits what a control descriptor offers, or null. Made
    // where the widgets live (above this folder), which only declares it.
    static UIBase* makeUIFromControl(ControlBase* control);

private:
    static char mRootPath[1024];
};
