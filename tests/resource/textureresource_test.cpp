// The texture readers: the pixels each format gives, their traces for files
// they refuse, the fatal size limit, and thousands of damaged variants of
// the samples, none of which may be read out of bounds.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <set>

#include "resource/resourcesystem.h"
#include "resource/textureresource.h"
#include "resourcetest.h"
#include "serial/stream.h"

namespace {

std::string le16(u32 value)
{
    return std::string{static_cast<char>(value & 255), static_cast<char>((value >> 8) & 255)};
}

std::string le32(u32 value)
{
    return le16(value & 0xFFFF) + le16(value >> 16);
}

// A Windows bitmap: file header, 40-byte info header, palette, pixel rows.
std::string makeBmp(u32 bits, s32 width, s32 height, std::string const& palette, std::string const& rows,
                    u32 compression = 0)
{
    u32 const offset = 14 + 40 + static_cast<u32>(palette.size());
    std::string bytes = "BM" + le32(offset + static_cast<u32>(rows.size())) + le32(0) + le32(offset);
    bytes += le32(40) + le32(static_cast<u32>(width)) + le32(static_cast<u32>(height)) + le16(1) + le16(bits);
    bytes += le32(compression) + le32(static_cast<u32>(rows.size())) + le32(2835) + le32(2835) + le32(0) + le32(0);
    return bytes + palette + rows;
}

std::string makeTga(u32 width, u32 height, u8 type, u8 bits, u8 descriptor, std::string const& pixels)
{
    std::string bytes(18, '\0');
    bytes[2] = static_cast<char>(type);
    bytes.replace(12, 4, le16(width) + le16(height));
    bytes[16] = static_cast<char>(bits);
    bytes[17] = static_cast<char>(descriptor);
    return bytes + pixels;
}

// Loads a file straight through one class, outside the resource map.
template <typename T>
T* loadDirect(std::string const& path)
{
    T* resource = new T();
    BinaryFileStream stream(path.c_str(), Stream::eMode_Read);
    if (!resource->load(stream)) {
        resource->release();
        return nullptr;
    }
    return resource;
}

std::vector<u8> pixelsOf(TextureResourceTGA const* tga)
{
    return std::vector<u8>(tga->getPixels(), tga->getPixels() + tga->getWidth() * tga->getHeight() * 4);
}

std::vector<u8> pixelsOf(TextureResourceBMP const* bmp)
{
    return std::vector<u8>(bmp->getPixels(), bmp->getPixels() + bmp->getWidth() * bmp->getHeight() * 4);
}

} // namespace

TEST_F(ResourceTest, TgaRowOrderAndDirectionGiveTheSamePicture)
{
    restest::sImage const image = restest::makeTgaSample();
    for (char const* name : {"tga32_top.tga", "tga32_bottom.tga"}) {
        restest::writeFile(intermediateFile(name), restest::readSample(name));
        std::string const path = local(name).substr(0, local(name).size() - 4);
        ResourceBase* resource =
            ResourceSystem::getInstance()->createResource(path.c_str(), TextureResourceTGA::getStaticTypeInfo());
        ASSERT_NE(resource, nullptr) << name;
        TextureResourceTGA* tga = static_cast<TextureResourceTGA*>(resource);
        EXPECT_EQ(tga->getWidth(), 16u);
        EXPECT_EQ(pixelsOf(tga), image.mPixels) << name;
        EXPECT_STREQ(tga->getPath().c_str(), ("intermediate/" + local(name)).c_str());
        resource->release();
    }
    // Bit 4 of the descriptor: rows stored right to left.
    restest::writeFile(intermediateFile("rtl.tga"), makeTga(2, 1, 2, 32, 0x30, "\x01\x02\x03\x04\x05\x06\x07\x08"));
    TextureResourceTGA* tga = loadDirect<TextureResourceTGA>(intermediateFile("rtl.tga"));
    ASSERT_NE(tga, nullptr);
    EXPECT_EQ(pixelsOf(tga), (std::vector<u8>{7, 6, 5, 8, 3, 2, 1, 4}));
    tga->release();
}

