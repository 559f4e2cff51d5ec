#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "foundation/allocator.h"
#include "foundation/utils.h"

namespace {

class UtilsTest : public testing::Test {
protected:
    void SetUp() override { AutoString::setAllocator(new GPAllocator(0x10000, "String", nullptr, 32, true)); }
    void TearDown() override { AutoString::deleteAllocator(); }
};

} // namespace

// CRC-32, polynomial 0x04C11DB7, most significant bit first, start all ones,
// no final inversion; bytes above 127 hash like every other byte.
TEST(UtilsHash, KnownValues)
{
    EXPECT_EQ(Utils::hash(""), 0xFFFFFFFFu);
    EXPECT_EQ(Utils::hash("123456789"), 0x0376E6E7u);
    EXPECT_EQ(Utils::hash("ObjectBase"), 0x0753FAA8u);
    EXPECT_EQ(Utils::hash("\xE9t\xE9\x80\xFF"), 0x6ADACA6Bu);
}

TEST(UtilsPath, FileNameAndExtension)
{
    EXPECT_STREQ(Utils::getFileName("native/ui/panel.tex"), "panel.tex");
    EXPECT_STREQ(Utils::getFileName("native/ui/"), "");
    EXPECT_EQ(Utils::getFileName(nullptr), nullptr);
    // The first dot, deliberately: two dots keep the second.
    EXPECT_STREQ(Utils::getFileExtension("a.b.c"), "b.c");
    EXPECT_EQ(Utils::getFileExtension("noextension"), nullptr);
}

TEST(UtilsPath, PathRelativeToTheDataRoot)
{
    Utils::setRootPath("/opt/harbor/resources/");
    EXPECT_STREQ(Utils::getPath("/opt/harbor/resources/intermediate/ui/panel.tga"), "intermediate/ui/panel.tga");
    // "intermediate/" wins over "native/" wherever they stand.
    EXPECT_STREQ(Utils::getPath("/opt/harbor/resources/native/intermediate/x"), "intermediate/x");
    EXPECT_EQ(Utils::getPath("/elsewhere/intermediate/ui/panel.tga"), nullptr);
    EXPECT_EQ(Utils::getPath("/opt/harbor/resources/other/panel.tga"), nullptr);
    Utils::setRootPath("");
}

TEST_F(UtilsTest, ResourcePathDropsTheFolderWordAndTheExtension)
{
    EXPECT_STREQ(Utils::getResourcePath("native/ui/panel.tex").c_str(), "ui/panel");
    EXPECT_STREQ(Utils::getResourcePath("intermediate/anim/walk.asq.xml").c_str(), "anim/walk");
    EXPECT_STREQ(Utils::getResourcePath("ver.2/panel").c_str(), "ver.2/panel");
    EXPECT_TRUE(Utils::getResourcePath(".hidden").empty());
    EXPECT_TRUE(Utils::getResourcePath("native/.tex").empty());
}

TEST(UtilsFiles, ExistenceAndListing)
{
    namespace fs = std::filesystem;
    // Unique per run, so that parallel builds' tests do not meet.
    fs::path folder = fs::temp_directory_path() /
                      ("harbor_utils_" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    fs::create_directories(folder / "sub");
    {
        std::ofstream file(folder / "data.bin", std::ios::binary);
        file << std::string(1234, 'x');
    }
    std::ofstream(folder / ".hidden") << "left out";
    EXPECT_TRUE(Utils::isFileExist((folder / "sub").c_str()));
    EXPECT_FALSE(Utils::isFileExist((folder / "missing").c_str()));

    Vector<Utils::FileInfo> list;
    Utils::getFileList(list, folder.c_str());
    // Sorted by name; the hidden file is not listed.
    ASSERT_EQ(list.size(), 2u);
    Utils::FileInfo* file = list[0];
    Utils::FileInfo* sub = list[1];
    EXPECT_STREQ(file->mName, "data.bin");
    EXPECT_STREQ(sub->mName, "sub");
    EXPECT_FALSE(file->mDirectory);
    EXPECT_EQ(file->mSize, 1234u);
    EXPECT_GE(file->mYear, 2020);
    EXPECT_TRUE(sub->mDirectory);
    for (u32 i = 0; i < list.size(); ++i) {
        delete list[i];
    }

    Vector<Utils::FileInfo> none;
    Utils::getFileList(none, (folder / "missing").c_str());
    EXPECT_TRUE(none.empty());
    fs::remove_all(folder);
}
