// Bound member-function callbacks. Whoever holds a FunctorIntermediate* owns
// it and deletes it; duplicate() hands a callback to a second owner. Functors
// live in the "Functor" heap, 4096 blocks of 32 bytes, which bounds what one
// may hold. The heap is thread safe; a functor itself carries no lock.
#pragma once

#include <cstddef>

#include "foundation/allocator.h"

class FunctorBase {
public:
    virtual ~FunctorBase() {}
    virtual FunctorBase* duplicate() const = 0;

    // From mAllocator. An exhausted heap traces and answers null, and no
    // functor is constructed then.
    static void* operator new(std::size_t size) noexcept;
    static void operator delete(void* pointer);

    static AllocatorBase* getAllocator();

    static constexpr u32 BlockSize = 32;
    static constexpr u32 BlockNum = 0x1000;

private:
    // Built by static initialisation inside "Global", not listed in the
    // memory manager; its leak check runs at process exit.
    static BlockAllocator mAllocator;
};

// What holders of callbacks keep: a call with one Arg (none for void),
// answering Ret.
template <typename Arg, typename Ret>
class FunctorIntermediate : public FunctorBase {
public:
    FunctorIntermediate* duplicate() const override = 0;
    virtual Ret operator()(Arg argument) = 0;
};

template <typename Ret>
class FunctorIntermediate<void, Ret> : public FunctorBase {
public:
    FunctorIntermediate* duplicate() const override = 0;
    virtual Ret operator()() = 0;
};

// Calls a member function of one object.
template <typename T, typename Arg, typename Ret>
class Functor : public FunctorIntermediate<Arg, Ret> {
public:
    typedef Ret (T::*Method)(Arg);

    Functor(T* object, Method method) : mpObject(object), mMethod(method)
    {
        static_assert(sizeof(Functor) <= FunctorBase::BlockSize, "a functor must fit one block");
    }

    Functor* duplicate() const override { return new Functor(mpObject, mMethod); }
    Ret operator()(Arg argument) override { return (mpObject->*mMethod)(argument); }

    T* getObject() const { return mpObject; }

private:
    T* mpObject;
    Method mMethod;
};

template <typename T, typename Ret>
class Functor<T, void, Ret> : public FunctorIntermediate<void, Ret> {
public:
    typedef Ret (T::*Method)();

    Functor(T* object, Method method) : mpObject(object), mMethod(method)
    {
        static_assert(sizeof(Functor) <= FunctorBase::BlockSize, "a functor must fit one block");
    }

    Functor* duplicate() const override { return new Functor(mpObject, mMethod); }
    Ret operator()() override { return (mpObject->*mMethod)(); }

    T* getObject() const { return mpObject; }

private:
    T* mpObject;
    Method mMethod;
};
