// Type records: every reflected class owns one TypeInfo that gives it a name,
// a stable 32-bit id (the hash of the name), a parent and, for concrete
// classes, a factory. All records sit in one database that static
// initialisers fill before main, in any order: a record whose parent is not
// there yet is linked when the parent arrives. Written only during static
// initialisation, read-only afterwards, so reads take no lock.
#pragma once

#include "foundation/types.h"

class ObjectBase;

class TypeInfo {
public:
    enum eAttribute {
        eAttribute_Concrete = 0,  // can be created
        eAttribute_Abstract = 1,
        eAttribute_Singleton = 2,
    };

    static constexpr u32 DataBaseSize = 65536;
    static constexpr u32 NameBufferSize = 1048576;
    static constexpr u32 NoBase = 0xFFFFFFFFu;

    // Registers; parentName may be null for a root.
    TypeInfo(char const* name, char const* parentName, unsigned int attribute);
    virtual ObjectBase* newInstance() const { return nullptr; }
    // The first record destroyed at exit frees the database for all; no
    // look-up may run after static destruction has begun.
    virtual ~TypeInfo();

    TypeInfo(TypeInfo const&) = delete;
    TypeInfo& operator=(TypeInfo const&) = delete;

    // By hash, then the text is compared: a different name behind the same
    // id is fatal. Null when absent.
    static TypeInfo* find(char const* name);
    static TypeInfo* find(unsigned int id);
    // Database entry by position; no bounds test.
    static TypeInfo* getTypeInfo(unsigned int index) { return mpDataBase[index]; }
    static unsigned int getDataBaseSize();

    char const* getName() const { return mpName; }
    u32 getID() const { return mID; }
    TypeInfo* getBase() const { return mpBase; }
    // Head of the child chain, newest first, and the next sibling in it. The
    // order depends on the run of static initialisers.
    TypeInfo* getOffshoot() const { return mpOffshoot; }
    TypeInfo* getLoop() const { return mpLoop; }
    u32 getBaseID() const { return mBaseID; }
    u32 getAttribute() const { return mAttribute; }

    // Walks the parent chain from this record: a class is derived from itself.
    // An unknown target answers false.
    bool isDerivedFrom(TypeInfo const* type) const;
    bool isDerivedFrom(TypeInfo const& type) const { return isDerivedFrom(&type); }
    bool isDerivedFrom(unsigned int id) const;
    bool isDerivedFrom(char const* name) const;

private:
    void pushChild(TypeInfo* child);
    // find without the test for an empty database, for registration.
    static TypeInfo* lookUp(unsigned int id);

    u32 mID;
    char const* mpName;
    TypeInfo* mpBase;
    TypeInfo* mpOffshoot;
    TypeInfo* mpLoop;
    u32 mBaseID;
    u32 mAttribute;

    // Constant-initialised to null, so they are valid before any constructor.
    static TypeInfo** mpDataBase;
    static TypeInfo** mpDataBasePtr;
    static char* mpNameBuffer;
    static char* mpNameBufferPtr;
};

// The record of a concrete class: newInstance makes a T with its default
// constructor, through ObjectBase's operator new (the global heap).
template <typename T>
class UniqueTypeInfo : public TypeInfo {
public:
    UniqueTypeInfo(char const* name, char const* parentName) : TypeInfo(name, parentName, eAttribute_Concrete) {}
    ObjectBase* newInstance() const override { return new T(); }
};

// Registration. In the class body (leaves the access at public):
//   DECLARE_TYPEINFO(TypeInfo)             abstract and singleton classes
//   DECLARE_TYPEINFO(UniqueTypeInfo<Name>) concrete classes
// and once in the class's source file:
//   IMPLEMENT_TYPEINFO(Name, "Parent", TypeInfo::eAttribute_Abstract)
//   IMPLEMENT_OBJECT_TYPEINFO(Name, "Parent")
// The record is a static member, so each class has exactly one; the database
// copes with whichever initialiser runs first.
#define DECLARE_TYPEINFO(Record)                                                 \
public:                                                                          \
    static Record mUniqueTypeInfo;                                               \
    static TypeInfo const* getStaticTypeInfo() { return &mUniqueTypeInfo; }      \
    TypeInfo const* getTypeInfo() const override { return &mUniqueTypeInfo; }

#define IMPLEMENT_TYPEINFO(Class, parentName, attribute) \
    TypeInfo Class::mUniqueTypeInfo(#Class, parentName, attribute)

#define IMPLEMENT_OBJECT_TYPEINFO(Class, parentName) \
    UniqueTypeInfo<Class> Class::mUniqueTypeInfo(#Class, parentName)
