// Type records: the database as static initialisers leave it, records that
// arrive before their parents, child chains, look-ups and both collision
// checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <new>
#include <vector>

#include "app/system.h"
#include "app/systemmanager.h"
#include "foundation/utils.h"
#include "reflectiontest.h"

namespace {

// Records made by tests live in static storage and are never destroyed: the
// destructor of any record frees the whole database, which is for exit only.
TypeInfo* makeRecord(char const* name, char const* parentName, unsigned int attribute)
{
    alignas(TypeInfo) static unsigned char storage[16][sizeof(TypeInfo)];
    static unsigned int used = 0;
    if (used == 16) {
        ADD_FAILURE() << "more test records than storage";
        return nullptr;
    }
    return new (storage[used++]) TypeInfo(name, parentName, attribute);
}

std::vector<TypeInfo*> children(TypeInfo const* parent)
{
    std::vector<TypeInfo*> result;
    for (TypeInfo* child = parent->getOffshoot(); child != nullptr; child = child->getLoop()) {
        result.push_back(child);
    }
    return result;
}

// Each instance of a class template is a class of its own.
template <typename T>
class SampleKey : public ObjectBase {
public:
    T mParameter = T();
    DECLARE_TYPEINFO(UniqueTypeInfo<SampleKey<T>>)
};

} // namespace

IMPLEMENT_TEMPLATE_OBJECT_TYPEINFO(SampleKey<bool>, "SampleKey<bool>", "ObjectBase");
IMPLEMENT_TEMPLATE_OBJECT_TYPEINFO(SampleKey<s32>, "SampleKey<s32>", "ObjectBase");

TEST(TypeInfo, TheRootAndTheStaticRecordsFormOneTree)
{
    EXPECT_EQ(nullptr, ObjectBase::getStaticTypeInfo()->newInstance()) << "the root makes nothing";
    // Every record is in the database and reachable from its parent's chain.
    unsigned int const size = TypeInfo::getDataBaseSize();
    ASSERT_GE(size, 6u);
    for (unsigned int i = 0; i < size; ++i) {
        TypeInfo* type = TypeInfo::getTypeInfo(i);
        EXPECT_EQ(type, TypeInfo::find(type->getName()));
        if (type->getBase() != nullptr) {
            std::vector<TypeInfo*> siblings = children(type->getBase());
            EXPECT_NE(siblings.end(), std::find(siblings.begin(), siblings.end(), type)) << type->getName();
        }
    }
}

TEST(TypeInfo, ConcreteRecordsMakeTheirClassAbstractAndSingletonOnesNothing)
{
    ObjectBase* list = ObjectList::getStaticTypeInfo()->newInstance();
    ASSERT_NE(nullptr, list);
    EXPECT_EQ(ObjectList::getStaticTypeInfo(), list->getTypeInfo());
    delete list;
    EXPECT_EQ(nullptr, System::getStaticTypeInfo()->newInstance());
    EXPECT_EQ(nullptr, SystemManager::getStaticTypeInfo()->newInstance());

    ObjectBase* key = TypeInfo::find("SampleKey<s32>")->newInstance();
    ASSERT_NE(nullptr, key);
    EXPECT_EQ(SampleKey<s32>::getStaticTypeInfo(), key->getTypeInfo());
    EXPECT_NE(SampleKey<bool>::getStaticTypeInfo(), key->getTypeInfo());
    delete key;
}

TEST(TypeInfo, FindAndIsDerivedFromAnswerNullAndFalseForUnknowns)
{
    EXPECT_EQ(System::getStaticTypeInfo(), TypeInfo::find(Utils::hash("System")));
    EXPECT_EQ(nullptr, TypeInfo::find("NoSuchClass"));
    EXPECT_EQ(nullptr, TypeInfo::find(0x12345678u));
    EXPECT_EQ(nullptr, TypeInfo::find(static_cast<char const*>(nullptr)));

    TypeInfo const* manager = SystemManager::getStaticTypeInfo();
    EXPECT_TRUE(manager->isDerivedFrom(manager)) << "a class derives from itself";
    EXPECT_TRUE(manager->isDerivedFrom(*ObjectBase::getStaticTypeInfo()));
    EXPECT_TRUE(manager->isDerivedFrom(Utils::hash("ObjectBase")));
    EXPECT_FALSE(manager->isDerivedFrom("System"));
    EXPECT_FALSE(ObjectBase::getStaticTypeInfo()->isDerivedFrom("SystemManager"));
    EXPECT_FALSE(manager->isDerivedFrom("NoSuchClass"));
    EXPECT_FALSE(manager->isDerivedFrom(0x12345678u));
    EXPECT_FALSE(manager->isDerivedFrom(static_cast<TypeInfo const*>(nullptr)));
}

