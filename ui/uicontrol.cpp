// Sections:
//   [SECTION] Typed access to numeric properties
//   [SECTION] UIControl
//   [SECTION] UITextControl
//   [SECTION] UINumericControl
//   [SECTION] UIParameterControl
//   [SECTION] UIFlagControl, UIFlagGroupControl
//   [SECTION] UIEnumControl
//   [SECTION] UIControlArray
//   [SECTION] UITriggerControl
//   [SECTION] Factories
#include "ui/uicontrol.h"

#include <cfloat>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "foundation/debug.h"
#include "foundation/utils.h"
#include "ui/uicontrolcomposite.h"
#include "ui/uiform.h"
#include "ui/uilist.h"
#include "ui/uimessage.h"
#include "ui/uipainter.h"
#include "ui/uisystem.h"

// ---------------------------------------------------------------------------
// [SECTION] Typed access to numeric properties

namespace {

unsigned int const kTextBuffer = 64;
// Characters copied for one painted span; the painter refuses 255 and more.
unsigned int const kSpanMax = 254;

bool isIntegerType(unsigned int type)
{
    return type >= ePropertyType_S8 && type <= ePropertyType_U64;
}

bool isNumericType(unsigned int type)
{
    return (type >= ePropertyType_S8 && type <= ePropertyType_F64) || type == ePropertyType_Fixed;
}

uNumeric zeroNumeric()
{
    uNumeric value;
    value.mU64 = 0;
    return value;
}

// The integer of types s8 to u32 (and s64) widened with its sign.
long long toInteger(uNumeric const& value, unsigned int type)
{
    switch (type) {
    case ePropertyType_S8:
        return value.mS8;
    case ePropertyType_S16:
        return value.mS16;
    case ePropertyType_S32:
        return value.mS32;
    case ePropertyType_S64:
        return value.mS64;
    case ePropertyType_U8:
        return value.mU8;
    case ePropertyType_U16:
        return value.mU16;
    case ePropertyType_U32:
        return value.mU32;
    default:
        return static_cast<long long>(value.mU64);
    }
}

// An integer of the type's own range into its member.
uNumeric fromInteger(long long integer, unsigned int type)
{
    uNumeric value = zeroNumeric();
    switch (type) {
    case ePropertyType_S8:
        value.mS8 = static_cast<s8>(integer);
        break;
    case ePropertyType_S16:
        value.mS16 = static_cast<s16>(integer);
        break;
    case ePropertyType_S32:
        value.mS32 = static_cast<s32>(integer);
        break;
    case ePropertyType_U8:
        value.mU8 = static_cast<u8>(integer);
        break;
    case ePropertyType_U16:
        value.mU16 = static_cast<u16>(integer);
        break;
    case ePropertyType_U32:
        value.mU32 = static_cast<u32>(integer);
        break;
    default:
        value.mS64 = integer;
        break;
    }
    return value;
}

// The range of the integer types up to 32 bits, for saturation.
void getIntegerRange(unsigned int type, long long& low, long long& high)
{
    switch (type) {
    case ePropertyType_S8:
        low = -128;
        high = 127;
        break;
    case ePropertyType_S16:
        low = -32768;
        high = 32767;
        break;
    case ePropertyType_S32:
        low = -2147483647ll - 1;
        high = 2147483647ll;
        break;
    case ePropertyType_U8:
        low = 0;
        high = 255;
        break;
    case ePropertyType_U16:
        low = 0;
        high = 65535;
        break;
    case ePropertyType_U32:
        low = 0;
        high = 4294967295ll;
        break;
    default:
        low = -9223372036854775807ll - 1;
        high = 9223372036854775807ll;
        break;
    }
}

long long saturate(long long value, long long low, long long high)
{
    return value < low ? low : (value > high ? high : value);
}

// The bits a hexadecimal text shows: the type's width, no sign extension.
unsigned long long widthMask(unsigned int type)
{
    switch (type) {
    case ePropertyType_S8:
    case ePropertyType_U8:
        return 0xFFull;
    case ePropertyType_S16:
    case ePropertyType_U16:
        return 0xFFFFull;
    case ePropertyType_S32:
    case ePropertyType_U32:
        return 0xFFFFFFFFull;
    default:
        return ~0ull;
    }
}

uNumeric readNumeric(PropertyBase const* property, unsigned int index)
{
    uNumeric value = zeroNumeric();
    switch (property->getType()) {
    case ePropertyType_S8:
        value.mS8 = property->getByType<s8>(index);
        break;
    case ePropertyType_S16:
        value.mS16 = property->getByType<s16>(index);
        break;
    case ePropertyType_S32:
        value.mS32 = property->getByType<s32>(index);
        break;
    case ePropertyType_S64:
        value.mS64 = property->getByType<s64>(index);
        break;
    case ePropertyType_U8:
        value.mU8 = property->getByType<u8>(index);
        break;
    case ePropertyType_U16:
        value.mU16 = property->getByType<u16>(index);
        break;
    case ePropertyType_U32:
        value.mU32 = property->getByType<u32>(index);
        break;
    case ePropertyType_U64:
        value.mU64 = property->getByType<u64>(index);
        break;
    case ePropertyType_F32:
        value.mF32 = property->getByType<float>(index);
        break;
    case ePropertyType_F64:
        value.mF64 = property->getByType<double>(index);
        break;
    case ePropertyType_Fixed:
        value.mFixed = property->getByType<sFixed>(index);
        break;
    default:
        break;
    }
    return value;
}

void writeNumeric(PropertyBase* property, uNumeric const& value, unsigned int index)
{
    switch (property->getType()) {
    case ePropertyType_S8:
        property->setByType<s8>(value.mS8, index);
        break;
    case ePropertyType_S16:
        property->setByType<s16>(value.mS16, index);
        break;
    case ePropertyType_S32:
        property->setByType<s32>(value.mS32, index);
        break;
    case ePropertyType_S64:
        property->setByType<s64>(value.mS64, index);
        break;
    case ePropertyType_U8:
        property->setByType<u8>(value.mU8, index);
        break;
    case ePropertyType_U16:
        property->setByType<u16>(value.mU16, index);
        break;
    case ePropertyType_U32:
        property->setByType<u32>(value.mU32, index);
        break;
    case ePropertyType_U64:
        property->setByType<u64>(value.mU64, index);
        break;
    case ePropertyType_F32:
        property->setByType<float>(value.mF32, index);
        break;
    case ePropertyType_F64:
        property->setByType<double>(value.mF64, index);
        break;
    case ePropertyType_Fixed:
        property->setByType<sFixed>(value.mFixed, index);
        break;
    default:
        break;
    }
}

// -1 when a is below b, 0 when equal, 1 when above, in the type's order.
int compareNumeric(uNumeric const& a, uNumeric const& b, unsigned int type)
{
    switch (type) {
    case ePropertyType_U64:
        return a.mU64 < b.mU64 ? -1 : (a.mU64 > b.mU64 ? 1 : 0);
    case ePropertyType_F32:
        return a.mF32 < b.mF32 ? -1 : (a.mF32 > b.mF32 ? 1 : 0);
    case ePropertyType_F64:
        return a.mF64 < b.mF64 ? -1 : (a.mF64 > b.mF64 ? 1 : 0);
    case ePropertyType_Fixed:
        return a.mFixed < b.mFixed ? -1 : (a.mFixed > b.mFixed ? 1 : 0);
    default: {
        long long const x = toInteger(a, type);
        long long const y = toInteger(b, type);
        return x < y ? -1 : (x > y ? 1 : 0);
    }
    }
}

// The form of a group box sits at (8, 16), as wide as the group less 16; the
// group takes the height of the form's rows plus 24, so that no row is cut
// off. Called from the group's eventSize, whose guard keeps the resize from
// coming back.
void fitFormInGroup(UIBase* group, UIForm* form)
{
    sSize const size = group->getSize();
    unsigned int const width = size.width > 16 ? size.width - 16 : 0;
    form->setPosition(sPoint(8, UIControl::kNameHeight));
    form->setSize(sSize(width, 0x7FFFFF));
    form->setClientRegion(sRect(form->getSize()));
    form->update(0.0f);
    sRect const content = form->getClientExistRegion();
    unsigned int const height = (content.bottom > 0) ? static_cast<unsigned int>(content.bottom) : 0;
    form->setSize(sSize(width, height));
    form->setClientRegion(sRect(form->getSize()));
    form->update(0.0f);
    group->setSize(sSize(size.width, height + 24));
}

unsigned int countDigits(unsigned int value)
{
    unsigned int digits = 1;
    while (value >= 10) {
        value /= 10;
        ++digits;
    }
    return digits;
}

} // namespace

