// The binary data layer: buffered reads to the end, strings, and offset tags
// patched when the writer ends.
#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <vector>

#include "serial/datareader.h"
#include "serial/datawriter.h"
#include "serial/stream.h"
#include "serialtest.h"

TEST(DataWriter, WritesValuesInOrderWithoutAnyHeaderAndPatchesTagsAtTheEnd)
{
    std::string const path = makeTempPath("values.bin");
    {
        BinaryFileStream stream(path.c_str(), Stream::eMode_Write);
        DataWriter writer(&stream, 16);
        EXPECT_EQ(4u, writer.write<u32>(0x04030201));
        EXPECT_EQ(2u, writer.write<u16>(0x0605));
        EXPECT_EQ(3u, writer.write("abc", 3));
        EXPECT_EQ(3u, writer.writeString("xy"));
        EXPECT_EQ(9u, writer.getPosition()) << "strings are deliberately not counted";
    }
    EXPECT_EQ(std::string("\x01\x02\x03\x04\x05\x06" "abcxy\0", 12), readFile(path));

    // Tags are patched when the writer ends.
    {
        BinaryFileStream stream(path.c_str(), Stream::eMode_Write);
        DataWriter writer(&stream, 16);
        writer.writeTag(1);     // slot at 0, set below
        writer.writeTag(2);     // slot at 4, never set
        writer.write<u32>(0xAAAAAAAA);
        writer.setTag(1);       // value 12
        writer.writeTag(1);     // slot at 12 takes the value already set
        writer.write<u8>(0xBB);
    }
    std::string const bytes = readFile(path);
    ASSERT_EQ(17u, bytes.size());
    u32 slots[4];
    memcpy(slots, bytes.data(), 16);
    EXPECT_EQ(std::vector<u32>({12u, 0xFFFFFFFFu, 0xAAAAAAAAu, 12u}), std::vector<u32>(slots, slots + 4));
}

TEST(DataWriterDeathTest, RefusesTextStreamsAndAFullTagList)
{
    std::string const text = makeTempPath("text.bin"), full = makeTempPath("full.bin");
    EXPECT_DEATH({ TextFileStream stream(text.c_str(), Stream::eMode_Write); DataWriter writer(&stream, 16); },
                 "Stream don't have binary accessor\\.");
    EXPECT_DEATH({ TextFileStream stream(text.c_str(), Stream::eMode_Write); DataReader reader(&stream, 1024); },
                 "Stream don't have binary accessor\\.");
    EXPECT_DEATH({ BinaryFileStream stream(full.c_str(), Stream::eMode_Write); DataWriter writer(&stream, 2);
                   writer.writeTag(1); writer.writeTag(2); writer.writeTag(3); }, "Tag list overflow\\.");
}

TEST(DataReader, ReadsAcrossRefillsAndAnswersTheRemainderAtTheEnd)
{
    std::string bytes(50, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    std::string const path = makeTempPath("across.bin");
    writeFile(path, bytes);
    BinaryFileStream stream(path.c_str(), Stream::eMode_Read);
    DataReader reader(&stream, 16);
    EXPECT_EQ(0x03020100u, reader.read<u32>());
    u8 buffer[64];
    EXPECT_EQ(30u, reader.read(buffer, 30));
    EXPECT_EQ(4, buffer[0]);
    EXPECT_EQ(33, buffer[29]);
    EXPECT_EQ(16u, reader.read(buffer, 64)) << "the file's remainder";
    EXPECT_EQ(49, buffer[15]);
    EXPECT_EQ(0u, reader.read(buffer, 4));

    writeFile(path, std::string(32, 'x'));
    BinaryFileStream whole(path.c_str(), Stream::eMode_Read);
    DataReader wholeReader(&whole, 16);
    EXPECT_EQ(32u, wholeReader.read(buffer, 64)) << "a file of whole buffers reads to the end";
    EXPECT_EQ(0u, wholeReader.read(buffer, 1));
}

TEST(DataReader, StringsStopAtTheTerminatorOrTheBuffer)
{
    std::string const path = makeTempPath("strings.bin");
    writeFile(path, std::string("first\0second\0tail", 17));
    BinaryFileStream stream(path.c_str(), Stream::eMode_Read);
    DataReader reader(&stream, 4);
    char buffer[16];
    EXPECT_EQ(0u, reader.readString(buffer, 1)) << "size 1: only a terminator, nothing taken";
    EXPECT_STREQ("", buffer);
    EXPECT_EQ(6u, reader.readString(buffer, 16)) << "the terminator counts";
    EXPECT_STREQ("first", buffer);
    EXPECT_EQ(3u, reader.readString(buffer, 4));
    EXPECT_STREQ("sec", buffer);
    EXPECT_EQ(4u, reader.readString(buffer, 16));
    EXPECT_EQ(4u, reader.readString(buffer, 16)) << "the end of the file ends the string";
    EXPECT_STREQ("tail", buffer);
    EXPECT_EQ(0u, reader.readString(buffer, 16));
}
