// The timeline editor's frame: a sequence of 50 tracks of 4 lanes of 200 keys
// each, open in the tool and playing. Timed per frame, processor time: the
// UI's update (the tool's sequencer update and layout) and paint recording.
// Headless: recording only. Goal: under 2 ms a frame.
#include <benchmark/benchmark.h>

#include "machineload.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "resource/resourcebase.h"
#include "toolframe.h"

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
    SequencerResourceIntermediate* sequence = makeSequence();
    SequencerTool* tool = new SequencerTool();
    openTool(tool, sequence);
    // The first lane of the first track selected, so that the control form
    // shows the track's controls and a key.
    tool->setSelectLane(static_cast<SequencerLane*>(
        *static_cast<SequencerTrack*>(*sequence->getTrackList().begin())->mLaneList.begin()));
    tool->togglePlay();
    sToolFrameTime time;
    for (auto _ : state) {
        runToolFrame(tool, sequence, time);
    }
    reportToolFrames(state, time);
    state.counters["keys"] = kTracks * 4 * kKeys;
    state.counters["rows"] = tool->getTrackForm()->getTrackCount();
    state.counters["frame"] = tool->getCurrentFrame();
    state.counters["timeline_width"] = tool->getTrackForm()->getSequenceForm()->getSize().width;
    closeTool(tool);
    sequence->release();
}
BENCHMARK(BM_SequencerToolFrame)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, &Harness::end);
}
