// Control descriptors: how a value or an action of an object is to be offered
// in a form, without naming a widget. makeControlList fills a list of them and
// Utils::makeUIFromControl turns each into a widget. A PropertyControl wraps a
// property with limits, flag names or enumerator names; a TriggerControl names
// a member function to call. Descriptors share the "Property" heap and are
// short-lived: made, turned into widgets and deleted. One thread.
#pragma once

#include <cstddef>

#include "foundation/functor.h"
#include "foundation/types.h"
#include "reflection/property.h"

class TypeInfo;
class UIBase;

enum eControlType {
    eControlType_Property = 0,
    eControlType_Trigger = 1,
    eControlType_Invalid = 2,
};

// The range of a numeric control, in the member of the property's type.
union uNumeric {
    u8 mU8;
    u16 mU16;
    u32 mU32;
    u64 mU64;
    s8 mS8;
    s16 mS16;
    s32 mS32;
    s64 mS64;
    f32 mF32;
    f64 mF64;
    sFixed mFixed;
};
static_assert(sizeof(uNumeric) == 8, "uNumeric is 8 bytes");

// One flag of a mask: its label and its bits.
struct sMaskInfo {
    char const* mpName;
    u32 mValue;
};

// One enumerator: its label and its value ("DISC", 0).
struct sEnumInfo {
    char const* mpName;
    u32 mValue;
};

class ControlBase {
public:
    ControlBase(u8 type, u8 kind, u16 arrayNum) : mType(type), mKind(kind), mArrayNum(arrayNum) {}

    virtual void invalidate() { mType = eControlType_Invalid; }
    virtual ~ControlBase() {}
    virtual char const* getName() const { return nullptr; }
    virtual u32 getNameHash() const { return 0xFFFFFFFFu; }
    virtual ControlBase* duplicate() const = 0;

    unsigned int getType() const { return mType; }

    // From the property heap. noexcept: an exhausted heap answers null and
    // nothing is constructed.
    static void* operator new(std::size_t size) noexcept { return PropertyBase::getHeap().allocate(size); }
    static void operator delete(void* pointer) { PropertyBase::getHeap().deallocate(pointer); }

protected:
    u8 mType;
    u8 mKind;
    u16 mArrayNum;
};

class PropertyControl : public ControlBase {
public:
    enum eKind {
        eKind_Numeric = 0,
        eKind_Mask = 1,
        eKind_Enum = 2,
        eKind_TypeInfo = 3,
    };

    // The full range of the property's type; fatal for a property of type 0.
    explicit PropertyControl(PropertyBase* property);
    // Object and resource properties: the class to offer.
    PropertyControl(PropertyBase* property, TypeInfo const* type);
    // The caller's range. sFixed asks for a fixed property; the others for a
    // numeric one (bool, integers, floats, fixed).
    template <typename T>
    PropertyControl(PropertyBase* property, T minimum, T maximum);
    // Integer (or bool) properties only; the table is copied, its texts are not.
    PropertyControl(PropertyBase* property, sMaskInfo const* masks, unsigned int count);
    PropertyControl(PropertyBase* property, sEnumInfo const* enums, unsigned int count);
    ~PropertyControl() override;

    char const* getName() const override;
    u32 getNameHash() const override;
    // Same property, same range, its own copy of a table.
    ControlBase* duplicate() const override;

    PropertyBase* getProperty() const { return mpProperty; }
    uNumeric getMinimum() const { return mMinimum; }
    uNumeric getMaximum() const { return mMaximum; }
    unsigned int getArrayNum() const { return mArrayNum; }
    unsigned int getKind() const { return mKind; }
    TypeInfo const* getObjectTypeInfo() const { return (mKind == eKind_TypeInfo) ? mExtra.mpTypeInfo : nullptr; }
    sMaskInfo const* getMaskInfo() const { return (mKind == eKind_Mask) ? mExtra.mpMaskInfo : nullptr; }
    sEnumInfo const* getEnumInfo() const { return (mKind == eKind_Enum) ? mExtra.mpEnumInfo : nullptr; }

private:
    PropertyControl(PropertyControl const& source);
    void takeProperty(PropertyBase* property);
    void setRange(uNumeric const& minimum, uNumeric const& maximum);
    void setMaskRange();

