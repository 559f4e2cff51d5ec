// Numeric aliases and the small value types that travel through every
// interface: 16.16 fixed point, colours, points, sizes and rectangles. All are
// plain values without virtual operations, copied freely and safe to read from
// any thread. Sizes of the numeric aliases are fixed regardless of the platform.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

typedef std::uint8_t u8;
typedef std::uint16_t u16;
typedef std::uint32_t u32;
typedef std::uint64_t u64;
typedef std::int8_t s8;
typedef std::int16_t s16;
typedef std::int32_t s32;
typedef std::int64_t s64;
typedef float f32;
typedef double f64;

static_assert(sizeof(f32) == 4 && sizeof(f64) == 8, "float sizes");

template <typename T>
inline T minimum(T a, T b)
{
    return (a < b) ? a : b;
}

template <typename T>
inline T maximum(T a, T b)
{
    return (a > b) ? a : b;
}

// ---------------------------------------------------------------------------
// sFixed: signed 16.16 fixed point, the unit of every game position.
// Arithmetic wraps like the 32-bit machine word it is: there is no saturation,
// and the sums go through unsigned arithmetic so that the wrap is defined.
struct sFixed {
    s32 mValue;

    // Deliberately leaves the value undefined, like a plain int.
    sFixed() = default;
    // value << shift: sFixed(1, 16) is 1.0, sFixed(raw, 0) takes a raw value.
    constexpr sFixed(int value, unsigned int shift)
        : mValue(static_cast<s32>(static_cast<u32>(value) << shift))
    {
    }
    // Truncates toward zero. Explicit, so that mixed int/float/sFixed
    // expressions do not silently pick a conversion.
    explicit sFixed(float value) : mValue(fromFloat(value)) {}

    sFixed& operator=(float value)
    {
        mValue = fromFloat(value);
        return *this;
    }
    // value * 65536 truncated toward zero; a value beyond the range (a file
    // may hold "1e12") clamps to the nearest end, and NaN gives 0.
    static s32 fromFloat(float value)
    {
        float const scaled = value * 65536.0f;
        if (scaled != scaled) {
            return 0;
        }
        if (scaled >= 2147483648.0f) {
            return 0x7FFFFFFF;
        }
        if (scaled <= -2147483648.0f) {
            return static_cast<s32>(0x80000000u);
        }
        return static_cast<s32>(scaled);
    }
    sFixed& operator=(int value)
    {
        mValue = static_cast<s32>(static_cast<u32>(value) << 16);
        return *this;
    }

    operator float() const { return static_cast<float>(mValue) / 65536.0f; }
    // Arithmetic shift: rounds toward negative infinity, so raw -1 gives -1.
    operator int() const { return mValue >> 16; }

    constexpr sFixed operator+(sFixed other) const { return raw(static_cast<u32>(mValue) + static_cast<u32>(other.mValue)); }
    constexpr sFixed operator-(sFixed other) const { return raw(static_cast<u32>(mValue) - static_cast<u32>(other.mValue)); }
    constexpr sFixed operator-() const { return raw(0u - static_cast<u32>(mValue)); }
    sFixed& operator+=(sFixed other) { return *this = *this + other; }
    sFixed& operator-=(sFixed other) { return *this = *this - other; }
    sFixed& operator-=(float other) { return *this = *this - sFixed(other); }
    // 64-bit product, shifted back by 16; the low 32 bits are kept.
    constexpr sFixed operator*(sFixed other) const
    {
        s64 product = static_cast<s64>(mValue) * static_cast<s64>(other.mValue);
        return raw(static_cast<u32>(static_cast<u64>(product >> 16)));
    }
    sFixed& operator*=(sFixed other) { return *this = *this * other; }
    // The dividend is widened and scaled by 2^16 first. Division by zero is a
    // processor fault, as for int.
    sFixed operator/(sFixed other) const
    {
        s64 dividend = static_cast<s64>(mValue) * 65536;
        return raw(static_cast<u32>(static_cast<u64>(dividend / other.mValue)));
    }

    constexpr bool operator==(sFixed other) const { return mValue == other.mValue; }
    constexpr bool operator!=(sFixed other) const { return mValue != other.mValue; }
    constexpr bool operator<(sFixed other) const { return mValue < other.mValue; }
    constexpr bool operator<=(sFixed other) const { return mValue <= other.mValue; }
    constexpr bool operator>(sFixed other) const { return mValue > other.mValue; }
    constexpr bool operator>=(sFixed other) const { return mValue >= other.mValue; }

    constexpr sFixed abs() const { return (mValue < 0) ? -*this : *this; }

