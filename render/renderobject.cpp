#include "render/renderobject.h"

#include "app/system.h"
#include "foundation/debug.h"
#include "render/glfunctions.h"
#include "render/rendersystem.h"

IMPLEMENT_OBJECT_TYPEINFO(Texture, "ObjectBase");

void* RenderObject::operator new(std::size_t size) noexcept
{
    return System::allocate(static_cast<u32>(size));
}

void RenderObject::operator delete(void* pointer)
{
    System::deallocate(pointer);
}

Texture::Texture() : mWidth(0), mHeight(0), mRenderTarget(false), mHandle(0)
{
    // Listed like any other, so that its last release ends it too.
    if (RenderSystem* renderSystem = RenderSystem::getInstance()) {
        renderSystem->registTexture(this);
    }
}

Texture::Texture(unsigned int width, unsigned int height, bool renderTarget, void* pixels)
    : mWidth(0), mHeight(0), mRenderTarget(false), mHandle(0)
{
    if (width > kMaxSize || height > kMaxSize) {
        dev_assert("Requesed texture size is greater than 1024.", __FILE__, __LINE__);
    }
    mWidth = width;
    mHeight = height;
    mRenderTarget = renderTarget;

    RenderSystem* renderSystem = RenderSystem::getInstance();
    if (renderSystem->hasContext()) {
        glEnable(GL_TEXTURE_2D);
        glEnable(GL_TEXTURE_RECTANGLE_ARB);
        glGenTextures(1, &mHandle);
        glBindTexture(GL_TEXTURE_RECTANGLE_ARB, mHandle);
        GLsizei const w = static_cast<GLsizei>(width);
        GLsizei const h = static_cast<GLsizei>(height);
        glTexImage2D(GL_PROXY_TEXTURE_RECTANGLE_ARB, 0, GL_RGBA8, w, h, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        GLint proxyWidth = -1;
        glGetTexLevelParameteriv(GL_PROXY_TEXTURE_RECTANGLE_ARB, 0, GL_TEXTURE_WIDTH, &proxyWidth);
        if (proxyWidth != w) {
            DEV_ERROR("Texture creation failed.\n");
        }
        // OpenGL copies: the caller may free pixels at once.
        glTexImage2D(GL_TEXTURE_RECTANGLE_ARB, 0, GL_RGBA8, w, h, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
        glDisable(GL_TEXTURE_RECTANGLE_ARB);
        glDisable(GL_TEXTURE_2D);
    }
    renderSystem->registTexture(this);
}

Texture::~Texture()
{
    if (mHandle != 0) {
        glDeleteTextures(1, &mHandle);
    }
}

void Texture::bind()
{
    glEnable(GL_TEXTURE_RECTANGLE_ARB);
    glBindTexture(GL_TEXTURE_RECTANGLE_ARB, mHandle);
}
