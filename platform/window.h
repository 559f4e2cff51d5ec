// The one window, its events and the event loop with a repeating tick, over
// SDL2. Main thread only. In headless mode (tests, benchmarks) windows are
// records without a screen, events come only from the caller, and the loop
// runs the tick alone.
#pragma once

#include "foundation/types.h"

struct SDL_Window;

namespace platform {

struct Window;
struct Timer;

// Event classes and kinds, numbered as the application's handler expects.
enum eEventClass {
    eEventClassMouse = 0,
    eEventClassWindow = 1,
};

enum eEventKind {
    eEventMouseDown = 1,
    eEventMouseUp = 2,
    eEventMouseMoved = 5,
    eEventMouseDragged = 6,
    eEventMouseWheelMoved = 10,
    eEventWindowBoundsChanged = 27,
};

struct sEvent {
    u32 mClass;
    u32 mKind;
    s16 mGlobalX;     // screen location of the pointer (mouse events)
    s16 mGlobalY;
    u16 mButton;      // 1 primary (left), 2 secondary (right), 3 tertiary (middle)
    u16 mWheelAxis;   // 0 horizontal, 1 vertical
    s32 mWheelDelta;  // in notches, positive away from the user / to the right
};

struct sBounds {
    int mLeft;
    int mTop;
    int mRight;
    int mBottom;
};

typedef void (*TimerProc)(Timer* timer, void* user);
// Returns the platform status; the default handling of the event always runs.
typedef int (*EventProc)(void* callRef, sEvent const* event, void* user);

// Headless mode must be chosen before the first window is made.
void setHeadless(bool headless);
bool isHeadless();

// Content of the given size with its top left at (left, top) in screen
// coordinates, resizable, hidden until showWindow. Null when no display.
Window* createWindow(int left, int top, int width, int height);
void setWindowTitle(Window* window, char const* utf8Title);
void showWindow(Window* window);
// Screen coordinates of the content region.
bool getContentBounds(Window* window, sBounds& bounds);
// The content region in its own coordinates: (0, 0, width, height).
bool getPortBounds(Window* window, sBounds& bounds);
SDL_Window* getNativeWindow(Window* window);
u32 getWindowId(Window* window);
// Headless windows only: change the size as a window manager would, and
// deliver the bounds event to the installed handler.
void resizeHeadlessWindow(Window* window, int width, int height);

// A repeating tick on the main thread: first after firstDelay seconds, then
// every interval seconds while the loop is not blocked. Null on failure.
Timer* installTimer(double firstDelay, double interval, TimerProc proc, void* user);
void removeTimer(Timer* timer);
bool installEventHandler(Window* window, EventProc proc, void* user);
// What the handler returns after its own work: the default handling's status.
int callNextEventHandler(void* callRef, sEvent const* event);

// Runs until the window is closed, quitEventLoop is called, or the process
// gets SIGINT or SIGTERM.
void runEventLoop();
void quitEventLoop();

} // namespace platform
