#include <gtest/gtest.h>

#include "platform/platform.h"

TEST(PlatformClock, CountIsMonotonicAndInNanoseconds)
{
    u64 numerator = 0, denominator = 0;
    platform::getTimebase(numerator, denominator);
    EXPECT_EQ(numerator, 1u);
    EXPECT_EQ(denominator, 1u);
    u64 const before = platform::getCount();
    platform::sleepMilliseconds(5);
    u64 const after = platform::getCount();
    EXPECT_GE(after - before, 5000000u);
}

TEST(PlatformFolders, ExecutableFolderIsAbsolute)
{
    char path[1024];
    ASSERT_TRUE(platform::getExecutableFolder(path, sizeof(path)));
    EXPECT_EQ(path[0], '/');
    char tiny[4];
    EXPECT_FALSE(platform::getExecutableFolder(tiny, sizeof(tiny)));
}
