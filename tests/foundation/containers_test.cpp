// Vector, Map, Queue and Stack: growth, the deliberate oddities, the fatal
// misuses, and random sequences against a standard container.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

#include "foundation/map.h"
#include "foundation/queue.h"
#include "foundation/stack.h"
#include "foundation/vector.h"

namespace {

int gValues[512];

std::vector<int*> first(int count)
{
    std::vector<int*> result;
    for (int i = 0; i < count; ++i) {
        result.push_back(&gValues[i]);
    }
    return result;
}

std::vector<int*> contents(Vector<int> const& vector)
{
    std::vector<int*> result;
    for (ArrayIterator<int> it = vector.begin(); it != vector.end(); ++it) {
        result.push_back(*it);
    }
    return result;
}

std::vector<std::pair<u32, int*>> contents(Map<int> const& map)
{
    std::vector<std::pair<u32, int*>> result;
    for (Map<int>::Iterator it = map.begin(); it != map.end(); ++it) {
        result.emplace_back(it.getId(), *it);
    }
    return result;
}

} // namespace

TEST(Vector, GrowsBySixteenAndClearKeepsTheArray)
{
    Vector<int> vector;
    for (int i = 0; i < 17; ++i) {
        vector.addLast(&gValues[i]);
        EXPECT_EQ(vector.getCapacity(), i < 16 ? 16u : 32u);
    }
    EXPECT_EQ(contents(vector), first(17));
    EXPECT_EQ(vector.find(&gValues[16]) - vector.begin(), 16);
    EXPECT_TRUE(vector.find(nullptr) == vector.end());
    vector.clear();
    EXPECT_TRUE(vector.empty());
    EXPECT_EQ(vector.getCapacity(), 32u);
}

TEST(Vector, RemoveMovesTheHeadDownNotTheTail)
{
    int a = 0, b = 1, c = 2;
    Vector<int> vector;
    for (int* value : {&a, &b, &c}) {
        vector.addLast(value);
    }
    // Index 1: the one entry at the head moves down: b, b.
    ArrayIterator<int> given = vector.begin() + 1;
    EXPECT_TRUE(vector.remove(given) == given);
    EXPECT_EQ(contents(vector), (std::vector<int*>{&b, &b}));
    vector[0] = &a;
    vector.remove(vector.begin());
    EXPECT_EQ(contents(vector), (std::vector<int*>{&b}));
    // end() and absent values are ignored; the last index drops the size.
    vector.remove(vector.end());
    vector.remove(&c);
    vector.remove(&b);
    EXPECT_TRUE(vector.empty());
}

TEST(VectorDeathTest, ReserveBelowTheSizeIsFatalAndZeroReleases)
{
    Vector<int> vector;
    vector.addLast(&gValues[0]);
    vector.addLast(&gValues[1]);
    EXPECT_DEATH(vector.reserve(1), "Invalid size\\.");
    vector.reserve(2);
    EXPECT_EQ(contents(vector), first(2));
    vector.clear();
    vector.reserve(0);
    EXPECT_EQ(vector.getCapacity(), 0u);
    vector.addLast(&gValues[0]);
    EXPECT_EQ(vector.getCapacity(), 16u);
}

TEST(Map, RisingIdsAppendAndNearestAnswersTheInsertionPoint)
{
    Map<int> map(32);
    for (u32 id = 1; id <= 20; ++id) {
        map.add(&gValues[id], id * 10);
        EXPECT_EQ(*map.begin(), &gValues[1]) << "id " << id;
        EXPECT_EQ(*--map.end(), &gValues[id]) << "id " << id;
    }
    EXPECT_EQ(map.findNearest(30), 2u);
    EXPECT_EQ(map.findNearest(35), 3u);
    EXPECT_EQ(Map<int>().findNearest(7), 0u);
}

TEST(MapDeathTest, IdZeroDuplicatesAndShrinkingAreFatal)
{
    Map<int> map;
    EXPECT_DEATH(map.add(&gValues[0], 0), "ID number 0 is reserved\\.");
    for (u32 id : {20u, 10u, 30u}) {
        map.add(&gValues[id], id);
    }
    for (u32 id : {10u, 20u, 30u}) {
        EXPECT_DEATH(map.add(&gValues[0], id), "ID number conflict\\.");
    }
    EXPECT_DEATH(map.reserve(2), "Invalid size\\.");
}

TEST(Map, RandomOperationsMatchAStandardMap)
{
    std::mt19937 random(777);
    for (int round = 0; round < 10; ++round) {
        Map<int> map;
        std::map<u32, int*> model;
        for (int step = 0; step < 2000; ++step) {
            u32 id = 1 + static_cast<u32>(random() % 300);
            int* value = &gValues[random() % 512];
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

TEST(Queue, FirstInFirstOutAroundTheRingAndThroughReserve)
{
    Queue<int> queue;
    int next = 0;
    int expected = 0;
    // Many times round a 16-node ring, never more than 10 waiting.
    for (int round = 0; round < 20; ++round) {
        for (int i = 0; i < 10; ++i) {
            queue.push(&gValues[next++ % 64]);
        }
        EXPECT_EQ(queue.end() - queue.begin(), 10);
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(queue.pop(), &gValues[expected++ % 64]);
        }
        EXPECT_TRUE(queue.empty());
    }
    // Unread entries wrapped round the ring keep their order when it grows.
    for (int i = 0; i < 20; ++i) {
        queue.push(&gValues[i]);
        if (i < 6) {
            queue.pop();
        }
    }
    queue.reserve(256);
    for (int i = 20; i < 261; ++i) {
        queue.push(&gValues[i]);
    }
    EXPECT_EQ(queue.size(), 255u);
    for (int i = 6; i < 261; ++i) {
        EXPECT_EQ(queue.pop(), &gValues[i]);
    }
}

TEST(QueueDeathTest, UnderflowTooSmallReservationsAndTheFullRing)
{
    Queue<int> queue;
    EXPECT_DEATH(queue.pop(), "Queue underflow\\.");
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(queue.size(), static_cast<u32>(i));
        queue.push(&gValues[i]);
    }
    // Deliberately no growth: the ring reads as empty once full.
    EXPECT_TRUE(queue.empty());
    Queue<int> four;
    for (int i = 0; i < 4; ++i) {
        four.push(&gValues[i]);
    }
    EXPECT_DEATH(four.reserve(3), "Invalid size\\.");
    // Four entries need a fifth node for the write position.
    EXPECT_DEATH(four.reserve(4), "Not enough size to copy elements\\.");
    four.reserve(5);
    EXPECT_EQ(four.pop(), &gValues[0]);
}

TEST(StackDeathTest, LastInFirstOutAcrossGrowthAndFatalMisuse)
{
    Stack<int> stack;
    EXPECT_DEATH(stack.pop(), "Stack underflow\\.");
    stack.reserve(0); // means one
    for (int i = 0; i < 40; ++i) {
        stack.push(&gValues[i]);
    }
    EXPECT_DEATH(stack.reserve(39), "Not enough size to copy elements\\.");
    for (int i = 39; i >= 0; --i) {
        EXPECT_EQ(stack.pop(), &gValues[i]);
    }
    EXPECT_TRUE(stack.empty());
}
