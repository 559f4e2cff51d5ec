// Frame pacing, initialiser clamps and mouse state of Application, driven by a
// scripted clock and scripted platform events on a headless window.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "app/application.h"
#include "app/systemmanager.h"
#include "foundation/memorymanager.h"

namespace {

class ScriptedClock : public Application::Clock {
public:
    u64 mNow = 1000000000ull;
    u64 mNumerator = 1;
    u64 mDenominator = 1;
    u64 mAdvancePerRead = 0;  // time that passes between two reads
    std::vector<u32> mSleeps;

    u64 getCount() override
    {
        u64 const now = mNow;
        mNow += mAdvancePerRead;
        return now;
    }
    void getTimebase(u64& numerator, u64& denominator) override
    {
        numerator = mNumerator;
        denominator = mDenominator;
    }
    void sleep(u32 milliseconds) override { mSleeps.push_back(milliseconds); }
};

class PacedApp : public Application {
public:
    PacedApp(sInitializer const* initializer, Clock* clock) : Application(initializer, clock) {}
    void setup() override {}
    void update(float delta) override { mDeltas.push_back(delta); }
    std::vector<float> mDeltas;
};

Application::sInitializer makeInitializer(u32 rate, u32 minimum, u32 maximum)
{
    Application::sInitializer initializer = {"Pacing", 1024, 768, rate, minimum, maximum};
    return initializer;
}

class ApplicationTest : public testing::Test {
protected:
    void SetUp() override { platform::setHeadless(true); }
    // The host's rates unless told otherwise.
    PacedApp& launch(u32 rate = 60, u32 minimum = 20, u32 maximum = 240)
    {
        mApp.reset();
        mInit = makeInitializer(rate, minimum, maximum);
        mApp.reset(new PacedApp(&mInit, &clock));
        return *mApp;
    }
    ScriptedClock clock;
    Application::sInitializer mInit;
    std::unique_ptr<PacedApp> mApp;
};

constexpr u64 kMs = 1000000ull;

} // namespace

TEST_F(ApplicationTest, ConstructorClampsRatesAroundTheNominalRate)
{
    EXPECT_EQ(launch(60, 90, 240).getMinFrameRate(), 60.0f);
    EXPECT_EQ(launch(60, 20, 30).getMaxFrameRate(), 60.0f);
    PacedApp& app = launch(60, 90, 30);
    EXPECT_EQ(app.getMinFrameRate(), app.getMaxFrameRate());
    clock.mNow = 0;
    app.checkInterval();
    clock.mNow = 16666666ull * 3;
    app.checkInterval();
    EXPECT_EQ(app.mDeltas, std::vector<float>{1.0f}) << "both clamps give fixed mode";
}

TEST_F(ApplicationTest, FrameCountsComeFromTheTimebase)
{
    PacedApp* app = &launch();
    EXPECT_EQ(app->getCountPerFrame(), 16666666u);
    EXPECT_EQ(app->getMinFrameCount(), 4166666u);
    EXPECT_EQ(app->getMaxFrameCount(), 50000000u);
    clock.mNumerator = 125;
    clock.mDenominator = 3;
    app = &launch();
    EXPECT_EQ(app->getCountPerFrame(), 400000u);
    EXPECT_EQ(app->getMinFrameCount(), 100000u);
    EXPECT_EQ(app->getMaxFrameCount(), 1200000u);
}

TEST_F(ApplicationTest, VariableModeRunsNoFrameOnFirstTickAndMeasuresFromIt)
{
    PacedApp& app = launch();
    u64 const start = clock.mNow;
    app.checkInterval();
    EXPECT_TRUE(app.mDeltas.empty());
    EXPECT_TRUE(clock.mSleeps.empty()) << "the first tick does not sleep";
    EXPECT_EQ(app.getCurrentFrame(), 0u);

    clock.mNow = start + 1 * kMs;  // too early for a frame
    app.checkInterval();
    EXPECT_TRUE(app.mDeltas.empty());
    ASSERT_EQ(clock.mSleeps.size(), 1u);
    EXPECT_EQ(clock.mSleeps[0], 2u) << "3 ms to the shortest frame, less the early millisecond";

    clock.mNow = start + 8333333;  // half a nominal frame after the first tick
    app.checkInterval();
    ASSERT_EQ(app.mDeltas.size(), 1u);
    EXPECT_FLOAT_EQ(app.mDeltas[0], 8333333.0f / 16666666.0f);
    EXPECT_EQ(app.getCurrentFrame(), 1u);
    EXPECT_EQ(app.getDeltaTime(), app.mDeltas[0]);
}

