// RenderSystem without pixels: the merge sort of the entries (every small
// size, ties, unsigned keys, the full table on any number of threads), the
// overflow of the entry table, the extension test and the frame counters.
#include <algorithm>
#include <random>
#include <unordered_map>

#include "renderfixture.h"

using namespace rendertest;

namespace {

class RenderSystemTest : public RenderTest {
protected:
    // Enters one command per key, in order; they are remembered for the check.
    void enter(std::vector<u32> const& keys)
    {
        for (u32 key : keys) {
            sCommand* command = mpRender->allocateCommandBuffer(sizeof(sClearCommand));
            command->mType = sCommand::eType_Clear;
            command->mKey = key;
            mpRender->entryCommand(command);
            mEntered.push_back(command);
        }
    }

    // The sorted table is a permutation of the entries and the end command,
    // ascending by unsigned key, equal keys in the order of entry.
    void expectSortedAndStable()
    {
        u32 const count = static_cast<u32>(mEntered.size()) + 1;
        ASSERT_EQ(mpRender->getEntryCount(), count);
        std::unordered_map<sCommand const*, size_t> place;
        for (size_t i = 0; i < mEntered.size(); ++i) {
            place[mEntered[i]] = i;
        }
        sCommand* const* sorted = mpRender->getSortedEntry();
        std::vector<bool> seen(mEntered.size(), false);
        for (u32 i = 0; i + 1 < count; ++i) {
            ASSERT_EQ(place.count(sorted[i]), 1u) << "entry " << i << " is not one of ours";
            size_t const index = place[sorted[i]];
            ASSERT_FALSE(seen[index]) << "entry " << index << " twice";
            seen[index] = true;
            if (i > 0) {
                ASSERT_LE(sorted[i - 1]->mKey, sorted[i]->mKey) << "at " << i;
                if (sorted[i - 1]->mKey == sorted[i]->mKey) {
                    ASSERT_LT(place[sorted[i - 1]], index) << "equal keys out of entry order at " << i;
                }
            }
        }
        EXPECT_EQ(sorted[count - 1]->mType, static_cast<u32>(sCommand::eType_End));
        EXPECT_EQ(sorted[count - 1]->mKey, 0xFFFFFFFFu);
    }

    void sortFrame(std::vector<u32> const& keys)
    {
        mEntered.clear();
        mpRender->preprocess();
        enter(keys);
        mpRender->postprocess();
        expectSortedAndStable();
    }

    std::vector<sCommand*> mEntered;
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
}

TEST_F(RenderSystemTest, KeysCompareUnsignedAndBelowTheEndKey)
{
    // Keys with the top bit set (views 8 and above would be negative if signed).
    sortFrame({0x80000000u, 0x7FFFFFFFu, 0xFFFFFFFEu, 0u, 0x60000000u, 0xFFFFFFFEu, 1u});
    sCommand* const* sorted = mpRender->getSortedEntry();
    EXPECT_EQ(sorted[0]->mKey, 0u);
    EXPECT_EQ(sorted[6]->mKey, 0xFFFFFFFEu);
    EXPECT_EQ(sorted[7]->mType, static_cast<u32>(sCommand::eType_End));
}

TEST_F(RenderSystemTest, FullTableSortsAlikeOnAnyNumberOfThreads)
{
    // 16,383 entries and the end command fill the table exactly.
    std::mt19937 random(11);
    std::vector<u32> keys(RenderSystem::kCommandEntryMax - 1);
    for (u32& key : keys) {
        key = static_cast<u32>(random() % 64) << 16; // many ties
    }
    std::vector<sCommand const*> reference;
    for (u32 threads : {1u, 2u, 4u, 7u}) {
        SCOPED_TRACE(testing::Message() << threads << " threads");
        mpJobs->setJobThreadNum(threads);
        sortFrame(keys);
        sCommand* const* sorted = mpRender->getSortedEntry();
        // The same permutation as a stable sort of the entries.
        std::vector<sCommand const*> expected(mEntered.begin(), mEntered.end());
        std::stable_sort(expected.begin(), expected.end(),
                         [](sCommand const* a, sCommand const* b) { return a->mKey < b->mKey; });
        for (size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(sorted[i], expected[i]) << "at " << i;
        }
    }
}

TEST_F(RenderSystemTest, ContextBlocksAndSingleEntriesShareTheTable)
{
    mpRender->preprocess();
    enter({5, 1});
    sCommand* block[3];
    for (u32 i = 0; i < 3; ++i) {
        block[i] = mpRender->allocateCommandBuffer(sizeof(sClearCommand));
        block[i]->mType = sCommand::eType_Clear;
        block[i]->mKey = 3;
        mEntered.push_back(block[i]);
    }
    mpRender->entryCommand(block, 3);
    enter({3, 0});
    mpRender->postprocess();
    expectSortedAndStable();
}

TEST_F(RenderSystemDeathTest, TheEntryPastTheTableIsFatal)
{
    mpRender->preprocess();
    std::vector<u32> keys(RenderSystem::kCommandEntryMax, 1u);
    enter(keys);
    EXPECT_EQ(mpRender->getEntryCount(), RenderSystem::kCommandEntryMax) << "the 16,384th entry passes";
    EXPECT_DEATH(enter({2u}), "Command entry buffer overflow\\.\n");
    sCommand* two[2] = {mEntered[0], mEntered[1]};
    EXPECT_DEATH(mpRender->entryCommand(two, 2), "Command entry buffer overflow\\.\n");
}

TEST_F(RenderSystemDeathTest, ABlockThatDoesNotFitIsFatal)
{
    mpRender->preprocess();
    std::vector<u32> keys(RenderSystem::kCommandEntryMax - 1, 1u);
    enter(keys);
    sCommand* two[2] = {mEntered[0], mEntered[1]};
    EXPECT_DEATH(mpRender->entryCommand(two, 2), "Command entry buffer overflow\\.\n");
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
    EXPECT_EQ(mpRender->getDrawCount(), 0u);
}

TEST(RenderSystemExtensions, OnlyWholeNamesCount)
{
    char const* list = "GL_EXT_texture_rectangle_extra GL_ARB_x GL_EXT_framebuffer_object";
    EXPECT_FALSE(RenderSystem::checkExtention(list, "GL_EXT_texture_rectangle"));
    EXPECT_TRUE(RenderSystem::checkExtention(list, "GL_EXT_framebuffer_object")) << "at the end of the text";
    EXPECT_TRUE(RenderSystem::checkExtention("GL_EXT_texture_rectangle_extra GL_EXT_texture_rectangle GL_x",
                                             "GL_EXT_texture_rectangle"))
        << "the search goes on behind a false hit";
    EXPECT_TRUE(RenderSystem::checkExtention("GL_EXT_texture_rectangle", "GL_EXT_texture_rectangle"));
    EXPECT_FALSE(RenderSystem::checkExtention("", "GL_EXT_texture_rectangle"));
}
