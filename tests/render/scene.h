// A test scene: overlapping translucent rectangles, triangles and lines, each
// with a sort key of its own, so that any split of the recording over threads
// and contexts replays identically.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "renderfixture.h"

namespace rendertest {

class Scene {
public:
    static constexpr u32 kShapes = 600;

    explicit Scene(ToolSystem const* tools) : mpTools(tools)
    {
        std::mt19937 random(3);
        for (Shape& shape : mShapes) {
            int const x = static_cast<int>(random() % (kWindowWidth - 40));
            int const y = static_cast<int>(random() % (kWindowHeight - 40));
            shape.mRect = sRect(x, y, x + 8 + static_cast<int>(random() % 32), y + 8 + static_cast<int>(random() % 32));
            shape.mColor = sColor(static_cast<u8>(random()), static_cast<u8>(random()), static_cast<u8>(random()), 160);
            shape.mKind = random() % 3;
            shape.mLevel = random() % 4096;
        }
    }

    void record(DrawContext* context, u32 begin, u32 end) const
    {
        sRect const window(0, 0, kWindowWidth, kWindowHeight);
        context->setView(0);
        context->setViewport(window);
        context->setScissorRect(window);
        context->setProjectionRect(window);
        context->setBlendMode(eBlendMode_Alpha);
        context->setVertexDecl(eVertexDecl_Plain);
        for (u32 i = begin; i < end; ++i) {
            Shape const& shape = mShapes[i];
            context->setDrawLevel(shape.mLevel, i); // unique keys: any recording order sorts alike
            sColor const colors[4] = {shape.mColor, shape.mColor, shape.mColor, shape.mColor};
            sRect const& r = shape.mRect;
            sPoint const corners[3] = {sPoint(r.left, r.top), sPoint(r.right, r.top), sPoint(r.left, r.bottom)};
            if (shape.mKind == 0) {
                mpTools->drawRect(context, r, colors);
            } else if (shape.mKind == 1) {
                mpTools->drawTriangle(context, corners, colors);
            } else {
                mpTools->drawLine(context, corners[0], sPoint(r.right, r.bottom), shape.mColor, shape.mColor);
            }
        }
    }

    // A job: one slice of the shapes, into the running thread's context.
    void recordSlice(void* user, void* uniqueData)
    {
        u32 const slice = static_cast<u32>(reinterpret_cast<std::uintptr_t>(user));
        record(static_cast<DrawContext*>(uniqueData), slice * kShapes / mSlices, (slice + 1) * kShapes / mSlices);
    }

    // One context per job thread, as a parallel pass does it.
    void recordInParallel(RenderSystem* render, JobSystem* jobs, DrawContext* parent, u32 slices)
    {
        mSlices = slices;
        std::vector<DrawContext*> contexts(jobs->getJobThreadNum(), parent);
        for (u32 i = 0; i < contexts.size(); ++i) {
            if (i > 0) {
                contexts[i] = render->popContext();
                contexts[i]->duplicate(parent);
            }
            jobs->setThreadUniqueData(i, contexts[i]);
        }
        for (u32 slice = 0; slice < slices; ++slice) {
            jobs->addJob(new ThreadUniqueJob<Scene>(this, &Scene::recordSlice, reinterpret_cast<void*>(std::uintptr_t(slice))));
        }
        jobs->executeJob();
        for (u32 i = 1; i < contexts.size(); ++i) {
            render->pushContext(contexts[i]);
        }
    }

private:
    struct Shape {
        sRect mRect;
        sColor mColor;
        u32 mKind;
        u32 mLevel;
    };
    ToolSystem const* mpTools;
    Shape mShapes[kShapes];
    u32 mSlices = 1;
};

} // namespace rendertest