TEST_F(ResourceTest, BmpOfEveryDepthAndRowOrderGivesTheTablesPixels)
{
    for (u32 bits : {1u, 4u, 8u, 24u}) {
        restest::sImage const image = restest::makeBmpSample(bits);
        for (char const* order : {"up", "down"}) {
            std::string const name = "bmp" + std::to_string(bits) + "_" + order;
            restest::writeFile(intermediateFile((name + ".bmp").c_str()), restest::readSample((name + ".bmp").c_str()));
            ResourceBase* resource = ResourceSystem::getInstance()->createResource(
                local(name.c_str()).c_str(), TextureResourceBMP::getStaticTypeInfo());
            ASSERT_NE(resource, nullptr) << name;
            TextureResourceBMP* bmp = static_cast<TextureResourceBMP*>(resource);
            EXPECT_EQ(bmp->getWidth(), 13u);
            EXPECT_EQ(bmp->getHeight(), 5u);
            EXPECT_EQ(pixelsOf(bmp), image.mPixels) << name;
            resource->release();
        }
    }

    // 16 bits: the masks leave red 0 and green 0 or 8.
    restest::writeFile(intermediateFile("b16.bmp"), makeBmp(16, 3, 1, "", le16(0x7FFF) + le16(0x0020) + le16(0x001F)));
    TextureResourceBMP* bmp = loadDirect<TextureResourceBMP>(intermediateFile("b16.bmp"));
    ASSERT_NE(bmp, nullptr);
    EXPECT_EQ(pixelsOf(bmp), (std::vector<u8>{0, 8, 248, 255, 0, 8, 0, 255, 0, 0, 248, 255}));
    bmp->release();

    // 32 bits: rows of four bytes a pixel, read in steps of three.
    restest::writeFile(intermediateFile("b32.bmp"), makeBmp(32, 2, -1, "", "\x10\x20\x30\x40\x50\x60\x70\x80"));
    bmp = loadDirect<TextureResourceBMP>(intermediateFile("b32.bmp"));
    ASSERT_NE(bmp, nullptr);
    EXPECT_EQ(pixelsOf(bmp), (std::vector<u8>{0x30, 0x20, 0x10, 255, 0x60, 0x50, 0x40, 255}));
    bmp->release();

    // Other depths convert nothing and still load.
    restest::writeFile(intermediateFile("b2.bmp"), makeBmp(2, 2, 2, "", std::string(8, '\x55')));
    bmp = loadDirect<TextureResourceBMP>(intermediateFile("b2.bmp"));
    ASSERT_NE(bmp, nullptr);
    EXPECT_EQ(pixelsOf(bmp), std::vector<u8>(16, 0));
    bmp->release();
}

TEST_F(ResourceTest, RefusedFilesFailWithTheirTraces)
{
    std::string const rows8x8(8 * 8 * 4, '\x11');
    std::string const palette2 = std::string("\0\0\0\0\xff\xff\xff\0", 8);
    struct sCase {
        char const* mpName;
        std::string mBytes;
        char const* mpTrace;
    } const cases[] = {
        {"empty.tga", "", "TextureTGA : Broken file.\n"},
        {"short.tga", makeTga(8, 8, 2, 32, 0x20, rows8x8).substr(0, 100), "TextureTGA : Broken file.\n"},
        {"header.tga", std::string(10, '\0'), "TextureTGA : Broken file.\n"},
        {"rle.tga", makeTga(8, 8, 10, 32, 0x20, rows8x8), "TextureTGA : No support format.\n"},
        {"rgb.tga", makeTga(8, 8, 2, 24, 0x20, rows8x8), "TextureTGA : Only support 32bits.\n"},
        {"huge.tga", makeTga(65535, 65535, 2, 32, 0x20, rows8x8), "TextureTGA : Broken file.\n"},
        {"empty.bmp", "", "TextureResourceBMP : Broken file.\n"},
        {"magic.bmp", "XM" + makeBmp(24, 1, 1, "", "abcd").substr(2), "TextureResourceBMP : No bitmap.\n"},
        {"header.bmp", makeBmp(24, 1, 1, "", "abcd").substr(0, 30), "TextureResourceBMP : Broken file.\n"},
        {"rle.bmp", makeBmp(8, 1, 1, palette2, "abcd", 1), "TextureResourceBMP : Could not read compression bitmap.\n"},
        {"short.bmp", makeBmp(24, 8, 8, "", std::string(100, '\0')), "TextureResourceBMP : Broken file.\n"},
        {"wide.bmp", makeBmp(24, 0x7FFFFFFF, 0x7FFFFFFF, "", "abcd"), "TextureResourceBMP : Broken file.\n"},
        {"negative.bmp", makeBmp(24, -4, 1, "", std::string(16, '\0')), "TextureResourceBMP : Broken file.\n"},
        {"lowest.bmp", makeBmp(24, 1, INT32_MIN, "", "abcd"), "TextureResourceBMP : Broken file.\n"},
        // Index 200 of a two-entry palette lies past the end of the file.
        {"palette.bmp", makeBmp(8, 1, 1, palette2, "\xc8\0\0\0"), "TextureResourceBMP : Broken file.\n"},
    };
    for (sCase const& test : cases) {
        restest::writeFile(intermediateFile(test.mpName), test.mBytes);
        std::string const path = local(test.mpName).substr(0, local(test.mpName).size() - 4);
        bool const bmp = std::string(test.mpName).find(".bmp") != std::string::npos;
        TypeInfo const* type = bmp ? TextureResourceBMP::getStaticTypeInfo() : TextureResourceTGA::getStaticTypeInfo();
        testing::internal::CaptureStderr();
        ResourceBase* resource = ResourceSystem::getInstance()->createResource(path.c_str(), type);
        std::string const traces = testing::internal::GetCapturedStderr();
        EXPECT_EQ(resource, nullptr) << test.mpName;
        EXPECT_EQ(traces, test.mpTrace + ("Resource " + intermediateFile(test.mpName) + " loading fail.\n"))
            << test.mpName;
    }

    // The native reader refuses without a word.
    restest::sImage const image = restest::makeTgaSample();
    std::string const good = restest::encodeTex(image);
    std::string version2 = good;
    version2[4] = 2;
    std::string const files[] = {"", good.substr(0, 11), "TEX!" + good.substr(4), version2, good.substr(0, good.size() - 1)};
    for (std::string const& bytes : files) {
        restest::writeFile(nativeFile("bad.tex"), bytes);
        testing::internal::CaptureStderr();
        TextureResource* tex = loadDirect<TextureResource>(nativeFile("bad.tex"));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(tex, nullptr) << bytes.size();
    }
}