    static constexpr sFixed raw(u32 bits) { return sFixed(static_cast<int>(bits), 0); }

    static const sFixed Zero;
    static const sFixed One;
    static const sFixed Half;
    static const sFixed Min;
    static const sFixed Max;
};

inline constexpr sFixed sFixed::Zero = sFixed(0, 0);
inline constexpr sFixed sFixed::One = sFixed(0x10000, 0);
inline constexpr sFixed sFixed::Half = sFixed(0x8000, 0);
inline constexpr sFixed sFixed::Min = sFixed(static_cast<int>(0x80000000u), 0);
inline constexpr sFixed sFixed::Max = sFixed(0x7FFFFFFF, 0);

// ---------------------------------------------------------------------------
// Colours. sColor is four bytes r, g, b, a in that order in memory; sColorF is
// the same in floats, nominally 0.0 to 1.0. Conversions truncate and add no
// rounding.
struct sColor {
    u8 r;
    u8 g;
    u8 b;
    u8 a;

    sColor() = default;
    constexpr sColor(u8 red, u8 green, u8 blue, u8 alpha) : r(red), g(green), b(blue), a(alpha) {}

    u8& operator[](int index) { return reinterpret_cast<u8*>(this)[index]; }
    u8 operator[](int index) const { return reinterpret_cast<u8 const*>(this)[index]; }
    // The four bytes as one word, in the order they are stored.
    operator unsigned int() const
    {
        unsigned int value;
        memcpy(&value, &r, sizeof(value));
        return value;
    }

    static const sColor Red;
    static const sColor Green;
    static const sColor Blue;
    static const sColor Yellow;
    static const sColor Cyan;
    static const sColor Magenta;
    static const sColor White;
    static const sColor Black;
    static const sColor Gray;
    static const sColor LightGray;
    static const sColor DarkGray;
};

static_assert(sizeof(sColor) == 4, "sColor is four bytes");

inline constexpr sColor sColor::Red = sColor(255, 0, 0, 255);
inline constexpr sColor sColor::Green = sColor(0, 255, 0, 255);
inline constexpr sColor sColor::Blue = sColor(0, 0, 255, 255);
inline constexpr sColor sColor::Yellow = sColor(255, 255, 0, 255);
inline constexpr sColor sColor::Cyan = sColor(0, 255, 255, 255);
inline constexpr sColor sColor::Magenta = sColor(255, 0, 255, 255);
inline constexpr sColor sColor::White = sColor(255, 255, 255, 255);
inline constexpr sColor sColor::Black = sColor(0, 0, 0, 255);
inline constexpr sColor sColor::Gray = sColor(191, 191, 191, 255);
inline constexpr sColor sColor::LightGray = sColor(211, 211, 211, 255);
inline constexpr sColor sColor::DarkGray = sColor(105, 105, 105, 255);

struct sColorF {
    f32 r;
    f32 g;
    f32 b;
    f32 a;

    sColorF() = default;
    constexpr sColorF(f32 red, f32 green, f32 blue, f32 alpha) : r(red), g(green), b(blue), a(alpha) {}
    constexpr sColorF(sColor color)
        : r(color.r / 255.0f), g(color.g / 255.0f), b(color.b / 255.0f), a(color.a / 255.0f)
    {
    }

    // Truncated: 191/255 may come back as 190.
    operator sColor() const
    {
        return sColor(static_cast<u8>(r * 255.0f), static_cast<u8>(g * 255.0f), static_cast<u8>(b * 255.0f),
                      static_cast<u8>(a * 255.0f));
    }
    sColorF operator*(sColorF const& other) const
    {
        return sColorF(r * other.r, g * other.g, b * other.b, a * other.a);
    }
    f32& operator[](int index) { return reinterpret_cast<f32*>(this)[index]; }
    f32 operator[](int index) const { return reinterpret_cast<f32 const*>(this)[index]; }

    static const sColorF Red;
    static const sColorF Green;
    static const sColorF Blue;
    static const sColorF Yellow;
    static const sColorF Cyan;
    static const sColorF Magenta;
    static const sColorF White;
    static const sColorF Black;
    static const sColorF Gray;
    static const sColorF LightGray;
    static const sColorF DarkGray;
};

