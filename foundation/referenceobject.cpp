#include "foundation/referenceobject.h"

#include "foundation/debug.h"

void ReferenceObject::release()
{
    int old = mRefCount.decrement();
    if (old == 0) {
        dev_assert("Reference counter underflow.", __FILE__, __LINE__);
    }
    if (old == 1) {
        end();
    }
}
