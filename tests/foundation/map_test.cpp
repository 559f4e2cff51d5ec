#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

#include "foundation/map.h"

namespace {

std::vector<std::pair<u32, int*>> contents(Map<int> const& map)
{
    std::vector<std::pair<u32, int*>> result;
    for (Map<int>::Iterator it = map.begin(); it != map.end(); ++it) {
        result.emplace_back(it.getId(), *it);
    }
    return result;
}

} // namespace

TEST(Map, RisingIdsNeverMoveAnEntry)
{
    int values[20];
    Map<int> map(32);
    for (u32 id = 1; id <= 20; ++id) {
        Map<int>::Iterator first = map.begin();
        map.add(&values[id - 1], id * 10);
        if (id > 1) {
            EXPECT_TRUE(map.begin() == first);
            EXPECT_EQ(*map.begin(), &values[0]);
        }
    }
    EXPECT_EQ(map.find(10), &values[0]);
    EXPECT_EQ(map.find(200), &values[19]);
    EXPECT_EQ(map.find(5), nullptr);
}

TEST(Map, EntriesStaySortedWhateverTheOrderOfAdding)
{
    int values[5];
    Map<int> map;
    map.add(&values[0], 50);
    map.add(&values[1], 10);
    map.add(&values[2], 30);
    map.add(&values[3], 90);
    map.add(&values[4], 20);
    EXPECT_EQ(contents(map), (std::vector<std::pair<u32, int*>>{
                                 {10, &values[1]}, {20, &values[4]}, {30, &values[2]}, {50, &values[0]}, {90, &values[3]}}));
    // Present ids answer their index, missing ones the insertion point.
    EXPECT_EQ(map.findNearest(30), 2u);
    EXPECT_EQ(map.findNearest(10), 0u);
    EXPECT_EQ(map.findNearest(90), 4u);
    EXPECT_EQ(map.findNearest(40), 3u);
    EXPECT_EQ(map.findNearest(15), 1u);
    EXPECT_EQ(Map<int>().findNearest(7), 0u);
}

TEST(Map, RemovingTheEndsMovesTheBoundsAndAnEmptiedMapStartsAfresh)
{
    int values[4];
    Map<int> map;
    map.add(&values[0], 10);
    map.add(&values[1], 20);
    map.add(&values[2], 30);
    map.remove(10);
    EXPECT_EQ(map.find(20), &values[1]);
    map.remove(30);
    EXPECT_EQ(map.find(20), &values[1]);
    EXPECT_EQ(map.size(), 1u);
    map.remove(25);
    map.remove(20);
    EXPECT_TRUE(map.empty());
    map.remove(20);
    EXPECT_EQ(map.find(20), nullptr);
    map.add(&values[3], 1000);
    map.add(&values[2], 5);
    EXPECT_EQ(map.find(1000), &values[3]);
    EXPECT_EQ(map.find(5), &values[2]);
    EXPECT_EQ(contents(map), (std::vector<std::pair<u32, int*>>{{5, &values[2]}, {1000, &values[3]}}));
}

TEST(MapDeathTest, IdZeroAndDuplicatesAreFatal)
{
    int value = 0;
    Map<int> map;
    EXPECT_DEATH(map.add(&value, 0), "ID number 0 is reserved\\.");
    map.add(&value, 10);
    map.add(&value, 20);
    map.add(&value, 30);
    EXPECT_DEATH(map.add(&value, 10), "ID number conflict\\.");
    EXPECT_DEATH(map.add(&value, 20), "ID number conflict\\.");
    EXPECT_DEATH(map.add(&value, 30), "ID number conflict\\.");
}

TEST(Map, RandomOperationsMatchAStandardMap)
{
    int values[512];
    std::mt19937 random(777);
    for (int round = 0; round < 10; ++round) {
        Map<int> map;
        std::map<u32, int*> model;
        for (int step = 0; step < 2000; ++step) {
            u32 id = 1 + static_cast<u32>(random() % 300);
            int* value = &values[random() % 512];
            switch (random() % 4) {
            case 0:
            case 1:
                if (model.count(id) == 0) {
                    map.add(value, id);
                    model[id] = value;
                }
                break;
            case 2:
                map.remove(id);
                model.erase(id);
                break;
            default: {
                auto found = model.find(id);
                EXPECT_EQ(map.find(id), found == model.end() ? nullptr : found->second);
                break;
            }
            }
            ASSERT_EQ(map.size(), model.size());
        }
        EXPECT_EQ(contents(map), (std::vector<std::pair<u32, int*>>(model.begin(), model.end())));
    }
}
