// The animation editor's frame: an animation of 20 cells on HERMITE paths, 2
// generators with full pools of 255 particles and a nested animation of 4
// cells, open in the tool and playing, the animation view at zoom 4 with the
// grid and the selected cell's curve shown. Timed per frame, processor time:
// the UI's update (the player's step, the tool's update and layout) and the
// paint recording of the whole window. Headless: recording only. Goal: under
// 2 ms a frame.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

#include "animation/animation.h"
#include "animation/animresource.h"
#include "animation/animsequencer.h"
#include "animation/animtool.h"
#include "machineload.h"
#include "reflection/control.h"
#include "resource/resourcesystem.h"
#include "resource/textureresource.h"
#include "sequencer/sequencerresource.h"
#include "tool/toolbase.h"
#include "ui/uimessage.h"
#include "uiharness.h"

namespace {

int const kCells = 20;
int const kNestedCells = 4;
u8 const kParticles = 255;
u32 const kEndFrame = 240;
int const kZoom = 4;

// A 64 by 32 sheet as a TGA in the benchmark's own data folder.
void writeSheet(std::string const& path)
{
    u8 header[18] = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 64, 0, 32, 0, 32, 8 | 0x20};
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<char const*>(header), sizeof(header));
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 64; ++x) {
            u8 const pixel[4] = {static_cast<u8>(x * 4), static_cast<u8>(y * 8), 200, 255};
            file.write(reinterpret_cast<char const*>(pixel), 4);
        }
    }
}

template <typename T>
void key(AnimResource* animation, char const* track, char const* lane, u32 frame, T value,
         SequencerResource::eInterpolateType mode = SequencerResource::eInterpolateType_Constant)
{
    animation->addKey(track, lane, frame, mode);
    animation->setKeyParameter(track, lane, frame, &value);
}

void addTrack(AnimResource* animation, char const* track, TypeInfo const* type, std::vector<char const*> const& lanes)
{
    animation->addTrack(type, track);
    ObjectBase* object = type->newInstance();
    List<ControlBase> controls;
    object->makeControlList(controls);
    for (char const* lane : lanes) {
        for (LinkIterator<ControlBase> it = controls.begin(); it != controls.end(); ++it) {
            if (AutoString(it->getName()) == lane) {
                animation->addLane(track, *it);
            }
        }
    }
    for (LinkIterator<ControlBase> it = controls.begin(); it != controls.end(); ++it) {
        delete *it;
    }
    delete object;
}

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
    tool->setPosition(sPoint(32, 32));
    tool->setSize(sSize(800, 700));
    tool->setManagedResource(animation);
    ui->addWindow(tool);
    manager->preprocess();
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
    double update = 0.0;
    double paint = 0.0;
    for (auto _ : state) {
        animation->clearUpdate();
        if (!tool->getSequencer()->isPlaying()) {
            tool->seekStart();
            tool->togglePlay();
        }
        manager->preprocess();
        std::clock_t start = std::clock();
        // The headless application's frame time stays 0, so the tool's own
        // update does not move the player: one frame's step is taken here.
        tool->getSequencer()->update(1.0f);
        ui->update();
        std::clock_t const middle = std::clock();
        ui->draw();
        std::clock_t const stop = std::clock();
        update += 1000.0 * static_cast<double>(middle - start) / CLOCKS_PER_SEC;
        paint += 1000.0 * static_cast<double>(stop - middle) / CLOCKS_PER_SEC;
        manager->postprocess();
        RenderSystem::getInstance()->executeCommand();
    }
    double const frames = static_cast<double>(state.iterations());
    state.counters["update_cpu_ms"] = update / frames;
    state.counters["paint_cpu_ms"] = paint / frames;
    state.counters["cpu_frame_ms"] = (update + paint) / frames;
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
    ui->removeWindow(tool);
    manager->preprocess();
    manager->postprocess();
    RenderSystem::getInstance()->executeCommand();
}
BENCHMARK(BM_AnimToolFrame)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, &Harness::end);
}
