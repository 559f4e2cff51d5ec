// The XML writer's exact layout and the reader's lexical rules, navigation
// and every fatal format fault.
#include <gtest/gtest.h>

#include "reflection/objectlist.h"
#include "serial/stream.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"
#include "serialtest.h"

namespace {

std::string writeToText(XmlWriter& writer)
{
    std::string const path = makeTempPath("writer.xml");
    {
        TextFileStream stream(path.c_str(), Stream::eMode_Write);
        writer.write(&stream);
    }
    return readFile(path);
}

// Parses text through a file, as every reader does.
void parseText(XmlReader& reader, std::string const& text)
{
    std::string const path = makeTempPath("reader.xml");
    writeFile(path, text);
    TextFileStream stream(path.c_str(), Stream::eMode_Read);
    reader.parse(&stream);
}

std::string attribute(XmlReader& reader, char const* name)
{
    AutoString const& value = reader.getAttribute(name);
    return value.empty() ? "<none>" : value.c_str();
}

} // namespace

// ---------------------------------------------------------------------------
// Writer

TEST(XmlWriter, IndentsByTabsAndKeepsAttributeOrderAndTheBlankBeforeBrackets)
{
    XmlWriter empty("Root");
    EXPECT_EQ("<?xml version=\"1.0\"?>\n\n<Root />\n", writeToText(empty));
    // Values go out as they are, even when no reader can take them back.
    XmlWriter values("Root");
    values.addAttribute("text", "a b, (c)");
    values.addAttribute("empty", AutoString(""));
    values.addAttribute("none", AutoString());
    EXPECT_EQ("<?xml version=\"1.0\"?>\n\n<Root text=\"a b, (c)\" empty=\"\" none=\"\" />\n", writeToText(values));

    XmlWriter writer("Root");
    writer.addAttribute("b", "2");
    writer.addAttribute("a", "1");
    writer.openTag("Child");
    writer.openTag(AutoString("Leaf"));
    writer.addAttribute("x", "y");
    writer.closeTag();
    writer.openTag("Empty");
    writer.closeTag();
    writer.closeTag();
    writer.openTag("Second");
    writer.addAttribute("a", "1");
    writer.addAttribute("a", "2");
    writer.closeTag();
    EXPECT_EQ("<?xml version=\"1.0\"?>\n"
              "\n"
              "<Root b=\"2\" a=\"1\" >\n"
              "\t<Child >\n"
              "\t\t<Leaf x=\"y\" />\n"
              "\t\t<Empty />\n"
              "\t</Child>\n"
              "\t<Second a=\"1\" a=\"2\" />\n"
              "</Root>\n",
              writeToText(writer));
}

TEST(XmlWriterDeathTest, FaultsOfUseAreFatal)
{
    EXPECT_DEATH(
        {
            XmlWriter writer("Root");
            BinaryFileStream stream(makeTempPath("binary.xml").c_str(), Stream::eMode_Write);
            writer.write(&stream);
        },
        "Stream don't have text accessor\\.");
    EXPECT_DEATH(
        {
            XmlWriter writer("Root");
            writer.openTag("Open");
            TextFileStream stream(makeTempPath("open.xml").c_str(), Stream::eMode_Write);
            writer.write(&stream);
        },
        "Unclosed tag found\\.");
    EXPECT_DEATH(
        {
            XmlWriter writer("Root");
            writer.openTag("Open");
        },
        "Unclosed tag found\\.");
    EXPECT_DEATH(
        {
            XmlWriter writer("Root");
            TextFileStream stream(makeTempPath("twice.xml").c_str(), Stream::eMode_Write);
            writer.write(&stream);
            writer.write(&stream);
        },
        "Root has already closed\\.");
    EXPECT_DEATH(
        {
            XmlWriter writer("Root");
            writer.closeTag();
            writer.closeTag();
        },
        "Unclosed tag not found\\.");
}

// ---------------------------------------------------------------------------
// Reader

TEST(XmlReader, ReadsBackWhatTheWriterWrote)
{
    XmlWriter writer("Root");
    writer.addAttribute("name", "value_1.5-+</>");
    writer.openTag("Child");
    writer.addAttribute("n", "1");
    writer.closeTag();
    writer.openTag("Child");
    writer.addAttribute("n", "2");
    writer.closeTag();
    XmlReader reader;
    parseText(reader, writeToText(writer));

    EXPECT_FALSE(reader.openTag("Child")) << "children are not top-level tags";
    ASSERT_TRUE(reader.openTag(AutoString("Root")));
    EXPECT_EQ("value_1.5-+</>", attribute(reader, "name"));
    EXPECT_EQ("<none>", attribute(reader, "missing"));
    ASSERT_TRUE(reader.openTag("Child"));
    EXPECT_EQ("1", attribute(reader, "n")) << "of two children of one name the first is found";
    reader.closeTag();
    ASSERT_TRUE(reader.openTag("Child"));
    EXPECT_EQ("1", attribute(reader, "n"));
    EXPECT_FALSE(reader.openTag("Grandchild"));
    EXPECT_EQ("1", attribute(reader, "n")) << "a failed openTag changes nothing";
    reader.closeTag();
    reader.closeTag();
    EXPECT_TRUE(reader.openTag("Root")) << "closing the root returns to the top level";
}

