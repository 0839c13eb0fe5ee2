#ifndef VELK_COLORSPACE_H
#define VELK_COLORSPACE_H

#include <velk/velk_export.h>

// Single colours as three floats in [0, 1]: red, green, blue, or hue,
// saturation, lightness. Hue 0 is red and grows by 1/6 per sextant through
// yellow, green, cyan and blue to magenta.

#ifdef __cplusplus
extern "C" {
#endif

// Lightness is always written. Black leaves hue and saturation as they were;
// a grey writes saturation 0 and leaves the hue. Pure red yields hue 1.0.
VELK_EXPORT void RGB_to_HSL(const float* rgb, float* hsl);
// Leaves rgb unwritten when the hue lies outside the six sextants (hue 1.0
// and above, or -1/6 and below).
VELK_EXPORT void HSL_to_RGB(const float* hsl, float* rgb);

#ifdef __cplusplus
}
#endif

#endif