// Children registered before their parent wait for it; either order ends in
// the same tree, with the chain listing children newest first.
TEST(TypeInfo, RecordsWaitForTheirParentAndEitherOrderGivesOneTree)
{
    unsigned int const before = TypeInfo::getDataBaseSize();

    TypeInfo* grandchild = makeRecord("OrderGrandchildLate", "OrderChildLate", 0);
    TypeInfo* childA = makeRecord("OrderChildLate", "OrderParentLate", 1);
    TypeInfo* childB = makeRecord("OrderSiblingLate", "OrderParentLate", 2);
    EXPECT_EQ(nullptr, childA->getBase());
    EXPECT_EQ(Utils::hash("OrderParentLate"), childA->getBaseID());
    EXPECT_EQ(childA, grandchild->getBase()) << "linked when its parent arrived";
    EXPECT_FALSE(grandchild->isDerivedFrom(ObjectBase::getStaticTypeInfo()));
    TypeInfo* lateParent = makeRecord("OrderParentLate", "ObjectBase", 1);

    TypeInfo* earlyParent = makeRecord("OrderParentEarly", "ObjectBase", 1);
    TypeInfo* childC = makeRecord("OrderChildEarly", "OrderParentEarly", 1);
    TypeInfo* childD = makeRecord("OrderSiblingEarly", "OrderParentEarly", 2);
    TypeInfo* grandchild2 = makeRecord("OrderGrandchildEarly", "OrderChildEarly", 0);

    EXPECT_EQ(before + 8, TypeInfo::getDataBaseSize());
    EXPECT_EQ(std::vector<TypeInfo const*>({lateParent, lateParent, earlyParent, earlyParent}),
              std::vector<TypeInfo const*>({childA->getBase(), childB->getBase(), childC->getBase(), childD->getBase()}));
    EXPECT_TRUE(grandchild->isDerivedFrom("ObjectBase"));
    EXPECT_TRUE(grandchild2->isDerivedFrom(earlyParent));
    EXPECT_EQ(std::vector<TypeInfo*>({childB, childA}), children(lateParent));
    EXPECT_EQ(std::vector<TypeInfo*>({childD, childC}), children(earlyParent));
    EXPECT_EQ(std::vector<TypeInfo*>({grandchild}), children(childA));
    EXPECT_EQ(std::vector<TypeInfo*>({grandchild2}), children(childC));
    std::vector<TypeInfo*> const roots = children(ObjectBase::getStaticTypeInfo());
    EXPECT_EQ(std::vector<TypeInfo*>({earlyParent, lateParent}), std::vector<TypeInfo*>(roots.begin(), roots.begin() + 2));
}

TEST(TypeInfoDeathTest, CollisionsAreFatal)
{
    // Registering a name twice is one case of equal ids.
    EXPECT_DEATH(makeRecord("ObjectList", "ObjectBase", 0), "TypeInfo collision detected\\.");
    // "Fake267qZv" hashes like "ObjectList": a look-up by it finds the wrong text.
    ASSERT_EQ(Utils::hash("ObjectList"), Utils::hash("Fake267qZv"));
    EXPECT_DEATH(TypeInfo::find("Fake267qZv"), "TypeInfo Collision detected\\.");
    EXPECT_DEATH(makeRecord("CollisionChild", "Fake267qZv", 0), "TypeInfo Collision detected\\.");
}

TEST(TypeInfoDeathTest, TheNameBufferHasAFixedSize)
{
    // Each record copies its name into the shared buffer.
    EXPECT_DEATH(
        {
            for (unsigned int i = 0; i < 1100; ++i) {
                new TypeInfo((std::string(1000, 'n') + std::to_string(i)).c_str(), nullptr, 0);
            }
        },
        "TypeInfo name buffer overflow\\.");
}
