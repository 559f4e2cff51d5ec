// Animation lists: a game object's set of animations under small numbers
// (index 3 is, say, the walk). AnimationList is the native ".aml" resource, a
// table of 64 counted references to sequences; AnimationListIntermediate is
// the editable ".aml.xml" form, whose entries are AnimResources. A list is
// shared by every unit that shows it and is changed on one thread at a time.
#pragma once

#include "resource/resourcebase.h"

class AnimResource;
class PropertyControl;
class SequencerResource;

class AnimationList : public ResourceBase {
public:
    static constexpr u32 kAnimationMax = 64;
    // "ANML", a zero word and the entry count.
    static constexpr u32 kHeaderSize = 12;
    // Longest path of an entry, terminator included.
    static constexpr u32 kPathMax = 256;

    AnimationList();

    // One resource control over the table (a widget once the toolkit offers
    // one for it).
    void makeUIList(List<UIBase>& list) override;
    // A damaged or cut file is refused with a trace and leaves the table
    // empty; an out-of-range index is traced and skipped, and an index that
    // repeats keeps its last entry.
    bool load(Stream& stream) override;
    bool save(Stream& stream) override;
    char const* getExtension() const override { return "aml"; }
    char const* getFilter() const override { return "aml|Animation List"; }
    TypeInfo const* getIntermediateType() const override;

    // Null for an empty index and for one past the table.
    SequencerResource* getAnimation(u32 index) const;
    // Releases every entry and marks the list modified.
    void removeAll();

    DECLARE_TYPEINFO(UniqueTypeInfo<AnimationList>)

protected:
    explicit AnimationList(u16 attribute);
    ~AnimationList() override;

    void releaseAll();
    // The control over the table, offering resources of the given class.
    PropertyControl* makeTableControl(TypeInfo const* type);

    // Sequences only; held as the base pointer so that resource properties
    // can count them in place.
    ResourceBase* mpAnimations[kAnimationMax];
};

class AnimationListIntermediate : public AnimationList {
public:
    AnimationListIntermediate();

    // "AnimationList": 64 entries of AnimResource.
    void makePropertyList(PropertyList& list) override;
    void makeUIList(List<UIBase>& list) override;
    bool load(Stream& stream) override;
    bool save(Stream& stream) override;
    char const* getExtension() const override { return "aml.xml"; }
    char const* getFilter() const override { return "aml.xml|Animation List"; }
    TypeInfo const* getNativeType() const override;

    // Holds one reference. Null and indices past the table are ignored; the
    // list is not marked modified.
    void setAnimation(u32 index, AnimResource* animation);

    DECLARE_TYPEINFO(UniqueTypeInfo<AnimationListIntermediate>)

protected:
    ~AnimationListIntermediate() override;
};
