#include "render/glfunctions.h"

#include "platform/glcontext.h"

namespace gl {

PFNGLBLENDEQUATIONPROC BlendEquation = nullptr;
PFNGLGENFRAMEBUFFERSEXTPROC GenFramebuffersEXT = nullptr;
PFNGLDELETEFRAMEBUFFERSEXTPROC DeleteFramebuffersEXT = nullptr;
PFNGLBINDFRAMEBUFFEREXTPROC BindFramebufferEXT = nullptr;
PFNGLFRAMEBUFFERTEXTURE2DEXTPROC FramebufferTexture2DEXT = nullptr;
PFNGLCHECKFRAMEBUFFERSTATUSEXTPROC CheckFramebufferStatusEXT = nullptr;

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
    return found;
}

} // namespace gl
