#include "foundation/random.h"

#include <cstring>

f32 Random::convertF32(u32 value)
{
    u32 bits = (value >> 9) | 0x3F800000u;
    f32 result;
    memcpy(&result, &bits, sizeof(result));
    return result - 1.0f;
}
