#include "platform/cursor.h"

#include <SDL2/SDL.h>

#include "platform/window.h"

namespace platform {

namespace {

// SDL has no hand shapes for grabbing: an open hand shows the pointing hand
// and a closed hand the four-way move arrow, the nearest it offers.
SDL_SystemCursor const kSystemCursor[eThemeCursor_Num] = {
    SDL_SYSTEM_CURSOR_ARROW, SDL_SYSTEM_CURSOR_SIZENS, SDL_SYSTEM_CURSOR_SIZEWE,
    SDL_SYSTEM_CURSOR_HAND,  SDL_SYSTEM_CURSOR_HAND,   SDL_SYSTEM_CURSOR_SIZEALL,
};

// Made on first use and kept for the run: SDL frees them when it quits.
SDL_Cursor* sCursors[eThemeCursor_Num];
eThemeCursor sCurrent = eThemeCursor_Arrow;

} // namespace

void setThemeCursor(eThemeCursor cursor)
{
    if (static_cast<unsigned int>(cursor) >= eThemeCursor_Num) {
        cursor = eThemeCursor_Arrow;
    }
    sCurrent = cursor;
    if (isHeadless() || SDL_WasInit(SDL_INIT_VIDEO) == 0) {
        return;
    }
    if (sCursors[cursor] == nullptr) {
        sCursors[cursor] = SDL_CreateSystemCursor(kSystemCursor[cursor]);
    }
    if (sCursors[cursor] != nullptr) {
        SDL_SetCursor(sCursors[cursor]);
    }
}

eThemeCursor getThemeCursor()
{
    return sCurrent;
}

} // namespace platform
