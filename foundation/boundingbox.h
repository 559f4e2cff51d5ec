// Collision shapes for 2D units, all in sFixed: axis-aligned boxes, oriented
// boxes and a tree of nodes and elements that a unit builds from its collision
// cells and tests against another unit's tree. Plain values; a tree belongs to
// one unit and is used by one thread at a time.
#pragma once

#include "foundation/types.h"

struct sOBB;

struct sAABB {
    sFixed left;
    sFixed top;
    sFixed right;
    sFixed bottom;

    sAABB() = default;
    constexpr sAABB(sFixed l, sFixed t, sFixed r, sFixed b) : left(l), top(t), right(r), bottom(b) {}
    constexpr sAABB(sVector const& min, sVector const& max) : left(min.x), top(min.y), right(max.x), bottom(max.y) {}

    // Half width and half height.
    sVector getExtent() const { return sVector((right - left) * sFixed::Half, (bottom - top) * sFixed::Half); }
    sVector getCenter() const { return sVector((left + right) * sFixed::Half, (top + bottom) * sFixed::Half); }

    // The smallest box holding both; the receiver does not change.
    sAABB merge(sAABB const& other) const;
    sAABB merge(sOBB const& other) const;

    // Edges included throughout: boxes sharing an edge intersect.
    bool intersect(sVector const& point) const
    {
        return left <= point.x && point.x <= right && top <= point.y && point.y <= bottom;
    }
    bool intersect(sAABB const& other) const
    {
        return left <= other.right && other.left <= right && top <= other.bottom && other.top <= bottom;
    }
    bool intersect(sOBB const& other) const;

    bool operator==(sAABB const& other) const
    {
        return left == other.left && top == other.top && right == other.right && bottom == other.bottom;
    }
    bool operator!=(sAABB const& other) const { return !(*this == other); }

    static const sAABB Zero;
    static const sAABB Identity;
};

inline constexpr sAABB sAABB::Zero = sAABB(sFixed::Zero, sFixed::Zero, sFixed::Zero, sFixed::Zero);
inline constexpr sAABB sAABB::Identity = sAABB(-sFixed::One, -sFixed::One, sFixed::One, sFixed::One);

// A box around mCenter along two direction vectors, with the half sizes along
// them in mExtent.
struct sOBB {
    sVector mCenter;
    sVector mAxisX;
    sVector mAxisY;
    sVector mExtent;

    constexpr sOBB() : mCenter(), mAxisX(), mAxisY(), mExtent() {}
    constexpr sOBB(sVector const& center, sVector const& axisX, sVector const& axisY, sVector const& extent)
        : mCenter(center), mAxisX(axisX), mAxisY(axisY), mExtent(extent)
    {
    }

    // All return a new box; the receiver does not change.
    sOBB rotate(sFixed degrees) const;
    sOBB scale(sVector const& factor) const { return sOBB(mCenter, mAxisX, mAxisY, mExtent * factor); }
    sOBB translate(sVector const& offset) const { return sOBB(mCenter + offset, mAxisX, mAxisY, mExtent); }
    // Unit axes; each extent grows by its axis's old length.
    sOBB normalize() const;

    sAABB getCircumscribedAABB() const;

    bool intersect(sVector const& point) const;
    bool intersect(sOBB const& other) const { return intersect1(other) && other.intersect1(*this); }
    bool intersect(sAABB const& other) const { return other.intersect(*this); }
    // Half of a separating-axis test: the receiver's axes against the other
    // box's projection. The receiver's own extent is deliberately not added;
    // intersect() runs it in both directions.
    bool intersect1(sOBB const& other) const;

    static const sOBB Zero;
    static const sOBB Identity;
};

inline constexpr sOBB sOBB::Zero = sOBB();
inline constexpr sOBB sOBB::Identity = sOBB(sVector(sFixed::Zero, sFixed::Zero), sVector(sFixed::One, sFixed::Zero),
                                            sVector(sFixed::Zero, sFixed::One), sVector(sFixed::One, sFixed::One));

struct sBBTreeElement {
    sBBTreeElement* mpNext;
    sAABB mAABB; // the box around mOBB, made by sBBTreeNode::update
    sOBB mOBB;   // the shape
    // Owner's data: what the element stands for.
    u32 mKind;
    void* mpUserData;
};

struct sBBTreeNode;

struct sBBTreeIntersection {
    sBBTreeNode* mpLeftNode;
    sBBTreeNode* mpRightNode;
    sBBTreeElement* mpLeftElement;
    sBBTreeElement* mpRightElement;
};

// Receives each pair found by sBBTreeNode::intersect.
template <typename T>
class BBTreeNotifyBase {
public:
    virtual ~BBTreeNotifyBase() {}
    virtual void notify(T& intersection, void* user) = 0;
};

struct sBBTreeNode {
    sBBTreeNode* mpNext; // next sibling
    sBBTreeNode* mpFirstNode;
    sBBTreeNode* mpLastNode;
    sBBTreeElement* mpFirstElement;
    sBBTreeElement* mpLastElement;
    // Owner's data: what the node stands for.
    u32 mKind;
    void* mpUserData;
    sAABB mAABB;

    // Append; the new item's mpNext is cleared.
    void addNode(sBBTreeNode* node);
    void addElement(sBBTreeElement* element);
    // Links and user data to zero, the box to sAABB::Zero.
    void clear();
    // Sets every element's box around its shape. The node boxes are merged
    // without keeping the result, so they stay sAABB::Zero and the node test
    // in intersect() passes for any two updated nodes; the element boxes
    // carry the information. Deliberate: collision results depend on it.
    void update();

    // Calls notify for each pair of elements, one from each tree, whose boxes
    // and shapes intersect. A pair in sub-trees may be reported once per path
    // that reaches it.
    void intersect(sBBTreeNode* right, BBTreeNotifyBase<sBBTreeIntersection>* notify, void* user);
    // The same on element boxes alone: a cheap estimate.
    void intersectEst(sBBTreeNode* right, BBTreeNotifyBase<sBBTreeIntersection>* notify, void* user);

private:
    template <bool Exact>
    void intersectTree(sBBTreeNode* right, BBTreeNotifyBase<sBBTreeIntersection>* notify, void* user);
};
