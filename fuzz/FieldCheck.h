#ifndef VELK_FUZZ_FIELDCHECK_H
#define VELK_FUZZ_FIELDCHECK_H

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace velkfuzz {

// The value an ASCII field file brings back: the float printed with "%g"
// and read again.
inline float throughText(float v) {
    char text[64];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(v));
    return std::strtof(text, nullptr);
}

inline bool sameFloat(float a, float b) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    std::uint32_t x, y;
    std::memcpy(&x, &a, 4);
    std::memcpy(&y, &b, 4);
    return x == y;
}

inline float byteSwapped(float v) {
    std::uint32_t x;
    std::memcpy(&x, &v, 4);
    x = (x >> 24) | ((x >> 8) & 0xff00u) | ((x << 8) & 0xff0000u) | (x << 24);
    std::memcpy(&v, &x, 4);
    return v;
}

}  // namespace velkfuzz

#endif
