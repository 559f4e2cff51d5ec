// Frame pacing, initialiser clamps and mouse state of Application, driven by a
// scripted clock and scripted platform events on a headless window.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "testapp.h"

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

class PacedApp : public TestApp {
public:
    PacedApp(sInitializer const* initializer, Clock* clock) : TestApp(initializer, clock) {}
    void update(float delta) override { mDeltas.push_back(delta); }
    std::vector<float> mDeltas;
};

class ApplicationTest : public testing::Test {
protected:
    void SetUp() override { platform::setHeadless(true); }
    // The host's rates unless told otherwise.
    PacedApp& launch(u32 rate = 60, u32 minimum = 20, u32 maximum = 240)
    {
        mApp.reset();
        mInit = {"Pacing", 1024, 768, rate, minimum, maximum};
        mApp.reset(new PacedApp(&mInit, &clock));
        mStart = clock.mNow;
        return *mApp;
    }
    // A tick of the frame loop at the given time after launch.
    void tickAt(u64 elapsed)
    {
        clock.mNow = mStart + elapsed;
        mApp->checkInterval();
    }
    ScriptedClock clock;
    Application::sInitializer mInit;
    std::unique_ptr<PacedApp> mApp;
    u64 mStart = 0;
};

constexpr u64 kMs = 1000000ull;
constexpr u64 kFrame = 16666666ull; // a nominal frame at 60 Hz, in counts of 1 ns

} // namespace

TEST_F(ApplicationTest, ConstructorClampsRatesAroundTheNominalRate)
{
    EXPECT_EQ(launch(60, 90, 240).getMinFrameRate(), 60.0f);
    EXPECT_EQ(launch(60, 20, 30).getMaxFrameRate(), 60.0f);
    PacedApp& app = launch(60, 90, 30);
    EXPECT_EQ(app.getMinFrameRate(), app.getMaxFrameRate());
    tickAt(0);
    tickAt(3 * kFrame);
    EXPECT_EQ(app.mDeltas, std::vector<float>{1.0f}) << "both clamps give fixed mode";
}

TEST_F(ApplicationTest, FrameCountsComeFromTheTimebase)
{
    struct {
        u64 mNumerator, mDenominator;
        u32 mPerFrame, mMinimum, mMaximum;
    } const cases[] = {{1, 1, 16666666u, 4166666u, 50000000u}, {125, 3, 400000u, 100000u, 1200000u}};
    for (auto const& c : cases) {
        SCOPED_TRACE(c.mNumerator);
        clock.mNumerator = c.mNumerator;
        clock.mDenominator = c.mDenominator;
        PacedApp& app = launch();
        EXPECT_EQ(app.getCountPerFrame(), c.mPerFrame);
        EXPECT_EQ(app.getMinFrameCount(), c.mMinimum);
        EXPECT_EQ(app.getMaxFrameCount(), c.mMaximum);
    }
}

TEST_F(ApplicationTest, VariableModeRunsNoFrameOnFirstTickAndMeasuresFromIt)
{
    PacedApp& app = launch();
    tickAt(0);
    EXPECT_TRUE(app.mDeltas.empty());
    EXPECT_TRUE(clock.mSleeps.empty()) << "the first tick does not sleep";
    EXPECT_EQ(app.getCurrentFrame(), 0u);
    tickAt(1 * kMs); // too early for a frame
    EXPECT_TRUE(app.mDeltas.empty());
    EXPECT_EQ(clock.mSleeps, std::vector<u32>{2u}) << "3 ms to the shortest frame, less the early millisecond";
    tickAt(8333333); // half a nominal frame after the first tick
    ASSERT_EQ(app.mDeltas.size(), 1u);
    EXPECT_FLOAT_EQ(app.mDeltas[0], 8333333.0f / 16666666.0f);
    EXPECT_EQ(app.getCurrentFrame(), 1u);
    EXPECT_EQ(app.getDeltaTime(), app.mDeltas[0]);
}

TEST_F(ApplicationTest, VariableModeStallIsClampedAndNotMadeUp)
{
    PacedApp& app = launch();
    tickAt(0);
    tickAt(1000 * kMs); // a stall of one second
    ASSERT_EQ(app.mDeltas.size(), 1u);
    EXPECT_EQ(app.mDeltas[0], static_cast<f32>(50000000.0 / 16666666.0));
    // The next frame's elapsed time starts at the stalled tick.
    tickAt(1000 * kMs + kFrame);
    EXPECT_EQ(app.mDeltas, (std::vector<float>{app.mDeltas[0], 1.0f}));
}

TEST_F(ApplicationTest, VariableModeAverageIsABlockOf32)
{
    PacedApp& app = launch();
    tickAt(0);
    for (u64 frame = 1; frame <= 31; ++frame) {
        tickAt(frame * kFrame);
        EXPECT_EQ(app.getAverageFrameRate(), 0.0f) << "frame " << frame;
    }
    tickAt(32 * kFrame);
    EXPECT_FLOAT_EQ(app.getAverageFrameRate(), 60.0f);
    // Half-length frames for the next block: unchanged until it is full.
    for (u64 frame = 1; frame <= 31; ++frame) {
        tickAt(32 * kFrame + frame * 8333333);
    }
    EXPECT_FLOAT_EQ(app.getAverageFrameRate(), 60.0f);
    tickAt(32 * kFrame + 32 * 8333333);
    EXPECT_NEAR(app.getAverageFrameRate(), 120.0f, 0.01f);
}

