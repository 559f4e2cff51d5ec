// Entry point of every test program: fatal errors must report and end, never
// wait for a person, and death tests must be safe with worker threads alive.
#include <gtest/gtest.h>

#include "platform/platform.h"

int main(int argc, char** argv)
{
    platform::setUnattended(true);
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
