#include "animation/animresource.h"

#include <cstring>

#include "foundation/debug.h"
#include "foundation/utils.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "resource/textureresource.h"

IMPLEMENT_OBJECT_TYPEINFO(AnimResource, "SequencerResourceIntermediate");

AnimResource::AnimResource() : mpTexture(nullptr)
{
    setSequenceType(eSequenceType_Animation);
}

AnimResource::~AnimResource()
{
    if (mpTexture != nullptr) {
        mpTexture->release();
        mpTexture = nullptr;
    }
}

void AnimResource::makePropertyList(PropertyList& list)
{
    SequencerResourceIntermediate::makePropertyList(list);
    list.add(new IndirectResourceProperty("texture", TextureResource::getStaticTypeInfo(), this,
                                          &AnimResource::getTexture, &AnimResource::setTexture));
}

bool AnimResource::load(Stream& stream)
{
    bool const loaded = SequencerResourceIntermediate::load(stream);
    clearModify();
    clearUpdate();
    return loaded;
}

void AnimResource::setTexture(TextureResource* texture)
{
    // The new reference first: the old one may be the last of the same texture.
    if (texture != nullptr) {
        texture->addRef();
    }
    if (mpTexture != nullptr) {
        mpTexture->release();
    }
    mTypeDependentDataSize = 0;
    if (mpTypeDependentData != nullptr) {
        ResourceBase::deallocate(mpTypeDependentData);
        mpTypeDependentData = nullptr;
    }
    mpTexture = texture;
    if (texture != nullptr) {
        AutoString const resourcePath = Utils::getResourcePath(texture->getPath().c_str());
        char const* path = (resourcePath.c_str() != nullptr) ? resourcePath.c_str() : "";
        u32 const size = static_cast<u32>(strlen(path)) + 1;
        mpTypeDependentData = static_cast<u8*>(ResourceBase::allocate(size));
        if (mpTypeDependentData == nullptr) {
            dev_assert("Sequence allocation failed.", __FILE__, __LINE__);
        }
        memcpy(mpTypeDependentData, path, size);
        mTypeDependentDataSize = size;
    }
    setModify();
}
