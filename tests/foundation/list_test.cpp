#include <gtest/gtest.h>

#include <list>
#include <random>
#include <vector>

#include "foundation/list.h"

namespace {

struct Items {
    int values[64];
    Items()
    {
        for (int i = 0; i < 64; ++i) {
            values[i] = i;
        }
    }
    int* operator[](int i) { return &values[i]; }
};

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

} // namespace

TEST(List, ZeroCapacityAllocatesNothingAndClearIsHarmless)
{
    List<int> list;
    EXPECT_EQ(list.getCapacity(), 0u);
    EXPECT_TRUE(list.empty());
    list.clear();
    EXPECT_EQ(list.getCapacity(), 0u);
    EXPECT_TRUE(list.begin() == list.end());
    EXPECT_TRUE(list.rbegin() == list.rend());
    EXPECT_TRUE(list.end() == LinkIterator<int>());
}

TEST(List, FirstInsertionReservesSixteen)
{
    Items items;
    List<int> list;
    list.addFirst(items[0]);
    EXPECT_EQ(list.getCapacity(), 16u);
}

TEST(List, SixteenNodesFitAndTheSeventeenthGrowsBySixteenAndCompacts)
{
    Items items;
    List<int> list(16);
    std::vector<sLinkNode<int>*> nodes;
    for (int i = 0; i < 16; ++i) {
        list.addLast(items[i]);
        nodes.push_back(list.rbegin().getNode());
    }
    EXPECT_EQ(list.getCapacity(), 16u);
    // No node moved while the array had room.
    int index = 0;
    for (LinkIterator<int> it = list.begin(); it != list.end(); ++it, ++index) {
        EXPECT_EQ(it.getNode(), nodes[index]);
    }
    // Scramble the order, then grow: the nodes are laid out in list order.
    list.remove(items[3]);
    list.addFirst(items[3]);
    list.addLast(items[16]);
    EXPECT_EQ(list.getCapacity(), 32u);
    sLinkNode<int>* previous = nullptr;
    for (LinkIterator<int> it = list.begin(); it != list.end(); ++it) {
        if (previous != nullptr) {
            EXPECT_EQ(it.getNode(), previous + 1);
        }
        previous = it.getNode();
    }
    std::vector<int*> expected = {items[3]};
    for (int i = 0; i < 17; ++i) {
        if (i != 3) {
            expected.push_back(items[i]);
        }
    }
    EXPECT_EQ(contents(list), expected);
}

TEST(List, RemoveDuringAWalkLandsOnTheNextNode)
{
    Items items;
    List<int> list;
    for (int i = 0; i < 5; ++i) {
        list.addLast(items[i]);
    }
    LinkIterator<int> it = list.begin();
    ++it;
    it = list.remove(it);
    EXPECT_EQ(*it, items[2]);
    // The walk's own ++ then skips one, as the system manager expects.
    ++it;
    EXPECT_EQ(*it, items[3]);
    EXPECT_EQ(contents(list), (std::vector<int*>{items[0], items[2], items[3], items[4]}));

    // Removing the last node answers end(); end() itself is ignored.
    it = list.remove(LinkIterator<int>(list.rbegin().getNode()));
    EXPECT_TRUE(it == list.end());
    EXPECT_TRUE(list.remove(list.end()) == list.end());
    EXPECT_EQ(list.size(), 3u);

    // Reverse removal answers the node in front.
    ReverseLinkIterator<int> rit = list.remove(list.rbegin());
    EXPECT_EQ(*rit, items[2]);
    EXPECT_EQ(contents(list), (std::vector<int*>{items[0], items[2]}));
    EXPECT_TRUE(list.remove(ReverseLinkIterator<int>(list.begin().getNode())) == list.rend());
}

TEST(List, InsertionsRelativeToForwardAndReverseIterators)
{
    Items items;
    List<int> list;
    list.addLast(items[1]);
    list.addLast(items[2]);
    list.insertFront(list.begin(), items[0]);         // before 1
    list.insertBackFront(list.begin(), items[10]);    // behind 0
    list.insertFront(list.end(), items[3]);           // addLast
    list.insertBackFront(list.end(), items[4]);       // addLast
    EXPECT_EQ(contents(list), (std::vector<int*>{items[0], items[10], items[1], items[2], items[3], items[4]}));

    List<int> reverse;
    reverse.addLast(items[1]);
    reverse.insertFront(reverse.rbegin(), items[2]);      // behind 1
    reverse.insertBackFront(reverse.rbegin(), items[11]); // before 2
    reverse.insertFront(reverse.rend(), items[0]);        // addFirst
    reverse.insertBackFront(reverse.rend(), items[9]);    // addFirst
    EXPECT_EQ(contents(reverse), (std::vector<int*>{items[9], items[0], items[1], items[11], items[2]}));
}

