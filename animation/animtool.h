// AnimTool: the editor of 2D animations. It is the timeline editor over an
// AnimResource, played by an AnimSequencer, with two views above the
// timeline: AnimationView, where the animation is drawn and its primitives
// are moved, and TextureView, where a cell's rectangle is picked on the
// texture. The views change the played objects; a change enters the sequence
// when a key is added. Main thread only.
#pragma once

#include "animation/animtoolview.h"
#include "sequencer/sequencertool.h"

class AnimResource;
class AnimSequencer;

class AnimTool : public SequencerTool {
public:
    // The views' splitter gives the texture side this many pixels; the outer
    // one gives them to the timeline below the views.
    static constexpr unsigned int kViewSplitSize = 256;
    static constexpr unsigned int kOuterSplitSize = 128;

    AnimTool();

    DECLARE_TYPEINFO(UniqueTypeInfo<AnimTool>)

    // AnimSequencer.
    TypeInfo const* getSequencerTypeInfo() const override;
    // AnimPrimitive: "Add Track" offers the primitives.
    TypeInfo const* getRootTypeInfo() const override;
    // The top form, and the outer splitter below it.
    void updateLayout() override;
    // The player takes the animation as an animation: its texture and the
    // kinds of its tracks.
    void eventCreate() override;

    // The edited animation, or null; set refuses, without a word, what is not
    // an animation.
    AnimResource* getAnimResource() const;
    void setAnimResource(AnimResource* resource);
    // Null before eventCreate.
    AnimSequencer* getAnimSequencer() const;

    AnimationForm* getAnimationForm() const { return mpAnimationForm; }
    TextureForm* getTextureForm() const { return mpTextureForm; }
    UISplitter* getViewSplitter() const { return mpViewSplitter; }
    UISplitter* getOuterSplitter() const { return mpOuterSplitter; }

private:
    // The views' window on the tool.
    class Host : public AnimViewHost {
    public:
        explicit Host(AnimTool* tool) : mpTool(tool) {}
        AnimSequencer* getViewSequencer() const override { return mpTool->getAnimSequencer(); }
        AnimResource* getViewResource() const override { return mpTool->getAnimResource(); }
        SequencerTrack* getViewSelectTrack() const override { return mpTool->getSelectTrack(); }
        SequencerKey* getViewSelectKey() const override { return mpTool->getSelectKey(); }

    private:
        AnimTool* mpTool;
    };

    void giveAnimationToSequencer();

    Host mHost;
    AnimationForm* mpAnimationForm;
    TextureForm* mpTextureForm;
    UISplitter* mpViewSplitter;
    UISplitter* mpOuterSplitter;
};
