// The settings file: one object's property tree read from an XML file at
// start and written back at exit. A file that exists but could not be read
// whole (no permission, not a plain file, too large, a read that failed
// part-way, a token too long for the string heap) is left as it is: the
// object keeps its defaults and the file is never overwritten with them.
// Writing goes beside the file and renames over it, keeping its permissions.
// Main thread.
#pragma once

class ObjectBase;

class SettingsFile {
public:
    // Larger files are not read: settings are a few kilobytes.
    static unsigned int const kSizeMax = 0x1000000;

    SettingsFile() : mKeep(false) {}

    // Reads path into object under the top tag rootName. A missing file
    // traces "File open error." and may be written later; a refused one
    // traces why and is kept. A malformed file is fatal, as for every reader.
    void read(ObjectBase* object, char const* rootName, char const* path);
    // Writes object under rootName; false, with a trace, when the file was
    // refused by read() or the write failed (the old file then stays whole).
    bool write(ObjectBase* object, char const* rootName, char const* path);

private:
    bool mKeep; // the file exists and was not read: never overwrite it
};