TEST_F(ApplicationTest, VariableModeStallIsClampedAndNotMadeUp)
{
    PacedApp& app = launch();
    u64 const start = clock.mNow;
    app.checkInterval();
    clock.mNow = start + 1000 * kMs;  // a stall of one second
    app.checkInterval();
    ASSERT_EQ(app.mDeltas.size(), 1u);
    EXPECT_EQ(app.mDeltas[0], static_cast<f32>(50000000.0 / 16666666.0));
    EXPECT_NEAR(app.mDeltas[0], 3.0f, 1e-6f);

    // The next frame's elapsed time starts at the stalled tick.
    clock.mNow = start + 1000 * kMs + 16666666;
    app.checkInterval();
    ASSERT_EQ(app.mDeltas.size(), 2u);
    EXPECT_EQ(app.mDeltas[1], 1.0f);
}

TEST_F(ApplicationTest, VariableModeAverageIsABlockOf32)
{
    PacedApp& app = launch();
    u64 now = clock.mNow;
    app.checkInterval();
    for (int frame = 1; frame <= 31; ++frame) {
        now += 16666666;
        clock.mNow = now;
        app.checkInterval();
        EXPECT_EQ(app.getAverageFrameRate(), 0.0f) << "frame " << frame;
    }
    now += 16666666;
    clock.mNow = now;
    app.checkInterval();
    EXPECT_FLOAT_EQ(app.getAverageFrameRate(), 60.0f);
    // Half-length frames for the next block: unchanged until it is full.
    for (int frame = 0; frame < 31; ++frame) {
        now += 8333333;
        clock.mNow = now;
        app.checkInterval();
    }
    EXPECT_FLOAT_EQ(app.getAverageFrameRate(), 60.0f);
    now += 8333333;
    clock.mNow = now;
    app.checkInterval();
    EXPECT_NEAR(app.getAverageFrameRate(), 120.0f, 0.01f);
}

TEST_F(ApplicationTest, VariableModeWaitOfOneMillisecondDoesNotSleep)
{
    PacedApp& app = launch();
    u64 const start = clock.mNow;
    app.checkInterval();
    // 1.5 ms short of the shortest frame truncates to a wait of 1: no sleep.
    clock.mNow = start + 4166666 - 1500000;
    app.checkInterval();
    EXPECT_TRUE(clock.mSleeps.empty());
    // 2.5 ms short: a wait of 2, slept as 1.
    clock.mNow = start + 4166666 - 2500000;
    app.checkInterval();
    ASSERT_EQ(clock.mSleeps.size(), 1u);
    EXPECT_EQ(clock.mSleeps[0], 1u);
}

TEST_F(ApplicationTest, FixedModeJumpsOverMissedFramesWithOneUpdate)
{
    PacedApp& app = launch(60, 60, 60);
    u64 const start = clock.mNow;
    app.checkInterval();
    EXPECT_EQ(app.getAverageFrameRate(), 0.0f);

    clock.mNow = start + 16666666;
    app.checkInterval();
    ASSERT_EQ(app.mDeltas.size(), 1u);
    EXPECT_EQ(app.getCurrentFrame(), 1u);
    EXPECT_EQ(app.getAverageFrameRate(), 60.0f) << "fixed mode reports the nominal rate";

    clock.mNow = start + 16666666 + 5 * kMs;  // inside frame 1: no frame
    app.checkInterval();
    EXPECT_EQ(app.mDeltas.size(), 1u);

    clock.mNow = start + 11 * 16666666ull;  // ten frames late
    app.checkInterval();
    ASSERT_EQ(app.mDeltas.size(), 2u);
    EXPECT_EQ(app.mDeltas[1], 1.0f);
    EXPECT_EQ(app.getCurrentFrame(), 11u);
}

TEST_F(ApplicationTest, FixedModeSleepsUntilTheNextFrameLessOneMillisecond)
{
    PacedApp& app = launch(60, 60, 60);
    u64 const start = clock.mNow;
    app.checkInterval();
    clock.mNow = start + 16666666;
    app.checkInterval();  // frame 1 runs; the next is 16.67 ms away
    ASSERT_EQ(clock.mSleeps.size(), 1u);
    EXPECT_EQ(clock.mSleeps[0], 15u);

    clock.mNow = start + 2 * 16666666ull - 1500000;  // a wait of exactly 1 ms
    app.checkInterval();
    EXPECT_EQ(clock.mSleeps.size(), 1u);

    // A frame whose own work runs past the next frame's start: no wait.
    clock.mNow = start + 2 * 16666666ull;
    clock.mAdvancePerRead = 20 * kMs;
    app.checkInterval();
    EXPECT_EQ(app.mDeltas.size(), 2u);
    EXPECT_EQ(clock.mSleeps.size(), 1u);
}

