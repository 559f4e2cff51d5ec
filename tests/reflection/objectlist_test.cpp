// ObjectList: ownership by stability, its property pairs, and its own XML
// form with both stabilities and their traces.
#include <gtest/gtest.h>

#include <memory>

#include "reflectiontest.h"

namespace {

// Counts its destructions, to see who deletes what.
class Counted : public SampleLeaf {
public:
    Counted(s32 value, int* deaths) : SampleLeaf(value, "counted"), mpDeaths(deaths) {}
    ~Counted() override { ++*mpDeaths; }
    int* mpDeaths;
};

// A list member, published as a stable object property.
class ListHolder : public ObjectBase {
public:
    explicit ListHolder(bool stableContents) { mList.setContentStability(stableContents); }
    void makePropertyList(PropertyList& list) override { list.add(new ObjectProperty("List", &mList)); }
    ObjectList mList;
};

std::string eraseId(std::string text, char const* element)
{
    size_t const id = text.find(" id=\"", text.find(element));
    return text.erase(id, text.find('"', id + 5) + 1 - id);
}

} // namespace

TEST(ObjectList, OwnsItsElementsOnlyWithNonStableContents)
{
    int deaths = 0;
    Counted kept(1, &deaths);
    {
        ObjectList stable;
        stable.addLast(&kept);
        stable.setCount(2);
        EXPECT_EQ(0, deaths) << "a stable list forgets without deleting";
        EXPECT_EQ(2u, stable.size());
        EXPECT_EQ(nullptr, stable[0]);
    }
    EXPECT_EQ(0, deaths);

    {
        ObjectList owning;
        owning.setContentStability(false);
        owning.addLast(new Counted(1, &deaths));
        owning.addLast(new Counted(2, &deaths));
        owning.setCount(3);
        EXPECT_EQ(2, deaths);
        owning.setCurrentIndex(1);
        owning.setObject(new Counted(3, &deaths));
        owning.addFirst(new Counted(4, &deaths));
    }
    EXPECT_EQ(4, deaths) << "the owning list deletes what it holds when it ends";

    // The replaced element goes even when it is the one stored again.
    ObjectList owning;
    owning.setContentStability(false);
    Counted* element = new Counted(1, &deaths);
    owning.addLast(element);
    owning.setObject(element);
    EXPECT_EQ(5, deaths);
    owning.clear(); // the entry now dangles; clear deletes nothing
}

TEST(ObjectListDeathTest, GuardsItsIndexAndItsStability)
{
    SampleLeaf a(1, "a");
    ObjectList list;
    list.addLast(&a);
    list.setCurrentIndex(1);
    EXPECT_DEATH(list.getObject(), "Index overflow\\.");
    EXPECT_DEATH(list.setObject(&a), "Index overflow\\.");
    EXPECT_DEATH(list.setContentStability(false), "List is not empty\\.");
}

TEST(ObjectList, PublishesCountStabilityAndOneIndexMemberPairPerElement)
{
    SampleLeaf a(1, "a"), b(2, "b");
    ObjectList list;
    list.addLast(&a), list.addLast(&b);
    PropertyList properties;
    list.makePropertyList(properties);
    ASSERT_EQ(6u, properties.size());
    char const* const names[] = {"count", "stable contents", "index", "member", "index", "member"};
    unsigned int const types[] = {ePropertyType_U32, ePropertyType_Bool, ePropertyType_U32, ePropertyType_Object,
                                  ePropertyType_U32, ePropertyType_Object};
    for (unsigned int i = 0; i < 6; ++i) {
        EXPECT_STREQ(names[i], properties[i]->getName());
        EXPECT_EQ(types[i], properties[i]->getType());
    }

    // Every pair looks at the one index: set it, then use the member.
    properties[4]->setNumeric(1, PropertyBase::CurrentIndex);
    EXPECT_EQ(&b, properties[3]->getByType<ObjectBase*>(PropertyBase::CurrentIndex));
    EXPECT_FALSE(static_cast<ObjectPropertyIntermediate*>(properties[3])->isStableObject());

    properties[0]->setNumeric(3, PropertyBase::CurrentIndex);
    EXPECT_EQ(3u, list.size());
    EXPECT_EQ(nullptr, list[0]);
}

