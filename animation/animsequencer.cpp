#include "animation/animsequencer.h"

#include <cstring>

#include "animation/animation.h"
#include "animation/animresource.h"
#include "foundation/debug.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "resource/resourcesystem.h"
#include "resource/textureresource.h"

IMPLEMENT_OBJECT_TYPEINFO(AnimSequencer, "Sequencer");

namespace {

// Longest texture path taken from a sequence's type-dependent data.
u32 const kTexturePathMax = 256;

void tooMany(char const* message)
{
    dev_assert(message, __FILE__, __LINE__);
}

} // namespace

AnimSequencer::AnimSequencer(AllocatorBase* allocator)
    : Sequencer(allocator), mPosition(sPoint::Zero), mColor(sColor::White), mOrientation(sFixed::Zero),
      mpTexture(nullptr), mpTrackTypes(nullptr), mTrackTypeNum(0), mSequencerNum(0), mCellNum(0), mCollisionNum(0),
      mGeneratorNum(0)
{
}

AnimSequencer::~AnimSequencer()
{
    releaseTexture();
    releaseTrackTypes();
}

void AnimSequencer::releaseTexture()
{
    if (mpTexture != nullptr) {
        mpTexture->release();
        mpTexture = nullptr;
    }
}

void AnimSequencer::makePropertyList(PropertyList& list)
{
    ObjectBase::makePropertyList(list);
    list.add(new IndirectResourceProperty("Resource", SequencerResource::getStaticTypeInfo(), this,
                                          &AnimSequencer::getResource, &AnimSequencer::setResource));
    list.add(new ReferenceProperty<sPoint>("Position", &mPosition));
    list.add(new ReferenceProperty<sFixed>("Orientation", &mOrientation));
    list.add(new ReferenceProperty<sColor>("Color", &mColor));
}

void AnimSequencer::makeControlList(List<ControlBase>& list)
{
    ObjectBase::makeControlList(list);
    TypeInfo const* type = AnimResource::getStaticTypeInfo();
    list.addLast(new PropertyControl(
        new IndirectResourceProperty("Resource", type, this, &AnimSequencer::getResource, &AnimSequencer::setResource),
        type));
    list.addLast(new TriggerControl<u32>("Seek", this, &AnimSequencer::seekTrigger));
    list.addLast(new TriggerControl<void>("Play", static_cast<Sequencer*>(this), &Sequencer::play));
    list.addLast(new TriggerControl<void>("Stop", static_cast<Sequencer*>(this), &Sequencer::stop));
    list.addLast(new PropertyControl(new ReferenceProperty<sPoint>("Position", &mPosition)));
    list.addLast(new PropertyControl(new ReferenceProperty<sFixed>("Orientation", &mOrientation)));
    list.addLast(new PropertyControl(new ReferenceProperty<sColor>("Color", &mColor)));
}

void AnimSequencer::setResource(SequencerResource* resource)
{
    if (resource == nullptr || resource->getSequenceType() != SequencerResource::eSequenceType_Animation) {
        return;
    }
    releaseTexture();
    releaseTrackTypes();

    // Builds the objects and applies the start frame: nested animations have
    // their resources from their "Resource" lanes after this.
    Sequencer::setResource(resource);
    takeTexture();
    classifyTracks();
}

void AnimSequencer::notifyRebuild()
{
    releaseTexture();
    releaseTrackTypes();
    takeTexture();
    classifyTracks();
}

void AnimSequencer::releaseTrackTypes()
{
    deallocate(mpTrackTypes);
    mpTrackTypes = nullptr;
    mTrackTypeNum = 0;
    mSequencerNum = mCellNum = mCollisionNum = mGeneratorNum = 0;
}

