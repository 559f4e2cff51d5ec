// AnimResource: the editable form of a 2D animation, ".asq.xml". It is a
// sequence of sequence type 1 whose tracks make cells, collisions, particle
// generators and nested animations, with one texture for all its cells. The
// texture's resource path is also kept, NUL-terminated, as the sequence's
// type-dependent data, which is what the native ".seq" form carries. One
// thread at a time: the owner's.
#pragma once

#include "sequencer/sequencerresource.h"

class TextureResource;

class AnimResource : public SequencerResourceIntermediate {
public:
    AnimResource();

    // The sequence's properties, then "texture".
    void makePropertyList(PropertyList& list) override;
    // As the sequence's; the texture that the file sets is no edit, so a
    // loaded animation is neither modified nor marked for a rebuild.
    bool load(Stream& stream) override;
    char const* getExtension() const override { return "asq.xml"; }
    char const* getFilter() const override { return "asq.xml|Animation Sequence"; }

    TextureResource* getTexture() const { return mpTexture; }
    // Holds one reference; null clears. Rewrites the type-dependent data and
    // marks the resource modified.
    void setTexture(TextureResource* texture);

    DECLARE_TYPEINFO(UniqueTypeInfo<AnimResource>)

protected:
    ~AnimResource() override;

private:
    TextureResource* mpTexture;
};
