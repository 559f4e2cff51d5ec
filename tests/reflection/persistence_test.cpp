// The XML object form as a whole: the exact file an object with every kind
// of property gives, what comes back from it (with the required asymmetries),
// and the traces of every data mismatch, after which loading goes on.
#include <gtest/gtest.h>

#include <vector>

#include "reflectiontest.h"

namespace {

// An array property of two elements, as the writer lays it out.
std::string pair(char const* name, char const* type, char const* first, char const* second)
{
    return std::string("\t<") + name + "Array type=\"" + type + "\" count=\"2\" index=\"0\" >\n\t\t<element0 index=\"0\" " +
           first + " />\n\t\t<element1 index=\"1\" " + second + " />\n\t</" + name + "Array>\n";
}

// Ids are addresses, so they are numbered in order of appearance: ID4 twice
// is the shared object, written whole once and as a bare tag the second time.
std::string const kSampleFile = std::string(
    "<?xml version=\"1.0\"?>\n"
    "\n"
    "<SampleObject typeinfo=\"SampleObject\" id=\"ID1\" stable=\"true\" >\n"
    "\t<Bool type=\"bool\" count=\"0\" index=\"0\" value=\"true\" />\n"
    "\t<S8 type=\"s8\" count=\"0\" index=\"0\" value=\"-5\" />\n"
    "\t<S16 type=\"s16\" count=\"0\" index=\"0\" value=\"-300\" />\n"
    "\t<S32 type=\"s32\" count=\"0\" index=\"0\" value=\"-70000\" />\n"
    "\t<S64 type=\"s64\" count=\"0\" index=\"0\" value=\"5\" />\n"
    "\t<U8 type=\"u8\" count=\"0\" index=\"0\" value=\"200\" />\n"
    "\t<U16 type=\"u16\" count=\"0\" index=\"0\" value=\"60000\" />\n"
    "\t<U32 type=\"u32\" count=\"0\" index=\"0\" value=\"-294967296\" />\n"
    "\t<U64 type=\"u64\" count=\"0\" index=\"0\" value=\"7\" />\n"
    "\t<F32 type=\"f32\" count=\"0\" index=\"0\" value=\"1.500000\" />\n"
    "\t<F64 type=\"f64\" count=\"0\" index=\"0\" value=\"-2.250000\" />\n"
    "\t<Size type=\"size\" count=\"0\" index=\"0\" width=\"640\" height=\"480\" />\n"
    "\t<Point type=\"point\" count=\"0\" index=\"0\" x=\"-3\" y=\"4\" />\n"
    "\t<Rect type=\"rect\" count=\"0\" index=\"0\" left=\"1\" top=\"2\" right=\"30\" bottom=\"40\" />\n"
    "\t<Color type=\"color\" count=\"0\" index=\"0\" red=\"10\" green=\"20\" blue=\"30\" alpha=\"255\" />\n"
    "\t<ColorF type=\"colorf\" count=\"0\" index=\"0\" red=\"0.500000\" green=\"0.250000\" blue=\"1.000000\" alpha=\"0.125000\" />\n"
    "\t<Texcoord type=\"texcoord\" count=\"0\" index=\"0\" u=\"16\" v=\"32\" />\n"
    "\t<Fixed type=\"fixed\" count=\"0\" index=\"0\" value=\"2.500000\" />\n"
    "\t<Vector type=\"vector\" count=\"0\" index=\"0\" x=\"1.500000\" y=\"-0.500000\" />\n"
    "\t<String type=\"string\" count=\"0\" index=\"0\" value=\"hello_world-1.5\" />\n"
    "\t<ConstString type=\"const string\" count=\"0\" index=\"0\" value=\"constant\" />\n")
    + pair("Bool", "bool", "value=\"true\"", "value=\"false\"")
    + pair("S8", "s8", "value=\"1\"", "value=\"-1\"")
    + pair("S16", "s16", "value=\"2\"", "value=\"-2\"")
    + pair("S32", "s32", "value=\"3\"", "value=\"-3\"")
    + pair("S64", "s64", "value=\"-3\"", "value=\"4\"")
    + pair("U8", "u8", "value=\"5\"", "value=\"255\"")
    + pair("U16", "u16", "value=\"6\"", "value=\"65535\"")
    + pair("U32", "u32", "value=\"7\"", "value=\"-1\"")
    + pair("U64", "u64", "value=\"8\"", "value=\"-1\"")
    + pair("F32", "f32", "value=\"0.750000\"", "value=\"-8.000000\"")
    + pair("F64", "f64", "value=\"0.500000\"", "value=\"1000000.000000\"")
    + pair("Size", "size", "width=\"1\" height=\"2\"", "width=\"3\" height=\"4\"")
    + pair("Point", "point", "x=\"5\" y=\"6\"", "x=\"-7\" y=\"-8\"")
    + pair("Rect", "rect", "left=\"1\" top=\"1\" right=\"2\" bottom=\"2\"", "left=\"-1\" top=\"-1\" right=\"0\" bottom=\"0\"")
    + pair("Color", "color", "red=\"1\" green=\"2\" blue=\"3\" alpha=\"4\"", "red=\"255\" green=\"254\" blue=\"253\" alpha=\"252\"")
    + pair("ColorF", "colorf", "red=\"0.000000\" green=\"0.500000\" blue=\"0.750000\" alpha=\"1.000000\"", "red=\"1.000000\" green=\"0.000000\" blue=\"0.250000\" alpha=\"0.500000\"")
    + pair("Texcoord", "texcoord", "u=\"0\" v=\"1\"", "u=\"65535\" v=\"2\"")
    + pair("Fixed", "fixed", "value=\"-1.250000\"", "value=\"100.000000\"")
    + pair("Vector", "vector", "x=\"0.250000\" y=\"0.500000\"", "x=\"-3.000000\" y=\"4.000000\"")
    + pair("String", "string", "value=\"alpha\"", "value=\"beta/gamma\"")
    + pair("ConstString", "const string", "value=\"one\"", "value=\"two\"")
    + "\t<Indirect type=\"s32\" count=\"0\" index=\"0\" value=\"42\" />\n"
    "\t<IndirectText type=\"string\" count=\"0\" index=\"0\" value=\"indirect_text\" />\n"
    "\t<Member type=\"Object\" count=\"0\" index=\"0\" typeinfo=\"SampleLeaf\" id=\"ID2\" stable=\"true\" >\n"
    "\t\t<Value type=\"s32\" count=\"0\" index=\"0\" value=\"11\" />\n"
    "\t\t<Name type=\"string\" count=\"0\" index=\"0\" value=\"member\" />\n"
    "\t</Member>\n"
    "\t<Owned type=\"Object\" count=\"0\" index=\"0\" typeinfo=\"SampleLeaf\" id=\"ID3\" stable=\"true\" >\n"
    "\t\t<Value type=\"s32\" count=\"0\" index=\"0\" value=\"12\" />\n"
    "\t\t<Name type=\"string\" count=\"0\" index=\"0\" value=\"owned\" />\n"
    "\t</Owned>\n"
    "\t<SharedA type=\"Object\" count=\"0\" index=\"0\" typeinfo=\"SampleLeaf\" id=\"ID4\" stable=\"false\" >\n"
    "\t\t<Value type=\"s32\" count=\"0\" index=\"0\" value=\"13\" />\n"
    "\t\t<Name type=\"string\" count=\"0\" index=\"0\" value=\"shared\" />\n"
    "\t</SharedA>\n"
    "\t<SharedB type=\"Object\" count=\"0\" index=\"0\" typeinfo=\"SampleLeaf\" id=\"ID4\" stable=\"false\" />\n"
    "\t<EmptyList type=\"Object\" count=\"0\" index=\"0\" typeinfo=\"ObjectList\" id=\"ID5\" list_count=\"0\" stable=\"true\" />\n"
    "\t<GappedList type=\"Object\" count=\"0\" index=\"0\" typeinfo=\"ObjectList\" id=\"ID6\" list_count=\"3\" stable=\"true\" >\n"
    "\t\t<element0 typeinfo=\"SampleLeaf\" id=\"ID7\" stable=\"false\" >\n"
    "\t\t\t<Value type=\"s32\" count=\"0\" index=\"0\" value=\"14\" />\n"
    "\t\t\t<Name type=\"string\" count=\"0\" index=\"0\" value=\"first\" />\n"
    "\t\t</element0>\n"
    "\t\t<element2 typeinfo=\"SampleLeaf\" id=\"ID8\" stable=\"false\" >\n"
    "\t\t\t<Value type=\"s32\" count=\"0\" index=\"0\" value=\"15\" />\n"
    "\t\t\t<Name type=\"string\" count=\"0\" index=\"0\" value=\"third\" />\n"
    "\t\t</element2>\n"
    "\t</GappedList>\n"
    "\t<Resource type=\"Resource\" count=\"0\" index=\"0\" />\n"
    "\t<Texture type=\"Resource\" count=\"0\" index=\"0\" typeinfo=\"SampleResource\" path=\"ui/panel\" />\n"
    "</SampleObject>\n";

class PersistenceTest : public testing::Test {
protected:
    void SetUp() override
    {
        mpTexture = new SampleResource("native/ui/panel.tex");
        registerSampleResource("ui/panel", mpTexture);
        mSource.fill(mpTexture);
        mFullText = writeObject(&mSource, "SampleObject", true);
        mSource.mConstStrings = mTarget.mConstStrings = false;
        mText = writeObject(&mSource, "SampleObject", true);
    }
    void TearDown() override { clearSampleResources(), mpTexture->release(); }

