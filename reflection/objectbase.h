// ObjectBase: root of every reflected class. Minimal form for the frame spine;
// the full base with properties, controls and XML persistence replaces it.
#pragma once

#include "reflection/typeinfo.h"

class ObjectBase {
public:
    virtual ~ObjectBase() {}
    virtual TypeInfo const* getTypeInfo() const { return &mUniqueTypeInfo; }

    static TypeInfo mUniqueTypeInfo;
};
