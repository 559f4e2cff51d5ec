#include "platform/window.h"

#include <SDL2/SDL.h>
#include <signal.h>

#include <atomic>

#include "platform/displayloss.h"
#include "platform/platform.h"

namespace platform {

struct Window {
    SDL_Window* mpNative;
    int mLeft;    // headless: screen position of the content
    int mTop;
    int mWidth;   // headless: content size
    int mHeight;
    EventProc mpHandler;
    void* mpHandlerUser;
};

struct Timer {
    TimerProc mpProc;
    void* mpUser;
    u64 mNext;      // clock count of the next tick
    u64 mInterval;  // clock counts between ticks
    bool mUsed;
};

namespace {

enum { eTimerMax = 4 };

bool sHeadless = false;
bool sVideoReady = false;
Window sWindow;
bool sWindowUsed = false;
Timer sTimers[eTimerMax];
std::atomic<bool> sQuit{false};
volatile sig_atomic_t sSignalled = 0;

void onSignal(int)
{
    sSignalled = 1;
}

u64 secondsToCount(double seconds)
{
    u64 numerator = 1, denominator = 1;
    getTimebase(numerator, denominator);
    return static_cast<u64>(seconds * 1e9 * static_cast<double>(denominator) / static_cast<double>(numerator));
}

bool initializeVideo()
{
    if (sVideoReady) {
        return true;
    }
    // Drags keep reporting outside the window, unclamped, while a button is held.
    SDL_SetHint(SDL_HINT_MOUSE_AUTO_CAPTURE, "1");
    // Signals end the loop through our own handler, so that tear-down runs.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        return false;
    }
    char const* driver = SDL_GetCurrentVideoDriver();
    if (driver != nullptr && SDL_strcmp(driver, "x11") == 0) {
        watchDisplayLoss();
    }
    sVideoReady = true;
    return true;
}

u16 mapButton(u8 sdlButton)
{
    switch (sdlButton) {
    case SDL_BUTTON_LEFT:
        return 1;
    case SDL_BUTTON_RIGHT:
        return 2;
    case SDL_BUTTON_MIDDLE:
        return 3;
    default:
        return static_cast<u16>(sdlButton); // X1 and X2 stay outside 1..3
    }
}

void deliver(sEvent& event)
{
    if (!sWindowUsed || sWindow.mpHandler == nullptr) {
        return;
    }
    sWindow.mpHandler(nullptr, &event, sWindow.mpHandlerUser);
}

void deliverMouse(u32 kind, int windowX, int windowY, u16 button, u16 axis, s32 delta)
{
    int left = 0, top = 0;
    SDL_GetWindowPosition(sWindow.mpNative, &left, &top);
    sEvent event = {};
    event.mClass = eEventClassMouse;
    event.mKind = kind;
    event.mGlobalX = static_cast<s16>(left + windowX);
    event.mGlobalY = static_cast<s16>(top + windowY);
    event.mButton = button;
    event.mWheelAxis = axis;
    event.mWheelDelta = delta;
    deliver(event);
}

void dispatch(SDL_Event const& e)
{
    switch (e.type) {
    case SDL_QUIT:
        sQuit = true;
        break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        deliverMouse(e.type == SDL_MOUSEBUTTONDOWN ? eEventMouseDown : eEventMouseUp, e.button.x, e.button.y,
                     mapButton(e.button.button), 0, 0);
        break;
    case SDL_MOUSEMOTION:
        deliverMouse(e.motion.state != 0 ? eEventMouseDragged : eEventMouseMoved, e.motion.x, e.motion.y, 0, 0, 0);
        break;
    case SDL_MOUSEWHEEL: {
        int x = 0, y = 0;
        SDL_GetMouseState(&x, &y);
        int const sign = e.wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -1 : 1;
        if (e.wheel.y != 0) {
            deliverMouse(eEventMouseWheelMoved, x, y, 0, 1, sign * e.wheel.y);
        }
        if (e.wheel.x != 0) {
            deliverMouse(eEventMouseWheelMoved, x, y, 0, 0, sign * e.wheel.x);
        }
        break;
    }
    case SDL_WINDOWEVENT:
        if (e.window.event == SDL_WINDOWEVENT_SIZE_CHANGED) {
            sEvent event = {};
            event.mClass = eEventClassWindow;
            event.mKind = eEventWindowBoundsChanged;
            deliver(event);
        } else if (e.window.event == SDL_WINDOWEVENT_CLOSE) {
            sQuit = true;
        }
        break;
    default:
        break;
    }
}

// Runs every due timer once; returns the clock count of the earliest next tick.
u64 runTimers(u64 now)
{
    u64 earliest = ~0ull;
    for (Timer& timer : sTimers) {
        if (!timer.mUsed) {
            continue;
        }
        if (now >= timer.mNext) {
            timer.mpProc(&timer, timer.mpUser);
            u64 const after = getCount();
            timer.mNext += timer.mInterval;
            if (timer.mNext < after) {
                // A late tick is not made up: the next one is an interval away.
                timer.mNext = after + timer.mInterval;
            }
        }
        if (timer.mUsed && timer.mNext < earliest) {
            earliest = timer.mNext;
        }
    }
    return earliest;
}

} // namespace

