#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "foundation/referenceobject.h"

namespace {

struct Tracked : public ReferenceObject {
    explicit Tracked(int* deaths) : mpDeaths(deaths) {}
    ~Tracked() override { ++*mpDeaths; }
    int* mpDeaths;
};

// Like a render object: the last release only marks it.
struct Deferred : public ReferenceObject {
    void end() override { mEnded = true; }
    bool mEnded = false;
};

} // namespace

TEST(ReferenceObject, TheLastReleaseDeletes)
{
    int deaths = 0;
    Tracked* object = new Tracked(&deaths);
    object->addRef();
    object->release();
    EXPECT_EQ(deaths, 0);
    object->release();
    EXPECT_EQ(deaths, 1);
}

TEST(ReferenceObjectDeathTest, DerivedEndReplacesTheDeletionAndReleaseBelowZeroIsFatal)
{
    Deferred object;
    object.release();
    EXPECT_TRUE(object.mEnded);
    EXPECT_DEATH(object.release(), "Reference counter underflow\\.");
}

TEST(ReferenceObject, ConcurrentReferencesEndExactlyOnce)
{
    int deaths = 0;
    Tracked* object = new Tracked(&deaths);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        object->addRef();
        threads.emplace_back([object]() {
            for (int i = 0; i < 5000; ++i) {
                object->addRef();
                object->release();
            }
            object->release();
        });
    }
    object->release();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(deaths, 1);
}
