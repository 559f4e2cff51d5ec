#include "host/settingsfile.h"

#include "foundation/debug.h"
#include "foundation/utils.h"
#include "reflection/objectbase.h"
#include "serial/stream.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"

void SettingsFile::read(ObjectBase* object, char const* rootName, char const* path)
{
    bool const exists = Utils::isFileExist(path);
    TextFileStream stream(path, Stream::eMode_Read);
    mKeep = false;
    if (stream.eof()) {
        // Missing: the first start. Anything else that exists stays untouched.
        mKeep = exists;
    } else if (stream.getLength() > kSizeMax) {
        DEV_TRACE("%s is larger than %u bytes: not read.\n", path, kSizeMax);
        mKeep = true;
    } else {
        XmlReader reader;
        mKeep = !reader.parse(&stream) || stream.hasError();
        if (mKeep) {
            DEV_TRACE("%s could not be read whole: not read.\n", path);
        } else {
            reader.read(object, rootName);
        }
    }
    if (mKeep) {
        DEV_TRACE("%s will be kept as it is.\n", path);
    }
}

bool SettingsFile::write(ObjectBase* object, char const* rootName, char const* path)
{
    if (mKeep) {
        DEV_TRACE("Settings not saved: %s\n", path);
        return false;
    }
    ReplacingTextFileStream stream(path);
    XmlWriter writer(rootName);
    object->serialize(&writer, true, 0);
    writer.write(&stream);
    if (!stream.commit()) {
        DEV_TRACE("Settings not saved: %s\n", path);
        return false;
    }
    return true;
}
