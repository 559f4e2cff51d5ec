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

namespace {

template <typename T>
void addControl(List<ControlBase>& list, char const* name, T* field)
{
    list.addLast(new PropertyControl(new ReferenceProperty<T>(name, field)));
}

} // namespace

void Probe::makeControlList(List<ControlBase>& list)
{
    addControl(list, "Bool", &mBool);
    addControl(list, "U8", &mU8);
    addControl(list, "U16", &mU16);
    addControl(list, "U32", &mU32);
    addControl(list, "U64", &mU64);
    addControl(list, "S8", &mS8);
    addControl(list, "S16", &mS16);
    addControl(list, "S32", &mS32);
    addControl(list, "S64", &mS64);
    addControl(list, "F32", &mF32);
    addControl(list, "F64", &mF64);
    addControl(list, "Fixed", &mFixed);
    addControl(list, "Point", &mPoint);
    addControl(list, "Size", &mSize);
    addControl(list, "Rect", &mRect);
    addControl(list, "Color", &mColor);
    addControl(list, "ColorF", &mColorF);
    addControl(list, "Texcoord", &mTexcoord);
    addControl(list, "Vector", &mVector);
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
