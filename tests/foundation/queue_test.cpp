#include <gtest/gtest.h>

#include "foundation/queue.h"

TEST(Queue, FirstInFirstOutAroundTheRing)
{
    int values[64];
    Queue<int> queue;
    EXPECT_TRUE(queue.empty());
    int next = 0;
    int expected = 0;
    // Many times round a 16-node ring, never more than 10 waiting.
    for (int round = 0; round < 20; ++round) {
        for (int i = 0; i < 10; ++i) {
            queue.push(&values[next++ % 64]);
        }
        EXPECT_EQ(queue.size(), 10u);
        EXPECT_EQ(queue.end() - queue.begin(), 10);
        EXPECT_EQ(*queue.begin(), &values[expected % 64]);
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(queue.pop(), &values[expected++ % 64]);
        }
        EXPECT_TRUE(queue.empty());
    }
}

TEST(Queue, TheSixteenthUnreadEntryMakesTheQueueReadAsEmpty)
{
    int values[16];
    Queue<int> queue;
    for (int i = 0; i < 15; ++i) {
        queue.push(&values[i]);
    }
    EXPECT_EQ(queue.size(), 15u);
    queue.push(&values[15]);
    // Deliberately no growth: the ring reads as empty once full.
    EXPECT_EQ(queue.size(), 0u);
    EXPECT_TRUE(queue.empty());
}

TEST(Queue, ReserveKeepsTheUnreadEntriesInOrder)
{
    int values[300];
    Queue<int> queue;
    for (int i = 0; i < 12; ++i) {
        queue.push(&values[i]);
    }
    for (int i = 0; i < 6; ++i) {
        queue.pop();
    }
    for (int i = 12; i < 20; ++i) {
        queue.push(&values[i]); // wraps round the 16-node ring
    }
    queue.reserve(256);
    EXPECT_EQ(queue.size(), 14u);
    for (int i = 20; i < 261; ++i) {
        queue.push(&values[i]);
    }
    EXPECT_EQ(queue.size(), 255u);
    for (int i = 6; i < 261; ++i) {
        EXPECT_EQ(queue.pop(), &values[i]);
    }
}

TEST(QueueDeathTest, UnderflowAndTooSmallReservationsAreFatal)
{
    int values[4];
    Queue<int> queue;
    EXPECT_DEATH(queue.pop(), "Queue underflow\\.");
    for (int i = 0; i < 4; ++i) {
        queue.push(&values[i]);
    }
    EXPECT_DEATH(queue.reserve(3), "Invalid size\\.");
    // Four entries need a fifth node for the write position.
    EXPECT_DEATH(queue.reserve(4), "Not enough size to copy elements\\.");
    queue.reserve(5);
    EXPECT_EQ(queue.size(), 4u);
    EXPECT_EQ(queue.pop(), &values[0]);
}