// ---------------------------------------------------------------------------
// [SECTION] UIControl

UIControl::UIControl(PropertyBase* property, bool readOnly, unsigned int index, unsigned int attribute)
    : UIBase(attribute), mpProperty(property), mIndex(index), mEditing(false)
{
    if (mpProperty != nullptr) {
        mpProperty->addRef();
    }
    if (readOnly) {
        disable();
    }
}

UIControl::~UIControl()
{
    if (mpProperty != nullptr) {
        mpProperty->release();
    }
}

AutoString UIControl::getName() const
{
    if (mpProperty == nullptr || mpProperty->getName() == nullptr || mpProperty->getName()[0] == '\0') {
        return AutoString();
    }
    if (mIndex != NoIndex) {
        AutoString name;
        name.format("[%d]", static_cast<int>(mIndex));
        return name;
    }
    return AutoString(mpProperty->getName());
}

void UIControl::setDefaultSize()
{
    sSize size = getMinimumSize();
    AutoString const name = getName();
    if (!name.empty()) {
        unsigned int const width = (name.size() + 2) * UIPainter::kFontWidth;
        if (width > size.width) {
            size.width = width;
        }
    }
    setSize(size);
}

void UIControl::update(float deltaTime)
{
    UIBase::update(deltaTime);
    align();
}

void UIControl::eventBeginEdit()
{
    mEditing = true;
    delegate();
}

void UIControl::eventEndEdit()
{
    delegate();
    mEditing = false;
}

// ---------------------------------------------------------------------------
// [SECTION] UITextControl

UITextControl::UITextControl(PropertyBase* property, bool readOnly, unsigned int index, eMode mode,
                             unsigned int attribute)
    : UIControl(property, readOnly, index, attribute), mCursor(kNone), mScroll(0), mSelectBegin(kNone),
      mSelectEnd(kNone), mMode(mode)
{
    setBorderStyle(eBorderStyle_Concave);
    setMinimumSize(sSize(kMinimumWidth, kMinimumHeight));
}

char const* UITextControl::getPropertyString(char* buffer) const
{
    unsigned int const type = mpProperty->getType();
    if (mMode == eMode_Hexadecimal && isIntegerType(type)) {
        unsigned long long const bits = static_cast<unsigned long long>(mpProperty->getNumeric(mIndex));
        snprintf(buffer, kTextBuffer, "%llx", bits & widthMask(type));
        return buffer;
    }
    char const* text = mpProperty->getString(buffer, mIndex);
    return (text != nullptr) ? text : "";
}

unsigned int UITextControl::getVisibleCount() const
{
    int const width = static_cast<int>(getSize().width) - 2;
    return (width > 0) ? static_cast<unsigned int>(width / UIPainter::kFontWidth) : 0;
}

void UITextControl::selectAll()
{
    char buffer[kTextBuffer];
    mText = getPropertyString(buffer);
    unsigned int const length = mText.size();
    mCursor = length;
    unsigned int const visible = getVisibleCount();
    mScroll = (length > visible) ? length - visible : 0;
    if (length > 0) {
        mSelectBegin = 0;
        mSelectEnd = length;
    } else {
        clearSelection();
    }
}

void UITextControl::apply()
{
    if (mText.size() == 0) {
        return;
    }
    char const* text = mText.c_str();
    unsigned int const type = mpProperty->getType();
    if (isIntegerType(type)) {
        int const base = (mMode == eMode_Hexadecimal) ? 16 : 10;
        long long const value = (type == ePropertyType_U64 || base == 16)
                                    ? static_cast<long long>(strtoull(text, nullptr, base))
                                    : strtoll(text, nullptr, base);
        mpProperty->setNumeric(value, mIndex);
        return;
    }
    switch (type) {
    case ePropertyType_F32:
        mpProperty->setByType<float>(static_cast<float>(strtod(text, nullptr)), mIndex);
        break;
    case ePropertyType_F64:
        mpProperty->setByType<double>(strtod(text, nullptr), mIndex);
        break;
    case ePropertyType_Fixed:
        mpProperty->setByType<sFixed>(sFixed(static_cast<float>(strtod(text, nullptr))), mIndex);
        break;
    case ePropertyType_String:
        mpProperty->setByType<AutoString>(mText, mIndex);
        break;
    default:
        break;
    }
}

