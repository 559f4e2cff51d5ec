// File streams: the two accessors, the text stream's end-of-file rules, the
// binary stream's silence, replacing a file whole and safely, and reading
// plain files only.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <csignal>
#include <cstring>
#include <filesystem>

#include "serial/stream.h"
#include "serial/xmlwriter.h"
#include "serialtest.h"

TEST(TextFileStream, BackforwardStepsBackFromWhereverTheStreamStands)
{
    std::string const path = makeTempPath("steps.txt");
    writeFile(path, "abcdef");
    TextFileStream stream(path.c_str(), Stream::eMode_Read);
    EXPECT_EQ('a', stream.getChar());
    stream.backforward();
    EXPECT_EQ('a', stream.getChar());
    EXPECT_EQ('b', stream.getChar());
    stream.backforward(), stream.backforward();
    EXPECT_EQ('a', stream.getChar()) << "two steps back";
    char buffer[8];
    EXPECT_EQ(1u, stream.read(buffer, 1));
    stream.backforward();
    EXPECT_EQ('b', stream.getChar()) << "one step back from a read";
}

TEST(TextFileStream, ByteFFEndsTheStreamForGoodAndOtherHighBytesReadSigned)
{
    std::string const path = makeTempPath("ff.txt");
    writeFile(path, "\xE9" "a\xFF" "b");
    TextFileStream stream(path.c_str(), Stream::eMode_Read);
    EXPECT_EQ(static_cast<s8>(0xE9), stream.getChar());
    EXPECT_EQ('a', stream.getChar());
    EXPECT_FALSE(stream.eof());
    EXPECT_EQ(-1, stream.getChar());
    EXPECT_TRUE(stream.eof());
    EXPECT_EQ(-1, stream.getChar()) << "the 'b' behind it is never read";
    stream.seek(3, Stream::eOrigin_Start);
    EXPECT_EQ(-1, stream.getChar()) << "seek does not clear the end flag";
}

TEST(TextFileStream, LineReadsComeInPiecesOf1023AndEndInTheEndFlag)
{
    std::string const path = makeTempPath("lines.txt");
    writeFile(path, "first\n" + std::string(1500, 'x'));
    TextFileStream stream(path.c_str(), Stream::eMode_Read);
    char buffer[1024];
    EXPECT_EQ(6u, stream.read(buffer, 0));
    EXPECT_STREQ("first\n", buffer);
    EXPECT_EQ(1023u, stream.read(buffer, 0));
    EXPECT_EQ(477u, stream.read(buffer, 0));
    EXPECT_FALSE(stream.eof());
    EXPECT_EQ(0u, stream.read(buffer, 0));
    EXPECT_TRUE(stream.eof());
    EXPECT_EQ(0, stream.seek(0, Stream::eOrigin_Start)) << "seeking stays possible";
    EXPECT_EQ(0u, stream.read(buffer, 3));
    EXPECT_EQ(-1, stream.getChar());
}

TEST(TextFileStream, AMissingFileTracesAndEveryStreamWithoutAFileAnswersNothing)
{
    std::string const path = makeTempPath("missing/none.txt");
    testing::internal::CaptureStderr();
    TextFileStream text(path.c_str(), Stream::eMode_Read);
    BinaryFileStream binary(path.c_str(), Stream::eMode_Read);
    EXPECT_EQ(std::string("File open error.\n") + strerror(ENOENT) + "\n", testing::internal::GetCapturedStderr())
        << "the binary stream stays silent";
    EXPECT_TRUE(text.eof());
    EXPECT_FALSE(binary.eof());
    EXPECT_EQ(-1, text.getChar());
    char buffer[16];
    EXPECT_EQ(0u, text.read(buffer, 4));
    EXPECT_EQ(0u, text.write("abc", 0));
    EXPECT_EQ(0u, binary.read(buffer, 8));
    EXPECT_EQ(0u, binary.write(buffer, 8));
}

TEST(TextFileStream, WritesTextLineFeedsAndTabsAndReadsThemBack)
{
    std::string const path = makeTempPath("write.txt");
    {
        TextFileStream stream(path.c_str(), Stream::eMode_WriteRead);
        EXPECT_EQ(3u, stream.write("abc", 0));
        EXPECT_EQ(2u, stream.write("defgh", 2));
        stream.putCR(), stream.putTab(3), stream.putChar('z');
        EXPECT_EQ(0, stream.seek(1, Stream::eOrigin_Start));
        EXPECT_EQ(10u, stream.getLength());
        EXPECT_EQ('b', stream.getChar()) << "getLength keeps the position";
        EXPECT_EQ(0, stream.seek(1, 7)) << "an unknown origin does nothing";
    }
    EXPECT_EQ("abcde\n\t\t\tz", readFile(path));
}

// ---------------------------------------------------------------------------
// Replacing a file whole

