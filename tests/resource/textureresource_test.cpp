// The texture readers: the pixels each format gives, the traces of files
// they refuse and the fatal size limit. Damaged files are the fuzz target's
// (tests/fuzz).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "resource/resourcesystem.h"
#include "resource/textureresource.h"
#include "resourcetest.h"
#include "serial/stream.h"

namespace {

using restest::le16;
using restest::le32;

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
