// OpenGL for the renderer: the headers, and the entry points past OpenGL 1.1
// that are looked up by name at start-up (blend equation, framebuffer
// objects, buffer objects). Loaded by RenderSystem once its context is
// current; main thread.
#pragma once

#include <GL/gl.h>
#include <GL/glext.h>

// Each entry: pointer type, name in gl::, name that GL knows it by.
#define HARBOR_GL_FUNCTIONS(X)                                                          \
    X(PFNGLBLENDEQUATIONPROC, BlendEquation, "glBlendEquation")                         \
    X(PFNGLGENFRAMEBUFFERSEXTPROC, GenFramebuffersEXT, "glGenFramebuffersEXT")          \
    X(PFNGLDELETEFRAMEBUFFERSEXTPROC, DeleteFramebuffersEXT, "glDeleteFramebuffersEXT") \
    X(PFNGLBINDFRAMEBUFFEREXTPROC, BindFramebufferEXT, "glBindFramebufferEXT")          \
    X(PFNGLFRAMEBUFFERTEXTURE2DEXTPROC, FramebufferTexture2DEXT, "glFramebufferTexture2DEXT") \
    X(PFNGLCHECKFRAMEBUFFERSTATUSEXTPROC, CheckFramebufferStatusEXT, "glCheckFramebufferStatusEXT") \
    X(PFNGLGENBUFFERSPROC, GenBuffers, "glGenBuffers")                                  \
    X(PFNGLDELETEBUFFERSPROC, DeleteBuffers, "glDeleteBuffers")                         \
    X(PFNGLBINDBUFFERPROC, BindBuffer, "glBindBuffer")                                  \
    X(PFNGLBUFFERDATAPROC, BufferData, "glBufferData")                                  \
    X(PFNGLMAPBUFFERPROC, MapBuffer, "glMapBuffer")                                     \
    X(PFNGLUNMAPBUFFERPROC, UnmapBuffer, "glUnmapBuffer")                               \
    X(PFNGLDRAWRANGEELEMENTSPROC, DrawRangeElements, "glDrawRangeElements")

namespace gl {

#define HARBOR_GL_DECLARE(type, name, text) extern type name;
HARBOR_GL_FUNCTIONS(HARBOR_GL_DECLARE)
#undef HARBOR_GL_DECLARE

// False when any of them is missing.
bool loadFunctions();

} // namespace gl
