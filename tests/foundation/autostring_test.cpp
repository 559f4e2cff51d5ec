#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "foundation/allocator.h"
#include "foundation/autostring.h"
#include "foundation/utils.h"

namespace {

// Every test runs on a fresh "String" heap and must hand it back empty.
class AutoStringTest : public testing::Test {
protected:
    void SetUp() override
    {
        mpHeap = new GPAllocator(0x40000, "String", nullptr, 32, true);
        AutoString::setAllocator(mpHeap);
    }
    void TearDown() override
    {
        EXPECT_EQ(mpHeap->getUsedSize(), 32u) << "string heap not empty";
        AutoString::deleteAllocator();
    }
    GPAllocator* mpHeap;
};

typedef AutoStringTest AutoStringDeathTest;

} // namespace

TEST_F(AutoStringTest, NullBufferIsTheEmptyStringButZeroLengthIsNot)
{
    AutoString none;
    AutoString blank("");
    EXPECT_EQ(none.c_str(), nullptr);
    EXPECT_TRUE(none.empty() && AutoString::Null.empty());
    EXPECT_STREQ(blank.c_str(), "");
    EXPECT_FALSE(blank.empty());
    EXPECT_FALSE(none == blank);
    EXPECT_TRUE(none == "" && blank == "");
    EXPECT_FALSE(AutoString("abc") == AutoString("ab"));
}

TEST_F(AutoStringTest, CopiesShareOneBufferThatOutlivesTheOriginal)
{
    AutoString* original = new AutoString("shared text");
    AutoString copy(*original);
    AutoString assigned;
    assigned = copy;
    EXPECT_EQ(copy.c_str(), original->c_str());
    EXPECT_EQ(assigned.c_str(), original->c_str());
    delete original;
    EXPECT_STREQ(copy.c_str(), "shared text");
    AutoString moved(static_cast<AutoString&&>(copy));
    EXPECT_TRUE(copy.empty());
    EXPECT_EQ(moved.c_str(), assigned.c_str());
    // An equal value keeps the buffer.
    char const* buffer = moved.c_str();
    moved = "shared text";
    moved = AutoString("shared text");
    EXPECT_EQ(moved.c_str(), buffer);
    // Assigning a part of its own text is safe.
    AutoString longText("abcdef");
    longText = longText.c_str() + 2;
    EXPECT_STREQ(longText.c_str(), "cdef");
    // The empty string already equals "", so it stays null.
    AutoString none;
    none = "";
    EXPECT_TRUE(none.empty());
}

TEST_F(AutoStringTest, WritableIndexAlwaysCopiesSoSharersNeverSeeTheChange)
{
    AutoString b("hello");
    AutoString a;
    a = b;
    a[0] = 'j';
    EXPECT_STREQ(a.c_str(), "jello");
    EXPECT_STREQ(b.c_str(), "hello");
    // Reading through the writable form on a shared string copies as well.
    AutoString c(a);
    EXPECT_EQ(a[2], 'l');
    EXPECT_NE(a.c_str(), c.c_str());
    AutoString const& constant = b;
    EXPECT_EQ(constant[4], 'o');
    EXPECT_EQ(constant.c_str(), b.c_str());
}

TEST_F(AutoStringDeathTest, EmptyWritableIndexAndSecondAllocatorAreFatal)
{
    AutoString none;
    EXPECT_DEATH(none[0] = 'x', "Buffer is NULL\\.");
    EXPECT_DEATH(AutoString::setAllocator(mpHeap), "Allocator already set\\.");
}

TEST_F(AutoStringTest, FormatPrintsOutsideTextAsItIsAndCutsLongText)
{
    std::string const path = "/data/%s%n%x/root";
    AutoString text;
    text.format("%s", path.c_str());
    EXPECT_STREQ(text.c_str(), path.c_str());
    text.format("root %s", std::string(4000, 'a').c_str());
    EXPECT_EQ(text.size(), 1023u);
}

TEST_F(AutoStringTest, SubstringsAndInsertion)
{
    AutoString text("abcdef");
    EXPECT_STREQ(text.substr(1, 3).c_str(), "bcd");
    EXPECT_STREQ(text.substr(4, 100).c_str(), "ef");
    EXPECT_TRUE(AutoString("abc").substr(3).empty());
    AutoString ace("ace");
    ace.insert(1, 'b');
    ace.insert(3, AutoString("d"));
    ace.insert(100, 'f');
    ace.insert(0, AutoString("_"));
    EXPECT_STREQ(ace.c_str(), "_abcdef");
    // On the empty string the argument becomes the content, buffer and all.
    AutoString none;
    none.insert(5, ace);
    EXPECT_EQ(none.c_str(), ace.c_str());
}

TEST_F(AutoStringTest, RemovalClearsWheneverTheLengthCoversTheSize)
{
    auto removed = [](char const* text, u32 position, u32 length) {
        AutoString result(text);
        result.remove(position, length);
        return result;
    };
    EXPECT_STREQ(removed("abcdef", 1, 2).c_str(), "adef");
    EXPECT_STREQ(removed("abcdef", 4, 3).c_str(), "abcd"); // runs past the end: takes the rest
    EXPECT_STREQ(removed("abcdef", 10, 1).c_str(), "abcdef");
    // Deliberate: the head goes as well when the length covers the size.
    EXPECT_TRUE(removed("abc", 2, 100).empty());
    EXPECT_TRUE(removed(nullptr, 0, 1).empty());
}

TEST_F(AutoStringTest, SearchingFormattingAndConcatenation)
{
    AutoString text("one/two/three");
    EXPECT_EQ(text.findFirst('/', 4), 7u);
    EXPECT_EQ(text.findFirst('o', 100), AutoString::NotFound);
    EXPECT_EQ(text.findLast('o', 6), 6u);
    EXPECT_EQ(AutoString("aaaa").findLast(AutoString("aa")), 2u);
    EXPECT_EQ(AutoString("abab").findLast(AutoString("ab"), 1), 2u);
    EXPECT_EQ(text.findFirst(AutoString()), AutoString::NotFound);
    EXPECT_EQ(AutoString().findLast(text), AutoString::NotFound);

    AutoString none;
    none.indent(2);
    EXPECT_STREQ(none.c_str(), "\t\t");
    none.format("%s=%d", "count", 42);
    EXPECT_STREQ(none.c_str(), "count=42");
    EXPECT_EQ(AutoString().hash(), 0xFFFFFFFFu);
    EXPECT_EQ(AutoString("ObjectBase").hash(), Utils::hash("ObjectBase"));

    AutoString sum("ab");
    sum += "c";
    sum += 'd';
    char const* before = sum.c_str();
    sum += AutoString();
    EXPECT_EQ(sum.c_str(), before);
    EXPECT_STREQ((sum + AutoString("e") + 'f').c_str(), "abcdef");
    EXPECT_STREQ(sum.c_str(), "abcd");
}

TEST_F(AutoStringTest, CopiesOnManyThreadsKeepTheCountRight)
{
    AutoString shared("read by every thread");
    auto body = [&shared]() {
        for (int i = 0; i < 2000; ++i) {
            AutoString copy(shared);
            AutoString second;
            second = copy;
            EXPECT_EQ(second.size(), 20u);
        }
    };
    std::thread threads[4] = {std::thread(body), std::thread(body), std::thread(body), std::thread(body)};
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_STREQ(shared.c_str(), "read by every thread");
}