// ---------------------------------------------------------------------------
// XML form

TEST(ObjectList, NonStableContentsTraceWhatTheyCannotMake)
{
    ListHolder source(false);
    source.mList.addLast(new SampleLeaf(1, "one")), source.mList.addLast(new SampleLeaf(2, "two"));
    source.mList.addLast(new SampleLeaf(3, "three"));
    std::string text = eraseId(writeObject(&source, "Holder", true), "<element0 ");
    text = replaceOnce(text, "<element1 typeinfo=\"SampleLeaf\"", "<element1 typeinfo=\"NoSuchLeaf\"");

    ListHolder target(false);
    EXPECT_EQ("element0 id not found.\ntypeinfo not found.\n", readTraces(&target, "Holder", text));
    ASSERT_EQ(3u, target.mList.size());
    EXPECT_EQ(nullptr, target.mList[0]);
    EXPECT_EQ(nullptr, target.mList[1]);
    EXPECT_EQ(3, static_cast<SampleLeaf*>(target.mList[2])->mValue);

    EXPECT_EQ("count not found.\n", readTraces(&target, "Holder", replaceOnce(text, "list_count=\"3\" ", "")));
    EXPECT_TRUE(target.mList.empty());
    ListHolder damaged(false);
    EXPECT_EQ("Object count -5 out of range.\n", readTraces(&damaged, "Holder", replaceOnce(text, "list_count=\"3\"", "list_count=\"-5\"")));
    EXPECT_TRUE(damaged.mList.empty());
}

// A damaged file that gives two elements of an owning list one id would have
// the list delete one object twice: the second element is refused.
TEST(ObjectList, TwoElementsWithOneIdAreNotBothOwned)
{
    ListHolder source(false);
    source.mList.addLast(new SampleLeaf(1, "one")), source.mList.addLast(new SampleLeaf(2, "two"));
    std::string const written = writeObject(&source, "Holder", true);
    // Give element1 the id of element0.
    size_t const first = written.find("id=\"", written.find("<element0 "));
    std::string const firstId = written.substr(first, written.find('"', first + 4) + 1 - first);
    size_t const second = written.find("id=\"", written.find("<element1 "));
    std::string text = written;
    text.replace(second, text.find('"', second + 4) + 1 - second, firstId);

    ListHolder target(false);
    std::string const id = std::to_string(static_cast<unsigned int>(std::stoll(firstId.substr(4))));
    EXPECT_EQ("element1 id " + id + " is owned already.\n", readTraces(&target, "Holder", text));
    ASSERT_EQ(2u, target.mList.size());
    EXPECT_EQ(1, static_cast<SampleLeaf*>(target.mList[0])->mValue);
    EXPECT_EQ(nullptr, target.mList[1]);
}

// Stable contents are filled in place, but only from files whose "id" holds
// the class's type id: what serialize writes (the address) never matches.
TEST(ObjectList, StableContentsLoadOnlyFromTypeIds)
{
    SampleLeaf a(1, "a"), b(2, "b");
    ListHolder source(true);
    source.mList.addLast(&a), source.mList.addLast(&b);
    std::string const text = writeObject(&source, "Holder", true);

    SampleLeaf x(0, "x"), y(0, "y");
    ListHolder target(true);
    target.mList.addLast(&x), target.mList.addLast(&y);
    EXPECT_EQ("TypeID mismatch.\nTypeID mismatch.\n", readTraces(&target, "Holder", text));
    EXPECT_EQ(0, x.mValue);

    std::string const typeId = std::to_string(SampleLeaf::getStaticTypeInfo()->getID());
    std::string byType = text;
    for (char const* element : {"<element0 ", "<element1 "}) {
        size_t const id = byType.find("id=\"", byType.find(element)) + 4;
        byType.replace(id, byType.find('"', id) - id, typeId);
    }
    EXPECT_EQ("", readTraces(&target, "Holder", byType));
    EXPECT_EQ(1, x.mValue);
    EXPECT_STREQ("b", y.mName.c_str());

    ListHolder shorter(true);
    shorter.mList.addLast(&a);
    EXPECT_EQ("Object count mismatch.\n", readTraces(&shorter, "Holder", text));
    ListHolder gapped(true);
    gapped.mList.addLast(&a), gapped.mList.addLast(nullptr);
    EXPECT_EQ("element0 id not found.\nContent is NULL.\n", readTraces(&gapped, "Holder", eraseId(text, "<element0 ")));
}

