// Animation lists: the ".aml" bytes of a known list, an empty list, repeated
// and out-of-range indices, every truncation refused with the table left
// empty, and the ".aml.xml" form read, written and read again.
#include <string>

#include "animtest.h"
#include "serial/stream.h"

namespace {

std::string entry(u32 index, char const* path)
{
    std::string bytes(reinterpret_cast<char const*>(&index), 4);
    return bytes + path + std::string(1, '\0');
}

std::string header(u32 count)
{
    return std::string("ANML\0\0\0\0", 8) + std::string(reinterpret_cast<char const*>(&count), 4);
}

} // namespace

class AnimationListTest : public AnimTest {
protected:
    // A fresh list loaded from the bytes, outside the resource system's map.
    AnimationList* loadBytes(std::string const& bytes, bool* loaded)
    {
        std::string const file = nativeFile("anim/test.aml");
        animtest::writeFile(file, bytes);
        AnimationList* list = new AnimationList();
        mHeld.push_back(list);
        BinaryFileStream stream(file.c_str(), Stream::eMode_Read);
        *loaded = list->load(stream);
        return list;
    }
    static u32 entryCount(AnimationList const* list)
    {
        u32 count = 0;
        for (u32 i = 0; i < AnimationList::kAnimationMax; ++i) {
            count += (list->getAnimation(i) != nullptr) ? 1 : 0;
        }
        return count;
    }
    std::string saved(AnimationList* list)
    {
        std::string const file = nativeFile("anim/saved.aml");
        {
            BinaryFileStream stream(file.c_str(), Stream::eMode_Write);
            EXPECT_TRUE(list->save(stream));
        }
        return animtest::readFile(file);
    }
};

TEST_F(AnimationListTest, TheNativeFileHoldsAHeaderAndEachEntryByIndex)
{
    AnimationList* list = load<AnimationList>("anim/character");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->getTypeInfo(), AnimationList::getStaticTypeInfo());
    ASSERT_NE(list->getAnimation(0), nullptr);
    ASSERT_NE(list->getAnimation(3), nullptr);
    EXPECT_EQ(entryCount(list), 2u);
    EXPECT_EQ(list->getAnimation(3)->getSequenceType(), 1u);
    EXPECT_EQ(list->getAnimation(64), nullptr);
    std::string const expected = header(2) + entry(0, "anim/idle") + entry(3, "anim/walk");
    EXPECT_EQ(animtest::readSample("character.aml"), expected);
    EXPECT_EQ(saved(list), expected);

    // An empty list is the header alone.
    bool loaded = false;
    AnimationList* empty = loadBytes(header(0), &loaded);
    EXPECT_TRUE(loaded);
    EXPECT_EQ(saved(empty), header(0));
}

TEST_F(AnimationListTest, RepeatsKeepTheLastEntryAndIndicesPastTheTableAreSkipped)
{
    bool loaded = false;
    AnimationList* list = loadBytes(header(3) + entry(5, "anim/idle") + entry(5, "anim/walk") +
                                        entry(63, "anim/idle"), &loaded);
    EXPECT_TRUE(loaded);
    ASSERT_NE(list->getAnimation(5), nullptr);
    EXPECT_EQ(list->getAnimation(5)->getTrackNum(), 3u); // the walk
    ASSERT_NE(list->getAnimation(63), nullptr);
    EXPECT_EQ(list->getAnimation(63)->getTrackNum(), 2u); // the idle
    EXPECT_EQ(entryCount(list), 2u);

    // Index 64 is traced and its path left unread: the reader loses its
    // place, and here the count is used up.
    list = loadBytes(header(1) + entry(64, "anim/walk"), &loaded);
    EXPECT_TRUE(loaded);
    EXPECT_EQ(entryCount(list), 0u);
    // An entry that names nothing loadable stays empty.
    list = loadBytes(header(2) + entry(1, "anim/none") + entry(2, "../escape"), &loaded);
    EXPECT_TRUE(loaded);
    EXPECT_EQ(entryCount(list), 0u);
}

TEST_F(AnimationListTest, EveryTruncationIsRefusedAndLeavesTheTableEmpty)
{
    std::string const whole = animtest::readSample("character.aml");
    for (size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        bool loaded = true;
        AnimationList* list = loadBytes(whole.substr(0, length), &loaded);
        EXPECT_FALSE(loaded);
        EXPECT_EQ(entryCount(list), 0u);
    }
    // A count far beyond the entries, and a path without its end.
    bool loaded = true;
    loadBytes(header(0xFFFFFFFFu) + entry(0, "anim/idle"), &loaded);
    EXPECT_FALSE(loaded);
    loadBytes(header(1) + std::string("\0\0\0\0", 4) + std::string(300, 'a'), &loaded);
    EXPECT_FALSE(loaded);
}

TEST_F(AnimationListTest, TheXmlListNamesAnimationResourcesAndReadsBackWhatItWrites)
{
    AnimationListIntermediate* list = load<AnimationListIntermediate>("anim/character");
    ASSERT_NE(list, nullptr);
    ASSERT_NE(list->getAnimation(0), nullptr);
    ASSERT_NE(list->getAnimation(3), nullptr);
    EXPECT_EQ(list->getAnimation(0)->getTypeInfo(), AnimResource::getStaticTypeInfo());
    EXPECT_EQ(entryCount(list), 2u);

    AnimResource* blink = load<AnimResource>("anim/blink");
    list->setAnimation(7, blink);
    list->setAnimation(8, nullptr); // refused
    list->setAnimation(64, blink);  // past the table: refused
    EXPECT_EQ(list->getAnimation(7), blink);
    EXPECT_EQ(entryCount(list), 3u);
    {
        TextFileStream stream(intermediateFile("anim/copy.aml.xml").c_str(), Stream::eMode_Write);
        ASSERT_TRUE(list->save(stream));
    }
    AnimationListIntermediate* copy = load<AnimationListIntermediate>("anim/copy");
    ASSERT_NE(copy, nullptr);
    for (u32 i = 0; i < AnimationList::kAnimationMax; ++i) {
        EXPECT_EQ(copy->getAnimation(i), list->getAnimation(i)) << "index " << i;
    }
    copy->removeAll();
    EXPECT_EQ(entryCount(copy), 0u);
    EXPECT_TRUE(copy->isModified());
}
