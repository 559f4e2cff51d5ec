// Shared by the sequencer tests: a probe class with one control of every key
// type and two triggers that log when they fire, and a fixture that builds
// sequences through the edit operations. The headless application, heaps and
// per-test folders are those of the resource tests.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../resource/resourcetest.h"
#include "sequencer/sequencer.h"
#include "sequencer/sequencerresource.h"

// The object a track makes: a field mName and a control "Name" for every key
// type, and the triggers "Fire" (no argument) and "Count" (u32).
class Probe : public ObjectBase {
public:
    void makeControlList(List<ControlBase>& list) override;

    void fire();
    void count(u32 value);

#define PROBE_FIELDS(X)                                                                                    \
    X(bool, Bool) X(u8, U8) X(u16, U16) X(u32, U32) X(u64, U64) X(s8, S8) X(s16, S16) X(s32, S32) X(s64, S64) \
    X(f32, F32) X(f64, F64) X(sFixed, Fixed) X(sPoint, Point) X(sSize, Size) X(sRect, Rect) X(sColor, Color)   \
    X(sColorF, ColorF) X(sTexcoord, Texcoord) X(sVector, Vector)
#define PROBE_FIELD(T, Name) T m##Name = T();
    PROBE_FIELDS(PROBE_FIELD)
#undef PROBE_FIELD

    // Every firing: the watched sequencer's whole frame, and the argument.
    struct sFiring {
        int mFrame;
        u32 mArgument;
    };
    static std::vector<sFiring> sFirings;
    static Sequencer* spWatched;

    DECLARE_TYPEINFO(UniqueTypeInfo<Probe>)
};

class SequencerTest : public ResourceTest {
protected:
    void SetUp() override;
    void TearDown() override;

    // A sequence of frames 0 to end with one Probe track "p".
    SequencerResourceIntermediate* makeSequence(u32 end = 100);
    // Adds the lane of the Probe control of that name to track "p".
    void addLane(SequencerResourceIntermediate* sequence, char const* control, char const* track = "p");
    template <typename T>
    void addKey(SequencerResourceIntermediate* sequence, char const* lane, u32 frame,
                SequencerResource::eInterpolateType mode, T value, char const* track = "p")
    {
        sequence->addKey(track, lane, frame, mode);
        sequence->setKeyParameter(track, lane, frame, &value);
    }
    void addTriggerKey(SequencerResourceIntermediate* sequence, char const* lane, u32 frame, u32 value = 0);
    // The object of track index.
    static Probe* probe(Sequencer const& sequencer, u32 track = 0);
    // Whole frames at which the triggers fired.
    static std::vector<int> firedFrames();

    std::vector<SequencerResource*> mResources; // released in TearDown
};
