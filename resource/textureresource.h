// Texture resources. TextureResource is the native form ("tex"), the one that
// game and tools use; TextureResourceTGA and TextureResourceBMP read authoring
// files into an RGBA image and convert it into the native file.
// OpenGL lives on the main thread only: a texture loaded there gets its
// Texture at once, one loaded on another thread (the resource load thread)
// keeps its pixels and gets its Texture on the main thread, in the next
// ResourceSystem::update or at the first getTexture() there, whichever comes
// first. Until then getTexture() answers null.
#pragma once

#include <atomic>

#include "resource/resourcebase.h"

class Texture;

class TextureResource : public ResourceBase {
public:
    // The native file: magic, version, width and height (u16 each), then
    // width x height RGBA pixels, top row first.
    static u32 const kHeaderSize = 12;
    static u32 const kVersion = 1;

    TextureResource();

    bool load(Stream& stream) override;
    char const* getExtension() const override { return "tex"; }
    TypeInfo const* getIntermediateType() const override;
    TypeInfo const* getExtraIntermediateType(unsigned int index) const override;
    char const* getFilter() const override { return "tex|Texture"; }
    // Makes the texture that a load on another thread left pending.
    void notifyMainThread() override;

    u32 getWidth() const { return mWidth; }
    u32 getHeight() const { return mHeight; }
    // Any thread; null while the texture is pending (see the top of this file).
    Texture* getTexture() const;

    // The path, then a preview of the texture.
    void makeUIList(List<UIBase>& list) override;

    DECLARE_TYPEINFO(UniqueTypeInfo<TextureResource>)

protected:
    explicit TextureResource(u16 attribute);
    ~TextureResource() override;

    // Sets the size and makes the texture of width x height RGBA pixels, at
    // once on the main thread, else later (see above). kept: pixels live as
    // long as this object, so a pending texture needs no copy of them.
    void setImage(u32 width, u32 height, u8 const* pixels, bool kept);
    // The native file of the current size from these pixels.
    bool writeNative(Stream& stream, u8 const* pixels) const;

    // Larger textures are fatal, as in Texture; checked before any memory is
    // taken for them, on whichever thread loads.
    static void checkTextureSize(u64 width, u64 height, Stream const& stream);

private:
    // The texture as the object that its preview shows; the texture belongs
    // to the resource, so the setter refuses.
    ObjectBase* getTextureObject() const;
    void setTextureObject(ObjectBase*) {}
    void releaseTexture();
    void freePending();

    std::atomic<Texture*> mpTexture; // one reference held
    u32 mWidth;
    u32 mHeight;
    u8 const* mpPendingPixels; // main thread's work left by a load elsewhere
    bool mOwnsPending;
};

// "tga": uncompressed true colour, 32 bits, either row order and direction.
class TextureResourceTGA : public TextureResource {
public:
    TextureResourceTGA();

    bool load(Stream& stream) override;
    bool convert(Stream& stream) override;
    char const* getExtension() const override { return "tga"; }
    TypeInfo const* getNativeType() const override;
    char const* getFilter() const override { return "tga|Targa"; }
    // The RGBA image, top row first; null before a load.
    u8 const* getPixels() const { return mpPixels; }

    DECLARE_TYPEINFO(UniqueTypeInfo<TextureResourceTGA>)

protected:
    ~TextureResourceTGA() override;

private:
    u8* mpPixels;
};

// "bmp": uncompressed Windows bitmaps of 1, 4, 8, 16, 24 and 32 bits, read
// with the reader's fixed quirks (see the source).
class TextureResourceBMP : public TextureResource {
public:
    TextureResourceBMP();

    bool load(Stream& stream) override;
    bool convert(Stream& stream) override;
    char const* getExtension() const override { return "bmp"; }
    TypeInfo const* getNativeType() const override;
    char const* getFilter() const override { return "bmp|Bitmap"; }
    u8 const* getPixels() const { return mpPixels; }

    DECLARE_TYPEINFO(UniqueTypeInfo<TextureResourceBMP>)

protected:
    ~TextureResourceBMP() override;

private:
    u8* mpPixels;
};
