// RenderSystem without pixels: the merge sort of the entries against a stable
// sort (every small size, ties, unsigned keys, long tables on any number of
// threads), the overflow of the entry table, the extension test and the frame
// counters.
#include <algorithm>
#include <random>

#include "renderfixture.h"

using namespace rendertest;

namespace {

class RenderSystemTest : public RenderTest {
protected:
    // Enters one command per key, in order.
    std::vector<sCommand*> enter(std::vector<u32> const& keys)
    {
        std::vector<sCommand*> entered;
        for (u32 key : keys) {
            sCommand* command = mpRender->allocateCommandBuffer(sizeof(sClearCommand));
            command->mType = sCommand::eType_Clear;
            command->mKey = key;
            mpRender->entryCommand(command);
            entered.push_back(command);
        }
        return entered;
    }

    // The sorted table is the entries stably sorted by unsigned key, then the end command.
    void sortFrame(std::vector<u32> const& keys)
    {
        mpRender->preprocess();
        std::vector<sCommand*> expected = enter(keys);
        mpRender->postprocess();
        ASSERT_EQ(mpRender->getEntryCount(), keys.size() + 1);
        std::stable_sort(expected.begin(), expected.end(), [](sCommand* a, sCommand* b) { return a->mKey < b->mKey; });
        sCommand* const* sorted = mpRender->getSortedEntry();
        for (size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(sorted[i], expected[i]) << "at " << i;
        }
        EXPECT_EQ(sorted[keys.size()]->mType, static_cast<u32>(sCommand::eType_End));
        EXPECT_EQ(sorted[keys.size()]->mKey, 0xFFFFFFFFu);
    }
};

using RenderSystemDeathTest = RenderSystemTest;

} // namespace

TEST_F(RenderSystemTest, SortsEverySmallCountWithTheEndCommandLast)
{
    std::mt19937 random(7);
    for (u32 count = 0; count <= 9; ++count) {
        SCOPED_TRACE(testing::Message() << count << " entries");
        std::vector<u32> ascending, descending, ties;
        for (u32 i = 0; i < count; ++i) {
            ascending.push_back(i * 3);
            descending.push_back((count - i) * 3);
            ties.push_back(static_cast<u32>(random() % 3));
        }
        sortFrame(ascending);
        sortFrame(descending);
        for (int round = 0; round < 20; ++round) {
            std::shuffle(ties.begin(), ties.end(), random);
            sortFrame(ties);
        }
    }
    // Keys with the top bit set would come first if compared signed.
    sortFrame({0x80000000u, 0x7FFFFFFFu, 0xFFFFFFFEu, 0u, 0x60000000u, 0xFFFFFFFEu, 1u});
}

TEST_F(RenderSystemTest, LongTablesSortAlikeOnAnyNumberOfThreads)
{
    // Counts about the block and segment edges, up to 16,383 entries, which
    // with the end command fill the table exactly; keys with many ties, and
    // keys that are nearly all distinct.
    std::mt19937 random(11);
    for (u32 count : {1023u, 1025u, 2049u, 4100u, 9000u, RenderSystem::kCommandEntryMax - 1}) {
        for (u32 spread : {64u, 0x10000u}) {
            std::vector<u32> keys(count);
            for (u32& key : keys) {
                key = static_cast<u32>(random() % spread) << 16;
            }
            for (u32 threads : {1u, 2u, 7u}) {
                SCOPED_TRACE(testing::Message() << count << " entries, " << threads << " threads");
                mpJobs->setJobThreadNum(threads);
                sortFrame(keys);
            }
        }
    }
}

TEST_F(RenderSystemDeathTest, AnEntryPastTheTableIsFatal)
{
    mpRender->preprocess();
    std::vector<sCommand*> entered = enter(std::vector<u32>(RenderSystem::kCommandEntryMax - 1, 1u));
    sCommand* two[2] = {entered[0], entered[1]};
    EXPECT_DEATH(mpRender->entryCommand(two, 2), "Command entry buffer overflow\\.\n") << "a block must fit whole";
    enter({1u});
    EXPECT_EQ(mpRender->getEntryCount(), RenderSystem::kCommandEntryMax) << "the 16,384th entry passes";
    EXPECT_DEATH(enter({2u}), "Command entry buffer overflow\\.\n");
}

TEST_F(RenderSystemTest, FrameCountersAdvanceWithPostprocessAndReplay)
{
    u32 const build = mpRender->getBuildFrame();
    u32 const execute = mpRender->getExecuteFrame();
    runFrame([](DrawContext*) {});
    runFrame([](DrawContext*) {});
    EXPECT_EQ(mpRender->getBuildFrame(), build + 2);
    EXPECT_EQ(mpRender->getExecuteFrame(), execute + 2);
    EXPECT_EQ(mpRender->getEntryCount(), 1u) << "an empty frame holds only the end command";
}

TEST(RenderSystemExtensions, OnlyWholeNamesCount)
{
    char const* name = "GL_EXT_texture_rectangle";
    EXPECT_FALSE(RenderSystem::checkExtention("GL_EXT_texture_rectangle_extra GL_ARB_x", name));
    EXPECT_TRUE(RenderSystem::checkExtention("GL_ARB_x GL_EXT_texture_rectangle", name)) << "at the end of the text";
    EXPECT_TRUE(RenderSystem::checkExtention("GL_EXT_texture_rectangle_extra GL_EXT_texture_rectangle GL_x", name))
        << "the search goes on behind a false hit";
    EXPECT_TRUE(RenderSystem::checkExtention(name, name));
    EXPECT_FALSE(RenderSystem::checkExtention("", name));
}
