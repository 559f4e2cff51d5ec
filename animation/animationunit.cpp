// Index
//   [SECTION] Life and reflection
//   [SECTION] Animations and frames
//   [SECTION] Trees: building and placing
//   [SECTION] Drawing
#include "animation/animationunit.h"

#include <cstring>

#include "animation/animation.h"
#include "animation/animationlist.h"
#include "animation/animsequencer.h"
#include "foundation/debug.h"
#include "foundation/fixedmath.h"
#include "foundation/utils.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "render/drawcontext.h"
#include "resource/textureresource.h"
#include "sequencer/sequencerresource.h"

IMPLEMENT_OBJECT_TYPEINFO(AnimationUnit, "CoordinateUnit");

namespace {

// The level of every animation unit's draw key; the unit's own draw level
// goes into the sub-level.
u32 const kDrawLevel = 8192;

// Particle quads per vertex allocation: a context takes at most 16,384
// bytes at once, 204 quads of textured vertices.
u32 const kParticleRun = 128;

sVector toVector(sPoint const& point)
{
    return sVector(sFixed(point.x, 16), sFixed(point.y, 16));
}

// Half of each side in whole pixels: an odd side loses half a pixel.
sVector halfSize(sSize const& size)
{
    return sVector(sFixed(static_cast<int>(size.width / 2), 16), sFixed(static_cast<int>(size.height / 2), 16));
}

bool isExactly(ObjectBase const* object, TypeInfo const* type)
{
    return object != nullptr && object->getTypeInfo() == type;
}

// The primitives' blend modes in the renderer's numbering; 3 is none.
bool selectBlend(DrawContext* context, u32 mode)
{
    if (mode > 2) {
        return false;
    }
    context->setBlendMode(static_cast<eBlendMode>(mode + 1));
    return true;
}

} // namespace

// ---------------------------------------------------------------------------
// [SECTION] Life and reflection

AnimationUnit::AnimationUnit()
    : mpAnimationList(nullptr), mCurrentAnimation(kNoAnimation), mColor(sColor::White), mDrawLevel(0),
      mpNodePool(nullptr), mpElementPool(nullptr)
{
    mDrawTree.clear();
    mCollisionTree.clear();
}

AnimationUnit::~AnimationUnit()
{
    releasePools();
    deleteSequencers();
    if (mpAnimationList != nullptr) {
        mpAnimationList->release();
        mpAnimationList = nullptr;
    }
}

void AnimationUnit::makePropertyList(PropertyList& list)
{
    CoordinateUnit::makePropertyList(list);
    list.add(new IndirectResourceProperty("AnimationList", AnimationList::getStaticTypeInfo(), this,
                                          &AnimationUnit::getAnimationList, &AnimationUnit::setAnimationList));
    list.add(new ReferenceProperty<sColor>("Color", &mColor));
    list.add(new IndirectProperty<u32>("CurrentAnimation", this, &AnimationUnit::getCurrentAnimation,
                                       &AnimationUnit::setCurrentAnimation));
}

void AnimationUnit::makeControlList(List<ControlBase>& list)
{
    CoordinateUnit::makeControlList(list);
    TypeInfo const* type = AnimationList::getStaticTypeInfo();
    list.addLast(new PropertyControl(new IndirectResourceProperty("AnimationList", type, this,
                                                                  &AnimationUnit::getAnimationList,
                                                                  &AnimationUnit::setAnimationList),
                                     type));
    list.addLast(new PropertyControl(new ReferenceProperty<sColor>("Color", &mColor)));
    list.addLast(new PropertyControl(new IndirectProperty<u32>("CurrentAnimation", this,
                                                               &AnimationUnit::getCurrentAnimation,
                                                               &AnimationUnit::setCurrentAnimation)));
}

void AnimationUnit::makeUIList(List<UIBase>& list)
{
    ObjectBase::makeUIList(list);
    PropertyControl* control = new PropertyControl(
        new IndirectProperty<u32>("CurrentFrame", this, &AnimationUnit::getCurrentFrame, &AnimationUnit::setCurrentFrame),
        0u, 65535u);
    if (UIBase* widget = Utils::makeUIFromControl(control)) {
        list.addLast(widget);
    }
    delete control;
}

