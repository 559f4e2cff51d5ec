// Application: the top of the program. Owns the one window, the clock and the
// frame pacing, the data folders and the raw mouse state; calls update(delta)
// once per frame from the event loop's tick. Main thread only, except the
// getters of fixed data, which worker threads may read.
#pragma once

#include "foundation/allocator.h"
#include "foundation/callbacklist.h"
#include "foundation/debug.h"
#include "foundation/types.h"
#include "platform/window.h"
#include "reflection/objectbase.h"

class Application : public ObjectBase {
public:
    struct sInitializer {
        char const* mpTitle;  // UTF-8
        u32 mWindowWidth;     // content size in pixels
        u32 mWindowHeight;
        u32 mFrameRate;       // nominal rate: the unit of the delta given to update
        u32 mMinFrameRate;    // fixes the longest frame that is accounted for
        u32 mMaxFrameRate;    // fixes the shortest interval between frames
    };

    // Where pacing reads the time and sleeps. The platform's clock unless a
    // test hands in its own; counts x numerator / denominator = nanoseconds.
    class Clock {
    public:
        virtual ~Clock() {}
        virtual u64 getCount() = 0;
        virtual void getTimebase(u64& numerator, u64& denominator) = 0;
        virtual void sleep(u32 milliseconds) = 0;
    };

    // Called with the new window rectangle when the window changes size, in
    // the order of registration: the renderer, the views, the interface.
    typedef CallbackList<sRect const&, 8> ResizeList;

    explicit Application(sInitializer const* initializer, Clock* clock = nullptr);
    ~Application() override;

    static Application* getInstance() { return mpInstance; }

    // Runs the event loop until it ends; always 0.
    u32 execute();
    virtual void setup() = 0;
    // One frame; delta in nominal frames (1.0 = one frame at the nominal rate).
    virtual void update(float delta) = 0;

    static void eventLoop(platform::Timer* timer, void* user);
    static int eventHandler(void* callRef, platform::sEvent const* event, void* user);
    // The pacing routine, run at each tick.
    void checkInterval();

    platform::Window* getWindowHandle() const { return mWindowHandle; }
    u32 getWindowWidth() const { return mWindowWidth; }
    u32 getWindowHeight() const { return mWindowHeight; }
    sSize getWindowSize() const { return sSize(mWindowWidth, mWindowHeight); }
    u32 getProcessorNum() const { return mProcessorNum; }
    void addResizeListener(ResizeList::Function function, void* object) { mResizeList.add(function, object); }
    void removeResizeListener(void* object) { mResizeList.remove(object); }
    void setTempAllocator(AllocatorBase* allocator);
    AllocatorBase* getTempAllocator() const { return mpTempAllocator; }
    u64 getAbsoluteCount();
    // Raw count / 1000000, not scaled by the time base.
    u64 getAbsoluteTime();
    u32 getCurrentFrame() const { return mCurrentFrame; }
    f32 getFrameRate() const { return mFrameRate; }
    f32 getAverageFrameRate() const { return mAverageFrameRate; }
    f32 getDeltaTime() const { return mDeltaTime; }
    char const* getRootPath() const { return mRootPath; }
    char const* getIntermediatePath() const { return mIntermediatePath; }
    char const* getNativePath() const { return mNativePath; }
    sPoint getCursorPosition() const { return mCursorPosition; }
    sPoint getWheelAmount() const { return mWheelAmount; }
    // Bit 0 primary, bit 1 secondary, bit 2 tertiary button held.
    u32 getMouseButton() const { return mMouseButton; }

    // Clock counts of one nominal frame, the shortest and the longest frame.
    u64 getCountPerFrame() const { return mCountPerFrame; }
    u64 getMinFrameCount() const { return mMinFrameCount; }
    u64 getMaxFrameCount() const { return mMaxFrameCount; }
    f32 getMinFrameRate() const { return mMinFrameRate; }
    f32 getMaxFrameRate() const { return mMaxFrameRate; }

    DECLARE_TYPEINFO(TypeInfo)

private:
    void makeRootPath();
    void makeIntermediatePath();
    void makeNativePath();
    void handleMouseEvent(platform::sEvent const& event);
    void handleBoundsEvent();

    u32 mWindowWidth;
    u32 mWindowHeight;
    f32 mFrameRate;
    f32 mMinFrameRate;
    f32 mMaxFrameRate;
    u64 mStartCount;
    u64 mLastCount;
    u32 mCurrentFrame;
    f32 mFrameRateHistory[32];
    u32 mFrameRateIndex;
    f32 mAverageFrameRate;
    platform::Window* mWindowHandle;
    platform::Timer* mEventLoopTimer;
    u64 mCountPerFrame;
    u64 mMinFrameCount;
    u64 mMaxFrameCount;
    bool mFirstTick;
    f32 mDeltaTime;
    u64 mTimebaseDenominator;
    u64 mTimebaseNumerator;
    char mRootPath[1024];
    char mIntermediatePath[1024];
    char mNativePath[1024];
    u32 mProcessorNum;
    AllocatorBase* mpTempAllocator;
    sPoint mCursorPosition;
    u32 mMouseButton;
    sPoint mWheelAmount;
    Clock* mpClock;
    ResizeList mResizeList;

    static Application* mpInstance;
};
