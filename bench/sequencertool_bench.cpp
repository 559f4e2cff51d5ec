// The timeline editor's frame: a sequence of 50 tracks of 4 lanes of 200 keys
// each, open in the tool and playing. Timed per frame, processor time: the
// UI's update (the tool's sequencer update and layout) and paint recording.
// Headless: recording only. Goal: under 2 ms a frame.
#include <benchmark/benchmark.h>

#include <ctime>

#include "machineload.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "resource/resourcebase.h"
#include "sequencer/sequencer.h"
#include "sequencer/sequencerresource.h"
#include "sequencer/sequencertool.h"
#include "uiharness.h"

namespace {

int const kTracks = 50;
int const kKeys = 200;
char const* const kLaneNames[4] = {"X", "Y", "Scale", "Frame"};

// What a track animates: four values.
class Actor : public ObjectBase {
public:
    void makeControlList(List<ControlBase>& list) override
    {
        list.addLast(new PropertyControl(new ReferenceProperty<f32>(kLaneNames[0], &mX)));
        list.addLast(new PropertyControl(new ReferenceProperty<f32>(kLaneNames[1], &mY)));
        list.addLast(new PropertyControl(new ReferenceProperty<f32>(kLaneNames[2], &mScale)));
        list.addLast(new PropertyControl(new ReferenceProperty<s32>(kLaneNames[3], &mFrame)));
    }
    DECLARE_TYPEINFO(UniqueTypeInfo<Actor>)

    f32 mX = 0.0f;
    f32 mY = 0.0f;
    f32 mScale = 1.0f;
    s32 mFrame = 0;
};
IMPLEMENT_OBJECT_TYPEINFO(Actor, "ObjectBase");

SequencerResourceIntermediate* makeSequence()
{
    SequencerResourceIntermediate* sequence = new SequencerResourceIntermediate();
    sequence->setEndFrame(SequencerTool::kMaxFrame);
    Actor actor;
    List<ControlBase> controls;
    actor.makeControlList(controls);
    AutoString name;
    for (int t = 0; t < kTracks; ++t) {
        name.format("Actor%d", t);
        sequence->addTrack(Actor::getStaticTypeInfo(), name);
        for (List<ControlBase>::Iterator it = controls.begin(); it != controls.end(); ++it) {
            sequence->addLane(name, *it);
        }
        for (char const* lane : kLaneNames) {
            for (int k = 0; k < kKeys; ++k) {
                u32 const frame = static_cast<u32>(k * 20 + t % 20);
                sequence->addKey(name, lane, frame, SequencerResource::eInterpolateType_Linear);
                if (lane == kLaneNames[3]) {
                    s32 const value = k;
                    sequence->setKeyParameter(name, lane, frame, &value);
                } else {
                    f32 const value = static_cast<f32>(k * 3 + t);
                    sequence->setKeyParameter(name, lane, frame, &value);
                }
            }
        }
    }
    for (List<ControlBase>::Iterator it = controls.begin(); it != controls.end(); ++it) {
        delete *it;
    }
    return sequence;
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
        mpApplication = startUIApplication("Sequencer tool bench", false);
        ResourceBase::setAllocator(MemoryManager::getInstance()->createAllocator(0x4000000, "Resource"));
        JobSystem::getInstance()->setJobThreadNum(1);
    }
    static void end() { delete get().mpApplication; }

    BenchApplication* mpApplication = nullptr;
};

void BM_SequencerToolFrame(benchmark::State& state)
{
    Harness::get();
    SystemManager* manager = SystemManager::getInstance();
    UISystem* ui = UISystem::getInstance();
    SequencerResourceIntermediate* sequence = makeSequence();
    SequencerTool* tool = new SequencerTool();
    tool->setPosition(sPoint(32, 32));
    tool->setSize(sSize(800, 700));
    tool->setManagedResource(sequence);
    ui->addWindow(tool);
    manager->preprocess();
    // The first lane of the first track selected, so that the control form
    // shows the track's controls and a key.
    tool->setSelectLane(static_cast<SequencerLane*>(
        *static_cast<SequencerTrack*>(*sequence->getTrackList().begin())->mLaneList.begin()));
    tool->togglePlay();
    double update = 0.0;
    double paint = 0.0;
    for (auto _ : state) {
        // What the resource system does every frame: the edit flag lasts one.
        sequence->clearUpdate();
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
    state.counters["keys"] = kTracks * 4 * kKeys;
    state.counters["rows"] = tool->getTrackForm()->getTrackCount();
    state.counters["frame"] = tool->getCurrentFrame();
    state.counters["timeline_width"] = tool->getTrackForm()->getSequenceForm()->getSize().width;
    ui->removeWindow(tool);
    manager->preprocess();
    manager->postprocess();
    RenderSystem::getInstance()->executeCommand();
    sequence->release();
}
BENCHMARK(BM_SequencerToolFrame)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, &Harness::end);
}