TEST(List, InsertionAtAnIteratorSurvivesGrowth)
{
    Items items;
    List<int> list(16);
    for (int i = 0; i < 16; ++i) {
        list.addLast(items[i]);
    }
    // The array is full: inserting grows it and must still find the anchor.
    list.insertFront(list.begin() + 5, items[40]);
    list.insertBackFront(ReverseLinkIterator<int>((list.begin() + 9).getNode()), items[41]);
    std::vector<int*> expected;
    for (int i = 0; i < 16; ++i) {
        if (i == 5) {
            expected.push_back(items[40]);
        }
        if (i == 8) {
            expected.push_back(items[41]);
        }
        expected.push_back(items[i]);
    }
    EXPECT_EQ(contents(list), expected);
}

TEST(List, IteratorArithmeticStopsAtTheEnds)
{
    Items items;
    List<int> list;
    for (int i = 0; i < 4; ++i) {
        list.addLast(items[i]);
    }
    LinkIterator<int> end = list.end();
    ++end;
    --end;
    EXPECT_TRUE(end == list.end());
    EXPECT_EQ(*(list.begin() + 2), items[2]);
    EXPECT_TRUE(list.begin() + 4 == list.end());
    EXPECT_TRUE(list.begin() + 100 == list.end());
    // A negative count does not step at all.
    LinkIterator<int> it = list.begin() + 2;
    it += -1;
    EXPECT_EQ(*it, items[2]);
    EXPECT_EQ(it - list.begin(), 2);
    EXPECT_EQ(list.end() - list.begin(), 4);
    --it;
    EXPECT_EQ(*it, items[1]);
    EXPECT_EQ(*(list.rbegin() + 1), items[2]);
    EXPECT_TRUE(list.rbegin() + 4 == list.rend());
    EXPECT_EQ(list[3], items[3]);
    EXPECT_EQ(list[0], items[0]);
}

TEST(ListDeathTest, IndexPastTheEndDereferencesNull)
{
    Items items;
    List<int> list;
    list.addLast(items[0]);
    EXPECT_DEATH(
        {
            int* volatile sink = list[1];
            (void)sink;
        },
        "");
}

TEST(List, FindAndRemoveByValue)
{
    Items items;
    List<int> list;
    list.addLast(items[0]);
    list.addLast(items[1]);
    EXPECT_EQ(*list.find(items[1]), items[1]);
    EXPECT_TRUE(list.find(items[7]) == list.end());
    list.remove(items[7]);
    EXPECT_EQ(list.size(), 2u);
    list.remove(items[0]);
    EXPECT_EQ(contents(list), (std::vector<int*>{items[1]}));
}

TEST(List, ClearKeepsTheArrayAndRefillsItInArrayOrder)
{
    Items items;
    List<int> list(8);
    for (int i = 0; i < 6; ++i) {
        list.addFirst(items[i]);
    }
    list.clear();
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.getCapacity(), 8u);
    for (int i = 0; i < 8; ++i) {
        list.addLast(items[i]);
    }
    EXPECT_EQ(list.getCapacity(), 8u);
    sLinkNode<int>* first = list.begin().getNode();
    int index = 0;
    for (LinkIterator<int> it = list.begin(); it != list.end(); ++it, ++index) {
        EXPECT_EQ(it.getNode(), first + index);
    }
}

TEST(List, ReserveBelowTheSizeIsFatalAndZeroReleases)
{
    Items items;
    List<int> list;
    list.addLast(items[0]);
    list.addLast(items[1]);
    EXPECT_DEATH(list.reserve(1), "Invalid size\\.");
    list.reserve(2);
    EXPECT_EQ(contents(list), (std::vector<int*>{items[0], items[1]}));
    list.clear();
    list.reserve(0);
    EXPECT_EQ(list.getCapacity(), 0u);
    list.addLast(items[2]);
    EXPECT_EQ(contents(list), (std::vector<int*>{items[2]}));
}

TEST(List, RandomOperationsMatchAStandardList)
{
    Items items;
    std::mt19937 random(12345);
    for (int round = 0; round < 20; ++round) {
        List<int> list(static_cast<u32>(round % 3) * 5);
        std::list<int*> model;
        for (int step = 0; step < 400; ++step) {
            int op = static_cast<int>(random() % 8);
            int* value = items[static_cast<int>(random() % 64)];
            u32 position = model.empty() ? 0 : static_cast<u32>(random() % model.size());
            auto at = model.begin();
            std::advance(at, position);
            LinkIterator<int> it = list.begin() + static_cast<int>(position);
            switch (op) {
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
                bool present = std::find(model.begin(), model.end(), value) != model.end();
                EXPECT_EQ(list.find(value) != list.end(), present);
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
