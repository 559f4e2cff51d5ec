#include "animation/animationlist.h"

#include <cstring>

#include "animation/animresource.h"
#include "foundation/debug.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "resource/resourcesystem.h"
#include "sequencer/sequencerresource.h"
#include "serial/datareader.h"
#include "serial/datawriter.h"
#include "ui/uicontrol.h"
#include "serial/stream.h"

IMPLEMENT_OBJECT_TYPEINFO(AnimationList, "ResourceBase");
IMPLEMENT_OBJECT_TYPEINFO(AnimationListIntermediate, "AnimationList");

namespace {

u32 const kMagic = 0x4C4D4E41u; // "ANML" as the file's first four bytes
u32 const kWriterTagMax = 16;
u32 const kReaderBufferSize = 1024;

u32 readU32(u8 const* at)
{
    return static_cast<u32>(at[0]) | static_cast<u32>(at[1]) << 8 | static_cast<u32>(at[2]) << 16 |
           static_cast<u32>(at[3]) << 24;
}

} // namespace

// ---------------------------------------------------------------------------
// AnimationList: the ".aml" file

AnimationList::AnimationList() : AnimationList(eAttribute_Native)
{
}

AnimationList::AnimationList(u16 attribute) : ResourceBase(attribute)
{
    memset(mpAnimations, 0, sizeof(mpAnimations));
}

AnimationList::~AnimationList()
{
    releaseAll();
}

TypeInfo const* AnimationList::getIntermediateType() const
{
    return AnimationListIntermediate::getStaticTypeInfo();
}

SequencerResource* AnimationList::getAnimation(u32 index) const
{
    return (index < kAnimationMax) ? static_cast<SequencerResource*>(mpAnimations[index]) : nullptr;
}

void AnimationList::releaseAll()
{
    for (ResourceBase*& entry : mpAnimations) {
        if (entry != nullptr) {
            entry->release();
            entry = nullptr;
        }
    }
}

void AnimationList::removeAll()
{
    releaseAll();
    setModify();
}

PropertyControl* AnimationList::makeTableControl(TypeInfo const* type)
{
    return new PropertyControl(new ResourceProperty("AnimationList", type, mpAnimations, kAnimationMax), type);
}

void AnimationList::makeUIList(List<UIBase>& list)
{
    ResourceBase::makeUIList(list);
    PropertyControl* control = makeTableControl(SequencerResource::getStaticTypeInfo());
    if (UIBase* widget = Utils::makeUIFromControl(control)) {
        list.addLast(widget);
    }
    delete control;
}

// Header, then per entry its index and its path. The magic and the zero word
// are not looked at. The reader must not lose its place: an entry cut short,
// or a path without its terminator, marks the file as damaged.
bool AnimationList::load(Stream& stream)
{
    if (stream.getBinaryAccessor() == nullptr) {
        return false;
    }
    DataReader reader(&stream, kReaderBufferSize);
    u8 header[kHeaderSize];
    bool intact = reader.read(header, kHeaderSize) == kHeaderSize;
    releaseAll();
    u32 const count = intact ? readU32(header + 8) : 0;
    ResourceSystem* system = ResourceSystem::getInstance();
    for (u32 i = 0; intact && i < count; ++i) {
        u32 index = 0;
        if (!(intact = reader.read(&index, sizeof(index)) == sizeof(index))) {
            break;
        }
        if (index >= kAnimationMax) {
            DEV_TRACE("Invalid index(%d).\n", index);
            continue;
        }
        if (mpAnimations[index] != nullptr) {
            DEV_TRACE("Reduplicated index found(%d).\n", index);
            mpAnimations[index]->release();
            mpAnimations[index] = nullptr;
        }
        char path[kPathMax];
        u32 const taken = reader.readString(path, kPathMax);
        if (!(intact = taken != 0 && taken == strlen(path) + 1)) {
            break;
        }
        ResourceBase* animation =
            (system != nullptr) ? system->createResource(path, SequencerResource::getStaticTypeInfo()) : nullptr;
        // The resource system answers a file it could not read with an
        // unloaded object without a path: the entry stays empty.
        if (animation != nullptr && (animation->getPath().empty() ||
                                     !animation->getTypeInfo()->isDerivedFrom(SequencerResource::getStaticTypeInfo()))) {
            animation->release();
            animation = nullptr;
        }
        mpAnimations[index] = animation;
    }
    if (!intact) {
        DEV_TRACE("Animation list is damaged.\n");
        releaseAll();
        return false;
    }
    takePathFrom(stream);
    return true;
}

bool AnimationList::save(Stream& stream)
{
    if (stream.getBinaryAccessor() == nullptr) {
        return false;
    }
    u32 count = 0;
    for (ResourceBase const* entry : mpAnimations) {
        count += (entry != nullptr) ? 1 : 0;
    }
    DataWriter writer(&stream, kWriterTagMax);
    u32 const header[3] = {kMagic, 0, count};
    bool written = writer.write(header, kHeaderSize) == kHeaderSize;
    for (u32 i = 0; i < kAnimationMax; ++i) {
        if (mpAnimations[i] == nullptr) {
            continue;
        }
        AutoString const path = Utils::getResourcePath(mpAnimations[i]->getPath().c_str());
        char const* text = (path.c_str() != nullptr) ? path.c_str() : "";
        written = writer.write(i) == sizeof(u32) && written;
        written = writer.writeString(text) == strlen(text) + 1 && written;
    }
    return written;
}

// ---------------------------------------------------------------------------
// AnimationListIntermediate: the ".aml.xml" file

AnimationListIntermediate::AnimationListIntermediate() : AnimationList(eAttribute_Intermediate | eAttribute_Creatable)
{
}

AnimationListIntermediate::~AnimationListIntermediate()
{
}

TypeInfo const* AnimationListIntermediate::getNativeType() const
{
    return AnimationList::getStaticTypeInfo();
}

void AnimationListIntermediate::makePropertyList(PropertyList& list)
{
    AnimationList::makePropertyList(list);
    list.add(new ResourceProperty("AnimationList", AnimResource::getStaticTypeInfo(), mpAnimations, kAnimationMax));
}

void AnimationListIntermediate::makeUIList(List<UIBase>& list)
{
    ResourceBase::makeUIList(list);
    // One resource field per entry of the table.
    UIControlArray* table = new UIControlArray(
        new ResourceProperty("AnimationList", AnimResource::getStaticTypeInfo(), mpAnimations, kAnimationMax),
        UIControl::eMode_Decimal);
    list.addLast(table);
}

void AnimationListIntermediate::setAnimation(u32 index, AnimResource* animation)
{
    if (animation == nullptr || index >= kAnimationMax) {
        return;
    }
    animation->addRef();
    if (mpAnimations[index] != nullptr) {
        mpAnimations[index]->release();
    }
    mpAnimations[index] = animation;
}

bool AnimationListIntermediate::load(Stream& stream)
{
    removeAll();
    clearModify();
    clearUpdate();
    readXml(stream);
    return true;
}

bool AnimationListIntermediate::save(Stream& stream)
{
    return writeXml(stream);
}
