#include "reflection/control.h"

#include <cfloat>
#include <cstring>

#include "foundation/allocator.h"
#include "foundation/debug.h"
#include "foundation/utils.h"
#include "reflection/typeinfo.h"

static_assert(sizeof(PropertyControl) <= 48, "controls share the 48-byte property blocks");
static_assert(sizeof(TriggerControl<u32>) <= 48, "controls share the 48-byte property blocks");

// ---------------------------------------------------------------------------
// PropertyControl

namespace {

void invalidPropertyType()
{
    dev_assert("Invalid property type.", __FILE__, __LINE__);
}

template <typename T>
T* copyTable(T const* table, unsigned int count)
{
    if (table == nullptr || count == 0) {
        return nullptr;
    }
    T* copy = new T[count];
    memcpy(static_cast<void*>(copy), table, count * sizeof(T));
    return copy;
}

} // namespace

void checkRangeProperty(PropertyBase const* property, bool fixedRange)
{
    unsigned int const type = property->getType();
    if (fixedRange) {
        if (type != ePropertyType_Fixed) {
            invalidPropertyType();
        }
        return;
    }
    bool const numeric = (type >= ePropertyType_Bool && type <= ePropertyType_F64) || type == ePropertyType_Fixed;
    if (!numeric) {
        invalidPropertyType();
    }
}

void PropertyControl::takeProperty(PropertyBase* property)
{
    mpProperty = property;
    mpProperty->addRef();
}

void PropertyControl::setRange(uNumeric const& minimum, uNumeric const& maximum)
{
    mMinimum = minimum;
    mMaximum = maximum;
}

// The full range of the type. The s32 row and the last one are stored
// reversed (minimum above maximum) on purpose: the widget reads that as no
// limit.
PropertyControl::PropertyControl(PropertyBase* property)
    : ControlBase(eControlType_Property, eKind_Numeric, 0), mpProperty(nullptr)
{
    if (property->getType() == ePropertyType_Undefined) {
        invalidPropertyType();
    }
    takeProperty(property);
    mExtra.mpNone = nullptr;
    uNumeric low;
    uNumeric high;
    low.mU64 = 0;
    high.mU64 = 0;
    switch (property->getType()) {
    case ePropertyType_S8:
        low.mS8 = -128;
        high.mS8 = 127;
        break;
    case ePropertyType_S16:
        low.mS16 = -32768;
        high.mS16 = 32767;
        break;
    case ePropertyType_S32:
        low.mS32 = 0x7FFFFFFF;
        high.mS32 = static_cast<s32>(0x80000000u);
        break;
    case ePropertyType_U8:
        high.mU8 = 255;
        break;
    case ePropertyType_U16:
        high.mU16 = 65535;
        break;
    case ePropertyType_U32:
        high.mU32 = 0xFFFFFFFFu;
        break;
    case ePropertyType_U64:
        high.mU64 = ~0ull;
        break;
    case ePropertyType_F32:
        low.mF32 = -FLT_MAX;
        high.mF32 = FLT_MAX;
        break;
    case ePropertyType_F64:
        low.mF64 = -DBL_MAX;
        high.mF64 = DBL_MAX;
        break;
    case ePropertyType_Fixed:
        low.mFixed = sFixed::Min;
        high.mFixed = sFixed::Max;
        break;
    default:
        low.mS64 = 0x7FFFFFFFFFFFFFFFll;
        high.mS64 = static_cast<s64>(0x8000000000000000ull);
        break;
    }
    setRange(low, high);
}

PropertyControl::PropertyControl(PropertyBase* property, TypeInfo const* type)
    : ControlBase(eControlType_Property, eKind_TypeInfo, 0), mpProperty(nullptr)
{
    unsigned int const propertyType = property->getType();
    if (propertyType != ePropertyType_Object && propertyType != ePropertyType_Resource) {
        invalidPropertyType();
    }
    takeProperty(property);
    mExtra.mpTypeInfo = type;
    uNumeric low;
    uNumeric high;
    low.mS64 = 0x7FFFFFFFFFFFFFFFll;
    high.mS64 = static_cast<s64>(0x8000000000000000ull);
    setRange(low, high);
}

namespace {

// Masks and enumerations sit on integer properties (bool included).
void checkIntegerProperty(PropertyBase const* property)
{
    unsigned int const type = property->getType();
    if (type == ePropertyType_Undefined || type >= ePropertyType_F32) {
        invalidPropertyType();
    }
}

} // namespace

// Masks and enumerations take any 32-bit value.
void PropertyControl::setMaskRange()
{
    uNumeric low;
    uNumeric high;
    low.mU64 = 0;
    high.mU64 = 0;
    high.mU32 = 0xFFFFFFFFu;
    setRange(low, high);
}

PropertyControl::PropertyControl(PropertyBase* property, sMaskInfo const* masks, unsigned int count)
    : ControlBase(eControlType_Property, eKind_Mask, static_cast<u16>(count)), mpProperty(nullptr)
{
    checkIntegerProperty(property);
    takeProperty(property);
    mExtra.mpMaskInfo = copyTable(masks, count);
    setMaskRange();
}

PropertyControl::PropertyControl(PropertyBase* property, sEnumInfo const* enums, unsigned int count)
    : ControlBase(eControlType_Property, eKind_Enum, static_cast<u16>(count)), mpProperty(nullptr)
{
    checkIntegerProperty(property);
    takeProperty(property);
    mExtra.mpEnumInfo = copyTable(enums, count);
    setMaskRange();
}

PropertyControl::PropertyControl(PropertyControl const& source)
    : ControlBase(source.mType, source.mKind, source.mArrayNum), mpProperty(nullptr)
{
    if (source.mpProperty != nullptr) {
        takeProperty(source.mpProperty);
    }
    setRange(source.mMinimum, source.mMaximum);
    switch (mKind) {
    case eKind_Mask:
        mExtra.mpMaskInfo = copyTable(source.mExtra.mpMaskInfo, mArrayNum);
        break;
    case eKind_Enum:
        mExtra.mpEnumInfo = copyTable(source.mExtra.mpEnumInfo, mArrayNum);
        break;
    default:
        mExtra = source.mExtra;
        break;
    }
}

PropertyControl::~PropertyControl()
{
    if (mKind == eKind_Mask) {
        delete[] mExtra.mpMaskInfo;
    } else if (mKind == eKind_Enum) {
        delete[] mExtra.mpEnumInfo;
    }
    if (mpProperty != nullptr) {
        mpProperty->release();
    }
}

char const* PropertyControl::getName() const
{
    return (mpProperty != nullptr) ? mpProperty->getName() : nullptr;
}

u32 PropertyControl::getNameHash() const
{
    return (mpProperty != nullptr) ? mpProperty->getNameHash() : 0xFFFFFFFFu;
}

ControlBase* PropertyControl::duplicate() const
{
    return new PropertyControl(*this);
}

// ---------------------------------------------------------------------------
// TriggerControlBase

TriggerControlBase::TriggerControlBase(char const* name, unsigned int argumentType)
    : ControlBase(eControlType_Trigger, static_cast<u8>(argumentType), 0), mpName(name), mNameHash(Utils::hash(name))
{
}
