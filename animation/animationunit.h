// AnimationUnit: the game object that shows 2D animations. It owns one
// AnimSequencer per entry of its AnimationList, plays the current one at the
// unit's position, scale and orientation, and keeps two bounding-box trees
// over the played objects: one that drawing walks (cells and generators) and
// one of collision boxes. update writes the trees and draw only reads them;
// the unit system keeps the two apart. Both may run on a job thread.
#pragma once

#include "foundation/boundingbox.h"
#include "foundation/fixedmath.h"
#include "foundation/types.h"
#include "foundation/vector.h"
#include "unit/coordinateunit.h"

class AnimationList;
class AnimSequencer;
class DrawContext;

class AnimationUnit : public CoordinateUnit {
public:
    // No animation chosen.
    static constexpr u32 kNoAnimation = 0xFFFFFFFFu;
    // getCurrentFrame without a playing animation.
    static constexpr u32 kNoFrame = 65535;

    AnimationUnit();
    ~AnimationUnit() override;

    // CoordinateUnit's, then "AnimationList", "Color", "CurrentAnimation".
    void makePropertyList(PropertyList& list) override;
    void makeControlList(List<ControlBase>& list) override;
    // ObjectBase's widgets, then "CurrentFrame" (0 to 65535).
    void makeUIList(List<UIBase>& list) override;
    // Steps the current animation and places its boxes.
    void update(float delta) override;
    // The current animation's cells and particles, if the view holds the
    // origin (the trees' node boxes stay zero).
    void draw(DrawContext* context) const override;
    // A hook for games that register the collision tree somewhere; nothing
    // here calls it and it does nothing.
    virtual void registerCollisionTree(unsigned int id);

    AnimationList* getAnimationList() const { return mpAnimationList; }
    // Holds one reference, makes a sequencer for each entry and chooses no
    // animation.
    void setAnimationList(AnimationList* list);
    u32 getCurrentAnimation() const { return mCurrentAnimation; }
    // Starts the animation at the index from its first frame; the index
    // already current, or one without an animation, changes nothing.
    void setCurrentAnimation(u32 index);
    // Whole frame of the current animation, or kNoFrame.
    u32 getCurrentFrame() const;
    // Seeks and plays the current animation.
    void setCurrentFrame(u32 frame);
    sColor getColor() const { return mColor; }
    void setColor(sColor color) { mColor = color; }

    // The current animation's sequencer, or null.
    AnimSequencer* getCurrentSequencer() const;
    // Roots of the trees, for collision queries (sBBTreeNode::intersect).
    // Element kinds are eTrackType values and user data the track objects.
    sBBTreeNode const& getDrawTree() const { return mDrawTree; }
    sBBTreeNode const& getCollisionTree() const { return mCollisionTree; }

    DECLARE_TYPEINFO(UniqueTypeInfo<AnimationUnit>)

private:
    void deleteSequencers();
    void releasePools();
    // Pools sized by the sequencer's totals and both trees over its objects.
    void buildTrees(AnimSequencer* sequencer);
    static bool isEdited(AnimSequencer const* sequencer);
    static void buildBoundingBox(sBBTreeNode* draw, sBBTreeNode* collision, AnimSequencer* sequencer,
                                 sBBTreeNode* nodes, sBBTreeElement* elements);
    static void updateBoundingBoxTree(sBBTreeNode* node, AnimSequencer* sequencer, sMatrix const& parent);
    static void drawAnimation(DrawContext* context, AnimSequencer const* sequencer, sBBTreeNode const* node,
                              sAABB const& view, sColorF const& parent);
    static void drawCell(DrawContext* context, sBBTreeElement const& element, sColorF const& parent);
    static void drawGenerator(DrawContext* context, sBBTreeElement const& element, sColorF const& parent);

    AnimationList* mpAnimationList;
    Vector<AnimSequencer> mSequencers; // 64 after setAnimationList, null for empty indices
    u32 mCurrentAnimation;
    sColor mColor;
    u32 mDrawLevel; // sub-level of the draw key; nothing sets it
    sBBTreeNode mDrawTree;
    sBBTreeNode mCollisionTree;
    sBBTreeNode* mpNodePool;       // two per nested animation
    sBBTreeElement* mpElementPool; // one per cell, collision and generator
};
