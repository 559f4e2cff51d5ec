// The settings file against a hostile machine: whatever stands under its
// name that could not be read whole stays as it was, with the defaults in
// use; a read-only file is replaced with its mode kept; nothing blocks.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "host/settingsfile.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "serial/serialtest.h"
#include "serial/xmlreader.h"

namespace {

testing::Environment* const sEnvironment = testing::AddGlobalTestEnvironment(new TestEnvironment);

class Settings : public ObjectBase {
public:
    void makePropertyList(PropertyList& list) override { list.add(new ReferenceProperty<s32>("Value", &mValue)); }
    s32 mValue = 7;

    DECLARE_TYPEINFO(UniqueTypeInfo<Settings>)
};

IMPLEMENT_OBJECT_TYPEINFO(Settings, "ObjectBase");

std::string settingsText(char const* value)
{
    return std::string("<?xml version=\"1.0\"?>\n\n<Settings typeinfo=\"Settings\" id=\"1\" stable=\"true\" >\n"
                       "\t<Value type=\"s32\" count=\"0\" index=\"0\" value=\"") +
           value + "\" />\n</Settings>\n";
}

// Reads, sets a new value, writes, as the host does from start to exit.
// Answers the value read and whether the write went through.
std::pair<s32, bool> runHost(std::string const& path)
{
    Settings settings;
    SettingsFile file;
    file.read(&settings, "Settings", path.c_str());
    s32 const read = settings.mValue;
    settings.mValue = 99;
    return {read, file.write(&settings, "Settings", path.c_str())};
}

s32 readValue(std::string const& path)
{
    Settings settings;
    SettingsFile().read(&settings, "Settings", path.c_str());
    return settings.mValue;
}

} // namespace

TEST(SettingsFile, WhatCannotBeReadWholeIsKeptAndTheDefaultsUsed)
{
    namespace fs = std::filesystem;
    struct sCase {
        char const* mpName;
        std::function<void(std::string const&)> mMake;
    } const cases[] = {
        {"folder", [](std::string const& path) { fs::create_directories(path + "/inside"); }},
        {"pipe", [](std::string const& path) { ASSERT_EQ(0, mkfifo(path.c_str(), 0600)); }},
        {"device", [](std::string const& path) { fs::create_symlink("/dev/zero", path); }},
        {"too large", [](std::string const& path) {
             writeFile(path, settingsText("1"));
             fs::resize_file(path, SettingsFile::kSizeMax + 1);
         }},
        {"token beyond every heap", [](std::string const& path) {
             writeFile(path, settingsText("1") + "<Other a=\"" + std::string(XmlReader::kTokenMax + 1, 'x') + "\" />\n");
         }},
    };
    for (sCase const& test : cases) {
        std::string const path = makeTempPath((std::string("harbor_") + test.mpName + ".xml").c_str());
        test.mMake(path);
        fs::file_status const before = fs::symlink_status(path);
        uintmax_t const size = fs::is_regular_file(before) ? fs::file_size(path) : 0;
        testing::internal::CaptureStderr();
        std::pair<s32, bool> const run = runHost(path);
        std::string const traces = testing::internal::GetCapturedStderr();
        EXPECT_EQ(7, run.first) << test.mpName;
        EXPECT_FALSE(run.second) << test.mpName;
        EXPECT_NE(std::string::npos, traces.find("Settings not saved: " + path)) << test.mpName;
        EXPECT_EQ(before.type(), fs::symlink_status(path).type()) << test.mpName;
        if (size != 0) {
            EXPECT_EQ(size, fs::file_size(path)) << test.mpName;
        }
        EXPECT_FALSE(fs::exists(fs::symlink_status(path + ".new"))) << test.mpName;
    }
}

TEST(SettingsFile, AMissingFileIsMadeAndAReadOnlyOneReplacedWithItsMode)
{
    namespace fs = std::filesystem;
    std::string const path = makeTempPath("harbor_first.xml");
    testing::internal::CaptureStderr();
    EXPECT_EQ(std::make_pair(7, true), runHost(path));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("File open error."));
    EXPECT_EQ(99, readValue(path));

    writeFile(path, settingsText("5"));
    fs::permissions(path, fs::perms::owner_read);
    EXPECT_EQ(std::make_pair(5, true), runHost(path));
    EXPECT_EQ(99, readValue(path));
    EXPECT_EQ(fs::perms::owner_read, fs::status(path).permissions());
}
