#include "reflection/typeinfo.h"

#include <cstring>

#include "foundation/debug.h"
#include "foundation/utils.h"

TypeInfo** TypeInfo::mpDataBase = nullptr;
TypeInfo** TypeInfo::mpDataBasePtr = nullptr;
char* TypeInfo::mpNameBuffer = nullptr;
char* TypeInfo::mpNameBufferPtr = nullptr;

TypeInfo::TypeInfo(char const* name, char const* parentName, unsigned int attribute)
    : mID(0), mpName(nullptr), mpBase(nullptr), mpOffshoot(nullptr), mpLoop(nullptr), mBaseID(NoBase), mAttribute(0)
{
    // The first record of the run makes both stores; allocators may not
    // exist yet, so plain array new.
    if (mpDataBase == nullptr) {
        mpDataBase = new TypeInfo*[DataBaseSize];
        mpDataBasePtr = mpDataBase;
    }
    if (mpNameBuffer == nullptr) {
        mpNameBuffer = new char[NameBufferSize];
        mpNameBufferPtr = mpNameBuffer;
    }
    if (getDataBaseSize() >= DataBaseSize) {
        dev_assert("TypeInfo database overflow.", __FILE__, __LINE__);
    }
    size_t const length = strlen(name);
    if (static_cast<size_t>(mpNameBufferPtr - mpNameBuffer) + length + 1 >= NameBufferSize) {
        dev_assert("TypeInfo name buffer overflow.", __FILE__, __LINE__);
    }

    mID = Utils::hash(name);
    for (TypeInfo** entry = mpDataBase; entry != mpDataBasePtr; ++entry) {
        if ((*entry)->mID == mID) {
            dev_assert("TypeInfo collision detected.", __FILE__, __LINE__);
        }
    }

    if (parentName != nullptr) {
        mpBase = lookUp(Utils::hash(parentName));
        if (mpBase != nullptr && strcmp(mpBase->mpName, parentName) != 0) {
            dev_assert("TypeInfo Collision detected.", __FILE__, __LINE__);
        }
        if (mpBase != nullptr) {
            mBaseID = mpBase->mID;
            mpBase->pushChild(this);
        } else {
            // The parent's initialiser has not run yet: it links us on arrival.
            mBaseID = Utils::hash(parentName);
        }
    }

    // Records that arrived before us and wait for us as their parent.
    for (TypeInfo** entry = mpDataBase; entry != mpDataBasePtr; ++entry) {
        TypeInfo* waiting = *entry;
        if (waiting->mBaseID != mID) {
            continue;
        }
        if (waiting->mpBase != nullptr) {
            dev_assert("TypeInfo Collision detected.", __FILE__, __LINE__);
        }
        waiting->mpBase = this;
        pushChild(waiting);
    }

    *mpDataBasePtr++ = this;
    memcpy(mpNameBufferPtr, name, length + 1);
    mpName = mpNameBufferPtr;
    mpNameBufferPtr += length + 1;
    mAttribute = attribute;
}

TypeInfo::~TypeInfo()
{
    delete[] mpDataBase;
    mpDataBase = nullptr;
    mpDataBasePtr = nullptr;
    delete[] mpNameBuffer;
    mpNameBuffer = nullptr;
    mpNameBufferPtr = nullptr;
}

void TypeInfo::pushChild(TypeInfo* child)
{
    child->mpLoop = mpOffshoot;
    mpOffshoot = child;
}

unsigned int TypeInfo::getDataBaseSize()
{
    return static_cast<unsigned int>(mpDataBasePtr - mpDataBase);
}

TypeInfo* TypeInfo::lookUp(unsigned int id)
{
    for (TypeInfo** entry = mpDataBase; entry != mpDataBasePtr; ++entry) {
        if ((*entry)->mID == id) {
            return *entry;
        }
    }
    return nullptr;
}

TypeInfo* TypeInfo::find(unsigned int id)
{
    if (mpDataBase == nullptr || mpDataBasePtr == mpDataBase) {
        dev_assert("Database is not constructed.", __FILE__, __LINE__);
    }
    return lookUp(id);
}

TypeInfo* TypeInfo::find(char const* name)
{
    if (name == nullptr) {
        return nullptr;
    }
    TypeInfo* type = find(Utils::hash(name));
    if (type != nullptr && strcmp(type->mpName, name) != 0) {
        dev_assert("TypeInfo Collision detected.", __FILE__, __LINE__);
    }
    return type;
}

bool TypeInfo::isDerivedFrom(TypeInfo const* type) const
{
    if (type == nullptr) {
        return false;
    }
    for (TypeInfo const* walk = this; walk != nullptr; walk = walk->mpBase) {
        if (walk == type) {
            return true;
        }
    }
    return false;
}

bool TypeInfo::isDerivedFrom(unsigned int id) const
{
    return isDerivedFrom(find(id));
}

bool TypeInfo::isDerivedFrom(char const* name) const
{
    return isDerivedFrom(find(name));
}