TEST(ObjectList, ANonStableListWritesItsElementsEveryTime)
{
    class TwoReferences : public ObjectBase {
    public:
        void makePropertyList(PropertyList& list) override
        {
            list.add(new ObjectProperty("First", &mpList, false));
            list.add(new ObjectProperty("Second", &mpSame, false));
        }
        ObjectList* mpList = nullptr;
        ObjectList* mpSame = nullptr;
    } holder;
    SampleLeaf leaf(1, "leaf");
    ObjectList list;
    list.addLast(&leaf);
    holder.mpList = holder.mpSame = &list;
    std::string const text = normalizeIds(writeObject(&holder, "Holder", true));
    EXPECT_NE(std::string::npos, text.find("<element0 ", text.find("<element0 ") + 1));
    EXPECT_NE(std::string::npos, text.find("<Second type=\"Object\" count=\"0\" index=\"0\" typeinfo=\"ObjectList\" "
                                           "id=\"ID2\" list_count=\"1\" stable=\"false\" >"));
}

namespace {

// Made from files; owns a list of made objects.
class NestObject : public ObjectBase {
public:
    NestObject() { mList.setContentStability(false); }
    void makePropertyList(PropertyList& list) override { list.add(new ObjectProperty("List", &mList)); }
    ObjectList mList;
    DECLARE_TYPEINFO(UniqueTypeInfo<NestObject>)
};

IMPLEMENT_OBJECT_TYPEINFO(NestObject, "ObjectBase");

} // namespace

// A damaged file that names an object inside its own list would read that
// list again while the outer read fills it.
TEST(ObjectList, AListReachedAgainInsideItsOwnReadIsNotReadThere)
{
    class Owner : public ObjectBase {
    public:
        ~Owner() override { delete mpNest; }
        void makePropertyList(PropertyList& list) override { list.add(new ObjectProperty("Nest", &mpNest, false)); }
        NestObject* mpNest = nullptr;
    } owner;
    std::string const text =
        "<Holder typeinfo=\"Owner\" id=\"1\" stable=\"true\" >\n"
        "<Nest type=\"Object\" count=\"0\" index=\"0\" typeinfo=\"NestObject\" id=\"50\" stable=\"false\" >\n"
        "<List type=\"Object\" count=\"0\" index=\"0\" typeinfo=\"ObjectList\" id=\"60\" list_count=\"2\" stable=\"true\" >\n"
        "<element0 typeinfo=\"NestObject\" id=\"50\" stable=\"false\" >\n"
        "<List type=\"Object\" count=\"0\" index=\"0\" typeinfo=\"ObjectList\" id=\"61\" list_count=\"5\" stable=\"true\" />\n"
        "</element0>\n"
        "<element1 typeinfo=\"SampleLeaf\" id=\"51\" stable=\"false\" />\n"
        "</List>\n</Nest>\n</Holder>\n";
    EXPECT_NE(std::string::npos, readTraces(&owner, "Holder", text).find("ObjectList is read inside itself.\n"));
    ASSERT_NE(nullptr, owner.mpNest);
    ObjectList& list = owner.mpNest->mList;
    ASSERT_EQ(2u, list.size());
    EXPECT_EQ(owner.mpNest, list[0]);
    ASSERT_NE(nullptr, list[1]);
    // The nest holds itself: empty its list before the owner deletes it.
    std::unique_ptr<ObjectBase> leaf(list[1]);
    list.clear();
}
