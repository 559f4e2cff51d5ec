// OpenGL for the renderer: the headers, and the entry points past OpenGL 1.1
// that are looked up by name at start-up (blend equation, framebuffer
// objects, buffer objects). Loaded by RenderSystem once its context is current; main thread.
#pragma once

#include <GL/gl.h>
#include <GL/glext.h>

namespace gl {

extern PFNGLBLENDEQUATIONPROC BlendEquation;
extern PFNGLGENFRAMEBUFFERSEXTPROC GenFramebuffersEXT;
extern PFNGLDELETEFRAMEBUFFERSEXTPROC DeleteFramebuffersEXT;
extern PFNGLBINDFRAMEBUFFEREXTPROC BindFramebufferEXT;
extern PFNGLFRAMEBUFFERTEXTURE2DEXTPROC FramebufferTexture2DEXT;
extern PFNGLCHECKFRAMEBUFFERSTATUSEXTPROC CheckFramebufferStatusEXT;
extern PFNGLGENBUFFERSPROC GenBuffers;
extern PFNGLDELETEBUFFERSPROC DeleteBuffers;
extern PFNGLBINDBUFFERPROC BindBuffer;
extern PFNGLBUFFERDATAPROC BufferData;
extern PFNGLMAPBUFFERPROC MapBuffer;
extern PFNGLUNMAPBUFFERPROC UnmapBuffer;
extern PFNGLDRAWRANGEELEMENTSPROC DrawRangeElements;

// False when any of them is missing.
bool loadFunctions();

} // namespace gl
