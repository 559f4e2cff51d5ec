// The XML writer's exact layout and the reader's lexical rules, navigation
// and every fatal format fault.
#include <gtest/gtest.h>

#include <vector>

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
    values.addAttribute("text", "a b, (c)"), values.addAttribute("empty", AutoString("")), values.addAttribute("none", AutoString());
    EXPECT_EQ("<?xml version=\"1.0\"?>\n\n<Root text=\"a b, (c)\" empty=\"\" none=\"\" />\n", writeToText(values));

    XmlWriter writer("Root");
    writer.addAttribute("b", "2"), writer.addAttribute("a", "1");
    writer.openTag("Child"), writer.openTag(AutoString("Leaf")), writer.addAttribute("x", "y"), writer.closeTag();
    writer.openTag("Empty"), writer.closeTag(), writer.closeTag();
    writer.openTag("Second"), writer.addAttribute("a", "1"), writer.addAttribute("a", "2"), writer.closeTag();
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
    auto write = [](XmlWriter& writer, char const* name) {
        TextFileStream stream(makeTempPath(name).c_str(), Stream::eMode_Write);
        writer.write(&stream);
    };
    EXPECT_DEATH({ XmlWriter writer("Root"); BinaryFileStream stream(makeTempPath("binary.xml").c_str(), Stream::eMode_Write); writer.write(&stream); },
                 "Stream don't have text accessor\\.");
    EXPECT_DEATH({ XmlWriter writer("Root"); writer.openTag("Open"); write(writer, "open.xml"); }, "Unclosed tag found\\.");
    EXPECT_DEATH({ XmlWriter writer("Root"); writer.openTag("Open"); }, "Unclosed tag found\\.");
    EXPECT_DEATH({ XmlWriter writer("Root"); write(writer, "twice.xml"); write(writer, "twice.xml"); }, "Root has already closed\\.");
    EXPECT_DEATH({ XmlWriter writer("Root"); writer.closeTag(); writer.closeTag(); }, "Unclosed tag not found\\.");
}

// ---------------------------------------------------------------------------
// Reader

// Navigation scripts: "+Tag" opens (must succeed), "-Tag" must fail to open,
// "a=v" checks an attribute ("a?" its absence), "/" closes.
TEST(XmlReader, NavigatesWhatTheWriterWroteAndSkipsWhatIsNoTag)
{
    XmlWriter writer("Root");
    writer.addAttribute("name", "value_1.5-+</>");
    for (char const* n : {"1", "2"}) {
        writer.openTag("Child"), writer.addAttribute("n", n), writer.closeTag();
    }
    struct sCase { std::string mText; std::vector<std::string> mSteps; } const cases[] = {
        // Children are no top-level tags; of two children of one name the
        // first is found; a failed openTag changes nothing; closing the root
        // returns to the top level.
        {writeToText(writer), {"-Child", "+Root", "name=value_1.5-+</>", "missing?", "+Child", "n=1", "/", "+Child",
                               "n=1", "-Grandchild", "n=1", "/", "/", "+Root"}},
        // Declarations and text are skipped, so is anything after an end tag's name.
        {"<?xml version=\"1.0\"?>text<A a=\"1\">\n  words <?other ?><B b=\"2\"/>more</A junk here>\n<?xml?><C/>",
         {"+A", "+B", "b=2", "/", "/", "+C"}},
        // Blanks around the equals sign and inside the quotes are accepted; a trailing blank is dropped.
        {"<A a = \" x\"\tb=\t\"y \" c=\"z\"\n/>", {"+A", "a=x", "b=y", "c=z"}},
        // A carriage return inside a tag ends its attributes.
        {"<A a=\"1\"\r b=\"2\" />\r\n<B/>", {"+A", "a=1", "b?", "/", "+B"}},
        {"", {"-A"}},
    };
    for (sCase const& test : cases) {
        XmlReader reader;
        parseText(reader, test.mText);
        for (std::string const& step : test.mSteps) {
            size_t const equals = step.find('=');
            if (step == "/") {
                reader.closeTag();
            } else if (step[0] == '+' || step[0] == '-') {
                ASSERT_EQ(step[0] == '+', reader.openTag(AutoString(step.substr(1).c_str()))) << step << " in " << test.mText;
            } else if (equals != std::string::npos) {
                EXPECT_EQ(step.substr(equals + 1), attribute(reader, step.substr(0, equals).c_str())) << test.mText;
            } else {
                EXPECT_EQ("<none>", attribute(reader, step.substr(0, step.size() - 1).c_str())) << test.mText;
            }
        }
    }
}

TEST(XmlReader, AMissingFileGivesNoTags)
{
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
    std::string open, close;
    for (int i = 0; i < 100000; ++i) {
        open += "<a>", close += "</a>";
    }
    XmlReader reader;
    parseText(reader, open + close);
    EXPECT_TRUE(reader.openTag("a"));
}

// Each format fault of the reader, from a file that shows it.
TEST(XmlReaderDeathTest, EveryFormatFaultIsFatal)
{
    struct sCase { char const* mpText; char const* mpMessage; } const cases[] = {
        {"<A></B>", "Invalid end tag\\."}, {"</A>", "Invalid end tag\\."}, {"<A/></A>", "Invalid end tag\\."},
        {"<A><B>", "Unclosed tag exists\\."}, {"<!-- comment -->", "Invalid tag\\."}, {"<=A/>", "Invalid tag\\."},
        {"</>", "Invalid tag\\."}, {"<A a=\"1\"", "Invalid tag\\."}, {"<A / >", "Invalid tag\\."}, {"<", "Invalid tag\\."},
        {"<A a \"1\"/>", "Invalid attribute format\\."}, {"<A a=1/>", "Invalid attribute format\\."},
        {"<A a=\"1 2\"/>", "Invalid attribute format\\."}, {"<A a=\"1,2\"/>", "Invalid attribute format\\."},
        {"<A a=\"1", "Invalid attribute format\\."}, {"<A a=\"\"/>", "Invalid attribute value\\."},
        {"<A a=\" \"/>", "Invalid attribute value\\."},
    };
    for (sCase const& test : cases) {
        EXPECT_DEATH({ XmlReader reader; parseText(reader, test.mpText); }, test.mpMessage) << test.mpText;
    }
    EXPECT_DEATH({ XmlReader reader; BinaryFileStream stream(makeTempPath("binary.xml").c_str(), Stream::eMode_Write); reader.parse(&stream); },
                 "Stream don't have text accessor\\.");
    EXPECT_DEATH({ XmlReader reader; reader.closeTag(); }, "No tag is opened\\.");
    EXPECT_DEATH({ XmlReader reader; reader.getAttribute("a"); }, "No tag is opened\\.");
}
