// The XML writer's exact layout and the reader's lexical rules, navigation
// and every fatal format fault.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

#include "reflection/objectlist.h"
#include "serial/stream.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"
#include "serialtest.h"

// Every array the program makes is counted, for the growth test below.
std::atomic<long> sArrays(0);

void* operator new[](std::size_t size)
{
    ++sArrays;
    if (void* block = std::malloc(size != 0 ? size : 1)) {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete[](void* block) noexcept
{
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    std::free(block);
}

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
bool parseText(XmlReader& reader, std::string const& text)
{
    std::string const path = makeTempPath("reader.xml");
    writeFile(path, text);
    TextFileStream stream(path.c_str(), Stream::eMode_Read);
    return reader.parse(&stream);
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

namespace {

// The arrays that parsing a root with this many empty children makes.
long arraysForSiblings(int count)
{
    std::string text = "<R>";
    for (int i = 0; i < count; ++i) {
        text += "<a/>";
    }
    text += "</R>";
    long const before = sArrays;
    XmlReader reader;
    parseText(reader, text);
    return sArrays - before;
}

} // namespace

// A file of many siblings reads in linear time: the child list grows by
// doubling, not by one array per 16 children.
TEST(XmlReader, ManySiblingsCostAFewArraysNotOnePerSixteen)
{
    long const fewer = arraysForSiblings(20000);
    long const more = arraysForSiblings(80000);
    EXPECT_LT(more - fewer, 16) << fewer << " arrays for 20000 siblings, " << more << " for 80000";
}

// A token no heap could hold (a settings value of megabytes) refuses the file
// with a trace naming it, whether it passes the reader's own limit or only
// the string heap's; the program goes on.
TEST(XmlReaderDeathTest, TokensTooLongForTheHeapsRefuseTheFile)
{
    std::string const beyondLimit = "<A a=\"" + std::string(XmlReader::kTokenMax + 1, 'x') + "\" />";
    testing::internal::CaptureStderr();
    XmlReader reader;
    EXPECT_FALSE(parseText(reader, beyondLimit));
    EXPECT_FALSE(reader.openTag("A"));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("reader.xml(1) : token too long, file refused."));

    // A 3 MiB value with about 2 MiB left in the string heap (the host's
    // whole heap), in a child of its own.
    std::string const beyondHeap = "<A>\n<B a=\"" + std::string(3 << 20, 'x') + "\" />\n</A>\n";
    EXPECT_EXIT(
        {
            AllocatorBase* heap = AutoString::getAllocator();
            std::vector<void*> blocks;
            while (void* block = heap->allocate(1 << 20, 4)) {
                blocks.push_back(block);
            }
            heap->deallocate(blocks[0]);
            heap->deallocate(blocks[1]);
            XmlReader small;
            bool const parsed = parseText(small, beyondHeap);
            std::_Exit(!parsed && !small.openTag("A") ? 0 : 1);
        },
        testing::ExitedWithCode(0), "reader\\.xml\\(2\\) : token too long, file refused\\.");
}

// Each format fault of the reader, from a file that shows it; a trace just
// before the fatal text names the file and the line.
TEST(XmlReaderDeathTest, EveryFormatFaultIsFatalAfterNamingFileAndLine)
{
    struct sCase { char const* mpText; int mLine; char const* mpMessage; } const cases[] = {
        {"<A></B>", 1, "Invalid end tag\\."}, {"</A>", 1, "Invalid end tag\\."}, {"<A/></A>", 1, "Invalid end tag\\."},
        {"<A><B>", 1, "Unclosed tag exists\\."}, {"<!-- comment -->", 1, "Invalid tag\\."}, {"<=A/>", 1, "Invalid tag\\."},
        {"</>", 1, "Invalid tag\\."}, {"<A a=\"1\"", 1, "Invalid tag\\."}, {"<A / >", 1, "Invalid tag\\."}, {"<", 1, "Invalid tag\\."},
        {"<A a \"1\"/>", 1, "Invalid attribute format\\."}, {"<A a=1/>", 1, "Invalid attribute format\\."},
        {"<A a=\"1 2\"/>", 1, "Invalid attribute format\\."}, {"<A a=\"1,2\"/>", 1, "Invalid attribute format\\."},
        {"<A a=\"1", 1, "Invalid attribute format\\."}, {"<A a=\"\"/>", 1, "Invalid attribute value\\."},
        {"<A a=\" \"/>", 1, "Invalid attribute value\\."},
        {"<A>\n\t<B a=\"1\" />\n\t<C b=\"2,\" />\n</A>\n", 3, "Invalid attribute format\\."},
        {"<A>\n<B>\n</A>\n", 3, "Invalid end tag\\."},
    };
    for (sCase const& test : cases) {
        std::string const expected = "reader\\.xml\\(" + std::to_string(test.mLine) + "\\) : damaged file\\..*" + test.mpMessage;
        EXPECT_DEATH({ XmlReader reader; parseText(reader, test.mpText); }, expected) << test.mpText;
    }
    EXPECT_DEATH({ XmlReader reader; BinaryFileStream stream(makeTempPath("binary.xml").c_str(), Stream::eMode_Write); reader.parse(&stream); },
                 "Stream don't have text accessor\\.");
    EXPECT_DEATH({ XmlReader reader; reader.closeTag(); }, "No tag is opened\\.");
    EXPECT_DEATH({ XmlReader reader; reader.getAttribute("a"); }, "No tag is opened\\.");
}