void UITextControl::eventFocus()
{
    sendMessage(UIBeginEditMessage());
}

void UITextControl::eventDefocus()
{
    apply();
    sendMessage(UIEndEditMessage());
    mCursor = kNone;
    mScroll = 0;
    clearSelection();
}

void UITextControl::eventBeginEdit()
{
    UIControl::eventBeginEdit();
    selectAll();
}

void UITextControl::keepCursorInView()
{
    unsigned int const visible = getVisibleCount();
    if (mCursor < mScroll) {
        mScroll = mCursor;
    }
    if (mCursor - mScroll > visible) {
        mScroll = (mCursor > visible) ? mCursor - visible : 0;
    }
}

void UITextControl::deleteSelection()
{
    if (!hasSelection()) {
        return;
    }
    mText.remove(mSelectBegin, mSelectEnd - mSelectBegin);
    mCursor = mSelectBegin;
    clearSelection();
}

void UITextControl::replaceSelection(char character)
{
    deleteSelection();
    mText.insert(mCursor, character);
    ++mCursor;
    clearSelection();
}

// Shift grows or shrinks the selection: it starts at the old position and
// its end that the cursor stood on follows the cursor.
void UITextControl::moveCursor(unsigned int position, bool extend)
{
    unsigned int const old = mCursor;
    mCursor = position;
    if (!extend) {
        clearSelection();
        return;
    }
    if (old == position) {
        return;
    }
    if (!hasSelection()) {
        mSelectBegin = old;
        mSelectEnd = position;
    } else if (old == mSelectBegin) {
        mSelectBegin = position;
    } else if (old == mSelectEnd) {
        mSelectEnd = position;
    } else {
        mSelectBegin = old;
        mSelectEnd = position;
    }
    if (mSelectBegin > mSelectEnd) {
        unsigned int const swap = mSelectBegin;
        mSelectBegin = mSelectEnd;
        mSelectEnd = swap;
    }
    if (mSelectBegin == mSelectEnd) {
        clearSelection();
    }
}

// Deliberately no space and no punctuation beyond "-", ".", "\", "_" and
// "|": names in this toolkit are typed without them. Letters are capitals
// only with Shift alone; digits ignore the modifiers.
void UITextControl::eventKeyDown(unsigned int keyCode, unsigned int combinationKey)
{
    if (mCursor == kNone) {
        delegate();
        return;
    }
    bool const shift = combinationKey == UISystem::eCombinationKey_Shift;
    unsigned int const length = mText.size();
    switch (keyCode) {
    case UISystem::eKey_Return:
        clearSelection();
        UISystem::getInstance()->defocus();
        return;
    case UISystem::eKey_BackSpace:
        if (hasSelection()) {
            deleteSelection();
        } else if (mCursor > 0) {
            mText.remove(mCursor - 1, 1);
            --mCursor;
        }
        clearSelection();
        break;
    case UISystem::eKey_Delete:
        if (hasSelection()) {
            deleteSelection();
        } else if (mCursor < length) {
            mText.remove(mCursor, 1);
        }
        clearSelection();
        break;
    case UISystem::eKey_Left:
        moveCursor((mCursor > 0) ? mCursor - 1 : 0, shift);
        break;
    case UISystem::eKey_Right:
        moveCursor((mCursor < length) ? mCursor + 1 : length, shift);
        break;
    case UISystem::eKey_Home:
    case UISystem::eKey_End: {
        unsigned int const old = mCursor;
        mCursor = (keyCode == UISystem::eKey_Home) ? 0 : length;
        clearSelection();
        if (shift && old != mCursor) {
            mSelectBegin = (old < mCursor) ? old : mCursor;
            mSelectEnd = (old < mCursor) ? mCursor : old;
        }
        break;
    }
    case '-':
    case '.':
        replaceSelection(static_cast<char>(keyCode));
        break;
    case '\\':
        replaceSelection(shift ? '_' : '\\');
        break;
    case ']':
        replaceSelection(shift ? '|' : '\\');
        break;
    default:
        if (keyCode >= '0' && keyCode <= '9') {
            replaceSelection(static_cast<char>(keyCode));
        } else if (keyCode >= 'A' && keyCode <= 'Z') {
            replaceSelection(static_cast<char>(shift ? keyCode : keyCode - 'A' + 'a'));
        } else {
            delegate();
            return;
        }
        break;
    }
    keepCursorInView();
}

namespace {

// Characters from..to of text at x, clipped to the text rectangle.
void drawSpan(UIPainter* painter, char const* text, unsigned int from, unsigned int to, int x, sRect const& clip,
              sColor color)
{
    if (to <= from || x >= clip.right) {
        return;
    }
    char span[kSpanMax + 1];
    unsigned int const count = (to - from > kSpanMax) ? kSpanMax : to - from;
    memcpy(span, text + from, count);
    span[count] = '\0';
    painter->drawString(sRect(x, clip.top, clip.right, clip.bottom), span, color, eAlignment_LeftMiddle);
}

} // namespace

void UITextControl::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    sSize const size = getSize();
    painter->drawRect(sRect(size), system->mClientRegionColor);
    sRect const textRect(1, 1, static_cast<int>(size.width) - 1, static_cast<int>(size.height) - 1);
    char buffer[kTextBuffer];
    char const* text = mEditing ? mText.c_str() : getPropertyString(buffer);
    if (text == nullptr) {
        text = "";
    }
    unsigned int const length = static_cast<unsigned int>(strlen(text));
    unsigned int const scroll = (mEditing && mScroll < length) ? mScroll : 0;
    int const fontWidth = UIPainter::kFontWidth;
    if (mEditing && hasSelection() && mSelectEnd <= length) {
        unsigned int const begin = (mSelectBegin > scroll) ? mSelectBegin : scroll;
        unsigned int const end = (mSelectEnd > scroll) ? mSelectEnd : scroll;
        int const x0 = static_cast<int>(begin - scroll) * fontWidth + 1;
        int const x1 = static_cast<int>(end - scroll) * fontWidth + 1;
        sRect const selection = sRect(x0, textRect.top, x1, textRect.bottom) & textRect;
        if (selection != sRect::Zero) {
            painter->drawRect(selection, system->mClientRegionSelectColor);
        }
        drawSpan(painter, text, scroll, begin, 1, textRect, system->mClientFontColor);
        drawSpan(painter, text, begin, end, x0, textRect, system->mClientSelectFontColor);
        drawSpan(painter, text, end, length, x1, textRect, system->mClientFontColor);
    } else {
        drawSpan(painter, text, scroll, length, 1, textRect, system->mClientFontColor);
    }
    if ((getStatus() & eStatus_Focused) != 0 && mCursor != kNone && mCursor >= scroll) {
        int const x = static_cast<int>(mCursor - scroll) * fontWidth + 1;
        painter->drawLine(sPoint(x, textRect.top + 1), sPoint(x, textRect.bottom - 1), system->mClientFontColor);
    }
    drawBorder(painter);
}

