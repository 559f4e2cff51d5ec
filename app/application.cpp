#include "app/application.h"

#include <cstdio>
#include <cstring>

#include "app/systemmanager.h"
#include "foundation/fixedmath.h"
#include "foundation/memorymanager.h"
#include "foundation/multithread.h"
#include "foundation/utils.h"
#include "platform/platform.h"

IMPLEMENT_TYPEINFO(Application, "ObjectBase", TypeInfo::eAttribute_Abstract);
Application* Application::mpInstance = nullptr;

namespace {

class PlatformClock : public Application::Clock {
public:
    u64 getCount() override { return platform::getCount(); }
    void getTimebase(u64& numerator, u64& denominator) override { platform::getTimebase(numerator, denominator); }
    void sleep(u32 milliseconds) override { Thread::sleep(milliseconds); }
};

PlatformClock sPlatformClock;

// Counts of one frame at the given rate, truncated as the pacing expects.
u64 countPerFrame(u64 numerator, u64 denominator, f32 rate)
{
    return denominator * 1000000000ull / (static_cast<u64>(rate) * numerator);
}

} // namespace

Application::Application(sInitializer const* initializer, Clock* clock)
    : mWindowWidth(0),
      mWindowHeight(0),
      mFrameRate(0.0f),
      mMinFrameRate(0.0f),
      mMaxFrameRate(0.0f),
      mStartCount(0),
      mLastCount(0),
      mCurrentFrame(0),
      mFrameRateHistory(),
      mFrameRateIndex(0),
      mAverageFrameRate(0.0f),
      mWindowHandle(nullptr),
      mEventLoopTimer(nullptr),
      mCountPerFrame(0),
      mMinFrameCount(0),
      mMaxFrameCount(0),
      mFirstTick(true),
      mDeltaTime(0.0f),
      mTimebaseDenominator(1),
      mTimebaseNumerator(1),
      mRootPath(),
      mIntermediatePath(),
      mNativePath(),
      mProcessorNum(1),
      mpTempAllocator(nullptr),
      mCursorPosition(),
      mMouseButton(0),
      mWheelAmount(),
      mpClock(clock != nullptr ? clock : &sPlatformClock)
{
    DEV_TRACE("Application : start.\n");
    if (initializer == nullptr) {
        return;
    }

    mWindowWidth = initializer->mWindowWidth;
    mWindowHeight = initializer->mWindowHeight;
    mFrameRate = static_cast<f32>(initializer->mFrameRate);
    f32 const minimum = static_cast<f32>(initializer->mMinFrameRate);
    f32 const maximum = static_cast<f32>(initializer->mMaxFrameRate);
    // Minimum and maximum always bracket the nominal rate.
    mMinFrameRate = minimum < mFrameRate ? minimum : mFrameRate;
    mMaxFrameRate = maximum > mFrameRate ? maximum : mFrameRate;

    mpInstance = this;
    mProcessorNum = platform::getProcessorNum();

    u64 numerator = 1, denominator = 1;
    mpClock->getTimebase(numerator, denominator);
    mTimebaseDenominator = denominator;
    mTimebaseNumerator = numerator;

    mCountPerFrame = countPerFrame(mTimebaseNumerator, mTimebaseDenominator, mFrameRate);
    mMaxFrameCount = countPerFrame(mTimebaseNumerator, mTimebaseDenominator, mMinFrameRate);
    mMinFrameCount = countPerFrame(mTimebaseNumerator, mTimebaseDenominator, mMaxFrameRate);

    mWindowHandle = platform::createWindow(100, 100, static_cast<int>(mWindowWidth), static_cast<int>(mWindowHeight));
    if (mWindowHandle == nullptr) {
        return; // silent: the rest is not done
    }
    platform::setWindowTitle(mWindowHandle, initializer->mpTitle != nullptr ? initializer->mpTitle : "");
    platform::showWindow(mWindowHandle);

    makeRootPath();
    makeIntermediatePath();
    makeNativePath();

    mCursorPosition = sPoint(0, 0);
    mWheelAmount = sPoint(0, 0);
    mMouseButton = 0;
    mpTempAllocator = nullptr;
    mFirstTick = true;

    MemoryManager::create();
    SystemManager::create();
    TrigonometricalFunction::initialize();
}

