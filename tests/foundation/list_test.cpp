#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>
#include <vector>

#include "foundation/list.h"

namespace {

int gValues[64];

int* item(int index)
{
    return &gValues[index];
}

std::vector<int*> items(std::initializer_list<int> indices)
{
    std::vector<int*> result;
    for (int index : indices) {
        result.push_back(item(index));
    }
    return result;
}

// The list read forwards and backwards must tell the same story.
std::vector<int*> contents(List<int> const& list)
{
    std::vector<int*> forward;
    for (LinkIterator<int> it = list.begin(); it != list.end(); ++it) {
        forward.push_back(*it);
    }
    std::vector<int*> backward;
    for (ReverseLinkIterator<int> it = list.rbegin(); it != list.rend(); ++it) {
        backward.insert(backward.begin(), *it);
    }
    EXPECT_EQ(forward, backward);
    EXPECT_EQ(forward.size(), list.size());
    return forward;
}

// True if the nodes lie one after the other in the array, in list order.
bool isCompact(List<int> const& list)
{
    sLinkNode<int>* first = list.begin().getNode();
    int index = 0;
    for (LinkIterator<int> it = list.begin(); it != list.end(); ++it, ++index) {
        if (it.getNode() != first + index) {
            return false;
        }
    }
    return true;
}

} // namespace

TEST(List, GrowthStartsAtSixteenAndAddsSixteenCompacting)
{
    List<int> list;
    list.clear(); // no array: nothing to do
    for (int i = 0; i < 16; ++i) {
        list.addLast(item(i));
    }
    EXPECT_EQ(list.getCapacity(), 16u);
    sLinkNode<int>* fifth = (list.begin() + 5).getNode();
    // Scramble the order without allocating: nodes stay where they are.
    list.remove(item(3));
    list.addFirst(item(3));
    EXPECT_EQ((list.begin() + 5).getNode(), fifth);
    EXPECT_FALSE(isCompact(list));
    list.addLast(item(16));
    EXPECT_EQ(list.getCapacity(), 32u);
    EXPECT_TRUE(isCompact(list));
    EXPECT_EQ(contents(list), items({3, 0, 1, 2, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}));
}

// Forward removal answering the next node is part of the random test below.
TEST(List, ReverseRemovalAnswersTheNodeInFront)
{
    List<int> list;
    for (int i : {0, 2, 3}) {
        list.addLast(item(i));
    }
    EXPECT_EQ(*list.remove(list.rbegin()), item(2));
    EXPECT_TRUE(list.remove(ReverseLinkIterator<int>(list.begin().getNode())) == list.rend());
    EXPECT_EQ(contents(list), items({2}));
}

// Reverse iterators mirror the forward insertions; growth keeps the anchor.
TEST(List, InsertionsAtReverseIteratorsAndThroughGrowth)
{
    List<int> list(2);
    list.addLast(item(1));
    list.insertFront(list.rbegin(), item(2));      // behind 1
    list.insertBackFront(list.rbegin(), item(11)); // before 2, growing
    list.insertFront(list.rend(), item(0));        // addFirst
    list.insertBackFront(list.rend(), item(9));    // addFirst
    EXPECT_EQ(contents(list), items({9, 0, 1, 11, 2}));
}

TEST(ListDeathTest, IteratorsStopAtTheEndsAndAnIndexPastTheEndReadsNull)
{
    List<int> list;
    for (int i = 0; i < 4; ++i) {
        list.addLast(item(i));
    }
    LinkIterator<int> end = list.end();
    EXPECT_TRUE(--(++end) == list.end());
    EXPECT_TRUE(list.begin() + 100 == list.end());
    LinkIterator<int> it = list.begin() + 2;
    it += -1; // a negative count does not step at all
    EXPECT_EQ(*it, item(2));
    EXPECT_DEATH(
        {
            int* volatile sink = list[4];
            (void)sink;
        },
        "");
}

TEST(ListDeathTest, ClearKeepsTheArrayAndReserveChecksTheSize)
{
    List<int> list(8);
    for (int i = 0; i < 6; ++i) {
        list.addFirst(item(i));
    }
    EXPECT_DEATH(list.reserve(5), "Invalid size\\.");
    list.clear();
    // The free chain is rebuilt in array order.
    for (int i = 0; i < 8; ++i) {
        list.addLast(item(i));
    }
    EXPECT_EQ(list.getCapacity(), 8u);
    EXPECT_TRUE(isCompact(list));
    list.clear();
    list.reserve(0);
    EXPECT_EQ(list.getCapacity(), 0u);
}

TEST(List, RandomOperationsMatchAStandardList)
{
    std::mt19937 random(12345);
    for (int round = 0; round < 20; ++round) {
        List<int> list(static_cast<u32>(round % 3) * 5);
        std::list<int*> model;
        for (int step = 0; step < 400; ++step) {
            int* value = item(static_cast<int>(random() % 64));
            u32 position = model.empty() ? 0 : static_cast<u32>(random() % model.size());
            auto at = std::next(model.begin(), position);
            LinkIterator<int> it = list.begin() + static_cast<int>(position);
            switch (random() % 8) {
            case 0:
                list.addLast(value);
                model.push_back(value);
                break;
            case 1:
                list.addFirst(value);
                model.push_front(value);
                break;
            case 2:
                list.insertFront(it, value);
                model.insert(at, value);
                break;
            case 3:
                list.insertBackFront(it, value);
                model.insert(at == model.end() ? at : std::next(at), value);
                break;
            case 4:
            case 5:
                if (!model.empty()) {
                    LinkIterator<int> next = list.remove(it);
                    auto modelNext = model.erase(at);
                    EXPECT_TRUE(modelNext == model.end() ? next == list.end() : *next == *modelNext);
                }
                break;
            case 6: {
                list.remove(value);
                auto found = std::find(model.begin(), model.end(), value);
                if (found != model.end()) {
                    model.erase(found);
                }
                break;
            }
            default:
                if (random() % 20 == 0) {
                    list.clear();
                    model.clear();
                }
                break;
            }
            ASSERT_EQ(contents(list), std::vector<int*>(model.begin(), model.end())) << "step " << step;
        }
    }
}