// ---------------------------------------------------------------------------
// [SECTION] UINumericControl

void UINumericControl::getTypeRange(unsigned int type, uNumeric& minimum, uNumeric& maximum)
{
    minimum = zeroNumeric();
    maximum = zeroNumeric();
    switch (type) {
    case ePropertyType_F32:
        minimum.mF32 = -FLT_MAX;
        maximum.mF32 = FLT_MAX;
        break;
    case ePropertyType_F64:
        minimum.mF64 = -DBL_MAX;
        maximum.mF64 = DBL_MAX;
        break;
    case ePropertyType_Fixed:
        minimum.mFixed = sFixed::Min;
        maximum.mFixed = sFixed::Max;
        break;
    case ePropertyType_U64:
        maximum.mU64 = ~0ull;
        break;
    case ePropertyType_S64:
        minimum.mS64 = -9223372036854775807ll - 1;
        maximum.mS64 = 9223372036854775807ll;
        break;
    default: {
        long long low;
        long long high;
        getIntegerRange(type, low, high);
        minimum = fromInteger(low, type);
        maximum = fromInteger(high, type);
        break;
    }
    }
}

UINumericControl::UINumericControl(PropertyBase* property, bool readOnly, unsigned int index, eMode mode,
                                   unsigned int attribute)
    : UITextControl(property, readOnly, index, mode, attribute), mpSlideButton(nullptr)
{
    getTypeRange(property->getType(), mMinimum, mMaximum);
    init(readOnly);
}

UINumericControl::UINumericControl(PropertyBase* property, uNumeric minimum, uNumeric maximum, bool readOnly,
                                   unsigned int index, eMode mode, unsigned int attribute)
    : UITextControl(property, readOnly, index, mode, attribute), mMinimum(minimum), mMaximum(maximum),
      mpSlideButton(nullptr)
{
    init(readOnly);
}

void UINumericControl::init(bool readOnly)
{
    if (!isNumericType(mpProperty->getType())) {
        dev_assert("Invalid property type.", __FILE__, __LINE__);
    }
    mBeginValue = zeroNumeric();
    if (!readOnly) {
        mpSlideButton = new UISlideButton();
        mpSlideButton->setSlideFunction(this, &UINumericControl::notifySlideButton);
        mpSlideButton->setEditTarget(this);
        add(mpSlideButton);
    }
}

uNumeric UINumericControl::getNumeric() const
{
    return readNumeric(mpProperty, mIndex);
}

// Limits with the minimum above the maximum stand for no limit (the full
// ranges of s32 and the wide types are stored so).
uNumeric UINumericControl::clamp(uNumeric value) const
{
    unsigned int const type = mpProperty->getType();
    if (compareNumeric(mMinimum, mMaximum, type) > 0) {
        return value;
    }
    if (compareNumeric(value, mMaximum, type) > 0) {
        value = mMaximum;
    }
    if (compareNumeric(value, mMinimum, type) < 0) {
        value = mMinimum;
    }
    return value;
}

void UINumericControl::setNumeric(uNumeric value)
{
    value = clamp(value);
    writeNumeric(mpProperty, value, mIndex);
    unsigned int const type = mpProperty->getType();
    char buffer[kTextBuffer];
    if (isIntegerType(type)) {
        if (mMode == eMode_Hexadecimal) {
            snprintf(buffer, sizeof(buffer), "%llx", static_cast<unsigned long long>(value.mU64) & widthMask(type));
        } else if (type == ePropertyType_U64) {
            snprintf(buffer, sizeof(buffer), "%llu", static_cast<unsigned long long>(value.mU64));
        } else {
            snprintf(buffer, sizeof(buffer), "%lld", toInteger(value, type));
        }
        mText = buffer;
    } else {
        char const* text = mpProperty->getString(buffer, mIndex);
        mText = (text != nullptr) ? text : "";
    }
}

void UINumericControl::addNumeric(float delta)
{
    uNumeric value = getNumeric();
    unsigned int const type = mpProperty->getType();
    switch (type) {
    case ePropertyType_F32:
        value.mF32 += delta;
        break;
    case ePropertyType_F64:
        value.mF64 += static_cast<double>(delta);
        break;
    case ePropertyType_Fixed: {
        long long const sum = static_cast<long long>(value.mFixed.mValue) + sFixed(delta).mValue;
        value.mFixed = sFixed::raw(static_cast<u32>(saturate(sum, -2147483647ll - 1, 2147483647ll)));
        break;
    }
    case ePropertyType_U64: {
        long long const step = static_cast<long long>(delta);
        u64 result;
        if (step < 0) {
            u64 const down = static_cast<u64>(-(step + 1)) + 1;
            value.mU64 = (down > value.mU64) ? 0 : value.mU64 - down;
        } else {
            value.mU64 = __builtin_add_overflow(value.mU64, static_cast<u64>(step), &result) ? ~0ull : result;
        }
        break;
    }
    case ePropertyType_S64: {
        long long const step = static_cast<long long>(delta);
        long long result;
        if (__builtin_add_overflow(value.mS64, step, &result)) {
            result = (step > 0) ? 9223372036854775807ll : -9223372036854775807ll - 1;
        }
        value.mS64 = result;
        break;
    }
    default: {
        long long low;
        long long high;
        getIntegerRange(type, low, high);
        long long const step = static_cast<long long>(delta);
        value = fromInteger(saturate(toInteger(value, type) + step, low, high), type);
        break;
    }
    }
    setNumeric(value);
}