inline constexpr sColorF sColorF::Red = sColorF(1.0f, 0.0f, 0.0f, 1.0f);
inline constexpr sColorF sColorF::Green = sColorF(0.0f, 1.0f, 0.0f, 1.0f);
inline constexpr sColorF sColorF::Blue = sColorF(0.0f, 0.0f, 1.0f, 1.0f);
inline constexpr sColorF sColorF::Yellow = sColorF(1.0f, 1.0f, 0.0f, 1.0f);
inline constexpr sColorF sColorF::Cyan = sColorF(0.0f, 1.0f, 1.0f, 1.0f);
inline constexpr sColorF sColorF::Magenta = sColorF(1.0f, 0.0f, 1.0f, 1.0f);
inline constexpr sColorF sColorF::White = sColorF(1.0f, 1.0f, 1.0f, 1.0f);
inline constexpr sColorF sColorF::Black = sColorF(0.0f, 0.0f, 0.0f, 1.0f);
inline constexpr sColorF sColorF::Gray = sColorF(191.0f / 255.0f, 191.0f / 255.0f, 191.0f / 255.0f, 1.0f);
inline constexpr sColorF sColorF::LightGray = sColorF(211.0f / 255.0f, 211.0f / 255.0f, 211.0f / 255.0f, 1.0f);
inline constexpr sColorF sColorF::DarkGray = sColorF(105.0f / 255.0f, 105.0f / 255.0f, 105.0f / 255.0f, 1.0f);

// ---------------------------------------------------------------------------
// sPointTemplate: x, y. Used as sPoint (int pixels), sVector (sFixed
// positions) and sTexcoord (u16). The vector operations (dot, length,
// normalize) are meant for sFixed and are only instantiated where used.
template <typename T>
struct sPointTemplate {
    T x;
    T y;

    constexpr sPointTemplate() : x(), y() {}
    constexpr sPointTemplate(T ax, T ay) : x(ax), y(ay) {}
    constexpr sPointTemplate(sPointTemplate const& other) = default;
    sPointTemplate& operator=(sPointTemplate const& other) = default;

    bool operator==(sPointTemplate const& other) const { return x == other.x && y == other.y; }
    bool operator!=(sPointTemplate const& other) const { return !(*this == other); }
    sPointTemplate operator+(sPointTemplate const& other) const { return sPointTemplate(x + other.x, y + other.y); }
    sPointTemplate operator-(sPointTemplate const& other) const { return sPointTemplate(x - other.x, y - other.y); }
    sPointTemplate operator-() const { return sPointTemplate(-x, -y); }
    sPointTemplate& operator+=(sPointTemplate const& other)
    {
        x = x + other.x;
        y = y + other.y;
        return *this;
    }
    T& operator[](int index) { return (index == 0) ? x : y; }
    T operator[](int index) const { return (index == 0) ? x : y; }

    // By a scalar of the component type: int for sPoint, sFixed for sVector.
    sPointTemplate operator*(T scale) const { return sPointTemplate(x * scale, y * scale); }
    // Component-wise.
    sPointTemplate operator*(sPointTemplate const& other) const { return sPointTemplate(x * other.x, y * other.y); }
    T dot(sPointTemplate const& other) const { return x * other.x + y * other.y; }
    f32 length() const
    {
        f32 fx = static_cast<f32>(x);
        f32 fy = static_cast<f32>(y);
        return sqrtf(fx * fx + fy * fy);
    }
    // A zero vector divides by zero and gives whatever the float rules give.
    sPointTemplate normalize() const
    {
        f32 len = length();
        return sPointTemplate(T(static_cast<f32>(x) / len), T(static_cast<f32>(y) / len));
    }

    static const sPointTemplate Zero;
    static const sPointTemplate One;
};

template <typename T>
inline constexpr sPointTemplate<T> sPointTemplate<T>::Zero = sPointTemplate<T>(T(), T());
// Meaningful for sFixed only.
template <typename T>
inline constexpr sPointTemplate<T> sPointTemplate<T>::One = sPointTemplate<T>(sFixed::One, sFixed::One);

typedef sPointTemplate<int> sPoint;
typedef sPointTemplate<sFixed> sVector;
typedef sPointTemplate<unsigned short> sTexcoord;

// ---------------------------------------------------------------------------
// sSizeTemplate: width, height, with the largest value as a parameter.
template <typename T, T Max>
struct sSizeTemplate {
    T width;
    T height;

    constexpr sSizeTemplate() : width(), height() {}
    constexpr sSizeTemplate(T w, T h) : width(w), height(h) {}
    constexpr sSizeTemplate(sSizeTemplate const& other) = default;
    sSizeTemplate& operator=(sSizeTemplate const& other) = default;

    bool operator==(sSizeTemplate const& other) const { return width == other.width && height == other.height; }
    bool operator!=(sSizeTemplate const& other) const { return !(*this == other); }

    static const sSizeTemplate Zero;
};