    PropertyBase* mpProperty;
    uNumeric mMinimum;
    uNumeric mMaximum;
    union {
        void* mpNone;
        sMaskInfo* mpMaskInfo;
        sEnumInfo* mpEnumInfo;
        TypeInfo const* mpTypeInfo;
    } mExtra;
};

// Argument type codes of triggers.
enum eTriggerArgument {
    eTriggerArgument_None = 129,
    eTriggerArgument_U8 = 131,
    eTriggerArgument_U16 = 132,
    eTriggerArgument_U32 = 133,
    eTriggerArgument_U64 = 134,
    eTriggerArgument_S8 = 135,
    eTriggerArgument_S16 = 136,
    eTriggerArgument_S32 = 137,
    eTriggerArgument_S64 = 138,
    eTriggerArgument_F32 = 139,
    eTriggerArgument_F64 = 140,
    eTriggerArgument_Fixed = 141,
};

template <typename T>
struct sTriggerArgumentOf;
#define HARBOR_TRIGGER_ARGUMENT(T, code)              \
    template <>                                       \
    struct sTriggerArgumentOf<T> {                    \
        static constexpr unsigned int Value = code;   \
    }
HARBOR_TRIGGER_ARGUMENT(void, eTriggerArgument_None);
HARBOR_TRIGGER_ARGUMENT(u8, eTriggerArgument_U8);
HARBOR_TRIGGER_ARGUMENT(u16, eTriggerArgument_U16);
HARBOR_TRIGGER_ARGUMENT(u32, eTriggerArgument_U32);
HARBOR_TRIGGER_ARGUMENT(u64, eTriggerArgument_U64);
HARBOR_TRIGGER_ARGUMENT(s8, eTriggerArgument_S8);
HARBOR_TRIGGER_ARGUMENT(s16, eTriggerArgument_S16);
HARBOR_TRIGGER_ARGUMENT(s32, eTriggerArgument_S32);
HARBOR_TRIGGER_ARGUMENT(s64, eTriggerArgument_S64);
HARBOR_TRIGGER_ARGUMENT(f32, eTriggerArgument_F32);
HARBOR_TRIGGER_ARGUMENT(f64, eTriggerArgument_F64);
HARBOR_TRIGGER_ARGUMENT(sFixed, eTriggerArgument_Fixed);
#undef HARBOR_TRIGGER_ARGUMENT

class TriggerControlBase : public ControlBase {
public:
    // name is not copied.
    TriggerControlBase(char const* name, unsigned int argumentType);

    char const* getName() const override { return mpName; }
    u32 getNameHash() const override { return mNameHash; }
    unsigned int getArgumentType() const { return mKind; }

private:
    char const* mpName;
    u32 mNameHash;
};

// Calls a member function with an argument of type T (none for void). Owns
// its functor; a duplicate owns a duplicate of it.
template <typename T>
class TriggerControl : public TriggerControlBase {
public:
    TriggerControl(char const* name, FunctorIntermediate<T, void>* functor)
        : TriggerControlBase(name, sTriggerArgumentOf<T>::Value), mpFunctor(functor)
    {
    }
    template <typename C>
    TriggerControl(char const* name, C* object, void (C::*function)(T))
        : TriggerControlBase(name, sTriggerArgumentOf<T>::Value), mpFunctor(new Functor<C, T, void>(object, function))
    {
    }
    ~TriggerControl() override { delete mpFunctor; }

    void trigger(T argument) { (*mpFunctor)(argument); }
    ControlBase* duplicate() const override { return new TriggerControl(getName(), mpFunctor->duplicate()); }

private:
    FunctorIntermediate<T, void>* mpFunctor;
};