TEST_F(ResourceTest, TexturesAbove1024AreFatalWhateverTheFormat)
{
    restest::writeFile(intermediateFile("wide.tga"), makeTga(1025, 1, 2, 32, 0x20, std::string(1025 * 4, '\0')));
    restest::writeFile(intermediateFile("tall.bmp"), makeBmp(24, 1, -1025, "", std::string(1025 * 4, '\0')));
    restest::writeFile(intermediateFile("odd.bmp"), makeBmp(2, 4000, 4000, "", ""));
    restest::sImage const wide{1025, 1, std::vector<u8>(1025 * 4)};
    restest::writeFile(nativeFile("wide.tex"), restest::encodeTex(wide));
    char const* const message = "Requesed texture size is greater than 1024.";
    EXPECT_DEATH(loadDirect<TextureResourceTGA>(intermediateFile("wide.tga")), message);
    EXPECT_DEATH(loadDirect<TextureResourceBMP>(intermediateFile("tall.bmp")), message);
    EXPECT_DEATH(loadDirect<TextureResourceBMP>(intermediateFile("odd.bmp")), message);
    EXPECT_DEATH(loadDirect<TextureResource>(nativeFile("wide.tex")), message);

    restest::sImage const largest{1024, 1, std::vector<u8>(1024 * 4)};
    restest::writeFile(nativeFile("largest.tex"), restest::encodeTex(largest));
    TextureResource* tex = loadDirect<TextureResource>(nativeFile("largest.tex"));
    ASSERT_NE(tex, nullptr);
    tex->release();
}

// ---------------------------------------------------------------------------
// Damaged files

