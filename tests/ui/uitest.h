// Shared fixture of the widget tests: a headless application with a scripted
// clock, the Systems the UI stands on in the host's order, scripted mouse and
// keyboard, a frame in the host's sequence, and Probe, a widget that writes
// every event it receives into one log.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/systemmanager.h"
#include "render/rendersystem.h"
#include "testapp.h"
#include "ui/uibase.h"
#include "ui/uisystem.h"
#include "ui/uiwindow.h"

namespace uitest {

// HID usages of the keys the tests press.
u32 const kUsageA = 4, kUsageS = 22, kUsage1 = 30, kUsage0 = 39, kUsageReturn = 40, kUsageEscape = 41,
          kUsageSpace = 44, kUsageMinus = 45, kUsagePeriod = 55, kUsageF4 = 61, kUsageDown = 81, kUsageUp = 82,
          kUsageLeftControl = 224, kUsageLeftShift = 225, kUsageLeftAlt = 226, kUsageLeftGUI = 227;

class ScriptedClock : public Application::Clock {
public:
    u64 mNow = 1000000000ull; // nanoseconds
    u64 getCount() override { return mNow; }
    void getTimebase(u64& numerator, u64& denominator) override { numerator = denominator = 1; }
    void sleep(u32 milliseconds) override { mNow += milliseconds * 1000000ull; }
};

// Appends "name:Event" entries, with positions, buttons and keys, to a log.
class Probe : public UIWindow {
public:
    Probe(char const* name, std::vector<std::string>* log, sRect const& rect, unsigned int windowAttribute = 0,
          unsigned int attribute = 0);

    // Probes also stand for plain nodes of a widget tree: no top limit.
    void eventMove() override {}
    void eventCreate() override { note("Create"); }
    void eventDestroy() override { note("Destroy"); }
    void eventActive() override;
    void eventDeactive() override;
    void eventFocus() override { note("Focus"); }
    void eventDefocus() override { note("Defocus"); }
    void eventMouseMove(sPoint const& p) override { note("MouseMove", p); }
    void eventMouseDown(sPoint const& p, unsigned int button) override;
    void eventMouseUp(sPoint const& p, unsigned int button) override;
    void eventMouseDoubleClick(sPoint const& p, unsigned int button) override { note("DoubleClick", p, button); }
    void eventMouseWheel(sPoint const& amount) override { note("Wheel", amount); }
    void eventKeyDown(unsigned int key, unsigned int combination) override { noteKey("KeyDown", key, combination); }
    void eventKeyUp(unsigned int key, unsigned int combination) override { noteKey("KeyUp", key, combination); }
    void eventCustom(UIMessage const& message) override;
    UIShortcutBase const* findShortcut(unsigned int keyCode, unsigned int combinationKey) const override;

    void note(char const* event);
    void note(char const* event, sPoint const& p, int extra = -1);
    // Passes the key on to the parent when mDelegateKeys is set.
    void noteKey(char const* event, unsigned int key, unsigned int combination);

    void fire() { note("Shortcut"); }

    std::string mName;
    std::vector<std::string>* mpLog;
    bool mDelegateKeys = false;
    bool mCloseOnDown = false;
    bool mDragOnUp = false;      // isDragging() seen by the last mouse-up
    unsigned int mShortcutKey = 0;
};

// The draw commands of the last replayed frame, in replay order.
std::vector<sDrawCommand const*> recordedDraws();

class UITest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // preprocess, update, draw, postprocess, replay: the host's frame.
    void frame();
    // Mouse events at content point (x, y), as the window would deliver them.
    void move(int x, int y) { sendMouse(mpApp, platform::eEventMouseMoved, x, y); }
    void press(int x, int y, u16 button = 1) { sendMouse(mpApp, platform::eEventMouseDown, x, y, button); }
    void release(int x, int y, u16 button = 1) { sendMouse(mpApp, platform::eEventMouseUp, x, y, button); }
    void key(u32 usage, bool down);
    // A key pressed for a frame and released, with a modifier held around it.
    void type(u32 usage, u32 modifier = 0);
    // press, frame, release, frame.
    void click(int x, int y, u16 button = 1);
    // A click a second after the last one, so that it is never a double click.
    void tap(int x, int y, u16 button = 1)
    {
        advance(1000);
        click(x, y, button);
    }
    void advance(u64 milliseconds) { clock().mNow += milliseconds * 1000000ull; }
    // A window Probe at rect, added and admitted with one frame.
    Probe* openWindow(char const* name, sRect const& rect, unsigned int windowAttribute = 0);
    // The log since the last call, joined by spaces; with a list of event
    // names ("MouseDown DoubleClick"), only those events.
    std::string take(char const* only = nullptr);

    static ScriptedClock& clock();
    Application* mpApp = nullptr;
    UISystem* mpUI = nullptr;
    std::vector<std::string> mLog;
};

} // namespace uitest