TEST_F(ApplicationTest, VariableModeWaitOfOneMillisecondDoesNotSleep)
{
    launch();
    tickAt(0);
    // 1.5 ms short of the shortest frame truncates to a wait of 1: no sleep.
    tickAt(4166666 - 1500000);
    EXPECT_TRUE(clock.mSleeps.empty());
    // 2.5 ms short: a wait of 2, slept as 1.
    tickAt(4166666 - 2500000);
    EXPECT_EQ(clock.mSleeps, std::vector<u32>{1u});
}

TEST_F(ApplicationTest, FixedModeJumpsOverMissedFramesWithOneUpdate)
{
    PacedApp& app = launch(60, 60, 60);
    tickAt(0);
    EXPECT_EQ(app.getAverageFrameRate(), 0.0f);
    tickAt(kFrame);
    ASSERT_EQ(app.mDeltas.size(), 1u);
    EXPECT_EQ(app.getCurrentFrame(), 1u);
    EXPECT_EQ(app.getAverageFrameRate(), 60.0f) << "fixed mode reports the nominal rate";
    tickAt(kFrame + 5 * kMs); // inside frame 1: no frame
    EXPECT_EQ(app.mDeltas.size(), 1u);
    tickAt(11 * kFrame); // ten frames late
    EXPECT_EQ(app.mDeltas, (std::vector<float>{app.mDeltas[0], 1.0f}));
    EXPECT_EQ(app.getCurrentFrame(), 11u);
}

TEST_F(ApplicationTest, FixedModeSleepsUntilTheNextFrameLessOneMillisecond)
{
    PacedApp& app = launch(60, 60, 60);
    tickAt(0);
    tickAt(kFrame); // frame 1 runs; the next is 16.67 ms away
    EXPECT_EQ(clock.mSleeps, std::vector<u32>{15u});
    tickAt(2 * kFrame - 1500000); // a wait of exactly 1 ms
    EXPECT_EQ(clock.mSleeps.size(), 1u);
    // A frame whose own work runs past the next frame's start: no wait.
    clock.mAdvancePerRead = 20 * kMs;
    tickAt(2 * kFrame);
    EXPECT_EQ(app.mDeltas.size(), 2u);
    EXPECT_EQ(clock.mSleeps.size(), 1u);
}

TEST_F(ApplicationTest, ConstructionMakesTheWindowAndThePathsAndTheWindowReportsItsSize)
{
    PacedApp& app = launch();
    EXPECT_EQ(Application::getInstance(), &app);
    ASSERT_NE(app.getWindowHandle(), nullptr);
    std::string const root = app.getRootPath();
    ASSERT_GE(root.size(), 11u);
    EXPECT_EQ(root.substr(root.size() - 11), "/resources/");
    EXPECT_EQ(std::string(app.getIntermediatePath()), root + "intermediate/");
    EXPECT_EQ(std::string(app.getNativePath()), root + "native/");
    EXPECT_EQ(app.getAbsoluteTime(), clock.mNow / 1000000);
    // A bounds event stores the new size.
    ASSERT_TRUE(platform::installEventHandler(app.getWindowHandle(), &Application::eventHandler, &app));
    platform::resizeHeadlessWindow(app.getWindowHandle(), 640, 480);
    EXPECT_EQ(app.getWindowWidth(), 640u);
    EXPECT_EQ(app.getWindowHeight(), 480u);
}

// Buttons 1 to 3 map to bits, others are ignored; the cursor is clamped to the
// content (1024 by 768) except while dragging; the wheel adds up
// per axis.
// The wheel's sum is checked with the mouse system, which reads it each frame.
TEST_F(ApplicationTest, MouseButtonsAndCursor)
{
    PacedApp& app = launch();
    sendMouse(&app, platform::eEventMouseUp, 50, 50, 2);
    EXPECT_EQ(app.getMouseButton(), 0u) << "releasing a button that was not down";
    for (u16 button = 1; button <= 4; ++button) {
        sendMouse(&app, platform::eEventMouseDown, 50, 50, button);
    }
    EXPECT_EQ(app.getMouseButton(), 7u);
    sendMouse(&app, platform::eEventMouseUp, 50, 50, 2);
    EXPECT_EQ(app.getMouseButton(), 5u);

    sendMouse(&app, platform::eEventMouseMoved, 50, 30);
    EXPECT_EQ(app.getCursorPosition(), sPoint(50, 30));
    sendMouse(&app, platform::eEventMouseDragged, -60, 1900);
    EXPECT_EQ(app.getCursorPosition(), sPoint(-60, 1900));
    sendMouse(&app, platform::eEventMouseMoved, -60, 1900);
    EXPECT_EQ(app.getCursorPosition(), sPoint(0, 767));
}
