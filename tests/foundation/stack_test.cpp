#include <gtest/gtest.h>

#include "foundation/stack.h"

TEST(Stack, LastInFirstOutAcrossGrowth)
{
    int values[40];
    Stack<int> stack;
    EXPECT_TRUE(stack.empty());
    for (int i = 0; i < 40; ++i) {
        stack.push(&values[i]);
    }
    EXPECT_EQ(stack.size(), 40u);
    for (int i = 39; i >= 0; --i) {
        EXPECT_EQ(stack.pop(), &values[i]);
    }
    EXPECT_TRUE(stack.empty());
    stack.push(&values[0]);
    stack.clear();
    EXPECT_TRUE(stack.empty());
}

TEST(Stack, ReserveZeroMeansOne)
{
    int a = 0, b = 1;
    Stack<int> stack;
    stack.reserve(0);
    stack.push(&a);
    stack.push(&b);
    EXPECT_EQ(stack.pop(), &b);
    EXPECT_EQ(stack.pop(), &a);
}

TEST(StackDeathTest, UnderflowAndShrinkingBelowTheEntriesAreFatal)
{
    int a = 0, b = 1;
    Stack<int> stack;
    EXPECT_DEATH(stack.pop(), "Stack underflow\\.");
    stack.push(&a);
    stack.push(&b);
    EXPECT_DEATH(stack.reserve(1), "Not enough size to copy elements\\.");
    stack.reserve(2);
    EXPECT_EQ(stack.pop(), &b);
}
