// The OpenGL context of the one window, over SDL2: a compatibility context of
// version 2.0 or later, double buffered, without vsync, so that frame pacing
// stays with the application. Main thread only; the renderer is the only
// user. Entry points beyond what the GL library exports by name are looked up
// through getProcAddress once a context is current.
#pragma once

#include "platform/window.h"

namespace platform {

struct GLContext;

// Creates the context for the window and makes it current. Null when the
// window has no screen (headless) or the driver refuses.
GLContext* createGLContext(Window* window);
void destroyGLContext(GLContext* context);
// Null releases the current context.
bool makeCurrent(GLContext* context);
// After the window changed its size. The drawable follows the window by
// itself here, so this only makes sure the context is current.
void updateContext(GLContext* context);
void swapBuffers(GLContext* context);
// Null when the driver does not know the name.
void* getProcAddress(char const* name);

// Takes the window off the screen; its back buffer stays readable. For test
// programs that draw into a window nobody needs to see.
void hideWindow(Window* window);

} // namespace platform
