#include "resource/textureresource.h"

#include <cstdint>
#include <cstring>

#include "app/application.h"
#include "foundation/debug.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "render/renderobject.h"
#include "render/rendersystem.h"
#include "resource/resourcesystem.h"
#include "serial/datareader.h"
#include "serial/datawriter.h"
#include "serial/stream.h"

IMPLEMENT_OBJECT_TYPEINFO(TextureResource, "ResourceBase");
IMPLEMENT_OBJECT_TYPEINFO(TextureResourceTGA, "TextureResource");
IMPLEMENT_OBJECT_TYPEINFO(TextureResourceBMP, "TextureResource");

namespace {

// The largest file any of the readers takes: twice the largest image (1024 x
// 1024 x 4), so that the temporary heap holds the files of both loading
// threads at once. Anything larger is not a texture of ours.
u32 const kFileSizeMax = 0x800000;
u32 const kReadBufferSize = 1024;
u32 const kBytesPerPixel = 4;

u32 const kTgaHeaderSize = 18;
u32 const kBmpInfoStart = 14;
// Through the info header's compression field, the last one the reader needs.
u32 const kBmpHeaderSize = kBmpInfoStart + 20;

u16 readU16(u8 const* data)
{
    return static_cast<u16>(data[0] | data[1] << 8);
}

u32 readU32(u8 const* data)
{
    return static_cast<u32>(data[0]) | static_cast<u32>(data[1]) << 8 | static_cast<u32>(data[2]) << 16 |
           static_cast<u32>(data[3]) << 24;
}

bool isBinary(Stream& stream)
{
    return (stream.getType() & Stream::eType_Binary) != 0;
}

AllocatorBase* getTemporaryAllocator()
{
    Application* application = Application::getInstance();
    return (application != nullptr) ? application->getTempAllocator() : nullptr;
}

// The whole file in temporary memory, read through a DataReader; given back
// when this ends. Not valid when empty, too large or read short.
class FileData {
public:
    explicit FileData(Stream& stream) : mpData(nullptr), mSize(stream.getLength()), mpAllocator(getTemporaryAllocator())
    {
        if (mSize == 0 || mSize > kFileSizeMax) {
            return;
        }
        mpData = static_cast<u8*>((mpAllocator != nullptr) ? mpAllocator->allocate(static_cast<int>(mSize), 4)
                                                          : new u8[mSize]);
        DataReader reader(&stream, kReadBufferSize);
        if (reader.read(mpData, mSize) != mSize) {
            release();
        }
    }
    ~FileData() { release(); }

    FileData(FileData const&) = delete;
    FileData& operator=(FileData const&) = delete;

    bool isValid() const { return mpData != nullptr; }
    u8 const* getData() const { return mpData; }
    u32 getSize() const { return mSize; }

private:
    void release()
    {
        if (mpAllocator != nullptr) {
            mpAllocator->deallocate(mpData);
        } else {
            delete[] mpData;
        }
        mpData = nullptr;
    }

    u8* mpData;
    u32 mSize;
    AllocatorBase* mpAllocator;
};

// An image of width x height RGBA pixels from the resource heap, zeroed.
u8* allocateImage(u64 width, u64 height)
{
    u64 const size = width * height * kBytesPerPixel;
    // A 0 by n image still gets a block of its own.
    u8* pixels = static_cast<u8*>(ResourceBase::allocate(static_cast<unsigned int>(size != 0 ? size : 4)));
    if (pixels != nullptr) {
        memset(pixels, 0, static_cast<size_t>(size));
    }
    return pixels;
}

bool failTGA()
{
    DEV_TRACE("TextureTGA : Broken file.\n");
    return false;
}

bool failBMP()
{
    DEV_TRACE("TextureResourceBMP : Broken file.\n");
    return false;
}

} // namespace

// ---------------------------------------------------------------------------
// TextureResource

TextureResource::TextureResource() : TextureResource(eAttribute_Native)
{
}

TextureResource::TextureResource(u16 attribute)
    : ResourceBase(attribute), mpTexture(nullptr), mWidth(0), mHeight(0), mpPendingPixels(nullptr),
      mOwnsPending(false)
{
}

TextureResource::~TextureResource()
{
    releaseTexture();
    freePending();
}

