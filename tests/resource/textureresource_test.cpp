// The texture readers: the pixels each format gives, the traces of files
// they refuse, the fatal size limit, and thousands of damaged variants of
// the samples, none of which may be read out of bounds.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>

#include "resource/resourcesystem.h"
#include "resource/textureresource.h"
#include "resourcetest.h"
#include "serial/stream.h"

namespace {

std::string le16(u32 value)
{
    return {static_cast<char>(value & 255), static_cast<char>((value >> 8) & 255)};
}

std::string le32(u32 value)
{
    return le16(value & 0xFFFF) + le16(value >> 16);
}

// File header, 40-byte info header, palette and rows.
std::string makeBmp(u32 bits, s32 width, s32 height, std::string const& palette, std::string const& rows,
                    u32 compression = 0)
{
    u32 const offset = 54 + static_cast<u32>(palette.size());
    return "BM" + le32(offset + static_cast<u32>(rows.size())) + le32(0) + le32(offset) + le32(40) +
           le32(static_cast<u32>(width)) + le32(static_cast<u32>(height)) + le16(1) + le16(bits) + le32(compression) +
           std::string(20, '\0') + palette + rows;
}

std::string makeTga(u32 width, u32 height, u8 type, u8 bits, u8 descriptor, std::string const& pixels)
{
    return std::string{0, 0, static_cast<char>(type)} + std::string(9, '\0') + le16(width) + le16(height) +
           std::string{static_cast<char>(bits), static_cast<char>(descriptor)} + pixels;
}

// Straight through one class, outside the map; null when the load fails.
template <typename T>
T* load(std::string const& path)
{
    T* resource = new T();
    BinaryFileStream stream(path.c_str(), Stream::eMode_Read);
    if (resource->load(stream)) {
        return resource;
    }
    resource->release();
    return nullptr;
}

template <typename T>
std::vector<u8> pixelsOf(std::string const& path)
{
    T* image = load<T>(path);
    if (image == nullptr) {
        return {};
    }
    std::vector<u8> pixels(image->getPixels(), image->getPixels() + image->getWidth() * image->getHeight() * 4);
    image->release();
    return pixels;
}

} // namespace

TEST_F(ResourceTest, ReadersGiveThePixelsOfTheirTables)
{
    for (char const* name : {"tga32_top.tga", "tga32_bottom.tga"}) {
        restest::writeFile(intermediateFile(name), restest::readSample(name));
        EXPECT_EQ(pixelsOf<TextureResourceTGA>(intermediateFile(name)), restest::makeTgaSample().mPixels) << name;
    }
    restest::writeFile(intermediateFile("rtl.tga"), makeTga(2, 1, 2, 32, 0x30, "\x01\x02\x03\x04\x05\x06\x07\x08"));
    EXPECT_EQ(pixelsOf<TextureResourceTGA>(intermediateFile("rtl.tga")), (std::vector<u8>{7, 6, 5, 8, 3, 2, 1, 4}));

    for (u32 bits : {1u, 4u, 8u, 24u}) {
        for (char const* order : {"_up.bmp", "_down.bmp"}) {
            std::string const name = "bmp" + std::to_string(bits) + order;
            restest::writeFile(intermediateFile(name), restest::readSample(name.c_str()));
            EXPECT_EQ(pixelsOf<TextureResourceBMP>(intermediateFile(name)), restest::makeBmpSample(bits).mPixels) << name;
        }
    }
    // 16 bits: the masks leave red 0 and green 0 or 8. 32 bits: read in
    // steps of three bytes. Other depths convert nothing and still load.
    restest::writeFile(intermediateFile("b16.bmp"), makeBmp(16, 3, 1, "", le16(0x7FFF) + le16(0x0020) + le16(0x001F)));
    EXPECT_EQ(pixelsOf<TextureResourceBMP>(intermediateFile("b16.bmp")),
              (std::vector<u8>{0, 8, 248, 255, 0, 8, 0, 255, 0, 0, 248, 255}));
    restest::writeFile(intermediateFile("b32.bmp"), makeBmp(32, 2, -1, "", "\x10\x20\x30\x40\x50\x60\x70\x80"));
    EXPECT_EQ(pixelsOf<TextureResourceBMP>(intermediateFile("b32.bmp")),
              (std::vector<u8>{0x30, 0x20, 0x10, 255, 0x60, 0x50, 0x40, 255}));
    restest::writeFile(intermediateFile("b2.bmp"), makeBmp(2, 2, 2, "", std::string(8, '\x55')));
    EXPECT_EQ(pixelsOf<TextureResourceBMP>(intermediateFile("b2.bmp")), std::vector<u8>(16, 0));
}