template <>
class TriggerControl<void> : public TriggerControlBase {
public:
    TriggerControl(char const* name, FunctorIntermediate<void, void>* functor)
        : TriggerControlBase(name, eTriggerArgument_None), mpFunctor(functor)
    {
    }
    template <typename C>
    TriggerControl(char const* name, C* object, void (C::*function)())
        : TriggerControlBase(name, eTriggerArgument_None), mpFunctor(new Functor<C, void, void>(object, function))
    {
    }
    ~TriggerControl() override { delete mpFunctor; }

    void trigger() { (*mpFunctor)(); }
    ControlBase* duplicate() const override { return new TriggerControl(getName(), mpFunctor->duplicate()); }

private:
    FunctorIntermediate<void, void>* mpFunctor;
};

// ---------------------------------------------------------------------------
// Widgets for the editing forms of classes below the widget layer, which
// cannot name the widget classes. Made where the widgets live, as
// Utils::makeUIFromControl is; each widget takes its own reference to the
// property.

// A captioned field over the full range of the property's type.
UIBase* makeParameterControlUI(PropertyBase* property);
// One control per element of an array property, in a group box.
UIBase* makeControlArrayUI(PropertyBase* property);
// A preview of the Texture an object property holds.
UIBase* makeTextureControlUI(PropertyBase* property);

// ---------------------------------------------------------------------------

// Where the caller's range of each numeric type goes in a uNumeric.
inline void setNumericOf(uNumeric& target, u8 value) { target.mU8 = value; }
inline void setNumericOf(uNumeric& target, u16 value) { target.mU16 = value; }
inline void setNumericOf(uNumeric& target, u32 value) { target.mU32 = value; }
inline void setNumericOf(uNumeric& target, u64 value) { target.mU64 = value; }
inline void setNumericOf(uNumeric& target, s8 value) { target.mS8 = value; }
inline void setNumericOf(uNumeric& target, s16 value) { target.mS16 = value; }
inline void setNumericOf(uNumeric& target, s32 value) { target.mS32 = value; }
inline void setNumericOf(uNumeric& target, s64 value) { target.mS64 = value; }
inline void setNumericOf(uNumeric& target, sFixed value) { target.mFixed = value; }
inline void setNumericOf(uNumeric& target, uNumeric value) { target = value; }

// Fatal "Invalid property type." unless the property suits a range of T.
void checkRangeProperty(PropertyBase const* property, bool fixedRange);

template <typename T>
PropertyControl::PropertyControl(PropertyBase* property, T minimum, T maximum)
    : ControlBase(eControlType_Property, eKind_Numeric, 0), mpProperty(nullptr)
{
    static_assert(sizeof(T) <= sizeof(uNumeric), "a range fits a uNumeric");
    checkRangeProperty(property, std::is_same<T, sFixed>::value);
    takeProperty(property);
    uNumeric low;
    uNumeric high;
    low.mU64 = 0;
    high.mU64 = 0;
    setNumericOf(low, minimum);
    setNumericOf(high, maximum);
    setRange(low, high);
    mExtra.mpNone = nullptr;
}

// ---------------------------------------------------------------------------
// Tables and dialogs for the editing forms of classes below the widget layer,
// made where the widgets live, like the factories above.

class ObjectList;

// A column of a table: the property shown (and the caption) and its width.
struct sListColumn {
    char const* mpName;
    u32 mWidth;
};

// A table over the list's objects, of the given size; the list must outlive
// the widget. decide, owned and optional, is called with a confirmed row.
UIBase* makeObjectListUI(ObjectList* list, sListColumn const* columns, unsigned int count, sSize const& size,
                         FunctorIntermediate<unsigned int, void>* decide);
// A modal dialog with the title that edits the named properties of the
// object through their controls; shown from the next frame. The object must
// outlive the dialog.
void openPropertyDialog(char const* title, ObjectBase* object, char const* const* names, unsigned int count);
