#ifndef VELK_LIC_LANES_H
#define VELK_LIC_LANES_H

#include "forceinline.h"

namespace velk {

// Four records at once. The operations that the one-record and the four-record
// code share take either a float (with int and bool) or these (with masks of
// all ones or zeros per lane), so that both are written once.
typedef float Float4 __attribute__((vector_size(16)));
typedef int Int4 __attribute__((vector_size(16)));

VELK_ALWAYS_INLINE Float4 splat(float v) {
    return Float4{v, v, v, v};
}
VELK_ALWAYS_INLINE Int4 splat(int v) {
    return Int4{v, v, v, v};
}

VELK_ALWAYS_INLINE float select(bool mask, float a, float b) {
    return mask ? a : b;
}
VELK_ALWAYS_INLINE int select(bool mask, int a, int b) {
    return mask ? a : b;
}
VELK_ALWAYS_INLINE Float4 select(Int4 mask, Float4 a, Float4 b) {
    return reinterpret_cast<Float4>((mask & reinterpret_cast<Int4>(a)) |
                                    (~mask & reinterpret_cast<Int4>(b)));
}
VELK_ALWAYS_INLINE Int4 select(Int4 mask, Int4 a, Int4 b) {
    return (mask & a) | (~mask & b);
}

// Truncation toward zero, and back.
VELK_ALWAYS_INLINE int toInt(float v) {
    return static_cast<int>(v);
}
VELK_ALWAYS_INLINE Int4 toInt(Float4 v) {
    return __builtin_convertvector(v, Int4);
}
VELK_ALWAYS_INLINE float toFloat(int v) {
    return static_cast<float>(v);
}
VELK_ALWAYS_INLINE Float4 toFloat(Int4 v) {
    return __builtin_convertvector(v, Float4);
}

VELK_ALWAYS_INLINE bool allOf(Int4 mask) {
    return (mask[0] & mask[1] & mask[2] & mask[3]) != 0;
}

// Below 2^24, integers and their sums and products are exact in single
// precision: the four-record code forms indices and offsets as floats where
// they stay below.
const double kExactFloatInts = 16777216.0;

}  // namespace velk

#endif
