// Shared harness of the renderer's tests. One application per process: with a
// display, a real (hidden) window with its GL context, so that tests can read
// pixels back; without one, a headless window, where the renderer records and
// sorts but makes no GL calls and the pixel tests skip. Its clock moves only
// when a test steps a frame; the heaps of systems, units and resources come
// from its memory manager. Each test gets fresh job, render, view and tool
// systems.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "foundation/types.h"
#include "jobs/jobsystem.h"
#include "render/drawcontext.h"
#include "render/renderobject.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "tool/toolsystem.h"

namespace rendertest {

int const kWindowWidth = 320;
int const kWindowHeight = 240;

// True once the process has a real window (and so should have GL).
bool hasWindow();
// Moves the application's clock on by one nominal frame and lets it count
// the frame, so that updates see a delta of exactly 1.
void stepFrame();
// The back buffer after the last replay, bottom row first as GL gives it.
std::vector<sColor> readWindow();

// An expected colour at window pixel (x, y), from the top left.
struct Probe {
    int x, y;
    sColor color;
    int tolerance = 2;
};

class RenderTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // A frame in the host's order: preprocess, recording, the views' pass,
    // postprocess, replay. With GL, asserts that the replay raised no error.
    void runFrame(std::function<void(DrawContext*)> const& record);
    // The commands of the last frame in replay order, or only its draws.
    std::vector<sCommand const*> sortedCommands() const;
    std::vector<sDrawCommand const*> sortedDraws() const;
    // The draws as "key primitive+vertices[t] b<blend>[ n]" joined by ", ", e.g.
    // "v0 l1 s0 Q8t b1 n": textured quads, alpha blending, nearest texels.
    std::string drawSummary() const;

    // The back buffer after the last replay, pixel (x, y) from the top left.
    sColor readPixel(int x, int y) const;
    void expectPixels(std::initializer_list<Probe> probes) const;

    // Sets the context to draw in window pixels at the given level.
    void windowState(DrawContext* context, unsigned int level, unsigned int subLevel = 0) const;
    // An untextured quad from (left, top) to (right, bottom).
    void quad(DrawContext* context, sRect const& rect, sColor color) const;

    JobSystem* mpJobs = nullptr;
    RenderSystem* mpRender = nullptr;
    ViewSystem* mpViews = nullptr;
    ToolSystem* mpTools = nullptr;
};

// Skips the test without a window; fails it when a window has no GL context.
#define REQUIRE_GL()                                                             \
    do {                                                                         \
        if (!rendertest::hasWindow()) {                                          \
            GTEST_SKIP() << "no display: pixel tests need a window";            \
        }                                                                        \
        ASSERT_TRUE(mpRender->hasContext()) << "a window without a GL context"; \
    } while (0)

// A sort key by its fields, in hex: "v<view> l<level> s<sub-level>".
std::string keyText(u32 key);
// A colour word of the output vertices by its channels: "(r,g,b,a)".
std::string colorText(u32 word);

// Colour channels within a tolerance; alpha is not compared (the window may
// have no alpha channel).
::testing::AssertionResult nearColor(sColor actual, sColor expected, int tolerance = 2);

} // namespace rendertest
