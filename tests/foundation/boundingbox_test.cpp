#include <gtest/gtest.h>

#include <vector>

#include "foundation/boundingbox.h"
#include "foundation/fixedmath.h"

namespace {

sVector v(float x, float y)
{
    return sVector(sFixed(x), sFixed(y));
}

sOBB box(float cx, float cy, float ex, float ey)
{
    return sOBB(v(cx, cy), v(1, 0), v(0, 1), v(ex, ey));
}

struct Recorder : public BBTreeNotifyBase<sBBTreeIntersection> {
    void notify(sBBTreeIntersection& intersection, void* user) override
    {
        mPairs.push_back(intersection);
        mpUser = user;
    }
    std::vector<sBBTreeIntersection> mPairs;
    void* mpUser = nullptr;
};

class BoundingBox : public testing::Test {
protected:
    void SetUp() override { TrigonometricalFunction::initialize(); }
};

sBBTreeNode makeNode()
{
    sBBTreeNode node;
    node.mKind = 7;
    node.clear();
    return node;
}

sBBTreeElement makeElement(sOBB const& shape)
{
    sBBTreeElement element = {};
    element.mOBB = shape;
    return element;
}

} // namespace

TEST_F(BoundingBox, BoxesIncludeTheirRimsAndTransformsKeepTheShape)
{
    sAABB a(v(0, 0), v(2, 2));
    EXPECT_TRUE(a.intersect(sAABB(v(2, 2), v(3, 3))));
    EXPECT_FALSE(a.intersect(sAABB(v(2.01f, 0), v(4, 2))));
    EXPECT_EQ(a.merge(sAABB(v(-1, 1), v(1, 5))), sAABB(v(-1, 0), v(2, 5)));
    EXPECT_EQ(a.merge(box(5, 5, 1, 1)), sAABB(v(0, 0), v(6, 6)));

    sAABB around = sOBB::Identity.rotate(sFixed(45, 16)).getCircumscribedAABB();
    EXPECT_NEAR(static_cast<float>(around.right), 1.41421f, 1e-3f);
    EXPECT_NEAR(static_cast<float>(around.top), -1.41421f, 1e-3f);
    sOBB moved = sOBB::Identity.translate(v(3, 4)).scale(v(2, 0.5f));
    EXPECT_EQ(moved.getCircumscribedAABB(), sAABB(v(1, 3.5f), v(5, 4.5f)));
    EXPECT_FALSE(moved.intersect(v(5, 4.6f)));
    sOBB unit = sOBB(v(0, 0), v(2, 0), v(0, 4), v(1, 1)).normalize();
    EXPECT_EQ(unit.mAxisY, v(0, 1));
    EXPECT_EQ(unit.mExtent, v(2, 4));
}

TEST_F(BoundingBox, OrientedBoxesSeparateOnTheirAxes)
{
    EXPECT_TRUE(box(0, 0, 1, 1).intersect(box(0.9f, 0, 1, 1)));
    EXPECT_TRUE(box(0, 0, 1, 1).intersect(box(1, 1, 1, 1)));
    // The receiver's extent is not added: each centre must lie within the
    // other box's projection, so boxes that overlap only at their rims do
    // not count.
    EXPECT_FALSE(box(0, 0, 1, 1).intersect(box(1.5f, 0, 1, 1)));
    EXPECT_TRUE(box(0, 0, 1, 1).intersect1(box(1.5f, 0, 2, 1)));
    EXPECT_FALSE(box(1.5f, 0, 2, 1).intersect1(box(0, 0, 1, 1)));
    EXPECT_FALSE(box(0, 0, 1, 1).intersect(box(1.5f, 0, 2, 1)));
    // A diamond whose corner box touches a square but whose shape does not.
    sOBB diamond = sOBB(v(2.9f, 2.9f), v(0.70710678f, 0.70710678f), v(-0.70710678f, 0.70710678f), v(1, 1));
    sAABB square(v(0, 0), v(2, 2));
    EXPECT_TRUE(square.intersect(diamond.getCircumscribedAABB()));
    EXPECT_FALSE(square.intersect(diamond));
    EXPECT_FALSE(diamond.intersect(square));
    EXPECT_TRUE(square.intersect(diamond.translate(v(-0.5f, -0.5f))));
}

TEST_F(BoundingBox, OneElementTreesNotifyOncePerOverlap)
{
    sBBTreeNode left = makeNode();
    sBBTreeNode right = makeNode();
    sBBTreeElement a = makeElement(box(10, 10, 1, 1));
    sBBTreeElement b = makeElement(box(11, 10, 1, 1));
    left.addElement(&a);
    right.addElement(&b);
    auto count = [&](bool exact) {
        left.update();
        right.update();
        Recorder recorder;
        int user = 0;
        exact ? left.intersect(&right, &recorder, &user) : left.intersectEst(&right, &recorder, &user);
        for (sBBTreeIntersection const& pair : recorder.mPairs) {
            EXPECT_EQ(pair.mpLeftElement, &a);
            EXPECT_EQ(pair.mpRightElement, &b);
            EXPECT_EQ(recorder.mpUser, &user);
        }
        return recorder.mPairs.size();
    };
    EXPECT_EQ(count(true), 1u);
    b.mOBB = box(20, 10, 1, 1);
    EXPECT_EQ(count(true), 0u);
    EXPECT_EQ(count(false), 0u);
    // Element boxes overlap, shapes do not: only the estimate reports it.
    a.mOBB = sOBB(v(0, 0), v(0.70710678f, 0.70710678f), v(-0.70710678f, 0.70710678f), v(1, 1));
    b.mOBB = box(2.3f, 2.3f, 1, 1);
    EXPECT_EQ(count(true), 0u);
    EXPECT_EQ(count(false), 1u);
}

TEST_F(BoundingBox, APairInSubTreesIsReportedOncePerPath)
{
    sBBTreeNode left = makeNode();
    sBBTreeNode leftChild = makeNode();
    sBBTreeNode right = makeNode();
    sBBTreeNode rightChild = makeNode();
    sBBTreeElement a = makeElement(box(0, 0, 1, 1));
    sBBTreeElement b = makeElement(box(1, 0, 2, 1));
    left.addNode(&leftChild);
    leftChild.addElement(&a);
    right.addNode(&rightChild);
    rightChild.addElement(&b);
    EXPECT_EQ(left.mKind, 0u); // clear() resets the kind
    left.update();
    right.update();
    // Update fills the element boxes; node boxes stay zero.
    EXPECT_EQ(b.mAABB, sAABB(v(-1, -1), v(3, 1)));
    EXPECT_EQ(left.mAABB, sAABB::Zero);
    EXPECT_EQ(leftChild.mAABB, sAABB::Zero);
    Recorder recorder;
    left.intersect(&right, &recorder, nullptr);
    // Reached through left x rightChild and through leftChild x right.
    ASSERT_EQ(recorder.mPairs.size(), 2u);
    for (sBBTreeIntersection const& pair : recorder.mPairs) {
        EXPECT_EQ(pair.mpLeftNode, &leftChild);
        EXPECT_EQ(pair.mpRightNode, &rightChild);
    }
}
