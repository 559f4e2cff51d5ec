#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/callbacklist.h"
#include "foundation/functor.h"

namespace {

struct Counter {
    int mTotal = 0;
    int mCalls = 0;
    void add(int value) { mTotal += value; }
    unsigned int tick()
    {
        ++mCalls;
        return static_cast<unsigned int>(mCalls);
    }
};

} // namespace

TEST(Functor, CallsTheBoundMemberAndDuplicatesIndependently)
{
    u32 usedBefore = FunctorBase::getAllocator()->getUsedSize();
    Counter counter;
    FunctorIntermediate<int, void>* add = new Functor<Counter, int, void>(&counter, &Counter::add);
    (*add)(5);
    FunctorIntermediate<int, void>* copy = add->duplicate();
    EXPECT_NE(copy, add);
    delete add;
    (*copy)(7);
    EXPECT_EQ(counter.mTotal, 12);
    delete copy;

    FunctorIntermediate<void, unsigned int>* tick = new Functor<Counter, void, unsigned int>(&counter, &Counter::tick);
    FunctorBase* base = tick->duplicate();
    EXPECT_EQ((*tick)(), 1u);
    delete tick;
    delete base;
    EXPECT_EQ(FunctorBase::getAllocator()->getUsedSize(), usedBefore);
}

TEST(Functor, TheHeapHoldsExactly4096Functors)
{
    Counter counter;
    std::vector<FunctorIntermediate<int, void>*> functors;
    u32 free = FunctorBase::BlockNum - FunctorBase::getAllocator()->getUsedSize() / FunctorBase::BlockSize;
    for (u32 i = 0; i < free; ++i) {
        functors.push_back(new Functor<Counter, int, void>(&counter, &Counter::add));
        ASSERT_NE(functors.back(), nullptr);
    }
    testing::internal::CaptureStderr();
    FunctorIntermediate<int, void>* extra = new Functor<Counter, int, void>(&counter, &Counter::add);
    std::string trace = testing::internal::GetCapturedStderr();
    EXPECT_EQ(extra, nullptr);
    EXPECT_NE(trace.find("BlockAllocator : Stack underflow.\n"), std::string::npos);
    for (FunctorIntermediate<int, void>* functor : functors) {
        delete functor;
    }
    EXPECT_EQ(FunctorBase::getAllocator()->getUsedSize(), 0u);
}

// CallbackList: calls by rank, equal ranks in the order of registration;
// removal takes every entry of an object; a full table is fatal.
TEST(CallbackListTest, CallsByRankThenRegistrationAndRemovesByObject)
{
    struct Recorder {
        std::string* mpLog;
        char mName;
        void note(int) { *mpLog += mName; }
    };
    std::string log;
    Recorder a{&log, 'a'}, b{&log, 'b'}, c{&log, 'c'};
    CallbackList<int, 4> list;
    auto const note = &CallbackList<int, 4>::member<Recorder, &Recorder::note>;
    list.add(note, &a, 2);
    list.add(note, &b, 1);
    list.add(note, &c, 2);
    list.add(note, &b, 3);
    list.call(0);
    EXPECT_EQ(log, "bacb");
    EXPECT_DEATH(list.add(note, &a, 0), "CallbackList is full\\.");
    list.remove(&b);
    log.clear();
    list.call(0);
    EXPECT_EQ(log, "ac");
}
