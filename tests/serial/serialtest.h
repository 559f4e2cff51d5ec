// Shared by the serial and reflection tests: a string heap for the whole
// program, death tests that fork (the programs run no other threads), a
// temporary folder of the run that goes when the program ends, whole files.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "foundation/allocator.h"
#include "foundation/autostring.h"
#include "testfiles.h"

inline std::string const& getTempFolder()
{
    static std::string const folder = [] {
        std::string pattern = testing::TempDir() + "harbor_test_XXXXXX";
        return std::string(mkdtemp(&pattern[0])) + "/";
    }();
    return folder;
}

inline std::string makeTempPath(char const* name)
{
    return getTempFolder() + name;
}

class TestEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        if (AutoString::getAllocator() == nullptr) {
            AutoString::setAllocator(new GPAllocator(0x4000000, "String", nullptr, 32, true));
        }
        GTEST_FLAG_SET(death_test_style, "fast");
        getTempFolder();
    }
    void TearDown() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(getTempFolder(), ignored);
    }
};
