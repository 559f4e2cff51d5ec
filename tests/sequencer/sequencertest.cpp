#include "sequencertest.h"

#include "foundation/functor.h"
#include "reflection/control.h"
#include "reflection/property.h"

// The sequencer tests run in the resource tests' environment: one headless
// application, checked heaps and per-test data folders.
#include "../resource/resourcetest.cpp"

IMPLEMENT_OBJECT_TYPEINFO(Probe, "ObjectBase");

std::vector<Probe::sFiring> Probe::sFirings;
Sequencer* Probe::spWatched = nullptr;

void Probe::makeControlList(List<ControlBase>& list)
{
#define PROBE_CONTROL(T, Name) list.addLast(new PropertyControl(new ReferenceProperty<T>(#Name, &m##Name)));
    PROBE_FIELDS(PROBE_CONTROL)
#undef PROBE_CONTROL
    list.addLast(new TriggerControl<void>("Fire", this, &Probe::fire));
    list.addLast(new TriggerControl<u32>("Count", this, &Probe::count));
}

void Probe::fire()
{
    count(0);
}

void Probe::count(u32 value)
{
    int const frame = (spWatched != nullptr) ? static_cast<int>(spWatched->getCurrentFrame()) : -1;
    sFirings.push_back({frame, value});
}

void SequencerTest::SetUp()
{
    ResourceTest::SetUp();
    Probe::sFirings.clear();
    Probe::spWatched = nullptr;
}

void SequencerTest::TearDown()
{
    for (SequencerResource* resource : mResources) {
        resource->release();
    }
    mResources.clear();
    ResourceTest::TearDown();
}

SequencerResourceIntermediate* SequencerTest::makeSequence(u32 end)
{
    SequencerResourceIntermediate* sequence = new SequencerResourceIntermediate();
    mResources.push_back(sequence);
    sequence->setEndFrame(end);
    sequence->addTrack(Probe::getStaticTypeInfo(), "p");
    return sequence;
}

void SequencerTest::addLane(SequencerResourceIntermediate* sequence, char const* control, char const* track)
{
    Probe probe;
    List<ControlBase> controls;
    probe.makeControlList(controls);
    for (LinkIterator<ControlBase> it = controls.begin(); it != controls.end(); ++it) {
        if (AutoString(it->getName()) == control) {
            sequence->addLane(track, *it);
        }
        delete *it;
    }
}

void SequencerTest::addTriggerKey(SequencerResourceIntermediate* sequence, char const* lane, u32 frame, u32 value)
{
    addKey(sequence, lane, frame, SequencerResource::eInterpolateType_Constant, value);
}

Probe* SequencerTest::probe(Sequencer const& sequencer, u32 track)
{
    return static_cast<Probe*>(sequencer.getTrackArray()[track].mpObject);
}

std::vector<int> SequencerTest::firedFrames()
{
    std::vector<int> frames;
    for (Probe::sFiring const& firing : Probe::sFirings) {
        frames.push_back(firing.mFrame);
    }
    return frames;
}
