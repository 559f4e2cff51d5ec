// Accessors: the way an IndirectProperty reaches a value through a getter and
// a setter of its object, so that the object can react to a change or refuse
// it. The property owns its accessor. The index is ignored: an indirect
// property is a single value in practice.
#pragma once

template <typename T>
class AccessorBase {
public:
    virtual ~AccessorBase() {}
    virtual T get(unsigned int index) const = 0;
    virtual void set(T value, unsigned int index) = 0;
    virtual unsigned int getIndex() const = 0;
    virtual void setIndex(unsigned int index) = 0;
};

// A null setter makes a read-only view: set does nothing.
template <typename C, typename T>
class Accessor : public AccessorBase<T> {
public:
    typedef T (C::*Getter)() const;
    typedef void (C::*Setter)(T);

    Accessor(C* object, Getter getter, Setter setter) : mGetter(getter), mSetter(setter), mpObject(object) {}

    T get(unsigned int) const override { return (mpObject->*mGetter)(); }
    void set(T value, unsigned int) override
    {
        if (mSetter != nullptr) {
            (mpObject->*mSetter)(value);
        }
    }
    unsigned int getIndex() const override { return 0; }
    void setIndex(unsigned int) override {}

private:
    Getter mGetter;
    Setter mSetter;
    C* mpObject;
};

// The object's functions take and give the derived pointer type R while the
// interface shows the base pointer type B, as when a setter takes a
// SequencerResource* behind an AccessorBase<ResourceBase*>. The caller has
// checked the class of what it sets.
template <typename C, typename R, typename B>
class ProxyAccessor : public AccessorBase<B> {
public:
    typedef R (C::*Getter)() const;
    typedef void (C::*Setter)(R);

    ProxyAccessor(C* object, Getter getter, Setter setter) : mGetter(getter), mSetter(setter), mpObject(object) {}

    B get(unsigned int) const override { return static_cast<B>((mpObject->*mGetter)()); }
    void set(B value, unsigned int) override
    {
        if (mSetter != nullptr) {
            (mpObject->*mSetter)(static_cast<R>(value));
        }
    }
    unsigned int getIndex() const override { return 0; }
    void setIndex(unsigned int) override {}

private:
    Getter mGetter;
    Setter mSetter;
    C* mpObject;
};
