// The animation editor's frame: an animation of 20 cells on HERMITE paths, 2
// generators with full pools of 255 particles and a nested animation of 4
// cells, open in the tool and playing, the animation view at zoom 4 with the
// grid and the selected cell's curve shown. Timed per frame, processor time:
// the UI's update (the player's step, the tool's update and layout) and the
// paint recording of the whole window. Headless: recording only. Goal: under
// 2 ms a frame.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

#include "animation/animation.h"
#include "animation/animresource.h"
#include "animation/animsequencer.h"
#include "animation/animtool.h"
#include "animbuild.h"
#include "machineload.h"
#include "resource/resourcesystem.h"
#include "resource/textureresource.h"
#include "tool/toolbase.h"
#include "toolframe.h"
#include "ui/uimessage.h"

namespace {

int const kCells = 20;
int const kNestedCells = 4;
u8 const kParticles = 255;
u32 const kEndFrame = 240;
int const kZoom = 4;

void addCells(AnimResource* animation, char const* prefix, int count)
{
    for (int c = 0; c < count; ++c) {
        AutoString name;
        name.format("%s%d", prefix, c);
        addTrack(animation, name.c_str(), AnimCell::getStaticTypeInfo(), {"Position", "Size", "UV"});
        key(animation, name.c_str(), "Size", 0, sSize(16, 16));
        key(animation, name.c_str(), "UV", 0, sTexcoord(static_cast<u16>(16 * (c % 4)), 0));
        for (u32 f = 0; f < kEndFrame; f += 40) {
            int const swing = (f / 40) % 2 == 0 ? 0 : 24;
            key(animation, name.c_str(), "Position", f,
                sPoint((c % 5) * 24 - 48 + swing, (c / 5) * 24 - 48 + swing / 2),
                SequencerResource::eInterpolateType_Hermite);
        }
    }
}

void addGenerator(AnimResource* animation, char const* name, u32 mode, sPoint const& at)
{
    addTrack(animation, name, AnimGenerator::getStaticTypeInfo(),
             {"MaxParticleNum", "Position", "Size", "UV", "VelocityMode", "Direction", "DirectionRange", "Speed",
              "InnerRadius", "OuterRadius", "LifeDuration", "AppearanceTime", "DisappearanceTime",
              "GenerataionRate"});
    key(animation, name, "MaxParticleNum", 0, kParticles);
    key(animation, name, "Position", 0, at);
    key(animation, name, "Size", 0, sSize(4, 4));
    key(animation, name, "UV", 0, sTexcoord(0, 16));
    key(animation, name, "VelocityMode", 0, mode);
    key(animation, name, "Direction", 0, 270.0f);
    key(animation, name, "DirectionRange", 0, 30.0f);
    key(animation, name, "Speed", 0, 0.25f);
    key(animation, name, "InnerRadius", 0, u32(4));
    key(animation, name, "OuterRadius", 0, u32(12));
    key(animation, name, "LifeDuration", 0, u16(1000));
    key(animation, name, "AppearanceTime", 0, u16(5));
    key(animation, name, "DisappearanceTime", 0, u16(5));
    key(animation, name, "GenerataionRate", 0, sFixed(8));
}

class Harness {
public:
    static Harness& get()
    {
        static Harness* harness = new Harness();
        return *harness;
    }
    Harness()
    {
        mpApplication = startUIApplication("Animation tool bench", false);
        ResourceBase::setAllocator(MemoryManager::getInstance()->createAllocator(0x4000000, "Resource"));
        JobSystem::getInstance()->setJobThreadNum(1);
        mpResources = ResourceSystem::create();
        std::string const folder = std::string(mpApplication->getIntermediatePath()) + "bench";
        std::system(("mkdir -p '" + folder + "'").c_str());
        writeSheet(folder + "/animtool_sheet.tga");
        mpSheet = static_cast<TextureResource*>(
            mpResources->createResource("bench/animtool_sheet", TextureResource::getStaticTypeInfo()));

        // The nested animation from a file: a resource key names its
        // animation by path.
        AnimResource* child = new AnimResource();
        child->setEndFrame(kEndFrame);
        child->setTexture(mpSheet);
        addCells(child, "n", kNestedCells);
        ToolBase::writeResource(child, (folder + "/animtool_child.asq.xml").c_str());
        child->release();
        mpChild = static_cast<AnimResource*>(
            mpResources->createResource("bench/animtool_child", AnimResource::getStaticTypeInfo()));

        mpAnimation = new AnimResource();
        mpAnimation->setEndFrame(kEndFrame);
        mpAnimation->setTexture(mpSheet);
        addCells(mpAnimation, "c", kCells);
        addGenerator(mpAnimation, "sparks", AnimGenerator::eVelocityMode_Directional, sPoint(-64, 64));
        addGenerator(mpAnimation, "dust", AnimGenerator::eVelocityMode_Random, sPoint(64, 64));
        addTrack(mpAnimation, "child", AnimSequencer::getStaticTypeInfo(), {"Resource", "Position", "Play"});
        mpAnimation->addKey("child", "Resource", 0, SequencerResource::eInterpolateType_Constant);
        static_cast<SequencerUniqueKey<ResourceBase>*>(mpAnimation->findKey("child", "Resource", 0))
            ->setResource(mpChild);
        mpAnimation->setKeyParameter("child", "Resource", 0, nullptr);
        key(mpAnimation, "child", "Position", 0, sPoint(0, -96));
        mpAnimation->addKey("child", "Play", 0, SequencerResource::eInterpolateType_Trigger);
        mpAnimation->clearUpdate();
    }
    static void end()
    {
        Harness& harness = get();
        harness.mpAnimation->release();
        if (harness.mpChild != nullptr) {
            harness.mpChild->release();
        }
        if (harness.mpSheet != nullptr) {
            harness.mpSheet->release();
        }
        harness.mpResources->destroy();
        delete harness.mpApplication;
    }