namespace {

enum eReader { eReader_TGA, eReader_BMP, eReader_TEX };

struct sVariant {
    eReader mReader;
    std::string mBytes;
};

// Byte changes, header fields set to extreme values, cuts and tails.
void addVariants(std::vector<sVariant>& out, eReader reader, std::string const& seed, u32 count, u32 seedNumber)
{
    std::mt19937 random(seedNumber);
    u32 const extremes[] = {0, 1, 0x7F, 0x80, 0xFF, 0x100, 0x400, 0x401, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    for (u32 i = 0; i < count; ++i) {
        std::string bytes = seed;
        switch (random() % 5) {
        case 0:
            for (u32 n = 1 + random() % 4; n != 0; --n) {
                bytes[random() % bytes.size()] = static_cast<char>(random());
            }
            break;
        case 1: bytes[random() % std::min<size_t>(bytes.size(), 64)] = static_cast<char>(random()); break;
        case 2: {
            size_t const at = random() % std::min<size_t>(bytes.size() - 4, 60);
            std::string const value = le32(extremes[random() % (sizeof(extremes) / sizeof(extremes[0]))]);
            bytes.replace(at, (random() % 2 == 0) ? 2 : 4, value.substr(0, (random() % 2 == 0) ? 2 : 4));
            bytes.resize(std::max(bytes.size(), seed.size()));
            break;
        }
        case 3: bytes.resize(random() % bytes.size()); break;
        default:
            for (u32 n = random() % 64; n != 0; --n) {
                bytes += static_cast<char>(random());
            }
            bytes[random() % 40] = static_cast<char>(random());
            break;
        }
        out.push_back({reader, bytes});
    }
}

bool load(sVariant const& variant, std::string const& path)
{
    restest::writeFile(path, variant.mBytes);
    ResourceBase* resource = nullptr;
    switch (variant.mReader) {
    case eReader_TGA: resource = loadDirect<TextureResourceTGA>(path); break;
    case eReader_BMP: resource = loadDirect<TextureResourceBMP>(path); break;
    case eReader_TEX: resource = loadDirect<TextureResource>(path); break;
    }
    if (resource != nullptr) {
        resource->release();
    }
    return resource != nullptr;
}

// In a child process: loads the variants from start on, noting the number
// of each before its load, so that the parent knows which one ended it.
[[noreturn]] void runVariants(std::vector<sVariant> const& variants, size_t start, std::string const& progress,
                              std::string const& path)
{
    FILE* file = fopen(progress.c_str(), "wb");
    for (size_t i = start; i <= variants.size(); ++i) {
        u64 const number = i;
        fseek(file, 0, SEEK_SET);
        fwrite(&number, sizeof(number), 1, file);
        fflush(file);
        if (i < variants.size()) {
            load(variants[i], path);
        }
    }
    fclose(file);
    std::_Exit(0);
}

bool isCleanExitOrAbort(int status)
{
    return testing::ExitedWithCode(0)(status) || testing::KilledBySignal(SIGABRT)(status);
}

// Keeps the child's standard error for the parent to look at.
class KeepText : public testing::MatcherInterface<std::string const&> {
public:
    explicit KeepText(std::string* text) : mpText(text) {}
    bool MatchAndExplain(std::string const& text, testing::MatchResultListener*) const override
    {
        *mpText = text;
        return true;
    }
    void DescribeTo(std::ostream* os) const override { *os << "any output"; }

private:
    std::string* mpText;
};

} // namespace

TEST_F(ResourceTest, DamagedFilesAreNeverReadOutOfBounds)
{
    // The children are forked from this thread alone: no load thread.
    ResourceSystem::getInstance()->destroy();
    GTEST_FLAG_SET(death_test_style, "fast");

    std::vector<sVariant> variants;
    u32 const count = 2000;
    addVariants(variants, eReader_TGA, restest::readSample("tga32_top.tga"), count, 1);
    addVariants(variants, eReader_TGA, restest::readSample("tga32_bottom.tga"), count, 2);
    addVariants(variants, eReader_TEX, restest::encodeTex(restest::makeTgaSample()), count, 3);
    u32 number = 4;
    for (char const* name : {"bmp1_up.bmp", "bmp4_down.bmp", "bmp8_up.bmp", "bmp24_down.bmp"}) {
        addVariants(variants, eReader_BMP, restest::readSample(name), count, number++);
    }
    addVariants(variants, eReader_BMP, makeBmp(16, 3, 2, "", std::string(12, '\x5a')), count, number++);
    addVariants(variants, eReader_BMP, makeBmp(32, 3, -2, "", std::string(24, '\x5a')), count, number++);

    std::string const progress = nativeFile("progress");
    // Rewriting one file thousands of times is slow on a disk that flushes
    // each replaced file; memory is quick where the system offers it.
    std::string const folder = std::filesystem::is_directory("/dev/shm") ? "/dev/shm/" : testing::TempDir();
    std::string const path = folder + "harbor_variant_" + std::to_string(std::random_device()());
    restest::writeFile(progress, "");
    size_t start = 0;
    std::set<size_t> fatal;
    while (start < variants.size()) {
        std::string output;
        EXPECT_EXIT(runVariants(variants, start, progress, path), isCleanExitOrAbort,
                    testing::MakeMatcher(new KeepText(&output)));
        std::string const noted = restest::readFile(progress);
        ASSERT_EQ(noted.size(), sizeof(u64));
        u64 stopped = 0;
        memcpy(&stopped, noted.data(), sizeof(stopped));
        ASSERT_GE(stopped, start);
        if (stopped >= variants.size()) {
            break;
        }
        // The one way a variant may end the program: the size limit.
        EXPECT_NE(output.find("Requesed texture size is greater than 1024."), std::string::npos)
            << "variant " << stopped << "\n" << output.substr(output.size() > 4000 ? output.size() - 4000 : 0);
        EXPECT_EQ(output.find("Sanitizer"), std::string::npos) << output;
        EXPECT_EQ(output.find("runtime error"), std::string::npos) << output;
        fatal.insert(static_cast<size_t>(stopped));
        start = static_cast<size_t>(stopped) + 1;
        ASSERT_LT(fatal.size(), 300u) << "too many variants end the program";
    }

    // The readers did see good files among the variants.
    u32 loaded = 0;
    for (size_t i = 0; i < variants.size(); i += 97) {
        if (fatal.count(i) != 0) {
            continue;
        }
        testing::internal::CaptureStderr();
        loaded += load(variants[i], path) ? 1 : 0;
        testing::internal::GetCapturedStderr();
    }
    EXPECT_GT(loaded, 0u);
    std::filesystem::remove(path);
}