void AnimationUnit::registerCollisionTree(unsigned int)
{
}

void AnimationUnit::deleteSequencers()
{
    for (u32 i = 0; i < mSequencers.size(); ++i) {
        delete mSequencers[i];
    }
    mSequencers.clear();
}

void AnimationUnit::releasePools()
{
    UnitBase::deallocate(mpNodePool);
    UnitBase::deallocate(mpElementPool);
    mpNodePool = nullptr;
    mpElementPool = nullptr;
    mDrawTree.clear();
    mCollisionTree.clear();
}

// ---------------------------------------------------------------------------
// [SECTION] Animations and frames

void AnimationUnit::setAnimationList(AnimationList* list)
{
    // The new reference first: the old list may be the last holder of it.
    if (list != nullptr) {
        list->addRef();
    }
    if (mpAnimationList != nullptr) {
        mpAnimationList->release();
    }
    // The trees point into the sequencers about to go.
    releasePools();
    deleteSequencers();
    mCurrentAnimation = kNoAnimation;
    mpAnimationList = list;
    if (list == nullptr) {
        return;
    }
    mSequencers.reserve(AnimationList::kAnimationMax);
    for (u32 i = 0; i < AnimationList::kAnimationMax; ++i) {
        AnimSequencer* sequencer = nullptr;
        if (SequencerResource* animation = list->getAnimation(i)) {
            sequencer = new AnimSequencer(nullptr);
            if (sequencer == nullptr) {
                dev_assert("Sequencer allocation failed.", __FILE__, __LINE__);
            }
            sequencer->setResource(animation);
        }
        mSequencers.addLast(sequencer);
    }
}

AnimSequencer* AnimationUnit::getCurrentSequencer() const
{
    return (mCurrentAnimation < mSequencers.size()) ? mSequencers[mCurrentAnimation] : nullptr;
}

void AnimationUnit::setCurrentAnimation(u32 index)
{
    if (index == mCurrentAnimation || mpAnimationList == nullptr || mpAnimationList->getAnimation(index) == nullptr ||
        index >= mSequencers.size()) {
        return;
    }
    if (AnimSequencer* old = getCurrentSequencer()) {
        old->stop();
    }
    mCurrentAnimation = index;
    AnimSequencer* sequencer = mSequencers[index];
    buildTrees(sequencer);
    if (sequencer == nullptr) {
        return;
    }
    sequencer->seek(0);
    sequencer->play();
}

void AnimationUnit::buildTrees(AnimSequencer* sequencer)
{
    releasePools();
    if (sequencer == nullptr) {
        return;
    }
    u32 const nodeNum = 2 * sequencer->getAnimSequencerNum();
    u32 const elementNum =
        sequencer->getAnimCellNum() + sequencer->getAnimCollisionNum() + sequencer->getAnimGeneratorNum();
    if (nodeNum != 0) {
        mpNodePool = static_cast<sBBTreeNode*>(UnitBase::allocate(nodeNum * sizeof(sBBTreeNode)));
        if (mpNodePool == nullptr) {
            dev_assert("Bounding box allocation failed.", __FILE__, __LINE__);
        }
        memset(static_cast<void*>(mpNodePool), 0, nodeNum * sizeof(sBBTreeNode));
    }
    if (elementNum != 0) {
        mpElementPool = static_cast<sBBTreeElement*>(UnitBase::allocate(elementNum * sizeof(sBBTreeElement)));
        if (mpElementPool == nullptr) {
            dev_assert("Bounding box allocation failed.", __FILE__, __LINE__);
        }
        memset(static_cast<void*>(mpElementPool), 0, elementNum * sizeof(sBBTreeElement));
    }
    buildBoundingBox(&mDrawTree, &mCollisionTree, sequencer, mpNodePool, mpElementPool);
}