// A typed value goes through the limits: "300" in a u8 field gives 255, and
// a text that does not parse gives 0, clamped.
void UINumericControl::apply()
{
    if (mText.size() == 0) {
        return;
    }
    char const* text = mText.c_str();
    unsigned int const type = mpProperty->getType();
    uNumeric value = zeroNumeric();
    switch (type) {
    case ePropertyType_F32:
        value.mF32 = static_cast<float>(strtod(text, nullptr));
        break;
    case ePropertyType_F64:
        value.mF64 = strtod(text, nullptr);
        break;
    case ePropertyType_Fixed:
        value.mFixed = sFixed(static_cast<float>(strtod(text, nullptr)));
        break;
    case ePropertyType_U64:
        value.mU64 = strtoull(text, nullptr, (mMode == eMode_Hexadecimal) ? 16 : 10);
        break;
    default:
        if (mMode == eMode_Hexadecimal) {
            // The bits of the type's width, as the field shows them.
            value = fromInteger(static_cast<long long>(strtoull(text, nullptr, 16) & widthMask(type)), type);
        } else {
            long long low;
            long long high;
            getIntegerRange(type, low, high);
            value = fromInteger(saturate(strtoll(text, nullptr, 10), low, high), type);
        }
        break;
    }
    setNumeric(value);
}

// Restarts from the value at the press each time, so moving back restores
// it; up raises the value. Integers truncate the product, so the plain factor
// steps once per 10 pixels.
void UINumericControl::notifySlideButton(UIButton*)
{
    int const amount = mpSlideButton->getSlideAmount();
    if (amount == 0) {
        return;
    }
    unsigned int const combination = UISystem::getInstance()->getCombinationKey();
    float factor = kSlideFactorPlain;
    if ((combination & UISystem::eCombinationKey_Shift) != 0) {
        factor = kSlideFactorShift;
    } else if ((combination & UISystem::eCombinationKey_Command) != 0) {
        factor = kSlideFactorCommand;
    }
    setNumeric(mBeginValue);
    addNumeric(-static_cast<float>(amount) * factor);
    selectAll();
}

void UINumericControl::eventSize()
{
    if (mpSlideButton == nullptr) {
        return;
    }
    sSize const size = getSize();
    int const side = (size.height > 2) ? static_cast<int>(size.height) - 2 : 0;
    mpSlideButton->setPosition(sPoint(static_cast<int>(size.width) - side - 1, 1));
    mpSlideButton->setSize(sSize(side, side));
}

void UINumericControl::eventBeginEdit()
{
    UITextControl::eventBeginEdit();
    mBeginValue = getNumeric();
}

// Each step of Up or Down is an edit of its own.
void UINumericControl::eventKeyDown(unsigned int keyCode, unsigned int combinationKey)
{
    if (mCursor != kNone && (keyCode == UISystem::eKey_Up || keyCode == UISystem::eKey_Down)) {
        addNumeric(keyCode == UISystem::eKey_Up ? 1.0f : -1.0f);
        sendMessage(UIEndEditMessage());
        sendMessage(UIBeginEditMessage());
        return;
    }
    UITextControl::eventKeyDown(keyCode, combinationKey);
}

// ---------------------------------------------------------------------------
// [SECTION] UIParameterControl

UIParameterControl::UIParameterControl(PropertyBase* property, uNumeric minimum, uNumeric maximum, bool readOnly,
                                       unsigned int index, eMode mode, unsigned int attribute)
    : UIControl(property, readOnly, index, attribute), mpValueControl(nullptr), mCaptionWidth(0)
{
    init(minimum, maximum, readOnly, mode);
}

void UIParameterControl::init(uNumeric minimum, uNumeric maximum, bool readOnly, eMode mode)
{
    if (mpProperty->getName() == nullptr) {
        dev_assert("Nameless property.", __FILE__, __LINE__);
    }
    switch (mpProperty->getType()) {
    case ePropertyType_String:
        mpValueControl = new UITextControl(mpProperty, readOnly, mIndex, mode);
        break;
    case ePropertyType_ConstString:
        mpValueControl = new UITextControl(mpProperty, true, mIndex, mode);
        break;
    default:
        mpValueControl = new UINumericControl(mpProperty, minimum, maximum, readOnly, mIndex, mode);
        break;
    }
    add(mpValueControl);
    if (mIndex != NoIndex) {
        mCaptionWidth = UIPainter::kFontWidth * (3 + countDigits(mpProperty->getCount()));
        setMinimumSize(sSize(mCaptionWidth + kMinimumValueWidth, UITextControl::kMinimumHeight));
    } else {
        mCaptionWidth = 0;
        setMinimumSize(sSize(kMinimumValueWidth, kNameHeight + UITextControl::kMinimumHeight));
    }
}

void UIParameterControl::align()
{
    sSize const size = getSize();
    if (mIndex != NoIndex) {
        mpValueControl->setPosition(sPoint(static_cast<int>(mCaptionWidth), 0));
        mpValueControl->setSize(sSize(size.width > mCaptionWidth ? size.width - mCaptionWidth : 0, size.height));
    } else {
        mpValueControl->setPosition(sPoint(0, kNameHeight));
        mpValueControl->setSize(sSize(size.width, size.height > kNameHeight ? size.height - kNameHeight : 0));
    }
}

void UIParameterControl::eventPaint(UIPainter* painter)
{
    AutoString const name = getName();
    sSize const size = getSize();
    sRect const caption = (mIndex != NoIndex) ? sRect(0, 0, static_cast<int>(mCaptionWidth), static_cast<int>(size.height))
                                              : sRect(0, 0, static_cast<int>(size.width), kNameHeight);
    painter->drawString(caption, name, UISystem::getInstance()->mFontColor, eAlignment_LeftMiddle);
}

// ---------------------------------------------------------------------------
// [SECTION] UIFlagControl, UIFlagGroupControl

UIFlagControl::UIFlagControl(PropertyBase* property, u32 mask, bool readOnly, unsigned int index,
                             unsigned int attribute)
    : UIControl(property, readOnly, index, attribute), mMask(mask)
{
    setMinimumSize(sSize(64, 16));
}

bool UIFlagControl::isChecked() const
{
    return (static_cast<u64>(mpProperty->getNumeric(mIndex)) & mMask) != 0;
}

