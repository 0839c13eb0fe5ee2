#ifndef VELK_GRAPHICS_TOPIXEL_H
#define VELK_GRAPHICS_TOPIXEL_H

#include <cmath>
#include <cstdint>

namespace velk {

// Pixel coordinate of a float position: truncation of v, where a value
// beyond the int range goes to its nearest end and one that is not a
// number to the lower end (so it lies far off every image).
inline int toPixel(double v) {
    if (std::isnan(v) || v <= -2147483648.0) return INT32_MIN;
    if (v >= 2147483647.0) return INT32_MAX;
    return static_cast<int>(v);
}

}  // namespace velk

#endif