Application::~Application()
{
    platform::removeTimer(mEventLoopTimer);
    mEventLoopTimer = nullptr;
    if (SystemManager::getInstance() != nullptr) {
        SystemManager::getInstance()->destroy();
    }
    AllocatorBase::setTemporaryAllocator(nullptr);
    if (MemoryManager::getInstance() != nullptr) {
        MemoryManager::getInstance()->destroy();
    }
    DEV_TRACE("Application : end.\n");
    if (mpInstance == this) {
        mpInstance = nullptr;
    }
}

void Application::makeRootPath()
{
    char folder[1024];
    if (!platform::getExecutableFolder(folder, sizeof(folder))) {
        dev_assert("Getting root path failed.", __FILE__, __LINE__);
    }
    // Room is kept for the longest folder below the root, "intermediate/".
    int const length = snprintf(mRootPath, sizeof(mRootPath) - 1, "%s/resources", folder);
    if (length < 0 || length + 1 + sizeof("intermediate/") > sizeof(mRootPath)) {
        dev_assert("Getting root path failed.", __FILE__, __LINE__);
    }
    DEV_TRACE("Root path = %s.\n", mRootPath);
    strcat(mRootPath, "/");
    Utils::setRootPath(mRootPath);
}

void Application::makeIntermediatePath()
{
    strcpy(mIntermediatePath, mRootPath);
    strcat(mIntermediatePath, "intermediate/");
}

void Application::makeNativePath()
{
    strcpy(mNativePath, mRootPath);
    strcat(mNativePath, "native/");
}

u32 Application::execute()
{
    DEV_TRACE("Application : execute.\n");
    // The tick polls far faster than any frame rate; pacing lives in checkInterval.
    mEventLoopTimer = platform::installTimer(0.1, 0.0001, &Application::eventLoop, this);
    if (mEventLoopTimer == nullptr) {
        DEV_ERROR("Application : InstallEventTimer failed.\n");
    }
    if (!platform::installEventHandler(mWindowHandle, &Application::eventHandler, this)) {
        DEV_ERROR("Application : InstallEventTimer failed.\n");
    }
    platform::runEventLoop();
    return 0;
}

void Application::setTempAllocator(AllocatorBase* allocator)
{
    if (mpTempAllocator != nullptr) {
        dev_assert("TempAllocator already set.", __FILE__, __LINE__);
    }
    mpTempAllocator = allocator;
    AllocatorBase::setTemporaryAllocator(allocator);
}

u64 Application::getAbsoluteCount()
{
    return mpClock->getCount();
}

u64 Application::getAbsoluteTime()
{
    return mpClock->getCount() / 1000000ull;
}

void Application::eventLoop(platform::Timer*, void* user)
{
    static_cast<Application*>(user)->checkInterval();
}