TEST(XmlReader, SkipsDeclarationsAndTextAndTakesBlanksAndCarriageReturnsInTags)
{
    XmlReader reader;
    parseText(reader,
              "<?xml version=\"1.0\"?>text<A a=\"1\">\n  words <?other ?>"
              "<B b=\"2\"/>more</A junk here>\n<?xml?><C/>");
    ASSERT_TRUE(reader.openTag("A"));
    ASSERT_TRUE(reader.openTag("B"));
    EXPECT_EQ("2", attribute(reader, "b"));
    reader.closeTag();
    reader.closeTag();
    EXPECT_TRUE(reader.openTag("C"));

    // Blanks around the equals sign and inside the quotes are accepted.
    XmlReader blanks;
    parseText(blanks, "<A a = \" x\"\tb=\t\"y \" c=\"z\"\n/>");
    ASSERT_TRUE(blanks.openTag("A"));
    EXPECT_EQ("x", attribute(blanks, "a"));
    EXPECT_EQ("y", attribute(blanks, "b")) << "a trailing blank is dropped";
    EXPECT_EQ("z", attribute(blanks, "c"));

    // A carriage return inside a tag ends its attributes.
    XmlReader returns;
    parseText(returns, "<A a=\"1\"\r b=\"2\" />\r\n<B/>");
    ASSERT_TRUE(returns.openTag("A"));
    EXPECT_EQ("1", attribute(returns, "a"));
    EXPECT_EQ("<none>", attribute(returns, "b"));
    returns.closeTag();
    EXPECT_TRUE(returns.openTag("B"));
}

TEST(XmlReader, AnEmptyFileAndAMissingFileGiveNoTags)
{
    XmlReader reader;
    parseText(reader, "");
    EXPECT_FALSE(reader.openTag("A"));

    testing::internal::CaptureStderr();
    XmlReader missing;
    TextFileStream stream(makeTempPath("missing/none.xml").c_str(), Stream::eMode_Read);
    missing.parse(&stream);
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(missing.openTag("A"));
}

TEST(XmlReader, ReadNamesMissingAndUnknownClasses)
{
    XmlReader reader;
    parseText(reader, "<Known typeinfo=\"ObjectList\" list_count=\"0\" stable=\"true\" />"
                      "<Unknown typeinfo=\"NoSuchClass\" />"
                      "<Untyped />");
    ObjectList given;
    EXPECT_EQ(&given, reader.read(&given, "Absent")) << "no tag: the object comes back unchanged";
    EXPECT_EQ(nullptr, reader.read(nullptr, "Absent"));

    testing::internal::CaptureStderr();
    EXPECT_EQ(nullptr, reader.read(nullptr, "Unknown"));
    EXPECT_EQ(nullptr, reader.read(nullptr, "Untyped"));
    EXPECT_EQ("Unknown undefined typeinfo \"NoSuchClass\".\nUntyped typeinfo not found.\n",
              testing::internal::GetCapturedStderr());
    EXPECT_TRUE(reader.openTag("Known")) << "read leaves the reader where it began";
    reader.closeTag();

    ObjectBase* made = reader.read(nullptr, "Known");
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(ObjectList::getStaticTypeInfo(), made->getTypeInfo());
    delete made;
}

TEST(XmlReader, DeepNestingIsFreedWithoutRecursion)
{
    std::string text;
    for (int i = 0; i < 100000; ++i) {
        text += "<a>";
    }
    for (int i = 0; i < 100000; ++i) {
        text += "</a>";
    }
    XmlReader reader;
    parseText(reader, text);
    EXPECT_TRUE(reader.openTag("a"));
}

// Each format fault of the reader, from a file that shows it.
TEST(XmlReaderDeathTest, EveryFormatFaultIsFatal)
{
    struct sCase {
        char const* mpText;
        char const* mpMessage;
    };
    sCase const cases[] = {
        {"<A></B>", "Invalid end tag\\."},
        {"</A>", "Invalid end tag\\."},
        {"<A/></A>", "Invalid end tag\\."},
        {"<A><B>", "Unclosed tag exists\\."},
        {"<!-- comment -->", "Invalid tag\\."},
        {"<=A/>", "Invalid tag\\."},
        {"</>", "Invalid tag\\."},
        {"<A a=\"1\"", "Invalid tag\\."},
        {"<A / >", "Invalid tag\\."},
        {"<", "Invalid tag\\."},
        {"<A a \"1\"/>", "Invalid attribute format\\."},
        {"<A a=1/>", "Invalid attribute format\\."},
        {"<A a=\"1 2\"/>", "Invalid attribute format\\."},
        {"<A a=\"1,2\"/>", "Invalid attribute format\\."},
        {"<A a=\"1", "Invalid attribute format\\."},
        {"<A a=\"\"/>", "Invalid attribute value\\."},
        {"<A a=\" \"/>", "Invalid attribute value\\."},
    };
    for (sCase const& test : cases) {
        EXPECT_DEATH(
            {
                XmlReader reader;
                parseText(reader, test.mpText);
            },
            test.mpMessage)
            << test.mpText;
    }
    EXPECT_DEATH(
        {
            XmlReader reader;
            BinaryFileStream stream(makeTempPath("binary.xml").c_str(), Stream::eMode_Write);
            reader.parse(&stream);
        },
        "Stream don't have text accessor\\.");
    EXPECT_DEATH(
        {
            XmlReader reader;
            reader.closeTag();
        },
        "No tag is opened\\.");
    EXPECT_DEATH(
        {
            XmlReader reader;
            reader.getAttribute("a");
        },
        "No tag is opened\\.");
}