    // Reads text into mTarget and answers the traces. A non-stable pointer
    // is replaced without deleting what it held: that is its owner's
    // business, so the shared object of a previous read goes here.
    std::string readTraces(std::string const& text)
    {
        if (mTarget.mpSharedB != mTarget.mpSharedA) {
            delete mTarget.mpSharedB;
        }
        delete mTarget.mpSharedA;
        mTarget.mpSharedA = nullptr;
        mTarget.mpSharedB = nullptr;
        return ::readTraces(&mTarget, "SampleObject", text);
    }

    SampleResource* mpTexture;
    SampleObject mSource;
    SampleObject mTarget;
    std::string mFullText; // every kind of property
    std::string mText;     // without the const strings, which cannot be read
};

} // namespace

TEST_F(PersistenceTest, WritesEveryKindOfPropertyInTheExactLayout)
{
    EXPECT_EQ(kSampleFile, normalizeIds(mFullText));
}

// Written again, the object read back gives the same file but for its
// bools: they come back inverted, by design. 64-bit integers kept their low
// 32 bits already in the file.
TEST_F(PersistenceTest, ReadsBackWithTheRequiredAsymmetries)
{
    SampleLeaf* owned = mTarget.mpOwned;
    EXPECT_EQ("", readTraces(mText));
    std::string expected = mText;
    expected = replaceOnce(expected, "<Bool type=\"bool\" count=\"0\" index=\"0\" value=\"true\" />",
                           "<Bool type=\"bool\" count=\"0\" index=\"0\" value=\"false\" />");
    expected = replaceOnce(expected, "<element0 index=\"0\" value=\"true\" />\n\t\t<element1 index=\"1\" value=\"false\" />",
                           "<element0 index=\"0\" value=\"false\" />\n\t\t<element1 index=\"1\" value=\"true\" />");
    EXPECT_EQ(normalizeIds(expected), normalizeIds(writeObject(&mTarget, "SampleObject", true)));

    EXPECT_FALSE(mTarget.mBool);
    EXPECT_EQ(5, mTarget.mS64);
    EXPECT_EQ(7u, mTarget.mU64);
    EXPECT_EQ(~0ull, mTarget.mU64Array[1]) << "-1 widened";
    EXPECT_EQ(4000000000u, mTarget.mU32) << "written negative, back whole";
    // Stable objects are filled in place; non-stable ones are made, once.
    EXPECT_EQ(owned, mTarget.mpOwned);
    ASSERT_NE(nullptr, mTarget.mpSharedA);
    EXPECT_EQ(mTarget.mpSharedA, mTarget.mpSharedB);
    // The null entry keeps its place through "list_count".
    ASSERT_EQ(3u, mTarget.mGappedList.size());
    EXPECT_EQ(nullptr, mTarget.mGappedList[1]);
    EXPECT_EQ(asResource(mpTexture), mTarget.mpTexture);
    // The test's, the source's, the registry's and the target's own.
    EXPECT_EQ(4, mpTexture->getRefCount());
}

