// Numeric aliases used by every record, file format and interface.
// Sizes are fixed regardless of the platform's pointer width.
#pragma once

#include <cstddef>
#include <cstdint>

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

// ---------------------------------------------------------------------------
// Integer pixel value types. Minimal forms; the full value types (fixed point,
// colours, matrix) extend this header.
template <typename T>
struct sPointTemplate {
    T x;
    T y;
    sPointTemplate() : x(), y() {}
    sPointTemplate(T ax, T ay) : x(ax), y(ay) {}
    bool operator==(sPointTemplate const& other) const { return x == other.x && y == other.y; }
    bool operator!=(sPointTemplate const& other) const { return !(*this == other); }
};

template <typename T, T Max>
struct sSizeTemplate {
    T width;
    T height;
    sSizeTemplate() : width(), height() {}
    sSizeTemplate(T w, T h) : width(w), height(h) {}
};

template <typename T, typename U, T Min, T Max>
struct sRectTemplate {
    T left;
    T top;
    T right;
    T bottom;
    sRectTemplate() : left(), top(), right(), bottom() {}
    sRectTemplate(T l, T t, T r, T b) : left(l), top(t), right(r), bottom(b) {}
    U getWidth() const { return static_cast<U>(right - left); }
    U getHeight() const { return static_cast<U>(bottom - top); }
};

typedef sPointTemplate<int> sPoint;
typedef sSizeTemplate<unsigned int, 2147483647u> sSize;
typedef sRectTemplate<int, unsigned int, (-2147483647 - 1), 2147483647> sRect;