namespace {

void writeSettings(Stream* stream, char const* value)
{
    XmlWriter writer("Settings");
    writer.addAttribute("value", value);
    writer.write(stream);
}

std::string settingsFile(char const* value)
{
    return std::string("<?xml version=\"1.0\"?>\n\n<Settings value=\"") + value + "\" />\n";
}

// Dies by SIGKILL, as from outside, once the given number of bytes went out.
class KilledStream : public ReplacingTextFileStream {
public:
    KilledStream(char const* path, unsigned int budget) : ReplacingTextFileStream(path), mBudget(budget) {}

    unsigned int write(char const* text, unsigned int size) override
    {
        unsigned int const length = (size == 0) ? static_cast<unsigned int>(strlen(text)) : size;
        for (unsigned int i = 0; i < length; ++i) {
            putChar(text[i]);
        }
        return length;
    }
    void putChar(char character) override
    {
        if (mBudget-- == 0) {
            raise(SIGKILL);
        }
        ReplacingTextFileStream::putChar(character);
    }
    unsigned int mBudget;
};

} // namespace

TEST(ReplacingTextFileStream, OnlyCommitPutsTheNewFileInPlace)
{
    std::string const path = makeTempPath("settings_commit.xml");
    writeFile(path, settingsFile("old"));
    {
        ReplacingTextFileStream stream(path.c_str());
        writeSettings(&stream, "new");
        EXPECT_EQ(settingsFile("old"), readFile(path)) << "nothing changes before the commit";
        EXPECT_TRUE(stream.commit());
        EXPECT_FALSE(stream.commit());
    }
    EXPECT_EQ(settingsFile("new"), readFile(path));
    EXPECT_FALSE(std::filesystem::exists(path + ".new"));

    // Without a commit the file stays and the partial file goes.
    {
        ReplacingTextFileStream stream(path.c_str());
        writeSettings(&stream, "newer");
    }
    EXPECT_EQ(settingsFile("new"), readFile(path));
    EXPECT_FALSE(std::filesystem::exists(path + ".new"));
}

TEST(ReplacingTextFileStream, AKillDuringTheWriteLeavesTheOldFileReadable)
{
    std::string const path = makeTempPath("settings_kill.xml");
    std::string const old = settingsFile("old");
    writeFile(path, old);
    for (unsigned int budget : {0u, 10u, 30u, 45u}) {
        EXPECT_EXIT(
            {
                KilledStream stream(path.c_str(), budget);
                writeSettings(&stream, "new_value_that_is_longer");
                stream.commit();
                std::_Exit(0);
            },
            testing::KilledBySignal(SIGKILL), "");
        EXPECT_EQ(old, readFile(path)) << "budget " << budget;
    }
    ReplacingTextFileStream stream(path.c_str());
    writeSettings(&stream, "again");
    EXPECT_TRUE(stream.commit()) << "the next save overwrites what the killed one left beside the file";
    EXPECT_EQ(settingsFile("again"), readFile(path));
}

TEST(ReplacingTextFileStream, AFolderThatCannotHoldTheFileCommitsNothing)
{
    std::string const path = makeTempPath("missing/settings.xml");
    testing::internal::CaptureStderr();
    ReplacingTextFileStream stream(path.c_str());
    writeSettings(&stream, "x");
    EXPECT_FALSE(stream.commit());
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("File open error."));
}

// The file beside the target is made afresh: a link planted under its name is
// not followed. (A folder in the file's place, where the rename fails, and a
// read-only file whose mode the new one keeps are the settings file's tests.)
TEST(ReplacingTextFileStream, NeverWritesThroughALinkAndLeavesNothingBehind)
{
    namespace fs = std::filesystem;
    std::string const path = makeTempPath("settings_link.xml");
    std::string const victim = makeTempPath("victim.txt");
    writeFile(victim, "precious");
    writeFile(path, settingsFile("old"));
    fs::create_symlink(victim, path + ".new");
    {
        ReplacingTextFileStream stream(path.c_str());
        writeSettings(&stream, "new");
        EXPECT_TRUE(stream.commit());
    }
    EXPECT_EQ("precious", readFile(victim));
    EXPECT_EQ(settingsFile("new"), readFile(path));
    EXPECT_FALSE(fs::exists(fs::symlink_status(path + ".new")));
}

// Reading opens plain files only: a pipe would block the open, a device
// would never end.
TEST(FileStream, ReadingRefusesWhatIsNoPlainFile)
{
    std::string const pipe = makeTempPath("pipe.xml");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    for (std::string const& path : {pipe, std::string("/dev/zero"), getTempFolder()}) {
        testing::internal::CaptureStderr();
        TextFileStream text(path.c_str(), Stream::eMode_Read);
        EXPECT_TRUE(text.eof()) << path;
        EXPECT_EQ(-1, text.getChar()) << path;
        EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("File open error.")) << path;
        BinaryFileStream binary(path.c_str(), Stream::eMode_Read);
        char buffer[16];
        EXPECT_EQ(0u, binary.read(buffer, sizeof(buffer))) << path;
    }
}