TypeInfo const* TextureResource::getIntermediateType() const
{
    return TextureResourceTGA::getStaticTypeInfo();
}

TypeInfo const* TextureResource::getExtraIntermediateType(unsigned int index) const
{
    return (index == 0) ? TextureResourceBMP::getStaticTypeInfo() : nullptr;
}

bool TextureResource::load(Stream& stream)
{
    if (!isBinary(stream)) {
        return false;
    }
    FileData file(stream);
    if (!file.isValid() || file.getSize() < kHeaderSize) {
        return false;
    }
    u8 const* data = file.getData();
    if (memcmp(data, "TEX ", 4) != 0 || readU32(data + 4) != kVersion) {
        return false;
    }
    u32 const width = readU16(data + 8);
    u32 const height = readU16(data + 10);
    if (kHeaderSize + static_cast<u64>(width) * height * kBytesPerPixel > file.getSize()) {
        return false;
    }
    checkTextureSize(width, height, stream);
    releaseTexture();
    freePending();
    // Deliberately the start of the file, not its pixels: the header shows as
    // the first three pixels and the image sits three pixels later, as native
    // files have always shown. The texture reads width x height x 4 bytes.
    setImage(width, height, data, false);
    setPath(AutoString(stream.getPath()));
    return true;
}

void TextureResource::checkTextureSize(u64 width, u64 height, Stream const& stream)
{
    if (width > Texture::kMaxSize || height > Texture::kMaxSize) {
        // The fatal text is fixed; the line before it says which file.
        char const* path = stream.getFullPath();
        DEV_TRACE("%s : texture of %llu x %llu.\n", path != nullptr ? path : "", static_cast<unsigned long long>(width),
                  static_cast<unsigned long long>(height));
        dev_assert("Requesed texture size is greater than 1024.", __FILE__, __LINE__);
    }
}

void TextureResource::setImage(u32 width, u32 height, u8 const* pixels, bool kept)
{
    mWidth = width;
    mHeight = height;
    if (RenderSystem::getInstance() == nullptr) {
        return; // nothing to draw with: size only
    }
    ResourceSystem* system = ResourceSystem::getInstance();
    if (system == nullptr || system->isMainThread()) {
        mpTexture.store(new Texture(width, height, false, const_cast<u8*>(pixels)), std::memory_order_release);
        return;
    }
    // GL belongs to the main thread: the upload waits for it there.
    if (kept) {
        mpPendingPixels = pixels;
        mOwnsPending = false;
    } else {
        u32 const size = width * height * kBytesPerPixel;
        u8* copy = static_cast<u8*>(allocate(size != 0 ? size : 4));
        memcpy(copy, pixels, size);
        mpPendingPixels = copy;
        mOwnsPending = true;
    }
    system->requestMainThread(this);
}

void TextureResource::notifyMainThread()
{
    if (mpPendingPixels == nullptr) {
        return;
    }
    if (mpTexture.load(std::memory_order_relaxed) == nullptr && RenderSystem::getInstance() != nullptr) {
        mpTexture.store(new Texture(mWidth, mHeight, false, const_cast<u8*>(mpPendingPixels)),
                        std::memory_order_release);
    }
    freePending();
}

Texture* TextureResource::getTexture() const
{
    Texture* texture = mpTexture.load(std::memory_order_acquire);
    if (texture == nullptr) {
        ResourceSystem* system = ResourceSystem::getInstance();
        if (system != nullptr && system->isMainThread() && mpPendingPixels != nullptr) {
            const_cast<TextureResource*>(this)->notifyMainThread();
            texture = mpTexture.load(std::memory_order_acquire);
        }
    }
    return texture;
}

ObjectBase* TextureResource::getTextureObject() const
{
    return getTexture();
}

void TextureResource::makeUIList(List<UIBase>& list)
{
    ResourceBase::makeUIList(list);
    PropertyBase* texture = new IndirectObjectProperty("Texture", this, &TextureResource::getTextureObject,
                                                       &TextureResource::setTextureObject);
    if (UIBase* widget = makeTextureControlUI(texture)) {
        list.addLast(widget);
    }
}

void TextureResource::releaseTexture()
{
    Texture* texture = mpTexture.exchange(nullptr);
    if (texture != nullptr) {
        texture->release();
    }
}