// Whether playing will rebuild the objects of this animation or of one it
// nests: an edit marks the resource, and Sequencer::update then makes new
// objects, which the trees must not outlive.
bool AnimationUnit::isEdited(AnimSequencer const* sequencer)
{
    SequencerResource const* resource = sequencer->getResource();
    if (resource != nullptr && resource->isUpdated()) {
        return true;
    }
    if (sequencer->getAnimSequencerNum() == 0) {
        return false;
    }
    // Unedited, the objects are those the tracks were sorted over.
    Sequencer::sTrackData const* tracks = sequencer->getTrackArray();
    for (u32 t = 0; t < sequencer->getTrackNum(); ++t) {
        if (sequencer->getTrackType(t) == AnimSequencer::eTrackType_Sequencer &&
            isEdited(static_cast<AnimSequencer const*>(tracks[t].mpObject))) {
            return true;
        }
    }
    return false;
}

u32 AnimationUnit::getCurrentFrame() const
{
    AnimSequencer const* sequencer = (mpAnimationList != nullptr) ? getCurrentSequencer() : nullptr;
    return (sequencer != nullptr) ? static_cast<u32>(static_cast<int>(sequencer->getCurrentFrame())) : kNoFrame;
}

void AnimationUnit::setCurrentFrame(u32 frame)
{
    AnimSequencer* sequencer = (mpAnimationList != nullptr) ? getCurrentSequencer() : nullptr;
    if (sequencer != nullptr) {
        sequencer->seek(frame);
        sequencer->play();
    }
}

void AnimationUnit::update(float delta)
{
    CoordinateUnit::update(delta);
    AnimSequencer* sequencer = getCurrentSequencer();
    if (sequencer == nullptr) {
        return;
    }
    bool const edited = isEdited(sequencer);
    sequencer->update(delta);
    if (edited) {
        // Sorted again and the trees remade over the new objects, at the
        // frame where the edit found the animation.
        u32 const frame = static_cast<u32>(static_cast<int>(sequencer->getCurrentFrame()));
        bool const playing = sequencer->isPlaying();
        sequencer->setResource(sequencer->getResource());
        buildTrees(sequencer);
        sequencer->seek(frame);
        if (playing) {
            sequencer->play();
        }
    }
    sMatrix const matrix(getScale(), getOrientation(), getPosition());
    updateBoundingBoxTree(&mDrawTree, sequencer, matrix);
    // Sets each element's box around its shape; the node boxes stay zero.
    mDrawTree.update();
    mCollisionTree.update();
}

// ---------------------------------------------------------------------------
// [SECTION] Trees: building and placing
//
// The pools are sized by the sequencer's totals. The cursors go down the
// recursion by value, so that a nested animation's entries are taken again
// by the next sibling: sibling animations share pool entries, and so their
// boxes. Every link still points into the pools, and each append ends the
// list it joins, so the walks below always end.

void AnimationUnit::buildBoundingBox(sBBTreeNode* draw, sBBTreeNode* collision, AnimSequencer* sequencer,
                                     sBBTreeNode* nodes, sBBTreeElement* elements)
{
    Sequencer::sTrackData const* tracks = sequencer->getTrackArray();
    sBBTreeNode* taken = nullptr; // the draw node taken last
    for (u32 t = 0; t < sequencer->getTrackNum(); ++t) {
        u32 const type = sequencer->getTrackType(t);
        ObjectBase* object = tracks[t].mpObject;
        if (type >= AnimSequencer::eTrackType_Cell && type <= AnimSequencer::eTrackType_Generator) {
            sBBTreeElement* element = elements++;
            element->mKind = type;
            element->mpUserData = object;
            sBBTreeNode* node = (type == AnimSequencer::eTrackType_Collision) ? collision : draw;
            if (node != nullptr) {
                node->addElement(element);
            }
        } else if (type == AnimSequencer::eTrackType_Sequencer) {
            AnimSequencer* nested = static_cast<AnimSequencer*>(object);
            sBBTreeNode* drawNode = nullptr;
            sBBTreeNode* collisionNode = nullptr;
            if (nested->getAnimCellNum() != 0) {
                drawNode = taken = nodes++;
                drawNode->mKind = AnimSequencer::eTrackType_Sequencer;
                drawNode->mpUserData = nested;
                if (draw != nullptr) {
                    draw->addNode(drawNode);
                }
            }
            if (nested->getAnimCollisionNum() != 0) {
                collisionNode = nodes++;
                if (collision != nullptr) {
                    collision->addNode(collisionNode);
                }
                // Into the draw node taken last, not this one: a nested
                // animation with collisions is expected to have cells.
                if (taken != nullptr) {
                    taken->mKind = AnimSequencer::eTrackType_Sequencer;
                    taken->mpUserData = nested;
                }
            }
            buildBoundingBox(drawNode, collisionNode, nested, nodes, elements);
        }
    }
}

