// Render objects: things that recorded commands may still point at after
// their owner let go. The last release only marks the object; RenderSystem
// deletes it after the frame's commands have run, so the GL object always
// dies on the main thread. Texture is the one concrete kind: a rectangle
// texture addressed in texels. Constructors need a current GL context on the
// calling thread (none is needed while the renderer runs without one).
#pragma once

#include <atomic>
#include <cstddef>

#include "foundation/referenceobject.h"
#include "foundation/types.h"

class RenderObject : public ReferenceObject {
public:
    RenderObject() : mEnd(false), mProtected(false), mProtectFrame(0) {}

    // Bookkeeping of the frame that last recorded the object. Jobs on
    // several threads may record the same texture at once, hence atomic.
    void protect(unsigned int frame) { mProtectFrame.store(frame, std::memory_order_relaxed); }
    // Clears the protection once frame is at or past the protected frame,
    // by wrapping signed difference.
    void unprotect(unsigned int frame)
    {
        if (mProtected && static_cast<int>(frame - mProtectFrame.load(std::memory_order_relaxed)) >= 0) {
            mProtected = false;
        }
    }
    unsigned int getProtectFrame() const { return mProtectFrame.load(std::memory_order_relaxed); }
    // True while referenced; an ended object only while protected. Nothing
    // sets the protection, so an ended object is invalid at once: the
    // deletion point after the replay already comes after every use.
    bool isValid() const { return !mEnd || mProtected; }

    // The last release: marks only; RenderSystem deletes.
    void end() override { mEnd = true; }

    // Storage from the Systems' budget.
    static void* operator new(std::size_t size) noexcept;
    static void operator delete(void* pointer);

protected:
    // Only RenderSystem deletes, after the replay that may still use it.
    friend class RenderSystem;
    ~RenderObject() override {}

private:
    bool mEnd;
    bool mProtected;
    std::atomic<unsigned int> mProtectFrame;
};

class Texture : public RenderObject {
public:
    static constexpr unsigned int kMaxSize = 1024;

    // No GL object; size 0.
    Texture();
    // A rectangle texture of RGBA8 texels; pixels (rows from texel row 0 up)
    // may be null for an empty texture or a render target, and may be freed
    // once this returns. Sizes above 1024 are fatal.
    Texture(unsigned int width, unsigned int height, bool renderTarget, void* pixels);

    // Enables the rectangle target and binds the texture to it.
    void bind();
    unsigned int getWidth() const { return mWidth; }
    unsigned int getHeight() const { return mHeight; }
    unsigned int getHandle() const { return mHandle; }
    bool isRenderTarget() const { return mRenderTarget; }

    DECLARE_TYPEINFO(UniqueTypeInfo<Texture>)

protected:
    ~Texture() override;

private:
    u32 mWidth;
    u32 mHeight;
    bool mRenderTarget;
    unsigned int mHandle; // GL texture name; 0 without a context
};
