// Shared harness of the unit tests: one application per process (a hidden
// window with GL when there is a display, headless otherwise) with the
// String, System and Unit heaps; each test gets fresh job, render, view and
// unit systems, and a frame in the host's order.
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "jobs/jobsystem.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "unit/unitsystem.h"

namespace unittest {

int const kWindowWidth = 320;
int const kWindowHeight = 240;

bool hasWindow();

class UnitTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // Preprocess, update, the views' pass, postprocess and the replay;
    // afterPreprocess runs between the first two.
    void runFrame(std::function<void()> const& afterPreprocess = nullptr);

    JobSystem* mpJobs = nullptr;
    RenderSystem* mpRender = nullptr;
    ViewSystem* mpViews = nullptr;
    UnitSystem* mpUnits = nullptr;
};

} // namespace unittest