// Collisions write through a second cursor over the same element list as
// cells and generators, so a collision's box lands on the draw element of
// the same rank and the collision tree's own elements keep their first
// shape. Authored animations put their collision tracks first for that
// reason. An object whose class no longer matches its track type (after an
// edit that added or removed tracks) is skipped.
void AnimationUnit::updateBoundingBoxTree(sBBTreeNode* node, AnimSequencer* sequencer, sMatrix const& parent)
{
    sMatrix const local(sVector::One, sequencer->getOrientation(), toVector(sequencer->getPosition()));
    sMatrix const matrix = parent * local;
    sVector const unitX(sFixed::One, sFixed::Zero);
    sVector const unitY(sFixed::Zero, sFixed::One);
    sBBTreeElement* e = node->mpFirstElement;
    sBBTreeElement* f = node->mpFirstElement;
    sBBTreeNode* k = node->mpFirstNode;
    Sequencer::sTrackData const* tracks = sequencer->getTrackArray();
    for (u32 t = 0; t < sequencer->getTrackNum(); ++t) {
        ObjectBase const* object = tracks[t].mpObject;
        switch (sequencer->getTrackType(t)) {
        case AnimSequencer::eTrackType_Cell:
            if (e != nullptr) {
                if (isExactly(object, AnimCell::getStaticTypeInfo())) {
                    AnimCell const* cell = static_cast<AnimCell const*>(object);
                    bool const flip = (cell->getAttribute() & AnimCell::eAttribute_HFlip) != 0;
                    // A vertical flip picks the second form of the Y axis,
                    // (-0, 1): the same vector, so it changes nothing.
                    bool const vflip = (cell->getAttribute() & AnimCell::eAttribute_VFlip) != 0;
                    sVector const axisY = vflip ? sVector(-sFixed::Zero, sFixed::One) : unitY;
                    e->mOBB.mCenter = matrix.transform(toVector(cell->getPosition()));
                    e->mOBB.mAxisX = matrix.transformNormal(flip ? -unitX : unitX);
                    e->mOBB.mAxisY = matrix.transformNormal(axisY);
                    e->mOBB.mExtent = halfSize(cell->getSize());
                }
                e = e->mpNext;
            }
            break;
        case AnimSequencer::eTrackType_Collision:
            if (f != nullptr) {
                if (isExactly(object, AnimCollision::getStaticTypeInfo())) {
                    AnimCollision const* box = static_cast<AnimCollision const*>(object);
                    sOBB const shape(matrix.transform(toVector(box->getPosition())), matrix.transformNormal(unitX),
                                     matrix.transformNormal(unitY), halfSize(box->getSize()));
                    f->mOBB = shape.normalize();
                }
                f = f->mpNext;
            }
            break;
        case AnimSequencer::eTrackType_Generator:
            if (e != nullptr) {
                if (isExactly(object, AnimGenerator::getStaticTypeInfo())) {
                    sAABB const& box = static_cast<AnimGenerator const*>(object)->getBoundingBox();
                    e->mOBB = sOBB(matrix.transform(box.getCenter()), matrix.transformNormal(unitX),
                                   matrix.transformNormal(unitY), box.getExtent());
                }
                e = e->mpNext;
            }
            break;
        case AnimSequencer::eTrackType_Sequencer:
            if (k != nullptr) {
                if (isExactly(object, AnimSequencer::getStaticTypeInfo())) {
                    updateBoundingBoxTree(k, static_cast<AnimSequencer*>(const_cast<ObjectBase*>(object)), matrix);
                }
                k = k->mpNext;
            }
            break;
        default:
            break;
        }
    }
}