template <typename T, T Max>
inline constexpr sSizeTemplate<T, Max> sSizeTemplate<T, Max>::Zero = sSizeTemplate<T, Max>(0, 0);

typedef sSizeTemplate<unsigned int, 2147483647u> sSize;

// ---------------------------------------------------------------------------
// sRectTemplate: left, top, right, bottom in T; sizes in U. Width is
// right - left. Point tests include both edges, while the overlap of two
// rectangles that merely touch is empty (Zero).
template <typename T, typename U, T MinValue, T MaxValue>
struct sRectTemplate {
    typedef sPointTemplate<T> Point;
    typedef sSizeTemplate<U, static_cast<U>(MaxValue)> Size;

    T left;
    T top;
    T right;
    T bottom;

    constexpr sRectTemplate() : left(), top(), right(), bottom() {}
    constexpr sRectTemplate(T l, T t, T r, T b) : left(l), top(t), right(r), bottom(b) {}
    constexpr sRectTemplate(U width, U height)
        : left(0), top(0), right(static_cast<T>(width)), bottom(static_cast<T>(height))
    {
    }
    constexpr explicit sRectTemplate(Size const& size)
        : left(0), top(0), right(static_cast<T>(size.width)), bottom(static_cast<T>(size.height))
    {
    }
    constexpr sRectTemplate(Point const& leftTop, Point const& rightBottom)
        : left(leftTop.x), top(leftTop.y), right(rightBottom.x), bottom(rightBottom.y)
    {
    }
    constexpr sRectTemplate(Point const& leftTop, Size const& size)
        : left(leftTop.x), top(leftTop.y), right(leftTop.x + static_cast<T>(size.width)),
          bottom(leftTop.y + static_cast<T>(size.height))
    {
    }
    constexpr sRectTemplate(sRectTemplate const& other) = default;
    sRectTemplate& operator=(sRectTemplate const& other) = default;

    U getWidth() const { return static_cast<U>(right - left); }
    U getHeight() const { return static_cast<U>(bottom - top); }
    Size getSize() const { return Size(getWidth(), getHeight()); }
    Point getTranslate() const { return Point(left, top); }

    void translateAbs(Point const& position)
    {
        right = position.x + (right - left);
        bottom = position.y + (bottom - top);
        left = position.x;
        top = position.y;
    }
    void translateRel(Point const& offset)
    {
        left += offset.x;
        right += offset.x;
        top += offset.y;
        bottom += offset.y;
    }

    // Both edges inclusive: (right, bottom) is inside.
    bool intersect(Point const& point) const
    {
        return left <= point.x && point.x <= right && top <= point.y && point.y <= bottom;
    }

    sRectTemplate operator&(sRectTemplate const& other) const
    {
        sRectTemplate result(maximum(left, other.left), maximum(top, other.top), minimum(right, other.right),
                             minimum(bottom, other.bottom));
        if (result.left >= result.right || result.top >= result.bottom) {
            return Zero;
        }
        return result;
    }
    sRectTemplate& operator&=(sRectTemplate const& other) { return *this = *this & other; }
    sRectTemplate& operator|=(sRectTemplate const& other)
    {
        left = minimum(left, other.left);
        top = minimum(top, other.top);
        right = maximum(right, other.right);
        bottom = maximum(bottom, other.bottom);
        return *this;
    }

    bool operator==(sRectTemplate const& other) const
    {
        return left == other.left && top == other.top && right == other.right && bottom == other.bottom;
    }
    bool operator!=(sRectTemplate const& other) const { return !(*this == other); }
    // 0 left, 1 top, 2 right, 3 bottom.
    T& operator[](int index) { return reinterpret_cast<T*>(this)[index]; }
    T operator[](int index) const { return reinterpret_cast<T const*>(this)[index]; }

    static const sRectTemplate Zero;
    static const sRectTemplate Max;
};

template <typename T, typename U, T MinValue, T MaxValue>
inline constexpr sRectTemplate<T, U, MinValue, MaxValue> sRectTemplate<T, U, MinValue, MaxValue>::Zero =
    sRectTemplate<T, U, MinValue, MaxValue>(T(0), T(0), T(0), T(0));
template <typename T, typename U, T MinValue, T MaxValue>
inline constexpr sRectTemplate<T, U, MinValue, MaxValue> sRectTemplate<T, U, MinValue, MaxValue>::Max =
    sRectTemplate<T, U, MinValue, MaxValue>(MinValue, MinValue, MaxValue, MaxValue);

typedef sRectTemplate<int, unsigned int, (-2147483647 - 1), 2147483647> sRect;