void AnimSequencer::takeTexture()
{
    SequencerResource* resource = getResource();
    if (resource == nullptr) {
        return;
    }
    // The texture path as the data holds it, cut to a terminated string: the
    // block comes from a file. No block asks for a path of null.
    char path[kTexturePathMax];
    char const* name = nullptr;
    if (resource->getTypeDependentData() != nullptr && resource->getTypeDependentDataSize() != 0) {
        u32 const size = resource->getTypeDependentDataSize();
        u32 const length = (size < kTexturePathMax) ? size : kTexturePathMax - 1;
        memcpy(path, resource->getTypeDependentData(), length);
        path[length] = '\0';
        name = path;
    }
    if (ResourceSystem* system = ResourceSystem::getInstance()) {
        ResourceBase* texture = system->createResource(name, TextureResource::getStaticTypeInfo());
        if (texture != nullptr && !texture->getTypeInfo()->isDerivedFrom(TextureResource::getStaticTypeInfo())) {
            texture->release();
            texture = nullptr;
        }
        mpTexture = static_cast<TextureResource*>(texture);
    }
}

void AnimSequencer::classifyTracks()
{
    u32 const trackNum = getTrackNum();
    if (trackNum == 0) {
        return;
    }
    mpTrackTypes = static_cast<u8*>(allocate(trackNum));
    mTrackTypeNum = trackNum;
    sTrackData const* tracks = getTrackArray();
    for (u32 t = 0; t < trackNum; ++t) {
        ObjectBase const* object = tracks[t].mpObject;
        TypeInfo const* type = (object != nullptr) ? object->getTypeInfo() : nullptr;
        u8 kind = eTrackType_Other;
        if (type == AnimCell::getStaticTypeInfo()) {
            if (mCellNum > 254) {
                tooMany("Too many cell.");
            }
            kind = eTrackType_Cell;
            ++mCellNum;
        } else if (type == AnimCollision::getStaticTypeInfo()) {
            if (mCollisionNum > 254) {
                tooMany("Too many collision.");
            }
            kind = eTrackType_Collision;
            ++mCollisionNum;
        } else if (type == AnimGenerator::getStaticTypeInfo()) {
            if (mGeneratorNum > 254) {
                tooMany("Too many generator.");
            }
            kind = eTrackType_Generator;
            ++mGeneratorNum;
        } else if (type == AnimSequencer::getStaticTypeInfo()) {
            AnimSequencer const* child = static_cast<AnimSequencer const*>(object);
            if (mSequencerNum > 254) {
                tooMany("Too many sequencer"); // without a full stop, as it always read
            }
            kind = eTrackType_Sequencer;
            ++mSequencerNum;
            // Nested totals have limits of their own: 127 sequencers and
            // generators, 255 cells and collisions.
            if (mSequencerNum + child->getAnimSequencerNum() > 127) {
                tooMany("Too many sequencer.");
            }
            if (mCellNum + child->getAnimCellNum() > 255) {
                tooMany("Too many cell.");
            }
            if (mCollisionNum + child->getAnimCollisionNum() > 255) {
                tooMany("Too many collision.");
            }
            if (mGeneratorNum + child->getAnimGeneratorNum() > 127) {
                tooMany("Too many generator.");
            }
            mSequencerNum = static_cast<u8>(mSequencerNum + child->getAnimSequencerNum());
            mCellNum = static_cast<u8>(mCellNum + child->getAnimCellNum());
            mCollisionNum = static_cast<u8>(mCollisionNum + child->getAnimCollisionNum());
            mGeneratorNum = static_cast<u8>(mGeneratorNum + child->getAnimGeneratorNum());
        }
        mpTrackTypes[t] = kind;
    }
}

void AnimSequencer::applyObjectDependedTask(sTrackData* track, sFixed step)
{
    if (track->mpObject != nullptr && track->mpObject->getTypeInfo() == AnimGenerator::getStaticTypeInfo()) {
        static_cast<AnimGenerator*>(track->mpObject)->update(step);
        return;
    }
    Sequencer::applyObjectDependedTask(track, step);
}