void TextureResource::freePending()
{
    if (mOwnsPending) {
        deallocate(const_cast<u8*>(mpPendingPixels));
    }
    mpPendingPixels = nullptr;
    mOwnsPending = false;
}

bool TextureResource::writeNative(Stream& stream, u8 const* pixels) const
{
    DataWriter writer(&stream, 16);
    u32 const size = mWidth * mHeight * kBytesPerPixel;
    u32 written = writer.write("TEX ", 4);
    written += writer.write<u32>(kVersion);
    written += writer.write<u16>(static_cast<u16>(mWidth));
    written += writer.write<u16>(static_cast<u16>(mHeight));
    written += writer.write(pixels, size);
    return written == kHeaderSize + size;
}

// ---------------------------------------------------------------------------
// TextureResourceTGA

TextureResourceTGA::TextureResourceTGA()
    : TextureResource(eAttribute_Intermediate | eAttribute_Binary), mpPixels(nullptr)
{
}

TextureResourceTGA::~TextureResourceTGA()
{
    deallocate(mpPixels);
}

TypeInfo const* TextureResourceTGA::getNativeType() const
{
    return TextureResource::getStaticTypeInfo();
}

bool TextureResourceTGA::load(Stream& stream)
{
    if (!isBinary(stream)) {
        return false;
    }
    FileData file(stream);
    if (!file.isValid() || file.getSize() < kTgaHeaderSize) {
        return failTGA();
    }
    u8 const* data = file.getData();
    if (data[2] != 2) {
        DEV_TRACE("TextureTGA : No support format.\n");
        return false;
    }
    if (data[16] != 32) {
        DEV_TRACE("TextureTGA : Only support 32bits.\n");
        return false;
    }
    // The ID field and a colour map are not looked at: pixels start at 18.
    u32 const width = readU16(data + 12);
    u32 const height = readU16(data + 14);
    if (kTgaHeaderSize + static_cast<u64>(width) * height * kBytesPerPixel > file.getSize()) {
        return failTGA();
    }
    checkTextureSize(width, height, stream);
    u8* pixels = allocateImage(width, height);
    bool const topFirst = (data[17] & 0x20) != 0;
    bool const rightToLeft = (data[17] & 0x10) != 0;
    u8 const* stored = data + kTgaHeaderSize;
    for (u32 y = 0; y < height; ++y) {
        u32 const row = topFirst ? y : height - 1 - y;
        u8* out = pixels + static_cast<size_t>(y) * width * kBytesPerPixel;
        for (u32 x = 0; x < width; ++x, out += kBytesPerPixel) {
            u32 const column = rightToLeft ? width - 1 - x : x;
            u8 const* in = stored + (static_cast<size_t>(row) * width + column) * kBytesPerPixel;
            out[0] = in[2];
            out[1] = in[1];
            out[2] = in[0];
            out[3] = in[3];
        }
    }
    deallocate(mpPixels);
    mpPixels = pixels;
    setImage(width, height, mpPixels, true);
    setPath(AutoString(stream.getPath()));
    return true;
}

bool TextureResourceTGA::convert(Stream& stream)
{
    if (!isBinary(stream) || mpPixels == nullptr) {
        return false;
    }
    return writeNative(stream, mpPixels);
}

// ---------------------------------------------------------------------------
// TextureResourceBMP

TextureResourceBMP::TextureResourceBMP()
    : TextureResource(eAttribute_Intermediate | eAttribute_Binary), mpPixels(nullptr)
{
}

TextureResourceBMP::~TextureResourceBMP()
{
    deallocate(mpPixels);
}

TypeInfo const* TextureResourceBMP::getNativeType() const
{
    return TextureResource::getStaticTypeInfo();
}

