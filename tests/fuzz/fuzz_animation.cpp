// Animations from damaged files: each input is read as an ".asq.xml" (when
// the XML reader takes it), as a native ".seq" and as an ".aml" list, and each
// animation that loads is played the way a unit plays it: sorted into track
// kinds by an AnimSequencer, stepped over its frames and seeked back. There
// is no resource system here, so textures and nested animations stay unset.
#include <type_traits>

#include "animation/animationlist.h"
#include "animation/animresource.h"
#include "animation/animsequencer.h"
#include "fuzzharness.h"
#include "serial/stream.h"

namespace {

void play(SequencerResource* resource)
{
    AnimSequencer* sequencer = new AnimSequencer();
    fuzz::runGuarded([&] {
        sequencer->setResource(resource);
        sequencer->play();
        for (int i = 0; i < 8; ++i) {
            sequencer->update(sFixed(3, 15)); // 1.5 frames
        }
        sequencer->seek(0);
        sequencer->update(sFixed::One);
        for (u32 t = 0; t <= sequencer->getTrackNum(); ++t) {
            sequencer->getTrackType(t);
        }
    });
    delete sequencer;
}

template <typename T, typename S>
void loadAndPlay(char const* path)
{
    T* resource = new T();
    bool loaded = false;
    {
        S stream(path, Stream::eMode_Read);
        fuzz::runGuarded([&] { loaded = resource->load(stream); });
    }
    if constexpr (std::is_base_of<SequencerResource, T>::value) {
        if (loaded) {
            play(resource);
        }
    }
    resource->release();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(u8 const* data, size_t size)
{
    fuzz::setup();
    char const* path = fuzz::writeInput(data, size, "bin");
    if (fuzz::isWellFormedXml(path)) {
        loadAndPlay<AnimResource, TextFileStream>(path);
        loadAndPlay<AnimationListIntermediate, TextFileStream>(path);
    }
    loadAndPlay<SequencerResource, BinaryFileStream>(path);
    loadAndPlay<AnimationList, BinaryFileStream>(path);
    return 0;
}