// A bool reads as all ones or 0, so the mask of all ones turns it over.
void UIFlagControl::toggle()
{
    if (!isEnabled()) {
        return;
    }
    long long const value = mpProperty->getNumeric(mIndex);
    mpProperty->setNumeric(value ^ static_cast<long long>(mMask), mIndex);
}

void UIFlagControl::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    sSize const size = getSize();
    int const top = (static_cast<int>(size.height) - 12) / 2;
    sRect const box(0, top, kBoxWidth, top + 12);
    painter->drawRect(box, system->mClientRegionColor);
    if (isChecked()) {
        painter->drawCheck(box, system->mClientFontColor);
    }
    painter->drawConcaveRect(box);
    painter->drawString(sRect(kNameLeft, 0, static_cast<int>(size.width), static_cast<int>(size.height)),
                        AutoString(mpProperty->getName()), system->mFontColor, eAlignment_LeftMiddle);
}

void UIFlagControl::eventMouseDown(sPoint const&, unsigned int button)
{
    if ((button & 1) != 0) {
        toggle();
        sendMessage(UIEndEditMessage());
    }
}

void UIFlagControl::eventKeyDown(unsigned int keyCode, unsigned int combinationKey)
{
    if (combinationKey != 0) {
        delegate();
        return;
    }
    if (keyCode == UISystem::eKey_Return) {
        toggle();
    }
    sendMessage(UIEndEditMessage());
}

UIFlagGroupControl::UIFlagGroupControl(PropertyBase* property, sMaskInfo const* masks, unsigned int count,
                                       bool readOnly, unsigned int index)
    : UIControl(property, readOnly, index, eAttribute_RowItem), mpForm(nullptr)
{
    unsigned int const type = property->getType();
    if (!isNumericType(type)) {
        dev_assert("Property type missmatch.", __FILE__, __LINE__);
    }
    setMinimumSize(sSize(64, 32));
    mpForm = new UIForm(UIForm::eFormAttribute_AutoAlign);
    add(mpForm);
    for (unsigned int i = 0; i < count; ++i) {
        PropertyBase* flag = new IndirectProperty<u32>(masks[i].mpName, this, &UIFlagGroupControl::getNumeric,
                                                       &UIFlagGroupControl::setNumeric);
        UIFlagControl* control = new UIFlagControl(flag, masks[i].mValue, readOnly, NoIndex);
        control->setDefaultSize();
        mpForm->addClient(control);
    }
}

u32 UIFlagGroupControl::getNumeric() const
{
    return static_cast<u32>(mpProperty->getNumeric(mIndex));
}

void UIFlagGroupControl::setNumeric(u32 value)
{
    mpProperty->setNumeric(value, mIndex);
}

void UIFlagGroupControl::eventSize()
{
    fitFormInGroup(this, mpForm);
}

void UIFlagGroupControl::eventPaint(UIPainter* painter)
{
    painter->drawGroup(sRect(getSize()), mpProperty->getName(), UISystem::getInstance()->mFontColor);
}

// ---------------------------------------------------------------------------
// [SECTION] UIEnumControl

UIEnumControl::UIEnumControl(PropertyBase* property, sEnumInfo const* enums, unsigned int count, bool readOnly,
                             unsigned int index, unsigned int attribute)
    : UIControl(property, readOnly, index, attribute), mpPulldownList(nullptr), mpPulldownButton(nullptr),
      mpEnums(nullptr), mCount(count), mpSelectFunctor(nullptr)
{
    unsigned int const type = property->getType();
    if ((type >= ePropertyType_Size && type <= ePropertyType_Texcoord) || type >= ePropertyType_Vector) {
        dev_assert("Property type missmatch.", __FILE__, __LINE__);
    }
    if (count > 0) {
        mpEnums = new sEnumInfo[count];
        memcpy(static_cast<void*>(mpEnums), enums, count * sizeof(sEnumInfo));
    }
    setMinimumSize(sSize(64, getName().empty() ? 16 : 32));
    mpPulldownButton = new UIPulldownButton();
    mpPulldownButton->init();
    mpPulldownButton->setFunction(this, &UIEnumControl::notifyPulldown);
    if (readOnly) {
        mpPulldownButton->disable();
    }
    add(mpPulldownButton);
    mpPulldownList = new UIPulldownList();
    for (unsigned int i = 0; i < count; ++i) {
        mpPulldownList->addItem(mpEnums[i].mpName);
    }
    mpPulldownList->setFunction(this, &UIEnumControl::notifySelect);
    add(mpPulldownList);
    mpPulldownList->hide();
}

UIEnumControl::~UIEnumControl()
{
    delete mpSelectFunctor;
    delete[] mpEnums;
}

unsigned int UIEnumControl::getCurrentItem() const
{
    u32 const value = static_cast<u32>(mpProperty->getNumeric(mIndex));
    for (unsigned int i = 0; i < mCount; ++i) {
        if (mpEnums[i].mValue == value) {
            return i;
        }
    }
    return NoIndex;
}

char const* UIEnumControl::getItemName(unsigned int item) const
{
    return (item < mCount) ? mpEnums[item].mpName : nullptr;
}

sRect UIEnumControl::getFieldRect() const
{
    sSize const size = getSize();
    int const top = getName().empty() ? 0 : kNameHeight;
    return sRect(0, top, static_cast<int>(size.width), top + 16);
}

void UIEnumControl::notifyPulldown(UIButton*)
{
    if (!isEnabled()) {
        return;
    }
    sSize const size = getSize();
    mpPulldownList->setPosition(sPoint(0, static_cast<int>(size.height)));
    mpPulldownList->setSize(sSize(size.width, mCount * UIPulldownList::kRowHeight + 2));
    unsigned int const current = getCurrentItem();
    mpPulldownList->setSelectItem(current == NoIndex ? UIPulldownList::kNoItem : current);
    mpPulldownList->sendMessage(UIShowMessage());
    UISystem::getInstance()->focus(mpPulldownList);
    sendMessage(UIBeginEditMessage());
}

// The list calls this when it loses the focus: its highlight is the choice.
void UIEnumControl::notifySelect()
{
    unsigned int const item = mpPulldownList->getSelectItem();
    if (item != UIPulldownList::kNoItem && item < mCount) {
        mpProperty->setNumeric(mpEnums[item].mValue, mIndex);
        if (mpSelectFunctor != nullptr) {
            (*mpSelectFunctor)(item);
        }
    }
    sendMessage(UIEndEditMessage());
}