// The reader's fixed behaviour, which existing images depend on and which is
// not to be corrected: palette entries are copied in file order (blue first,
// so blue lands in the red slot); 4- and 8-bit palette alpha is taken as
// stored (usually 0); the 16-bit masks leave red always 0 and green 0 or 8;
// 32-bit rows are read with a step of three bytes. Other bit counts convert
// nothing and still load, as a black transparent image.
bool TextureResourceBMP::load(Stream& stream)
{
    if (!isBinary(stream)) {
        return false;
    }
    FileData file(stream);
    if (!file.isValid()) {
        return failBMP();
    }
    u8 const* data = file.getData();
    u64 const size = file.getSize();
    if (size < 2 || readU16(data) != 0x4D42) {
        DEV_TRACE("TextureResourceBMP : No bitmap.\n");
        return false;
    }
    if (size < kBmpHeaderSize) {
        return failBMP();
    }
    u8 const* info = data + kBmpInfoStart;
    if (readU32(info + 16) != 0) {
        DEV_TRACE("TextureResourceBMP : Could not read compression bitmap.\n");
        return false;
    }
    s32 const signedWidth = static_cast<s32>(readU32(info + 4));
    s32 const signedHeight = static_cast<s32>(readU32(info + 8));
    if (signedWidth < 0 || signedHeight == INT32_MIN) {
        return failBMP();
    }
    bool const flip = signedHeight > 0; // bottom-up rows
    u64 const width = static_cast<u64>(signedWidth);
    u64 const height = static_cast<u64>(signedHeight < 0 ? -signedHeight : signedHeight);
    // The u16 at 10 with the u16 at 12 as its high half.
    u64 const dataOffset = readU32(data + 10);
    u64 const paletteOffset = kBmpInfoStart + static_cast<u64>(readU32(info));
    u32 const bitCount = readU16(info + 14);

    u64 stride = 0;
    switch (bitCount) {
    case 1: stride = ((width + 31) & ~31ull) / 8; break;
    case 4: stride = ((width + 7) & ~7ull) / 2; break;
    case 8: stride = (width + 3) & ~3ull; break;
    case 16: stride = width * 2; break;
    case 24: stride = (width * 3 + 3) & ~3ull; break;
    case 32: stride = width * 4; break;
    default: break;
    }
    if (stride != 0 && (dataOffset > size || (height != 0 && stride > (size - dataOffset) / height))) {
        return failBMP();
    }
    checkTextureSize(width, height, stream);
    u8* pixels = allocateImage(width, height);

    // Entries that lie inside the file; an index past them is a broken file.
    u64 const paletteNum = (paletteOffset < size) ? (size - paletteOffset) / 4 : 0;
    u8 const* palette = data + (paletteOffset < size ? paletteOffset : 0);
    bool broken = false;
    for (u64 y = 0; y < height && stride != 0 && !broken; ++y) {
        u8 const* row = data + dataOffset + (flip ? height - 1 - y : y) * stride;
        u8* out = pixels + y * width * kBytesPerPixel;
        for (u64 x = 0; x < width; ++x, out += kBytesPerPixel) {
            u32 index = 0;
            switch (bitCount) {
            case 1: index = (row[x >> 3] >> (7 - (x & 7))) & 1u; break;
            case 4: index = ((x & 1) == 0) ? row[x >> 1] >> 4 : row[x >> 1] & 0x0Fu; break;
            case 8: index = row[x]; break;
            default: break;
            }
            if (bitCount <= 8 && index >= paletteNum) {
                broken = true;
                break;
            }
            switch (bitCount) {
            case 1:
                memcpy(out, palette + index * 4, 3);
                out[3] = 255;
                break;
            case 4:
            case 8: memcpy(out, palette + index * 4, 4); break;
            case 16: {
                u32 const v = readU16(row + x * 2);
                out[0] = static_cast<u8>(((v & 0x7C) >> 10) << 3);
                out[1] = static_cast<u8>(((v & 0x3E) >> 5) << 3);
                out[2] = static_cast<u8>((v & 0x1F) << 3);
                out[3] = 255;
                break;
            }
            case 24:
            case 32: // 32-bit rows too are read at x * 3
                out[0] = row[x * 3 + 2];
                out[1] = row[x * 3 + 1];
                out[2] = row[x * 3];
                out[3] = 255;
                break;
            default: break;
            }
        }
    }
    if (broken) {
        deallocate(pixels);
        return failBMP();
    }
    deallocate(mpPixels);
    mpPixels = pixels;
    setImage(static_cast<u32>(width), static_cast<u32>(height), mpPixels, true);
    setPath(AutoString(stream.getPath()));
    return true;
}

bool TextureResourceBMP::convert(Stream& stream)
{
    if (!isBinary(stream) || mpPixels == nullptr) {
        return false;
    }
    return writeNative(stream, mpPixels);
}