    BenchApplication* mpApplication = nullptr;
    ResourceSystem* mpResources = nullptr;
    TextureResource* mpSheet = nullptr;
    AnimResource* mpChild = nullptr;
    AnimResource* mpAnimation = nullptr;
};

void BM_AnimToolFrame(benchmark::State& state)
{
    Harness& harness = Harness::get();
    SystemManager* manager = SystemManager::getInstance();
    UISystem* ui = UISystem::getInstance();
    AnimResource* animation = harness.mpAnimation;
    AnimTool* tool = new AnimTool();
    openTool(tool, animation);
    tool->setSelectLane(animation->findLane("c0", "Position"));
    AnimationView* view = tool->getAnimationForm()->getView();
    view->setZoom(kZoom);
    tool->togglePlay();
    // Until both pools are full, and the view's scroll on the middle.
    for (int i = 0; i < 120; ++i) {
        animation->clearUpdate();
        manager->preprocess();
        tool->getSequencer()->update(1.0f);
        ui->update();
        if (i == 1) {
            view->sendMessage(UIKeyDownMessage(eAnimViewKey_Home, 0));
        }
        manager->postprocess();
        RenderSystem::getInstance()->executeCommand();
    }
    sToolFrameTime time;
    for (auto _ : state) {
        runToolFrame(tool, animation, time);
    }
    reportToolFrames(state, time);
    AnimSequencer* sequencer = tool->getAnimSequencer();
    u32 live = 0;
    for (u32 t = 0; t < sequencer->getTrackNum(); ++t) {
        ObjectBase const* object = sequencer->getTrackArray()[t].mpObject;
        if (object != nullptr && object->getTypeInfo() == AnimGenerator::getStaticTypeInfo()) {
            AnimGenerator const* generator = static_cast<AnimGenerator const*>(object);
            for (u32 i = 0; i < generator->getMaxParticleNum(); ++i) {
                live += generator->getParticle(i).isAlive() ? 1u : 0u;
            }
        }
    }
    state.counters["live_particles"] = live;
    // Over all levels: the nested animation's cells count too.
    state.counters["cells"] = sequencer->getAnimCellNum();
    state.counters["zoom"] = view->getZoom();
    state.counters["texture"] = (sequencer->getTexture() != nullptr && sequencer->getTexture()->getTexture() != nullptr) ? 1 : 0;
    closeTool(tool);
}
BENCHMARK(BM_AnimToolFrame)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, &Harness::end);
}