void Application::checkInterval()
{
    u64 const now = mpClock->getCount();
    if (mFirstTick) {
        mStartCount = now;
        mLastCount = now;
        mCurrentFrame = 0;
        mFirstTick = false;
        mFrameRateIndex = 0;
        mAverageFrameRate = 0.0f;
        return;
    }

    bool const fixed = mMinFrameRate == mMaxFrameRate;
    if (!fixed) {
        u64 elapsed = now - mLastCount;
        if (elapsed >= mMinFrameCount) {
            if (elapsed > mMaxFrameCount) {
                elapsed = mMaxFrameCount;
            }
            f32 const delta = static_cast<f32>(static_cast<f64>(elapsed) / static_cast<f64>(mCountPerFrame));
            ++mCurrentFrame;
            // The unclamped time: what was lost beyond the clamp is not made up.
            mLastCount = now;
            mFrameRateHistory[mFrameRateIndex] = mFrameRate / delta;
            ++mFrameRateIndex;
            if (mFrameRateIndex == 32) {
                // A block average, changing once per 32 frames.
                f32 sum = 0.0f;
                for (f32 rate : mFrameRateHistory) {
                    sum += rate;
                }
                mAverageFrameRate = sum / 32.0f;
                mFrameRateIndex = 0;
            }
            mDeltaTime = delta;
            update(delta);
        }
    } else {
        u64 const frame = (now - mStartCount) / mCountPerFrame;
        if (mCurrentFrame < frame) {
            // One late frame stands for all the missed ones.
            mCurrentFrame = static_cast<u32>(frame);
            mAverageFrameRate = mFrameRate;
            mDeltaTime = 1.0f;
            update(1.0f);
        }
    }

    u64 wait = 0;
    u64 const later = mpClock->getCount();
    if (!fixed) {
        u64 const spent = later - mLastCount;
        if (spent < mMinFrameCount) {
            wait = (mMinFrameCount - spent) * mTimebaseNumerator / mTimebaseDenominator / 1000000ull;
        }
    } else if ((later - mStartCount) / mCountPerFrame == mCurrentFrame) {
        u64 const next = mStartCount + (static_cast<u64>(mCurrentFrame) + 1) * mCountPerFrame;
        wait = (next - later) * mTimebaseNumerator / mTimebaseDenominator / 1000000ull;
    }
    if (wait != 0) {
        // Wake a millisecond early; the fine tick then hits the exact moment.
        --wait;
    }
    if (wait != 0) {
        mpClock->sleep(static_cast<u32>(wait));
    }
}

int Application::eventHandler(void* callRef, platform::sEvent const* event, void* user)
{
    Application* application = static_cast<Application*>(user);
    if (event->mClass == platform::eEventClassMouse) {
        application->handleMouseEvent(*event);
    } else if (event->mClass == platform::eEventClassWindow && event->mKind == platform::eEventWindowBoundsChanged) {
        application->handleBoundsEvent();
    }
    return platform::callNextEventHandler(callRef, event);
}

void Application::handleMouseEvent(platform::sEvent const& event)
{
    switch (event.mKind) {
    case platform::eEventMouseDown:
        if (event.mButton >= 1 && event.mButton <= 3) {
            mMouseButton |= 1u << (event.mButton - 1);
        }
        break;
    case platform::eEventMouseUp:
        if (event.mButton >= 1 && event.mButton <= 3) {
            mMouseButton &= ~(1u << (event.mButton - 1));
        }
        break;
    case platform::eEventMouseWheelMoved:
        if (event.mWheelAxis == 0) {
            mWheelAmount.x += event.mWheelDelta;
        } else {
            mWheelAmount.y += event.mWheelDelta;
        }
        break;
    default:
        break;
    }

    platform::sBounds content;
    if (!platform::getContentBounds(mWindowHandle, content)) {
        return;
    }
    int x = static_cast<s16>(event.mGlobalX - content.mLeft);
    int y = static_cast<s16>(event.mGlobalY - content.mTop);
    // A drag is left unclamped, so that it can run beyond the window.
    if (event.mKind != platform::eEventMouseDragged) {
        int const maxX = static_cast<int>(mWindowWidth) - 1;
        int const maxY = static_cast<int>(mWindowHeight) - 1;
        x = x < 0 ? 0 : (x > maxX ? maxX : x);
        y = y < 0 ? 0 : (y > maxY ? maxY : y);
    }
    mCursorPosition = sPoint(x, y);
}

void Application::handleBoundsEvent()
{
    platform::sBounds port;
    if (!platform::getPortBounds(mWindowHandle, port)) {
        return;
    }
    sRect const rect(0, 0, port.mRight - port.mLeft, port.mBottom - port.mTop);
    if (rect.getWidth() == mWindowWidth && rect.getHeight() == mWindowHeight) {
        return; // a move alone changes nothing
    }
    mWindowWidth = rect.getWidth();
    mWindowHeight = rect.getHeight();
    mResizeList.call(rect);
}