TEST_F(ResourceTest, RefusedFilesFailWithTheirTraces)
{
    std::string const rows(8 * 8 * 4, '\x11');
    std::string const palette(8, '\0');
    std::string const broken = "TextureResourceBMP : Broken file.\n";
    std::pair<std::string, std::string> const cases[] = {
        {"", "TextureTGA : Broken file.\n"},
        {makeTga(8, 8, 2, 32, 0x20, rows).substr(0, 100), "TextureTGA : Broken file.\n"},
        {makeTga(8, 8, 10, 32, 0x20, rows), "TextureTGA : No support format.\n"},
        {makeTga(8, 8, 2, 24, 0x20, rows), "TextureTGA : Only support 32bits.\n"},
        {makeTga(65535, 65535, 2, 32, 0x20, rows), "TextureTGA : Broken file.\n"},
        {"", broken},
        {"XM" + makeBmp(24, 1, 1, "", "abcd").substr(2), "TextureResourceBMP : No bitmap.\n"},
        {makeBmp(24, 1, 1, "", "abcd").substr(0, 30), broken},
        {makeBmp(8, 1, 1, palette, "abcd", 1), "TextureResourceBMP : Could not read compression bitmap.\n"},
        {makeBmp(24, 8, 8, "", std::string(100, '\0')), broken},
        {makeBmp(24, 0x7FFFFFFF, 0x7FFFFFFF, "", "abcd"), broken},
        {makeBmp(24, -4, 1, "", std::string(16, '\0')), broken},
        {makeBmp(24, 1, INT32_MIN, "", "abcd"), broken},
        {makeBmp(8, 1, 1, palette, "\xc8\0\0\0"), broken}, // entry 200 lies past the file's end
    };
    for (auto const& test : cases) {
        bool const bmp = test.second.find("BMP") != std::string::npos;
        std::string const file = intermediateFile(bmp ? "bad.bmp" : "bad.tga");
        restest::writeFile(file, test.first);
        testing::internal::CaptureStderr();
        EXPECT_EQ(ResourceSystem::getInstance()->createResource(
                      local("bad").c_str(), bmp ? TextureResourceBMP::getStaticTypeInfo() : TextureResourceTGA::getStaticTypeInfo()),
                  nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), test.second + "Resource " + file + " loading fail.\n");
    }
    // The native reader refuses without a word, a version 2 file among others.
    std::string good = restest::encodeTex(restest::makeTgaSample());
    for (std::string const& bytes : {good.substr(0, 11), "TEX!" + good.substr(4), good.replace(4, 1, "\x02")}) {
        restest::writeFile(nativeFile("bad.tex"), bytes);
        testing::internal::CaptureStderr();
        EXPECT_EQ(load<TextureResource>(nativeFile("bad.tex")), nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
}

TEST_F(ResourceTest, TexturesAbove1024AreFatalAfterNamingTheFile)
{
    restest::writeFile(intermediateFile("wide.tga"), makeTga(1025, 1, 2, 32, 0x20, std::string(1025 * 4, '\0')));
    restest::writeFile(intermediateFile("tall.bmp"), makeBmp(24, 1, -1025, "", std::string(1025 * 4, '\0')));
    restest::writeFile(intermediateFile("odd.bmp"), makeBmp(2, 4000, 4000, "", ""));
    restest::writeFile(nativeFile("wide.tex"), restest::encodeTex({1025, 1, std::vector<u8>(1025 * 4)}));
    restest::writeFile(nativeFile("largest.tex"), restest::encodeTex({1024, 1, std::vector<u8>(1024 * 4)}));
    // The fixed fatal text, after a trace that names the file.
    std::string const message = " : texture of [0-9]+ x [0-9]+\\..*Requesed texture size is greater than 1024\\.";
    EXPECT_DEATH(load<TextureResourceTGA>(intermediateFile("wide.tga")), "wide\\.tga" + message);
    EXPECT_DEATH(load<TextureResourceBMP>(intermediateFile("tall.bmp")), "tall\\.bmp" + message);
    EXPECT_DEATH(load<TextureResourceBMP>(intermediateFile("odd.bmp")), "odd\\.bmp" + message);
    EXPECT_DEATH(load<TextureResource>(nativeFile("wide.tex")), "wide\\.tex" + message);
    TextureResource* largest = load<TextureResource>(nativeFile("largest.tex"));
    ASSERT_NE(largest, nullptr);
    largest->release();
}

namespace {

struct sVariant {
    int mReader; // 0 TGA, 1 BMP, 2 TEX
    std::string mBytes;
};

// Random bytes, header fields set to extreme values, cuts and tails.
void addVariants(std::vector<sVariant>& out, int reader, std::string const& seed, u32 seedNumber)
{
    std::mt19937 random(seedNumber);
    u32 const extremes[] = {0, 1, 0x7F, 0xFF, 0x100, 0x401, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    for (u32 i = 0; i < 2000; ++i) {
        std::string bytes = seed;
        switch (random() % 4) {
        case 0:
            for (u32 n = 1 + random() % 4; n != 0; --n) {
                bytes[random() % (random() % 2 == 0 ? 64 : bytes.size())] = static_cast<char>(random());
            }
            break;
        case 1: bytes.replace(random() % 56, 4, le32(extremes[random() % 10]).substr(0, 2 + random() % 3 / 2 * 2)); break;
        case 2: bytes.resize(random() % bytes.size()); break;
        default: bytes.append(random() % 64, static_cast<char>(random())); break;
        }
        out.push_back({reader, bytes});
    }
}

void loadVariant(sVariant const& variant, std::string const& path)
{
    restest::writeFile(path, variant.mBytes);
    ResourceBase* resource = nullptr;
    switch (variant.mReader) {
    case 0: resource = load<TextureResourceTGA>(path); break;
    case 1: resource = load<TextureResourceBMP>(path); break;
    default: resource = load<TextureResource>(path); break;
    }
    if (resource != nullptr) {
        resource->release();
    }
}

// In a child process: loads from start on, noting the number of each
// variant before its load, so that the parent knows which one ended it.
[[noreturn]] void runVariants(std::vector<sVariant> const& variants, u64 start, std::string const& progress,
                              std::string const& path)
{
    FILE* file = fopen(progress.c_str(), "wb");
    for (u64 i = start;; ++i) {
        fseek(file, 0, SEEK_SET);
        fwrite(&i, sizeof(i), 1, file);
        fflush(file);
        if (i == variants.size()) {
            std::_Exit(0);
        }
        loadVariant(variants[i], path);
    }
}

} // namespace

TEST_F(ResourceTest, DamagedFilesAreNeverReadOutOfBounds)
{
    // Children are forked from this thread alone: no load thread.
    ResourceSystem::getInstance()->destroy();
    GTEST_FLAG_SET(death_test_style, "fast");
    std::vector<sVariant> variants;
    addVariants(variants, 0, restest::readSample("tga32_top.tga"), 1);
    addVariants(variants, 0, restest::readSample("tga32_bottom.tga"), 2);
    addVariants(variants, 2, restest::encodeTex(restest::makeTgaSample()), 3);
    u32 seed = 4;
    for (char const* name : {"bmp1_up.bmp", "bmp4_down.bmp", "bmp8_up.bmp", "bmp24_down.bmp"}) {
        addVariants(variants, 1, restest::readSample(name), seed++);
    }
    addVariants(variants, 1, makeBmp(16, 3, 2, "", std::string(12, '\x5a')), seed++);
    addVariants(variants, 1, makeBmp(32, 3, -2, "", std::string(24, '\x5a')), seed++);

    // Rewriting one file thousands of times is slow on a disk that flushes
    // each replaced file; memory is quick where the system has it.
    std::string const folder = std::filesystem::is_directory("/dev/shm") ? "/dev/shm/" : testing::TempDir();
    std::string const path = folder + "harbor_variant_" + std::to_string(std::random_device()());
    std::string const progress = nativeFile("progress");
    restest::writeFile(progress, "");
    u32 fatal = 0;
    for (u64 start = 0; start < variants.size(); ++fatal) {
        EXPECT_EXIT(runVariants(variants, start, progress, path),
                    [](int status) { return testing::ExitedWithCode(0)(status) || testing::KilledBySignal(SIGABRT)(status); },
                    "");
        std::string const noted = restest::readFile(progress);
        ASSERT_EQ(noted.size(), sizeof(start));
        memcpy(&start, noted.data(), sizeof(start));
        if (start < variants.size()) {
            // The one way a variant may end the program: the size limit.
            EXPECT_DEATH(loadVariant(variants[start], path), "Requesed texture size is greater than 1024.") << start;
            ++start;
        }
        ASSERT_LT(fatal, 1000u); // some 1 in 100 variants sets a size above 1024 with enough data
    }
    std::filesystem::remove(path);
}