TEST_F(PersistenceTest, TheIndexAttributeTagOrderAndUnknownTagsMeanNothing)
{
    std::string text = replaceOnce(mText, "<S32Array type=\"s32\" count=\"2\" index=\"0\" >",
                                   "<S32Array type=\"s32\" count=\"2\" index=\"1\" >");
    text = replaceOnce(text, "<element1 index=\"1\" value=\"-3\" />", "<element1 index=\"0\" value=\"-3\" />");
    text = replaceOnce(text, "<S32 type=\"s32\" count=\"0\" index=\"0\"", "<S32 type=\"s32\" count=\"0\" index=\"9\"");
    // Nor do tag order and unknown tags mean anything.
    text = replaceOnce(text, "\t<S8 type=\"s8\" count=\"0\" index=\"0\" value=\"-5\" />\n", "");
    text = replaceOnce(text, "</SampleObject>", "\t<S8 type=\"s8\" count=\"0\" index=\"0\" value=\"-5\" />\n"
                                                "\t<Retired type=\"s32\" count=\"0\" index=\"0\" value=\"1\" />\n"
                                                "</SampleObject>");
    EXPECT_EQ("", readTraces(text));
    EXPECT_EQ((std::vector<s32>{3, -3, -70000, -5}),
              (std::vector<s32>{mTarget.mS32Array[0], mTarget.mS32Array[1], mTarget.mS32, mTarget.mS8}));
}

