#include "animation/animtool.h"

#include "animation/animation.h"
#include "animation/animresource.h"
#include "animation/animsequencer.h"

IMPLEMENT_OBJECT_TYPEINFO(AnimTool, "SequencerTool");

AnimTool::AnimTool()
    : mHost(this), mpAnimationForm(nullptr), mpTextureForm(nullptr), mpViewSplitter(nullptr),
      mpOuterSplitter(nullptr)
{
    setTitle("Animation Tool");
    setMinimumSize(sSize(256, 160));
    setSize(sSize(512, 512));
    setManagedResource("Animation Resource", AnimResource::getStaticTypeInfo(), this, &AnimTool::getAnimResource,
                       &AnimTool::setAnimResource);

    // The timeline goes below the views.
    UISplitter* timeline = getSplitter();
    timeline->remove();
    mpAnimationForm = new AnimationForm(&mHost);
    mpTextureForm = new TextureForm(&mHost);
    mpViewSplitter = new UISplitter(mpAnimationForm, mpTextureForm, UISplitter::eSplitDirection_LeftRight,
                                    kViewSplitSize, UISplitter::eSplitBase_Second);
    mpOuterSplitter = new UISplitter(mpViewSplitter, timeline, UISplitter::eSplitDirection_TopBottom,
                                     kOuterSplitSize, UISplitter::eSplitBase_Second);
    addClient(mpOuterSplitter);
}

TypeInfo const* AnimTool::getSequencerTypeInfo() const
{
    return AnimSequencer::getStaticTypeInfo();
}

TypeInfo const* AnimTool::getRootTypeInfo() const
{
    return AnimPrimitive::getStaticTypeInfo();
}

void AnimTool::updateLayout()
{
    layoutContent(mpOuterSplitter);
}

void AnimTool::eventCreate()
{
    SequencerTool::eventCreate();
    giveAnimationToSequencer();
}

AnimResource* AnimTool::getAnimResource() const
{
    SequencerResourceIntermediate* resource = getResource();
    return (resource != nullptr && resource->getTypeInfo()->isDerivedFrom(AnimResource::getStaticTypeInfo()))
               ? static_cast<AnimResource*>(resource)
               : nullptr;
}

void AnimTool::setAnimResource(AnimResource* resource)
{
    if (resource != nullptr && !resource->getTypeInfo()->isDerivedFrom(AnimResource::getStaticTypeInfo())) {
        return;
    }
    setResource(resource);
    giveAnimationToSequencer();
}

AnimSequencer* AnimTool::getAnimSequencer() const
{
    Sequencer* sequencer = getSequencer();
    return (sequencer != nullptr && sequencer->getTypeInfo()->isDerivedFrom(AnimSequencer::getStaticTypeInfo()))
               ? static_cast<AnimSequencer*>(sequencer)
               : nullptr;
}

// The timeline hands the player its resource as a plain sequence; the player
// takes it again as an animation, which also finds the texture. Both start at
// the start frame, so the timeline's seek stands.
void AnimTool::giveAnimationToSequencer()
{
    AnimSequencer* sequencer = getAnimSequencer();
    AnimResource* resource = getAnimResource();
    if (sequencer != nullptr && resource != nullptr) {
        sequencer->setResource(resource);
    }
}
