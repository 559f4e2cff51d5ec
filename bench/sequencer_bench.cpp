// Playback cost: 1,000 sequencers, each driving its own object through 10
// property lanes of 100 keys (10,000 lanes), stepped one frame at a time, with
// LINEAR and with HERMITE keys; a seek of every sequencer to a random frame;
// and, for comparison, a plain evaluator that binary-searches every lane with
// std::upper_bound each frame and interpolates from the two keys it finds.
// Both write through the same properties. Times are per frame (per seek for
// the seek benchmark), in microseconds.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "benchapp.h"
#include "machineload.h"
#include "foundation/memorymanager.h"
#include "foundation/autostring.h"
#include "platform/platform.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "sequencer/sequencer.h"
#include "sequencer/sequencerresource.h"

namespace {

int const kSequencers = 1000;
int const kLanes = 10;
int const kKeys = 100;
u32 const kKeySpacing = 40;
u32 const kEndFrame = kKeys * kKeySpacing;
char const* const kNames[kLanes] = {"V0", "V1", "V2", "V3", "V4", "V5", "V6", "V7", "V8", "V9"};

// Ten float properties, the object each sequencer drives.
class BenchTarget : public ObjectBase {
public:
    void makeControlList(List<ControlBase>& list) override
    {
        for (int i = 0; i < kLanes; ++i) {
            list.addLast(new PropertyControl(new ReferenceProperty<f32>(kNames[i], &mValues[i])));
        }
    }
    f32 mValues[kLanes] = {};
    DECLARE_TYPEINFO(UniqueTypeInfo<BenchTarget>)
};
IMPLEMENT_OBJECT_TYPEINFO(BenchTarget, "ObjectBase");

BenchApplication* gpApplication = nullptr;

// The application and its string heap, built at first use and ended by main,
// so that the heaps' leak checks run over everything the benchmarks made.
void setUp()
{
    if (gpApplication == nullptr) {
        platform::setHeadless(true);
        platform::setUnattended(true);
        static Application::sInitializer const initializer = {"Sequencer bench", 320, 240, 60, 20, 60};
        gpApplication = new BenchApplication(&initializer);
        AutoString::setAllocator(MemoryManager::getInstance()->createAllocator(0x4000000, "String"));
    }
}

SequencerResourceIntermediate* makeSequence(SequencerResource::eInterpolateType mode)
{
    setUp();
    SequencerResourceIntermediate* sequence = new SequencerResourceIntermediate();
    sequence->setEndFrame(kEndFrame);
    sequence->addTrack(BenchTarget::getStaticTypeInfo(), "target");
    BenchTarget target;
    List<ControlBase> controls;
    target.makeControlList(controls);
    std::mt19937 random(7);
    for (LinkIterator<ControlBase> it = controls.begin(); it != controls.end(); ++it) {
        sequence->addLane("target", *it);
        for (int k = 0; k < kKeys; ++k) {
            f32 const value = static_cast<f32>(random() % 1000);
            sequence->addKey("target", it->getName(), k * kKeySpacing, mode);
            sequence->setKeyParameter("target", it->getName(), k * kKeySpacing, &value);
        }
        delete *it;
    }
    sequence->clearUpdate();
    return sequence;
}

struct sPlayers {
    explicit sPlayers(SequencerResource::eInterpolateType mode) : mpSequence(makeSequence(mode))
    {
        for (int i = 0; i < kSequencers; ++i) {
            mPlayers.emplace_back(new Sequencer());
            mPlayers.back()->setResource(mpSequence);
            mPlayers.back()->seek(static_cast<u32>(i) * 7 % kEndFrame); // spread over the timeline
            mPlayers.back()->play();
        }
    }
    ~sPlayers()
    {
        mPlayers.clear();
        mpSequence->release();
    }
    SequencerResourceIntermediate* mpSequence;
    std::vector<std::unique_ptr<Sequencer>> mPlayers;
};

void stepAll(benchmark::State& state, SequencerResource::eInterpolateType mode)
{
    sPlayers players(mode);
    for (auto _ : state) {
        for (std::unique_ptr<Sequencer>& player : players.mPlayers) {
            player->update(sFixed::One);
            if (!player->isPlaying()) {
                player->seek(0);
                player->play();
            }
        }
    }
    state.counters["lanes"] = kSequencers * kLanes;
}

void BM_SequencerStepLinear(benchmark::State& state)
{
    stepAll(state, SequencerResource::eInterpolateType_Linear);
}
BENCHMARK(BM_SequencerStepLinear)->Unit(benchmark::kMicrosecond);

void BM_SequencerStepHermite(benchmark::State& state)
{
    stepAll(state, SequencerResource::eInterpolateType_Hermite);
}
BENCHMARK(BM_SequencerStepHermite)->Unit(benchmark::kMicrosecond);

// One iteration seeks every sequencer once: the time per seek is the
// reported time divided by 1,000.
void BM_SequencerSeekRandom(benchmark::State& state)
{
    sPlayers players(SequencerResource::eInterpolateType_Linear);
    std::mt19937 random(3);
    for (auto _ : state) {
        for (std::unique_ptr<Sequencer>& player : players.mPlayers) {
            player->seek(random() % kEndFrame);
        }
    }
    state.counters["seeks"] = kSequencers;
}
BENCHMARK(BM_SequencerSeekRandom)->Unit(benchmark::kMicrosecond);

// The plain evaluator: key frames and values per lane in arrays, a binary
// search per lane per frame, the LINEAR formula, the same property write.
void BM_PlainEvaluatorStepLinear(benchmark::State& state)
{
    setUp();
    struct sLane {
        std::vector<u32> mFrames;
        std::vector<f32> mValues;
        PropertyBase* mpProperty;
    };
    std::vector<std::unique_ptr<BenchTarget>> targets;
    std::vector<sLane> lanes;
    std::vector<u32> positions;
    std::mt19937 random(7);
    for (int s = 0; s < kSequencers; ++s) {
        targets.emplace_back(new BenchTarget());
        positions.push_back(static_cast<u32>(s) * 7 % kEndFrame);
        for (int l = 0; l < kLanes; ++l) {
            sLane lane;
            for (int k = 0; k < kKeys; ++k) {
                lane.mFrames.push_back(k * kKeySpacing);
                lane.mValues.push_back(static_cast<f32>(random() % 1000));
            }
            lane.mpProperty = new ReferenceProperty<f32>(kNames[l], &targets.back()->mValues[l]);
            lane.mpProperty->addRef();
            lanes.push_back(std::move(lane));
        }
    }
    for (auto _ : state) {
        for (int s = 0; s < kSequencers; ++s) {
            u32 const frame = positions[s] = (positions[s] + 1) % kEndFrame;
            for (int l = 0; l < kLanes; ++l) {
                sLane const& lane = lanes[s * kLanes + l];
                size_t const after = std::upper_bound(lane.mFrames.begin(), lane.mFrames.end(), frame) - lane.mFrames.begin();
                size_t const at = (after == 0) ? 0 : after - 1;
                f32 value = lane.mValues[at];
                if (after < lane.mFrames.size() && after != 0) {
                    f32 const t = static_cast<f32>(frame - lane.mFrames[at]) / static_cast<f32>(lane.mFrames[after] - lane.mFrames[at]);
                    value += (lane.mValues[after] - value) * t;
                }
                lane.mpProperty->setByType<f32>(value, PropertyBase::CurrentIndex);
            }
        }
    }
    for (sLane& lane : lanes) {
        lane.mpProperty->release();
    }
    state.counters["lanes"] = kSequencers * kLanes;
}
BENCHMARK(BM_PlainEvaluatorStepLinear)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, [] { delete gpApplication; });
}
