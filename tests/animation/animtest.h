// Shared by the animation tests, which run in the renderer tests' harness
// (one application per process, with a hidden window when there is a
// display): the job, render, view, resource and unit systems
// for each test, the sample animations of resources/intermediate/anim/ in the
// test program's data folders, and helpers that build animations through the
// sequence edit operations and read back what a frame recorded.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "animation/animation.h"
#include "animation/animationlist.h"
#include "animation/animationunit.h"
#include "animation/animresource.h"
#include "animation/animsequencer.h"
#include "jobs/jobsystem.h"
#include "render/drawcontext.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "resource/resourcesystem.h"
#include "testfiles.h"
#include "unit/unitsystem.h"

namespace animtest {

using ::readFile;
using ::writeFile;
// A file of resources/intermediate/anim/ in the source tree.
std::string readSample(char const* name);

// One recorded quad: four vertices in strip order.
struct sQuad {
    sOutputTexturedVertex mVertex[4];
    u32 mBlendMode;
};

// The particles of a generator's pool that are alive.
inline u32 aliveCount(AnimGenerator const& generator)
{
    u32 count = 0;
    for (u32 i = 0; i < generator.getMaxParticleNum(); ++i) {
        count += generator.getParticle(i).isAlive() ? 1 : 0;
    }
    return count;
}

} // namespace animtest

class AnimTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // A frame in the host's order.
    void runFrame();
    // The textured quads the last frame replayed, in order.
    std::vector<animtest::sQuad> recordedQuads() const;

    // A resource of sequence type 1, frames 0 to end, released in TearDown.
    AnimResource* makeAnimation(u32 end = 100);
    // A track of that class with the named controls as lanes.
    void addTrack(AnimResource* animation, char const* track, TypeInfo const* type,
                  std::vector<char const*> const& lanes);
    template <typename T>
    void addKey(AnimResource* animation, char const* track, char const* lane, u32 frame, T value,
                SequencerResource::eInterpolateType mode = SequencerResource::eInterpolateType_Constant)
    {
        animation->addKey(track, lane, frame, mode);
        animation->setKeyParameter(track, lane, frame, &value);
    }
    void addTriggerKey(AnimResource* animation, char const* track, char const* lane, u32 frame);

    // Loaded through the resource system; released in TearDown.
    template <typename T>
    T* load(char const* path)
    {
        ResourceBase* resource = mpResources->createResource(path, T::getStaticTypeInfo());
        if (resource != nullptr) {
            mHeld.push_back(resource);
        }
        return static_cast<T*>(resource);
    }
    // A list with the animation at the index, released in TearDown. The
    // animation's edits are done: its update mark is cleared as the resource
    // system does once a frame for loaded resources.
    AnimationListIntermediate* listOf(u32 index, AnimResource* animation);
    // A unit in the unit system, at a position, showing an animation list.
    AnimationUnit* addUnit(AnimationList* list, int x = 0, int y = 0);

    // Data folders of the test program.
    static std::string intermediateFile(std::string const& name);
    static std::string nativeFile(std::string const& name);

    JobSystem* mpJobs = nullptr;
    RenderSystem* mpRender = nullptr;
    ViewSystem* mpViews = nullptr;
    ResourceSystem* mpResources = nullptr;
    UnitSystem* mpUnits = nullptr;
    std::vector<ResourceBase*> mHeld;
};

// The object of a sequencer's track as its class.
template <typename T>
T* trackObject(Sequencer const& sequencer, u32 track)
{
    return typeCast<T>(sequencer.getTrackArray()[track].mpObject);
}
