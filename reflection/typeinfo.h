// Type records: a name, a stable id and a parent for every reflected class.
// Minimal form for the frame spine (names only); the full record database with
// ids, child chains and factories replaces it.
#pragma once

#include "foundation/types.h"

class ObjectBase;

class TypeInfo {
public:
    TypeInfo(char const* name, char const* parentName, unsigned int attribute)
        : mpName(name), mpParentName(parentName), mAttribute(attribute)
    {
    }
    virtual ObjectBase* newInstance() const { return nullptr; }
    virtual ~TypeInfo() {}

    char const* getName() const { return mpName; }
    unsigned int getAttribute() const { return mAttribute; }

private:
    char const* mpName;
    char const* mpParentName;
    unsigned int mAttribute;
};
