#include <gtest/gtest.h>

#include <vector>

#include "foundation/vector.h"

namespace {

std::vector<int*> contents(Vector<int> const& vector)
{
    std::vector<int*> result;
    for (ArrayIterator<int> it = vector.begin(); it != vector.end(); ++it) {
        result.push_back(*it);
    }
    return result;
}

} // namespace

TEST(Vector, GrowsBySixteenAndKeepsItsEntries)
{
    int values[40];
    Vector<int> vector;
    EXPECT_EQ(vector.getCapacity(), 0u);
    for (int i = 0; i < 17; ++i) {
        vector.addLast(&values[i]);
        EXPECT_EQ(vector.getCapacity(), i < 16 ? 16u : 32u);
    }
    for (u32 i = 0; i < 17; ++i) {
        EXPECT_EQ(vector[i], &values[i]);
    }
    vector.clear();
    EXPECT_TRUE(vector.empty());
    EXPECT_EQ(vector.getCapacity(), 32u);
    vector[0] = &values[5];
    EXPECT_EQ(static_cast<Vector<int> const&>(vector)[0], &values[5]);
}

TEST(Vector, RemoveMovesTheHeadDownNotTheTail)
{
    int a = 0, b = 1, c = 2;
    Vector<int> vector;
    vector.addLast(&a);
    vector.addLast(&b);
    vector.addLast(&c);
    // Index 1: the one entry at the head moves down: b, b.
    ArrayIterator<int> given = vector.begin() + 1;
    EXPECT_TRUE(vector.remove(given) == given);
    EXPECT_EQ(contents(vector), (std::vector<int*>{&b, &b}));

    Vector<int> first;
    first.addLast(&a);
    first.addLast(&b);
    first.addLast(&c);
    first.remove(first.begin());
    EXPECT_EQ(contents(first), (std::vector<int*>{&b, &c}));
    // The last index moves nothing and drops the size.
    first.remove(&c);
    EXPECT_EQ(contents(first), (std::vector<int*>{&b}));
    // end() and absent values are ignored.
    first.remove(first.end());
    first.remove(&a);
    EXPECT_EQ(contents(first), (std::vector<int*>{&b}));
}

TEST(Vector, FindAnswersTheSlotOrEnd)
{
    int a = 0, b = 1;
    Vector<int> vector(4);
    vector.addLast(&a);
    vector.addLast(&b);
    EXPECT_EQ(vector.find(&b) - vector.begin(), 1);
    EXPECT_TRUE(vector.find(nullptr) == vector.end());
}

TEST(Vector, ReserveBelowTheSizeIsFatalAndZeroReleases)
{
    int a = 0, b = 1;
    Vector<int> vector;
    vector.addLast(&a);
    vector.addLast(&b);
    EXPECT_DEATH(vector.reserve(1), "Invalid size\\.");
    vector.reserve(2);
    EXPECT_EQ(contents(vector), (std::vector<int*>{&a, &b}));
    vector.clear();
    vector.reserve(0);
    EXPECT_EQ(vector.getCapacity(), 0u);
    EXPECT_TRUE(vector.begin() == vector.end());
    vector.addLast(&a);
    EXPECT_EQ(vector.getCapacity(), 16u);
}
