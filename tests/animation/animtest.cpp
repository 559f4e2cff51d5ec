#include "animtest.h"

#include <filesystem>

#include "app/application.h"
#include "foundation/autostring.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "resource/resourcebase.h"

// The animations run in the renderer tests' harness: one application with a
// stepped clock and a hidden window when there is a display.
#include "../render/renderfixture.cpp"

namespace {

std::string const kSampleFolder = std::string(HARBOR_SOURCE_DIR) + "/resources/intermediate/anim/";

} // namespace

namespace animtest {

std::string readSample(char const* name)
{
    std::string const bytes = readFile(kSampleFolder + name);
    EXPECT_FALSE(bytes.empty()) << name;
    return bytes;
}

} // namespace animtest

void AnimTest::SetUp()
{
    mpJobs = JobSystem::create(0x10000, 4);
    mpRender = RenderSystem::create();
    mpViews = ViewSystem::create();
    mpResources = ResourceSystem::create();
    mpUnits = UnitSystem::create();
    mpUnits->setup();
    // The samples as the program finds them; the native forms below native/.
    for (auto const& entry : std::filesystem::directory_iterator(kSampleFolder)) {
        std::string const name = entry.path().filename().string();
        bool const native = name.find(".seq") != std::string::npos || name == "character.aml";
        std::string const target = native ? nativeFile("anim/" + name) : intermediateFile("anim/" + name);
        animtest::writeFile(target, animtest::readFile(entry.path().string()));
    }
}

void AnimTest::TearDown()
{
    mpUnits->destroy();
    for (ResourceBase* resource : mHeld) {
        resource->release();
    }
    mHeld.clear();
    mpResources->destroy();
    mpViews->destroy();
    mpRender->destroy();
    mpJobs->destroy();
    std::filesystem::remove_all(intermediateFile("anim"));
    std::filesystem::remove_all(nativeFile("anim"));
}

std::string AnimTest::intermediateFile(std::string const& name)
{
    return Application::getInstance()->getIntermediatePath() + name;
}

std::string AnimTest::nativeFile(std::string const& name)
{
    return Application::getInstance()->getNativePath() + name;
}

void AnimTest::runFrame()
{
    rendertest::stepFrame();
    mpRender->preprocess();
    mpUnits->preprocess();
    mpUnits->update();
    mpViews->update();
    mpUnits->postprocess();
    mpResources->update();
    mpRender->postprocess();
    mpRender->executeCommand();
}

std::vector<animtest::sQuad> AnimTest::recordedQuads() const
{
    std::vector<animtest::sQuad> quads;
    for (sCommand* const* entry = mpRender->getSortedEntry(); (*entry)->mType != sCommand::eType_End; ++entry) {
        if ((*entry)->mType != sCommand::eType_Draw) {
            continue;
        }
        sDrawCommand const* draw = static_cast<sDrawCommand const*>(*entry);
        if (!draw->isTextured() || draw->getPrimitiveType() != ePrimitiveType_Quad) {
            continue;
        }
        sOutputTexturedVertex const* vertices = static_cast<sOutputTexturedVertex const*>(draw->mpVertices);
        for (u32 i = 0; i + 4 <= draw->getVertexCount(); i += 4) {
            animtest::sQuad quad;
            for (u32 v = 0; v < 4; ++v) {
                quad.mVertex[v] = vertices[i + v];
            }
            quad.mBlendMode = draw->getBlendMode();
            quads.push_back(quad);
        }
    }
    return quads;
}

AnimResource* AnimTest::makeAnimation(u32 end)
{
    AnimResource* animation = new AnimResource();
    mHeld.push_back(animation);
    animation->setEndFrame(end);
    return animation;
}

void AnimTest::addTrack(AnimResource* animation, char const* track, TypeInfo const* type,
                        std::vector<char const*> const& lanes)
{
    animation->addTrack(type, track);
    ObjectBase* object = type->newInstance();
    List<ControlBase> controls;
    object->makeControlList(controls);
    for (char const* lane : lanes) {
        bool found = false;
        for (LinkIterator<ControlBase> it = controls.begin(); it != controls.end(); ++it) {
            if (AutoString(it->getName()) == lane) {
                animation->addLane(track, *it);
                found = true;
            }
        }
        EXPECT_TRUE(found) << lane;
    }
    for (LinkIterator<ControlBase> it = controls.begin(); it != controls.end(); ++it) {
        delete *it;
    }
    delete object;
}

void AnimTest::addTriggerKey(AnimResource* animation, char const* track, char const* lane, u32 frame)
{
    animation->addKey(track, lane, frame, SequencerResource::eInterpolateType_Constant);
}

AnimationListIntermediate* AnimTest::listOf(u32 index, AnimResource* animation)
{
    AnimationListIntermediate* list = new AnimationListIntermediate();
    mHeld.push_back(list);
    animation->clearUpdate();
    list->setAnimation(index, animation);
    return list;
}

AnimationUnit* AnimTest::addUnit(AnimationList* list, int x, int y)
{
    AnimationUnit* unit = new AnimationUnit();
    unit->setPosition(sVector(sFixed(x, 16), sFixed(y, 16)));
    unit->setAnimationList(list);
    mpUnits->addUnit(unit);
    return unit;
}