// ---------------------------------------------------------------------------
// [SECTION] Drawing

void AnimationUnit::draw(DrawContext* context) const
{
    AnimSequencer const* sequencer = getCurrentSequencer();
    if (sequencer == nullptr) {
        return;
    }
    context->setDrawLevel(kDrawLevel, mDrawLevel);
    context->setTextureFiltering(eTextureFiltering_Linear);
    context->setTextureCombineMode(eTextureCombineMode_Modulate);
    // Width and height stand as the far corner, with no origin added: the
    // box is the one the animations were authored against.
    sRect const& rect = context->getProjectionRect();
    sAABB const view(sVector(sFixed(rect.left, 16), sFixed(rect.top, 16)),
                     sVector(sFixed(static_cast<int>(rect.getWidth()), 16), sFixed(static_cast<int>(rect.getHeight()), 16)));
    // The root's box is zero, so this asks whether the view holds the origin.
    if (view.intersect(mDrawTree.mAABB)) {
        drawAnimation(context, sequencer, &mDrawTree, view, sColorF(mColor));
    }
}

void AnimationUnit::drawAnimation(DrawContext* context, AnimSequencer const* sequencer, sBBTreeNode const* node,
                                  sAABB const& view, sColorF const& parent)
{
    TextureResource const* resource = sequencer->getTexture();
    Texture* texture = (resource != nullptr) ? resource->getTexture() : nullptr;
    context->setTexture(texture);
    sColorF const color = sColorF(sequencer->getColor()) * parent;
    if (texture != nullptr) {
        context->setVertexDecl(eVertexDecl_Textured);
        for (sBBTreeElement const* element = node->mpFirstElement; element != nullptr; element = element->mpNext) {
            if (!view.intersect(element->mAABB)) {
                continue;
            }
            if (element->mKind == AnimSequencer::eTrackType_Cell &&
                isExactly(static_cast<ObjectBase const*>(element->mpUserData), AnimCell::getStaticTypeInfo())) {
                drawCell(context, *element, color);
            } else if (element->mKind == AnimSequencer::eTrackType_Generator &&
                       isExactly(static_cast<ObjectBase const*>(element->mpUserData),
                                 AnimGenerator::getStaticTypeInfo())) {
                drawGenerator(context, *element, color);
            }
        }
    }
    // Children after all elements, whatever their tracks' order.
    for (sBBTreeNode const* child = node->mpFirstNode; child != nullptr; child = child->mpNext) {
        if (child->mpUserData != nullptr && view.intersect(child->mAABB)) {
            drawAnimation(context, static_cast<AnimSequencer const*>(child->mpUserData), child, view, color);
        }
    }
}

void AnimationUnit::drawCell(DrawContext* context, sBBTreeElement const& element, sColorF const& parent)
{
    AnimCell const* cell = static_cast<AnimCell const*>(element.mpUserData);
    if ((cell->getAttribute() & AnimCell::eAttribute_Visible) == 0) {
        return;
    }
    selectBlend(context, cell->getBlendMode());
    DrawContext::sTexturedVertex* vertex =
        static_cast<DrawContext::sTexturedVertex*>(context->allocateVertices(ePrimitiveType_Quad, 4));
    if (vertex == nullptr) {
        return;
    }
    sOBB const& box = element.mOBB;
    sVector const ex = box.mAxisX * box.mExtent.x;
    sVector const ey = box.mAxisY * box.mExtent.y;
    sColor const color = sColorF(cell->getColor()) * parent;
    sTexcoord const uv = cell->getUV();
    u16 const u1 = static_cast<u16>(uv.x + cell->getSize().width);
    u16 const v1 = static_cast<u16>(uv.y + cell->getSize().height);
    // Strip order; a flipped cell keeps its texels and flips by its axes.
    vertex[0] = {box.mCenter - ex - ey, color, sTexcoord(uv.x, uv.y)};
    vertex[1] = {box.mCenter + ex - ey, color, sTexcoord(u1, uv.y)};
    vertex[2] = {box.mCenter - ex + ey, color, sTexcoord(uv.x, v1)};
    vertex[3] = {box.mCenter + ex + ey, color, sTexcoord(u1, v1)};
}

