#include "serialtest.h"

#include <cstdio>
#include <random>
#include <vector>

#include "foundation/allocator.h"
#include "foundation/autostring.h"
#include "platform/filesystem.h"

namespace {

std::string const& getPrefix()
{
    static std::string const prefix = "harbor_serial_" + std::to_string(std::random_device()()) + "_";
    return prefix;
}

void collectOwnFile(platform::sDirectoryEntry const& entry, void* user)
{
    if (std::string(entry.mName).compare(0, getPrefix().size(), getPrefix()) == 0) {
        static_cast<std::vector<std::string>*>(user)->push_back(testing::TempDir() + entry.mName);
    }
}

// Strings need their heap before any test runs; it is never deleted, since
// a leak check on it at exit would only see what tests meant to keep. Death
// tests fork without starting the program again, so a child's files carry
// the parent's prefix and go when the parent ends.
class SerialTestEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        if (AutoString::getAllocator() == nullptr) {
            AutoString::setAllocator(new GPAllocator(0x4000000, "String", nullptr, 32, true));
        }
        GTEST_FLAG_SET(death_test_style, "fast");
        getPrefix();
    }
    void TearDown() override
    {
        std::vector<std::string> paths;
        platform::listDirectory(testing::TempDir().c_str(), collectOwnFile, &paths);
        for (std::string const& path : paths) {
            std::remove(path.c_str());
        }
    }
};

testing::Environment* const sEnvironment = testing::AddGlobalTestEnvironment(new SerialTestEnvironment);

} // namespace

std::string makeTempPath(char const* name)
{
    return testing::TempDir() + getPrefix() + name;
}

std::string readFile(std::string const& path)
{
    std::string text;
    FILE* file = fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return text;
    }
    char buffer[4096];
    size_t count;
    while ((count = fread(buffer, 1, sizeof(buffer), file)) != 0) {
        text.append(buffer, count);
    }
    fclose(file);
    return text;
}

void writeFile(std::string const& path, std::string const& text)
{
    FILE* file = fopen(path.c_str(), "wb");
    fwrite(text.data(), 1, text.size(), file);
    fclose(file);
}
