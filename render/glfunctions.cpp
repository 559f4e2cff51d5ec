#include "render/glfunctions.h"

#include "platform/glcontext.h"

namespace gl {

#define HARBOR_GL_DEFINE(type, name, text) type name = nullptr;
HARBOR_GL_FUNCTIONS(HARBOR_GL_DEFINE)
#undef HARBOR_GL_DEFINE

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
#define HARBOR_GL_LOAD(type, name, text) found &= load(name, text);
    HARBOR_GL_FUNCTIONS(HARBOR_GL_LOAD)
#undef HARBOR_GL_LOAD
    return found;
}

} // namespace gl
