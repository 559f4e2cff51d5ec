// Diagnostics and text formatting with text from outside the program: a "%"
// in a path or a file is printed as it stands, and a line longer than its
// buffer is cut, on every route (trace, assertion, error; AutoString::format
// is tested with the strings).
#include <gtest/gtest.h>

#include <string>

#include "foundation/debug.h"

namespace {

std::string const kPercentPath = "/data/%s%n%x/root";
std::string const kLongPath = "/" + std::string(4000, 'a');

std::string traced(void (*trace)(char const* text), std::string const& text)
{
    testing::internal::CaptureStderr();
    trace(text.c_str());
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(DevTrace, OutsideTextStandsAsItIsAndLongLinesAreCut)
{
    struct Case {
        char const* mpName;
        void (*mTrace)(char const* text);
        std::string mText;
        std::string mExpected;
    };
    Case const cases[] = {
        {"percent path", [](char const* text) { DEV_TRACE("Resource %s loading fail.\n", text); }, kPercentPath,
         "Resource /data/%s%n%x/root loading fail.\n"},
        {"long path", [](char const* text) { DEV_TRACE("Resource %s loading fail.\n", text); }, kLongPath,
         "Resource /" + std::string(1023 - 11, 'a') + "\n"},
        {"no newline", [](char const* text) { DEV_TRACE("%s", text); }, kLongPath,
         "/" + std::string(1021, 'a') + "\n"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.mpName);
        EXPECT_EQ(traced(c.mTrace, c.mText), c.mExpected);
    }
}

TEST(DevTrace, TheFormatsOwnTextIsReadTwiceAndConversionsFollowPrintf)
{
    testing::internal::CaptureStderr();
    DEV_TRACE("100%%%% sure, 50%% done\n");
    DEV_TRACE("[%5.2f|%-4d|%x|%lld|%c|%*d|%s|%Lg]\n", 3.14159, 7, 255u, -5ll, 'q', 3, 9, "ok", 1.5L);
    int count = 0;
    DEV_TRACE("%d%n.\n", 1, &count);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "100% sure, 50% done\n[ 3.14|7   |ff|-5|q|  9|ok|1.5]\n1.\n");
    EXPECT_EQ(count, 0) << "a count is never written back";
}

TEST(DevAssertDeathTest, OutsideTextInTheMessageStandsAsItIsAndIsCut)
{
    std::string const message = "Open failed: " + kPercentPath;
    EXPECT_DEATH(dev_assert(message.c_str(), "file.cpp", 12), "file\\.cpp\\(12\\) : Open failed: /data/%s%n%x/root");
    EXPECT_DEATH(dev_assert(kLongPath.c_str(), "file.cpp", 12), "file\\.cpp\\(12\\) : /aaaa");
    EXPECT_DEATH(DEV_ERROR(message.c_str()), "Open failed: /data/%s%n%x/root");
    EXPECT_DEATH(DEV_ERROR(kLongPath.c_str()), "/aaaa");
}
