// The timed frame of an editor window open on a playing resource, shared by
// the benchmarks of the timeline editors. Needs the application of
// uiharness.h.
#pragma once

#include <benchmark/benchmark.h>

#include <ctime>

#include "app/systemmanager.h"
#include "render/rendersystem.h"
#include "sequencer/sequencer.h"
#include "sequencer/sequencerresource.h"
#include "sequencer/sequencertool.h"
#include "ui/uisystem.h"
#include "uiharness.h"

// The processor time of the frames run so far.
struct sToolFrameTime {
    double mUpdate = 0.0;
    double mPaint = 0.0;
};

// At 32, 32 and 800 by 700, admitted into the interface.
inline void openTool(SequencerTool* tool, SequencerResourceIntermediate* resource)
{
    tool->setPosition(sPoint(32, 32));
    tool->setSize(sSize(800, 700));
    tool->setManagedResource(resource);
    UISystem::getInstance()->addWindow(tool);
    SystemManager::getInstance()->preprocess();
}

// One frame, the player started again when it has stopped; the update
// (player's step, tool's update and layout) and the paint recording timed.
inline void runToolFrame(SequencerTool* tool, SequencerResourceIntermediate* resource, sToolFrameTime& time)
{
    SystemManager* manager = SystemManager::getInstance();
    UISystem* ui = UISystem::getInstance();
    // What the resource system does every frame: the edit flag lasts one.
    resource->clearUpdate();
    if (!tool->getSequencer()->isPlaying()) {
        tool->seekStart();
        tool->togglePlay();
    }
    manager->preprocess();
    std::clock_t const start = std::clock();
    // The headless application's frame time stays 0, so the tool's own
    // update does not move the player: one frame's step is taken here.
    tool->getSequencer()->update(1.0f);
    ui->update();
    std::clock_t const middle = std::clock();
    ui->draw();
    std::clock_t const stop = std::clock();
    time.mUpdate += cpuMilliseconds(start, middle);
    time.mPaint += cpuMilliseconds(middle, stop);
    manager->postprocess();
    RenderSystem::getInstance()->executeCommand();
}

// The per-frame means as the counters "update_cpu_ms", "paint_cpu_ms" and
// "cpu_frame_ms".
inline void reportToolFrames(benchmark::State& state, sToolFrameTime const& time)
{
    double const frames = static_cast<double>(state.iterations());
    state.counters["update_cpu_ms"] = time.mUpdate / frames;
    state.counters["paint_cpu_ms"] = time.mPaint / frames;
    state.counters["cpu_frame_ms"] = (time.mUpdate + time.mPaint) / frames;
}

// Removes the window and runs the frame that deletes it.
inline void closeTool(SequencerTool* tool)
{
    SystemManager* manager = SystemManager::getInstance();
    UISystem::getInstance()->removeWindow(tool);
    manager->preprocess();
    manager->postprocess();
    RenderSystem::getInstance()->executeCommand();
}