TEST_F(PersistenceTest, PropertyMismatchesAreTracedAndLoadingGoesOn)
{
    std::string text = replaceOnce(mText, "<S32 type=\"s32\"", "<S32 type=\"u32\"");
    text = replaceOnce(text, "<S8Array type=\"s8\" count=\"2\"", "<S8Array type=\"s8\" count=\"3\"");
    text = replaceOnce(text, "<S16 type=\"s16\" count=\"0\" ", "<S16 type=\"s16\" ");
    text = replaceOnce(text, "\t<Point type=\"point\" count=\"0\" index=\"0\" x=\"-3\" y=\"4\" />\n", "");
    text = replaceOnce(text, "\t\t<element1 index=\"1\" value=\"-2\" />\n", "");
    mTarget.mS16Array[1] = 99;
    EXPECT_EQ("S16 counts missmatch.\n"
              "S32 type missmatch.\n"
              "Property Point not found.\n"
              "S8Array counts missmatch.\n"
              "S16Array array index(1) not found.",
              readTraces(text));
    EXPECT_EQ((std::vector<s32>{0, 0, 0, 2}),
              (std::vector<s32>{mTarget.mS32, mTarget.mS16, mTarget.mS8Array[0], mTarget.mS16Array[0]}));
    EXPECT_EQ(99, mTarget.mS16Array[1]) << "a missing element keeps its value";
    EXPECT_EQ(sRect(1, 2, 30, 40), mTarget.mRect) << "loading went on";
    EXPECT_EQ(15, static_cast<SampleLeaf*>(mTarget.mGappedList[2])->mValue);
}

TEST_F(PersistenceTest, ObjectMismatchesAreTracedAndLoadingGoesOn)
{
    std::string text = mText;
    text.replace(text.find("stable=\"true\"", text.find("<Member ")), 13, "stable=\"false\"");
    text.replace(text.find("typeinfo=\"SampleLeaf\"", text.find("<Owned ")), 21, "typeinfo=\"ObjectList\"");
    text.replace(text.find("stable=\"false\"", text.find("<SharedA ")), 14, "stable=\"true\"");
    // SharedB's bare tag is now the first appearance: a new object without
    // property tags.
    EXPECT_EQ("Member stability missmatch.\n"
              "Owned typeinfo missmatch.\n"
              "SharedA stability missmatch.\n"
              "Property Value not found.\n"
              "Property Name not found.\n",
              readTraces(text));
    EXPECT_EQ(0, mTarget.mMember.mValue);
    EXPECT_EQ(0, mTarget.mpOwned->mValue);
    ASSERT_NE(nullptr, mTarget.mpSharedB) << "the second reference made the object itself";
    EXPECT_EQ(nullptr, mTarget.mpSharedA);
    EXPECT_EQ(0, mTarget.mpSharedB->mValue) << "a bare tag has no properties";
}

