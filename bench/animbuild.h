// Building the animations the animation benchmarks play: their texture sheet
// on disk, tracks with the lanes asked for, and keys of any value type.
#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "animation/animresource.h"
#include "foundation/autostring.h"
#include "reflection/control.h"
#include "sequencer/sequencerresource.h"

// A 64 by 32 sheet as a TGA: four 16 by 16 frames along the top and a
// particle below.
inline void writeSheet(std::string const& path)
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

// lanes: names of the type's controls, in the order the lanes take.
inline void addTrack(AnimResource* animation, char const* track, TypeInfo const* type,
                     std::vector<char const*> const& lanes)
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