void AnimationUnit::drawGenerator(DrawContext* context, sBBTreeElement const& element, sColorF const& parent)
{
    AnimGenerator const* generator = static_cast<AnimGenerator const*>(element.mpUserData);
    selectBlend(context, generator->getBlendMode());
    sOBB const& box = element.mOBB;
    sVector const origin = box.mCenter - generator->getCenterOffset();
    // The axes scaled by the element's extent over the generator's box. The
    // generator's box is zero, and a zero extent leaves its axis unscaled:
    // what the ratio is when element and box have the same extent.
    sVector const extent = generator->getBoundingBox().getExtent();
    sVector const axisX = (extent.x != sFixed::Zero) ? box.mAxisX * (box.mExtent.x / extent.x) : box.mAxisX;
    sVector const axisY = (extent.y != sFixed::Zero) ? box.mAxisY * (box.mExtent.y / extent.y) : box.mAxisY;
    sColorF const base = sColorF(generator->getColor()) * parent;
    sColor const rgb = base;
    f32 const alpha = base.a * 255.0f;
    bool const upright = axisX == sVector(sFixed::One, sFixed::Zero) && axisY == sVector(sFixed::Zero, sFixed::One);
    // Quads of live particles in pool order, allocated a run at a time; the
    // result is the same as one allocation per quad, as they share a state.
    u32 const num = generator->getMaxParticleNum();
    u32 i = 0;
    while (i < num) {
        u32 run = 0;
        for (u32 j = i; j < num && run < kParticleRun; ++j) {
            AnimGenerator::sParticle const& particle = generator->getParticle(j);
            run += (particle.isAlive() && particle.getPhase() != 0) ? 1 : 0;
        }
        if (run == 0) {
            return;
        }
        DrawContext::sTexturedVertex* vertex =
            static_cast<DrawContext::sTexturedVertex*>(context->allocateVertices(ePrimitiveType_Quad, run * 4));
        if (vertex == nullptr) {
            return;
        }
        for (; run != 0; ++i) {
            AnimGenerator::sParticle const& particle = generator->getParticle(i);
            // Newborns wait for their first update.
            if (!particle.isAlive() || particle.getPhase() == 0) {
                continue;
            }
            --run;
            sFixed left, top, right, bottom;
            particle.getQuad(left, top, right, bottom);
            sColor const color(rgb.r, rgb.g, rgb.b, static_cast<u8>(particle.mOpacity * alpha));
            u16 const u0 = particle.mUV.x;
            u16 const v0 = particle.mUV.y;
            u16 const u1 = static_cast<u16>(u0 + particle.mSize.width);
            u16 const v1 = static_cast<u16>(v0 + particle.mSize.height);
            if (upright) {
                // The same sums without the products by unit axes.
                sFixed const x0 = origin.x + left;
                sFixed const x1 = origin.x + right;
                sFixed const y0 = origin.y + top;
                sFixed const y1 = origin.y + bottom;
                vertex[0] = {sVector(x0, y0), color, sTexcoord(u0, v0)};
                vertex[1] = {sVector(x1, y0), color, sTexcoord(u1, v0)};
                vertex[2] = {sVector(x0, y1), color, sTexcoord(u0, v1)};
                vertex[3] = {sVector(x1, y1), color, sTexcoord(u1, v1)};
            } else {
                sVector const xLeft = axisX * left;
                sVector const xRight = axisX * right;
                sVector const yTop = axisY * top;
                sVector const yBottom = axisY * bottom;
                vertex[0] = {origin + xLeft + yTop, color, sTexcoord(u0, v0)};
                vertex[1] = {origin + xRight + yTop, color, sTexcoord(u1, v0)};
                vertex[2] = {origin + xLeft + yBottom, color, sTexcoord(u0, v1)};
                vertex[3] = {origin + xRight + yBottom, color, sTexcoord(u1, v1)};
            }
            vertex += 4;
        }
    }
}