void UIEnumControl::eventSize()
{
    sSize const size = getSize();
    int const width = static_cast<int>(mpPulldownButton->getMinimumSize().width);
    int const top = getName().empty() ? 0 : kNameHeight;
    mpPulldownButton->setPosition(sPoint(static_cast<int>(size.width) - width, top));
    mpPulldownButton->setSize(sSize(width, 16));
}

void UIEnumControl::eventPaint(UIPainter* painter)
{
    UISystem const* system = UISystem::getInstance();
    AutoString const name = getName();
    if (!name.empty()) {
        painter->drawString(sRect(0, 0, static_cast<int>(getSize().width), kNameHeight), name, system->mFontColor,
                            eAlignment_LeftMiddle);
    }
    sRect field = getFieldRect();
    field.right -= static_cast<int>(mpPulldownButton->getSize().width);
    painter->drawRect(field, system->mClientRegionColor);
    char const* item = getItemName(getCurrentItem());
    if (item != nullptr) {
        painter->drawString(sRect(field.left + 2, field.top, field.right, field.bottom), item, system->mClientFontColor,
                            eAlignment_LeftMiddle);
    }
    painter->drawConcaveRect(field);
}

void UIEnumControl::eventMouseDown(sPoint const&, unsigned int button)
{
    if ((button & 1) != 0) {
        notifyPulldown(nullptr);
    }
}

void UIEnumControl::eventKeyDown(unsigned int keyCode, unsigned int combinationKey)
{
    if (keyCode == UISystem::eKey_Return && combinationKey == 0) {
        notifyPulldown(nullptr);
        return;
    }
    delegate();
}

// ---------------------------------------------------------------------------
// [SECTION] UIControlArray

UIControlArray::UIControlArray(PropertyBase* property, UIControl::eMode mode)
    : UIBase(eAttribute_RowItem), mpProperty(property), mpForm(nullptr), mCount(0), mMode(mode)
{
    mpProperty->addRef();
    setMinimumSize(sSize(64, 32));
    createArray();
}

UIControlArray::~UIControlArray()
{
    mpProperty->release();
}

void UIControlArray::createArray()
{
    mCount = mpProperty->getCount();
    unsigned int const count = (mCount > 0) ? mCount : 1;
    mpForm = new UIForm(UIForm::eFormAttribute_AutoAlign);
    add(mpForm);
    unsigned int const type = mpProperty->getType();
    for (unsigned int i = 0; i < count; ++i) {
        UIControl* control = nullptr;
        switch (type) {
        case ePropertyType_Size:
            control = new UISizeControl(mpProperty, false, i);
            break;
        case ePropertyType_Point:
            control = new UIPointControl(mpProperty, false, i);
            break;
        case ePropertyType_Rect:
            control = new UIRectControl(mpProperty, false, i);
            break;
        case ePropertyType_Color:
        case ePropertyType_ColorF:
            control = new UIColorControl(mpProperty, false, i);
            break;
        case ePropertyType_Texcoord:
            control = new UITexcoordControl(mpProperty, false, i);
            break;
        case ePropertyType_Vector:
            control = new UIVectorControl(mpProperty, false, i);
            break;
        case ePropertyType_Object:
            control = new UIObjectControl(mpProperty, false, i);
            break;
        case ePropertyType_Resource:
            control = new UIResourceControl(mpProperty, false, i);
            break;
        case ePropertyType_Bool:
            // A check box: the numeric field has no bool form.
            control = new UIFlagControl(mpProperty, 0xFFFFFFFFu, false, i);
            break;
        default: {
            uNumeric minimum;
            uNumeric maximum;
            UINumericControl::getTypeRange(type, minimum, maximum);
            control = new UIParameterControl(mpProperty, minimum, maximum, false, i,
                                             static_cast<UIControl::eMode>(mMode));
            break;
        }
        }
        control->setDefaultSize();
        mpForm->addClient(control);
    }
}

void UIControlArray::eventSize()
{
    if (mpProperty->getCount() != mCount) {
        mpForm->remove();
        delete mpForm;
        createArray();
    }
    fitFormInGroup(this, mpForm);
}

void UIControlArray::eventPaint(UIPainter* painter)
{
    painter->drawGroup(sRect(getSize()), mpProperty->getName(), UISystem::getInstance()->mFontColor);
}

// ---------------------------------------------------------------------------
// [SECTION] UITriggerControl

UITriggerControl::UITriggerControl(TriggerControlBase const* trigger)
    : mpTrigger(static_cast<TriggerControlBase*>(trigger->duplicate())), mpButton(nullptr), mpField(nullptr)
{
    mValue = zeroNumeric();
    unsigned int const argument = mpTrigger->getArgumentType();
    char const* name = mpTrigger->getName();
    int const buttonWidth = static_cast<int>((name != nullptr ? strlen(name) : 0) * UIPainter::kFontWidth + 16);
    PropertyBase* value = nullptr;
    switch (argument) {
    case eTriggerArgument_U8:
        value = new ReferenceProperty<u8>("value", &mValue.mU8);
        break;
    case eTriggerArgument_U16:
        value = new ReferenceProperty<u16>("value", &mValue.mU16);
        break;
    case eTriggerArgument_U32:
        value = new ReferenceProperty<u32>("value", &mValue.mU32);
        break;
    case eTriggerArgument_U64:
        value = new ReferenceProperty<u64>("value", &mValue.mU64);
        break;
    case eTriggerArgument_S8:
        value = new ReferenceProperty<s8>("value", &mValue.mS8);
        break;
    case eTriggerArgument_S16:
        value = new ReferenceProperty<s16>("value", &mValue.mS16);
        break;
    case eTriggerArgument_S32:
        value = new ReferenceProperty<s32>("value", &mValue.mS32);
        break;
    case eTriggerArgument_S64:
        value = new ReferenceProperty<s64>("value", &mValue.mS64);
        break;
    case eTriggerArgument_F32:
        value = new ReferenceProperty<float>("value", &mValue.mF32);
        break;
    case eTriggerArgument_F64:
        value = new ReferenceProperty<double>("value", &mValue.mF64);
        break;
    case eTriggerArgument_Fixed:
        mValue.mFixed = sFixed::Zero;
        value = new ReferenceProperty<sFixed>("value", &mValue.mFixed);
        break;
    case eTriggerArgument_None:
        break;
    default:
        // Nothing to offer: an empty control, and the descriptor is dropped.
        delete mpTrigger;
        mpTrigger = nullptr;
        setMinimumSize(sSize(96, 16));
        setSize(getMinimumSize());
        return;
    }
    mpButton = new UIButton(this, &UITriggerControl::apply, name);
    mpButton->setSize(sSize(buttonWidth, 16));
    add(mpButton);
    if (value != nullptr) {
        mpField = new UINumericControl(value, false, UIControl::NoIndex, UIControl::eMode_Decimal);
        mpField->setPosition(sPoint(buttonWidth, 0));
        mpField->setSize(sSize(64, 16));
        add(mpField);
    }
    sRect const region = getChildrenRegion();
    setMinimumSize(region.getSize());
    setSize(region.getSize());
}

