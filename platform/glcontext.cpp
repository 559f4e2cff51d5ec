#include "platform/glcontext.h"

#include <SDL2/SDL.h>

namespace platform {

struct GLContext {
    SDL_Window* mpWindow;
    SDL_GLContext mContext;
};

namespace {

// One context per process; the record needs no heap.
GLContext sContext;
bool sContextUsed = false;

} // namespace

GLContext* createGLContext(Window* window)
{
    SDL_Window* native = getNativeWindow(window);
    if (native == nullptr || sContextUsed) {
        return nullptr;
    }
    // The window's visual was chosen when it was made, with SDL's default
    // double-buffered RGB; these settle the context and the buffers it asks for.
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MAJOR_VERSION, 2);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MINOR_VERSION, 0);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_COMPATIBILITY);
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    SDL_GL_SetAttribute(SDL_GL_RED_SIZE, 8);
    SDL_GL_SetAttribute(SDL_GL_GREEN_SIZE, 8);
    SDL_GL_SetAttribute(SDL_GL_BLUE_SIZE, 8);
    SDL_GLContext context = SDL_GL_CreateContext(native);
    if (context == nullptr) {
        return nullptr;
    }
    if (SDL_GL_MakeCurrent(native, context) != 0) {
        SDL_GL_DeleteContext(context);
        return nullptr;
    }
    // The application paces its frames itself; a swap must never wait.
    SDL_GL_SetSwapInterval(0);
    sContext.mpWindow = native;
    sContext.mContext = context;
    sContextUsed = true;
    return &sContext;
}

void destroyGLContext(GLContext* context)
{
    if (context == nullptr) {
        return;
    }
    SDL_GL_MakeCurrent(context->mpWindow, nullptr);
    SDL_GL_DeleteContext(context->mContext);
    context->mpWindow = nullptr;
    context->mContext = nullptr;
    sContextUsed = false;
}

bool makeCurrent(GLContext* context)
{
    if (context == nullptr) {
        return SDL_GL_MakeCurrent(SDL_GL_GetCurrentWindow(), nullptr) == 0;
    }
    return SDL_GL_MakeCurrent(context->mpWindow, context->mContext) == 0;
}

void updateContext(GLContext* context)
{
    makeCurrent(context);
}

void swapBuffers(GLContext* context)
{
    if (context != nullptr) {
        SDL_GL_SwapWindow(context->mpWindow);
    }
}

void* getProcAddress(char const* name)
{
    return SDL_GL_GetProcAddress(name);
}

void hideWindow(Window* window)
{
    SDL_Window* native = getNativeWindow(window);
    if (native != nullptr) {
        SDL_HideWindow(native);
    }
}

} // namespace platform