TEST_F(ApplicationTest, ConstructionMakesPathsAndManagers)
{
    PacedApp& app = launch();
    EXPECT_EQ(Application::getInstance(), &app);
    ASSERT_NE(app.getWindowHandle(), nullptr);
    ASSERT_NE(MemoryManager::getInstance(), nullptr);
    ASSERT_NE(SystemManager::getInstance(), nullptr);
    std::string const root = app.getRootPath();
    ASSERT_GE(root.size(), 11u);
    EXPECT_EQ(root.substr(root.size() - 11), "/resources/");
    EXPECT_EQ(std::string(app.getIntermediatePath()), root + "intermediate/");
    EXPECT_EQ(std::string(app.getNativePath()), root + "native/");
    EXPECT_EQ(app.getAbsoluteTime(), clock.mNow / 1000000);
}

namespace {

platform::sEvent mouseEvent(u32 kind, int globalX, int globalY, u16 button = 0)
{
    platform::sEvent event = {};
    event.mClass = platform::eEventClassMouse;
    event.mKind = kind;
    event.mGlobalX = static_cast<s16>(globalX);
    event.mGlobalY = static_cast<s16>(globalY);
    event.mButton = button;
    return event;
}

} // namespace

TEST_F(ApplicationTest, MouseButtonsMapToBitsAndIgnoreOthers)
{
    PacedApp& app = launch();
    platform::sEvent up = mouseEvent(platform::eEventMouseUp, 150, 150, 2);
    Application::eventHandler(nullptr, &up, &app);
    EXPECT_EQ(app.getMouseButton(), 0u) << "releasing a button that was not down";
    for (u16 button = 1; button <= 3; ++button) {
        platform::sEvent down = mouseEvent(platform::eEventMouseDown, 150, 150, button);
        Application::eventHandler(nullptr, &down, &app);
    }
    EXPECT_EQ(app.getMouseButton(), 7u);
    platform::sEvent other = mouseEvent(platform::eEventMouseDown, 150, 150, 4);
    Application::eventHandler(nullptr, &other, &app);
    EXPECT_EQ(app.getMouseButton(), 7u);
    platform::sEvent release = mouseEvent(platform::eEventMouseUp, 150, 150, 2);
    Application::eventHandler(nullptr, &release, &app);
    EXPECT_EQ(app.getMouseButton(), 5u);
}

TEST_F(ApplicationTest, CursorIsClampedExceptWhileDragging)
{
    PacedApp& app = launch();  // content at 100,100, 1024 by 768
    platform::sEvent move = mouseEvent(platform::eEventMouseMoved, 150, 130);
    Application::eventHandler(nullptr, &move, &app);
    EXPECT_EQ(app.getCursorPosition(), sPoint(50, 30));

    platform::sEvent drag = mouseEvent(platform::eEventMouseDragged, 40, 2000);
    Application::eventHandler(nullptr, &drag, &app);
    EXPECT_EQ(app.getCursorPosition(), sPoint(-60, 1900));

    platform::sEvent back = mouseEvent(platform::eEventMouseMoved, 40, 2000);
    Application::eventHandler(nullptr, &back, &app);
    EXPECT_EQ(app.getCursorPosition(), sPoint(0, 767));
}

TEST_F(ApplicationTest, WheelAccumulatesPerAxis)
{
    PacedApp& app = launch();
    platform::sEvent wheel = mouseEvent(platform::eEventMouseWheelMoved, 150, 150);
    wheel.mWheelAxis = 1;
    wheel.mWheelDelta = -3;
    Application::eventHandler(nullptr, &wheel, &app);
    Application::eventHandler(nullptr, &wheel, &app);
    wheel.mWheelAxis = 0;
    wheel.mWheelDelta = 2;
    Application::eventHandler(nullptr, &wheel, &app);
    EXPECT_EQ(app.getWheelAmount(), sPoint(2, -6));
}

TEST_F(ApplicationTest, BoundsEventStoresTheNewSize)
{
    PacedApp& app = launch();
    ASSERT_TRUE(platform::installEventHandler(app.getWindowHandle(), &Application::eventHandler, &app));
    platform::resizeHeadlessWindow(app.getWindowHandle(), 640, 480);
    EXPECT_EQ(app.getWindowWidth(), 640u);
    EXPECT_EQ(app.getWindowHeight(), 480u);
    EXPECT_EQ(app.getWindowSize().width, 640u);
}
