#include "render/glfunctions.h"

#include "platform/glcontext.h"

namespace gl {

PFNGLBLENDEQUATIONPROC BlendEquation = nullptr;
PFNGLGENFRAMEBUFFERSEXTPROC GenFramebuffersEXT = nullptr;
PFNGLDELETEFRAMEBUFFERSEXTPROC DeleteFramebuffersEXT = nullptr;
PFNGLBINDFRAMEBUFFEREXTPROC BindFramebufferEXT = nullptr;
PFNGLFRAMEBUFFERTEXTURE2DEXTPROC FramebufferTexture2DEXT = nullptr;
PFNGLCHECKFRAMEBUFFERSTATUSEXTPROC CheckFramebufferStatusEXT = nullptr;
PFNGLGENBUFFERSPROC GenBuffers = nullptr;
PFNGLDELETEBUFFERSPROC DeleteBuffers = nullptr;
PFNGLBINDBUFFERPROC BindBuffer = nullptr;
PFNGLBUFFERDATAPROC BufferData = nullptr;
PFNGLMAPBUFFERPROC MapBuffer = nullptr;
PFNGLUNMAPBUFFERPROC UnmapBuffer = nullptr;
PFNGLDRAWRANGEELEMENTSPROC DrawRangeElements = nullptr;

namespace {

template <typename T>
bool load(T& function, char const* name)
{
    function = reinterpret_cast<T>(platform::getProcAddress(name));
    return function != nullptr;
}

} // namespace

bool loadFunctions()
{
    bool found = true;
    found &= load(BlendEquation, "glBlendEquation");
    found &= load(GenFramebuffersEXT, "glGenFramebuffersEXT");
    found &= load(DeleteFramebuffersEXT, "glDeleteFramebuffersEXT");
    found &= load(BindFramebufferEXT, "glBindFramebufferEXT");
    found &= load(FramebufferTexture2DEXT, "glFramebufferTexture2DEXT");
    found &= load(CheckFramebufferStatusEXT, "glCheckFramebufferStatusEXT");
    found &= load(GenBuffers, "glGenBuffers");
    found &= load(DeleteBuffers, "glDeleteBuffers");
    found &= load(BindBuffer, "glBindBuffer");
    found &= load(BufferData, "glBufferData");
    found &= load(MapBuffer, "glMapBuffer");
    found &= load(UnmapBuffer, "glUnmapBuffer");
    found &= load(DrawRangeElements, "glDrawRangeElements");
    return found;
}

} // namespace gl