TEST_F(PersistenceTest, MissingIdsUnknownClassesAndClassesAFieldCannotHoldAreTraced)
{
    std::string text = mText;
    size_t const id = text.find(" id=\"", text.find("<SharedA "));
    text.erase(id, text.find('"', id + 5) + 1 - id);
    text.replace(text.find("typeinfo=\"SampleLeaf\"", text.find("<SharedB ")), 21, "typeinfo=\"Unknown___\"");
    EXPECT_EQ("SharedA id not found.\n"
              "SharedB typeinfo not found.\n",
              readTraces(text));
    EXPECT_EQ(nullptr, mTarget.mpSharedA);
    EXPECT_EQ(nullptr, mTarget.mpSharedB);

    // Nor a class the field cannot hold, abstract or not.
    text = mText;
    text.replace(text.find("typeinfo=\"SampleLeaf\"", text.find("<SharedA ")), 21, "typeinfo=\"System\"");
    EXPECT_EQ("SharedA typeinfo missmatch.\n"
              "Property Value not found.\n"
              "Property Name not found.\n",
              readTraces(text));
    EXPECT_EQ(nullptr, mTarget.mpSharedA);
    ASSERT_NE(nullptr, mTarget.mpSharedB) << "nothing was registered under the id: the bare tag makes one";
    EXPECT_EQ(SampleLeaf::getStaticTypeInfo(), mTarget.mpSharedB->getTypeInfo());
}

TEST_F(PersistenceTest, ResourceMismatchesAreTraced)
{
    std::string text = replaceOnce(mText, "typeinfo=\"SampleResource\"", "typeinfo=\"NoResource\"");
    EXPECT_EQ("Texture typeinfo not found.\n", readTraces(text));
    EXPECT_EQ(nullptr, mTarget.mpTexture);

    text = replaceOnce(mText, "path=\"ui/panel\"", "path=\"ui/missing\"");
    EXPECT_EQ("Resource path=\"ui/missing\" not found.\n", readTraces(text));
    EXPECT_EQ(nullptr, mTarget.mpTexture);

    text = replaceOnce(mText, "typeinfo=\"SampleResource\" path=\"ui/panel\"", "typeinfo=\"SampleResource\"");
    EXPECT_EQ("", readTraces(text)) << "without a path nothing is done";

    text = replaceOnce(mText, "typeinfo=\"SampleResource\" path=\"ui/panel\"",
                       "container_typeinfo=\"Anything\" typeinfo=\"SampleResource\" path=\"ui/panel\"");
    EXPECT_EQ("", readTraces(text));
    EXPECT_EQ(asResource(mpTexture), mTarget.mpTexture);
}

TEST_F(PersistenceTest, EmptyAndConstStringsAreWrittenButCannotBeReadBack)
{
    mSource.mString = "";
    std::string const text = writeObject(&mSource, "SampleObject", true);
    EXPECT_NE(std::string::npos, text.find("<String type=\"string\" count=\"0\" index=\"0\" value=\"\" />"));
    EXPECT_DEATH(readObject(&mTarget, "SampleObject", text), "Invalid attribute value\\.");
    // The type name of a const string holds a blank, which the reader
    // refuses: such a property is shown and written, never read.
    EXPECT_DEATH(readObject(&mTarget, "SampleObject", mFullText), "Invalid attribute format\\.");
}

// ---------------------------------------------------------------------------

namespace {

// Count 1 is a single value on the tag, but the file must say count="1".
class SingleCountObject : public ObjectBase {
public:
    void makePropertyList(PropertyList& list) override
    {
        list.add(new ReferenceProperty<s32>("Value", &mValue, 1));
    }
    s32 mValue = 0;
};

} // namespace

TEST(Persistence, ACountOfOneIsWrittenSingleAndMustBeReadWithItsCount)
{
    SingleCountObject source;
    source.mValue = 9;
    std::string const text = writeObject(&source, "Single", true);
    EXPECT_EQ("<?xml version=\"1.0\"?>\n\n<Single typeinfo=\"ObjectBase\" id=\"ID1\" stable=\"true\" >\n"
              "\t<Value type=\"s32\" count=\"1\" index=\"0\" value=\"9\" />\n</Single>\n",
              normalizeIds(text));
    SingleCountObject target;
    EXPECT_EQ("", readTraces(&target, "Single", text));
    EXPECT_EQ(9, target.mValue);
    EXPECT_EQ("Value counts missmatch.\n", readTraces(&target, "Single", replaceOnce(text, "count=\"1\"", "count=\"0\"")));
}