UITriggerControl::~UITriggerControl()
{
    delete mpTrigger;
}

void UITriggerControl::apply(UIButton*)
{
    if (mpTrigger == nullptr) {
        return;
    }
    switch (mpTrigger->getArgumentType()) {
    case eTriggerArgument_None:
        static_cast<TriggerControl<void>*>(mpTrigger)->trigger();
        break;
    case eTriggerArgument_U8:
        static_cast<TriggerControl<u8>*>(mpTrigger)->trigger(mValue.mU8);
        break;
    case eTriggerArgument_U16:
        static_cast<TriggerControl<u16>*>(mpTrigger)->trigger(mValue.mU16);
        break;
    case eTriggerArgument_U32:
        static_cast<TriggerControl<u32>*>(mpTrigger)->trigger(mValue.mU32);
        break;
    case eTriggerArgument_U64:
        static_cast<TriggerControl<u64>*>(mpTrigger)->trigger(mValue.mU64);
        break;
    case eTriggerArgument_S8:
        static_cast<TriggerControl<s8>*>(mpTrigger)->trigger(mValue.mS8);
        break;
    case eTriggerArgument_S16:
        static_cast<TriggerControl<s16>*>(mpTrigger)->trigger(mValue.mS16);
        break;
    case eTriggerArgument_S32:
        static_cast<TriggerControl<s32>*>(mpTrigger)->trigger(mValue.mS32);
        break;
    case eTriggerArgument_S64:
        static_cast<TriggerControl<s64>*>(mpTrigger)->trigger(mValue.mS64);
        break;
    case eTriggerArgument_F32:
        static_cast<TriggerControl<f32>*>(mpTrigger)->trigger(mValue.mF32);
        break;
    case eTriggerArgument_F64:
        static_cast<TriggerControl<f64>*>(mpTrigger)->trigger(mValue.mF64);
        break;
    case eTriggerArgument_Fixed:
        static_cast<TriggerControl<sFixed>*>(mpTrigger)->trigger(mValue.mFixed);
        break;
    default:
        break;
    }
}

// ---------------------------------------------------------------------------
// [SECTION] Factories

UIBase* Utils::makeUIFromControl(ControlBase* control)
{
    if (control == nullptr) {
        return nullptr;
    }
    if (control->getType() == eControlType_Trigger) {
        return new UITriggerControl(static_cast<TriggerControlBase*>(control));
    }
    if (control->getType() != eControlType_Property) {
        return nullptr;
    }
    PropertyControl* descriptor = static_cast<PropertyControl*>(control);
    PropertyBase* property = descriptor->getProperty();
    UIControl* widget = nullptr;
    if (descriptor->getMaskInfo() != nullptr) {
        widget = new UIFlagGroupControl(property, descriptor->getMaskInfo(), descriptor->getArrayNum(), false,
                                        UIControl::NoIndex);
    } else if (descriptor->getEnumInfo() != nullptr) {
        widget = new UIEnumControl(property, descriptor->getEnumInfo(), descriptor->getArrayNum(), false,
                                   UIControl::NoIndex);
    } else {
        switch (property->getType()) {
        case ePropertyType_Bool:
            widget = new UIFlagControl(property, 0xFFFFFFFFu, false, UIControl::NoIndex);
            break;
        case ePropertyType_Size:
            widget = new UISizeControl(property, false, UIControl::NoIndex);
            break;
        case ePropertyType_Point:
            widget = new UIPointControl(property, false, UIControl::NoIndex);
            break;
        case ePropertyType_Rect:
            widget = new UIRectControl(property, false, UIControl::NoIndex);
            break;
        case ePropertyType_Color:
        case ePropertyType_ColorF:
            widget = new UIColorControl(property, false, UIControl::NoIndex);
            break;
        case ePropertyType_Texcoord:
            widget = new UITexcoordControl(property, false, UIControl::NoIndex);
            break;
        case ePropertyType_Vector:
            widget = new UIVectorControl(property, false, UIControl::NoIndex);
            break;
        case ePropertyType_String:
            widget = new UITextControl(property, false, UIControl::NoIndex, UIControl::eMode_Decimal);
            break;
        case ePropertyType_Resource:
            widget = new UIResourceControl(property, false, UIControl::NoIndex);
            break;
        default:
            if (isNumericType(property->getType())) {
                widget = new UIParameterControl(property, descriptor->getMinimum(), descriptor->getMaximum(), false,
                                                UIControl::NoIndex, UIControl::eMode_Decimal);
            }
            break;
        }
    }
    if (widget != nullptr) {
        widget->setDefaultSize();
    }
    return widget;
}

UIBase* makeParameterControlUI(PropertyBase* property)
{
    uNumeric minimum;
    uNumeric maximum;
    UINumericControl::getTypeRange(property->getType(), minimum, maximum);
    UIControl* widget = new UIParameterControl(property, minimum, maximum, false, UIControl::NoIndex,
                                               UIControl::eMode_Decimal);
    widget->setDefaultSize();
    return widget;
}

UIBase* makeControlArrayUI(PropertyBase* property)
{
    UIControlArray* widget = new UIControlArray(property, UIControl::eMode_Decimal);
    widget->setSize(widget->getMinimumSize());
    return widget;
}

UIBase* makeTextureControlUI(PropertyBase* property)
{
    UIControl* widget = new UITextureControl(property, UIControl::NoIndex);
    widget->setDefaultSize();
    return widget;
}
