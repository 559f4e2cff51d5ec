#include "foundation/boundingbox.h"

#include "foundation/fixedmath.h"

// ---------------------------------------------------------------------------
// sAABB

sAABB sAABB::merge(sAABB const& other) const
{
    return sAABB(minimum(left, other.left), minimum(top, other.top), maximum(right, other.right),
                 maximum(bottom, other.bottom));
}

sAABB sAABB::merge(sOBB const& other) const
{
    return merge(other.getCircumscribedAABB());
}

bool sAABB::intersect(sOBB const& other) const
{
    if (!intersect(other.getCircumscribedAABB())) {
        return false;
    }
    sVector d = getCenter() - other.mCenter;
    sVector e = getExtent();
    sVector const* axes[2] = {&other.mAxisX, &other.mAxisY};
    sFixed const extents[2] = {other.mExtent.x, other.mExtent.y};
    for (int i = 0; i < 2; ++i) {
        sVector const& axis = *axes[i];
        sFixed r = (axis.y * e.y).abs() + (axis.x * e.x).abs() + extents[i];
        if (r < axis.dot(d).abs()) {
            return false;
        }
    }
    return true;
}

// ---------------------------------------------------------------------------
// sOBB

sOBB sOBB::rotate(sFixed degrees) const
{
    sFixed c = TrigonometricalFunction::getCos(degrees);
    sFixed s = TrigonometricalFunction::getSin(degrees);
    sVector axisX(c * mAxisX.x - s * mAxisX.y, s * mAxisX.x + c * mAxisX.y);
    sVector axisY(c * mAxisY.x - s * mAxisY.y, s * mAxisY.x + c * mAxisY.y);
    return sOBB(mCenter, axisX, axisY, mExtent);
}

sOBB sOBB::normalize() const
{
    sFixed lengthX(mAxisX.length());
    sFixed lengthY(mAxisY.length());
    return sOBB(mCenter, mAxisX.normalize(), mAxisY.normalize(), sVector(lengthX * mExtent.x, lengthY * mExtent.y));
}

sAABB sOBB::getCircumscribedAABB() const
{
    sFixed halfWidth = (mAxisY.x * mExtent.y).abs() + (mAxisX.x * mExtent.x).abs();
    sFixed halfHeight = (mAxisY.y * mExtent.y).abs() + (mAxisX.y * mExtent.x).abs();
    sVector half(halfWidth, halfHeight);
    return sAABB(mCenter - half, mCenter + half);
}

bool sOBB::intersect(sVector const& point) const
{
    sVector d = point - mCenter;
    return mAxisX.dot(d).abs() <= mExtent.x && mAxisY.dot(d).abs() <= mExtent.y;
}

bool sOBB::intersect1(sOBB const& other) const
{
    sVector d = mCenter - other.mCenter;
    sVector const* axes[2] = {&mAxisX, &mAxisY};
    for (sVector const* axis : axes) {
        sFixed r = axis->dot(other.mAxisY).abs() * other.mExtent.y + axis->dot(other.mAxisX).abs() * other.mExtent.x;
        if (r < axis->dot(d).abs()) {
            return false;
        }
    }
    return true;
}

// ---------------------------------------------------------------------------
// sBBTreeNode

void sBBTreeNode::addNode(sBBTreeNode* node)
{
    node->mpNext = nullptr;
    if (mpLastNode != nullptr) {
        mpLastNode->mpNext = node;
    } else {
        mpFirstNode = node;
    }
    mpLastNode = node;
}

void sBBTreeNode::addElement(sBBTreeElement* element)
{
    element->mpNext = nullptr;
    if (mpLastElement != nullptr) {
        mpLastElement->mpNext = element;
    } else {
        mpFirstElement = element;
    }
    mpLastElement = element;
}

void sBBTreeNode::clear()
{
    mpNext = nullptr;
    mpFirstNode = nullptr;
    mpLastNode = nullptr;
    mpFirstElement = nullptr;
    mpLastElement = nullptr;
    mKind = 0;
    mpUserData = nullptr;
    mAABB = sAABB::Zero;
}

void sBBTreeNode::update()
{
    mAABB = sAABB::Zero;
    for (sBBTreeElement* element = mpFirstElement; element != nullptr; element = element->mpNext) {
        element->mAABB = element->mOBB.getCircumscribedAABB();
        // The union is dropped on purpose: node boxes stay Zero (see header).
        (void)mAABB.merge(element->mAABB);
    }
    for (sBBTreeNode* child = mpFirstNode; child != nullptr; child = child->mpNext) {
        child->update();
        (void)mAABB.merge(child->mAABB);
    }
}

template <bool Exact>
void sBBTreeNode::intersectTree(sBBTreeNode* right, BBTreeNotifyBase<sBBTreeIntersection>* notify, void* user)
{
    if (!mAABB.intersect(right->mAABB)) {
        return;
    }
    for (sBBTreeElement* a = mpFirstElement; a != nullptr; a = a->mpNext) {
        for (sBBTreeElement* b = right->mpFirstElement; b != nullptr; b = b->mpNext) {
            if (!a->mAABB.intersect(b->mAABB)) {
                continue;
            }
            if (Exact && !a->mOBB.intersect(b->mOBB)) {
                continue;
            }
            sBBTreeIntersection intersection = {this, right, a, b};
            notify->notify(intersection, user);
        }
    }
    for (sBBTreeNode* child = right->mpFirstNode; child != nullptr; child = child->mpNext) {
        intersectTree<Exact>(child, notify, user);
    }
    for (sBBTreeNode* child = mpFirstNode; child != nullptr; child = child->mpNext) {
        child->intersectTree<Exact>(right, notify, user);
    }
}

void sBBTreeNode::intersect(sBBTreeNode* right, BBTreeNotifyBase<sBBTreeIntersection>* notify, void* user)
{
    intersectTree<true>(right, notify, user);
}

void sBBTreeNode::intersectEst(sBBTreeNode* right, BBTreeNotifyBase<sBBTreeIntersection>* notify, void* user)
{
    intersectTree<false>(right, notify, user);
}