void setHeadless(bool headless)
{
    sHeadless = headless;
}

bool isHeadless()
{
    return sHeadless;
}

Window* createWindow(int left, int top, int width, int height)
{
    if (sWindowUsed && !sHeadless) {
        return nullptr; // one window per process; headless records are reused
    }
    sWindow = Window{};
    sWindow.mLeft = left;
    sWindow.mTop = top;
    sWindow.mWidth = width;
    sWindow.mHeight = height;
    if (!sHeadless) {
        if (!initializeVideo()) {
            return nullptr;
        }
        sWindow.mpNative = SDL_CreateWindow("", left, top, width, height,
                                            SDL_WINDOW_OPENGL | SDL_WINDOW_RESIZABLE | SDL_WINDOW_HIDDEN);
        if (sWindow.mpNative == nullptr) {
            return nullptr;
        }
    }
    sWindowUsed = true;
    return &sWindow;
}

void setWindowTitle(Window* window, char const* utf8Title)
{
    if (window->mpNative != nullptr) {
        SDL_SetWindowTitle(window->mpNative, utf8Title);
    }
}

void showWindow(Window* window)
{
    if (window->mpNative != nullptr) {
        SDL_ShowWindow(window->mpNative);
    }
}

bool getContentBounds(Window* window, sBounds& bounds)
{
    if (window == nullptr) {
        return false;
    }
    int left = window->mLeft, top = window->mTop, width = window->mWidth, height = window->mHeight;
    if (window->mpNative != nullptr) {
        SDL_GetWindowPosition(window->mpNative, &left, &top);
        SDL_GetWindowSize(window->mpNative, &width, &height);
    }
    bounds.mLeft = left;
    bounds.mTop = top;
    bounds.mRight = left + width;
    bounds.mBottom = top + height;
    return true;
}

bool getPortBounds(Window* window, sBounds& bounds)
{
    if (window == nullptr) {
        return false;
    }
    int width = window->mWidth, height = window->mHeight;
    if (window->mpNative != nullptr) {
        SDL_GetWindowSize(window->mpNative, &width, &height);
    }
    bounds.mLeft = 0;
    bounds.mTop = 0;
    bounds.mRight = width;
    bounds.mBottom = height;
    return true;
}

SDL_Window* getNativeWindow(Window* window)
{
    return window != nullptr ? window->mpNative : nullptr;
}

u32 getWindowId(Window* window)
{
    return (window != nullptr && window->mpNative != nullptr) ? SDL_GetWindowID(window->mpNative) : 0;
}

void resizeHeadlessWindow(Window* window, int width, int height)
{
    if (window == nullptr || window->mpNative != nullptr) {
        return;
    }
    window->mWidth = width;
    window->mHeight = height;
    sEvent event = {};
    event.mClass = eEventClassWindow;
    event.mKind = eEventWindowBoundsChanged;
    deliver(event);
}

Timer* installTimer(double firstDelay, double interval, TimerProc proc, void* user)
{
    if (proc == nullptr || interval <= 0.0) {
        return nullptr;
    }
    for (Timer& timer : sTimers) {
        if (!timer.mUsed) {
            timer.mpProc = proc;
            timer.mpUser = user;
            timer.mInterval = secondsToCount(interval);
            if (timer.mInterval == 0) {
                timer.mInterval = 1;
            }
            timer.mNext = getCount() + secondsToCount(firstDelay);
            timer.mUsed = true;
            return &timer;
        }
    }
    return nullptr;
}

void removeTimer(Timer* timer)
{
    if (timer != nullptr) {
        timer->mUsed = false;
    }
}

bool installEventHandler(Window* window, EventProc proc, void* user)
{
    if (window == nullptr || proc == nullptr) {
        return false;
    }
    window->mpHandler = proc;
    window->mpHandlerUser = user;
    return true;
}

int callNextEventHandler(void*, sEvent const*)
{
    // SDL has no handler chain: its own handling has already run.
    return 0;
}

void runEventLoop()
{
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    struct sigaction oldInt, oldTerm;
    sigaction(SIGINT, &action, &oldInt);
    sigaction(SIGTERM, &action, &oldTerm);

    sQuit = false;
    sSignalled = 0;
    while (!sQuit && !sSignalled) {
        if (sVideoReady) {
            SDL_Event event;
            while (SDL_PollEvent(&event)) {
                dispatch(event);
            }
            if (sQuit || sSignalled) {
                break;
            }
        }
        u64 const next = runTimers(getCount());
        if (sQuit || sSignalled) {
            break;
        }
        u64 const now = getCount();
        if (next == ~0ull) {
            // No tick installed: wait for events, or just idle headless.
            if (sVideoReady) {
                SDL_WaitEventTimeout(nullptr, 10);
            } else {
                sleepMilliseconds(10);
            }
        } else if (next > now) {
            u64 numerator = 1, denominator = 1;
            getTimebase(numerator, denominator);
            sleepNanoseconds((next - now) * numerator / denominator);
        }
    }

    sigaction(SIGINT, &oldInt, nullptr);
    sigaction(SIGTERM, &oldTerm, nullptr);
}

void quitEventLoop()
{
    sQuit = true;
}

} // namespace platform
