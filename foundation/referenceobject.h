// ReferenceObject: an intrusive, atomic reference count, 1 at birth. Any
// thread may add and drop references; the thread that drops the last one runs
// end(), which deletes the object unless a derived class decides otherwise
// (render objects defer their deletion, for example).
#pragma once

#include "foundation/multithread.h"
#include "reflection/objectbase.h"

class ReferenceObject : public ObjectBase {
public:
    ReferenceObject() : mRefCount(1) {}

    void addRef() { mRefCount.increment(); }
    // Fatal when the count was already 0; at the last reference calls end().
    void release();
    int getRefCount() const { return mRefCount.get(); }

    // Called once the count reaches 0. Defined here, not in the source file:
    // with no out-of-line virtual function the class has no key function,
    // so code built with type information (tests) can derive from it too.
    virtual void end() { delete this; }

protected:
    ~ReferenceObject() override {}

private:
    Atomic mRefCount;
};
